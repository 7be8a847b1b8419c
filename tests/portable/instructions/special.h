// Operations that the manual describes by cases: parts of a number, scaling, rounding to a
// fraction, classes, fix-ups, estimates.
#pragma once

#include "arithmetic.h"

namespace zorp {
namespace portable {

template <class T>
struct Encoded;
template <>
struct Encoded<double> {
  using Bits = uint64_t;
  static constexpr int fraction_bits = 52, bias = 1023;
};
template <>
struct Encoded<float> {
  using Bits = uint32_t;
  static constexpr int fraction_bits = 23, bias = 127;
};

/// A number taken apart.
template <class T>
struct Number : Encoded<T> {
  using Bits = typename Encoded<T>::Bits;
  using Encoded<T>::fraction_bits;
  using Encoded<T>::bias;
  static constexpr Bits sign_bit = Bits{1} << (8 * sizeof(T) - 1);
  static constexpr Bits implicit = Bits{1} << fraction_bits;
  static constexpr Bits infinity_bits = sign_bit - implicit;
  static constexpr Bits quiet_bit = implicit >> 1;

  explicit Number(T value) : bits(__builtin_bit_cast(Bits, value)) {
    magnitude = bits & ~sign_bit;
    if (magnitude < implicit && subnormals_are_zeros()) bits &= sign_bit, magnitude = 0;
  }

  bool negative() const { return bits & sign_bit; }
  bool nan() const { return magnitude > infinity_bits; }
  bool signalling() const { return nan() && !(bits & quiet_bit); }
  bool infinite() const { return magnitude == infinity_bits; }
  bool zero() const { return magnitude == 0; }
  bool subnormal() const { return magnitude < implicit && magnitude != 0; }
  T value() const { return from_bits(bits); }
  T quieted() const { return from_bits(bits | quiet_bit); }

  /// floor(log2 |v|) and the fraction behind it, of a finite nonzero number.
  int exponent() const {
    if (magnitude >= implicit) return int(magnitude >> fraction_bits) - bias;
    return 1 - bias - (fraction_bits - top_bit(magnitude));
  }
  Bits fraction() const {
    if (magnitude >= implicit) return magnitude & (implicit - 1);
    return magnitude << (fraction_bits - top_bit(magnitude)) & (implicit - 1);
  }

  static int top_bit(uint64_t v) { return 63 - __builtin_clzll(v); }
  static T from_bits(Bits pattern) { return __builtin_bit_cast(T, pattern); }
  static T infinity(bool minus) { return from_bits(infinity_bits | (minus ? sign_bit : 0)); }
  static T default_nan() { return from_bits(sign_bit | infinity_bits | quiet_bit); }
  static T zero(bool minus) { return from_bits(minus ? sign_bit : 0); }
  static T one(bool minus) {
    return from_bits(Bits(bias) << fraction_bits | (minus ? sign_bit : 0));
  }
  /// 2^n, a normal number.
  static T power(int n) { return from_bits(Bits(n + bias) << fraction_bits); }

