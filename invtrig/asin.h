// asin, acos, asinpi, acospi: arc sine and arc cosine, in radians and in half turns.
// Kernels: __zorp_z1_{asin,acos,asinpi,acospi}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// A polynomial in x^2 serves |x| below 1/2. From there on asin |x| = pi/2 - 2 asin(sqrt y) with
// y = (1 - |x|)/2, and the same polynomial serves in y: it is evaluated once, in the smaller of the
// two, and the halves of the range differ in a selection. What the kernels differ in is how they
// take the square root.
//
// asin and acos serve every operand: above 1 the polynomial's argument is made a NaN. asinpi and
// acospi of double and float leave |x| >= 1 to the rare routines.
#pragma once

#include "invtrig/steps.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

// asin and acos share their rows, and so do asinpi and acospi.
struct AsinDoubleBlock {
  Row<double> one_half, two, nan, guard;
  Row<double> c12, c11, c10, c9, c8, c7, c6, c5, c4, c3, c2, c1;
  Row<double> g3, g2, g1, g0, pi_half, pi;
};
struct AsinDoubleShortBlock {
  Row<double> one_half, two, nan, guard;
  Row<double> c6, c5, c4, c3, c2, c1;
  Row<double> g1, g0, pi_half, pi;
};
struct AsinFloatBlock {
  Row<float> one_half, two, nan, guard;
  Row<float> c5, c4, c3, c2, c1;
  Row<float> g1, g0, pi_half, pi;
};
struct AsinFloatShortBlock {
  Row<float> one_half, two, nan, guard;
  Row<float> c2, c1, c0;
  Row<float> g0, pi_half, pi;
};

struct AsinpiDoubleBlock {
  Row<double> one_half, one;
  Row<double> c12, c11, c10, c9, c8, c7, c6, c5, c4, c3, c2, c1, inv_pi;
};
struct AsinpiDoubleShortBlock {
  Row<double> one_half, one, two;
  Row<double> c6, c5, c4, c3, c2, c1, inv_pi;
  Row<double> g1, g0;
};
struct AsinpiFloatBlock {
  Row<float> one_half, one;
  Row<float> c5, c4, c3, c2, c1, inv_pi;
};
struct AsinpiFloatShortBlock {
  Row<float> one_half, one;
  Row<float> c2, c1, c0;
};

/// Half: T is float in the standard tier, half in the native one.
template <class T>
struct AsinHalfBlock {
  Row<T> one_half, minus_two;
  Row<T> c2, c1, c0, quarter_turn;
};
template <class T>
struct AcospiHalfBlock {
  Row<T> one_half, one;
  Row<T> c3, c2, c1, c0;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const AsinDoubleBlock __zorp_dasin_data, __zorp_dacos_data;
extern const AsinDoubleShortBlock __zorp_dasin_native_data, __zorp_dacos_native_data;
extern const AsinFloatBlock __zorp_sasin_data, __zorp_sacos_data;
extern const AsinFloatShortBlock __zorp_sasin_native_data, __zorp_sacos_native_data;
extern const AsinHalfBlock<float> __zorp_hasin_data, __zorp_hacos_data;
extern const AsinHalfBlock<half> __zorp_hasin_native_data, __zorp_hacos_native_data;

extern const AsinpiDoubleBlock __zorp_dasinpi_data, __zorp_dacospi_data;
extern const AsinpiDoubleShortBlock __zorp_dasinpi_native_data, __zorp_dacospi_native_data;
extern const AsinpiFloatBlock __zorp_sasinpi_data, __zorp_sacospi_data;
extern const AsinpiFloatShortBlock __zorp_sasinpi_native_data, __zorp_sacospi_native_data;
extern const AsinHalfBlock<float> __zorp_hasinpi_data;
extern const AsinHalfBlock<half> __zorp_hasinpi_native_data;
extern const AcospiHalfBlock<float> __zorp_hacospi_data;
extern const AcospiHalfBlock<half> __zorp_hacospi_native_data;
}
#pragma GCC visibility pop

// ---- The polynomials of asin r = r + r (c1 Y + c2 Y^2 + ...), Y = r^2, without their first Y ----

