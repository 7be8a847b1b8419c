// Conversions between lane types. Lanes of 64 bits and lanes of 32 bits meet eight at a time: a
// full register of the one is half a register of the other.
#pragma once

#include "frame/assembly.h"
#include "frame/vector.h"

namespace zorp {

namespace detail {
inline __m256i low_half(__m512i r) { return _mm512_castsi512_si256(r); }
inline __m256i high_half(__m512i r) { return _mm512_extracti64x4_epi64(r, 1); }
inline __m256 low_half(__m512 r) { return _mm512_castps512_ps256(r); }
inline __m256 high_half(__m512 r) { return _mm512_extractf32x8_ps(r, 1); }
/// The low half of a register whose high half the conversion has cleared.
inline __m512i with_clear_half(__m256i r) { return _mm512_castsi256_si512(r); }
inline __m512 with_clear_half(__m256 r) { return _mm512_castps256_ps512(r); }
inline __m512i join_halves(__m256i low, __m256i high) {
  return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}
inline __m512 join_halves(__m256 low, __m256 high) {
  return _mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1);
}

/// 32-bit lanes to 64-bit lanes; f takes eight of them, f1 one.
template <class To, class From, int N, class F, class F1>
[[gnu::always_inline]] inline Vec<To, N> to_wide(Vec<From, N> v, F f, F1 f1) {
  if constexpr (N == 1)
    return Vec<To, N>(f1(v.reg));
  else if constexpr (N == 16)
    return {Vec<To, 8>(f(low_half(v.reg))), Vec<To, 8>(f(high_half(v.reg)))};
  else
    return Vec<To, N>(f(low_half(v.reg)));
}
/// 64-bit lanes to 32-bit lanes.
template <class To, class From, int N, class F, class F1>
[[gnu::always_inline]] inline Vec<To, N> to_narrow(Vec<From, N> v, F f, F1 f1) {
  if constexpr (N == 1)
    return Vec<To, N>(f1(v.reg));
  else if constexpr (N == 16)
    return Vec<To, N>(join_halves(f(v.lo.reg), f(v.hi.reg)));
  else
    return Vec<To, N>(with_clear_half(f(v.reg)));
}
/// Between lanes of one size.
template <class To, class From, int N, class F, class F1>
[[gnu::always_inline]] inline Vec<To, N> to_same_size(Vec<From, N> v, F f, F1 f1) {
  if constexpr (Vec<From, N>::paired)
    return {Vec<To, N / 2>(f(v.lo.reg)), Vec<To, N / 2>(f(v.hi.reg))};
  else if constexpr (N == 1)
    return Vec<To, N>(f1(v.reg));
  else
    return Vec<To, N>(f(v.reg));
}
}  // namespace detail

// ---- To floating point -------------------------------------------------------------------------

/// Exact; quiets a NaN.
template <int N>
inline Vec<double, N> to_double(Vec<float, N> v) {
  return detail::to_wide<double>(
      v, [](__m256 r) { return _mm512_cvt_roundps_pd(r, sae); },
      [](__m128 r) { return _mm_cvt_roundss_sd(_mm_setzero_pd(), r, sae); });
}
/// Exact.
template <int N>
inline Vec<double, N> to_double(Vec<int32_t, N> v) {
  return detail::to_wide<double>(
      v, [](__m256i r) { return _mm512_cvtepi32_pd(r); },
      [](__m128i r) { return _mm_cvtepi32_pd(r); });
}
template <int N>
inline Vec<double, N> to_double(Vec<uint32_t, N> v) {
  return detail::to_wide<double>(
      v, [](__m256i r) { return _mm512_cvtepu32_pd(r); },
      [](__m128i r) { return _mm_cvtepu32_pd(r); });
}
template <Rounding mode = rn, int N>
inline Vec<float, N> to_float(Vec<double, N> v) {
  return detail::to_narrow<float>(
      v, [](__m512d r) { return _mm512_cvt_roundpd_ps(r, embedded<mode>); },
      [](__m128d r) { return _mm_cvt_roundsd_ss(_mm_setzero_ps(), r, embedded<mode>); });
}
template <Rounding mode = rn, int N>
inline Vec<float, N> to_float(Vec<int32_t, N> v) {
  return detail::to_same_size<float>(
      v, [](__m512i r) { return _mm512_cvt_roundepi32_ps(r, embedded<mode>); },
      [](__m128i r) {
        return _mm_cvt_roundi32_ss(_mm_setzero_ps(), _mm_cvtsi128_si32(r), embedded<mode>);
      });
}

// ---- To integers: out of range, infinities and NaNs give the least one (unsigned: all ones). ----

