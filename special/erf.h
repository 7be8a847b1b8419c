// erf, erfc: the error function and its complement.
// Kernels: __zorp_z1_{erf,erfc}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// Double, and erfc of float, expand around the nearest point z of a grid: with r = |x| - z the
// function is E + D (r + r v), where a table gives the value E and the derivative D at z, and v is
// a polynomial in u = z r and w = r^2, the rest of Taylor's series. The tables of erfc hold its
// values times a power of two, so that they stay normal numbers; one fused operation at the end
// takes that away, and forms 2 - erfc |x| for negative x.
// erf of float is x P(x^2)^2, erf of half a rational function, erfc of half that of float.
#pragma once

#include "frame/conversions.h"
#include "frame/gather.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

/// Value and derivative at the points of a grid, point by point.
template <class T, int points>
using GridTable = Table<T, 2 * points>;

struct ErfDoubleBlock {
  GridTable<double, 768> grid;
  Row<double> absmask, clamp, shift, tiny;
  Row<int64_t> imask;
  Row<double> e1, e2, e3, e4, e5, e6, e7, e8, e9, e10;
  Row<double> n1, n2, n3, n4;
};
struct ErfFloatBlock {
  Row<float> limit;
  Row<double> p12, p11, p10, p9, p8, p7, p6, p5, p4, p3, p2, p1, p0;
};
struct ErfFloatShortBlock {
  Row<float> limit, p5, p4, p3, p2, p1, p0;
};
struct ErfHalfBlock {
  Row<half> absmask, clamp, n2, n1, n0, d3, d2, d1, d0;
};

struct ErfcDoubleBlock {
  GridTable<double, 3488> grid;
  Row<double> absmask, sign, one, clamp, shift, scale, limit;
  Row<int64_t> imask;
  Row<double> c1, c2, c3, c4, c5, c6, c7, c8, c9, c10, c11, c12, c13, c14, c15, c16, c17, c18, c19;
};
struct ErfcDoubleShortBlock {
  GridTable<double, 1744> grid;
  Row<double> absmask, sign, one, clamp, shift, scale, limit;
  Row<int64_t> imask;
  Row<double> d1, d2, d3, d4, d5, d6, d7, d8, d9, d10, d11;
};
struct ErfcFloatBlock {
  GridTable<float, 645> grid;
  Row<float> absmask, sign, one, clamp, shift, scale, limit;
  Row<int32_t> origin;
  Row<float> f1, f2, f3, f4, f5, f6;
};
struct ErfcFloatShortBlock {
  GridTable<float, 323> grid;
  Row<float> absmask, sign, one, clamp, shift, scale, limit;
  Row<int32_t> origin;
  Row<float> g1, g2, g3;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const ErfDoubleBlock __zorp_derf_data;
extern const ErfFloatBlock __zorp_serf_data;
extern const ErfFloatShortBlock __zorp_serf_native_data;
extern const ErfHalfBlock __zorp_herf_data;
extern const ErfcDoubleBlock __zorp_derfc_data;
extern const ErfcDoubleShortBlock __zorp_derfc_native_data;
extern const ErfcFloatBlock __zorp_serfc_data, __zorp_herfc_data;
extern const ErfcFloatShortBlock __zorp_serfc_native_data;
}
#pragma GCC visibility pop

// ---- erf ---------------------------------------------------------------------------------------