template <class V>
inline V five_terms(V y, const auto& k) {
  const V y2 = y * y;
  const V u = fma(y, k.c5, k.c4);
  V v = fma(y, k.c3, k.c2);
  v = fma(y2, u, v);
  return fma(y, v, k.c1);
}

template <class V>
inline V six_terms(V y, const auto& k) {
  const V y2 = y * y;
  const V u = fma(y, k.c6, k.c5);
  V v = fma(y, k.c4, k.c3);
  const V w = fma(y, k.c2, k.c1);
  v = fma(y2, u, v);
  return fma(v, y2, w);
}

template <class V>
inline V twelve_terms(V y, const auto& k) {
  const V y2 = y * y, y4 = y2 * y2;
  const V e1 = fma(y, k.c12, k.c11);
  V e2 = fma(y, k.c10, k.c9);
  const V e3 = fma(y, k.c8, k.c7);
  V e4 = fma(y, k.c6, k.c5);
  e2 = fma(y2, e1, e2);
  e4 = fma(y2, e3, e4);
  e4 = fma(y4, e2, e4);
  V e5 = fma(y, k.c4, k.c3);
  e5 = fma(y2, e4, e5);
  const V e6 = fma(y, k.c2, k.c1);
  return fma(y2, e5, e6);
}

/// c0 + c1 Y + c2 Y^2: the short polynomials have a constant term of their own.
template <class V>
inline V quadratic(V y, const auto& k) {
  return fma(fma(y, k.c2, k.c1), y, k.c0);
}

/// asin(r)/r - 1 by the rows of each block.
template <class V>
inline V excess(V y, const AsinDoubleBlock& k) {
  return twelve_terms(y, k) * y;
}
template <class V>
inline V excess(V y, const AsinDoubleShortBlock& k) {
  return six_terms(y, k) * y;
}
template <class V>
inline V excess(V y, const AsinFloatBlock& k) {
  return five_terms(y, k) * y;
}
template <class V>
inline V excess(V y, const AsinFloatShortBlock& k) {
  return quadratic(y, k);
}

/// (asin(r)/r - 1) / (pi Y) of the standard tier.
template <class V>
inline V pi_terms(V y, const AsinpiDoubleBlock& k) {
  return twelve_terms(y, k);
}
template <class V>
inline V pi_terms(V y, const AsinpiFloatBlock& k) {
  return five_terms(y, k);
}

/// asin(r) / (pi r)
template <class V>
inline V pi_factor(V y, const AsinpiDoubleBlock& k) {
  return fma(y, twelve_terms(y, k), k.inv_pi);
}
template <class V>
inline V pi_factor(V y, const AsinpiDoubleShortBlock& k) {
  return fma(y, six_terms(y, k), k.inv_pi);
}
template <class V>
inline V pi_factor(V y, const AsinpiFloatBlock& k) {
  return fma(y, five_terms(y, k), k.inv_pi);
}
template <class V>
inline V pi_factor(V y, const AsinpiFloatShortBlock& k) {
  return quadratic(y, k);
}

// ---- Square roots ------------------------------------------------------------------------------

/// 2 sqrt(y) as a - t b, from an estimate of 1/sqrt(y). With e = 2 (r^2 y - 1), a small number,
/// 2 sqrt(y) = a / sqrt(1 + e/2), and t is a polynomial for (1 - 1/sqrt(1 + e/2)) / e.
template <class V>
struct CorrectedRoot {
  V a, t, b;

  V twice() const { return fnma(t, b, a); }
  V minus_twice() const { return fms(t, b, a); }
};

/// 1/sqrt(y), but 0 for y = 0, so that the root comes out as 0: y is 0 or at least 2^-54, and the
/// guard lies between. Negative y belong to |x| > 1, where the polynomial is a NaN.
template <class V>
inline V guarded_estimate(V y, const auto& k) {
  return select(compare<_CMP_NLT_UQ>(y, k.guard), reciprocal_root14(y), constant<V>(0));
}

