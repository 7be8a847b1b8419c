// Integer lanes: encodings of elements, and integer operands and results.
#pragma once

#include "frame/instructions.h"

namespace zorp {

namespace detail {
/// What doesn't depend on the size of the lanes, in a full register.
struct FullBits {
  using Register = __m512i;

  static Register bit_and(Register a, Register b) { return _mm512_and_si512(a, b); }
  static Register bit_or(Register a, Register b) { return _mm512_or_si512(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm512_xor_si512(a, b); }
  template <int truth>
  static Register ternary_logic(Register a, Register b, Register c) {
    return _mm512_ternarylogic_epi64(a, b, c, truth);
  }
  static Register bits(Register v) { return v; }
  static Register from_bits(Register v) { return v; }
};
/// The same for a single lane.
struct SingleBits {
  using Register = __m128i;

  static Register bit_and(Register a, Register b) { return _mm_and_si128(a, b); }
  static Register bit_or(Register a, Register b) { return _mm_or_si128(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm_xor_si128(a, b); }
  template <int truth>
  static Register ternary_logic(Register a, Register b, Register c) {
    return _mm_ternarylogic_epi64(a, b, c, truth);
  }
  static Register bits(Register v) { return v; }
  static Register from_bits(Register v) { return v; }
};
}  // namespace detail

template <int N>
struct Instructions<int64_t, N> : detail::FullBits {
  static Register add(Register a, Register b) { return _mm512_add_epi64(a, b); }
  static Register sub(Register a, Register b) { return _mm512_sub_epi64(a, b); }
  static Register mul_low_words(Register a, Register b) { return _mm512_mul_epu32(a, b); }
  template <int n>
  static Register shift_left(Register v) {
    return _mm512_slli_epi64(v, n);
  }
  template <int n>
  static Register shift_right(Register v) {
    return _mm512_srli_epi64(v, n);
  }
  template <int n>
  static Register shift_right_signed(Register v) {
    return _mm512_srai_epi64(v, n);
  }
  static Register shift_left_by(Register v, Register n) { return _mm512_sllv_epi64(v, n); }
  static Register absolute(Register v) { return _mm512_abs_epi64(v); }
  static Register reciprocal14_of_lower_floats(Register v) {
    return _mm512_castps_si512(_mm512_rcp14_ps(_mm512_castsi512_ps(v)));
  }
  static Register min(Register a, Register b) { return _mm512_min_epi64(a, b); }
  static Register max(Register a, Register b) { return _mm512_max_epi64(a, b); }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm512_cmp_epi64_mask(a, b, predicate);
  }
  static __mmask8 any_common_bit(Register a, Register b) { return _mm512_test_epi64_mask(a, b); }
  static __mmask8 is_negative(Register v) { return _mm512_movepi64_mask(v); }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm512_mask_mov_epi64(clear, mask, set);
  }
  static Register load_row(const void* row) { return broadcast_64(row); }
  static Register repeat(uint64_t pattern) {
    return _mm512_set1_epi64(static_cast<int64_t>(pattern));
  }
  /// Lookup by the low bits of an index in a table of one row or two.
  template <int rows>
  static Register permute(Register index, const void* table) {
    static_assert(rows == 1 || rows == 2);
    const auto* row = static_cast<const __m512i*>(table);
    if constexpr (rows == 1)
      return _mm512_permutexvar_epi64(index, row[0]);
    else
      return _mm512_permutex2var_epi64(row[0], index, row[1]);
  }
};

template <>
struct Instructions<int64_t, 1> : detail::SingleBits {
  static Register add(Register a, Register b) { return _mm_add_epi64(a, b); }
  static Register sub(Register a, Register b) { return _mm_sub_epi64(a, b); }
  static Register mul_low_words(Register a, Register b) { return _mm_mul_epu32(a, b); }
  template <int n>
  static Register shift_left(Register v) {
    return _mm_slli_epi64(v, n);
  }
  template <int n>
  static Register shift_right(Register v) {
    return _mm_srli_epi64(v, n);
  }
  template <int n>
  static Register shift_right_signed(Register v) {
    return _mm_srai_epi64(v, n);
  }
  static Register shift_left_by(Register v, Register n) { return _mm_sllv_epi64(v, n); }
  static Register absolute(Register v) { return _mm_abs_epi64(v); }
  static Register reciprocal14_of_lower_floats(Register v) {
    const __m128 f = _mm_castsi128_ps(v);
    return _mm_castps_si128(_mm_rcp14_ss(f, f));
  }
  static Register min(Register a, Register b) { return _mm_min_epi64(a, b); }
  static Register max(Register a, Register b) { return _mm_max_epi64(a, b); }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm_cmp_epi64_mask(a, b, predicate);
  }
  static __mmask8 any_common_bit(Register a, Register b) { return _mm_test_epi64_mask(a, b); }
  static __mmask8 is_negative(Register v) { return _mm_movepi64_mask(v); }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm_mask_mov_epi64(clear, mask, set);
  }
  static Register repeat(uint64_t pattern) {
    return _mm_set1_epi64x(static_cast<int64_t>(pattern));
  }
  static Register load_row(const void* row) {
    return _mm_loadl_epi64(static_cast<const __m128i*>(row));
  }
};

