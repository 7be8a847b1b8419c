// asinh, acosh, atanh: the inverse hyperbolic functions.
// Kernels: __zorp_z1_{asinh,acosh,atanh}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// In double and float they are logarithms of an argument that is built first:
//   asinh |x| = log(|x| + sqrt(x^2 + 1)), acosh x = log(x + sqrt(x^2 - 1)),
//   atanh |x| = (log(1 + |x|) - log(1 - |x|)) / 2;
// the logarithm is that of the rounded reciprocal, a table, and a polynomial in what the reciprocal
// leaves. The standard tiers carry all parts as a high and a low one. The root comes from the
// processor's estimate and a series. Where the logarithm would cancel, an odd series serves asinh,
// and acosh in sqrt(x^2 - 1); where x^2 overflows, log 2|x| is log(|x| / 8) + 4 log 2.
// NaNs, infinities and operands outside the domain go to the rare routines.
//
// Half serves every operand: asinh and acosh are log |x| and a polynomial in 1/|x|, or a polynomial
// in x near the zero; atanh is x times a quadratic for each half binade of 1 - |x|.
#pragma once

#include "log/log_reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct AsinhDoubleBlock {
  Table<double, 16> th, tl;  // -log c: high part and rest
  Row<double> one, absmask, small, large, largest, s2, s1, w4, w3, w2, w1;
  Row<int64_t> round, mask;
  Row<double> eighth, four, c10, c9, c8, c7, c6, c5, c4, c3, c2, ln2hi, ln2lo;
};
struct AsinhDoubleShortBlock {
  Table<double, 16> t;
  Row<double> one, absmask, small, large, largest, s2, s1, w3, w2, w1;
  Row<int64_t> round, mask;
  Row<double> eighth, four, a5, a4, a3, a2, ln2;
};
struct AsinhFloatBlock {
  Table<float, 32> th, tl;
  Row<float> one, absmask, small, large, largest, s1, w2, w1;
  Row<int32_t> round, mask;
  Row<float> eighth, four, c4, c3, c2, ln2hi, ln2lo;
};
struct AsinhFloatShortBlock {
  Table<float, 32> t;
  Row<float> one, absmask, small, large, largest, s1, w1;
  Row<int32_t> round, mask;
  Row<float> eighth, four, a2, ln2;
};
struct AsinhHalfBlock {
  Row<half> one, absmask, p4, p3, p2, p1, q3, q2, q1, q0, r4, r3, r2, r1, ln2;
};

template <class T>
struct AcoshHalfRows {
  Row<T> one, two, n2, n1, n0, q2, q1, q0, r4, r3, r2, r1, ln2;
};
using AcoshHalfBlock = AcoshHalfRows<float>;
using AcoshHalfShortBlock = AcoshHalfRows<half>;

struct AtanhDoubleBlock {
  Table<double, 16> th, tl;  // log c: high part and rest
  Row<double> one, absmask;
  Row<int64_t> round, mask;
  Row<double> c9, c8, c7, c6, c5, c4, c3, c2, c1, half, ln2hi, ln2lo;
};
struct AtanhDoubleShortBlock {
  Table<double, 16> t;
  Row<double> one, absmask;
  Row<int64_t> round, mask;
  Row<double> a5, a4, a3, a2, a1, half, ln2;
};
struct AtanhFloatBlock {
  Table<float, 32> th, tl;
  Row<float> one, absmask;
  Row<int32_t> round, mask;
  Row<float> c4, c3, c2, c1, half, ln2hi, ln2lo;
};
struct AtanhFloatShortBlock {
  Table<float, 32> t;
  Row<float> one, absmask;
  Row<int32_t> round, mask;
  Row<float> a2, a1, half, ln2;
};
struct AtanhHalfBlock {
  Table<half, 32> p0, p1, p2;
  Row<half> absmask, four, zero;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const AsinhDoubleBlock __zorp_dasinh_data_avx512, __zorp_dacosh_data_avx512;
extern const AsinhDoubleShortBlock __zorp_dasinh_native_data_avx512,
    __zorp_dacosh_native_data_avx512;
extern const AsinhFloatBlock __zorp_sasinh_data_avx512, __zorp_sacosh_data_avx512;
extern const AsinhFloatShortBlock __zorp_sasinh_native_data_avx512,
    __zorp_sacosh_native_data_avx512;
extern const AsinhHalfBlock __zorp_hasinh_data;
extern const AcoshHalfBlock __zorp_hacosh_data;
extern const AcoshHalfShortBlock __zorp_hacosh_native_data;
extern const AtanhDoubleBlock __zorp_datanh_data_avx512;
extern const AtanhDoubleShortBlock __zorp_datanh_native_data_avx512;
extern const AtanhFloatBlock __zorp_satanh_data_avx512;
extern const AtanhFloatShortBlock __zorp_satanh_native_data_avx512;
extern const AtanhHalfBlock __zorp_hatanh_data;
}
#pragma GCC visibility pop

