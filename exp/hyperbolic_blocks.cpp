// The constants of sinh and cosh.
#include "exp/hyperbolic.h"
#include "exp/hyperbolic_tables.h"

namespace zorp {
extern "C" {

const SinhDoubleBlock __zorp_dsinh_data = {
    .log2e = 0x3FF71547652B82FE,
    // ln 2 = ln2hi + ln2lo: relative error 2^-92.4
    .ln2hi = 0x3FE62E42FEFA0000,
    .ln2lo = 0x3D7CF79ABC9E3B3A,
    .sign = 0x8000000000000000,
    .pairs = sinh_pairs_double_128,
    .shift = 0x42C8000000000000,     // 1.5 x 2^45: unit 1/128
    .limit = high_word(0x40861D99),  // 707.70...
    // sinh r = r + c3 r^3 + c5 r^5 on |r| <= ln 2 / 256: relative error 2^-68.1
    // cosh r = 1 + c2 r^2 + c4 r^4 on |r| <= ln 2 / 256: relative error 2^-65.3
    .c2 = 0x3FDFFFFFFFFFFDBD,
    .c3 = 0x3FC55555555554AD,
    .c4 = 0x3FA55555CF16D299,
    .c5 = 0x3F8111115712F425,
    .jmask = 0x7F,
};

const SinhDoubleShortBlock __zorp_dsinh_native_data = {
    .tp = exp2_half_plus_double_16,
    .tm = exp2_half_minus_double_16,
    .shift = 0x42F8000000000000,     // 1.5 x 2^48: unit 1/16
    .limit = high_word(0x4084EE33),  // 669.77...
    .jmask = 0xF,
    // sinh r = r + c3 r^3 + c5 r^5 on |r| <= ln 2 / 32: relative error 2^-45.4
    // cosh r = 1 + c2 r^2 + c4 r^4 on |r| <= ln 2 / 32: relative error 2^-42.6
    .c2 = 0x3FE0000000000000,
    .c3 = 0x3FC5555555555CA6,
    .c4 = 0x3FA5555555554B4C,
    .c5 = 0x3F8111110EDC6EDA,
    .log2e = 0x3FF71547652B82FE,
    // ln 2 = ln2hi + ln2lo: relative error 2^-92.4
    .ln2hi = 0x3FE62E42FEFA0000,
    .ln2lo = 0x3D7CF79ABC9E3B3A,
    .sign = 0x8000000000000000,
};

const SinhFloatBlock __zorp_ssinh_data = {
    .log2e = 0x3FB8AA3B,
    // ln 2 = ln2hi + ln2lo: relative error 2^-38.6
    .ln2hi = 0x3F317000,
    .ln2lo = 0x3805FDF4,
    .sign = 0x80000000,
    .shift = 0x4B400000,  // 1.5 x 2^23: unit 1
    .limit = 0x42AEAC4E,  // 87.3365...
    // sinh r = r + c3 r^3 + c5 r^5 on |r| <= ln 2 / 2: relative error 2^-26.1
    // cosh r = 1 + c2 r^2 + c4 r^4 + c6 r^6 on |r| <= ln 2 / 2: relative error 2^-33.2
    .c2 = 0x3F000000,
    .c3 = 0x3E2AAA57,
    .c4 = 0x3D2AAA72,
    .c5 = 0x3C091461,
    .c6 = 0x3AB6A8A3,
    .half = 0x3F000000,
};

const SinhFloatShortBlock __zorp_ssinh_native_data = {
    .log2e = 0x3FB8AA3B,
    // ln 2 = ln2hi + ln2lo: relative error 2^-38.6
    .ln2hi = 0x3F317000,
    .ln2lo = 0x3805FDF4,
    .sign = 0x80000000,
    .shift = 0x4B400000,
    .limit = 0x42AEAC4E,
    // sinh r = c1 r + c3 r^3 on |r| <= ln 2 / 2: relative error 2^-13.9
    // cosh r = 1 + c2 r^2 + c4 r^4 on |r| <= ln 2 / 2: relative error 2^-20.2
    .c1 = 0x3F7FFBC9,
    .c2 = 0x3EFFFB2F,
    .c3 = 0x3E2CCD2E,
    .c4 = 0x3D2CA395,
    .half = 0x3F000000,
};

const SinhHalfBlock __zorp_hsinh_data = {
    .absmask = 0x7FFF,
    .log2e = 0x3FB8AA3B,
    .shift = 0x4B400000,
    .ln2 = 0x3F317218,
    .rmask = 0xBFFFFFFF,
    // e^r - 1 = c0 r + ... + c3 r^4 on |r| <= ln 2: relative error 2^-11.5
    .c3 = 0x3D2ECF38,
    .c2 = 0x3E2ECF6F,
    .c1 = 0x3EFFEAB1,
    .c0 = 0x3F7FF006,
    .one = 0x3F800000,
    .quarter = 0x3E800000,
};

const SinhHalfShortBlock __zorp_hsinh_native_data = {
    .absmask = 0x7FFF,
    .log2e = 0x3DC5,
    .shift = 0x6600,  // 1536.0
    // ln 2 = ln2hi + ln2lo: relative error 2^-28.4
    .ln2hi = 0x398C,
    .ln2lo = 0x8AF4,
    .rmask = 0xBFFF,
    // e^r - 1 = c0 r + ... + c3 r^4 on |r| <= ln 2: relative error 2^-10.5
    .c3 = 0x2976,
    .c2 = 0x3176,
    .c1 = 0x37FF,
    .c0 = 0x3C00,
    .quarter = 0x3400,
};

const CoshDoubleBlock __zorp_dcosh_data = {
    .tp = exp2_half_plus_double_16,
    .tm = exp2_half_minus_double_16,
    .shift = 0x42F8000000000000,
    // sinh r = r + c3 r^3 + c5 r^5 + c7 r^7 on |r| <= ln 2 / 32: relative error 2^-64.9
    // cosh r = 1 + c2 r^2 + c4 r^4 + c6 r^6 on |r| <= ln 2 / 32: relative error 2^-66.2
    .c2 = 0x3FE0000000000004,
    .c3 = 0x3FC5555555555543,
    .c4 = 0x3FA5555555484F37,
    .c5 = 0x3F81111111286A0C,
    .c6 = 0x3F56C183DA08F116,
    .c7 = 0x3F2A018D76DA03DA,
    .log2e = 0x3FF71547652B82FE,
    // ln 2 = ln2hi + ln2lo: relative error 2^-90.8
    .ln2hi = 0x3FE62E42FEFC0000,
    .ln2lo = 0xBDAC610CA86C3899,
    .emask = 0x7FF0000000000000,
    .sign = 0x8000000000000000,
    .limit = high_word(0x40861D99),
};

const CoshDoubleShortBlock __zorp_dcosh_native_data = {
    .tp = exp2_half_plus_double_16,
    .tm = exp2_half_minus_double_16,
    .shift = 0x42F8000000000000,
    // sinh r = r + c3 r^3 + c5 r^5 on |r| <= ln 2 / 32: relative error 2^-45.4
    // cosh r = 1 + c2 r^2 + c4 r^4 on |r| <= ln 2 / 32: relative error 2^-42.6
    .c2 = 0x3FE0000000000004,
    .c3 = 0x3FC5555555555543,
    .c4 = 0x3FA5555555484F37,
    .c5 = 0x3F81111111286A0C,
    .log2e = 0x3FF71547652B82FE,
    // ln 2 = ln2hi + ln2lo: relative error 2^-90.8
    .ln2hi = 0x3FE62E42FEFC0000,
    .ln2lo = 0xBDAC610CA86C3899,
    .emask = 0x7FF0000000000000,
    .sign = 0x8000000000000000,
    .limit = high_word(0x40861D99),
};

const CoshFloatBlock __zorp_scosh_data = {
    .tp = exp2_half_plus_float_32,
    .tm = exp2_half_minus_float_32,
    .shift = 0x48C00000,  // 1.5 x 2^18: unit 1/32
    .limit = 0x42AEAC4E,
    // sinh r = r + c3 r^3 on |r| <= ln 2 / 64: relative error 2^-34.0
    // cosh r = 1 + c2 r^2 on |r| <= ln 2 / 64: relative error 2^-29.4
    .c2 = 0x3F00010F,
    .c3 = 0x3E2AAACD,
    .log2e = 0x3FB8AA3B,
    // ln 2 = ln2hi + ln2lo: relative error 2^-38.6
    .ln2hi = 0x3F317000,
    .ln2lo = 0x3805FDF4,
    .sign = 0x80000000,
    .emask = 0x7F800000,
};

const CoshFloatShortBlock __zorp_scosh_native_data = {
    .tp = exp2_half_plus_float_32,
    .tm = exp2_half_minus_float_32,
    .shift = 0x48C00000,
    .limit = 0x42AEAC4E,
    .log2e = 0x3FB8AA3B,
    // ln 2 = ln2hi + ln2lo: relative error 2^-38.6
    .ln2hi = 0x3F317000,
    .ln2lo = 0x3805FDF4,
    .sign = 0x80000000,
    .emask = 0x7F800000,
};

const CoshHalfBlock __zorp_hcosh_data = {
    .absmask = 0x7FFF,
    .log2e = 0x3DC5,
    .shift = 0x6600,
    // ln 2 = ln2hi + ln2lo: relative error 2^-28.4
    .ln2hi = 0x398C,
    .ln2lo = 0x8AF4,
    // e^r = 1 + r + c2 r^2 + ... + c4 r^4 on [0, ln 2]: relative error 2^-14.9
    .c4 = 0x2B17,
    .c3 = 0x3122,
    .c2 = 0x3802,
    .one = 0x3C00,
    .quarter = 0x3400,
};
ZORP_SAME_BLOCK(CoshHalfBlock, __zorp_hcosh_native_data, __zorp_hcosh_data);

const PowerTable __dsinh_g_CoutTab = exp2_pairs_double_65;
ZORP_SAME_BLOCK(PowerTable, __ssinh_g_CoutTab, __dsinh_g_CoutTab);
ZORP_SAME_BLOCK(PowerTable, __dcosh_g_CoutTab, __dsinh_g_CoutTab);
ZORP_SAME_BLOCK(PowerTable, __scosh_g_CoutTab, __dsinh_g_CoutTab);

}  // extern "C"
}  // namespace zorp
