// atan2, atan2pi: the angle of the point (x, y), in radians and in half turns. Operands: y, x.
// Kernels: __zorp_z1_{atan2,atan2pi}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// With t the quotient of the magnitudes, the smaller by the larger, the angle is atan t or
// pi/2 + atan(-t); a negative x turns it into what pi leaves beside it, and y gives the sign. The
// polynomials but those of the standard atan2 are those of atan and atanpi.
//
// Double and float leave pairs in which an operand is a NaN, infinite, zero, tiny or huge to the
// rare routines; atan2 serves the zeros itself. Half leaves pairs whose larger magnitude is a NaN,
// a zero or an infinity.
#pragma once

#include "invtrig/atan.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

// The functions of one operand have the blocks of the native tier of atan2, of atan2pi and of half.
struct Atan2DoubleBlock {
  Row<double> quarter_turn, half_turn;
  RangeRows<double> range;
  Row<double> d0[5], d1[5], d2[5], d3[4];  // every fourth coefficient
};
struct Atan2FloatBlock {
  Row<float> quarter_turn, half_turn;
  RangeRows<float> range;
  Row<float> a[4], b[5];
};

/// atan c in two parts for the rare routines, entry by entry: c is 1.25 and 1.75 times 2^-3, ... .
using ArcTable = Table<double, 228>;

#pragma GCC visibility push(hidden)
extern "C" {
extern const Atan2DoubleBlock __zorp_datan2_data;
extern const Atan2FloatBlock __zorp_satan2_data;
extern const AtanDoubleShortBlock __zorp_datan2_native_data;
extern const AtanFloatShortBlock __zorp_satan2_native_data;
extern const AtanHalfBlock<float> __zorp_hatan2_data;
extern const AtanHalfBlock<half> __zorp_hatan2_native_data;

extern const AtanpiDoubleBlock __zorp_datan2pi_data;
extern const AtanpiFloatBlock __zorp_satan2pi_data;
extern const AtanpiDoubleShortBlock __zorp_datan2pi_native_data;
extern const AtanpiFloatShortBlock __zorp_satan2pi_native_data;
extern const AtanHalfBlock<float> __zorp_hatan2pi_data;
extern const AtanHalfBlock<half> __zorp_hatan2pi_native_data;

extern const ArcTable __datan2_g_CoutTab, __satan2_g_CoutTab, __datan2pi_g_CoutTab,
    __satan2pi_g_CoutTab;
}
#pragma GCC visibility pop

// ---- Steps that the functions share ------------------------------------------------------------

/// The angle from the arc in the first octants: x and y bring in the quadrant.
template <class V>
inline V in_quadrant(V arc, V y, V x, const auto& k) {
  const V turned = add_where(is_negative(bits(x)), with_sign_of(arc, x), k.half_turn);
  return with_sign_of(turned, y);
}

/// Pairs with an operand that is out of range.
template <class V>
inline Mask<V::lanes> either_out_of_range(V a, V b, const auto& k) {
  return not_less(max(above_smallest(a, k.range), above_smallest(b, k.range)), k.range.limit);
}

/// Half: the larger magnitude divides the smaller. T of the block is float in the standard tier.
template <int N>
struct HalfQuotient {
  using V = Vec<half, N>;
  Mask<N> swapped;
  V low, high;

  /// A NaN comes out as low if x is one and as high if y is one.
  HalfQuotient(V y, V x) {
    const V ax = magnitude(x), ay = magnitude(y);
    swapped = compare<_CMP_LT_OQ>(ax, ay);
    high = max(ax, ay);
    low = min(ay, ax);
  }
};
template <Tier tier, int N, class Block>
inline Outcome<Vec<half, N>> half_angle(Vec<half, N> y, Vec<half, N> x, const Block& k) {
  const HalfQuotient<N> pair(y, x);
  const auto negative = is_negative(bits(x));
  const auto angle = [&](auto low, auto high) {
    using V = decltype(low);
    const V q = div(low, high);
    const V turn = select(negative, V(k.half_turn), constant<V>(0));
    const V base = select(pair.swapped, V(k.quarter_turn), turn);
    const V p = quartic(q, k);
    const V signed_p = select(pair.swapped ^ negative, p ^ sign_mask<V>(), p);
    return fma_in_order(q, signed_p, base);
  };
  Vec<half, N> arc;
  if constexpr (tier == Tier::standard)
    arc = narrow(angle(widen(pair.low), widen(pair.high)));
  else
    arc = angle(pair.low, pair.high);
  return {flipped_by(arc, y), classify<zeros | infinities | nans>(pair.high)};
}

// ---- atan2 -------------------------------------------------------------------------------------

