// Loads of neighbouring numbers for each lane: 2 or 4 fields from an address of its own. The fields
// of a lane come by one load and are then sorted by shuffles; gathers, which load field by field,
// take two to four times as long.
#pragma once

#include "frame/vector.h"

namespace zorp {

template <class V>
struct TwoFields {
  V first, second;
};
template <class V>
struct FourFields {
  V first, second, third, fourth;
};

namespace detail {
template <int i, int N>
inline int64_t lane_offset(Vec<int64_t, N> v) {
  const __m128i part = _mm512_extracti64x2_epi64(v.reg, i / 2);
  return i % 2 ? _mm_extract_epi64(part, 1) : _mm_cvtsi128_si64(part);
}
template <int i, int N>
inline int64_t lane_offset(Vec<int32_t, N> v) {
  const __m128i part = _mm512_extracti32x4_epi32(v.reg, i / 4);
  return _mm_extract_epi32(part, i % 4);
}
template <int i, class Offsets>
inline const char* address(const void* base, Offsets offset) {
  return static_cast<const char*>(base) + lane_offset<i>(offset);
}

/// The pairs of lanes i, i + 2, i + 4, i + 6, as far as there are any.
template <int i, int N>
inline __m512d every_second_pair(const void* base, Vec<int64_t, N> offset) {
  const auto load = [&]<int lane>() {
    return _mm_loadu_pd(reinterpret_cast<const double*>(address<lane>(base, offset)));
  };
  __m512d r = _mm512_zextpd128_pd512(load.template operator()<i>());
  if constexpr (N > 2) r = _mm512_insertf64x2(r, load.template operator()<i + 2>(), 1);
  if constexpr (N > 4) {
    r = _mm512_insertf64x2(r, load.template operator()<i + 4>(), 2);
    r = _mm512_insertf64x2(r, load.template operator()<i + 6>(), 3);
  }
  return r;
}
/// The four fields of lanes i and i + 4, as far as there are any.
template <int i, int N>
inline __m512d fours_of_double(const void* base, Vec<int64_t, N> offset) {
  const auto load = [&]<int lane>() {
    return _mm256_loadu_pd(reinterpret_cast<const double*>(address<lane>(base, offset)));
  };
  __m512d r = _mm512_setzero_pd();
  if constexpr (i < N) r = _mm512_zextpd256_pd512(load.template operator()<i>());
  if constexpr (i + 4 < N) r = _mm512_insertf64x4(r, load.template operator()<i + 4>(), 1);
  return r;
}
/// The four fields of lanes i, i + 4, i + 8, i + 12, as far as there are any.
template <int i, int N>
inline __m512 fours_of_float(const void* base, Vec<int32_t, N> offset) {
  const auto load = [&]<int lane>() {
    return _mm_loadu_ps(reinterpret_cast<const float*>(address<lane>(base, offset)));
  };
  __m512 r = _mm512_setzero_ps();
  if constexpr (i < N) r = _mm512_zextps128_ps512(load.template operator()<i>());
  if constexpr (i + 4 < N) r = _mm512_insertf32x4(r, load.template operator()<i + 4>(), 1);
  if constexpr (i + 8 < N) {
    r = _mm512_insertf32x4(r, load.template operator()<i + 8>(), 2);
    r = _mm512_insertf32x4(r, load.template operator()<i + 12>(), 3);
  }
  return r;
}
}  // namespace detail

/// The two doubles at a byte offset from `base` for each lane.
template <int N>
inline TwoFields<Vec<double, N>> gather_pairs(const void* base, Vec<int64_t, N> offset) {
  using V = Vec<double, N>;
  if constexpr (V::paired) {
    const auto low = gather_pairs(base, offset.lo), high = gather_pairs(base, offset.hi);
    return {V(low.first, high.first), V(low.second, high.second)};
  } else if constexpr (N == 1) {
    return {gather(base, offset), gather(static_cast<const double*>(base) + 1, offset)};
  } else {
    const __m512d even = detail::every_second_pair<0>(base, offset);
    const __m512d odd = detail::every_second_pair<1>(base, offset);
    return {V(_mm512_unpacklo_pd(even, odd)), V(_mm512_unpackhi_pd(even, odd))};
  }
}

/// The four doubles at a byte offset from `base` for each lane.
template <int N>
inline FourFields<Vec<double, N>> gather_fours(const void* base, Vec<int64_t, N> offset) {
  using V = Vec<double, N>;
  if constexpr (N == 1) {
    const auto* at = static_cast<const double*>(base);
    return {gather(at, offset), gather(at + 1, offset), gather(at + 2, offset),
            gather(at + 3, offset)};
  } else {
    static_assert(!V::paired);
    const __m512d r0 = detail::fours_of_double<0>(base, offset);
    const __m512d r1 = detail::fours_of_double<1>(base, offset);
    const __m512d r2 = detail::fours_of_double<2>(base, offset);
    const __m512d r3 = detail::fours_of_double<3>(base, offset);
    // Lanes 0 and 1, 4 and 5: of even fields, of odd ones; then lanes 2 and 3, 6 and 7.
    const __m512d even01 = _mm512_unpacklo_pd(r0, r1), odd01 = _mm512_unpackhi_pd(r0, r1);
    const __m512d even23 = _mm512_unpacklo_pd(r2, r3), odd23 = _mm512_unpackhi_pd(r2, r3);
    const __m512i lower = _mm512_set_epi64(13, 12, 5, 4, 9, 8, 1, 0);
    const __m512i upper = _mm512_set_epi64(15, 14, 7, 6, 11, 10, 3, 2);
    return {V(_mm512_permutex2var_pd(even01, lower, even23)),
            V(_mm512_permutex2var_pd(odd01, lower, odd23)),
            V(_mm512_permutex2var_pd(even01, upper, even23)),
            V(_mm512_permutex2var_pd(odd01, upper, odd23))};
  }
}

/// The four floats at a byte offset from `base` for each lane.
template <int N>
inline FourFields<Vec<float, N>> gather_fours(const void* base, Vec<int32_t, N> offset) {
  using V = Vec<float, N>;
  if constexpr (V::paired) {
    const auto low = gather_fours(base, offset.lo), high = gather_fours(base, offset.hi);
    return {V(low.first, high.first), V(low.second, high.second), V(low.third, high.third),
            V(low.fourth, high.fourth)};
  } else if constexpr (N == 1) {
    const auto* at = static_cast<const float*>(base);
    return {gather(at, offset), gather(at + 1, offset), gather(at + 2, offset),
            gather(at + 3, offset)};
  } else {
    const __m512 r0 = detail::fours_of_float<0>(base, offset);
    const __m512 r1 = detail::fours_of_float<1>(base, offset);
    const __m512 r2 = detail::fours_of_float<2>(base, offset);
    const __m512 r3 = detail::fours_of_float<3>(base, offset);
    const auto pairs = [](__m512 a, __m512 b) {
      return _mm512_castps_pd(_mm512_unpacklo_ps(a, b));
    };
    const auto others = [](__m512 a, __m512 b) {
      return _mm512_castps_pd(_mm512_unpackhi_ps(a, b));
    };
    const __m512d first = pairs(r0, r1), second = pairs(r2, r3);
    const __m512d third = others(r0, r1), fourth = others(r2, r3);
    return {V(_mm512_castpd_ps(_mm512_unpacklo_pd(first, second))),
            V(_mm512_castpd_ps(_mm512_unpackhi_pd(first, second))),
            V(_mm512_castpd_ps(_mm512_unpacklo_pd(third, fourth))),
            V(_mm512_castpd_ps(_mm512_unpackhi_pd(third, fourth)))};
  }
}

/// The two floats at a byte offset from `base` for each lane. Two more behind them are loaded.
template <int N>
inline TwoFields<Vec<float, N>> gather_pairs(const void* base, Vec<int32_t, N> offset) {
  const auto fours = gather_fours(base, offset);
  return {fours.first, fours.second};
}

}  // namespace zorp
