// The constants of asinh, acosh and atanh. asinh and acosh differ in one row, the bound of the
// series near the zero. Tiers of half that run one algorithm share one block.
#include "log/inverse_hyperbolic.h"
#include "log/log_tables.h"

namespace zorp {
namespace {

constexpr uint64_t asinh_double_bound = 0x3F70000000000000;  // |x| < 2^-8
constexpr uint64_t acosh_double_bound = 0x3EF0000000000000;  // x^2 - 1 < 2^-16
constexpr uint64_t asinh_float_bound = 0x3C800000;           // |x| < 2^-6
constexpr uint64_t acosh_float_bound = 0x39800000;           // x^2 - 1 < 2^-12

constexpr AsinhDoubleBlock double_block(uint64_t small) {
  return {
      .th = ln_unit_high_double_16,
      .tl = ln_unit_low_double_16,
      .one = 0x3FF0000000000000,
      .absmask = 0x7FFFFFFFFFFFFFFF,
      .small = small,
      .large = 0x5FE0000000000000,  // 2^511
      .largest = 0x7FEFFFFFFFFFFFFF,
      // asinh v = v + s1 v^3 + s2 v^5 on |v| <= 1/256: relative error 2^-56.4
      .s2 = 0x3FB333220EAF02E7,
      .s1 = 0xBFC5555555521E7E,
      // 1 / sqrt(1 - h) = 1 + w1 h + ... + w4 h^4 on |h| <= 2^-13: relative error 2^-67.5
      .w4 = 0x3FD1800001943612,
      .w3 = 0x3FD40000013B0000,
      .w2 = 0x3FD8000000000000,
      .w1 = 0x3FE0000000000000,
      .round = 0x0000800000000000,
      .mask = 0xFFFF000000000000,
      .eighth = 0x3FC0000000000000,
      .four = 0x4010000000000000,
      // ln(1 + r) = r + c2 r^2 + ... + c10 r^10 on |r| <= 1/32: relative error 2^-61.2
      .c10 = 0xBFB9A9B040214368,
      .c9 = 0x3FBC80666E249778,
      .c8 = 0xBFBFFFFB8A054BC9,
      .c7 = 0x3FC24922F71256F1,
      .c6 = 0xBFC55555559BA736,
      .c5 = 0x3FC9999999BE77AF,
      .c4 = 0xBFCFFFFFFFFFFC65,
      .c3 = 0x3FD55555555554C1,
      .c2 = 0xBFE0000000000000,
      // ln 2 = ln2hi + ln2lo: relative error 2^-77.5
      .ln2hi = 0x3FE62E42FEFA0000,
      .ln2lo = 0x3D7CF79ABC9E0000,  // cut short, so that exponent times this is exact
  };
}

constexpr AsinhDoubleShortBlock double_short_block(uint64_t small) {
  return {
      .t = ln_unit_double_16,
      .one = 0x3FF0000000000000,
      .absmask = 0x7FFFFFFFFFFFFFFF,
      .small = small,
      .large = 0x5FE0000000000000,  // 2^511
      .largest = 0x7FEFFFFFFFFFFFFF,
      // asinh v = v + s1 v^3 + s2 v^5 on |v| <= 1/256: relative error 2^-37.3
      .s2 = 0x3FB3221CAE352644,
      .s1 = 0xBFC55552221BC89D,
      // 1 / sqrt(1 - h) = 1 + w1 h + ... + w3 h^3 on |h| <= 2^-13: relative error 2^-54.2
      .w3 = 0x3FD40000017A0000,
      .w2 = 0x3FD8000001180000,
      .w1 = 0x3FE0000000000000,
      .round = 0x0000800000000000,
      .mask = 0xFFFF000000000000,
      .eighth = 0x3FC0000000000000,
      .four = 0x4010000000000000,
      // ln(1 + r) = r + a2 r^2 + ... + a5 r^5 on |r| <= 1/32: relative error 2^-31.5
      .a5 = 0x3FC9A1A3AE2FCF04,
      .a4 = 0xBFD00359551D29C9,
      .a3 = 0x3FD55554DD621E7A,
      .a2 = 0xBFDFFFFFCA317A90,
      .ln2 = 0x3FE62E42FEFA39EF,
  };
}

constexpr AsinhFloatBlock float_block(uint64_t small) {
  return {
      .th = ln_unit_high_float_32,
      .tl = ln_unit_low_float_32,
      .one = 0x3F800000,
      .absmask = 0x7FFFFFFF,
      .small = small,
      .large = 0x5F000000,  // 2^63
      .largest = 0x7F7FFFFF,
      // asinh v = v + s1 v^3 on |v| <= 1/64: relative error 2^-29.7
      .s1 = 0xBE2AA5DE,
      // 1 / sqrt(1 - h) = 1 + w1 h + w2 h^2 on |h| <= 2^-13: relative error 2^-40.6
      .w2 = 0x3EC00000,
      .w1 = 0x3F000000,
      .round = 0x00020000,
      .mask = 0xFFFC0000,
      .eighth = 0x3E000000,
      .four = 0x40800000,
      // ln(1 + r) = r + c2 r^2 + ... + c4 r^4 on |r| <= 1/64: relative error 2^-28.2
      .c4 = 0xBE800810,
      .c3 = 0x3EAAB11E,
      .c2 = 0xBF000000,
      // ln 2 = ln2hi + ln2lo: relative error 2^-38.6
      .ln2hi = 0x3F317000,
      .ln2lo = 0x3805FDF4,
  };
}

constexpr AsinhFloatShortBlock float_short_block(uint64_t small) {
  return {
      .t = ln_unit_float_32,
      .one = 0x3F800000,
      .absmask = 0x7FFFFFFF,
      .small = small,
      .large = 0x5F000000,  // 2^63
      .largest = 0x7F7FFFFF,
      // asinh v = v + s1 v^3 on |v| <= 1/64: relative error 2^-29.7
      .s1 = 0xBE2AA5DE,
      // 1 / sqrt(1 - h) = 1 + w1 h on |h| <= 2^-13: relative error 2^-27.4
      .w1 = 0x3F000000,
      .round = 0x00020000,
      .mask = 0xFFFC0000,
      .eighth = 0x3E000000,
      .four = 0x40800000,
      // ln(1 + r) = r + a2 r^2 on |r| <= 1/64: relative error 2^-13.5
      .a2 = 0xBF000408,
      .ln2 = 0x3F317218,
  };
}

}  // namespace

extern "C" {

const AsinhDoubleBlock __zorp_dasinh_data_avx512 = double_block(asinh_double_bound);
const AsinhDoubleBlock __zorp_dacosh_data_avx512 = double_block(acosh_double_bound);
const AsinhDoubleShortBlock __zorp_dasinh_native_data_avx512 =
    double_short_block(asinh_double_bound);
const AsinhDoubleShortBlock __zorp_dacosh_native_data_avx512 =
    double_short_block(acosh_double_bound);
const AsinhFloatBlock __zorp_sasinh_data_avx512 = float_block(asinh_float_bound);
const AsinhFloatBlock __zorp_sacosh_data_avx512 = float_block(acosh_float_bound);
const AsinhFloatShortBlock __zorp_sasinh_native_data_avx512 = float_short_block(asinh_float_bound);
const AsinhFloatShortBlock __zorp_sacosh_native_data_avx512 = float_short_block(acosh_float_bound);

const AsinhHalfBlock __zorp_hasinh_data = {
    .one = 0x3C00,
    .absmask = 0x7FFF,
    // asinh a = (1 + p1) a + p2 a^2 + ... + p4 a^4 on [0, 1]: relative error 2^-13.3
    .p4 = 0x2C52,
    .p3 = 0xB206,
    .p2 = 0x185D,
    .p1 = 0x8057,
    // ln(1 + sqrt(1 + i^2)) = q0 + q1 i + ... + q3 i^3 on [0, 1]: relative error 2^-11.6
    .q3 = 0xADB6,
    .q2 = 0x347F,
    .q1 = 0x9B9E,
    .q0 = 0x398C,
    // ln(1 + z) = r1 z + ... + r4 z^4 on [-1/4, 1/2]: relative error 2^-10.5
    .r4 = 0xB22B,
    .r3 = 0x358B,
    .r2 = 0xB807,
    .r1 = 0x3C00,
    .ln2 = 0x398C,
};
ZORP_SAME_BLOCK(AsinhHalfBlock, __zorp_hasinh_native_data, __zorp_hasinh_data);

const AcoshHalfBlock __zorp_hacosh_data = {
    .one = 0x3F800000,
    .two = 0x40000000,
    // acosh(1 + t) = sqrt t (n0 + n1 t + n2 t^2) on [0, 1]: relative error 2^-13.2
    .n2 = 0x3C9482E8,
    .n1 = 0xBDEBBDDB,
    .n0 = 0x3FB5006C,
    // ln(1 + sqrt(1 - i^2)) = q0 + q1 i + q2 i^2 on [0, 1/2]: relative error 2^-10.2
    .q2 = 0xBE9A381C,
    .q1 = 0x3C639816,
    .q0 = 0x3F315280,
    // ln(1 + z) = r1 z + ... + r4 z^4 on [-1/4, 1/2]: relative error 2^-10.6
    .r4 = 0xBE455067,
    .r3 = 0x3EB15B21,
    .r2 = 0xBF00E7A2,
    .r1 = 0x3F800000,
    .ln2 = 0x3F317218,
};

// The same, rounded to half.
const AcoshHalfShortBlock __zorp_hacosh_native_data = {
    .one = 0x3C00,
    .two = 0x4000,
    // acosh(1 + t) = sqrt t (n0 + n1 t + n2 t^2) on [0, 1]: relative error 2^-13.0
    .n2 = 0x24A4,
    .n1 = 0xAF5E,
    .n0 = 0x3DA8,
    // ln(1 + sqrt(1 - i^2)) = q0 + q1 i + q2 i^2 on [0, 1/2]: relative error 2^-9.8
    .q2 = 0xB4D2,
    .q1 = 0x231D,
    .q0 = 0x398B,
    // ln(1 + z) = r1 z + ... + r4 z^4 on [-1/4, 1/2]: relative error 2^-10.5
    .r4 = 0xB22B,
    .r3 = 0x358B,
    .r2 = 0xB807,
    .r1 = 0x3C00,
    .ln2 = 0x398C,
};

const AtanhDoubleBlock __zorp_datanh_data_avx512 = {
    .th = ln_plus_high_double_16,
    .tl = ln_plus_low_double_16,
    .one = 0x3FF0000000000000,
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .round = 0x0000800000000000,
    .mask = 0xFFFF000000000000,
    // ln(1 + r) = c1 r + ... + c9 r^9 on |r| <= 1/32: relative error 2^-56.2
    .c9 = 0x3FBC81DD40D38142,
    .c8 = 0xBFC0073CB82E8B70,
    .c7 = 0x3FC2492298FFDAE8,
    .c6 = 0xBFC55553F871E5C5,
    .c5 = 0x3FC9999999CD394A,
    .c4 = 0xBFD00000000C2A01,
    .c3 = 0x3FD5555555555462,
    .c2 = 0xBFDFFFFFFFFFFFC5,
    .c1 = 0x3FF0000000000000,
    .half = 0x3FE0000000000000,
    // ln 2 = ln2hi + ln2lo: relative error 2^-77.5
    .ln2hi = 0x3FE62E42FEFA0000,
    .ln2lo = 0x3D7CF79ABC9E0000,  // cut short, so that exponent times this is exact
};

const AtanhDoubleShortBlock __zorp_datanh_native_data_avx512 = {
    .t = ln_plus_double_16,
    .one = 0x3FF0000000000000,
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .round = 0x0000800000000000,
    .mask = 0xFFFF000000000000,
    // ln(1 + r) = a1 r + ... + a5 r^5 on |r| <= 1/32: relative error 2^-31.5
    .a5 = 0x3FC9A1A3AE2FCF04,
    .a4 = 0xBFD00359551D29C9,
    .a3 = 0x3FD55554DD621E7A,
    .a2 = 0xBFDFFFFFCA317A90,
    .a1 = 0x3FF0000000000000,
    .half = 0x3FE0000000000000,
    .ln2 = 0x3FE62E42FEFA39EF,
};

const AtanhFloatBlock __zorp_satanh_data_avx512 = {
    .th = ln_plus_high_float_32,
    .tl = ln_plus_low_float_32,
    .one = 0x3F800000,
    .absmask = 0x7FFFFFFF,
    .round = 0x00020000,
    .mask = 0xFFFC0000,
    // ln(1 + r) = c1 r + ... + c4 r^4 on |r| <= 1/64: relative error 2^-28.2
    .c4 = 0xBE800810,
    .c3 = 0x3EAAB11E,
    .c2 = 0xBF000000,
    .c1 = 0x3F800000,
    .half = 0x3F000000,
    // ln 2 = ln2hi + ln2lo: relative error 2^-38.6
    .ln2hi = 0x3F317000,
    .ln2lo = 0x3805FDF4,
};

const AtanhFloatShortBlock __zorp_satanh_native_data_avx512 = {
    .t = ln_plus_float_32,
    .one = 0x3F800000,
    .absmask = 0x7FFFFFFF,
    .round = 0x00020000,
    .mask = 0xFFFC0000,
    // ln(1 + r) = a1 r + a2 r^2 on |r| <= 1/64: relative error 2^-14.5
    .a2 = 0xBF000408,
    .a1 = 0x3F800158,
    .half = 0x3F000000,
    .ln2 = 0x3F317218,
};

// atanh(x) / x - 1 as a quadratic in w = 4 (1 - |x|), by exponent (its low four bits) and top
// fraction bit of w. Entries 2 to 11 stand for no w, or for w = 4, where x is 0.
const AtanhHalfBlock __zorp_hatanh_data = {
    // atanh x = x + x (p0[2 k] + p1[2 k] w + p2[2 k] w^2) with x = 1 - w/4
    // on [2^(k - 15), 3 2^(k - 16)], k = 6..16: relative error 2^-10.3
    // atanh x = x + x (p0[2 k + 1] + p1[2 k + 1] w + p2[2 k + 1] w^2) with x = 1 - w/4
    // on [3 2^(k - 16), 2^(k - 14)], k = 6..16: relative error 2^-10.9
    .p0 = {{0x3770, 0x35AB, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,
            0x0000, 0x439E, 0x4345, 0x42ED, 0x4294, 0x423C, 0x41E3, 0x418A, 0x4132, 0x40DA, 0x4081,
            0x4029, 0x3FA2, 0x3EF4, 0x3E46, 0x3D9A, 0x3CEF, 0x3C48, 0x3B47, 0x3A08, 0x38D4}},
    .p1 = {{0xB412, 0xB1B1, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,
            0x0000, 0xDE80, 0xDC99, 0xDA7D, 0xD896, 0xD677, 0xD491, 0xD26E, 0xD088, 0xCE5D, 0xCC79,
            0xCA41, 0xC85F, 0xC613, 0xC437, 0xC1CC, 0xBFF0, 0xBD60, 0xBB38, 0xB8C7, 0xB641}},
    .p2 = {{0x288F, 0x25B7, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000, 0x0000,
            0x0000, 0x7940, 0x754A, 0x713F, 0x6D49, 0x693D, 0x6546, 0x613A, 0x5D42, 0x5934, 0x553A,
            0x5129, 0x4D2B, 0x4915, 0x4510, 0x40F3, 0x3CE4, 0x38BD, 0x34A5, 0x307B, 0x2C6F}},
    .absmask = 0x7FFF,
    .four = 0x4400,
    .zero = 0x0000,
};
ZORP_SAME_BLOCK(AtanhHalfBlock, __zorp_hatanh_native_data, __zorp_hatanh_data);

}  // extern "C"
}  // namespace zorp
