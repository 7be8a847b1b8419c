// atan, atanpi: arc tangent, in radians and in half turns.
// Kernels: __zorp_z1_{atan,atanpi}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// The standard atan of double and float takes the multiple c of 1/4 nearest to |x|, adds atan c
// from a table to a polynomial in t = (|x| - c)/(1 + c |x|), and uses pi/2 + atan(-1/|x|) for large
// arguments: no lane needs a branch. All others have one polynomial for [0, 1], and take
// -1/|x| from 1 on. The quotients come from estimates and corrections.
//
// The native atan calls out for infinities; atanpi for infinities, NaNs, zeros and magnitudes whose
// reciprocal, or its correction, would leave the range. Half serves every operand.
//
// atan2.h takes rows, quotients and polynomials from here.
#pragma once

#include "invtrig/steps.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

/// Magnitudes from a smallest exponent to a largest, by one signed comparison: `bias` moves the
/// encoding of the smallest to the most negative integer, and beyond the largest lies `limit`.
template <class T>
struct RangeRows {
  Row<Encoding<T>> bias, limit;
};

/// How a double's reciprocal is taken from the estimate of a float (see ReciprocalSeed).
struct SeedRows {
  Row<int64_t> fraction, one, exponent, base;
  Row<double> upper;
};

struct AtanDoubleBlock {
  Table<double, 16> lower, upper;  // atan(j/4), j from 0 and from 16
  Row<double> shifter, upper_from, limit, one, minus_one, cap, quarter_turn;
  Row<double> c6, c5, c4, c3, c2, c1;
};
struct AtanFloatBlock {
  Table<float, 32> table;
  Row<float> shifter, limit, one, minus_one, cap, quarter_turn;
  Row<float> c3, c2, c1;
};

// The rest serves the functions of one operand and of two.

/// Polynomials of half the degree: odd and even coefficients by themselves.
struct AtanDoubleShortBlock {
  Row<double> one, quarter_turn, half_turn;
  RangeRows<double> range;
  Row<double> a[5], b[5];
};
struct AtanFloatShortBlock {
  Row<float> one, two, quarter_turn, half_turn;
  RangeRows<float> range;
  Row<float> a[2], b[2];
};

struct AtanpiDoubleBlock {
  Row<double> one, minus_one, quarter_turn, half_turn;
  RangeRows<double> range;
  SeedRows seed;
  Row<double> c[22];
};
struct AtanpiDoubleShortBlock {
  Row<double> one, minus_one, quarter_turn, half_turn;
  RangeRows<double> range;
  SeedRows seed;
  Row<double> a[5], b[5];
};
struct AtanpiFloatBlock {
  Row<float> one, minus_one, two, quarter_turn, half_turn;
  RangeRows<float> range;
  Row<float> c[9];
};
struct AtanpiFloatShortBlock {
  Row<float> one, minus_one, two, quarter_turn, half_turn;
  RangeRows<float> range;
  Row<float> a[2], b[2];
};

/// Half: T is float in the standard tier, half in the native one.
template <class T>
struct AtanHalfBlock {
  Row<T> one, quarter_turn, half_turn;
  Row<T> c4, c3, c2, c1, c0;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const AtanDoubleBlock __zorp_datan_data_avx512;
extern const AtanFloatBlock __zorp_satan_data_avx512;
extern const AtanDoubleShortBlock __zorp_datan_native_data;
extern const AtanFloatShortBlock __zorp_satan_native_data;
extern const AtanHalfBlock<float> __zorp_hatan_data;
extern const AtanHalfBlock<half> __zorp_hatan_native_data;

extern const AtanpiDoubleBlock __zorp_datanpi_data;
extern const AtanpiFloatBlock __zorp_satanpi_data;
extern const AtanpiDoubleShortBlock __zorp_datanpi_native_data;
extern const AtanpiFloatShortBlock __zorp_satanpi_native_data;
extern const AtanHalfBlock<float> __zorp_hatanpi_data;
extern const AtanHalfBlock<half> __zorp_hatanpi_native_data;
}
#pragma GCC visibility pop

// ---- Polynomials -------------------------------------------------------------------------------

/// The polynomial with these coefficients, the highest first.
template <class V, class T, int n>
inline V horner(V z, const Row<T> (&c)[n]) {
  V p = fma(V(c[0]), z, c[1]);
#pragma GCC unroll 32
  for (int i = 2; i < n; ++i) p = fma(p, z, c[i]);
  return p;
}

/// b(z^2) + z a(z^2)
template <class V>
inline V two_chains(V z, const auto& k) {
  const V y = z * z;
  return fma(z, horner(y, k.a), horner(y, k.b));
}

