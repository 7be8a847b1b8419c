// Stands before the frame's header of the same name: what that one writes in assembly for 512 bits,
// by the same instructions of 256 bits.
#pragma once

#include <immintrin.h>

#include "frame/rounding.h"

namespace zorp::assembly {

inline __m512d add(__m512d a, __m512d b) {
  return portable::by_halves<__m512d>(
      [](__m256d x, __m256d y) { return portable::add_in_order(x, y); }, a, b);
}
inline __m512 add(__m512 a, __m512 b) {
  return portable::by_halves<__m512>(
      [](__m256 x, __m256 y) { return portable::add_in_order(x, y); }, a, b);
}
inline __m128d add(__m128d a, __m128d b) { return portable::add_in_order(a, b); }
inline __m128 add(__m128 a, __m128 b) { return portable::add_in_order(a, b); }

inline __m512d mul(__m512d a, __m512d b) {
  return portable::by_halves<__m512d>(
      [](__m256d x, __m256d y) { return portable::mul_in_order(x, y); }, a, b);
}
inline __m512 mul(__m512 a, __m512 b) {
  return portable::by_halves<__m512>(
      [](__m256 x, __m256 y) { return portable::mul_in_order(x, y); }, a, b);
}
inline __m128d mul(__m128d a, __m128d b) { return portable::mul_in_order(a, b); }
inline __m128 mul(__m128 a, __m128 b) { return portable::mul_in_order(a, b); }

inline __m512d fma(__m512d a, __m512d b, __m512d c) {
  return portable::by_halves<__m512d>(
      [](__m256d x, __m256d y, __m256d z) { return portable::fmadd_in_order(x, y, z); }, a, b, c);
}
inline __m512 fma(__m512 a, __m512 b, __m512 c) {
  return portable::by_halves<__m512>(
      [](__m256 x, __m256 y, __m256 z) { return portable::fmadd_in_order(x, y, z); }, a, b, c);
}
inline __m128d fma(__m128d a, __m128d b, __m128d c) { return portable::fmadd_in_order(a, b, c); }
inline __m128 fma(__m128 a, __m128 b, __m128 c) { return portable::fmadd_in_order(a, b, c); }

inline __m512d fnma(__m512d a, __m512d b, __m512d c) {
  return portable::by_halves<__m512d>(
      [](__m256d x, __m256d y, __m256d z) { return portable::fnmadd_in_order(x, y, z); }, a, b, c);
}
inline __m512 fnma(__m512 a, __m512 b, __m512 c) {
  return portable::by_halves<__m512>(
      [](__m256 x, __m256 y, __m256 z) { return portable::fnmadd_in_order(x, y, z); }, a, b, c);
}
inline __m128d fnma(__m128d a, __m128d b, __m128d c) { return portable::fnmadd_in_order(a, b, c); }
inline __m128 fnma(__m128 a, __m128 b, __m128 c) { return portable::fnmadd_in_order(a, b, c); }

template <Rounding mode>
inline __m512 add(__m512 a, __m512 b) {
  return portable::by_halves<__m512>(
      [](__m256 x, __m256 y) { return portable::add_in(embedded<mode>, x, y); }, a, b);
}
inline __m512 mul_toward_zero(__m512 a, __m512 b) {
  return portable::by_halves<__m512>(
      [](__m256 x, __m256 y) { return portable::mul_in(embedded<rz>, x, y); }, a, b);
}

enum class Fused { madd, msub, nmadd, nmsub };

/// In the order 231 of the instruction's operands: among NaNs that is a, b, c as well.
template <Fused form, Rounding mode>
inline __m512 fused(__m512 a, __m512 b, __m512 c) {
  return portable::by_halves<__m512>(
      [](__m256 x, __m256 y, __m256 z) {
        if constexpr (form == Fused::madd) return portable::fmadd_in(embedded<mode>, x, y, z);
        if constexpr (form == Fused::msub) return portable::fmsub_in(embedded<mode>, x, y, z);
        if constexpr (form == Fused::nmadd) return portable::fnmadd_in(embedded<mode>, x, y, z);
        if constexpr (form == Fused::nmsub) return portable::fnmsub_in(embedded<mode>, x, y, z);
      },
      a, b, c);
}

template <Rounding mode>
inline __m256i narrow(__m512 v) {
  const auto half = portable::split(v);
  return _mm256_set_m128i(portable::narrow(half.high, static_cast<int>(mode)),
                          portable::narrow(half.low, static_cast<int>(mode)));
}

inline uint32_t widened_mask(uint8_t mask) { return mask; }

}  // namespace zorp::assembly
