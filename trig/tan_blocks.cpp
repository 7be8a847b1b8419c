// The constants of tan. The tiers of double and of float share their blocks, too: the reduced ones
// leave the last coefficients out.
#include "trig/tan.h"
#include "trig/trig_tables.h"

namespace zorp {
extern "C" {

const TanDoubleBlock __zorp_dtan_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .limit = 0x40FF400000000000,     // 128000
    .inv_step = 0x40145F306DC9C883,  // 16/pi
    .shift = 0x4338000000000000,     // 1.5 x 2^52
    // pi/16 = step1 + step2 + step3: relative error 2^-160.7
    .step1 = 0x3FC921FB54442D18,
    .step2 = 0x3C61A62633145C06,
    .step3 = 0x391C1CD129024E09,
    .one = 0x3FF0000000000000,
    // pi/256 = fine1 + fine2: relative error 2^-109.6
    .fine1 = 0x3F8921FB54442D18,
    .fine2 = 0x3C21A62633145C07,
    .tangents = tangent_double_16,
    // tan r = r + c1 r^3 + ... + c5 r^11 on |r| <= pi/32: relative error 2^-59.1
    // tan r = r + c1 r^3 + ... + c4 r^9 on |r| <= pi/32: relative error 2^-40.2
    .c1 = 0x3FD55555555555DC,
    .c2 = 0x3FC11111110B0802,
    .c3 = 0x3FABA1BA489D25CA,
    .c4 = 0x3F9664AB664EFBA9,
    .c5 = 0x3F825CCCC7C9FA5D,
};
ZORP_SAME_BLOCK(TanDoubleBlock, __zorp_dtan_native_data, __zorp_dtan_data);
ZORP_SAME_BLOCK(TanDoubleBlock, __zorp_dtan_half_data, __zorp_dtan_data);
ZORP_SAME_BLOCK(TanDoubleBlock, __zorp_dtan_rm_data, __zorp_dtan_data);

const TanFloatBlock __zorp_stan_data = {
    .absmask = 0x7FFFFFFF,
    .limit = 0x46010000,     // 8256
    .inv_step = 0x4122F983,  // 32/pi
    .shift = 0x4B400000,     // 1.5 x 2^23
    // pi/32 = step1 + step2 + step3: relative error 2^-73.8
    .step1 = 0x3DC90FDA,
    .step2 = 0x31A22168,
    .step3 = 0x25C234C5,
    .one = 0x3F800000,
    // pi/128 = fine1 + fine2: relative error 2^-49.7
    .fine1 = 0x3CC90FDB,
    .fine2 = 0xB03BBD2E,
    .tangents = tangent_float_32,
    // tan r = r + c1 r^3 + c2 r^5 on |r| <= pi/64: relative error 2^-34.9
    // tan r = r + c1 r^3 on |r| <= pi/64: relative error 2^-20.3
    .c1 = 0x3EAAAAA6,
    .c2 = 0x3E08B888,
};
ZORP_SAME_BLOCK(TanFloatBlock, __zorp_stan_native_data, __zorp_stan_data);
ZORP_SAME_BLOCK(TanFloatBlock, __zorp_stan_half_data, __zorp_stan_data);
ZORP_SAME_BLOCK(TanFloatBlock, __zorp_stan_rm_data, __zorp_stan_data);

const TanHalfBlock __zorp_htan_data = {
    .absmask = 0x7FFF,
    .shift = 0x4B000000,  // 2^23
    .two_over_pi = 0x3F22F983,
    // -pi/2 = pi_half1 + pi_half2: relative error 2^-49.7
    .pi_half1 = 0xBFC90FDB,
    .pi_half2 = 0x333BBD2E,
    // tan r = c4 r + ... + c1 r^7 on |r| <= pi/4: relative error 2^-14.4
    .c1 = 0x3DC0C789,
    .c2 = 0x3DED84C2,
    .c3 = 0x3EABD185,
    .c4 = 0x3F7FFD1B,
};

const TanHalfShortBlock __zorp_htan_native_data = {
    .absmask = 0x7FFF,
    .shift = 0x4B000000,  // 2^23
    .two_over_pi = 0x3F22F983,
    // -pi/2 = pi_half1 + pi_half2: relative error 2^-49.7
    .pi_half1 = 0xBFC90FDB,
    .pi_half2 = 0x333BBD2E,
    // tan r = (1 + c4) r + c3 r^3 + ... + c1 r^7 on |r| <= pi/4: relative error 2^-13.4
    .c1 = 0x2E06,
    .c2 = 0x2F6C,
    .c3 = 0x355F,
    .c4 = 0x82E5,
};
ZORP_SAME_BLOCK(TanHalfShortBlock, __zorp_htan_half_data, __zorp_htan_native_data);
ZORP_SAME_BLOCK(TanHalfShortBlock, __zorp_htan_rm_data, __zorp_htan_native_data);

}  // extern "C"
}  // namespace zorp
