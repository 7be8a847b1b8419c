// The constants of log, log2 and log10. Tiers that run one algorithm share one block.
//
// The tables by interval hold the coefficients of polynomials for log(1 + z) / z: interval j of n
// is [1 + j/n, 1 + (j+1)/n) in the lower half of the table, where m lies above 1, and
// [(n+j)/2n, (n+j+1)/2n) in the upper half, where it lies below.
#include "log/log.h"
#include "log/log_tables.h"

namespace zorp {
extern "C" {

const LogDoubleBlock __zorp_dln_data_avx512 = {
    .th = ln_high_double_8,
    .tl = ln_low_double_8,
    .one = 0x3FF0000000000000,
    .three_quarters = 0x3FE8000000000000,
    // ln(1 + r) = r + c2 r^2 + ... + c11 r^11 on |r| <= 1/16: relative error 2^-56.8
    .c11 = 0x3FB7811843796ACA,
    .c10 = 0xBFB9D4D94C6A34BD,
    .c9 = 0x3FBC718497BDD31F,
    .c8 = 0xBFBFFFC466AF551D,
    .c7 = 0x3FC24924A36E51FF,
    .c6 = 0xBFC55555626F41E5,
    .c5 = 0x3FC9999999959EA2,
    .c4 = 0xBFCFFFFFFFFDA662,
    .c3 = 0x3FD5555555555580,
    .c2 = 0xBFE0000000000008,
    // ln 2 = ln2hi + ln2lo: relative error 2^-77.5
    .ln2hi = 0x3FE62E42FEFA0000,
    .ln2lo = 0x3D7CF79ABC9E0000,  // cut short, so that exponent times this is exact
};

const LogDoubleShortBlock __zorp_dln_native_data_avx512 = {
    .t = ln_double_8,
    .one = 0x3FF0000000000000,
    .three_quarters = 0x3FE8000000000000,
    // ln(1 + r) = r + a2 r^2 + ... + a6 r^6 on |r| <= 1/16: relative error 2^-30.7
    .a6 = 0xBFC570FAD80A4B64,
    .a5 = 0x3FC9B53BE7EAD47D,
    .a4 = 0xBFCFFFF289B15435,
    .a3 = 0x3FD555502024AAB1,
    .a2 = 0xBFE00000006661EF,
    .ln2 = 0x3FE62E42FEFA39EF,
};
ZORP_SAME_BLOCK(LogDoubleShortBlock, __zorp_dln_half_data_avx512, __zorp_dln_native_data_avx512);
ZORP_SAME_BLOCK(LogDoubleShortBlock, __zorp_dln_rm_data_avx512, __zorp_dln_native_data_avx512);

const LogFloatBlock __zorp_sln_data_avx512 = {
    .round = 0x00040000,
    .mask = 0xFFF80000,
    .ah = ln_unit_high_float_16,
    .al = ln_unit_low_float_16,
    .bh = ln_high_float_16,
    .bl = ln_low_float_16,
    .one = 0x3F800000,
    // ln(1 + r) = r + c2 r^2 + ... + c5 r^5 on |r| <= 1/32: relative error 2^-26.5
    .c5 = 0x3E4DA3BA,
    .c4 = 0xBE806B6A,
    .c3 = 0x3EAAAA84,
    .c2 = 0xBEFFFFE5,
    // ln 2 = ln2hi + ln2lo: relative error 2^-43.5
    .ln2hi = 0x3F317200,
    .ln2lo = 0x35BFBE8E,
};
ZORP_SAME_BLOCK(LogFloatBlock, __zorp_sln_rm_data_avx512, __zorp_sln_data_avx512);

const LogFloatNativeBlock __zorp_sln_native_data_avx512 = {
    // ln(1 + z) = z (p0[j] + p1[j] z + p2[j] z^2) on [j/16, (j + 1)/16], j = 0..7
    // and [j/32 - 1/2, (j + 1)/32 - 1/2], j = 8..15: relative error 2^-18.0
    .p2 = {{0x3E9F5A07, 0x3E8B868E, 0x3E760E62, 0x3E5A55A8, 0x3E42D74F, 0x3E2EC63A, 0x3E1D832D,
            0x3E0E9119, 0x3F1B0F68, 0x3F0DDD15, 0x3F0236CB, 0x3EEFC41F, 0x3EDD5D70, 0x3ECCE9A0,
            0x3EBE25FA, 0x3EB0DA76}},
    .p1 = {{0xBEFFBD9F, 0xBEFD4C8B, 0xBEF93411, 0xBEF4074E, 0xBEEE2C74, 0xBEE7EAF9, 0xBEE17501,
            0xBEDAEDBB, 0xBEDABF99, 0xBEE64FD3, 0xBEEF101A, 0xBEF5881B, 0xBEFA2464, 0xBEFD3C5F,
            0xBEFF16CA, 0xBEFFED39}},
    .p0 = {{0x3F800000, 0x3F7FF60F, 0x3F7FD55A, 0x3F7F9762, 0x3F7F39E1, 0x3F7EBCF6, 0x3F7E221C,
            0x3F7D6B86, 0x3F80C697, 0x3F80757F, 0x3F8040E0, 0x3F802072, 0x3F800DF1, 0x3F80049C,
            0x3F8000DF, 0x3F800000}},
    .one = 0x3F800000,
    .ln2 = 0x3F317218,
};

const LogFloatHalfBlock __zorp_sln_half_data_avx512 = {
    // ln(1 + z) = z (p0[j] + p1[j] z + p2[j] z^2 + p3[j] z^3) on [j/16, (j + 1)/16], j = 0..7
    // and [j/32 - 1/2, (j + 1)/32 - 1/2], j = 8..15: relative error 2^-24.3
    .p3 = {{0xBE6831EF, 0xBE40408E, 0xBE20CE25, 0xBE07BB45, 0xBDE70571, 0xBDC611F1, 0xBDAAF886,
            0xBD947E78, 0xBF15EE8D, 0xBF040BD7, 0xBEE9B172, 0xBECFB3F7, 0xBEB95BAB, 0xBEA60C13,
            0xBE9546FB, 0xBE86A5E0}},
    .p2 = {{0x3EAA36BB, 0x3EA68B39, 0x3EA0B403, 0x3E99B179, 0x3E922487, 0x3E8A71E0, 0x3E82D7C6,
            0x3E76F776, 0x3E4684FE, 0x3E758F3D, 0x3E8BEA95, 0x3E982131, 0x3EA088C4, 0x3EA5FC8D,
            0x3EA9260B, 0x3EAA88FA}},
    .p1 = {{0xBEFFFE93, 0xBEFFC28B, 0xBEFF0773, 0xBEFDB76B, 0xBEFBD4FB, 0xBEF96E20, 0xBEF69561,
            0xBEF35E29, 0xBF060F28, 0xBF037AC6, 0xBF01DE22, 0xBF00E8DA, 0xBF0061A0, 0xBF001FA4,
            0xBF0005F1, 0xBF00001B}},
    .p0 = {{0x3F800000, 0x3F7FFF55, 0x3F7FFB64, 0x3F7FF0DB, 0x3F7FDCBC, 0x3F7FBCB5, 0x3F7F8F2C,
            0x3F7F532C, 0x3F7FA089, 0x3F7FD0DC, 0x3F7FEAC4, 0x3F7FF79D, 0x3F7FFD4C, 0x3F7FFF62,
            0x3F7FFFEF, 0x3F800000}},
    .one = 0x3F800000,
    .ln2 = 0x3F317218,
};

const LogHalfBlock __zorp_hln_data = {
    .one = 0x3C00,
    .ln2 = 0x398C,
    // ln(1 + z) = z (p0[j] + p1[j] z) on [j/32, (j + 1)/32], j = 0..15
    // and [j/64 - 1/2, (j + 1)/64 - 1/2], j = 16..31: relative error 2^-11.6
    .p1 = {{0xB7D6, 0xB787, 0xB73C, 0xB6F6, 0xB6B5, 0xB677, 0xB63E, 0xB607, 0xB5D3, 0xB5A3, 0xB575,
            0xB549, 0xB520, 0xB4F8, 0xB4D3, 0xB4AF, 0xB9C4, 0xB99D, 0xB978, 0xB955, 0xB933, 0xB912,
            0xB8F3, 0xB8D5, 0xB8B8, 0xB89C, 0xB882, 0xB868, 0xB850, 0xB838, 0xB821, 0xB80B}},
    .p0 = {{0x3C00, 0x3BFF, 0x3BFC, 0x3BF9, 0x3BF5, 0x3BF0, 0x3BEB, 0x3BE5, 0x3BDE, 0x3BD8, 0x3BD0,
            0x3BC9, 0x3BC1, 0x3BB9, 0x3BB1, 0x3BA9, 0x3BC4, 0x3BCD, 0x3BD5, 0x3BDC, 0x3BE2, 0x3BE8,
            0x3BED, 0x3BF1, 0x3BF5, 0x3BF8, 0x3BFA, 0x3BFC, 0x3BFE, 0x3BFF, 0x3C00, 0x3C00}},
};
ZORP_SAME_BLOCK(LogHalfBlock, __zorp_hln_native_data, __zorp_hln_data);
ZORP_SAME_BLOCK(LogHalfBlock, __zorp_hln_half_data, __zorp_hln_data);
ZORP_SAME_BLOCK(LogHalfBlock, __zorp_hln_rm_data, __zorp_hln_data);

const Log2DoubleBlock __zorp_dlog2_data_avx512 = {
    .th = log2_high_double_16,
    .tl = log2_low_double_16,
    .one = 0x3FF0000000000000,
    .three_quarters = 0x3FE8000000000000,
    // log2(1 + r) = (c1 + c1lo) r + c2 r^2 + ... + c10 r^10 on |r| <= 1/32: relative error 2^-61.0
    .c10 = 0xBFC283074B6385ED,
    .c9 = 0x3FC48F3D7961DDC4,
    .c8 = 0xBFC715442D67F111,
    .c7 = 0x3FCA6173D9393468,
    .c6 = 0xBFCEC709DC9F7735,
    .c5 = 0x3FD2776C510A3422,
    .c4 = 0xBFD71547652B8064,
    .c3 = 0x3FDEC709DC3A0328,
    .c2 = 0xBFE71547652B82FE,
    .c1lo = 0x3C77BC726BB4732E,
    .c1 = 0x3FF71547652B82FE,  // log2 e, rounded
};

const Log2DoubleShortBlock __zorp_dlog2_native_data_avx512 = {
    .t = log2_double_16,
    .one = 0x3FF0000000000000,
    .three_quarters = 0x3FE8000000000000,
    // log2(1 + r) = a1 r + ... + a5 r^5 on |r| <= 1/32: relative error 2^-31.5
    .a5 = 0x3FD27D38E848DD63,
    .a4 = 0xBFD71A1C43B6BC0C,
    .a3 = 0x3FDEC7092F2CDEAD,
    .a2 = 0xBFE715473E5B4B82,
    .a1 = 0x3FF71547652C58D9,
};
ZORP_SAME_BLOCK(Log2DoubleShortBlock, __zorp_dlog2_half_data_avx512,
                __zorp_dlog2_native_data_avx512);
ZORP_SAME_BLOCK(Log2DoubleShortBlock, __zorp_dlog2_rm_data_avx512, __zorp_dlog2_native_data_avx512);

const Log2FloatBlock __zorp_slog2_data_avx512 = {
    .th = log2_high_float_32,
    .tl = log2_low_float_32,
    .one = 0x3F800000,
    // log2(1 + r) = (c1 + c1lo) r + c2 r^2 + ... + c4 r^4 on |r| <= 1/64: relative error 2^-29.2
    .c4 = 0xBEB8B5DE,
    .c3 = 0x3EF6419D,
    .c2 = 0xBF38AA3B,
    .c1lo = 0x3292AD97,
    .c1 = 0x3FB8AA3B,  // log2 e, rounded
};
ZORP_SAME_BLOCK(Log2FloatBlock, __zorp_slog2_rm_data_avx512, __zorp_slog2_data_avx512);

const Log2FloatShortBlock __zorp_slog2_native_data_avx512 = {
    // log2(1 + z) = z (p0[j] + p1[j] z + p2[j] z^2) on [j/16, (j + 1)/16], j = 0..7
    // and [j/32 - 1/2, (j + 1)/32 - 1/2], j = 8..15: relative error 2^-19.0
    .p2 = {{0x3EE5E557, 0x3EC94AFC, 0x3EB17DF5, 0x3E9D7EC0, 0x3E8C8C51, 0x3E7C2563, 0x3E633E0C,
            0x3E4DAE2F, 0x3F5FB45E, 0x3F4CAA79, 0x3F3BDBF0, 0x3F2CF466, 0x3F1FAE5C, 0x3F13D02E,
            0x3F0929BD, 0x3EFF253E}},
    .p1 = {{0xBF387A59, 0xBF36B773, 0xBF33C322, 0xBF300785, 0xBF2BCE54, 0xBF274B1B, 0xBF22A205,
            0xBF1DEC73, 0xBF1DCB2C, 0xBF262286, 0xBF2C728B, 0xBF311D18, 0xBF34707E, 0xBF36ABC9,
            0xBF380201, 0xBF389CB0}},
    .p0 = {{0x3FB8AA26, 0x3FB8A30F, 0x3FB88B77, 0x3FB85EC4, 0x3FB81B51, 0x3FB7C135, 0x3FB75181,
            0x3FB6CDCC, 0x3FB9C8BC, 0x3FB953BE, 0x3FB907D4, 0x3FB8D90B, 0x3FB8BE58, 0x3FB8B0E2,
            0x3FB8AB7C, 0x3FB8AA3E}},
    .one = 0x3F800000,
};
ZORP_SAME_BLOCK(Log2FloatShortBlock, __zorp_slog2_half_data_avx512,
                __zorp_slog2_native_data_avx512);

const Log2HalfBlock __zorp_hlog2_data = {
    .one = 0x3C00,
    // log2(1 + z) = c1 z + ... + c5 z^5 on [-1/4, 1/2]: relative error 2^-11.8
    .c5 = 0x328A,
    .c4 = 0xB5FF,
    .c3 = 0x37CF,
    .c2 = 0xB9C5,
    .c1 = 0x3DC5,
};
ZORP_SAME_BLOCK(Log2HalfBlock, __zorp_hlog2_native_data, __zorp_hlog2_data);
ZORP_SAME_BLOCK(Log2HalfBlock, __zorp_hlog2_half_data, __zorp_hlog2_data);
ZORP_SAME_BLOCK(Log2HalfBlock, __zorp_hlog2_rm_data, __zorp_hlog2_data);

const Log10DoubleBlock __zorp_dlog10_data_avx512 = {
    .th = log10_high_double_16,
    .tl = log10_low_double_16,
    .one = 0x3FF0000000000000,
    .three_quarters = 0x3FE8000000000000,
    // log10(1 + r) = (c1 + c1lo) r + c2 r^2 + ... + c9 r^9 on |r| <= 1/32: relative error 2^-56.2
    .c9 = 0x3FA8C2D828480370,
    .c8 = 0xBFABD80D96029814,
    .c7 = 0x3FAFC3F6F38B58A2,
    .c6 = 0xBFB287A63464DC80,
    .c5 = 0x3FB63C62777F27D9,
    .c4 = 0xBFBBCB7B153C06A3,
    .c3 = 0x3FC287A7636F428C,
    .c2 = 0xBFCBCB7B1526E4DB,
    .c1lo = 0x3C69A5FDAAF11825,
    .c1 = 0x3FDBCB7B1526E50E,  // log10 e, rounded
    // log10 2 = lg2hi + lg2lo: relative error 2^-91.6
    .lg2hi = 0x3FD34413509F0000,
    .lg2lo = 0x3D7E7FBCC47C4ACD,
};

const Log10DoubleShortBlock __zorp_dlog10_native_data_avx512 = {
    .t = log10_double_16,
    .one = 0x3FF0000000000000,
    .three_quarters = 0x3FE8000000000000,
    // log10(1 + r) = a1 r + ... + a5 r^5 on |r| <= 1/32: relative error 2^-31.5
    .a5 = 0x3FB6435E178FB651,
    .a4 = 0xBFBBD14C6BF32947,
    .a3 = 0x3FC287A6FB3F50D4,
    .a2 = 0xBFCBCB7AE66A7F64,
    .a1 = 0x3FDBCB7B1527E690,
    .lg2 = 0x3FD34413509F79FF,
};
ZORP_SAME_BLOCK(Log10DoubleShortBlock, __zorp_dlog10_half_data_avx512,
                __zorp_dlog10_native_data_avx512);

const Log10FloatBlock __zorp_slog10_data_avx512 = {
    .th = log10_high_float_32,
    .tl = log10_low_float_32,
    .one = 0x3F800000,
    // log10(1 + r) = (c1 + c1lo) r + c2 r^2 + ... + c4 r^4 on |r| <= 1/64: relative error 2^-29.1
    .c4 = 0xBDDE69DB,
    .c3 = 0x3E1442D6,
    .c2 = 0xBE5E5BD9,
    .c1lo = 0xB238DD40,
    .c1 = 0x3EDE5BD9,  // log10 e, rounded
    // log10 2 = lg2hi + lg2lo: relative error 2^-41.6
    .lg2hi = 0x3E9A2000,
    .lg2lo = 0x369A84FC,
};

const Log10FloatShortBlock __zorp_slog10_native_data_avx512 = {
    // log10(1 + z) = z (p0[j] + p1[j] z + p2[j] z^2) on [j/16, (j + 1)/16], j = 0..7
    // and [j/32 - 1/2, (j + 1)/32 - 1/2], j = 8..15: relative error 2^-19.0
    .p2 = {{0x3E0A693E, 0x3DF2617C, 0x3DD5B8C0, 0x3DBDA49D, 0x3DA93C9E, 0x3D97CE9A, 0x3D88D044,
            0x3D77A9F4, 0x3E86AEFE, 0x3E76713B, 0x3E623477, 0x3E504218, 0x3E404673, 0x3E31FC1E,
            0x3E252927, 0x3E199CE6}},
    .p1 = {{0xBE5E2231, 0xBE5C0341, 0xBE58748F, 0xBE53F5E2, 0xBE4EE000, 0xBE4970F9, 0xBE43D45A,
            0xBE3E28B4, 0xBE3E00A2, 0xBE480BDA, 0xBE4FA5BC, 0xBE55441E, 0xBE59454E, 0xBE5BF535,
            0xBE5D9148, 0xBE5E4B8A}},
    .p0 = {{0x3EDE5BBF, 0x3EDE5336, 0x3EDE36CD, 0x3EDE00FA, 0x3EDDAFC3, 0x3EDD4342, 0x3EDCBCC1,
            0x3EDC1E2A, 0x3EDFB4D5, 0x3EDF27F6, 0x3EDECC8D, 0x3EDE9436, 0x3EDE7410, 0x3EDE63DB,
            0x3EDE5D5C, 0x3EDE5BDC}},
    .one = 0x3F800000,
    .lg2 = 0x3E9A209B,
};
ZORP_SAME_BLOCK(Log10FloatShortBlock, __zorp_slog10_half_data_avx512,
                __zorp_slog10_native_data_avx512);

const Log10HalfBlock __zorp_hlog10_data = {
    .lg2 = 0x34D1,
    // log10(1 + z) = c1 z + ... + c5 z^5 on [-1/4, 1/2]: relative error 2^-12.5
    .c5 = 0x2BAD,
    .c4 = 0xAF2B,
    .c3 = 0x30B4,
    .c2 = 0xB2F3,
    .c1 = 0x36F3,
    .one = 0x3C00,
};
ZORP_SAME_BLOCK(Log10HalfBlock, __zorp_hlog10_native_data, __zorp_hlog10_data);
ZORP_SAME_BLOCK(Log10HalfBlock, __zorp_hlog10_half_data, __zorp_hlog10_data);

}  // extern "C"
}  // namespace zorp
