// Floating point to integer: double and float to 32-bit and 64-bit integers, with the rounding and
// the treatment of what lies out of range in the name.
// Kernels: __zorp_z1_cvtfpto{i32,u32,i64,u64}{rte,rtn,rtp,rtz}{sat,nosat}{,f}{1,2,3,4,8,16,32}.
//
// One operation rounds to an integral floating-point number r, and nothing after it can round
// again. 32-bit integers then come from the processor's signed conversion, for unsigned ones
// helped out at [2^31, 2^32), where the significand of r is the integer. 64-bit integers are built
// from the bits of r.
//
// `sat` clamps r to the range of the integer and turns NaNs into 0. `nosat` gives the magnitude of
// r as an unsigned integer, and the top bit alone for everything that doesn't fit.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

// Limits are compared with whole encodings as integers, or with their upper words: encodings of
// positive numbers are ordered as the numbers are, and NaNs lie above.

/// To int32_t, saturating. All rows refer to the upper words of encodings.
struct ToInt32Block {
  Row<int32_t> magnitude_mask, range_limit, negative_clamp, positive_clamp;
};

template <class T>
struct ToUint32Block {
  Row<Encoding<T>> exponent_mask, top_bit_exponent;
  Row<int32_t> range_limit, clamp;  // the limit as an upper word
};

/// To 64-bit integers. Numbers below `adder` have fraction bits, and adding it shifts them out: it
/// is the first number whose unit in the last place is 1.
template <class T>
struct To64Block {
  Row<Encoding<T>> fraction_mask, implied_bit, shift_bias;
  Row<T> adder;
  Row<Encoding<T>> range_limit;
  Row<int64_t> out_of_range, positive_clamp;
};

#pragma GCC visibility push(hidden)
extern "C" {
// One block serves all roundings, with and without saturation.
extern const ToInt32Block __zorp_dcvtfptoi32rtesat_data;
extern const ToInt32Block __zorp_scvtfptoi32rtesat_data;
extern const ToUint32Block<double> __zorp_dcvtfptou32rtesat_data;
extern const ToUint32Block<float> __zorp_scvtfptou32rtesat_data;
extern const To64Block<double> __zorp_dcvtfptoi64rtesat_data;
extern const To64Block<float> __zorp_scvtfptoi64rtesat_data;
extern const To64Block<double> __zorp_dcvtfptou64rtesat_data;
extern const To64Block<float> __zorp_scvtfptou64rtesat_data;
}
#pragma GCC visibility pop

// ---- Algorithms --------------------------------------------------------------------------------

enum class Saturation { nosat, sat };

template <class Integer, Rounding rounding, Saturation saturation>
struct FloatToInteger {
  template <Tier tier, class T, int N>
  static Vec<Integer, N> apply(Vec<T, N> x) {
    if constexpr (x.paired && Vec<Integer, N>::paired) {
      return {apply<tier>(x.lo), apply<tier>(x.hi)};
    } else {
      constexpr int without_exception = 8;
      const auto r = round_scale<static_cast<int>(rounding) | without_exception>(x);
      if constexpr (same<Integer, int32_t>)
        return to_signed_32(r);
      else if constexpr (same<Integer, uint32_t>)
        return to_unsigned_32(r);
      else
        return to_64(r);
    }
  }

 private:
  static constexpr bool saturates = saturation == Saturation::sat;
  static constexpr bool is_signed = same<Integer, Encoding<Integer>>;

  template <class T>
  static const auto& block() {
    constexpr bool is_double = same<T, double>;
    if constexpr (same<Integer, int32_t>)
      return is_double ? __zorp_dcvtfptoi32rtesat_data : __zorp_scvtfptoi32rtesat_data;
    else if constexpr (same<Integer, uint32_t> && is_double)
      return __zorp_dcvtfptou32rtesat_data;
    else if constexpr (same<Integer, uint32_t>)
      return __zorp_scvtfptou32rtesat_data;
    else if constexpr (is_double)
      return is_signed ? __zorp_dcvtfptoi64rtesat_data : __zorp_dcvtfptou64rtesat_data;
    else
      return is_signed ? __zorp_scvtfptoi64rtesat_data : __zorp_scvtfptou64rtesat_data;
  }