/// atan(t) / (pi t) with z = t^2, by the rows of each block.
template <class V>
inline V pi_polynomial(V z, const auto& k) {
  if constexpr (requires { k.c; })
    return horner(z, k.c);
  else
    return two_chains(z, k);
}

/// c0 + c1 t + ... + c4 t^4
template <class V>
inline V quartic(V t, const auto& k) {
  V p = fma(t, k.c4, k.c3);
  p = fma(p, t, k.c2);
  p = fma(p, t, k.c1);
  return fma(p, t, k.c0);
}

// ---- Quotients and reciprocals -----------------------------------------------------------------

/// A quotient taken apart into significands and an exponent, so that no intermediate result leaves
/// the range. A zero num has the exponent -infinity, which scales to a zero quotient.
template <class V>
struct Separated {
  V n, d, e;

  Separated(V num, V den)
      : n(significand<0x00>(num)), d(significand<0x00>(den)), e(exponent(num) - exponent(den)) {}
};
template <int N>
inline Vec<float, N> quotient_of_significands(Vec<float, N> num, Vec<float, N> den) {
  const Separated s(num, den);
  const auto r = reciprocal14(s.d);
  const auto q = s.n * r;
  const auto m = fnma(s.d, q, s.n);  // what q leaves
  return scale(fma(m, r, q), s.e);
}
template <int N>
inline Vec<double, N> quotient_of_significands(Vec<double, N> num, Vec<double, N> den,
                                               const AtanDoubleBlock& k) {
  const Separated s(num, den);
  const auto r = reciprocal14(s.d);
  const auto q = s.n * r;
  // 1/d = r (1 + g + g^2 + ...) with g = 1 - d r.
  auto g = fnma(s.d, r, k.one);
  g = fma(g, g, g);
  g = fma(g, r, r);
  const auto m = fnma(s.d, q, s.n);
  return scale(fma(m, g, q), s.e);
}

/// 1/v by one fused correction of the estimate in float, by two in double.
template <int N>
inline Vec<float, N> reciprocal(Vec<float, N> v, const AtanFloatShortBlock& k) {
  const auto r = reciprocal14(v);
  return fnma(v, r, k.two) * r;
}
template <int N>
inline Vec<double, N> reciprocal(Vec<double, N> v, const AtanDoubleShortBlock& k) {
  const auto r = reciprocal14(v);
  auto g = fnma(v, r, k.one);
  g = fma(g, g, g);
  return fma(g, r, r);
}

/// 1/v of the functions in half turns, where every operation rounds by itself.
template <int N>
inline Vec<float, N> separate_reciprocal(Vec<float, N> v, const auto& k) {
  const Vec<float, N> r = reciprocal14(v), two = k.two;
  return (two - v * r) * r;
}

/// 1/v to about 14 bits, in a double with an empty lower half. Its significand is the estimate for
/// a float that holds the top 20 bits of v's fraction, and which shifts into place; its exponent is
/// v's with the opposite sign.
template <int N>
inline Vec<double, N> reciprocal_seed(Vec<double, N> v, const SeedRows& k) {
  const auto w = bits(v);
  const auto f = ternary_logic<0xEA>(shift_right<29>(w), k.fraction, k.one);
  const auto significand = shift_left<29>(reciprocal14_of_lower_floats(f));
  return from_bits<double>(significand - (w & k.exponent) + k.base) & k.upper;
}
/// r (1 - e + e^2 - ...) with r the seed and e = v r - 1.
template <int N>
inline Vec<double, N> separate_reciprocal(Vec<double, N> v, const AtanpiDoubleBlock& k) {
  const auto r = reciprocal_seed(v, k.seed);
  const auto high = v & k.seed.upper;  // its product with r is exact
  const auto low = v - high;
  const auto e = (high * r - k.one) + low * r;
  const auto g = (((e - k.one) * e + k.one) * e - k.one) * e;
  return r + g * r;
}
template <int N>
inline Vec<double, N> separate_reciprocal(Vec<double, N> v, const AtanpiDoubleShortBlock& k) {
  const auto r = reciprocal_seed(v, k.seed);
  const auto e = v * r - k.one;
  const auto g = (e - k.one) * e;
  return r + g * r;
}

// ---- Steps that the functions share ------------------------------------------------------------

/// How far a magnitude lies above the smallest that its kernel serves, counted from the most
/// negative integer on: larger than all that is served, too, where it lies below.
template <class T, int N>
inline auto above_smallest(Vec<T, N> magnitude, const RangeRows<T>& range) {
  return bits(magnitude) - range.bias;
}