// ---- Steps that the functions share ------------------------------------------------------------

/// The rows of double or of float.
template <class T, class OfDouble, class OfFloat>
inline const auto& rows_of(const OfDouble& of_double, const OfFloat& of_float) {
  if constexpr (same<T, double>)
    return rows(of_double);
  else
    return rows(of_float);
}

/// Horner's rule, with the coefficients from the highest down.
template <class V, class First, class... Rest>
inline V horner(V x, const First& first, const Rest&... rest) {
  V p = first;
  ((p = fma(p, x, rest)), ...);
  return p;
}

template <class V>
struct Two {
  V first, second;
};

/// The same for two arguments side by side: a coefficient is needed only once.
template <class V, class First, class... Rest>
inline Two<V> horner(Two<V> x, const First& first, const Rest&... rest) {
  Two<V> p = {first, first};
  ((p = {fma(p.first, x.first, rest), fma(p.second, x.second, rest)}), ...);
  return p;
}

/// asinh(sqrt q) / sqrt q - 1 for small q.
template <int N, class Block>
inline Vec<double, N> near_series(Vec<double, N> q, const Block& k) {
  return fma(q, k.s2, k.s1) * q;
}
template <int N, class Block>
inline Vec<float, N> near_series(Vec<float, N> q, const Block& k) {
  return q * k.s1;
}

/// 1 / sqrt(1 - h) is 1 + h W; this is W.
template <int N>
inline Vec<double, N> root_series(Vec<double, N> h, const AsinhDoubleBlock& k) {
  return horner(h, k.w4, k.w3, k.w2, k.w1);
}
template <int N>
inline Vec<double, N> root_series(Vec<double, N> h, const AsinhDoubleShortBlock& k) {
  return horner(h, k.w3, k.w2, k.w1);
}
template <int N>
inline Vec<float, N> root_series(Vec<float, N> h, const AsinhFloatBlock& k) {
  return fma(h, k.w2, k.w1);
}
template <int N>
inline Vec<float, N> root_series(Vec<float, N>, const AsinhFloatShortBlock& k) {
  return k.w1;
}

/// (log(1 + r) - r) / r^2.
template <int N>
inline Vec<double, N> log_series(Vec<double, N> r, const AsinhDoubleBlock& k) {
  return horner(r, k.c10, k.c9, k.c8, k.c7, k.c6, k.c5, k.c4, k.c3, k.c2);
}
template <int N>
inline Vec<double, N> log_series(Vec<double, N> r, const AsinhDoubleShortBlock& k) {
  return horner(r, k.a5, k.a4, k.a3, k.a2);
}
template <int N>
inline Vec<float, N> log_series(Vec<float, N> r, const AsinhFloatBlock& k) {
  return horner(r, k.c4, k.c3, k.c2);
}
template <int N>
inline Vec<float, N> log_series(Vec<float, N>, const AsinhFloatShortBlock& k) {
  return k.a2;
}