struct Erf {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    const auto& k = rows(__zorp_derf_data);
    const V a = x & k.absmask, sign = x ^ a;
    const V m = min(a, k.clamp);  // a NaN gives the clamp
    const V t = m + k.shift;      // the unit is that of the grid
    const V z = t - k.shift;
    const auto offset = shift_left<4>(bits(t)) & k.imask;
    const auto [value, derivative] = gather_pairs(k.grid.entry, offset);
    const V r = m - z;
    const V u = z * r;
    // The square of a tiny r would be a subnormal number.
    const V root = select(compare<_CMP_GT_OQ>(m, k.tiny), r, constant<V>(0));
    const V w = root * root;
    const V q = derivative * (min(r, a) ^ sign);  // a NaN comes back here
    const V v = rest<tier>(u, w, k);
    return (fma(v, q, q) + (value ^ sign)) | sign;
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    const V squared = x * x;
    // 1 with the sign of x, where x is no NaN.
    const auto large = [&](V near, const Row<float>& limit) {
      const V one = merge_bits(sign_mask<V>(), x, constant<V>(0x3F800000));
      return select(compare<_CMP_NGE_UQ>(squared, limit), near * x, one);
    };
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_serf_data);
      return large(quotient(x, k), k.limit);
    } else {
      const auto& k = rows(__zorp_serf_native_data);
      V p = fma(squared, k.p5, k.p4);
      p = fma(p, squared, k.p3);
      p = fma(p, squared, k.p2);
      p = fma(p, squared, k.p1);
      p = fma(p, squared, k.p0);
      return large(p * p, k.limit);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    using V = Vec<half, N>;
    const auto& k = rows(__zorp_herf_data);
    const V a = x & k.absmask;
    const V clamp = k.clamp;
    const V m = min(clamp, a);  // a NaN stays
    const V v = m * m;
    V num = fma(v, k.n2, k.n1);
    num = fma(num, v, k.n0);
    V den = fma(v, k.d3, k.d2);
    den = fma(den, v, k.d1);
    den = fma(den, v, k.d0);
    const V q = num * reciprocal11(den);
    return x ^ a ^ (q * m);
  }

 private:
  template <Tier tier, class V>
  static V rest(V u, V w, const ErfDoubleBlock& k) {
    if constexpr (tier == Tier::standard) {
      const V b1 = fma(u, k.e1, k.e2), b2 = fma(u, k.e3, k.e4), b3 = fma(u, k.e5, k.e6);
      const V b4 = fma(u, b1, k.e7), b5 = fma(u, b2, k.e8);
      V b6 = fma(w, b3, k.e10);
      const V b7 = fma(u, b4, k.e9);
      b6 = fma(u, b5, b6);
      const V v = fms(b7, u * u, u);
      return fma(w, b6, v);
    } else {
      const V b1 = fma(u, k.n1, k.n2), b2 = fma(u, k.n3, k.n4);
      return fma(w, b2, b1 * u);
    }
  }

  /// erf(x) / x, in double
  template <int N>
  static Vec<float, N> quotient(Vec<float, N> x, const ErfFloatBlock& k) {
    if constexpr (Vec<float, N>::paired) {
      return {quotient(x.lo, k), quotient(x.hi, k)};
    } else {
      const auto wide = to_double(x);
      const auto y = wide * wide;
      auto p = fma(y, k.p12, k.p11);
      p = fma(p, y, k.p10);
      p = fma(p, y, k.p9);
      p = fma(p, y, k.p8);
      p = fma(p, y, k.p7);
      p = fma(p, y, k.p6);
      p = fma(p, y, k.p5);
      p = fma(p, y, k.p4);
      p = fma(p, y, k.p3);
      p = fma(p, y, k.p2);
      p = fma(p, y, k.p1);
      p = fma(p, y, k.p0);
      return to_float(p * p);
    }
  }
};

// ---- erfc --------------------------------------------------------------------------------------

