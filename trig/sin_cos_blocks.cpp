// The constants of sin and cos. Tiers that run one algorithm share one block.
#include "trig/sin_cos.h"

namespace zorp {
extern "C" {

const SinDoubleBlock __zorp_dsin_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .inv_pi = 0x3FD45F306DC9C883,
    // pi = pi1 + pi2 + pi3: relative error 2^-160.7
    .pi1 = 0x400921FB54442D18,
    .pi2 = 0x3CA1A62633145C06,
    .pi3 = 0x395C1CD129024E09,
    .shift = 0x4338000000000000,  // 1.5 x 2^52
    .limit = 0x4170000000000000,  // 2^24
    // sin r = r + s1 r^3 + ... + s7 r^15 on |r| <= pi/2: relative error 2^-52.2
    .s1 = 0xBFC55555555554A8,
    .s2 = 0x3F8111111110A573,
    .s3 = 0xBF2A01A019A659DD,
    .s4 = 0x3EC71DE3806ADD1A,
    .s5 = 0xBE5AE6355AAA4A53,
    .s6 = 0x3DE60E6BEE01D83E,
    .s7 = 0xBD69F1517E9F65F0,
};

const CosDoubleBlock __zorp_dcos_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .inv_pi = 0x3FD45F306DC9C883,
    // pi = pi1 + pi2 + pi3: relative error 2^-160.7
    .pi1 = 0x400921FB54442D18,
    .pi2 = 0x3CA1A62633145C06,
    .pi3 = 0x395C1CD129024E09,
    .shift = 0x4330000000000000,   // 2^52
    .centre = 0x432FFFFFFFFFFFFF,  // 2^52 - 1/2
    .limit = 0x43300000007FFFFE,   // 2^52 + 8388606
    .tiny = 0x3E40000000000000,    // 2^-27
    .one = 0x3FF0000000000000,
    // sin r = r + s1 r^3 + ... + s7 r^15 on |r| <= pi/2: relative error 2^-52.1
    .s1 = 0xBFC55555555554A7,
    .s2 = 0x3F8111111110A4A8,
    .s3 = 0xBF2A01A019A5B87B,
    .s4 = 0x3EC71DE38030FEA0,
    .s5 = 0xBE5AE63546002231,
    .s6 = 0x3DE60E6857A2F220,
    .s7 = 0xBD69F0D60811AAC8,
};

const SinDoubleShortBlock __zorp_dsin_native_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .limit = 0x4170000000000000,  // 2^24
    .inv_pi = 0x3FD45F306DC9C883,
    .shift = 0x4338000000000000,
    // pi = pi1 + pi2: relative error 2^-106.8
    .pi1 = 0x400921FB54442D18,
    .pi2 = 0x3CA1A62633145C06,
    // sin r = r + s1 r^3 + ... + s4 r^9 on |r| <= pi/2: relative error 2^-27.1
    .s1 = 0xBFC55554AD3EAF1F,
    .s2 = 0x3F8110EA968A0185,
    .s3 = 0xBF29F67D9395D587,
    .s4 = 0x3EC5D4567512BBD5,
};
ZORP_SAME_BLOCK(SinDoubleShortBlock, __zorp_dsin_half_data, __zorp_dsin_native_data);
ZORP_SAME_BLOCK(SinDoubleShortBlock, __zorp_dsin_rm_data, __zorp_dsin_native_data);

const CosDoubleShortBlock __zorp_dcos_native_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .limit = 0x4160000000000000,  // 2^23
    .inv_pi = 0x3FD45F306DC9C883,
    .shift = 0x4338000000000000,
    // pi = pi1 + pi2: relative error 2^-106.8
    .pi1 = 0x400921FB54442D18,
    .pi2 = 0x3CA1A62633145C06,
    // sin r = r + s1 r^3 + ... + s4 r^9 on |r| <= pi/2: relative error 2^-27.1
    .s1 = 0xBFC55554AD3EAF1F,
    .s2 = 0x3F8110EA968A0185,
    .s3 = 0xBF29F67D9395D587,
    .s4 = 0x3EC5D4567512BBD5,
    .pi_half = 0x3FF921FB54442D18,
    .half = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
};
ZORP_SAME_BLOCK(CosDoubleShortBlock, __zorp_dcos_half_data, __zorp_dcos_native_data);
ZORP_SAME_BLOCK(CosDoubleShortBlock, __zorp_dcos_rm_data, __zorp_dcos_native_data);

const SinFloatBlock __zorp_ssin_data = {
    .absmask = 0x7FFFFFFF,
    .limit = 0x49000000,  // 524288
    .inv_pi = 0x3EA2F983,
    .shift = 0x4B400000,  // 1.5 x 2^23
    // pi = pi1 + pi2 + pi3: relative error 2^-76.9
    .pi1 = 0x40490FDB,
    .pi2 = 0xB3BBBD2E,
    .pi3 = 0xA7772CED,
    // sin r = r + s1 r^3 + ... + s4 r^9 on |r| <= pi/2: relative error 2^-24.6
    .s1 = 0xBE2AAAA6,
    .s2 = 0x3C088766,
    .s3 = 0xB94FB7FF,
    .s4 = 0x362EDEF8,
};

