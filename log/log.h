// log, log2, log10: the logarithms to the bases e, 2, 10.
// Kernels: __zorp_z1_{log,log2,log10}{,f,s}{1,2,3,4,8,16,32}{,_native,_half,_rm}; log10 has no _rm.
//
// Double and the default float kernels multiply x by a short reciprocal c, so that c x is 1 + r
// times a power of two, and add three terms: exponent, -log c from a table, a polynomial for
// log(1 + r). The accurate ones carry the sum of the first two (and of the first term of the third)
// as a high and a low part. The other float kernels and half bring x next to 1 by a power of two
// alone; a polynomial in z does the rest.
//
// Every operand is served by vector arithmetic. Only the default float log, which does without
// normalising x, has a second path, for the operands whose reciprocal is no normal number.
#pragma once

#include "log/log_reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct LogDoubleBlock {
  Table<double, 8> th, tl;  // -log c: high part and rest
  Row<double> one, three_quarters, c11, c10, c9, c8, c7, c6, c5, c4, c3, c2, ln2hi, ln2lo;
};
struct LogDoubleShortBlock {
  Table<double, 8> t;
  Row<double> one, three_quarters, a6, a5, a4, a3, a2, ln2;
};
struct LogFloatBlock {
  Row<int32_t> round, mask;
  Table<float, 16> ah, al;  // for the reciprocal of x: -log c
  Table<float, 16> bh, bl;  // for the reciprocal of x's significand: log 2 - log c
  Row<float> one, c5, c4, c3, c2, ln2hi, ln2lo;
};
struct LogFloatNativeBlock {
  Table<float, 16> p2, p1, p0;
  Row<float> one, ln2;
};
struct LogFloatHalfBlock {
  Table<float, 16> p3, p2, p1, p0;
  Row<float> one, ln2;
};
struct LogHalfBlock {
  Row<half> one, ln2;
  Table<half, 32> p1, p0;
};

struct Log2DoubleBlock {
  Table<double, 16> th, tl;
  Row<double> one, three_quarters, c10, c9, c8, c7, c6, c5, c4, c3, c2, c1lo, c1;
};
struct Log2DoubleShortBlock {
  Table<double, 16> t;
  Row<double> one, three_quarters, a5, a4, a3, a2, a1;
};
struct Log2FloatBlock {
  Table<float, 32> th, tl;
  Row<float> one, c4, c3, c2, c1lo, c1;
};
struct Log2FloatShortBlock {
  Table<float, 16> p2, p1, p0;
  Row<float> one;
};
struct Log2HalfBlock {
  Row<half> one, c5, c4, c3, c2, c1;
};

struct Log10DoubleBlock {
  Table<double, 16> th, tl;
  Row<double> one, three_quarters, c9, c8, c7, c6, c5, c4, c3, c2, c1lo, c1, lg2hi, lg2lo;
};
struct Log10DoubleShortBlock {
  Table<double, 16> t;
  Row<double> one, three_quarters, a5, a4, a3, a2, a1, lg2;
};
struct Log10FloatBlock {
  Table<float, 32> th, tl;
  Row<float> one, c4, c3, c2, c1lo, c1, lg2hi, lg2lo;
};
struct Log10FloatShortBlock {
  Table<float, 16> p2, p1, p0;
  Row<float> one, lg2;
};
struct Log10HalfBlock {
  Row<half> lg2, c5, c4, c3, c2, c1, one;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const LogDoubleBlock __zorp_dln_data_avx512;
extern const LogDoubleShortBlock __zorp_dln_native_data_avx512;
extern const LogFloatBlock __zorp_sln_data_avx512;
extern const LogFloatNativeBlock __zorp_sln_native_data_avx512;
extern const LogFloatHalfBlock __zorp_sln_half_data_avx512;
extern const LogHalfBlock __zorp_hln_data;

extern const Log2DoubleBlock __zorp_dlog2_data_avx512;
extern const Log2DoubleShortBlock __zorp_dlog2_native_data_avx512;
extern const Log2FloatBlock __zorp_slog2_data_avx512;
extern const Log2FloatShortBlock __zorp_slog2_native_data_avx512;
extern const Log2HalfBlock __zorp_hlog2_data;

extern const Log10DoubleBlock __zorp_dlog10_data_avx512;
extern const Log10DoubleShortBlock __zorp_dlog10_native_data_avx512;
extern const Log10FloatBlock __zorp_slog10_data_avx512;
extern const Log10FloatShortBlock __zorp_slog10_native_data_avx512;
extern const Log10HalfBlock __zorp_hlog10_data;
}
#pragma GCC visibility pop

// ---- Steps that the bases share ----------------------------------------------------------------

