// The constants of expm1.
#include "exp/exp_tables.h"
#include "exp/expm1.h"

namespace zorp {
extern "C" {

const Expm1DoubleBlock __zorp_dexpm1_data_avx512 = {
    .t = exp2_high_double_16,
    .tl = exp2_low_relative_double_16,
    .log2e = 0x3FF71547652B82FE,
    .shift = 0x42F8000000003FF0,  // 1.5 x 2^48: unit 1/16
    .limit = 0x40861DA04CBAFE44,  // 707.70...
    .sign = 0x8000000000000000,
    // ln 2 = ln2hi + ln2lo: relative error 2^-109.9
    .ln2hi = 0x3FE62E42FEFA39EF,
    .ln2lo = 0x3C7ABC9E3B39803F,
    .nmin = 0xC060000000000000,  // -128.0
    .rmask = 0xBFFFFFFFFFFFFFFF,
    // e^r - 1 = r + c2 r^2 + ... + c8 r^8 on |r| <= ln 2 / 32: relative error 2^-60.7
    .c8 = 0x3EFA01F8F4BE0BB2,
    .c7 = 0x3F2A01F8F4B129C3,
    .c6 = 0x3F56C16C16304601,
    .c5 = 0x3F81111110A65711,
    .c4 = 0x3FA555555555560A,
    .c3 = 0x3FC55555555555F9,
    .c2 = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
    .mone = 0xBFF0000000000000,
};

const Expm1DoubleShortBlock __zorp_dexpm1_native_data_avx512 = {
    .t = exp2_high_double_16,
    .log2e = 0x3FF71547652B82FE,
    .shift = 0x42F8000000003FF0,
    .limit = 0x40861DA04CBAFE44,
    .sign = 0x8000000000000000,
    .ln2 = 0x3FE62E42FEFA39EF,
    .rmask = 0xBFFFFFFFFFFFFFFF,
    // e^r - 1 = r + c2 r^2 + ... + c5 r^5 on |r| <= ln 2 / 32: relative error 2^-36.1
    .c5 = 0x3F811168888FAD60,
    .c4 = 0x3FA555C2AABA6423,
    .c3 = 0x3FC55555541D276C,
    .c2 = 0x3FDFFFFFFE5BC214,
    .one = 0x3FF0000000000000,
};

const Expm1FloatBlock __zorp_sexpm1_data_avx512 = {
    .t = exp2_high_float_16,
    .tl = exp2_low_relative_float_16,
    .log2e = 0x3FB8AA3B,
    .shift = 0x49400000,  // 1.5 x 2^19: unit 1/16
    .limit = 0x42AD496B,  // 86.643...
    .sign = 0x80000000,
    // ln 2 = ln2hi + ln2lo: relative error 2^-52.8
    .ln2hi = 0x3F317218,
    .ln2lo = 0xB102E308,
    .nmin = 0xC2800000,  // -64.0
    .rmask = 0xBFFFFFFF,
    // e^r - 1 = r + c2 r^2 + ... + c4 r^4 on |r| <= ln 2 / 32: relative error 2^-27.4
    .c4 = 0x3D2AAEC4,
    .c3 = 0x3E2AAEC4,
    .c2 = 0x3F000000,
    .one = 0x3F800000,
    .mone = 0xBF800000,
};

const Expm1FloatShortBlock __zorp_sexpm1_native_data_avx512 = {
    .t = exp2_high_float_32,
    .log2e = 0x3FB8AA3B,
    .shift = 0x48C00000,  // 1.5 x 2^18: unit 1/32
    .limit = 0x42AD496B,
    .sign = 0x80000000,
    .ln2 = 0x3F317218,
    .rmask = 0xBFFFFFFF,
    // e^r - 1 = r + c2 r^2 on |r| <= ln 2 / 64: relative error 2^-15.6
    .c2 = 0x3F000148,
    .one = 0x3F800000,
};

const Expm1HalfBlock __zorp_hexpm1_data = {
    .log2e = 0x3FB8AA3B,
    .nln2 = 0xBF317218,  // -ln 2
    // e^r - 1 = c1 r + ... + c4 r^4 on |r| <= ln 2 / 2: relative error 2^-15.7
    .c4 = 0x3D2BB1BE,
    .c3 = 0x3E2BB1C1,
    .c2 = 0x3EFFFEAF,
    .c1 = 0x3F7FFF03,
    .one = 0x3F800000,
};
ZORP_SAME_BLOCK(Expm1HalfBlock, __zorp_hexpm1_native_data, __zorp_hexpm1_data);

const RelativePowerTable _zixdExpHATab = exp2_pairs_relative_double_64;
ZORP_SAME_BLOCK(RelativePowerTable, _qaxdExpHATab, _zixdExpHATab);

}  // extern "C"
}  // namespace zorp