template <class V>
inline CorrectedRoot<V> root(V y, const AsinDoubleBlock& k) {
  const V r = guarded_estimate(y, k), y2 = y + y;
  const V a = y2 * r;
  const V e = fms(r * r, y2, k.two);
  V t = fma(e, k.g3, k.g2);
  t = fma(t, e, k.g1);
  t = fma(t, e, k.g0);
  return {a, t, a * e};
}
template <class V>
inline CorrectedRoot<V> root(V y, const AsinDoubleShortBlock& k) {
  const V r = guarded_estimate(y, k);
  const V a = (y + y) * r;
  const V e = fms(a, r, k.two);
  return {a, fma(e, k.g1, k.g0), a * e};
}
template <class V>
inline CorrectedRoot<V> root(V y, const AsinFloatBlock& k) {
  const V r = guarded_estimate(y, k), y2 = y + y;
  const V a = y2 * r;
  const V e = fms(r * r, y2, k.two);
  return {a, fma(e, k.g1, k.g0), a * e};
}
template <class V>
inline CorrectedRoot<V> root(V y, const AsinFloatShortBlock& k) {
  const V r = guarded_estimate(y, k);
  const V a = (y + y) * r;
  const V e = fms(a, r, k.two);
  return {a, k.g0, a * e};
}
/// Without a guard, as |x| = 1 calls out.
template <class V>
inline CorrectedRoot<V> root(V y, const AsinpiDoubleShortBlock& k) {
  const V r = reciprocal_root14(y);
  const V a = (y + y) * r;
  const V e = fms(a, r, k.two);
  return {a, fma(e, k.g1, k.g0), a * e};
}

/// sqrt(y), rounded to nearest but for rare cases: Newton's iteration for root and half the
/// reciprocal root together, then a correction by the exact remainder. y lies between 2^-54 and
/// 1/2, so that nothing underflows; other y are those of |x| >= 1, which calls out, and NaNs.
template <class V>
inline V iterated_root(V y, const AsinpiDoubleBlock& k) {
  const V r = reciprocal_root14(y);
  V g = y * r, h = r * k.one_half;
  const V d = fnma(g, h, k.one_half);
  g = fma(d, g, g);
  h = fma(d, h, h);
  const V m = fnma(g, g, y);
  return fma(m, h, g);
}

template <class V>
inline V twice_exact_root(V y) {
  const V s = sqrt(y);
  return s + s;
}

/// -2 sqrt(y), as asin wants it, by the rows of each block.
template <class V>
inline V minus_twice_root(V y, const auto& k) {
  return root(y, k).minus_twice();
}
template <class V>
inline V minus_twice_root(V y, const AsinFloatBlock&) {
  return twice_exact_root(y) ^ sign_mask<V>();
}
template <class V>
inline V minus_twice_root(V y, const AsinpiFloatBlock&) {
  return twice_exact_root(y) ^ sign_mask<V>();
}
template <class V>
inline V minus_twice_root(V y, const AsinpiFloatShortBlock&) {
  return twice_exact_root(y) ^ sign_mask<V>();
}
template <class V>
inline V minus_twice_root(V y, const AsinpiDoubleBlock& k) {
  const V s = iterated_root(y, k);
  return minus_magnitude(s + s);
}

/// 2 sqrt(y), as acos wants it.
template <class V>
inline V twice_root(V y, const auto& k) {
  return root(y, k).twice();
}
template <class V>
inline V twice_root(V y, const AsinpiFloatBlock&) {
  return twice_exact_root(y);
}
template <class V>
inline V twice_root(V y, const AsinpiFloatShortBlock&) {
  return twice_exact_root(y);
}
template <class V>
inline V twice_root(V y, const AsinpiDoubleBlock& k) {
  const V s = iterated_root(y, k);
  return s + s;
}

// ---- Steps that the functions share ------------------------------------------------------------

/// (1 - a)/2
template <class V>
inline V half_rest(V a, const auto& k) {
  return fnma(a, k.one_half, k.one_half);
}

/// The polynomial's argument: the smaller of x^2 and y. Negative y, which are those of |x| > 1, are
/// made NaNs.
template <class V>
inline V nan_beyond_one(V smaller, V y, const auto& k) {
  return select(compare<_CMP_LT_OQ>(y, constant<V>(0)), smaller | k.nan, smaller);
}