/// log(1 + z) / z by the quadratic of m's interval.
template <class V, class Block>
inline V interval_quadratic(const CentredReduction<V>& a, const Block& k) {
  const auto j = shift_right<19>(a.encoding);
  const V q = fma(a.z, lookup(k.p2, j), lookup(k.p1, j));
  return fma(q, a.z, lookup(k.p0, j));
}

/// log(1 + r) + t to base 2 or 10, in one part.
template <class V, class Block>
inline V short_polynomial(V r, V t, const Block& k) {
  const V a = fma(r, k.a5, k.a4);
  const V q = r * r;
  V b = fma(r, k.a3, k.a2);
  b = fma(a, q, b);
  b = fma(b, r, k.a1);
  return fma(b, r, t);
}

/// c1lo + c2 r + c3 r^2 + c4 r^3
template <class V, class Block>
inline V float_polynomial(V r, const Block& k) {
  const V a = fma(r, k.c4, k.c3);
  const V q = r * r;
  const V b = fma(r, k.c2, k.c1lo);
  return fma(a, q, b);
}

/// log(1 + z) / z of half.
template <class V, class Block>
inline V half_polynomial(V z, const Block& k) {
  V p = fma(z, k.c5, k.c4);
  p = fma(p, z, k.c3);
  p = fma(p, z, k.c2);
  return fma(p, z, k.c1);
}

// ---- log ---------------------------------------------------------------------------------------

struct Log {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dln_data_avx512);
      const ReciprocalReduction<4, Vec<double, N>> a(x, k);
      const auto h = fma(a.e, k.ln2hi, lookup(k.th, a.index));  // exact
      const auto s = h + a.r;
      auto p = fma(a.r, k.c11, k.c10);
      p = fma(p, a.r, k.c9);
      p = fma(p, a.r, k.c8);
      p = fma(p, a.r, k.c7);
      p = fma(p, a.r, k.c6);
      p = fma(p, a.r, k.c5);
      p = fma(p, a.r, k.c4);
      p = fma(p, a.r, k.c3);
      p = fma(p, a.r, k.c2);
      auto u = a.r + minus_held_part(x, h, s);
      u = fma(p, a.r * a.r, u);
      const auto l = fma(a.e, k.ln2lo, lookup(k.tl, a.index));
      return s + (u + l);
    } else {
      const auto& k = rows(__zorp_dln_native_data_avx512);
      const ReciprocalReduction<4, Vec<double, N>> a(x, k);
      const auto e = fma(a.e, k.ln2, lookup(k.t, a.index));
      auto p = fma(a.r, k.a6, k.a5);
      p = fma(p, a.r, k.a4);
      p = fma(p, a.r, k.a3);
      p = fma(p, a.r, k.a2);
      return e + fma(a.r * a.r, p, a.r);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_sln_data_avx512);
      const auto [c, j] = RoundedReciprocal<4, V>(x, k);
      const auto special = classify<0xFF>(c);
      const V e = exponent(c);
      const V r = fms(c, x, k.one);  // exact
      const V h = fnma(e, k.ln2hi, lookup(k.ah, j));
      const V l = fnma(e, k.ln2lo, lookup(k.al, j));
      const V s = h + r;
      const V t = s - h;
      V p = fma(r, k.c5, k.c4);
      const V q = r * r;
      p = fma(p, r, k.c3);
      p = fma(p, r, k.c2);
      p = fma(p, q, l);
      V y = s + (p + (r - t));
      if (any(special)) [[unlikely]]
        y = select(special, normalised(x, rows(k)), y);
      return y;
    } else if constexpr (tier == Tier::native) {
      const auto& k = rows(__zorp_sln_native_data_avx512);
      const CentredReduction<V> a(x, k);
      return fma(a.z, interval_quadratic(a, k), a.d * k.ln2);
    } else {
      const auto& k = rows(__zorp_sln_half_data_avx512);
      const CentredReduction<V> a(x, k);
      const auto j = shift_right<19>(a.encoding);
      V q = fma(a.z, lookup(k.p3, j), lookup(k.p2, j));
      q = fma(q, a.z, lookup(k.p1, j));
      q = fma(q, a.z, lookup(k.p0, j));
      return fma(a.z, q, a.d * k.ln2);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hln_data);
    const CentredReduction<Vec<half, N>> a(x, k);
    const auto j = shift_right<5>(a.encoding);
    const auto q = fma(a.z, lookup(k.p1, j), lookup(k.p0, j));
    return fma(a.z, q, a.d * k.ln2);
  }

 private:
  /// The float log of any x. With rows of the block at an address of its own, as the compiler would
  /// otherwise carry them along the first path in registers.
  template <class V>
  static V normalised(V x, const LogFloatBlock& k) {
    const UpperReciprocalReduction<4, V> a(x, k);
    const V h = fma(a.d, k.ln2hi, lookup(k.bh, a.index));
    const V s = h + a.r;
    V p = fma(a.r, k.c5, k.c4);
    const V q = a.r * a.r;
    p = fma(p, a.r, k.c3);
    p = fma(p, a.r, k.c2);
    V l = fma(a.d, k.ln2lo, lookup(k.bl, a.index));
    l = fma(q, p, l);
    return s + (l + (a.r + minus_held_part(x, h, s)));
  }
};

