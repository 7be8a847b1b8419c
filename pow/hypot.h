// hypot: sqrt(x^2 + y^2).
// Kernels: __zorp_z1_hypot{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// The sum of squares is formed as it stands, and its root from an estimate of its reciprocal root.
// That serves where neither the larger square nor the sum leaves the normal range: the exponent of
// the larger operand tells. All other lanes go to the rare routines, which scale. Half works in
// float, where no sum of squares of halves comes near the ends of the range.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct HypotDoubleBlock {
  Row<double> absmask;
  Row<int64_t> bound;
  Row<double> half;
};
struct HypotFloatBlock {
  Row<float> absmask, half;
  Row<int32_t> bound;
};
struct HypotHalfBlock {
  Row<half> infinity;
};

/// 1/sqrt(m) to 11 bits for the rare routines: m in [1, 2), then m in [2, 4).
using HypotTable = Table<double, 512>;

#pragma GCC visibility push(hidden)
extern "C" {
extern const HypotDoubleBlock __zorp_dhypot_data;
extern const HypotFloatBlock __zorp_shypot_data;
extern const HypotHalfBlock __zorp_hhypot_data;
extern const HypotTable __dhypot_g__qaxdHypotHATab, _qaxsHypotHATab;
}
#pragma GCC visibility pop

// ---- hypot -------------------------------------------------------------------------------------

struct Hypot {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x, Vec<double, N> y) {
    const auto& k = rows(__zorp_dhypot_data);
    const auto s = sum_of_squares(x, y);
    const auto r = reciprocal_root14(s);
    // h comes near sqrt(s), g near 1 / (2 sqrt(s)); e is their common relative error.
    auto h = s * r, g = r * k.half;
    const auto e = fnma(h, g, k.half);
    h = fma(e, h, h);
    if constexpr (tier == Tier::standard) {
      g = fma(g, e, g);
      h = corrected(h, g, s);
    }
    return Outcome<Vec<double, N>>{h, out_of_range(x, y, k)};
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x, Vec<float, N> y) {
    const auto s = sum_of_squares(x, y);
    const auto r = reciprocal_root14(s);
    const auto h = s * r;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_shypot_data);
      return Outcome<Vec<float, N>>{corrected(h, r * k.half, s), out_of_range(x, y, k)};
    } else {
      constexpr int subnormals = 0x20;
      return Outcome<Vec<float, N>>{h, classify<zeros | subnormals | infinities | nans>(s)};
    }
  }

  /// A zero sum has an infinite reciprocal root, which comes back as zero. Of two NaNs y's wins.
  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x, Vec<half, N> y) {
    const auto& k = rows(__zorp_hhypot_data);
    const auto a = widen(x), b = widen(y);
    const auto s = fma_in_order(b, b, a * a);
    const auto h = narrow(reciprocal14(reciprocal_root14(s)));
    const Vec<half, N> infinity = k.infinity;
    return select(classify<infinities>(x) | classify<infinities>(y), infinity, h);
  }

 private:
  template <class V>
  static V sum_of_squares(V x, V y) {
    return fma(y, y, x * x);
  }
  /// One Newton step from h, with g near 1 / (2 h).
  template <class V>
  static V corrected(V h, V g, V s) {
    return fma(fnma(h, h, s), g, h);
  }
  /// The lanes whose larger exponent reaches the bound. Where an operand is a NaN the exponent of y
  /// counts: the arithmetic hands on a NaN in x by itself.
  template <class V, class Block>
  static Mask<V::lanes> out_of_range(V x, V y, const Block& k) {
    return not_less(bits(max(exponent(x), exponent(y)) & k.absmask), k.bound);
  }
};

}  // namespace zorp
