// Conversions between lane types.
#pragma once

#include "special.h"

namespace zorp {
namespace portable {

#define ZORP_CONVERSION(name, To, From, instruction)              \
  inline To name(From v, int rounding) {                          \
    To r;                                                         \
    asm("vldmxcsr %2\n\t" instruction " %1, %0\n\tvldmxcsr %3"    \
        : "=x"(r)                                                 \
        : "x"(v), "m"(controls[rounding & 7]), "m"(controls[0])); \
    return r;                                                     \
  }
ZORP_CONVERSION(to_floats, __m128, __m256d, "vcvtpd2ps")
ZORP_CONVERSION(to_floats, __m256, __m256i, "vcvtdq2ps")
ZORP_CONVERSION(to_int32s, __m128i, __m256d, "vcvtpd2dq")
ZORP_CONVERSION(to_int32s, __m256i, __m256, "vcvtps2dq")
#undef ZORP_CONVERSION

/// 8 floats to halves. The instruction's own immediate names the mode; the caller's is in MXCSR.
inline __m128i narrow(__m256 v, int rounding) {
  switch (rounding & 4 ? int(controls[4] >> 13 & 3) : rounding & 3) {
    case 0:
      return _mm256_cvtps_ph(v, 0);
    case 1:
      return _mm256_cvtps_ph(v, 1);
    case 2:
      return _mm256_cvtps_ph(v, 2);
    default:
      return _mm256_cvtps_ph(v, 3);
  }
}

/// v rounded to an integer. Exact in double for a float.
inline double integral(double v, int rounding) {
  return _mm256_cvtsd_f64(to_integral(_mm256_set1_pd(v), rounding));
}
/// The integer of type To; out of range and NaN give its greatest, of signed types its least value.
template <class To>
inline To to_integer(double v, int rounding) {
  constexpr bool is_signed = To(-1) < 0;
  constexpr int bits = 8 * sizeof(To);
  constexpr To invalid = is_signed ? To(uint64_t{1} << (bits - 1)) : To(-1);
  const double whole = integral(v, rounding);
  const double end = Number<double>::power(is_signed ? bits - 1 : bits);
  if (!(whole < end && whole >= (is_signed ? -end : 0))) return invalid;
  return static_cast<To>(whole);
}
/// A float from a 64-bit integer in the mode of the argument: by way of a double, rounded to odd.
template <class From>
inline float from_integer(From v, int rounding) {
  const bool minus = v < 0;
  const uint64_t size = minus ? -uint64_t(v) : uint64_t(v);
  // The lowest bits count only for being there or not.
  const uint64_t sticky = size >> 40 ? size >> 11 << 11 | uint64_t{(size & 2047) != 0} << 11 : size;
  const double exact = static_cast<double>(static_cast<int64_t>(sticky >> 1)) * 2 + (sticky & 1);
  const __m128 r = to_floats(_mm256_set1_pd(minus ? -exact : exact), rounding);
  return _mm_cvtss_f32(r);
}

}  // namespace portable

// ---- Between floating-point types ----

#undef _mm512_cvt_roundps_pd
#undef _mm_cvt_roundss_sd
#undef _mm512_cvt_roundpd_ps
#undef _mm_cvt_roundsd_ss
#undef _mm512_cvt_roundph_ps
inline __m512d _mm512_cvt_roundps_pd(__m256 v, int) {
  return portable::join<__m512d>(_mm256_cvtps_pd(_mm256_castps256_ps128(v)),
                                 _mm256_cvtps_pd(_mm256_extractf128_ps(v, 1)));
}
inline __m128d _mm_cvt_roundss_sd(__m128d a, __m128 v, int) { return _mm_cvtss_sd(a, v); }
inline __m256 _mm512_cvt_roundpd_ps(__m512d v, int rounding) {
  const auto half = portable::split(v);
  return _mm256_set_m128(portable::to_floats(half.high, rounding),
                         portable::to_floats(half.low, rounding));
}
inline __m128 _mm_cvt_roundsd_ss(__m128 a, __m128d v, int rounding) {
  return _mm_move_ss(a, portable::to_floats(_mm256_zextpd128_pd256(v), rounding));
}
inline __m512 _mm512_cvt_roundph_ps(__m256i v, int) {
  return portable::join<__m512>(_mm256_cvtph_ps(_mm256_castsi256_si128(v)),
                                _mm256_cvtph_ps(_mm256_extracti128_si256(v, 1)));
}

// ---- From integers ----

#undef _mm512_cvt_roundepi32_ps
#undef _mm512_cvt_roundepu32_ps
#undef _mm512_cvt_roundepi64_ps
#undef _mm512_cvt_roundepu64_ps
#undef _mm_cvt_roundi32_ss
inline __m512d _mm512_cvtepi32_pd(__m256i v) {
  return portable::join<__m512d>(_mm256_cvtepi32_pd(_mm256_castsi256_si128(v)),
                                 _mm256_cvtepi32_pd(_mm256_extracti128_si256(v, 1)));
}
inline __m512d _mm512_cvtepu32_pd(__m256i v) {
  portable::Lanes<double, __m512d> r;
  for (int i = 0; i < 8; ++i) r.lane[i] = portable::lanes<uint32_t>(v).lane[i];
  return __builtin_bit_cast(__m512d, r);
}
inline __m128d _mm_cvtepu32_pd(__m128i v) {
  const auto x = portable::lanes<uint32_t>(v);
  return _mm_setr_pd(x.lane[0], x.lane[1]);
}
inline __m512 _mm512_cvt_roundepi32_ps(__m512i v, int rounding) {
  const auto half = portable::split(v);
  return portable::join<__m512>(portable::to_floats(half.low, rounding),
                                portable::to_floats(half.high, rounding));
}
inline __m128 _mm_cvt_roundi32_ss(__m128 a, int v, int rounding) {
  return _mm_move_ss(a,
                     _mm256_castps256_ps128(portable::to_floats(_mm256_set1_epi32(v), rounding)));
}
inline __m512 _mm512_cvt_roundepu32_ps(__m512i v, int rounding) {
  portable::Lanes<float, __m512> r;
  for (int i = 0; i < 16; ++i)
    r.lane[i] = portable::from_integer<uint64_t>(portable::lanes<uint32_t>(v).lane[i], rounding);
  return __builtin_bit_cast(__m512, r);
}
inline __m256 _mm512_cvt_roundepi64_ps(__m512i v, int rounding) {
  portable::Lanes<float, __m256> r;
  for (int i = 0; i < 8; ++i)
    r.lane[i] = portable::from_integer(portable::lanes<int64_t>(v).lane[i], rounding);
  return __builtin_bit_cast(__m256, r);
}
inline __m256 _mm512_cvt_roundepu64_ps(__m512i v, int rounding) {
  portable::Lanes<float, __m256> r;
  for (int i = 0; i < 8; ++i)
    r.lane[i] = portable::from_integer(portable::lanes<uint64_t>(v).lane[i], rounding);
  return __builtin_bit_cast(__m256, r);
}

// ---- To integers ----

#undef _mm512_cvt_roundpd_epi32
#undef _mm512_cvt_roundps_epi32
#undef _mm512_cvt_roundps_epu32
#undef _mm512_cvt_roundps_epi64
#undef _mm512_cvt_roundps_epu64
#undef _mm512_cvtt_roundpd_epi32
#undef _mm512_cvtt_roundpd_epu32
#undef _mm_cvt_roundsd_i32
#undef _mm_cvt_roundsd_i64
#undef _mm512_cvt_roundpd_epi64
#undef _mm_cvt_roundss_i32
#undef _mm_cvtt_roundsd_i32
#undef _mm_cvtt_roundsd_u32
inline __m256i _mm512_cvt_roundpd_epi32(__m512d v, int rounding) {
  const auto half = portable::split(v);
  return _mm256_set_m128i(portable::to_int32s(half.high, rounding),
                          portable::to_int32s(half.low, rounding));
}
inline __m256i _mm512_cvtt_roundpd_epi32(__m512d v, int) {
  const auto half = portable::split(v);
  return _mm256_set_m128i(_mm256_cvttpd_epi32(half.high), _mm256_cvttpd_epi32(half.low));
}
inline __m512i _mm512_cvt_roundps_epi32(__m512 v, int rounding) {
  const auto half = portable::split(v);
  return portable::join<__m512i>(portable::to_int32s(half.low, rounding),
                                 portable::to_int32s(half.high, rounding));
}
inline int _mm_cvt_roundsd_i32(__m128d v, int rounding) {
  return _mm_cvtsi128_si32(portable::to_int32s(_mm256_zextpd128_pd256(v), rounding));
}
inline long long _mm_cvt_roundsd_i64(__m128d v, int rounding) {
  return portable::to_integer<int64_t>(_mm_cvtsd_f64(v), rounding);
}
inline int _mm_cvt_roundss_i32(__m128 v, int rounding) {
  return _mm_cvtsi128_si32(
      _mm256_castsi256_si128(portable::to_int32s(_mm256_zextps128_ps256(v), rounding)));
}
inline int _mm_cvtt_roundsd_i32(__m128d v, int) { return _mm_cvttsd_si32(v); }
inline unsigned _mm_cvtt_roundsd_u32(__m128d v, int) {
  return portable::to_integer<uint32_t>(_mm_cvtsd_f64(v), 3);
}
inline __m256i _mm512_cvtt_roundpd_epu32(__m512d v, int) {
  portable::Lanes<uint32_t, __m256i> r;
  for (int i = 0; i < 8; ++i)
    r.lane[i] = portable::to_integer<uint32_t>(portable::lanes<double>(v).lane[i], 3);
  return __builtin_bit_cast(__m256i, r);
}
inline __m512i _mm512_cvt_roundps_epu32(__m512 v, int rounding) {
  portable::Lanes<uint32_t, __m512i> r;
  for (int i = 0; i < 16; ++i)
    r.lane[i] = portable::to_integer<uint32_t>(portable::lanes<float>(v).lane[i], rounding);
  return __builtin_bit_cast(__m512i, r);
}
inline __m512i _mm512_cvt_roundpd_epi64(__m512d v, int rounding) {
  portable::Lanes<int64_t, __m512i> r;
  for (int i = 0; i < 8; ++i)
    r.lane[i] = portable::to_integer<int64_t>(portable::lanes<double>(v).lane[i], rounding);
  return __builtin_bit_cast(__m512i, r);
}
inline __m512i _mm512_cvt_roundps_epi64(__m256 v, int rounding) {
  portable::Lanes<int64_t, __m512i> r;
  for (int i = 0; i < 8; ++i)
    r.lane[i] = portable::to_integer<int64_t>(portable::lanes<float>(v).lane[i], rounding);
  return __builtin_bit_cast(__m512i, r);
}
inline __m512i _mm512_cvt_roundps_epu64(__m256 v, int rounding) {
  portable::Lanes<uint64_t, __m512i> r;
  for (int i = 0; i < 8; ++i)
    r.lane[i] = portable::to_integer<uint64_t>(portable::lanes<float>(v).lane[i], rounding);
  return __builtin_bit_cast(__m512i, r);
}

// ---- Between integers ----

inline __m512i _mm512_cvtepu32_epi64(__m256i v) {
  return portable::join<__m512i>(_mm256_cvtepu32_epi64(_mm256_castsi256_si128(v)),
                                 _mm256_cvtepu32_epi64(_mm256_extracti128_si256(v, 1)));
}
inline __m512i _mm512_cvtepi32_epi64(__m256i v) {
  return portable::join<__m512i>(_mm256_cvtepi32_epi64(_mm256_castsi256_si128(v)),
                                 _mm256_cvtepi32_epi64(_mm256_extracti128_si256(v, 1)));
}
inline __m512i _mm512_cvtepi16_epi32(__m256i v) {
  return portable::join<__m512i>(_mm256_cvtepi16_epi32(_mm256_castsi256_si128(v)),
                                 _mm256_cvtepi16_epi32(_mm256_extracti128_si256(v, 1)));
}
inline __m512i _mm512_cvtepu16_epi32(__m256i v) {
  return portable::join<__m512i>(_mm256_cvtepu16_epi32(_mm256_castsi256_si128(v)),
                                 _mm256_cvtepu16_epi32(_mm256_extracti128_si256(v, 1)));
}
inline __m256i _mm512_cvtepi64_epi32(__m512i v) {
  portable::Lanes<int, __m256i> r;
  for (int i = 0; i < 8; ++i) r.lane[i] = static_cast<int>(portable::lanes<int64_t>(v).lane[i]);
  return __builtin_bit_cast(__m256i, r);
}
inline __m256i _mm512_cvtsepi32_epi16(__m512i v) {
  const auto half = portable::split(v);
  return _mm256_permute4x64_epi64(_mm256_packs_epi32(half.low, half.high), 0xD8);
}
inline __m256i _mm512_cvtusepi32_epi16(__m512i v) {
  portable::Lanes<uint16_t, __m256i> r;
  for (int i = 0; i < 16; ++i) {
    const uint32_t x = portable::lanes<uint32_t>(v).lane[i];
    r.lane[i] = static_cast<uint16_t>(x > 0xffff ? 0xffff : x);
  }
  return __builtin_bit_cast(__m256i, r);
}

}  // namespace zorp
