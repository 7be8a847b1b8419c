// tanh: hyperbolic tangent.
// Kernels: __zorp_z1_tanh{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// Double and the precise float form cut the range of |x| into intervals by the leading bits of its
// encoding, and evaluate one polynomial an interval: the coefficients come from tables by
// permutation. The last interval gives 1; only the very top of the range, infinities and NaNs go to
// the rare routines. The others are rational functions (float _native, half) or one linear function
// an interval (half _native), and serve every operand.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

/// For n intervals the points x, and the coefficients of r^0, r^1, ... in r = |x| - x[i].
template <class T, int n, int degree>
struct TanhIntervals {
  Table<T, n> x, c[degree + 1];
};

struct TanhDoubleBlock {
  TanhIntervals<double, 16, 16> intervals;
  Row<int64_t> hmask, base, top, limit;
  Row<double> absmask, sign;
};
struct TanhFloatBlock {
  TanhIntervals<float, 32, 6> intervals;
  Row<int32_t> hmask, base, top, limit;
  Row<float> absmask, sign;
};
struct TanhFloatShortBlock {
  Row<float> a2, a1, one, b2, b1, b0, absmask, big;
};
struct TanhHalfBlock {
  Row<half> absmask, clamp;
  Row<float> n2, n1, n0, d2, d1, one;
};
struct TanhHalfShortBlock {
  Table<half, 32> t0, t1;
  Row<half> absmask, clamp, shift;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const TanhDoubleBlock __zorp_dtanh_data;
extern const TanhFloatBlock __zorp_stanh_data;
extern const TanhFloatShortBlock __zorp_stanh_native_data_avx2;
extern const TanhHalfBlock __zorp_htanh_data;
extern const TanhHalfShortBlock __zorp_htanh_native_data;
}
#pragma GCC visibility pop

// ---- tanh --------------------------------------------------------------------------------------

struct Tanh {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    // Both tiers read one table: the shorter polynomial is the beginning of the longer.
    constexpr int degree = tier == Tier::standard ? 16 : 10;
    return by_intervals<degree, 51>(x, rows(__zorp_dtanh_data));
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard) {
      return by_intervals<6, 21>(x, rows(__zorp_stanh_data));
    } else {
      const auto& k = rows(__zorp_stanh_native_data_avx2);
      const auto a = x & k.absmask;
      const auto s = a * a;
      auto den = fma(s, k.a2, k.a1);
      auto num = fma(s, k.b2, k.b1);
      den = fma(s, den, k.one);
      num = fma(s, num, k.b0);
      num = fma(a, num, a);
      const Vec<float, N> one = k.one;
      const auto r = select(compare<_CMP_GE_OQ>(a, k.big), one, reciprocal14(den) * num);
      return x ^ a ^ r;
    }
  }

  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_htanh_data);
      const auto a = x & k.absmask;
      const Vec<half, N> clamp = k.clamp;
      const auto y = widen(min(clamp, a));  // a NaN stays
      const auto s = y * y;
      auto den = fma(s, k.d2, k.d1);
      den = fma(den, s, k.one);
      auto num = fma(s, k.n2, k.n1);
      num = fma(num, s, k.n0);
      const auto q = num * reciprocal14(den);
      return x ^ a ^ narrow(fma(q, y, y));
    } else {
      const auto& k = rows(__zorp_htanh_native_data);
      const auto a = x & k.absmask;
      const Vec<half, N> clamp = k.clamp;
      const auto y = min(clamp, a);
      const auto j = bits(add<rz>(y, k.shift));  // ends in y in units of 1/8, rounded down
      const auto u = fma(y, lookup(k.t1, j), lookup(k.t0, j));
      const auto signed_y = x ^ a ^ y;
      return fma_in_order(signed_y, u, signed_y);
    }
  }

 private:
  /// The polynomial of that degree; the interval's number stands in the encoding above `shift`
  /// bits.
  template <int degree, int shift, class V, class Block>
  static auto by_intervals(V x, const Block& k) {
    const V a = x & k.absmask;
    const auto h = bits(x) & k.hmask;
    using Integers = decltype(bits(V()));
    const auto clamped = min(max(h - k.base, constant<Integers>(0)), k.top);
    const auto i = shift_right<shift>(clamped);
    const V r = a - lookup(k.intervals.x, i);
    V p = lookup(k.intervals.c[degree], i);
#pragma GCC unroll 16
    for (int d = degree - 1; d >= 0; --d) p = fma(p, r, lookup(k.intervals.c[d], i));
    return Outcome<V>{p | (x & k.sign), greater(h, k.limit)};
  }
};

}  // namespace zorp