/// atan a / turn, a >= 0, of half: where a > 1, a quarter of a turn less the arc of 1/a.
template <class V>
inline V half_arc_tangent(V a, const auto& k) {
  const auto big = compare<_CMP_NLE_UQ>(a, k.one);
  const V t = select(big, reciprocal_estimate(a), a);
  const V base = select(big, V(k.quarter_turn), constant<V>(0));
  const V v = select(big, t ^ sign_mask<V>(), a);
  return fma_in_order(v, quartic(t, k), base);
}

// ---- atan --------------------------------------------------------------------------------------

struct Atan {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_datan_data_avx512);
      const V a = magnitude(x);
      const TableReduction r(a, k);
      const V t = quotient_of_significands(r.num, r.den, k);
      const V low = lookup(k.lower, r.j), high = lookup(k.upper, r.j);
      const V base = select(compare<_CMP_GE_OQ>(r.s, k.upper_from), high, low);
      const V z = t * t;
      const V p = fma(z, k.c6, k.c5);
      V b = fma(z, k.c4, k.c3);
      const V y = z * z;
      const V u = z * t;
      const V c = fma(z, k.c2, k.c1);
      b = fma(y, p, b);
      b = fma(b, y, c);
      const V v = fma(b, u, t);
      return with_sign_of(v + select(r.big, V(k.quarter_turn), base), x);
    } else {
      return folded(x, rows(__zorp_datan_native_data));
    }
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_satan_data_avx512);
      const TableReduction r(magnitude(x), k);
      const V t = quotient_of_significands(r.num, r.den);
      const V base = select(r.big, V(k.quarter_turn), lookup(k.table, r.j));
      const V z = t * t;
      V p = fma(z, k.c3, k.c2);
      const V u = z * t;
      p = fma(z, p, k.c1);
      const V v = fma(p, u, t);
      return with_sign_of(v + base, x);
    } else {
      return folded(x, rows(__zorp_satan_native_data));
    }
  }

  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto arc = half_arc_tangent(widen(magnitude(x)), rows(__zorp_hatan_data));
      return flipped_by(narrow(arc), x);
    } else {
      const auto arc = half_arc_tangent(magnitude(x), rows(__zorp_hatan_native_data));
      return flipped_by(arc, x);
    }
  }

 private:
  /// atan a = atan c + atan(num/den): c is the multiple of 1/4 nearest to a, or infinity for large
  /// a. The cap on those keeps the exponent of an infinite one finite.
  template <class V>
  struct TableReduction {
    V s, num, den;
    decltype(bits(V())) j;
    Mask<V::lanes> big;

    template <class Block>
    TableReduction(V a, const Block& k)
        : s(a + k.shifter),  // its unit in the last place is 1/4, its encoding ends in 4 c
          j(bits(s)),
          big(compare<_CMP_GE_OQ>(a, k.limit)) {
      const V c = s - k.shifter;
      num = select(big, V(k.minus_one), a - c);  // the difference is exact
      const V cap = k.cap;
      den = select(big, min(cap, a), fma(c, a, k.one));
    }
  };

  /// With the polynomial in x itself up to 1, in -1/x from there on.
  template <class V>
  static Outcome<V> folded(V x, const auto& k) {
    const auto small = compare<_CMP_LE_OQ>(magnitude(x), k.one);
    const V base = with_sign_of(select(small, constant<V>(0), k.quarter_turn), x);
    const V t = select(small, x, reciprocal(x, k) ^ sign_mask<V>());
    return {fma(two_chains(t * t, k), t, base), classify<infinities>(x)};
  }
};

// ---- atanpi ------------------------------------------------------------------------------------

struct Atanpi {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return folded(x, rows(__zorp_datanpi_data));
    else
      return folded(x, rows(__zorp_datanpi_native_data));
  }
  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return folded(x, rows(__zorp_satanpi_data));
    else
      return folded(x, rows(__zorp_satanpi_native_data));
  }
  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto arc = half_arc_tangent(widen(magnitude(x)), rows(__zorp_hatanpi_data));
      return flipped_by(narrow(arc), x);
    } else {
      const auto arc = half_arc_tangent(magnitude(x), rows(__zorp_hatanpi_native_data));
      return flipped_by(arc, x);
    }
  }

 private:
  template <class V>
  static Outcome<V> folded(V x, const auto& k) {
    const V a = magnitude(x);
    const auto big = compare<_CMP_NLE_UQ>(a, k.one);
    const V num = select(big, V(k.minus_one), a), den = select(big, a, k.one);
    const V base = select(big, V(k.quarter_turn), constant<V>(0));
    const V t = num * separate_reciprocal(den, k);
    const V arc = pi_polynomial(t * t, k) * t + base;
    return {with_sign_of(arc, x), not_less(above_smallest(a, k.range), k.range.limit)};
  }
};

}  // namespace zorp