/// log(1 + r) / r, twice.
template <class V>
inline Two<V> log_quotients(Two<V> r, const AtanhDoubleBlock& k) {
  return horner(r, k.c9, k.c8, k.c7, k.c6, k.c5, k.c4, k.c3, k.c2, k.c1);
}
template <class V>
inline Two<V> log_quotients(Two<V> r, const AtanhDoubleShortBlock& k) {
  return horner(r, k.a5, k.a4, k.a3, k.a2, k.a1);
}
template <class V>
inline Two<V> log_quotients(Two<V> r, const AtanhFloatBlock& k) {
  return horner(r, k.c4, k.c3, k.c2, k.c1);
}
template <class V>
inline Two<V> log_quotients(Two<V> r, const AtanhFloatShortBlock& k) {
  return horner(r, k.a2, k.a1);
}

/// The reciprocal that the logarithms take: its fraction fills a table of 16 doubles or 32 floats.
template <class V>
using LogReciprocal = RoundedReciprocal<same<typename V::Element, double> ? 4 : 5, V>;

/// A number in two parts.
template <class V>
struct HighLow {
  V high, low;
};

/// sqrt(s + l), l small beside s; without l, sqrt s. With r near 1 / sqrt s and g + e = s r, the
/// root is (g + e) / sqrt(1 - h), where 1 - h is what the square of r makes of s + l.
template <class V, class Block, class... L>
inline HighLow<V> square_root(V s, const Block& k, L... l) {
  const V r = reciprocal_root14(s);
  const V g = s * r;
  V e = fms(s, r, g);
  V h = fnma(r, g, k.one);
  ((e = fma(r, l, e)), ...);
  h = fnma(e, r, h);
  return {g, fma(g * h, root_series(h, k), e)};
}

/// larger + smaller + low, where low is small beside the sum.
template <class V>
inline HighLow<V> sum_of(V larger, V smaller, V low) {
  const V sum = larger + smaller;
  const V rest = smaller - (sum - larger);
  const V high = sum + low;
  return {high, (low - (high - sum)) + rest};
}

/// log y; in the lanes of `big`, where y.low must be zero, log(16 y).
template <class V, class Block>
inline V log_of(HighLow<V> y, Mask<V::lanes> big, const Block& k) {
  const LogReciprocal<V> a(y.high, k);
  V r = fms(y.high, a.c, k.one);
  r = fma(a.c, y.low, r);
  const V e = sub_where(big, exponent(a.c), k.four);
  const V h = fnma(e, k.ln2hi, lookup(k.th, a.index));  // exact
  const V l = fnma(e, k.ln2lo, lookup(k.tl, a.index));
  const V p = fma(log_series(r, k), r * r, l);
  return h + (p + r);
}
/// The same of a number in one part.
template <class V, class Block>
inline V log_of(V y, Mask<V::lanes> big, const Block& k) {
  const LogReciprocal<V> a(y, k);
  const V r = fms(y, a.c, k.one);
  const V e = sub_where(big, exponent(a.c), k.four);
  const V h = fnma(e, k.ln2, lookup(k.t, a.index));
  return h + fma(log_series(r, k), r * r, r);
}

/// log x + g, for half.
template <class V, class Block>
inline V log_plus(V x, V g, const Block& k) {
  const CentredReduction<V> a(x, k);
  const V v = horner(a.z, k.r4, k.r3, k.r2, k.r1);
  return fma(a.d, k.ln2, fma(v, a.z, g));
}

/// not a < b: true for NaNs.
template <class V>
inline Mask<V::lanes> not_below(V a, detail::same_as<V> b) {
  return compare<_CMP_NLT_UQ>(a, b);
}

// ---- asinh -------------------------------------------------------------------------------------

