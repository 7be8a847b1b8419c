// The constants of exp, exp2 and exp10. Tiers that run one algorithm share one block.
#include "exp/exp.h"
#include "exp/exp_tables.h"

namespace zorp {
extern "C" {

const ExpDoubleBlock __zorp_dexp_data_avx512 = {
    .th = exp2_high_double_8,
    .tl = exp2_low_relative_double_8,
    .log2e = 0x3FF71547652B82FE,
    .shift = 0x4308000000003FF0,  // 1.5 x 2^49 + 2046: unit 1/8, and j in the low bits
    // ln 2 = ln2hi + ln2lo: relative error 2^-109.9
    .ln2hi = 0x3FE62E42FEFA39EF,
    .ln2lo = 0x3C7ABC9E3B39803F,
    .rmask = 0xBFFFFFFFFFFFFFFF,
    // e^r = 1 + c1 r + ... + c7 r^7 on [0, ln 2 / 8]: relative error 2^-57.5
    .c7 = 0x3F2B28056EA3D8B9,
    .c6 = 0x3F56BC377AFAB2E0,
    .c5 = 0x3F81111D488F67BE,
    .c4 = 0x3FA5555535A28874,
    .c3 = 0x3FC555555581ECF0,
    .c2 = 0x3FDFFFFFFFFFC27C,
    .c1 = 0x3FF0000000000010,
};

const ExpDoubleShortBlock __zorp_dexp_native_data_avx512 = {
    .th = exp2_high_double_8,
    .log2e = 0x3FF71547652B82FE,
    .shift = 0x4308000000003FF0,
    // ln 2 = ln2hi: relative error 2^-54.7
    .ln2hi = 0x3FE62E42FEFA39EF,
    .rmask = 0xBFFFFFFFFFFFFFFF,
    // e^r = 1 + c1 r + ... + c4 r^4 on [0, ln 2 / 8]: relative error 2^-32.5
    .c4 = 0x3FA646AE66C82C5D,
    .c3 = 0x3FC550BF0B8C5804,
    .c2 = 0x3FE000090EE70BF8,
    .c1 = 0x3FEFFFFFE7109A30,
    .absmask = 0x7FFFFFFFFFFFFFFF,
};
ZORP_SAME_BLOCK(ExpDoubleShortBlock, __zorp_dexp_half_data_avx512, __zorp_dexp_native_data_avx512);
ZORP_SAME_BLOCK(ExpDoubleShortBlock, __zorp_dexp_rm_data_avx512, __zorp_dexp_native_data_avx512);

const ExpFloatBlock __zorp_sexp_data_avx512 = {
    .tl = exp2_low_relative_float_16,
    .th = exp2_high_float_16,
    .log2e = 0x3FB8AA3B,
    .shift = 0x49400000,  // 1.5 x 2^19
    // ln 2 = ln2hi + ln2lo: relative error 2^-52.8
    .ln2hi = 0x3F317218,
    .ln2lo = 0xB102E308,
    .rmask = 0xBFFFFFFF,
    // e^r = 1 + r + c2 r^2 + c3 r^3 on [0, ln 2 / 16]: relative error 2^-26.7
    .c3 = 0x3E2D77F1,
    .c2 = 0x3EFFFA27,
    .absmask = 0x7FFFFFFF,
};
ZORP_SAME_BLOCK(ExpFloatBlock, __zorp_sexp_rm_data_avx512, __zorp_sexp_data_avx512);

const ExpFloatShortBlock __zorp_sexp_native_data_avx512 = {
    .th = exp2_high_float_16,
    .log2e = 0x3FB8AA3B,
    .shift = 0x49400000,
    // ln 2 = ln2hi: relative error 2^-28.4
    .ln2hi = 0x3F317218,
    .rmask = 0xBFFFFFFF,
    // e^r = c0 + c1 r on [0, ln 2 / 16]: relative error 2^-12.0
    .c1 = 0x3F82CC37,
    .c0 = 0x3F800000,
    .absmask = 0x7FFFFFFF,
};
ZORP_SAME_BLOCK(ExpFloatShortBlock, __zorp_sexp_half_data_avx512, __zorp_sexp_native_data_avx512);

const ExpHalfBlock __zorp_hexp_data = {
    .delta = 0x0100,  // 56.0 - 48.0, in encodings
    .shift = 0x5300,  // 56.0
    .log2e = 0x3DC5,
    // -ln 2 = nln2hi + ln2lo: relative error 2^-28.4
    .nln2hi = 0xB98C,
    .ln2lo = 0x0AF4,
    .th = exp2_high_half_32,
    .absmask = 0x7FFF,
};
ZORP_SAME_BLOCK(ExpHalfBlock, __zorp_hexp_native_data, __zorp_hexp_data);
ZORP_SAME_BLOCK(ExpHalfBlock, __zorp_hexp_half_data, __zorp_hexp_data);
ZORP_SAME_BLOCK(ExpHalfBlock, __zorp_hexp_rm_data, __zorp_hexp_data);

const Exp2DoubleBlock __zorp_dexp2_data_avx512 = {
    .th = exp2_high_double_16,
    .tl = exp2_low_absolute_double_16,
    // 2^r = 1 + c1 r + ... + c6 r^6 on [0, 1/16]: relative error 2^-55.9
    .c1 = 0x3FE62E42FEFA398B,
    .c2 = 0x3FCEBFBDFF84555A,
    .c3 = 0x3FAC6B08D4AD86B9,
    .c4 = 0x3F83B2AD1B172252,
    .c5 = 0x3F55D7472713CD19,
    .c6 = 0x3F24A1D7F526371B,
    .shift = 0x42F8000000000000,  // 1.5 x 2^48
};

const Exp2DoubleShortBlock __zorp_dexp2_native_data_avx512 = {
    .th = exp2_high_double_16,
    // 2^r = 1 + c1 r + ... + c3 r^3 on [0, 1/16]: relative error 2^-28.6
    .c1 = 0x3FE62E44405BBDB3,
    .c2 = 0x3FCEBE2D5052AE9B,
    .c3 = 0x3FAD0A994197F0BE,
    .shift = 0x42F8000000000000,
};
ZORP_SAME_BLOCK(Exp2DoubleShortBlock, __zorp_dexp2_half_data_avx512,
                __zorp_dexp2_native_data_avx512);
ZORP_SAME_BLOCK(Exp2DoubleShortBlock, __zorp_dexp2_rm_data_avx512, __zorp_dexp2_native_data_avx512);

const Exp2FloatBlock __zorp_sexp2_data_avx512 = {
    .th = exp2_high_float_16,
    .tl = exp2_low_absolute_float_16,
    // 2^r = 1 + c1 r + ... + c4 r^4 on [0, 1/16]: relative error 2^-32.1
    .c1 = 0x3F317218,
    .c2 = 0x3E75FE01,
    .c3 = 0x3D634C22,
    .c4 = 0x3C2109D9,
    .shift = 0x49400000,
};
ZORP_SAME_BLOCK(Exp2FloatBlock, __zorp_sexp2_rm_data_avx512, __zorp_sexp2_data_avx512);

const Exp2FloatShortBlock __zorp_sexp2_native_data_avx512 = {
    .th = exp2_high_float_16,
    // 2^r = 1 + c1 r + c2 r^2 on [0, 1/16]: relative error 2^-20.1
    .c1 = 0x3F3169F5,
    .c2 = 0x3E7B6408,
    .shift = 0x49400000,
};
ZORP_SAME_BLOCK(Exp2FloatShortBlock, __zorp_sexp2_half_data_avx512,
                __zorp_sexp2_native_data_avx512);

const Exp2HalfBlock __zorp_hexp2_data = {
    // 2^r = c0 + c1 r + ... + c3 r^3 on [0, 1]: relative error 2^-12.4
    .c3 = 0x2D12,
    .c2 = 0x332E,
    .c1 = 0x3992,
    .c0 = 0x3C00,
};
ZORP_SAME_BLOCK(Exp2HalfBlock, __zorp_hexp2_native_data, __zorp_hexp2_data);
ZORP_SAME_BLOCK(Exp2HalfBlock, __zorp_hexp2_half_data, __zorp_hexp2_data);
ZORP_SAME_BLOCK(Exp2HalfBlock, __zorp_hexp2_rm_data, __zorp_hexp2_data);

const Exp10DoubleBlock __zorp_dexp10_data_avx512 = {
    .th = exp2_high_double_16,
    .tl = exp2_low_relative_double_16,
    .log210 = 0x400A934F0979A371,
    .shift = 0x42F8000000003FF0,  // 1.5 x 2^48 + 1023
    // log10 2 = lg2hi + lg2lo: relative error 2^-112.0
    .lg2hi = 0x3FD34413509F79FF,
    .lg2lo = 0xBC49DC1DA994FD21,
    .rmask = 0xBFFFFFFFFFFFFFFF,
    // 10^r = 1 + c1 r + ... + c6 r^6 on [0, log10 2 / 16]: relative error 2^-55.6
    .c6 = 0x3FCB137ED8AC2020,
    .c5 = 0x3FE141A8E24F9424,
    .c4 = 0x3FF2BD77A0926C9D,
    .c3 = 0x40004705908704C8,
    .c2 = 0x40053524C73DFE25,
    .c1 = 0x40026BB1BBB554C2,
};

const Exp10DoubleShortBlock __zorp_dexp10_native_data_avx512 = {
    .th = exp2_high_double_16,
    .log210 = 0x400A934F0979A371,
    .shift = 0x42F8000000003FF0,
    // log10 2 = lg2hi: relative error 2^-56.5
    .lg2hi = 0x3FD34413509F79FF,
    .rmask = 0xBFFFFFFFFFFFFFFF,
    // 10^r = 1 + c1 r + ... + c3 r^3 on [0, log10 2 / 16]: relative error 2^-28.6
    .c3 = 0x4000A26AE1464385,
    .c2 = 0x400534106D1738C9,
    .c1 = 0x40026BB2C69C01E2,
    .absmask = 0x7FFFFFFFFFFFFFFF,
};
ZORP_SAME_BLOCK(Exp10DoubleShortBlock, __zorp_dexp10_half_data_avx512,
                __zorp_dexp10_native_data_avx512);
ZORP_SAME_BLOCK(Exp10DoubleShortBlock, __zorp_dexp10_rm_data_avx512,
                __zorp_dexp10_native_data_avx512);

const Exp10FloatBlock __zorp_sexp10_data_avx512 = {
    .tl = exp2_low_relative_float_32,
    .th = exp2_high_float_32,
    .log210 = 0x40549A78,
    .shift = 0x48C00000,  // 1.5 x 2^18
    // log10 2 = lg2hi + lg2lo: relative error 2^-52.1
    .lg2hi = 0x3E9A209B,
    .lg2lo = 0xB2760860,
    .rmask = 0xBFFFFFFF,
    // 10^r = 1 + c1 r + ... + c3 r^3 on [0, log10 2 / 32]: relative error 2^-28.7
    .c3 = 0x40051357,
    .c2 = 0x4029A083,
    .c1 = 0x40135D96,
    .absmask = 0x7FFFFFFF,
};

const Exp10FloatShortBlock __zorp_sexp10_native_data_avx512 = {
    .ta = exp2_fine_float_16,
    .tb = exp2_middle_float_32,
    .tc = exp2_high_float_32,
    .log210 = 0x40549A78,
    .shift = 0x44400000,  // 768.0: unit 2^-14
};
ZORP_SAME_BLOCK(Exp10FloatShortBlock, __zorp_sexp10_half_data_avx512,
                __zorp_sexp10_native_data_avx512);
ZORP_SAME_BLOCK(Exp10FloatShortBlock, __zorp_sexp10_rm_data_avx512,
                __zorp_sexp10_native_data_avx512);

const Exp10HalfBlock __zorp_hexp10_data = {
    .xmin = 0xC800,   // -8.0: the result rounds to zero
    .xmax = 0x4600,   // 6.0: the result overflows
    .shift = 0x6A0F,  // 3102.0: unit 2, and the exponent bias in the low bits
    // log2 10 = log210 + log210lo: relative error 2^-25.4
    .log210 = 0x42A5,
    .log210lo = 0x8D88,
    // 2^r = 1 + c1 r + ... + c4 r^4 on [-1, 1]: relative error 2^-11.4
    .c4 = 0x2110,
    .c3 = 0x2B52,
    .c2 = 0x33AF,
    .c1 = 0x398B,
    .inf = 0x7C00,
};
ZORP_SAME_BLOCK(Exp10HalfBlock, __zorp_hexp10_native_data, __zorp_hexp10_data);
ZORP_SAME_BLOCK(Exp10HalfBlock, __zorp_hexp10_half_data, __zorp_hexp10_data);
ZORP_SAME_BLOCK(Exp10HalfBlock, __zorp_hexp10_rm_data, __zorp_hexp10_data);

}  // extern "C"
}  // namespace zorp