template <int N>
struct Instructions<int32_t, N> : detail::FullBits {
  static Register add(Register a, Register b) { return _mm512_add_epi32(a, b); }
  static Register sub(Register a, Register b) { return _mm512_sub_epi32(a, b); }
  static Register mul(Register a, Register b) { return _mm512_mullo_epi32(a, b); }
  template <int n>
  static Register shift_left(Register v) {
    return _mm512_slli_epi32(v, n);
  }
  template <int n>
  static Register shift_right(Register v) {
    return _mm512_srli_epi32(v, n);
  }
  template <int n>
  static Register shift_right_signed(Register v) {
    return _mm512_srai_epi32(v, n);
  }
  static Register shift_left_by(Register v, Register n) { return _mm512_sllv_epi32(v, n); }
  template <int n>
  static Register shift_left_joined(Register high, Register low) {
    return _mm512_shldi_epi32(high, low, n);
  }
  static Register absolute(Register v) { return _mm512_abs_epi32(v); }
  static Register min(Register a, Register b) { return _mm512_min_epi32(a, b); }
  static Register max(Register a, Register b) { return _mm512_max_epi32(a, b); }
  template <int predicate>
  static __mmask16 compare(Register a, Register b) {
    return _mm512_cmp_epi32_mask(a, b, predicate);
  }
  static __mmask16 any_common_bit(Register a, Register b) { return _mm512_test_epi32_mask(a, b); }
  static __mmask16 is_negative(Register v) { return _mm512_movepi32_mask(v); }
  static Register blend(__mmask16 mask, Register set, Register clear) {
    return _mm512_mask_mov_epi32(clear, mask, set);
  }
  static Register load_row(const void* row) { return broadcast_32(row); }
  static Register repeat(uint64_t pattern) {
    return _mm512_set1_epi32(static_cast<int32_t>(pattern));
  }
  /// Lookup by the low bits of an index in a table of one row or two.
  template <int rows>
  static Register permute(Register index, const void* table) {
    static_assert(rows == 1 || rows == 2);
    const auto* row = static_cast<const __m512i*>(table);
    if constexpr (rows == 1)
      return _mm512_permutexvar_epi32(index, row[0]);
    else
      return _mm512_permutex2var_epi32(row[0], index, row[1]);
  }
};

template <>
struct Instructions<int32_t, 1> : detail::SingleBits {
  static Register add(Register a, Register b) { return _mm_add_epi32(a, b); }
  static Register sub(Register a, Register b) { return _mm_sub_epi32(a, b); }
  static Register mul(Register a, Register b) { return _mm_mullo_epi32(a, b); }
  template <int n>
  static Register shift_left(Register v) {
    return _mm_slli_epi32(v, n);
  }
  template <int n>
  static Register shift_right(Register v) {
    return _mm_srli_epi32(v, n);
  }
  template <int n>
  static Register shift_right_signed(Register v) {
    return _mm_srai_epi32(v, n);
  }
  static Register shift_left_by(Register v, Register n) { return _mm_sllv_epi32(v, n); }
  template <int n>
  static Register shift_left_joined(Register high, Register low) {
    return _mm_shldi_epi32(high, low, n);
  }
  static Register absolute(Register v) { return _mm_abs_epi32(v); }
  static Register min(Register a, Register b) { return _mm_min_epi32(a, b); }
  static Register max(Register a, Register b) { return _mm_max_epi32(a, b); }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm_cmp_epi32_mask(a, b, predicate);
  }
  static __mmask8 any_common_bit(Register a, Register b) { return _mm_test_epi32_mask(a, b); }
  static __mmask8 is_negative(Register v) { return _mm_movepi32_mask(v); }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm_mask_mov_epi32(clear, mask, set);
  }
  static Register repeat(uint64_t pattern) { return _mm_set1_epi32(static_cast<int32_t>(pattern)); }
  static Register load_row(const void* row) { return _mm_loadu_si32(row); }
};