struct Asinh {
  template <Tier tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    using V = Vec<T, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows_of<T>(__zorp_dasinh_data_avx512, __zorp_sasinh_data_avx512);
      const V one = k.one;
      const V a = x & k.absmask;
      const V q = x * x;
      const V s = q + one;
      // What s leaves of x^2 + 1: the errors of sum and square, each exact.
      const V l = (min(one, q) - (s - max(one, q))) + fms(x, x, q);
      const auto root = square_root(s, k, l);
      auto y = sum_of(root.high, a, root.low);
      const auto big = not_below(a, k.large);
      y.high = select(big, a * k.eighth, y.high);
      y.low = select(big, constant<V>(0), y.low);
      return with_sign(x, a, q, log_of(y, big, k), k);
    } else {
      const auto& k =
          rows_of<T>(__zorp_dasinh_native_data_avx512, __zorp_sasinh_native_data_avx512);
      const V a = x & k.absmask;
      const V q = x * x;
      const V s = q + k.one;
      const V r = reciprocal_root14(s);
      const V g = s * r;
      const V h = fnma(r, g, k.one);
      V y = fma(g * h, root_series(h, k), g + a);
      const auto big = not_below(a, k.large);
      y = select(big, a * k.eighth, y);
      return with_sign(x, a, q, log_of(y, big, k), k);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    using V = Vec<half, N>;
    const auto& k = rows(__zorp_hasinh_data);
    const V a = x & k.absmask;
    const V near = fma(horner(a, k.p4, k.p3, k.p2, k.p1), a, a);
    // log(1 + sqrt(1 + 1/a^2))
    const V g = horner(reciprocal11(a), k.q3, k.q2, k.q1, k.q0);
    return select(not_below(a, k.one), log_plus(a, g, k), near) ^ x ^ a;
  }

 private:
  /// The logarithm or, for small a = |x|, the series in q = x^2, with the sign of x.
  template <class V, class Block>
  static Outcome<V> with_sign(V x, V a, V q, V log, const Block& k) {
    const V near = fma(near_series(q, k), a, a);
    const V y = select(not_below(a, k.small), log, near);
    return {ternary_logic<0x96>(y, x, a), compare<_CMP_NLE_UQ>(a, k.largest)};
  }
};

// ---- acosh -------------------------------------------------------------------------------------

struct Acosh {
  template <class T>
  static constexpr uint64_t filler() {  // 2
    return uint64_t{0x40} << (8 * sizeof(T) - 8);
  }

  template <Tier tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    using V = Vec<T, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows_of<T>(__zorp_dacosh_data_avx512, __zorp_sacosh_data_avx512);
      const V t = fms(x, x, k.one);
      const auto root = square_root(t, k);
      auto y = sum_of(x, root.high, root.low);
      const auto big = not_below(x, k.large);
      y.high = select(big, x * k.eighth, y.high);
      y.low = select(big, constant<V>(0), y.low);
      return in_domain(x, t, root.high + root.low, log_of(y, big, k), k);
    } else {
      const auto& k =
          rows_of<T>(__zorp_dacosh_native_data_avx512, __zorp_sacosh_native_data_avx512);
      const V t = fms(x, x, k.one);
      const V r = reciprocal_root14(t);
      const V g = t * r;
      const V h = fnma(r, g, k.one);
      const V root = fma(g * h, root_series(h, k), g);
      const auto big = not_below(x, k.large);
      const V y = select(big, x * k.eighth, root + x);
      return in_domain(x, t, root, log_of(y, big, k), k);
    }
  }

  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard)
      return narrow(of_half(widen(x), rows(__zorp_hacosh_data)));
    else
      return of_half(x, rows(__zorp_hacosh_native_data));
  }

 private:
  /// The logarithm or, for small t = x^2 - 1, the series of asinh in sqrt t.
  template <class V, class Block>
  static Outcome<V> in_domain(V x, V t, V root, V log, const Block& k) {
    const V near = fma(near_series(t, k), root, root);
    return {select(not_below(t, k.small), log, near),
            compare<_CMP_LE_OQ>(x, k.one) | compare<_CMP_NLE_UQ>(x, k.largest)};
  }

  template <int N>
  static Vec<float, N> estimated_reciprocal(Vec<float, N> v) {
    return reciprocal14(v);
  }
  template <int N>
  static Vec<half, N> estimated_reciprocal(Vec<half, N> v) {
    return reciprocal11(v);
  }
  template <int N>
  static Vec<float, N> estimated_root(Vec<float, N> v) {
    return reciprocal14(reciprocal_root14(v));
  }
  template <int N>
  static Vec<half, N> estimated_root(Vec<half, N> v) {
    return reciprocal11(reciprocal_root11(v));
  }

  /// All steps of half, in float or in half. At x = 1 the root is +0; below 1 it is a NaN.
  template <class V>
  static V of_half(V x, const AcoshHalfRows<typename V::Element>& k) {
    const V t = x - k.one;
    const V near = horner(t, k.n2, k.n1, k.n0) * estimated_root(t);
    // log(1 + sqrt(1 - 1/x^2))
    const V g = horner(estimated_reciprocal(x), k.q2, k.q1, k.q0);
    return select(not_below(x, k.two), log_plus(x, g, k), near);
  }
};