struct Atan2 {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> y, Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return angle(y, x, __zorp_datan2_data);
    else
      return angle(y, x, __zorp_datan2_native_data);
  }
  template <Tier tier, int N>
  static auto apply(Vec<float, N> y, Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return angle(y, x, __zorp_satan2_data);
    else
      return angle(y, x, __zorp_satan2_native_data);
  }
  template <Tier tier, int N>
  static auto apply(Vec<half, N> y, Vec<half, N> x) {
    if constexpr (tier == Tier::standard)
      return half_angle<tier>(y, x, rows(__zorp_hatan2_data));
    else
      return half_angle<tier>(y, x, rows(__zorp_hatan2_native_data));
  }

 private:
  template <class V, class Block>
  static Outcome<V> angle(V y, V x, const Block& block) {
    const auto& k = rows(block);
    const V ax = magnitude(x), ay = magnitude(y);
    const auto first = compare<_CMP_LT_OQ>(ay, ax);
    const V num = select(first, ay, minus_magnitude(x)), den = select(first, ax, ay);
    const V base = select(first, constant<V>(0), k.quarter_turn);
    V result = in_quadrant(arc(quotient(num, den, k), base, k), y, x, k);
    // Cut to the lanes that count, so that an empty mask is known to be empty behind the branch,
    // too.
    Mask<V::lanes> special = {lane_bits<V::lanes>(either_out_of_range(ax, ay, k))};
    if (special.bits != 0) [[unlikely]] {
      // Pairs with a zero and no NaN lie on an axis: the angle is base, or 0 for two zeros.
      const auto zero = classify<zeros>(x) | classify<zeros>(y);
      const auto on_axis = zero & ~(classify<nans>(x) | classify<nans>(y));
      const V axis = select(classify<zeros>(den), constant<V>(0), base);
      result = select(on_axis, in_quadrant(axis, y, x, rows(block)), result);
      special = special & ~on_axis;
    }
    return {result, special};
  }

  template <class V>
  static V quotient(V num, V den, const Atan2DoubleBlock&) {
    return div(num, den);
  }
  template <class V>
  static V quotient(V num, V den, const Atan2FloatBlock&) {
    return quotient_of_significands(num, den);
  }
  template <class V>
  static V quotient(V num, V den, const auto& k) {
    return num * reciprocal(den, k);
  }

  /// base + atan t
  template <class V>
  static V arc(V t, V base, const Atan2DoubleBlock& k) {
    const V z = t * t;
    const V y2 = z * z;
    const V w = y2 * y2;
    const V e = fma(z, horner(w, k.d0), horner(w, k.d1));
    V u = horner(w, k.d3) * w;
    u = fma(z, horner(w, k.d2), u);
    u = fma(y2, e, u);
    return fma(u, t, t) + base;
  }
  template <class V>
  static V arc(V t, V base, const auto& k) {
    return fma(two_chains(t * t, k), t, base);
  }
};

// ---- atan2pi -----------------------------------------------------------------------------------

struct Atan2pi {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> y, Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return angle(y, x, rows(__zorp_datan2pi_data));
    else
      return angle(y, x, rows(__zorp_datan2pi_native_data));
  }
  template <Tier tier, int N>
  static auto apply(Vec<float, N> y, Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return angle(y, x, rows(__zorp_satan2pi_data));
    else
      return angle(y, x, rows(__zorp_satan2pi_native_data));
  }
  template <Tier tier, int N>
  static auto apply(Vec<half, N> y, Vec<half, N> x) {
    if constexpr (tier == Tier::standard)
      return half_angle<tier>(y, x, rows(__zorp_hatan2pi_data));
    else
      return half_angle<tier>(y, x, rows(__zorp_hatan2pi_native_data));
  }

 private:
  template <class V>
  static Outcome<V> angle(V y, V x, const auto& k) {
    const V ax = magnitude(x), ay = magnitude(y);
    const auto swapped = compare<_CMP_NLE_UQ>(ay, ax);
    const V num = select(swapped, minus_magnitude(x), ay), den = select(swapped, ay, ax);
    const V base = select(swapped, V(k.quarter_turn), constant<V>(0));
    const V t = quotient(num, den, k);
    const V arc = pi_polynomial(t * t, k) * t + base;
    return {in_quadrant(arc, y, x, k), either_out_of_range(ax, ay, k)};
  }

  template <class V>
  static V quotient(V num, V den, const AtanpiFloatBlock&) {
    return quotient_of_significands(num, den);
  }
  template <class V>
  static V quotient(V num, V den, const auto& k) {
    return num * separate_reciprocal(den, k);
  }
};

}  // namespace zorp