const CosFloatBlock __zorp_scos_data = {
    .absmask = 0x7FFFFFFF,
    .limit = 0x49000000,  // 524288
    .inv_pi = 0x3EA2F983,
    .shift = 0x4B400000,  // 1.5 x 2^23
    // pi = pi1 + pi2 + pi3: relative error 2^-76.9
    .pi1 = 0x40490FDB,
    .pi2 = 0xB3BBBD2E,
    .pi3 = 0xA7772CED,
    // sin r = r + s1 r^3 + ... + s4 r^9 on |r| <= pi/2: relative error 2^-24.4
    .s1 = 0xBE2AAAA6,
    .s2 = 0x3C088764,
    .s3 = 0xB94FB6CF,
    .s4 = 0x362EC335,
    .pi_half = 0x3FC90FDB,
    .half = 0x3F000000,
    .one = 0x3F800000,
};

const SinFloatShortBlock __zorp_ssin_native_data = {
    .absmask = 0x7FFFFFFF,
    .limit = 0x461C4000,  // 10000
    .inv_pi = 0x3EA2F983,
    .shift = 0x4B400000,  // 1.5 x 2^23
    // pi = pi1 + pi2: relative error 2^-49.7
    .pi1 = 0x40490FDB,
    .pi2 = 0xB3BBBD2E,
    // sin r = c0 r + c1 r^3 + c2 r^5 on |r| <= pi/2: relative error 2^-12.6
    .c0 = 0x3F7FF87C,
    .c1 = 0xBE29E72F,
    .c2 = 0x3BF84524,
};
ZORP_SAME_BLOCK(SinFloatShortBlock, __zorp_ssin_half_data, __zorp_ssin_native_data);
ZORP_SAME_BLOCK(SinFloatShortBlock, __zorp_ssin_rm_data, __zorp_ssin_native_data);

const CosFloatShortBlock __zorp_scos_native_data = {
    .absmask = 0x7FFFFFFF,
    .limit = 0x461C4000,  // 10000
    .inv_pi = 0x3EA2F983,
    .shift = 0x4B400000,  // 1.5 x 2^23
    // pi = pi1 + pi2: relative error 2^-49.7
    .pi1 = 0x40490FDB,
    .pi2 = 0xB3BBBD2E,
    // sin r = c0 r + c1 r^3 + c2 r^5 on |r| <= pi/2: relative error 2^-12.6
    .c0 = 0x3F7FF87C,
    .c1 = 0xBE29E73F,
    .c2 = 0x3BF84524,
    .pi_half = 0x3FC90FDB,
    .half = 0x3F000000,
    .one = 0x3F800000,
};
ZORP_SAME_BLOCK(CosFloatShortBlock, __zorp_scos_half_data, __zorp_scos_native_data);
ZORP_SAME_BLOCK(CosFloatShortBlock, __zorp_scos_rm_data, __zorp_scos_native_data);

const SinHalfBlock __zorp_hsin_data = {
    .absmask = 0x7FFF,
    .limit = 0x52AC,     // 53.375
    .shift = 0x5200,     // 48
    .inv_pi32 = 0x2118,  // 1/(32 pi)
    // -32 pi = pi32_1 + pi32_2: relative error 2^-24.3
    .pi32_1 = 0xD648,
    .pi32_2 = 0xA7ED,
    // sin r = r + s1 r^3 + s2 r^5 on |r| <= pi/2: relative error 2^-11.1
    .s1 = 0xB155,
    .s2 = 0x2007,
    .large_shift = 0x4B400000,  // 1.5 x 2^23
    .large_inv_pi = 0x3EA2F983,
    // -pi = large_pi1 + large_pi2: relative error 2^-49.7
    .large_pi1 = 0xC0490FDB,
    .large_pi2 = 0x33BBBD2E,
    // sin r = r + t1 r^3 + t2 r^5 on |r| <= pi/2: relative error 2^-11.8
    .t1 = 0xBE2A026E,
    .t2 = 0x3BF9F9B6,
};
ZORP_SAME_BLOCK(SinHalfBlock, __zorp_hsin_native_data, __zorp_hsin_data);
ZORP_SAME_BLOCK(SinHalfBlock, __zorp_hsin_half_data, __zorp_hsin_data);
ZORP_SAME_BLOCK(SinHalfBlock, __zorp_hsin_rm_data, __zorp_hsin_data);

const CosHalfBlock __zorp_hcos_data = {
    .absmask = 0x7FFF,
    .limit = 0x4BD9,     // 15.6953
    .shift = 0x5200,     // 48
    .inv_pi32 = 0x2118,  // 1/(32 pi)
    // -32 pi = pi32_1 + pi32_2: relative error 2^-24.3
    .pi32_1 = 0xD648,
    .pi32_2 = 0xA7ED,
    .pi_half = 0x3E48,
    .step = 0x2400,  // 1/64
    // sin r = r + s1 r^3 + ... + s3 r^7 on |r| <= pi/2: relative error 2^-13.7
    .s1 = 0xB155,
    .s2 = 0x2042,
    .s3 = 0x8A2D,
    .large_shift = 0x4B000000,   // 2^23
    .large_centre = 0x4AFFFFFF,  // 2^23 - 1/2
    .large_inv_pi = 0x3EA2F983,
    // pi = large_pi1 + large_pi2: relative error 2^-49.7
    .large_pi1 = 0x40490FDB,
    .large_pi2 = 0xB3BBBD2E,
    // sin r = r + t1 r^3 + t2 r^5 on |r| <= pi/2: relative error 2^-11.8
    .t1 = 0xBE2A026E,
    .t2 = 0x3BF9F9B6,
};
ZORP_SAME_BLOCK(CosHalfBlock, __zorp_hcos_native_data, __zorp_hcos_data);
ZORP_SAME_BLOCK(CosHalfBlock, __zorp_hcos_half_data, __zorp_hcos_data);
ZORP_SAME_BLOCK(CosHalfBlock, __zorp_hcos_rm_data, __zorp_hcos_data);

}  // extern "C"
}  // namespace zorp