/// The lanes from 1/2 on, and NaNs.
template <class V>
inline Mask<V::lanes> from_one_half(V a, const auto& k) {
  return compare<_CMP_NLT_UQ>(a, k.one_half);
}
/// The same lanes, told by which is the smaller of x^2 and y.
template <class V>
inline Mask<V::lanes> takes_rest(V smaller, V y) {
  return compare<_CMP_NLT_UQ>(smaller, y);
}

/// The lanes where |x| >= 1.
template <class V>
inline Mask<V::lanes> from_one(V y) {
  return compare<_CMP_LE_OQ>(y, constant<V>(0));
}

/// sqrt(y) of half, by estimates alone. y above 0 is at least 2^-12. A negative y, which belongs to
/// |x| > 1, gives a NaN.
template <class V>
inline V root_by_product(V y) {
  return select(compare<_CMP_EQ_OQ>(y, constant<V>(0)), y, y * reciprocal_root_estimate(y));
}
template <class V>
inline V root_by_reciprocals(V y) {
  return reciprocal_estimate(reciprocal_root_estimate(y));
}

/// asin a / turn, 0 <= a <= 1, of half.
template <class V>
inline V half_arc_sine(V a, V y, V root, const auto& k) {
  const V p = quadratic(min(a * a, y), k);
  const auto big = from_one_half(a, k);
  const V v = select(big, root * k.minus_two, a);
  const V base = select(big, V(k.quarter_turn), constant<V>(0));
  return fma(v, p, base);
}

// ---- asin --------------------------------------------------------------------------------------

struct Asin {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_sine(x, rows(__zorp_dasin_data));
    else
      return arc_sine(x, rows(__zorp_dasin_native_data));
  }
  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_sine(x, rows(__zorp_sasin_data));
    else
      return arc_sine(x, rows(__zorp_sasin_native_data));
  }
  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_hasin_data);
      const auto a = widen(magnitude(x)), y = half_rest(a, k);
      return flipped_by(narrow(half_arc_sine(a, y, root_by_product(y), k)), x);
    } else {
      const auto& k = rows(__zorp_hasin_native_data);
      const auto a = magnitude(x), y = half_rest(a, k);
      return flipped_by(half_arc_sine(a, y, root_by_product(y), k), x);
    }
  }

 private:
  template <class V>
  static V arc_sine(V x, const auto& k) {
    const V a = magnitude(x), y = half_rest(a, k);
    const auto big = from_one_half(a, k);
    const V r = select(big, minus_twice_root(y, k), a);
    const V p = excess(nan_beyond_one(min(x * x, y), y, k), k);
    // Where |x| > 1 both may be NaNs.
    const V v = fma_in_order(r, p, r);
    return flipped_by(add_where(big, v, k.pi_half), x);
  }
};

// ---- acos --------------------------------------------------------------------------------------

struct Acos {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_cosine(x, rows(__zorp_dacos_data));
    else
      return arc_cosine(x, rows(__zorp_dacos_native_data));
  }
  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_cosine(x, rows(__zorp_sacos_data));
    else
      return arc_cosine(x, rows(__zorp_sacos_native_data));
  }
  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard)
      return narrow(half_arc_cosine(widen(x), rows(__zorp_hacos_data)));
    else
      return half_arc_cosine(x, rows(__zorp_hacos_native_data));
  }

 private:
  /// pi/2 - asin x below 1/2; 2 asin(sqrt y) from there on, or what pi leaves beside it.
  template <class V>
  static V arc_cosine(V x, const auto& k) {
    const V minus_a = minus_magnitude(x), y = fma(minus_a, k.one_half, k.one_half);
    const V smaller = min(x * x, y);
    const auto big = takes_rest(smaller, y);
    const V s = nan_beyond_one(smaller, y, k);
    const V r = flipped_by(select(big, twice_root(y, k), minus_a), x);
    // x < s tells negative x here, as s is positive and at most 1/4.
    const V far = select(compare<_CMP_LT_OQ>(x, s), V(k.pi), constant<V>(0));
    const V base = select(big, far, k.pi_half);
    return base + fma_in_order(excess(s, k), r, r);
  }

  template <class V>
  static V half_arc_cosine(V x, const auto& k) {
    const V a = magnitude(x), y = half_rest(a, k);
    const V p = quadratic(min(a * a, y), k);
    const auto big = from_one_half(a, k);
    const V quarter = k.quarter_turn;
    const V base = select(big, quarter - flipped_by(quarter, x), quarter);
    const V v = select(big, root_by_product(y) * k.minus_two, a);
    // -v with the sign of x put on it
    const V r = ternary_logic<0xD2>(v, x, sign_mask<V>());
    return fma_in_order(r, p, base);
  }
};