  Bits bits, magnitude;
};

template <class T>
inline T exponent(T v) {
  const Number<T> x(v);
  if (x.nan()) return x.quieted();
  if (x.infinite()) return x.infinity(false);
  if (x.zero()) return x.infinity(true);
  return static_cast<T>(x.exponent());
}

/// The significand in the interval that `interval` names, with the sign that `sign` asks for.
template <class T>
inline T significand(T v, int interval, int sign) {
  using Bits = typename Number<T>::Bits;
  const Number<T> x(v);
  const bool minus = x.negative() && !(sign & 1);
  if (x.nan()) return x.quieted();
  if (x.zero()) return x.one(minus);
  if (x.negative() && sign & 2) return x.default_nan();
  if (x.infinite()) return x.one(minus);
  const bool odd = x.exponent() & 1, upper = x.fraction() & x.quiet_bit;
  const bool halved = interval == 2 || (interval == 1 && odd) || (interval == 3 && upper);
  return x.from_bits(Bits(x.bias - halved) << x.fraction_bits | x.fraction() |
                     (minus ? x.sign_bit : 0));
}

/// v 2^floor(s), rounded once.
template <class T>
inline T scale(T v, T s, int rounding) {
  using X = Number<T>;
  const X x(v), y(s);
  if (x.signalling()) return x.quieted();
  if (y.nan()) return x.nan() ? x.quieted() : y.quieted();
  if (y.infinite()) {
    if (x.nan()) return y.negative() ? x.zero(false) : x.infinity(false);
    if (y.negative()) return x.infinite() ? x.default_nan() : x.zero(x.negative());
    return x.zero() ? x.default_nan() : x.infinity(x.negative());
  }
  if (x.nan()) return x.quieted();
  if (x.infinite() || x.zero()) return x.value();
  constexpr int least = 1 - X::bias, most = X::bias, far = 5 * X::bias;
  const T whole = __builtin_floor(y.value());
  int n = whole < -far ? -far : whole > far ? far : static_cast<int>(whole);
  T scaled = x.value();
  // Each step but the last is exact, or decides that the result over- or underflows: a number that
  // is too small for an exact step down is made larger, still far below all results.
  for (; n > most; n -= most) scaled = multiply(scaled, X::power(most), rounding);
  constexpr int step = X::bias / 4 * 3;
  for (; n < least; n += step) {
    const T smallest = X::power(step - X::bias + 1);
    if (__builtin_fabs(scaled) < smallest) scaled = x.negative() ? -smallest : smallest;
    scaled *= X::power(-step);
  }
  return multiply(scaled, X::power(n), rounding);
}

inline __m256d scale(__m256d v, __m256d s, int rounding) {
  const __m256d n = _mm256_floor_pd(s);
  const __m256d size = _mm256_andnot_pd(_mm256_set1_pd(-0.0), n);
  if (_mm256_movemask_pd(_mm256_cmp_pd(size, _mm256_set1_pd(1022), _CMP_LE_OQ)) == 15) {
    const __m256i exponent = (__m256i)_mm256_add_pd(n, _mm256_set1_pd(0x1.8p52 + 1023));
    const __m256d power = (__m256d)_mm256_slli_epi64(exponent, 52);
    return is_nearest(rounding) ? _mm256_mul_pd(v, power) : mul_in(rounding, v, power);
  }
  return by_lanes<double>([rounding](double x, double y) { return scale(x, y, rounding); }, v, s);
}
inline __m256 scale(__m256 v, __m256 s, int rounding) {
  const __m256 n = _mm256_floor_ps(s);
  const __m256 size = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), n);
  if (_mm256_movemask_ps(_mm256_cmp_ps(size, _mm256_set1_ps(126), _CMP_LE_OQ)) == 255) {
    const __m256i exponent = _mm256_add_epi32(_mm256_cvtps_epi32(n), _mm256_set1_epi32(127));
    const __m256 power = (__m256)_mm256_slli_epi32(exponent, 23);
    return is_nearest(rounding) ? _mm256_mul_ps(v, power) : mul_in(rounding, v, power);
  }
  return by_lanes<float>([rounding](float x, float y) { return scale(x, y, rounding); }, v, s);
}

// Rounded to an integer by the mode in the immediate; bit 2 of it stands for the caller's mode.
#define ZORP_ROUND(Register, name)                                          \
  [[gnu::always_inline]] inline Register to_integral(Register v, int imm) { \
    const int mode = imm & 4 ? int(controls[4] >> 13 & 3) : imm & 3;        \
    switch (mode) {                                                         \
      case 0:                                                               \
        return name(v, 8);                                                  \
      case 1:                                                               \
        return name(v, 9);                                                  \
      case 2:                                                               \
        return name(v, 10);                                                 \
      default:                                                              \
        return name(v, 11);                                                 \
    }                                                                       \
  }