  template <class V>
  static Mask<V::lanes> is_number(V r) {
    return compare<_CMP_ORD_Q>(r, r);
  }
  /// Neither negative nor a NaN.
  template <class V>
  static Mask<V::lanes> is_positive_or_zero(V r) {
    return compare<_CMP_GE_OQ>(r, constant<V>(0));
  }
  template <class V>
  static V zero_unless(Mask<V::lanes> mask, V v) {
    return select(mask, v, constant<V>(0));
  }

  /// The words that hold sign and exponent.
  template <int N>
  static Vec<int32_t, N> upper_words(Vec<double, N> r) {
    return high_words(bits(r));
  }
  template <int N>
  static Vec<int32_t, N> upper_words(Vec<float, N> r) {
    return bits(r);
  }

  template <class T, int N>
  static Vec<int32_t, N> to_signed_32(Vec<T, N> r) {
    const auto converted = to_int32(r);
    if constexpr (!saturates) {
      return converted;
    } else {
      const auto& k = rows(block<T>());
      const auto upper = upper_words(r);
      const auto beyond = not_less(upper & k.magnitude_mask, k.range_limit);
      const Vec<int32_t, N> positive_clamp = k.positive_clamp;
      const auto clamp =
          select(is_negative(upper), Vec<int32_t, N>(k.negative_clamp), positive_clamp);
      return zero_unless(for_words(is_number(r)), select(beyond, clamp, converted));
    }
  }

  /// The leading 31 bits of the fraction, below a bit of no meaning.
  template <int N>
  static Vec<int32_t, N> leading_fraction(Vec<double, N> r) {
    return low_words(shift_right<21>(bits(r)));
  }
  template <int N>
  static Vec<int32_t, N> leading_fraction(Vec<float, N> r) {
    return shift_left<8>(bits(r));
  }

  template <class T, int N>
  static Vec<uint32_t, N> to_unsigned_32(Vec<T, N> r) {
    using Words = Vec<int32_t, N>;
    const auto& k = rows(block<T>());
    // With saturation, what negative lanes hold here is of no meaning.
    const auto converted = to_int32(saturates ? r : magnitude(r));
    const auto significand = leading_fraction(r) | constant<Words>(0x80000000);
    const auto has_top_bit = equal(bits(r) & k.exponent_mask, k.top_bit_exponent);
    auto value = select(for_words(has_top_bit), significand, converted);
    if constexpr (saturates) {
      value = select(not_less(upper_words(r), k.range_limit), Words(k.clamp), value);
      value = zero_unless(for_words(is_positive_or_zero(r)), value);
    }
    return reinterpret<uint32_t>(value);
  }

  template <int N>
  static Vec<int64_t, N> widened(Vec<int64_t, N> v) {
    return v;
  }
  template <int N>
  static Vec<int64_t, N> widened(Vec<int32_t, N> v) {
    return zero_extend(v);
  }

  template <class T, int N>
  static Vec<Integer, N> to_64(Vec<T, N> r) {
    using Longs = Vec<int64_t, N>;
    constexpr int fraction_bits = sizeof(T) == 8 ? 52 : 23;
    const auto& k = rows(block<T>());
    // With saturation to unsigned, what negative lanes hold until the last step is of no meaning.
    const auto a = saturates && !is_signed ? r : magnitude(r);
    const auto encoding = bits(a);

    // An integer without fraction bits is its significand, shifted left by the exponent. A smaller
    // one appears in the low bits of a + adder, an exact sum.
    const auto is_whole = not_less(encoding, bits(Vec<T, N>(k.adder)));
    const auto significand = (encoding & k.fraction_mask) | k.implied_bit;
    const auto low_bits = bits(a + k.adder) & k.fraction_mask;
    const auto digits = select(is_whole, significand, low_bits);
    const auto count = zero_unless(is_whole, shift_right<fraction_bits>(encoding) - k.shift_bias);
    auto value = shift_left_by(widened(digits), widened(count));

    const auto beyond = not_less(encoding, k.range_limit);
    if constexpr (is_signed) {
      const auto negative = is_negative(bits(r));
      value = select(negative, constant<Longs>(0) - value, value);
      Longs clamp = k.out_of_range;
      if constexpr (saturates) clamp = select(negative, clamp, k.positive_clamp);
      value = select(beyond, clamp, value);
      if constexpr (saturates) value = zero_unless(is_number(r), value);
    } else {
      const Longs clamp = saturates ? k.positive_clamp : k.out_of_range;
      value = select(beyond, clamp, value);
      if constexpr (saturates) value = zero_unless(is_positive_or_zero(r), value);
    }
    return reinterpret<Integer>(value);
  }
};

}  // namespace zorp
