// cbrt, rcbrt: the cube root and its reciprocal.
// Kernels: __zorp_z1_{cbrt,rcbrt}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// |x| = 2^(3 n + b) (1 + r) / c with b = 0, 1, 2 and a short c next to the reciprocal of x's
// significand: the root is 2^n times a table entry for b, a table entry for c and a polynomial for
// (1 + r)^(1/3). The default tiers hold the product of the two entries in a high and a low part.
// The sign of x goes back at the end.
//
// Zeros and infinities pass through without a test: their exponent is infinite, and so is n; their
// significand is 1, for which all factors are 1. Half cbrt knows them by their class, and half
// rcbrt, which computes in float, hands them and NaNs to the rare routine.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct CbrtDoubleBlock {
  Table<double, 8> s, sl;   // 2^(b/3)
  Table<double, 16> t, tl;  // c^(-1/3)
  Row<double> shifter, sign, third, half_shifter, three, one;
  Row<double> k10, k9, k8, k7, k6, k5, k4, k3, k2, k1;
};
struct CbrtDoubleShortBlock {
  Table<double, 8> s;
  Table<double, 16> t;
  Row<double> shifter, sign, third, half_shifter, three, one, k4, k3, k2, k1;
};
struct CbrtFloatBlock {
  Table<float, 16> s, sl;
  Table<float, 32> t, tl;
  Row<float> shifter, sign, third, half_shifter, three, one, k3, k2, k1;
};
struct CbrtFloatShortBlock {
  Table<float, 16> s;
  Table<float, 32> t;
  Row<float> shifter, sign, third, half_shifter, three, one, k1;
};
struct CbrtHalfBlock {
  Table<half, 64> t;  // 2^(e/3)
  Row<half> one, sign, shifter, k3, k2, k1;
};

using RcbrtDoubleBlock = CbrtDoubleBlock;  // of 2^(-b/3), c^(1/3), -1/3
struct RcbrtDoubleShortBlock {
  Table<double, 8> s;
  Table<double, 16> t;
  Row<double> shifter, sign, third, half_shifter, three, one, k5, k4, k3, k2, k1;
};
struct RcbrtFloatBlock {
  Table<float, 16> s, sl;
  Table<float, 32> t, tl;
  Row<float> shifter, sign, third, half_shifter, three, one, k4, k3, k2, k1;
};
using RcbrtFloatShortBlock = CbrtFloatShortBlock;
struct RcbrtHalfBlock {
  Table<float, 16> s, sl;
  Table<float, 32> t;
  Row<float> shifter, sign, third, half_shifter, three, one, k3, k2, k1;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const CbrtDoubleBlock __zorp_dcbrt_data_avx512;
extern const CbrtDoubleShortBlock __zorp_dcbrt_native_data_avx512;
extern const CbrtFloatBlock __zorp_scbrt_data_avx512;
extern const CbrtFloatShortBlock __zorp_scbrt_native_data_avx512;
extern const CbrtHalfBlock __zorp_hcbrt_data;
extern const RcbrtDoubleBlock __zorp_dinvcbrt_data;
extern const RcbrtDoubleShortBlock __zorp_dinvcbrt_native_data;
extern const RcbrtFloatBlock __zorp_sinvcbrt_data;
extern const RcbrtFloatShortBlock __zorp_sinvcbrt_native_data;
extern const RcbrtHalfBlock __zorp_hinvcbrt_data;
}
#pragma GCC visibility pop

// ---- Steps that the algorithms share -----------------------------------------------------------

enum class CubeRoot { direct, reciprocal };

/// n is floor(e/3), or -floor(e/3) for the reciprocal. The encoding of b ends in e mod 3. c is
/// rounded to a multiple of 1/16 in double, 1/32 in float, and lies in [1/2, 1].
template <CubeRoot root, class V>
struct CubeRootReduction {
  using Integers = decltype(bits(V()));
  static constexpr bool is_double = same<typename V::Element, double>;

  V n, b, r;
  Integers power, point;  // end in the indices of the tables of b and c

  template <class Block>
  CubeRootReduction(V x, const Block& k) {
    const V e = exponent(x) + k.shifter;
    // The row is a little more than 1/3 (less than -1/3): times the shifter, 1/4 more in double and
    // 1/8 in float. So the quotient is never an integer, and rounding it down (up) is safe.
    if constexpr (root == CubeRoot::direct) {
      n = round_scale<_MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC>(fms(e, k.third, k.half_shifter));
      b = fnma(n, k.three, e);
    } else {
      n = round_scale<_MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC>(fma(e, k.third, k.half_shifter));
      b = fma(n, k.three, e);
    }
    power = bits(b);
    const V m = significand<0x00>(x);
    constexpr int to_point = is_double ? 0x48 : 0x58;
    const V c = round_scale<to_point>(reciprocal14(m));
    r = fms(c, m, k.one);  // exact; c has the sign of m
    constexpr int below_point = is_double ? 49 : 19;
    point = shift_right<below_point>(bits(c));
  }
};