template <Rounding mode = rn, int N>
inline Vec<int32_t, N> to_int32(Vec<double, N> v) {
  return detail::to_narrow<int32_t>(
      v, [](__m512d r) { return _mm512_cvt_roundpd_epi32(r, embedded<mode>); },
      [](__m128d r) { return _mm_cvtsi32_si128(_mm_cvt_roundsd_i32(r, embedded<mode>)); });
}
template <Rounding mode = rn, int N>
inline Vec<int32_t, N> to_int32(Vec<float, N> v) {
  return detail::to_same_size<int32_t>(
      v, [](__m512 r) { return _mm512_cvt_roundps_epi32(r, embedded<mode>); },
      [](__m128 r) { return _mm_cvtsi32_si128(_mm_cvt_roundss_i32(r, embedded<mode>)); });
}
template <Rounding mode = rn, int N>
inline Vec<int64_t, N> to_int64(Vec<double, N> v) {
  return detail::to_same_size<int64_t>(
      v, [](__m512d r) { return _mm512_cvt_roundpd_epi64(r, embedded<mode>); },
      [](__m128d r) { return _mm_cvtsi64_si128(_mm_cvt_roundsd_i64(r, embedded<mode>)); });
}
template <Rounding mode = rn, int N>
inline Vec<int32_t, N> to_int32(Vec<half, N> v) {
  return to_int32<mode>(widen(v));
}
template <int N>
inline Vec<int32_t, N> truncate_to_int32(Vec<double, N> v) {
  return detail::to_narrow<int32_t>(
      v, [](__m512d r) { return _mm512_cvtt_roundpd_epi32(r, sae); },
      [](__m128d r) { return _mm_cvtsi32_si128(_mm_cvtt_roundsd_i32(r, sae)); });
}
template <int N>
inline Vec<uint32_t, N> truncate_to_uint32(Vec<double, N> v) {
  return detail::to_narrow<uint32_t>(
      v, [](__m512d r) { return _mm512_cvtt_roundpd_epu32(r, sae); },
      [](__m128d r) { return _mm_cvtsi32_si128(static_cast<int>(_mm_cvtt_roundsd_u32(r, sae))); });
}

/// In the caller's rounding mode unless told otherwise.
template <Rounding mode = Rounding::current, int N>
inline Vec<int16_t, N> to_int16(Vec<half, N> v) {
  return Vec<int16_t, N>(Vec<half, N>::Ops::template to_int16<mode>(v.reg));
}
template <Rounding mode = Rounding::current, int N>
inline Vec<uint16_t, N> to_uint16(Vec<half, N> v) {
  return Vec<uint16_t, N>(Vec<half, N>::Ops::template to_uint16<mode>(v.reg));
}

// ---- Between integers --------------------------------------------------------------------------

template <int N>
inline Vec<int64_t, N> zero_extend(Vec<int32_t, N> v) {
  return detail::to_wide<int64_t>(
      v, [](__m256i r) { return _mm512_cvtepu32_epi64(r); },
      [](__m128i r) { return _mm_cvtepu32_epi64(r); });
}
namespace detail {
/// Word `w` (0 low, 1 high) of each lane, by one permutation.
template <int w, int N>
inline Vec<int32_t, N> words(Vec<int64_t, N> v) {
  const __m512i index =
      _mm512_setr_epi32(w, w + 2, w + 4, w + 6, w + 8, w + 10, w + 12, w + 14, w + 16, w + 18,
                        w + 20, w + 22, w + 24, w + 26, w + 28, w + 30);
  if constexpr (N == 16)
    return Vec<int32_t, N>(_mm512_permutex2var_epi32(v.lo.reg, index, v.hi.reg));
  else
    return Vec<int32_t, N>(_mm512_permutexvar_epi32(index, v.reg));
}
}  // namespace detail

template <int N>
inline Vec<int32_t, N> low_words(Vec<int64_t, N> v) {
  if constexpr (N == 1)
    return Vec<int32_t, 1>(v.reg);
  else
    return detail::words<0>(v);
}
template <int N>
inline Vec<int32_t, N> high_words(Vec<int64_t, N> v) {
  if constexpr (N == 1)
    return Vec<int32_t, 1>(_mm_srli_epi64(v.reg, 32));
  else
    return detail::words<1>(v);
}
/// A mask from 64-bit lanes, to be used on 32-bit lanes. The processor has cleared the bits beyond
/// the lanes already; the compiler would do so again, by way of a general register.
template <int N>
inline Mask<N> for_words(Mask<N> mask) {
  if constexpr (N <= 8) return {assembly::widened_mask(static_cast<uint8_t>(mask.bits))};
  return mask;
}
/// The same bits as signed or unsigned lanes.
template <class To, class From, int N>
inline Vec<To, N> reinterpret(Vec<From, N> v) {
  static_assert(is_integer<To> && is_integer<From> && sizeof(To) == sizeof(From));
  return detail::map<Vec<To, N>>([](auto r) { return r; }, v);
}

}  // namespace zorp
