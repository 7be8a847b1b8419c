// The constants of sincos and sincosreg, which share their blocks, as do tiers that run one
// algorithm.
#include "trig/sincos.h"
#include "trig/trig_tables.h"

namespace zorp {
extern "C" {

const SincosDoubleBlock __zorp_dsincos_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .limit = 0x4160000000000000,  // 2^23
    .inv_pi = 0x3FD45F306DC9C883,
    .shift = 0x4338000000000000,  // 1.5 x 2^52
    .half = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
    // pi = pi1 + pi2 + pi3: relative error 2^-160.7
    .pi1 = 0x400921FB54442D18,
    .pi2 = 0x3CA1A62633145C06,
    .pi3 = 0x395C1CD129024E09,
    // sin r = r + c7 r^3 + ... + c1 r^15 on |r| <= pi/2: relative error 2^-52.2
    .c1 = 0xBD69F0D60811AAC8,
    .c2 = 0x3DE60E6857A2F220,
    .c3 = 0xBE5AE63546002231,
    .c4 = 0x3EC71DE38030FEA0,
    .c5 = 0xBF2A01A019A5B86D,
    .c6 = 0x3F8111111110A4A6,
    .c7 = 0xBFC55555555554A7,
};
ZORP_SAME_BLOCK(SincosDoubleBlock, __zorp_dsincosreg_data, __zorp_dsincos_data);

const SincosDoubleShortBlock __zorp_dsincos_native_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .limit = 0x4160000000000000,  // 2^23
    .inv_pi = 0x3FD45F306DC9C883,
    .shift = 0x4338000000000000,  // 1.5 x 2^52
    .half = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
    // pi = pi1 + pi2: relative error 2^-106.8
    .pi1 = 0x400921FB54442D18,
    .pi2 = 0x3CA1A62633145C06,
    // sin r = r + c4 r^3 + ... + c1 r^9 on |r| <= pi/2: relative error 2^-27.1
    .c1 = 0x3EC5D4567512BBD5,
    .c2 = 0xBF29F67D9395D587,
    .c3 = 0x3F8110EA968A0185,
    .c4 = 0xBFC55554AD3EAF1F,
};
ZORP_SAME_BLOCK(SincosDoubleShortBlock, __zorp_dsincos_rm_data, __zorp_dsincos_native_data);
ZORP_SAME_BLOCK(SincosDoubleShortBlock, __zorp_dsincosreg_native_data, __zorp_dsincos_native_data);

const SincosFloatBlock __zorp_ssincos_data_avx2 = {
    .absmask = 0x7FFFFFFF,
    .shift = 0x4B400000,  // 1.5 x 2^23
    .two_over_pi = 0x3F22F983,
    .limit = 0x49000000,  // 524288
    // -pi/2 = pi_half1 + pi_half2 + pi_half3: relative error 2^-76.9
    .pi_half1 = 0xBFC90FDB,
    .pi_half2 = 0x333BBD2E,
    .pi_half3 = 0x26F72CED,
    .one = 0x3F800000,
    // sin r = (1 + s0) r + s1 r^3 + ... + s3 r^7 on |r| <= pi/4: relative error 2^-27.1
    .s0 = 0xB15E870D,
    .s1 = 0xBE2AAAA0,
    .s2 = 0x3C088303,
    .s3 = 0xB94C7DCE,
    // cos r = 1 + k1 r^2 + ... + k3 r^6 on |r| <= pi/4: relative error 2^-23.5
    .k1 = 0xBEFFFFCB,
    .k2 = 0x3D2A9DD3,
    .k3 = 0xBAB1FCEB,
    .high = two_over_pi_high,
    .low = two_over_pi_low,
    .floor = 0x4160000000000000,        // 2^23
    .bias = 1046,                       // the exponent field of 2^23
    .large_shift = 0x4338000000000000,  // 1.5 x 2^52
    .pi_half = 0x3FF921FB54442D18,
};
ZORP_SAME_BLOCK(SincosFloatBlock, __zorp_ssincos_native_data_avx2, __zorp_ssincos_data_avx2);
ZORP_SAME_BLOCK(SincosFloatBlock, __zorp_ssincos_rm_data_avx2, __zorp_ssincos_data_avx2);
ZORP_SAME_BLOCK(SincosFloatBlock, __zorp_ssincosreg_data_avx2, __zorp_ssincos_data_avx2);
ZORP_SAME_BLOCK(SincosFloatBlock, __zorp_ssincosreg_native_data_avx2, __zorp_ssincos_data_avx2);

const SincosHalfBlock __zorp_hsincos_data = {
    .absmask = 0x7FFF,
    .centre = 0x4AFFFFFF,  // 2^23 - 1/2
    .shift = 0x4B000000,   // 2^23
    .inv_pi = 0x3EA2F983,
    // pi = pi1 + pi2: relative error 2^-49.7
    .pi1 = 0x40490FDB,
    .pi2 = 0xB3BBBD2E,
    // sin r = r + t1 r^3 + t2 r^5 on |r| <= pi/2: relative error 2^-11.8
    .t1 = 0xBE2A026E,
    .t2 = 0x3BF9F9B6,
};
ZORP_SAME_BLOCK(SincosHalfBlock, __zorp_hsincos_native_data, __zorp_hsincos_data);
ZORP_SAME_BLOCK(SincosHalfBlock, __zorp_hsincos_rm_data, __zorp_hsincos_data);
ZORP_SAME_BLOCK(SincosHalfBlock, __zorp_hsincosreg_data, __zorp_hsincos_data);
ZORP_SAME_BLOCK(SincosHalfBlock, __zorp_hsincosreg_native_data, __zorp_hsincos_data);

}  // extern "C"
}  // namespace zorp