// ---- atanh -------------------------------------------------------------------------------------

struct Atanh {
  template <Tier tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    using V = Vec<T, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows_of<T>(__zorp_datanh_data_avx512, __zorp_satanh_data_avx512);
      const Sides<V> side(x, k);
      const V dh = lookup(k.th, side.minus) - lookup(k.th, side.plus);
      const V dl = lookup(k.tl, side.minus) - lookup(k.tl, side.plus);
      const V h = fma(side.d, k.ln2hi, dh);  // exact
      const V l = fma(side.d, k.ln2lo, dl);
      return side.result(x, h + side.with_series(l, k), k);
    } else {
      const auto& k =
          rows_of<T>(__zorp_datanh_native_data_avx512, __zorp_satanh_native_data_avx512);
      const Sides<V> side(x, k);
      const V dt = lookup(k.t, side.minus) - lookup(k.t, side.plus);
      return side.result(x, side.with_series(fma(side.d, k.ln2, dt), k), k);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    using V = Vec<half, N>;
    const auto& k = rows(__zorp_hatanh_data);
    const V a = x & k.absmask;
    const V w = fnma(a, k.four, k.four);
    const auto j = shift_right<9>(bits(w));  // a half binade of w
    V p = fma(w, lookup(k.p2, j), lookup(k.p1, j));
    p = fma(p, w, lookup(k.p0, j));
    // At 1 the reciprocal root is +infinity, beyond 1 a NaN.
    const V edge = reciprocal_root11(w) | (x ^ a);
    return select(compare<_CMP_LE_OQ>(w, k.zero), edge, fma_in_order(x, p, x));
  }

 private:
  /// 1 + a and 1 - a for a = |x|: their rounded reciprocals and what these leave.
  template <class V>
  struct Sides {
    Mask<V::lanes> special;
    Two<V> r;
    V d;                              // the difference of the exponents
    decltype(bits(V())) plus, minus;  // indices of the reciprocals

    template <class Block>
    Sides(V x, const Block& k) {
      const V one = k.one;
      const V a = x & k.absmask;
      special = not_below(a, one);
      const V p = a + one, m = one - a;
      const V p_rest = a - (p - one), m_rest = a + (m - one);  // 1 + a - p, m - (1 - a)
      const LogReciprocal<V> cp(p, k), cm(m, k);
      r = {fma(cp.c, p_rest, fms(p, cp.c, one)), fnma(cm.c, m_rest, fms(m, cm.c, one))};
      d = exponent(cm.c) - exponent(cp.c);
      plus = cp.index;
      minus = cm.index;
    }

    /// v + log(1 + r.first) - log(1 + r.second)
    template <class Block>
    V with_series(V v, const Block& k) const {
      const auto quotient = log_quotients(r, k);
      return fnma(r.second, quotient.second, fma(quotient.first, r.first, v));
    }

    /// v / 2 with the sign of x.
    template <class Block>
    Outcome<V> result(V x, V v, const Block& k) const {
      constexpr int outside_or = 0xBA;  // (a & ~b) | c
      return {v * ternary_logic<outside_or>(x, k.absmask, k.half), special};
    }
  };
};

}  // namespace zorp