template <int N>
struct Instructions<int16_t, N> : detail::FullBits {
  static Register add(Register a, Register b) { return _mm512_add_epi16(a, b); }
  static Register sub(Register a, Register b) { return _mm512_sub_epi16(a, b); }
  static Register mul(Register a, Register b) { return _mm512_mullo_epi16(a, b); }
  template <int n>
  static Register shift_left(Register v) {
    return _mm512_slli_epi16(v, n);
  }
  template <int n>
  static Register shift_right(Register v) {
    return _mm512_srli_epi16(v, n);
  }
  template <int n>
  static Register shift_right_signed(Register v) {
    return _mm512_srai_epi16(v, n);
  }
  static Register shift_left_by(Register v, Register n) { return _mm512_sllv_epi16(v, n); }
  static Register min(Register a, Register b) { return _mm512_min_epi16(a, b); }
  static Register max(Register a, Register b) { return _mm512_max_epi16(a, b); }
  template <int predicate>
  static __mmask32 compare(Register a, Register b) {
    return _mm512_cmp_epi16_mask(a, b, predicate);
  }
  static __mmask32 any_common_bit(Register a, Register b) { return _mm512_test_epi16_mask(a, b); }
  static __mmask32 is_negative(Register v) { return _mm512_movepi16_mask(v); }
  static Register blend(__mmask32 mask, Register set, Register clear) {
    return _mm512_mask_mov_epi16(clear, mask, set);
  }
  static Register load_row(const void* row) { return _mm512_load_si512(row); }
  static Register repeat(uint64_t pattern) {
    return _mm512_set1_epi16(static_cast<int16_t>(pattern));
  }
  /// Lookup by the low bits of an index in a table of one row or two.
  template <int rows>
  static Register permute(Register index, const void* table) {
    static_assert(rows == 1 || rows == 2);
    const auto* row = static_cast<const __m512i*>(table);
    if constexpr (rows == 1)
      return _mm512_permutexvar_epi16(index, row[0]);
    else
      return _mm512_permutex2var_epi16(row[0], index, row[1]);
  }
};

template <>
struct Instructions<int16_t, 1> : detail::SingleBits {
  static Register add(Register a, Register b) { return _mm_add_epi16(a, b); }
  static Register sub(Register a, Register b) { return _mm_sub_epi16(a, b); }
  static Register mul(Register a, Register b) { return _mm_mullo_epi16(a, b); }
  template <int n>
  static Register shift_left(Register v) {
    return _mm_slli_epi16(v, n);
  }
  template <int n>
  static Register shift_right(Register v) {
    return _mm_srli_epi16(v, n);
  }
  template <int n>
  static Register shift_right_signed(Register v) {
    return _mm_srai_epi16(v, n);
  }
  static Register shift_left_by(Register v, Register n) { return _mm_sllv_epi16(v, n); }
  static Register min(Register a, Register b) { return _mm_min_epi16(a, b); }
  static Register max(Register a, Register b) { return _mm_max_epi16(a, b); }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm_cmp_epi16_mask(a, b, predicate);
  }
  static __mmask8 any_common_bit(Register a, Register b) { return _mm_test_epi16_mask(a, b); }
  static __mmask8 is_negative(Register v) { return _mm_movepi16_mask(v); }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm_mask_mov_epi16(clear, mask, set);
  }
  static Register repeat(uint64_t pattern) { return _mm_set1_epi16(static_cast<int16_t>(pattern)); }
  static Register load_row(const void* row) { return _mm_loadu_si16(row); }
};

// Unsigned lanes differ in conversions and comparisons alone.
template <int N>
struct Instructions<uint64_t, N> : Instructions<int64_t, N> {};
template <int N>
struct Instructions<uint32_t, N> : Instructions<int32_t, N> {};
template <int N>
struct Instructions<uint16_t, N> : Instructions<int16_t, N> {};

}  // namespace zorp
