// log1p: log(1 + x), with the relative precision of x near zero.
// Kernels: __zorp_z1_log1p{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// 1 + x is formed as the rounded sum s and what s leaves; the reduction of the logarithm works on
// s, and the rest, scaled like the significand of s, joins the reduced argument. The sign of x goes
// onto the result: it is there already, but for x = -0.
//
// Double and float hand x <= -1, infinities and NaNs to the rare routines (double _native serves
// +infinity, float _native hands over all x from 2^127). Half serves every operand.
#pragma once

#include "frame/conversions.h"
#include "log/log_reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct Log1pDoubleBlock {
  Table<double, 16> th, tl;  // -log c: high part and rest
  Row<double> one, sign, three_quarters, c9, c8, c7, c6, c5, c4, c3, c2, ln2hi, ln2lo;
};
struct Log1pDoubleShortBlock {
  Table<double, 16> t;
  Row<double> one, sign, three_quarters, a5, a4, a3, a2, ln2;
};
struct Log1pFloatBlock {
  Table<float, 32> th, tl;  // -log c, c in [1/2, 1): high part and rest
  Row<float> one, sign, c4, c3, c2, ln2hi, ln2lo;
};
struct Log1pFloatShortBlock {
  Row<float> absmask, one, a2, a3, a4, a5;
  Row<int32_t> range_add, range_bound, centre, fraction;
  Row<float> ln2;
};
struct Log1pHalfBlock {
  Row<half> one, lmask, c5, c4, c3, c2, c1, ln2;
};

/// For the rare routine: r = 1 / (1 + i/64), rounded, and -log r in two parts, entry by entry.
using LogTripleTable = Table<float, 195>;

#pragma GCC visibility push(hidden)
extern "C" {
extern const Log1pDoubleBlock __zorp_dlog1p_data_avx512;
extern const Log1pDoubleShortBlock __zorp_dlog1p_native_data_avx512;
extern const Log1pFloatBlock __zorp_slog1p_data_avx512;
extern const Log1pFloatShortBlock __zorp_slog1p_native_data;
extern const Log1pHalfBlock __zorp_hlog1p_data;
extern const LogTripleTable __slog1p_g_CoutTab;
}
#pragma GCC visibility pop

