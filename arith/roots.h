// sqrt, rsqrt: the square root and its reciprocal.
// Kernels: __zorp_z1_{sqrt,rsqrt}{,f,s}{1,2,3,4,8,16,32}{,_native,_half}.
//
// Default double sqrt is the processor's root. The others begin with its estimate y of 1 / sqrt(x):
// y x is near sqrt(x), and 1 - x y^2 tells what both are off by. Where x is a zero or an infinity
// so is y, the other of the two, and the corrections multiply zeros with infinities: there the
// result is x or y itself. Half computes in float and sends these operands, and negative ones, to
// the rare routines.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct SqrtDoubleShortBlock {
  Row<double> half;
};
struct SqrtFloatBlock {
  Row<float> half, thresh, big, small;
};
struct SqrtHalfBlock {
  Row<float> half;
};

struct RsqrtDoubleBlock {
  Row<double> c3, c2, c1, one;
};
struct RsqrtDoubleShortBlock {
  Row<double> half;
};
/// Of float and of half.
struct RsqrtFloatBlock {
  Row<float> nhalf;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const SqrtDoubleShortBlock __zorp_dsqrt_native_data_avx512;
extern const SqrtFloatBlock __zorp_ssqrt_data_avx512;
extern const SqrtHalfBlock __zorp_hsqrt_data;
extern const RsqrtDoubleBlock __zorp_dinvsqrt_data;
extern const RsqrtDoubleShortBlock __zorp_dinvsqrt_native_data;
extern const RsqrtFloatBlock __zorp_sinvsqrt_data, __zorp_hinvsqrt_data;
}
#pragma GCC visibility pop

// ---- Operands of which the estimate is infinite or zero ----------------------------------------

/// +-0 and +infinity.
template <class V>
inline Mask<V::lanes> at_end_of_range(V x) {
  return classify<0x0E>(x);
}
/// These, and what has no root: -infinity and negative numbers.
template <class V>
inline Mask<V::lanes> end_of_range_or_negative(V x) {
  return classify<0x5E>(x);
}

// ---- sqrt --------------------------------------------------------------------------------------

struct Sqrt {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      return sqrt(x);
    } else {
      const auto& k = rows(__zorp_dsqrt_native_data_avx512);
      const auto y = reciprocal_root14(x);
      const auto s = y * x, h = y * k.half;
      const auto e = fnma(s, h, k.half);
      return select(at_end_of_range(x), x, fma(e, s, s));
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    const V y = reciprocal_root14(x);
    const V s = y * x;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_ssqrt_data_avx512);
      const V h = y * k.half;
      V r = fma(fnma(s, s, x), h, s);
      // Below about 2^-78 the rest x - s^2 would lose bits to underflow.
      const auto tiny = compare<_CMP_GT_OQ>(y, k.thresh);
      if (any(tiny)) [[unlikely]]
        r = rescaled(tiny, x, s, h, rows(k));
      return select(at_end_of_range(x), x, r);
    } else {
      return select(at_end_of_range(x), x, s);
    }
  }

  template <Tier, int N>
  static auto apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hsqrt_data);
    const auto wide = widen(x);
    const auto y = reciprocal_root14(wide);
    const auto h = y * k.half, s = y * wide;
    const auto e = fnma(h, s, k.half);
    const auto special = end_of_range_or_negative(wide);
    const auto r = select(special, wide, fma(e, s, s));
    return Outcome<Vec<half, N>>{narrow(r), special};
  }

 private:
  /// The float root, where in the lanes of the mask x - s^2 is taken from 2^78 x and 2^39 s, and
  /// the factor goes into h. With rows of the block at an address of its own, as the compiler would
  /// otherwise carry them along the first path in registers.
  template <class V>
  static V rescaled(Mask<V::lanes> tiny, V x, V s, V h, const SqrtFloatBlock& k) {
    const V scaled_x = select(tiny, x * k.big, x);
    const V scaled_s = select(tiny, s * k.thresh, s);
    const V scaled_h = select(tiny, h * k.small, h);
    return fma(fnma(scaled_s, scaled_s, scaled_x), scaled_h, s);
  }
};

// ---- rsqrt -------------------------------------------------------------------------------------

struct Rsqrt {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    const auto y = reciprocal_root14(x);
    const auto s = y * x;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dinvsqrt_data);
      // 1 - x y^2, with the rounding error of s taken up.
      const auto a = fnma(s, y, k.one);
      const auto b = fms(x, y, s);
      const auto e = fnma(b, y, a);
      // y / sqrt(1 - e)
      auto p = fma(e, k.c3, k.c2);
      const auto u = y * e;
      p = fma(e, p, k.c1);
      return select(at_end_of_range(x), y, fma(u, p, y));
    } else {
      const auto& k = rows(__zorp_dinvsqrt_native_data);
      const auto h = y * k.half;
      const auto e = fnma(s, h, k.half);
      return select(at_end_of_range(x), y, fma(e, y, y));
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    const auto y = reciprocal_root14(x);
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_sinvsqrt_data);
      const auto s = y * x;
      const auto m = y * k.nhalf;
      // (1 - x y^2) / 2, with the rounding error of s taken up.
      const auto a = fms(s, m, k.nhalf);
      const auto b = fms(x, y, s);
      const auto e = fma(b, m, a);
      return select(at_end_of_range(x), y, fma(e, y, y));
    } else {
      return y;
    }
  }

  template <Tier, int N>
  static auto apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hinvsqrt_data);
    const auto wide = widen(x);
    const auto y = reciprocal_root14(wide);
    const auto s = y * wide, m = y * k.nhalf;
    const auto e = fms(s, m, k.nhalf);
    const auto special = end_of_range_or_negative(wide);
    const auto r = select(special, y, fma(e, y, y));
    return Outcome<Vec<half, N>>{narrow(r), special};
  }
};

}  // namespace zorp
