// expm1: e^x - 1.
// Kernels: __zorp_z1_expm1{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// Double and float split x = N ln 2 + R, N = k + j/n, and form S e^R - 1 with S = 2^k 2^(j/n) as
// (S - 1) + S R + S (e^R - 1 - R). For small x the sum cancels, so the default tier keeps R, the
// table and both sums as pairs of a rounded value and what that leaves. Operands near overflow,
// +infinity and NaNs go to the rare routines. Half is computed in float and serves every operand.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct Expm1DoubleBlock {
  Table<double, 16> t, tl;  // 2^(j/16): rounded value, and the rest relative to it
  Row<double> log2e, shift, limit, sign, ln2hi, ln2lo, nmin, rmask;
  Row<double> c8, c7, c6, c5, c4, c3, c2, one, mone;
};
struct Expm1DoubleShortBlock {
  Table<double, 16> t;
  Row<double> log2e, shift, limit, sign, ln2, rmask, c5, c4, c3, c2, one;
};
struct Expm1FloatBlock {
  Table<float, 16> t, tl;
  Row<float> log2e, shift, limit, sign, ln2hi, ln2lo, nmin, rmask, c4, c3, c2, one, mone;
};
struct Expm1FloatShortBlock {
  Table<float, 32> t;
  Row<float> log2e, shift, limit, sign, ln2, rmask, c2, one;
};
struct Expm1HalfBlock {
  Row<float> log2e, nln2, c4, c3, c2, c1, one;
};

/// 2^(j/64) in two parts, the second relative to the first, for the rare routines, entry by entry.
using RelativePowerTable = Table<double, 128>;

#pragma GCC visibility push(hidden)
extern "C" {
extern const Expm1DoubleBlock __zorp_dexpm1_data_avx512;
extern const Expm1DoubleShortBlock __zorp_dexpm1_native_data_avx512;
extern const Expm1FloatBlock __zorp_sexpm1_data_avx512;
extern const Expm1FloatShortBlock __zorp_sexpm1_native_data_avx512;
extern const Expm1HalfBlock __zorp_hexpm1_data;
extern const RelativePowerTable _zixdExpHATab, _qaxdExpHATab;
}
#pragma GCC visibility pop

// ---- expm1 -------------------------------------------------------------------------------------

struct Expm1 {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      return precise(x, rows(__zorp_dexpm1_data_avx512));
    } else {
      return short_form(x, rows(__zorp_dexpm1_native_data_avx512));
    }
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard) {
      return precise(x, rows(__zorp_sexpm1_data_avx512));
    } else {
      return short_form(x, rows(__zorp_sexpm1_native_data_avx512));
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> v) {
    const auto& k = rows(__zorp_hexpm1_data);
    const auto x = widen(v);
    const auto n = round_scale<0x08>(x * k.log2e);  // to the nearest integer
    const auto r = fma(n, k.nln2, x);
    auto p = fma(r, k.c4, k.c3);
    p = fma(p, r, k.c2);
    p = fma(p, r, k.c1);
    const auto q = p * r;
    const Vec<float, N> one = k.one;
    const auto s = scale(one, n);
    const auto m = s - one;
    // Where e^x has become zero or infinite r may be anything, and s - 1 is the result.
    return narrow(select(classify<zeros | 0x08>(s), m, fma(q, s, m)));
  }

 private:
  template <class V, class Block>
  static auto precise(V x, const Block& k) {
    const V t = fma(x, k.log2e, k.shift);
    const V n = t - k.shift;
    const V tl = lookup(k.tl, bits(t));
    // The rest rh + rl.
    const V r0 = fnma(n, k.ln2hi, x);
    V rh = fnma(n, k.ln2lo, r0);
    V rl = fnma(n, k.ln2lo, r0 - rh);
    // 2^nmin is normal and changes nothing beside -1.
    const V s = scale(lookup(k.t, bits(t)), max(n, k.nmin));
    // |r| < 2 has this bit clear: it is set only for x = -infinity, where the rest is a NaN.
    rh = rh & k.rmask;
    rl = rl & k.rmask;
    const V r2 = rh * rh;
    // What e^R 2^(j/16) is beside 1 + rh, relative to the table's entry.
    V l = rl + tl;
    l = fma(rh, tl, l);
    l = fma(r2, polynomial(rh, r2, k), l);
    // h + e = s - 1, the larger magnitude first.
    const V one = k.one, mone = k.mone;
    const V h = s + mone;
    const auto below_one = compare<_CMP_LT_OQ>(s, one);
    const V larger = select(below_one, mone, s), smaller = select(below_one, s, mone);
    const V e = (larger - h) + smaller;
    // g + e2 = h + s rh.
    const V g = fma(rh, s, h);
    const V e2 = fms(s, rh, g - h);
    const V z = fma(s, l, e) + e2;
    return Outcome<V>{(g + z) | (x & k.sign), compare<_CMP_NLT_UQ>(x, k.limit)};
  }

  /// (e^r - 1 - r) / r^2
  template <class V>
  static V polynomial(V r, V r2, const Expm1DoubleBlock& k) {
    const V a = fma(r, k.c8, k.c7);
    V b = fma(r, k.c6, k.c5);
    const V c = fma(r, k.c4, k.c3);
    b = fma(r2, a, b);
    b = fma(b, r2, c);
    return fma(b, r, k.c2);
  }
  template <class V>
  static V polynomial(V r, V, const Expm1FloatBlock& k) {
    const V p = fma(r, k.c4, k.c3);
    return fma(p, r, k.c2);
  }

  template <class V, class Block>
  static auto short_form(V x, const Block& k) {
    const V t = fma(x, k.log2e, k.shift);
    const V n = t - k.shift;
    const V r = fnma(n, k.ln2, x) & k.rmask;
    const V s = scale(lookup(k.t, bits(t)), n);
    const V y = fma(s, short_polynomial(r, k), s - k.one);
    return Outcome<V>{y | (x & k.sign), compare<_CMP_GE_OQ>(x, k.limit)};
  }

  /// e^r - 1
  template <class V>
  static V short_polynomial(V r, const Expm1DoubleShortBlock& k) {
    const V r2 = r * r;
    const V a = fma(r, k.c5, k.c4);
    V b = fma(r, k.c3, k.c2);
    b = fma(r2, a, b);
    return fma(b, r2, r);
  }
  template <class V>
  static V short_polynomial(V r, const Expm1FloatShortBlock& k) {
    return fma(r * r, k.c2, r);
  }
};

}  // namespace zorp
