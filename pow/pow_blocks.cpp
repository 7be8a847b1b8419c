// The constants of pow and powr. Tiers and families that run one algorithm share one block.
//
// A shifter is 1.5 x 2^k plus the exponent's bias, which leaves the low bits of a sum alone.
#include "exp/exp_tables.h"
#include "log/log_tables.h"
#include "pow/pow.h"
#include "pow/pow_tables.h"

namespace zorp {
extern "C" {

const PowDoubleBlock __zorp_dpow_data_avx512 = {
    .th = pow_log2_high_double_32,
    .tl = pow_log2_low_double_32,
    .power = exp2_high_double_16,
    .one = 0x3FF0000000000000,
    .three_halves = 0x3FF8000000000000,
    // log2(1 + r) = (c1 + c1lo) r + (c2 + c2lo) r^2 + c3 r^3 + ... + c9 r^9
    // on |r| <= 1/64: relative error 2^-65.2
    .c1 = 0x3FF71547652B82FE,
    .c2 = 0xBFE71547652B82FE,
    .c9 = 0x3FC48799F5374B96,
    .c8 = 0xBFC717E59A559F5D,
    .c7 = 0x3FCA6175FCA19D03,
    .c6 = 0xBFCEC709BC8FB8DF,
    .c5 = 0x3FD2776C50F03272,
    .c4 = 0xBFD71547652BC9EA,
    .c3 = 0x3FDEC709DC3A03FC,
    .c2lo = 0x3C636B5DDFFE5B67,
    .c1lo = 0x3C7777F3EE5E912F,
    .shift = 0x42F8000000003FF0,
    .range = 0xBFFFFFFFFFFFFFFF,
    // 2^r = 1 + e1 r + ... + e6 r^6 on [0, 1/16]: relative error 2^-55.8
    .e6 = 0x3F24A1D7F58C2D59,
    .e5 = 0x3F55D7472783D279,
    .e4 = 0x3F83B2AD1B14EBAA,
    .e3 = 0x3FAC6B08D4AD8EB9,
    .e2 = 0x3FCEBFBDFF84554D,
    .e1 = 0x3FE62E42FEFA398B,
};
ZORP_SAME_BLOCK(PowDoubleBlock, __zorp_dpowr_data_avx512, __zorp_dpow_data_avx512);

const PowDoubleShortBlock __zorp_dpow_native_data_avx512 = {
    .t = log2_double_16,
    .power = exp2_high_double_16,
    .one = 0x3FF0000000000000,
    .three_halves = 0x3FF8000000000000,
    // log2(1 + r) = c1 r + ... + c7 r^7 on |r| <= 1/32: relative error 2^-43.9
    .c7 = 0x3FCA6D10104C2777,
    .c6 = 0xBFCED12FE625DE19,
    .c5 = 0x3FD2776B43A8C495,
    .c4 = 0xBFD71546C21A4D60,
    .c3 = 0x3FDEC709DC4A43C9,
    .c2 = 0xBFE71547652E11EC,
    .c1 = 0x3FF71547652B82F4,
    .shift = 0x42F8000000003FF0,
    .range = 0xBFFFFFFFFFFFFFFF,
    // 2^r = 1 + e1 r + ... + e3 r^3 on [0, 1/16]: relative error 2^-28.6
    .e3 = 0x3FAD0A9942A3D753,
    .e2 = 0x3FCEBE2D518E7C49,
    .e1 = 0x3FE62E444056BF23,
};
ZORP_SAME_BLOCK(PowDoubleShortBlock, __zorp_dpow_rm_data_avx512, __zorp_dpow_native_data_avx512);
ZORP_SAME_BLOCK(PowDoubleShortBlock, __zorp_dpowr_native_data_avx512,
                __zorp_dpow_native_data_avx512);
ZORP_SAME_BLOCK(PowDoubleShortBlock, __zorp_dpowr_half_data_avx512, __zorp_dpow_native_data_avx512);

const PowFloatBlock __zorp_spow_data_avx512 = {
    .th = pow_log2_high_float_32,
    .tl = pow_log2_low_float_32,
    .power = exp2_high_float_32,
    .power_low = exp2_low_relative_float_32,
    .three_halves = 0x3FC00000,
    .one = 0x3F800000,
    // log2(1 + r) = (c1 + c1lo) r + (c2 + c2lo) r^2 + c3 r^3 + ... + c5 r^5
    // on |r| <= 1/64: relative error 2^-36.3
    .c5 = 0x3E93C705,
    .c4 = 0xBEB8B3ED,
    .c3 = 0x3EF6384F,
    .c2lo = 0xB1AE8807,
    .c1lo = 0x32A570CC,
    .c1 = 0x3FB8AA3B,
    .c2 = 0xBF38AA3B,
    .shift = 0x48C00FE0,
    .range = 0xBFFFFFFF,
    // 2^r = 1 + e1 r + ... + e3 r^3 on [0, 1/32]: relative error 2^-31.3
    .e3 = 0x3D65D28E,
    .e2 = 0x3E75FAD6,
    .e1 = 0x3F317219,
};

const PowrFloatBlock __zorp_spowr_data_avx512 = {
    .th = pow_log2_high_float_32,
    .tl = pow_log2_low_float_32,
    .power = exp2_high_float_16,
    .three_halves = 0x3FC00000,
    .one = 0x3F800000,
    // log2(1 + r) = (c1 + c1lo) r + c2 r^2 + ... + c5 r^5 on |r| <= 1/64: relative error 2^-33.8
    .c5 = 0x3E93C705,
    .c4 = 0xBEB8B3ED,
    .c3 = 0x3EF6384F,
    .c2 = 0xBF38AA3B,
    .c1lo = 0x32A570CC,
    .c1 = 0x3FB8AA3B,
    .shift = 0x494007F0,
    .range = 0xBFFFFFFF,
    // 2^r = 1 + e1 r + ... + e3 r^3 on [0, 1/16]: relative error 2^-28.6
    .e3 = 0x3D6854CB,
    .e2 = 0x3E75F16C,
    .e1 = 0x3F317222,
};

const PowFloatShortBlock __zorp_spow_native_data_avx512 = {
    .t = pow_log2_float_16,
    .power = exp2_high_float_16,
    .three_quarters = 0x3F400000,
    .one = 0x3F800000,
    // log2(1 + r) = c1 r + ... + c4 r^4 on |r| <= 1/32: relative error 2^-24.7
    .c4 = 0xBEB8D89E,
    .c3 = 0x3EF65D69,
    .c2 = 0xBF38AA39,
    .c1 = 0x3FB8AA3B,
    .shift = 0x494007F0,
    .range = 0xBFFFFFFF,
    // 2^r = 1 + e1 r + e2 r^2 on [0, 1/16]: relative error 2^-18.1
    .e2 = 0x3E760A40,
    .e1 = 0x3F317CC0,
};
ZORP_SAME_BLOCK(PowFloatShortBlock, __zorp_spow_rm_data_avx512, __zorp_spow_native_data_avx512);
ZORP_SAME_BLOCK(PowFloatShortBlock, __zorp_spowr_native_data_avx512,
                __zorp_spow_native_data_avx512);
ZORP_SAME_BLOCK(PowFloatShortBlock, __zorp_spowr_half_data_avx512, __zorp_spow_native_data_avx512);

const PowHalfBlock __zorp_hpow_data = {
    .one = 0x3F800000,
    // log2(1 + z) = c1 z + ... + c6 z^6 on [-1/4, 1/2]: relative error 2^-16.7
    .c6 = 0xBE1FFCAC,
    .c5 = 0x3E9864BC,
    .c4 = 0xBEBD2851,
    .c3 = 0x3EF64DC7,
    .c2 = 0xBF389E6D,
    .c1 = 0x3FB8AA2C,
    // 2^h = e0 + e1 h + ... + e3 h^3 on [0, 1]: relative error 2^-12.4
    .e3 = 0x2D12,
    .e2 = 0x332E,
    .e1 = 0x3992,
    .e0 = 0x3C00,
};
ZORP_SAME_BLOCK(PowHalfBlock, __zorp_hpow_native_data, __zorp_hpow_data);
ZORP_SAME_BLOCK(PowHalfBlock, __zorp_hpow_rm_data, __zorp_hpow_data);
ZORP_SAME_BLOCK(PowHalfBlock, __zorp_hpowr_data, __zorp_hpow_data);
ZORP_SAME_BLOCK(PowHalfBlock, __zorp_hpowr_native_data, __zorp_hpow_data);
ZORP_SAME_BLOCK(PowHalfBlock, __zorp_hpowr_half_data, __zorp_hpow_data);

}  // extern "C"
}  // namespace zorp