struct Erfc {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return expand(x, rows(__zorp_derfc_data));
    else
      return expand(x, rows(__zorp_derfc_native_data));
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return expand(x, rows(__zorp_serfc_data));
    else
      return expand(x, rows(__zorp_serfc_native_data));
  }

  template <Tier, int N>
  static auto apply(Vec<half, N> x) {
    const auto outcome = expand(widen(x), rows(__zorp_herfc_data));
    return Outcome<Vec<half, N>>{narrow(outcome.first), outcome.special};
  }

 private:
  template <class V, class Block>
  static Outcome<V> expand(V x, const Block& k) {
    const V a = x & k.absmask, sign = x & k.sign;
    const V m = min(a, k.clamp);
    const V one = k.one, scale = k.scale;
    const V base = one - (one | sign);  // 0 or 2
    const V t = m + k.shift;            // the unit is that of the grid
    const V z = t - k.shift;
    const V r = max(m, k.scale) - z;  // not 0 where m is
    const V u = z * r;
    const auto [value, derivative] = gather_pairs(k.grid.entry, offset(t, k));
    const V g = at_distance(value, derivative, r, rest(u, r * r, k));
    return {fma(g, scale | sign, base), compare<_CMP_NLT_UQ>(x, k.limit)};
  }

  /// Bytes from the table's start: t's encoding ends in the number of the point.
  template <int N, class Block>
  static Vec<int64_t, N> offset(Vec<double, N> t, const Block& k) {
    return shift_left<4>(bits(t)) & k.imask;
  }
  template <int N, class Block>
  static Vec<int32_t, N> offset(Vec<float, N> t, const Block& k) {
    return shift_left<3>(bits(t)) - k.origin;
  }

  /// value - derivative (r + r v)
  template <int N>
  static Vec<double, N> at_distance(Vec<double, N> value, Vec<double, N> derivative,
                                    Vec<double, N> r, Vec<double, N> v) {
    const auto q = derivative * r;
    return value - fma(q, v, q);
  }
  template <int N>
  static Vec<float, N> at_distance(Vec<float, N> value, Vec<float, N> derivative, Vec<float, N> r,
                                   Vec<float, N> v) {
    return fnma(r, fma(v, derivative, derivative), value);
  }

  template <class V>
  static V rest(V u, V w, const ErfcDoubleBlock& k) {
    const V a1 = fma(u, k.c1, k.c2), a2 = fma(u, k.c3, k.c4), a3 = fma(u, k.c5, k.c6);
    const V b1 = fma(u, a1, k.c7), b2 = fma(u, a2, k.c8), b3 = fma(u, a3, k.c9);
    const V g1 = fma(u, b1, k.c10), g2 = fma(u, b2, k.c11), g3 = fma(u, b3, k.c12);
    const V h1 = fma(u, g1, k.c13), h2 = fma(u, g2, k.c14);
    const V j1 = fma(u, h1, k.c15), j2 = fma(u, h2, k.c16);
    const V l1 = fma(u, j1, k.c18), l2 = fma(u, l1, k.c19);
    V p = fma(w, g3, k.c17);
    p = fma(u, j2, p);
    return fma(u * u, l2, fms(p, w, u));
  }
  template <class V>
  static V rest(V u, V w, const ErfcDoubleShortBlock& k) {
    const V a1 = fma(u, k.d1, k.d2), a2 = fma(u, k.d3, k.d4);
    const V a3 = fma(u, a1, k.d5), a4 = fma(u, a2, k.d6);
    const V a5 = fma(u, a3, k.d7), a6 = fma(u, a4, k.d8) * w;
    const V a7 = fma(u, a5, k.d9), a8 = fma(u, a7, k.d10);
    const V v = fma(u, k.d11, a6);
    return fma(u * u, a8, v);
  }
  template <class V>
  static V rest(V u, V w, const ErfcFloatBlock& k) {
    const V b1 = fma(u, k.f1, k.f2), b2 = fma(u, k.f3, k.f4) * w;
    const V b3 = fma(u, b1, k.f5), b4 = fma(u, b3, k.f6);
    return fma(b4, u, b2);
  }
  template <class V>
  static V rest(V u, V, const ErfcFloatShortBlock& k) {
    const V b1 = fma(u, k.g1, k.g2), b2 = fma(u, b1, k.g3);
    return b2 * u;
  }
};

}  // namespace zorp