ZORP_ROUND(__m256d, _mm256_round_pd)
ZORP_ROUND(__m256, _mm256_round_ps)
#undef ZORP_ROUND

/// v rounded to a multiple of 2^-(imm >> 4). Numbers that have no lower bits stay as they are, and
/// the products with powers of two are exact for the others.
inline __m256d round_scale(__m256d v, int imm) {
  const __m256d up = _mm256_set1_pd(Number<double>::power(imm >> 4));
  const __m256d down = _mm256_set1_pd(Number<double>::power(-(imm >> 4)));
  const __m256d rounded = _mm256_mul_pd(to_integral(_mm256_mul_pd(v, up), imm), down);
  const __m256d size = _mm256_andnot_pd(_mm256_set1_pd(-0.0), v);
  const __m256d whole = _mm256_cmp_pd(size, _mm256_set1_pd(0x1p52), _CMP_GE_OQ);
  return _mm256_blendv_pd(rounded, v, whole);
}
inline __m256 round_scale(__m256 v, int imm) {
  const __m256 up = _mm256_set1_ps(Number<float>::power(imm >> 4));
  const __m256 down = _mm256_set1_ps(Number<float>::power(-(imm >> 4)));
  const __m256 rounded = _mm256_mul_ps(to_integral(_mm256_mul_ps(v, up), imm), down);
  const __m256 size = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), v);
  const __m256 whole = _mm256_cmp_ps(size, _mm256_set1_ps(0x1p23f), _CMP_GE_OQ);
  return _mm256_blendv_ps(rounded, v, whole);
}
/// What round_scale takes away, rounded in the immediate's mode; +0 for infinities.
inline __m256d reduce(__m256d v, int imm) {
  const __m256d rest = sub_in(imm & 4 ? 4 : imm & 3, v, round_scale(v, imm));
  const __m256d size = _mm256_andnot_pd(_mm256_set1_pd(-0.0), v);
  const __m256d infinite = _mm256_cmp_pd(size, _mm256_set1_pd(__builtin_inf()), _CMP_EQ_OQ);
  return _mm256_andnot_pd(infinite, rest);
}
inline __m256 reduce(__m256 v, int imm) {
  const __m256 rest = sub_in(imm & 4 ? 4 : imm & 3, v, round_scale(v, imm));
  const __m256 size = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), v);
  const __m256 infinite = _mm256_cmp_ps(size, _mm256_set1_ps(__builtin_inff()), _CMP_EQ_OQ);
  return _mm256_andnot_ps(infinite, rest);
}

/// Minimum, maximum, and the same of magnitudes (imm bits 0, 1), with a sign by bits 2, 3: that of
/// a, that of the comparison's winner, plus, minus.
template <class T>
inline T range(T a, T b, int imm) {
  const Number<T> x(a), y(b);
  if (x.signalling()) return x.quieted();
  if (y.signalling()) return y.quieted();
  T winner;
  if (x.nan() || y.nan()) {
    winner = y.nan() ? x.value() : y.value();
  } else {
    const bool by_magnitude = imm & 2, larger = imm & 1;
    bool first;
    if (by_magnitude && x.magnitude != y.magnitude)
      first = (x.magnitude > y.magnitude) == larger;
    else if (x.value() == y.value())
      first = x.negative() != larger;
    else
      first = (x.value() > y.value()) == larger;
    winner = first ? x.value() : y.value();
  }
  const Number<T> w(winner);
  switch (imm >> 2 & 3) {
    case 0:
      return w.from_bits(w.magnitude | (x.bits & x.sign_bit));
    case 1:
      return winner;
    case 2:
      return w.from_bits(w.magnitude);
    default:
      return w.from_bits(w.magnitude | w.sign_bit);
  }
}

