// The constants of log1p. The tiers of half run one algorithm and share one block.
#include "log/log1p.h"
#include "log/log_tables.h"

namespace zorp {
extern "C" {

const Log1pDoubleBlock __zorp_dlog1p_data_avx512 = {
    .th = ln_high_double_16,
    .tl = ln_low_double_16,
    .one = 0x3FF0000000000000,
    .sign = 0x8000000000000000,
    .three_quarters = 0x3FE8000000000000,
    // ln(1 + r) = r + c2 r^2 + ... + c9 r^9 on |r| <= 1/32: relative error 2^-56.2
    .c9 = 0x3FBC81CD309D7C70,
    .c8 = 0xBFC007357E93AF62,
    .c7 = 0x3FC249229CEE81EF,
    .c6 = 0xBFC55553FB28DB06,
    .c5 = 0x3FC9999999CC9F5C,
    .c4 = 0xBFD00000000C05BD,
    .c3 = 0x3FD5555555555466,
    .c2 = 0xBFDFFFFFFFFFFFC6,
    // ln 2 = ln2hi + ln2lo: relative error 2^-77.5
    .ln2hi = 0x3FE62E42FEFA0000,
    .ln2lo = 0x3D7CF79ABC9E0000,  // cut short, so that exponent times this is exact
};

const Log1pDoubleShortBlock __zorp_dlog1p_native_data_avx512 = {
    .t = ln_double_16,
    .one = 0x3FF0000000000000,
    .sign = 0x8000000000000000,
    .three_quarters = 0x3FE8000000000000,
    // ln(1 + r) = r + a2 r^2 + ... + a5 r^5 on |r| <= 1/32: relative error 2^-31.5
    .a5 = 0x3FC9A19BA80F61AB,
    .a4 = 0xBFD00355FDA0C953,
    .a3 = 0x3FD55554DE51032A,
    .a2 = 0xBFDFFFFFCA9C9FAF,
    .ln2 = 0x3FE62E42FEFA39EF,
};

const Log1pFloatBlock __zorp_slog1p_data_avx512 = {
    .th = ln_high_float_32,
    .tl = ln_low_float_32,
    .one = 0x3F800000,
    .sign = 0x80000000,
    // ln(1 + r) = r + c2 r^2 + ... + c4 r^4 on |r| <= 1/64: relative error 2^-28.2
    .c4 = 0xBE800810,
    .c3 = 0x3EAAB11E,
    .c2 = 0xBF000000,
    // ln 2 = ln2hi + ln2lo: relative error 2^-43.5
    .ln2hi = 0x3F317200,
    .ln2lo = 0x35BFBE8E,
};

const Log1pFloatShortBlock __zorp_slog1p_native_data = {
    .absmask = 0x7FFFFFFF,
    .one = 0x3F800000,
    // ln(1 + z) = z + a2 z^2 + ... + a5 z^5 on |z| <= 1/3: relative error 2^-13.2
    .a2 = 0xBF000000,
    .a3 = 0x3EAA7160,
    .a4 = 0xBE88E8FE,
    .a5 = 0x3E612933,
    .range_add = 0x01000000,
    .range_bound = 0x01800000,
    .centre = 0x3F2AAAAB,  // 2/3
    .fraction = 0x007FFFFF,
    .ln2 = 0x3F317218,
};

const Log1pHalfBlock __zorp_hlog1p_data = {
    .one = 0x3C00,
    .lmask = 0xBFFF,
    // ln(1 + z) = (1 + c1) z + c2 z^2 + ... + c5 z^5 on [-1/4, 1/2]: relative error 2^-13.0
    .c5 = 0x3088,
    .c4 = 0xB428,
    .c3 = 0x356A,
    .c2 = 0xB800,
    .c1 = 0x833F,
    .ln2 = 0x398C,
};
ZORP_SAME_BLOCK(Log1pHalfBlock, __zorp_hlog1p_native_data, __zorp_hlog1p_data);

const LogTripleTable __slog1p_g_CoutTab = ln_triples_float_65;

}  // extern "C"
}  // namespace zorp
