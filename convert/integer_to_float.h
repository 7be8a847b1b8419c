// Integer to floating point: 32-bit and 64-bit integers to double and float, with the rounding in
// the name.
// Kernels: __zorp_z1_cvt{i32,u32,i64,u64}tofp{rte,rtn,rtp,rtz}{,f}{1,2,3,4,8,16,32}.
//
// The magnitude m of the integer is split into pieces that are exact in the result's type: a few
// bits put into the fraction of a number whose unit in the last place is their weight, less that
// number. The pieces are added with rounding to nearest, and what the addition lost tells whether
// the sum must move by one unit to be the result of a directed rounding. No sum overflows, and an
// integer 0 gives +0 throughout.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct Uint32ToDoubleBlock {
  Row<double> low_adder;
};

/// Integers to the floating-point type of their size.
template <class T>
struct SignedToSameBlock {
  Row<Encoding<T>> fraction_mask;
  Row<T> sign_mask, low_adder, high_adder;
  Row<Encoding<T>> plus_one, minus_one;
};
template <class T>
struct UnsignedToSameBlock {
  Row<Encoding<T>> fraction_mask;
  Row<T> low_adder, high_adder;
  Row<Encoding<T>> plus_one;
};

struct Int64ToFloatBlock {
  Row<int32_t> fraction_mask, half_ulp_offset;
  Row<float> sign_mask, low_adder, middle_adder, high_adder;
  Row<int32_t> plus_one, minus_one;
};
struct Uint64ToFloatBlock {
  Row<int32_t> fraction_mask, half_ulp_offset;
  Row<float> low_adder, middle_adder, high_adder;
  Row<int32_t> plus_one;
};

#pragma GCC visibility push(hidden)
extern "C" {
// One block serves all roundings.
extern const Uint32ToDoubleBlock __zorp_dcvtu32tofprte_data;
extern const SignedToSameBlock<double> __zorp_dcvti64tofprte_data;
extern const UnsignedToSameBlock<double> __zorp_dcvtu64tofprte_data;
extern const SignedToSameBlock<float> __zorp_scvti32tofprte_data;
extern const UnsignedToSameBlock<float> __zorp_scvtu32tofprte_data;
extern const Int64ToFloatBlock __zorp_scvti64tofprte_data;
extern const Uint64ToFloatBlock __zorp_scvtu64tofprte_data;
}
#pragma GCC visibility pop

// ---- Algorithms --------------------------------------------------------------------------------

template <class Integer, class T, Rounding rounding>
struct IntegerToFloat {
  template <Tier tier, int N>
  static Vec<T, N> apply(Vec<Integer, N> x) {
    if constexpr (x.paired && Vec<T, N>::paired)
      return {apply<tier>(x.lo), apply<tier>(x.hi)};
    else if constexpr (sizeof(Integer) < sizeof(T))
      return exactly(x);
    else if constexpr (sizeof(Integer) == sizeof(T))
      return from_two_pieces(x);
    else
      return from_three_pieces(x);
  }

 private:
  static constexpr bool is_signed = same<Integer, Encoding<Integer>>;
  static constexpr int fraction_bits = sizeof(T) == 8 ? 52 : 23;

  static const auto& block() {
    if constexpr (same<T, double> && same<Integer, uint32_t>)
      return __zorp_dcvtu32tofprte_data;
    else if constexpr (same<T, double> && is_signed)
      return __zorp_dcvti64tofprte_data;
    else if constexpr (same<T, double>)
      return __zorp_dcvtu64tofprte_data;
    else if constexpr (same<Integer, int32_t>)
      return __zorp_scvti32tofprte_data;
    else if constexpr (same<Integer, uint32_t>)
      return __zorp_scvtu32tofprte_data;
    else if constexpr (same<Integer, int64_t>)
      return __zorp_scvti64tofprte_data;
    else
      return __zorp_scvtu64tofprte_data;
  }