/// Bit 0 quiet NaN, 1 +0, 2 -0, 3 +infinity, 4 -infinity, 5 subnormal, 6 negative finite and not
/// zero, 7 signalling NaN.
template <class T>
inline bool in_classes(T v, int imm) {
  const Number<T> x(v);
  int classes = 0;
  if (x.nan())
    classes = x.signalling() ? 0x80 : 0x01;
  else if (x.infinite())
    classes = x.negative() ? 0x10 : 0x08;
  else if (x.zero())
    classes = x.negative() ? 0x04 : 0x02;
  else
    classes = (x.subnormal() ? 0x20 : 0) | (x.negative() ? 0x40 : 0);
  return classes & imm;
}

/// What the table's four bits for the class of v ask for.
inline double fix_up(double otherwise, double v, int64_t table) {
  const Number<double> x(v);
  int token;
  if (x.nan())
    token = x.signalling() ? 1 : 0;
  else if (x.zero())
    token = 2;
  else if (x.value() == 1)
    token = 3;
  else if (x.infinite())
    token = x.negative() ? 4 : 5;
  else
    token = x.negative() ? 6 : 7;
  switch (table >> 4 * token & 15) {
    case 0:
      return otherwise;
    case 1:
      return x.value();
    case 2:
      return x.from_bits(x.bits | x.infinity_bits | x.quiet_bit);
    case 3:
      return x.default_nan();
    case 4:
      return x.infinity(true);
    case 5:
      return x.infinity(false);
    case 6:
      return x.infinity(x.negative());
    case 7:
      return x.zero(true);
    case 8:
      return x.zero(false);
    case 9:
      return -1;
    case 10:
      return 1;
    case 11:
      return 0.5;
    case 12:
      return 90;
    case 13:
      return 0x1.921fb54442d18p0;
    case 14:
      return 0x1.fffffffffffffp1023;
    default:
      return -0x1.fffffffffffffp1023;
  }
}

/// How many bits the estimates have. Kernels whose results change with it depend on the processor's
/// own estimates, and so differ from the library's here; 0 asks for these.
inline thread_local constinit int estimate_bits = 14;

/// v rounded to 14 bits after the point of its significand: an estimate as good as the processor's,
/// whose own tables differ in the last of these bits.
inline double rounded_to_14_bits(double v) {
  const int dropped = 52 - estimate_bits;
  const uint64_t bits = __builtin_bit_cast(uint64_t, v) + (uint64_t{1} << (dropped - 1));
  return __builtin_bit_cast(double, bits >> dropped << dropped);
}
/// m 2^n for m with few bits: subnormal results keep what fits of them.
template <class T>
inline T composed(double m, int n, bool minus) {
  const Number<double> x(m);
  using Bits = typename Number<T>::Bits;
  const int exponent = x.exponent() + n + Number<T>::bias;
  const Bits fraction = Bits(x.fraction() >> (52 - 23) << (Number<T>::fraction_bits - 23));
  const Bits sign = minus ? Number<T>::sign_bit : 0;
  if (exponent > 2 * Number<T>::bias) return Number<T>::infinity(minus);
  if (exponent > 0)
    return Number<T>::from_bits(sign | Bits(exponent) << Number<T>::fraction_bits | fraction);
  return Number<T>::from_bits(sign | (fraction | Number<T>::implicit) >> (1 - exponent));
}
inline double own_reciprocal14(double v) {
  asm("vrcp14sd %0, %0, %0" : "+x"(v));
  return v;
}
inline float own_reciprocal14(float v) {
  asm("vrcp14ss %0, %0, %0" : "+x"(v));
  return v;
}
inline double own_reciprocal_root14(double v) {
  asm("vrsqrt14sd %0, %0, %0" : "+x"(v));
  return v;
}
inline float own_reciprocal_root14(float v) {
  asm("vrsqrt14ss %0, %0, %0" : "+x"(v));
  return v;
}
template <class T>
inline T reciprocal14(T v) {
  if (estimate_bits == 0) return own_reciprocal14(v);
  const Number<T> x(v);
  if (x.nan()) return x.quieted();
  if (x.infinite()) return x.zero(x.negative());
  if (x.zero()) return x.infinity(x.negative());
  const double m = Number<double>::from_bits(uint64_t{1023} << 52 | uint64_t(x.fraction())
                                                                        << (52 - x.fraction_bits));
  return composed<T>(rounded_to_14_bits(1 / m), -x.exponent(), x.negative());
}
template <class T>
inline T reciprocal_root14(T v) {
  if (estimate_bits == 0) return own_reciprocal_root14(v);
  const Number<T> x(v);
  if (x.nan()) return x.quieted();
  if (x.zero()) return x.infinity(x.negative());
  if (x.negative()) return x.default_nan();
  if (x.infinite()) return 0;
  const int odd = x.exponent() & 1;
  const double m = Number<double>::from_bits(uint64_t(1023 + odd) << 52 |
                                             uint64_t(x.fraction()) << (52 - x.fraction_bits));
  return composed<T>(rounded_to_14_bits(__builtin_sqrt(1 / m)), -(x.exponent() - odd) / 2, false);
}

}  // namespace portable