// ---- log2 --------------------------------------------------------------------------------------

struct Log2 {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dlog2_data_avx512);
      const ReciprocalReduction<5, Vec<double, N>> a(x, k);
      const auto h = a.e + lookup(k.th, a.index);  // exact
      const auto s = fma(a.r, k.c1, h);
      auto w = minus_held_part(x, h, s);
      const auto p = fma(a.r, k.c10, k.c9);
      const auto q = a.r * a.r;
      auto b = fma(a.r, k.c8, k.c7);
      b = fma(q, p, b);
      const auto q2 = q * q;
      const auto u = fma(a.r, k.c6, k.c5);
      auto d = fma(a.r, k.c4, k.c3);
      d = fma(q, u, d);
      d = fma(b, q2, d);
      auto g = fma(a.r, k.c2, k.c1lo);
      g = fma(q, d, g);
      w = fma(a.r, k.c1, w);
      const auto v = lookup(k.tl, a.index) + w;
      return s + fma(a.r, g, v);
    } else {
      const auto& k = rows(__zorp_dlog2_native_data_avx512);
      const ReciprocalReduction<5, Vec<double, N>> a(x, k);
      return a.e + short_polynomial(a.r, lookup(k.t, a.index), k);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_slog2_data_avx512);
      const UpperReciprocalReduction<5, V> a(x, k);
      const V h = a.d + lookup(k.th, a.index);
      const V s = fma(a.r, k.c1, h);
      const V b = fma(float_polynomial(a.r, k), a.r, lookup(k.tl, a.index));
      const V w = fma(a.r, k.c1, minus_held_part(x, h, s));
      return s + (b + w);
    } else {
      const auto& k = rows(__zorp_slog2_native_data_avx512);
      const CentredReduction<V> a(x, k);
      return fma(a.z, interval_quadratic(a, k), a.d);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hlog2_data);
    const CentredReduction<Vec<half, N>> a(x, k);
    return fma(half_polynomial(a.z, k), a.z, a.d);
  }
};

// ---- log10 -------------------------------------------------------------------------------------

struct Log10 {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dlog10_data_avx512);
      const ReciprocalReduction<5, Vec<double, N>> a(x, k);
      const auto h = fma(a.e, k.lg2hi, lookup(k.th, a.index));  // exact
      const auto s = fma(a.r, k.c1, h);
      auto w = minus_held_part(x, h, s);
      const auto p = fma(a.r, k.c9, k.c8);
      const auto q = a.r * a.r;
      auto b = fma(a.r, k.c7, k.c6);
      b = fma(q, p, b);
      const auto q2 = q * q;
      const auto u = fma(a.r, k.c5, k.c4);
      auto d = fma(a.r, k.c3, k.c2);
      d = fma(q, u, d);
      d = fma(b, q2, d);
      const auto g = fma(d, a.r, k.c1lo);
      const auto l = fma(a.e, k.lg2lo, lookup(k.tl, a.index));
      w = fma(a.r, k.c1, w);
      return s + fma(a.r, g, l + w);
    } else {
      const auto& k = rows(__zorp_dlog10_native_data_avx512);
      const ReciprocalReduction<5, Vec<double, N>> a(x, k);
      const auto b = short_polynomial(a.r, lookup(k.t, a.index), k);
      return fma(a.e, k.lg2, b);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_slog10_data_avx512);
      const UpperReciprocalReduction<5, V> a(x, k);
      const V h = fma(a.d, k.lg2hi, lookup(k.th, a.index));
      const V s = fma(a.r, k.c1, h);
      const V l = fma(a.d, k.lg2lo, lookup(k.tl, a.index));
      const V b = fma(float_polynomial(a.r, k), a.r, l);
      const V w = fma(a.r, k.c1, minus_held_part(x, h, s));
      return s + (b + w);
    } else {
      const auto& k = rows(__zorp_slog10_native_data_avx512);
      const CentredReduction<V> a(x, k);
      return fma(a.z, interval_quadratic(a, k), a.d * k.lg2);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hlog10_data);
    const CentredReduction<Vec<half, N>> a(x, k);
    return fma(a.d, k.lg2, half_polynomial(a.z, k) * a.z);
  }
};

}  // namespace zorp