// ---- asinpi ------------------------------------------------------------------------------------

struct Asinpi {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_sine(x, rows(__zorp_dasinpi_data));
    else
      return arc_sine(x, rows(__zorp_dasinpi_native_data));
  }
  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_sine(x, rows(__zorp_sasinpi_data));
    else
      return arc_sine(x, rows(__zorp_sasinpi_native_data));
  }
  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_hasinpi_data);
      const auto a = widen(magnitude(x)), y = half_rest(a, k);
      return flipped_by(narrow(half_arc_sine(a, y, root_by_reciprocals(y), k)), x);
    } else {
      const auto& k = rows(__zorp_hasinpi_native_data);
      const auto a = magnitude(x), y = half_rest(a, k);
      return flipped_by(half_arc_sine(a, y, root_by_reciprocals(y), k), x);
    }
  }

 private:
  template <class V>
  static Outcome<V> arc_sine(V x, const auto& k) {
    const V a = magnitude(x), y = half_rest(a, k);
    const auto big = from_one_half(a, k);
    const V r = select(big, minus_twice_root(y, k), a);
    const V base = select(big, V(k.one_half), constant<V>(0));
    const V v = over_pi(min(x * x, y), r, base, k);
    return {flipped_by(v, x), from_one(y)};
  }

  /// base + asin(r) / pi. The standard tier adds the two parts of the factor one by one.
  template <class V, class Block>
  static V over_pi(V s, V r, V base, const Block& k) {
    if constexpr (requires { pi_terms(s, k); })
      return fma_in_order(pi_terms(s, k) * s, r, fma(r, k.inv_pi, base));
    else
      return fma_in_order(pi_factor(s, k), r, base);
  }
};

// ---- acospi ------------------------------------------------------------------------------------

struct Acospi {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_cosine(x, rows(__zorp_dacospi_data));
    else
      return arc_cosine(x, rows(__zorp_dacospi_native_data));
  }
  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return arc_cosine(x, rows(__zorp_sacospi_data));
    else
      return arc_cosine(x, rows(__zorp_sacospi_native_data));
  }
  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard)
      return narrow(half_arc_cosine(widen(x), rows(__zorp_hacospi_data)));
    else
      return half_arc_cosine(x, rows(__zorp_hacospi_native_data));
  }

 private:
  template <class V>
  static Outcome<V> arc_cosine(V x, const auto& k) {
    const V minus_a = minus_magnitude(x), y = fma(minus_a, k.one_half, k.one_half);
    const V s = min(x * x, y);
    const auto big = takes_rest(s, y);
    const V r = flipped_by(select(big, twice_root(y, k), minus_a), x);
    const V far = select(compare<_CMP_LT_OQ>(x, s), V(k.one), constant<V>(0));
    const V base = select(big, far, k.one_half);
    return {fma_in_order(r, pi_factor(s, k), base), from_one(y)};
  }

  /// One polynomial for the whole range: acos(x)/pi = sqrt(y) p(y) for positive x.
  template <class V>
  static V half_arc_cosine(V x, const auto& k) {
    const V y = half_rest(magnitude(x), k);
    V p = fma(y, k.c3, k.c2);
    p = fma(p, y, k.c1);
    p = fma(p, y, k.c0);
    const V v = flipped_by(root_by_reciprocals(y), x);
    const V base = select(is_negative(bits(x)), V(k.one), constant<V>(0));
    return fma_in_order(v, p, base);
  }
};

}  // namespace zorp