// Plain integers: an enumeration's own namespace would offer the compiler's intrinsics again.
using _MM_MANTISSA_NORM_ENUM = int;
using _MM_MANTISSA_SIGN_ENUM = int;

#undef _mm512_scalef_round_pd
#undef _mm512_scalef_round_ps
#undef _mm512_getexp_round_pd
#undef _mm512_getexp_round_ps
#undef _mm512_getmant_round_pd
#undef _mm512_getmant_round_ps
#undef _mm512_roundscale_round_pd
#undef _mm512_roundscale_round_ps
#undef _mm512_reduce_round_pd
#undef _mm512_reduce_round_ps
#undef _mm512_fpclass_pd_mask
#undef _mm512_fpclass_ps_mask
#undef _mm_scalef_round_sd
#undef _mm_scalef_round_ss
#undef _mm_getexp_round_sd
#undef _mm_getexp_round_ss
#undef _mm_getmant_round_sd
#undef _mm_getmant_round_ss
#undef _mm_roundscale_round_sd
#undef _mm_roundscale_round_ss
#undef _mm_reduce_round_sd
#undef _mm_reduce_round_ss
#undef _mm_fpclass_sd_mask
#undef _mm_fpclass_ss_mask
#undef _mm512_mask_range_round_pd
#undef _mm512_fixupimm_round_pd
#undef _mm_fixupimm_round_sd

