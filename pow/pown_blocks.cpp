// The constants of pown and rootn. One block serves both families; half computes with those of
// float.
#include "pow/power_path_tables.h"
#include "pow/pown.h"
#include "pow/pown_tables.h"

namespace zorp {
extern "C" {

const PownSmallBlock __zorp_pown_small_data = {
    .one_double = 0x3FF0000000000000,
    .one_float = 0x3F800000,
    .bit = {0x001, 0x002, 0x004, 0x008, 0x010, 0x020, 0x040, 0x080, 0x100, 0x200, 0x400, 0x800},
    .beyond_3 = 0xFFFFFFF8,
    .beyond_8 = 0xFFFFFF00,
    .beyond_12 = 0xFFFFF000,
};

const PownDoubleBlock __zorp_dpown_data = {
    .reciprocals = pown_reciprocals_double_1025,
    .logs = pown_logs_double_1025,
    .powers = exp2_pairs_double_128,
    .fraction = 0x000FFFFFFFFFFFFF,
    .one = 0x3FF0000000000000,
    .upper = 0xFFFFFFFFF8000000,  // the first 26 bits of a significand
    .k = 0x3FF7154740000000,
    // log2(1 + u/k) = (1 + c2) u + c3 u^2 + ... + c7 u^6 on |u| <= k/2048: relative error 2^-65.4
    .c7 = 0xBF9B4EA0E9419F52,
    .c6 = 0x3FA7A334DDFC9F86,
    .c5 = 0xBFB550472A8BB463,
    .c4 = 0x3FC47FD462B3B816,
    .c3 = 0xBFD62E4346694107,
    .c2 = 0x3E79C3A6966457EE,
    .shift = 0x42C8000000000000,  // 1.5 x 2^45: unit 1/128
    // 2^r = 1 + q1 r + ... + q5 r^5 on |r| <= 1/256: relative error 2^-60.4
    .q5 = 0x3F55D87FE78A6731,
    .q4 = 0x3F83B2AB6FBA4E77,
    .q3 = 0x3FAC6B08D704A0BF,
    .q2 = 0x3FCEBFBDFF82C58E,
    .q1 = 0x3FE62E42FEFA39EF,
    .splitter = 0x41A0000002000000,    // 2^27 + 1
    .index_bits = 0x000FFE0000000000,  // i and half of it
    .half_index = 0x0000020000000000,
    .upper_half = 0x0018000000000000,  // i >= 512
    .low = 0x7F,
    .bound = 0x408EEFFF00000000,       // about 990
    .root_bound = 0x408FEFFF00000000,  // about 1022
};
ZORP_SAME_BLOCK(PownDoubleBlock, __zorp_drootn_data, __zorp_dpown_data);

const PownDoubleShortBlock __zorp_dpown_native_data = {
    .logs = pown_short_logs_double_513,
    .powers = pown_powers_double_2048,
    .fraction = 0x000FFFFFFFFFFFFF,
    .scaled_one = 0x3F50000000000000,  // 2^-10
    .one = 0x3FF0000000000000,
    .root_two = 0x4086A00000000000,  // 724: 512 times the root of 2
    // ln(1 + r) = r + c2 r^2 + c3 r^3 on |r| <= 2^-10: relative error 2^-31.9
    .c3 = 0x3FD55555555543C5,
    .c2 = 0xBFDFFFFFFFFFF81F,
    .ln2 = 0x3FE62E42FEFA39EF,
    .log2e = 0x40A71547652B82FE,  // 2^11 log2 e
    .half = 0x3FE0000000000000,
    .shift = 0x4338000000000000,  // 1.5 x 2^52
    .step = 0x3F362F3904051FA1,   // about ln 2 / 2^11
    .first = 0x4080000000000000,  // 512
    .low = 0x7FF,
    .bound = 0x4086232B00000000,  // about 708.4
};
ZORP_SAME_BLOCK(PownDoubleShortBlock, __zorp_drootn_native_data, __zorp_dpown_native_data);

const PownFloatBlock __zorp_spown_data = {
    .logs = pown_logs_float_65,
    .fraction = 0x007FFFFF,
    .one = 0x3F800000,
    .upper = 0x7FFFC000,  // the first 10 bits of a significand
    // ln(1 + t) = t + c2 t^2 + ... + c4 t^4 on |t| <= 1.2/128: relative error 2^-29.2
    .c4 = 0xBE800000,
    .c3 = 0x3EAAAAAB,
    .c2 = 0xBF000000,
    // ln 2 = ln2hi + ln2lo: relative error 2^-38.6
    .ln2hi = 0x3F317000,
    .ln2lo = 0x3805FDF4,
    .splitter = 0x45800800,  // 2^12 + 1
    .log2e = 0x3FB8AA3B,
    .shift = 0x4B400000,  // 1.5 x 2^23
    // ln 2 = reduce_hi + reduce_lo: relative error 2^-43.5
    .reduce_hi = 0x3F317200,
    .reduce_lo = 0x35BFBE8E,
    // e^r = e1 + e1 r + ... + e5 r^5 on |r| <= ln 2 / 2: relative error 2^-22.7
    .e5 = 0x3C0950EF,
    .e4 = 0x3D2BB1B6,
    .e3 = 0x3E2AA9C6,
    .e2 = 0x3EFFFE85,
    .e1 = 0x3F800001,
    // e^r = root_e0 + root_e1 r + ... + root_e5 r^5 on |r| <= ln 2 / 2: relative error 2^-22.6
    .root_e5 = 0x3C07D9FE,
    .root_e4 = 0x3D2B8392,
    .root_e3 = 0x3E2AACAC,
    .root_e2 = 0x3EFFFF34,
    .root_e1 = 0x3F7FFFFE,
    .root_e0 = 0x3F800000,
    .index_bits = 0x007F0000,  // i and half of it
    .half_index = 0x00010000,
    // Encodings from 0x3F7E0001 to 0x3F81FFFF end up above near_one_end.
    .near_one = 0x407E0000,
    .near_one_end = 0x7FFC0000,
    .bound = 0x42AE9A00,  // 87.30078125
    // The encoding of a normal number, less that of the smallest one, is below 0x7EFFFFFF as an
    // unsigned number; for a signed comparison 2^31 is taken from both.
    .normal = 0x80800000,
    .normal_end = 0xFEFFFFFF,
};
ZORP_SAME_BLOCK(PownFloatBlock, __zorp_srootn_data, __zorp_spown_data);
ZORP_SAME_BLOCK(PownFloatBlock, __zorp_hpown_data, __zorp_spown_data);

const PownFloatShortBlock __zorp_spown_native_data = {
    .one = 0x3F800000,
    // ln(1 + z) = z + a2 z^2 + ... + a7 z^7 on |z| <= 1/3: relative error 2^-19.1
    .a7 = 0x3E2B350C,
    .a6 = 0xBE424B46,
    .a5 = 0x3E4B62C0,
    .a4 = 0xBE7F0F0F,
    .a3 = 0x3EAAAD03,
    .a2 = 0xBF000000,
    // ln 2 = ln2hi + ln2lo: relative error 2^-43.5
    .ln2hi = 0x3F317200,
    .ln2lo = 0x35BFBE8E,
    .log2e = 0x3FB8AA3B,
    .shift = 0x4B400000,
    .ln2 = 0x3F317218,
    // e^f = e0 + e1 f + ... + e3 f^3 on |f| <= ln 2 / 2: relative error 2^-13.1
    .e3 = 0x3E2C359F,
    .e2 = 0x3F014935,
    .e1 = 0x3F7FFC0B,
    .e0 = 0x3F7FFB0D,
    .two_thirds = 0x3F2AAAAB,
    .fraction = 0x007FFFFF,
    .bound = 0x42AE9A00,
    .normal = 0x80800000,
    .normal_end = 0xFEFFFFFF,
};
ZORP_SAME_BLOCK(PownFloatShortBlock, __zorp_hpown_native_data, __zorp_spown_native_data);
ZORP_SAME_BLOCK(PownFloatShortBlock, __zorp_srootn_native_data, __zorp_spown_native_data);
ZORP_SAME_BLOCK(PownFloatShortBlock, __zorp_hrootn_data, __zorp_spown_native_data);
ZORP_SAME_BLOCK(PownFloatShortBlock, __zorp_hrootn_native_data, __zorp_spown_native_data);

}  // extern "C"
}  // namespace zorp