/// The root 2^n s t (1 + r p) under the sign of x, with s t in two parts.
template <CubeRoot root, class V, class Block>
inline V accurate_root(const CubeRootReduction<root, V>& a, V p, V x, const Block& k) {
  const V s = lookup(k.s, a.power), t = lookup(k.t, a.point);
  const V high = s * t;
  V low = fms(t, s, high);
  low = fma(s, lookup(k.tl, a.point), low);
  low = fma(t, lookup(k.sl, a.power), low);
  const V v = fma(high * a.r, p, low) + high;
  return scale(v, a.n) | (x & k.sign);
}
/// The same in one part.
template <CubeRoot root, class V, class Block>
inline V short_root(const CubeRootReduction<root, V>& a, V p, V x, const Block& k) {
  const V t = scale(lookup(k.t, a.point), a.n);
  const V s = lookup(k.s, a.power);
  return fma(s * a.r, p, s) * t | (x & k.sign);
}

/// k1 + k2 r + ... + k10 r^9
template <class V, class Block>
inline V cube_root_polynomial(V r, const Block& k) {
  const V q = r * r;
  V p = fma(r, k.k8, k.k7);
  p = fma(q, fma(r, k.k10, k.k9), p);
  p = fma(p, q, fma(r, k.k6, k.k5));
  p = fma(p, q, fma(r, k.k4, k.k3));
  return fma(p, q, fma(r, k.k2, k.k1));
}

// ---- cbrt --------------------------------------------------------------------------------------

struct Cbrt {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    using Reduction = CubeRootReduction<CubeRoot::direct, Vec<double, N>>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dcbrt_data_avx512);
      const Reduction a(x, k);
      return accurate_root(a, cube_root_polynomial(a.r, k), x, k);
    } else {
      const auto& k = rows(__zorp_dcbrt_native_data_avx512);
      const Reduction a(x, k);
      const auto p = fma(fma(a.r, k.k4, k.k3), a.r * a.r, fma(a.r, k.k2, k.k1));
      return short_root(a, p, x, k);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    using Reduction = CubeRootReduction<CubeRoot::direct, Vec<float, N>>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_scbrt_data_avx512);
      const Reduction a(x, k);
      const auto p = fma(a.r, fma(a.r, k.k3, k.k2), k.k1);
      return accurate_root(a, p, x, k);
    } else {
      const auto& k = rows(__zorp_scbrt_native_data_avx512);
      const Reduction a(x, k);
      return short_root(a, Vec<float, N>(k.k1), x, k);
    }
  }

  /// 2^(e/3) (1 + z)^(1/3): e indexes a table, z is the significand less 1.
  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hcbrt_data);
    const auto m = significand<0x04>(x);
    const auto e = bits(exponent(x) + k.shifter);
    const auto t = lookup(k.t, e) | (x & k.sign);
    const auto z = m - k.one;
    auto p = fma(z, k.k3, k.k2);
    p = fma(p, z, k.k1);
    p = p * z;
    return select(classify<zeros | infinities>(x), x, fma(p, t, t));
  }
};

// ---- rcbrt -------------------------------------------------------------------------------------

struct Rcbrt {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    using Reduction = CubeRootReduction<CubeRoot::reciprocal, Vec<double, N>>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dinvcbrt_data);
      const Reduction a(x, k);
      return accurate_root(a, cube_root_polynomial(a.r, k), x, k);
    } else {
      const auto& k = rows(__zorp_dinvcbrt_native_data);
      const Reduction a(x, k);
      auto p = fma(a.r, k.k5, k.k4);
      p = fma(a.r, p, k.k3);
      p = fma(p, a.r * a.r, fma(a.r, k.k2, k.k1));
      return short_root(a, p, x, k);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    using Reduction = CubeRootReduction<CubeRoot::reciprocal, Vec<float, N>>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_sinvcbrt_data);
      const Reduction a(x, k);
      auto p = fma(a.r, k.k4, k.k3);
      p = fma(a.r, p, k.k2);
      p = fma(a.r, p, k.k1);
      return accurate_root(a, p, x, k);
    } else {
      const auto& k = rows(__zorp_sinvcbrt_native_data);
      const Reduction a(x, k);
      return short_root(a, Vec<float, N>(k.k1), x, k);
    }
  }

  template <Tier, int N>
  static Outcome<Vec<half, N>> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hinvcbrt_data);
    const auto wide = widen(x);
    const CubeRootReduction<CubeRoot::reciprocal, Vec<float, N>> a(wide, k);
    auto p = fma(a.r, k.k3, k.k2);
    p = fma(p, a.r, k.k1);
    const auto t = scale(lookup(k.t, a.point), a.n);
    const auto s = lookup(k.s, a.power);
    auto v = fma(s * a.r, p, lookup(k.sl, a.power));
    v = v + s;
    const auto root = v * t | (wide & k.sign);
    // Only an infinite exponent or a NaN leaves no b.
    return {narrow(root), classify<nans>(a.b)};
  }
};

}  // namespace zorp