struct Log1p {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dlog1p_data_avx512);
      const ScaledSum<V> sum(x, k);
      const ReciprocalReduction<5, V> a(sum.s, k);
      const V l = a.c * sum.l;
      const V r = a.r + l;
      const V rest = l - (r - a.r);
      const V w = lookup(k.tl, a.index) + rest;
      const V h = fma(a.e, k.ln2hi, lookup(k.th, a.index));  // exact
      const V s = h + r;
      const V q = r * r;
      const V g = fma(r, k.c9, k.c8);
      V d = fma(r, k.c7, k.c6);
      d = fma(q, g, d);
      const V p = fma(r, k.c5, k.c4);
      V v = fma(r, k.c3, k.c2);
      v = fma(q, p, v);
      v = fma(d, q * q, v);
      const V u = r - (s - h);
      v = fma(v, q, u);
      v = v + fma(a.e, k.ln2lo, w);
      // A zero, negative, infinite or NaN sum has made u a NaN.
      return Outcome<V>{ternary_logic<or_masked>(s + v, x, k.sign), compare<_CMP_UNORD_Q>(u, u)};
    } else {
      const auto& k = rows(__zorp_dlog1p_native_data_avx512);
      const ScaledSum<V> sum(x, k);
      const ReciprocalReduction<5, V> a(sum.s, k);
      const V r = fma(a.c, sum.l, a.r);
      const V p = fma(r, k.a5, k.a4);
      const V q = r * r;
      V v = fma(r, k.a3, k.a2);
      v = fma(p, q, v);
      v = fma(v, q, r);
      v = lookup(k.t, a.index) + v;
      v = fma(a.e, k.ln2, v);
      // For a zero, negative or NaN sum r is a NaN; at +infinity the scale has turned a NaN into 0.
      return Outcome<V>{ternary_logic<or_masked>(v, x, k.sign), compare<_CMP_UNORD_Q>(r, r)};
    }
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_slog1p_data_avx512);
      const ScaledSum<V> sum(x, k);
      const V m = significand<0x08>(sum.s);
      const V c = round_scale<0x68>(reciprocal14(m));  // in [1/2, 1], in units of 2^-6
      const V r0 = fms(m, c, k.one);                   // exact
      const V l = c * sum.l;
      const V r = r0 + l;
      const V rest = l - (r - r0);
      // The table takes c for a number in [1/2, 1): c = 1 counts into the next binade.
      const V e = exponent(sum.s) - k.one - exponent(c);
      const auto j = shift_right<18>(bits(c));
      const V w = lookup(k.tl, j) + rest;
      const V h = fma(e, k.ln2hi, lookup(k.th, j));  // exact
      const V s = h + r;
      V p = fma(r, k.c4, k.c3);
      p = fma(r, p, k.c2);
      const V v = fma(r * r, p, fma(e, k.ln2lo, w));
      const V u = r - (s - h);
      return Outcome<V>{ternary_logic<or_masked>(s + (v + u), x, k.sign),
                        compare<_CMP_UNORD_Q>(u, u)};
    } else {
      using Integers = Vec<int32_t, N>;
      const auto& k = rows(__zorp_slog1p_native_data);
      const V one = k.one;
      const V larger = max(one, x), smaller = min(one, x);
      const V s = larger + smaller;
      const V l = (larger - s) + smaller;
      // Less than 2^-126 or from 2^127 up, where the addition carries into the sign.
      const auto special = greater(Integers(k.range_bound), bits(s) + k.range_add);
      // s = 2^n f, f in [2/3, 4/3): n stands in the exponent field of u.
      const Integers u = bits(s) - k.centre;
      const Integers fraction = u & k.fraction;
      const V f = from_bits<float>(fraction + k.centre);
      const V n = to_float(shift_right_signed<23>(u));
      const V power = from_bits<float>(bits(one) - (u - fraction));  // 2^-n
      const V z = (f - one) + l * power;
      V p = fma(z, k.a5, k.a4);
      p = fma(p, z, k.a3);
      p = fma(p, z, k.a2);
      const V q = fma(p * z, z, z);
      return Outcome<V>{ternary_logic<or_outside>(fma(n, k.ln2, q), x, k.absmask), special};
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    using V = Vec<half, N>;
    const auto& k = rows(__zorp_hlog1p_data);
    const V s = x + k.one;
    const V m = significand<0x0B>(s);
    const V n = exponent(m) - exponent(s);
    const V z = m - k.one;  // exact
    // At x = -1 the scale gives a NaN; without its top exponent bit that is a small number.
    const V l = scale(min(x, k.one) - (s - max(x, k.one)), n) & k.lmask;
    V p = fma(z, k.c5, k.c4);
    const V r = z + l;
    p = fma(p, r, k.c3);
    p = fma(p, r, k.c2);
    p = fma(p, r, k.c1);
    const V q = fma(p, r, r);
    return select(classify<zeros | 0x08>(x), x, fnma(n, k.ln2, q));
  }

 private:
  // Truth tables of a | (b & c) and a | (b & ~c).
  static constexpr int or_masked = 0xF8, or_outside = 0xF4;

  /// s = 1 + x, rounded, and what s leaves, exactly, as l times the power of two in s.
  template <class V>
  struct ScaledSum {
    V s, l;

    template <class Block>
    ScaledSum(V x, const Block& k) {
      const V one = k.one;
      s = one + x;
      l = scale(min(one, x) - (s - max(one, x)), exponent(s) ^ k.sign);
    }
  };
};

}  // namespace zorp