  /// Read as unsigned, so that the most negative integer has one, too.
  template <class V>
  static V magnitude(V x) {
    if constexpr (is_signed)
      return absolute(x);
    else
      return x;
  }
  /// Digits that fit into the fraction, in units of the adder's last place.
  template <int N>
  static Vec<T, N> piece(Vec<Encoding<T>, N> digits, const Row<T>& adder) {
    return (from_bits<T>(digits) | adder) - adder;
  }
  /// v >= 0 with the sign of the integer. `top` has that sign in its top bits.
  template <class Block, int N>
  static Vec<T, N> with_sign(Vec<T, N> v, Vec<Encoding<T>, N> top, const Block& k) {
    if constexpr (is_signed)
      return v | (from_bits<T>(top) & k.sign_mask);
    else
      return v;
  }
  /// The signed sum r, moved by one unit in the direction of rounding where it lies on the other
  /// side of the integer. Encodings count away from zero.
  template <class Block, int N>
  static Vec<T, N> step_where(Mask<N> wrong, Vec<T, N> r, Vec<Encoding<T>, N> top, const Block& k) {
    Vec<Encoding<T>, N> unit = k.plus_one;
    if constexpr (is_signed && rounding != rz)
      unit = select(is_negative(top), Vec<Encoding<T>, N>(k.minus_one), unit);
    const auto moved = rounding == ru ? bits(r) + unit : bits(r) - unit;
    return from_bits<T>(select(wrong, moved, bits(r)));
  }

  template <int N>
  static Vec<double, N> exactly(Vec<int32_t, N> x) {
    return to_double(x);
  }
  template <int N>
  static Vec<double, N> exactly(Vec<uint32_t, N> x) {
    return piece(zero_extend(bits(x)), rows(block()).low_adder);
  }

  template <int N>
  static Vec<T, N> from_two_pieces(Vec<Integer, N> x) {
    const auto& k = rows(block());
    const auto m = magnitude(bits(x));
    const auto low = piece(m & k.fraction_mask, k.low_adder);
    const auto high = piece(shift_right<fraction_bits>(m), k.high_adder);
    const auto sum = high + low;
    const auto result = with_sign(sum, bits(x), k);
    if constexpr (rounding == rn) {
      return result;
    } else {
      // What the sum kept of the low piece, against that piece. Rounding toward zero looks at
      // magnitudes, the other modes at signed values.
      const auto as_seen = [&](auto v) { return rounding == rz ? v : with_sign(v, bits(x), k); };
      const auto kept = as_seen(sum) - as_seen(high);
      const auto wrong = rounding == ru ? compare<_CMP_LT_OQ>(kept, as_seen(low))
                                        : compare<_CMP_LT_OQ>(as_seen(low), kept);
      return step_where(wrong, result, bits(x), k);
    }
  }

  template <int N>
  static Vec<float, N> from_three_pieces(Vec<Integer, N> x) {
    const auto& k = rows(block());
    const auto m = magnitude(bits(x));
    const auto top = high_words(bits(x));
    const auto m_high = high_words(m), m_low = low_words(m);
    // Bits 0 to 22, 23 to 45, 46 to 63.
    const auto low_built = from_bits<float>(m_low & k.fraction_mask) | k.low_adder;
    const auto middle =
        piece(shift_left_joined<9>(m_high, m_low) & k.fraction_mask, k.middle_adder);
    const auto high = piece(shift_right<14>(m_high), k.high_adder);
    if constexpr (rounding == rn) {
      const auto sum = high + middle;
      const auto lost = middle + (high - sum);
      // Where the sum lost exactly half a unit, it was rounded to even. If there are low bits, the
      // integer lies above that tie: an odd sum makes the last addition round up.
      const auto binade = bits(sum) & constant<Vec<int32_t, N>>(0xFF800000);
      const auto was_tie = equal(bits(lost), binade - k.half_ulp_offset);
      const auto minus_low = Vec<float, N>(k.low_adder) - low_built;
      const auto odd = bits(sum) | shift_right<31>(bits(minus_low));
      const auto adjusted = from_bits<float>(select(was_tie, odd, bits(sum)));
      return with_sign(adjusted - minus_low, top, k);
    } else {
      const auto low = low_built - k.low_adder;
      const auto rest = middle + low;
      const auto rest_lost = low + (middle - rest);
      const auto sum = high + rest;
      auto lost = (rest + (high - sum)) + rest_lost;
      if constexpr (rounding != rz && is_signed)
        lost = lost ^ (from_bits<float>(top) & k.sign_mask);
      const auto zero = constant<Vec<float, N>>(0);
      const auto wrong =
          rounding == ru ? compare<_CMP_GT_OQ>(lost, zero) : compare<_CMP_LT_OQ>(lost, zero);
      return step_where(wrong, with_sign(sum, top, k), top, k);
    }
  }
};

}  // namespace zorp