// Of the scalar forms, the frame always gives the same register for the further lanes and for the
// operand.
#define ZORP_SPECIAL(p, s, T, Full, Single, Mask)                                                 \
  inline Full _mm512_scalef_round_##p(Full v, Full n, int rounding) {                             \
    return portable::by_halves<Full>(                                                             \
        [rounding](auto x, auto y) { return portable::scale(x, y, rounding); }, v, n);            \
  }                                                                                               \
  inline Single _mm_scalef_round_##s(Single v, Single n, int rounding) {                          \
    return portable::in_low_lane<T>(                                                              \
        [rounding](T x, T y) { return portable::scale(x, y, rounding); }, v, n);                  \
  }                                                                                               \
  inline Full _mm512_getexp_round_##p(Full v, int) {                                              \
    return portable::by_lanes<T>([](T x) { return portable::exponent(x); }, v);                   \
  }                                                                                               \
  inline Single _mm_getexp_round_##s(Single v, Single x, int) {                                   \
    return portable::in_low_lane<T>([](T, T y) { return portable::exponent(y); }, v, x);          \
  }                                                                                               \
  inline Full _mm512_getmant_round_##p(Full v, int interval, int sign, int) {                     \
    return portable::by_lanes<T>([=](T x) { return portable::significand(x, interval, sign); },   \
                                 v);                                                              \
  }                                                                                               \
  inline Single _mm_getmant_round_##s(Single v, Single x, int interval, int sign, int) {          \
    return portable::in_low_lane<T>(                                                              \
        [=](T, T y) { return portable::significand(y, interval, sign); }, v, x);                  \
  }                                                                                               \
  [[gnu::always_inline]] inline Full _mm512_roundscale_round_##p(Full v, int imm, int) {          \
    return portable::by_halves<Full>([imm](auto x) { return portable::round_scale(x, imm); }, v); \
  }                                                                                               \
  inline Single _mm_roundscale_round_##s(Single v, Single x, int imm, int) {                      \
    return _mm_move_##s(v, _mm256_cast##p##256_##p##128(                                          \
                               portable::round_scale(_mm256_zext##p##128_##p##256(x), imm)));     \
  }                                                                                               \
  inline Full _mm512_reduce_round_##p(Full v, int imm, int) {                                     \
    return portable::by_halves<Full>([imm](auto x) { return portable::reduce(x, imm); }, v);      \
  }                                                                                               \
  inline Single _mm_reduce_round_##s(Single v, Single x, int imm, int) {                          \
    return _mm_move_##s(                                                                          \
        v, _mm256_cast##p##256_##p##128(portable::reduce(_mm256_zext##p##128_##p##256(x), imm))); \
  }                                                                                               \
  inline Full _mm512_range_round_##p(Full a, Full b, int imm, int) {                              \
    return portable::by_lanes<T>([imm](T x, T y) { return portable::range(x, y, imm); }, a, b);   \
  }                                                                                               \
  inline Full _mm512_mask_range_round_##p(Full clear, Mask mask, Full a, Full b, int imm, int) {  \
    return _mm512_mask_mov_##p(clear, mask, _mm512_range_round_##p(a, b, imm, 0));                \
  }                                                                                               \
  inline Mask _mm512_fpclass_##p##_mask(Full v, int imm) {                                        \
    return static_cast<Mask>(                                                                     \
        portable::mask_by_lanes<T>([imm](T x) { return portable::in_classes(x, imm); }, v));      \
  }                                                                                               \
  inline __mmask8 _mm_fpclass_##s##_mask(Single v, int imm) {                                     \
    return portable::in_classes(portable::lanes<T>(v).lane[0], imm);                              \
  }                                                                                               \
  inline Full _mm512_rcp14_##p(Full v) {                                                          \
    return portable::by_lanes<T>([](T x) { return portable::reciprocal14(x); }, v);               \
  }                                                                                               \
  inline Single _mm_rcp14_##s(Single v, Single x) {                                               \
    return portable::in_low_lane<T>([](T, T y) { return portable::reciprocal14(y); }, v, x);      \
  }                                                                                               \
  inline Full _mm512_rsqrt14_##p(Full v) {                                                        \
    return portable::by_lanes<T>([](T x) { return portable::reciprocal_root14(x); }, v);          \
  }                                                                                               \
  inline Single _mm_rsqrt14_##s(Single v, Single x) {                                             \
    return portable::in_low_lane<T>([](T, T y) { return portable::reciprocal_root14(y); }, v, x); \
  }
ZORP_SPECIAL(pd, sd, double, __m512d, __m128d, __mmask8)
ZORP_SPECIAL(ps, ss, float, __m512, __m128, __mmask16)
#undef ZORP_SPECIAL

inline __m512d _mm512_fixupimm_round_pd(__m512d otherwise, __m512d v, __m512i table, int, int) {
  return portable::by_lanes<double>(
      [](double o, double x, double t) {
        return portable::fix_up(o, x, __builtin_bit_cast(int64_t, t));
      },
      otherwise, v, (__m512d)table);
}
inline __m128d _mm_fixupimm_round_sd(__m128d otherwise, __m128d v, __m128i table, int, int) {
  return portable::in_low_lane<double>(
      [](double x, double o, double t) {
        return portable::fix_up(o, x, __builtin_bit_cast(int64_t, t));
      },
      v, otherwise, (__m128d)table);
}

}  // namespace zorp
