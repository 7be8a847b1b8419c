// pow, powr: x^y; powr knows no negative x.
// Kernels: __zorp_z1_{pow,powr}{,f,s}{1,2,3,4,8,16,32}{,_native,_half,_rm}; pow has no _half, powr
// no _rm.
//
// x^y = 2^(y log2 x). The logarithm is that of a short reciprocal, from a table, and a polynomial;
// the accurate kernels carry it in two parts. Its product with y is cut toward zero, so that it
// stays finite where the power overflows, and what is cut off joins the argument of the
// exponential: a table of 2^(j/n) and a polynomial. The last step scales by 2^floor(product) and
// gives overflow, subnormals and zeros without a test.
//
// The fast path serves positive finite x and finite y. In all other lanes pow and powr differ:
// their rare routines tell how.
#pragma once

#include "log/log_reduction.h"
#include "pow/two_parts.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct PowDoubleBlock {
  Table<double, 32> th, tl;  // the logarithm: high part and rest
  Table<double, 16> power;   // 2^(j/16)
  Row<double> one, three_halves, c1, c2, c9, c8, c7, c6, c5, c4, c3, c2lo, c1lo, shift, range, e6,
      e5, e4, e3, e2, e1;
};
struct PowDoubleShortBlock {
  Table<double, 16> t, power;
  Row<double> one, three_halves, c7, c6, c5, c4, c3, c2, c1, shift, range, e3, e2, e1;
};
struct PowFloatBlock {
  Table<float, 32> th, tl, power, power_low;  // of 2^(j/32) the rest is relative
  Row<float> three_halves, one, c5, c4, c3, c2lo, c1lo, c1, c2, shift, range, e3, e2, e1;
};
struct PowrFloatBlock {
  Table<float, 32> th, tl;
  Table<float, 16> power;
  Row<float> three_halves, one, c5, c4, c3, c2, c1lo, c1, shift, range, e3, e2, e1;
};
struct PowFloatShortBlock {
  Table<float, 16> t, power;
  Row<float> three_quarters, one, c4, c3, c2, c1, shift, range, e2, e1;
};
struct PowHalfBlock {
  Row<float> one, c6, c5, c4, c3, c2, c1;
  Row<half> e3, e2, e1, e0;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const PowDoubleBlock __zorp_dpow_data_avx512;
extern const PowDoubleShortBlock __zorp_dpow_native_data_avx512;
extern const PowFloatBlock __zorp_spow_data_avx512;
extern const PowFloatShortBlock __zorp_spow_native_data_avx512;
extern const PowrFloatBlock __zorp_spowr_data_avx512;
extern const PowHalfBlock __zorp_hpow_data;
}
#pragma GCC visibility pop

// ---- Steps that the algorithms share -----------------------------------------------------------

/// The lanes that the fast path can't serve: all but positive finite x and finite y.
template <class V>
inline Mask<V::lanes> outside_power_domain(V x, V y) {
  return classify<0xDF>(x) | classify<infinities | nans>(y);
}

/// y log: the product of the high part, cut, and the rest.
template <class V>
inline TwoParts<V> cut_product(V y, V log) {
  const V p = mul<rz>(log, y);
  return {p, fms<rz>(log, y, p)};
}
template <class V>
inline TwoParts<V> cut_product(V y, const TwoParts<V>& log) {
  const TwoParts<V> p = cut_product(y, log.high);
  return {p.high, fma<rz>(y, log.low, p.low)};
}

/// t + rest = floor(t) + j/n + r, n being 2^(the immediate's upper four bits); the unit in the last
/// place of k.shift is 1/n, so the low bits of t + k.shift, rounded down, are j.
template <int imm, class V>
struct PowerSplit {
  V r;
  decltype(bits(V())) index;

  template <class Block>
  PowerSplit(V t, V rest, const Block& k) : index(bits(add<rd>(t, k.shift))) {
    // |r| < 2 has the bit clear that k.range clears. It is set only where the power overflows or
    // vanishes, and clearing it keeps the polynomial finite there.
    r = (reduce<imm>(t) + rest) & k.range;
  }
};

/// The rest of float products whose parts are summed to t = p.high + p.low, rounded toward zero.
template <class V>
inline V rest_of_sum(V t, const TwoParts<V>& p) {
  return p.low - (t - p.high);
}

// ---- pow ---------------------------------------------------------------------------------------

struct Pow {
  template <Tier tier, class V>
  static Outcome<V> apply(V x, V y) {
    return {power<tier>(x, y), outside_power_domain(x, y)};
  }

  template <Tier tier, int N>
  static Vec<double, N> power(Vec<double, N> x, Vec<double, N> y) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dpow_data_avx512);
      const auto p = cut_product(y, log2(x, k));
      const PowerSplit<0x41, Vec<double, N>> s(p.high, p.low, k);
      const auto r = s.r;
      const auto a = fma(r, k.e6, k.e5);
      const auto q = r * r;
      auto b = fma(r, k.e4, k.e3);
      const auto u = fma(r, k.e2, k.e1);
      b = fma(q, a, b);
      b = fma(b, q, u);
      const auto t = lookup(k.power, s.index);
      return scale(fma(r * t, b, t), p.high);
    } else {
      const auto& k = rows(__zorp_dpow_native_data_avx512);
      const FineReciprocalReduction<4, Vec<double, N>> l(x, k);
      const auto h = lookup(k.t, l.index) + l.e;
      const auto q = l.r * l.r;
      const auto a = fma(l.r, k.c7, k.c6);
      auto b = fma(l.r, k.c5, k.c4);
      const auto u = fma(l.r, k.c3, k.c2);
      b = fma(q, a, b);
      b = fma(b, q, u);
      const auto log = fma(b, q, fma(l.r, k.c1, h));
      const auto p = cut_product(y, log);
      const PowerSplit<0x41, Vec<double, N>> s(p.high, p.low, k);
      auto e = fma(s.r, k.e3, k.e2);
      e = fma(s.r, e, k.e1);
      const auto t = lookup(k.power, s.index);
      return scale(fma(s.r * t, e, t), p.high);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> power(Vec<float, N> x, Vec<float, N> y) {
    using V = Vec<float, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_spow_data_avx512);
      const auto p = cut_product(y, log2(x, k));
      const V t = add<rz>(p.high, p.low);
      const PowerSplit<0x51, V> s(t, rest_of_sum(t, p), k);
      V e = fma(s.r, k.e3, k.e2);
      e = fma(s.r, e, k.e1);
      e = fma(e, s.r, lookup(k.power_low, s.index));
      const V power = lookup(k.power, s.index);
      return scale(fma(e, power, power), t);
    } else {
      const auto& k = rows(__zorp_spow_native_data_avx512);
      const ReciprocalReduction<5, V> l(x, k);
      V a = fma(l.r, k.c4, k.c3);
      a = fma(a, l.r, k.c2);
      const V b = fma(l.r, a, k.c1);
      const V log = fma<rz>(b, l.r, lookup(k.t, l.index) + l.e);
      const auto p = cut_product(y, log);
      const PowerSplit<0x41, V> s(p.high, p.low, k);
      const V e = fma(s.r, k.e2, k.e1);
      const V t = lookup(k.power, s.index);
      return scale(fma(t * s.r, e, t), p.high);
    }
  }

  /// The logarithm and the product in float, the exponential in half.
  template <Tier, int N>
  static Vec<half, N> power(Vec<half, N> x, Vec<half, N> y) {
    using V = Vec<float, N>;
    const auto& k = rows(__zorp_hpow_data);
    const CentredReduction<V> l(widen(x), k);
    V p = fma(l.z, k.c6, k.c5);
    p = fma(p, l.z, k.c4);
    p = fma(p, l.z, k.c3);
    p = fma(p, l.z, k.c2);
    p = fma(p, l.z, k.c1);
    const V t = widen(y) * fma(p, l.z, l.d);
    // Rounded down, t keeps its floor wherever the power is finite and not zero.
    const auto n = narrow<rd>(t);
    const auto h = narrow(reduce<0x09>(t));  // t - floor(t)
    auto e = fma(h, k.e3, k.e2);
    e = fma(e, h, k.e1);
    e = fma(e, h, k.e0);
    return scale(e, n);
  }

 private:
  /// log2 x. The terms c1 r and c2 r^2 come in as exact pairs: the errors of their additions are
  /// gathered beside the sum.
  template <int N>
  static TwoParts<Vec<double, N>> log2(Vec<double, N> x, const PowDoubleBlock& k) {
    const FineReciprocalReduction<5, Vec<double, N>> l(x, k);
    const auto r = l.r;
    const auto h = lookup(k.th, l.index) + l.e;  // exact
    const auto q = r * r;
    const auto a = fma(r, k.c9, k.c8);
    auto b = fma(r, k.c7, k.c6);
    const auto u = fma(r, k.c5, k.c4);
    const auto s1 = fma(r, k.c1, h);
    const auto v = fma(r, k.c3, k.c2lo);
    auto e1 = fms(r, k.c1, s1 - h);
    e1 = fma(r, k.c1lo, e1);
    const auto ql = fms(r, r, q);  // q + ql = r^2
    b = fma(q, a, b);
    const auto w = fma(ql, k.c2, lookup(k.tl, l.index));
    b = fma(b, q, u);
    const auto s2 = fma(q, k.c2, s1);
    b = fma(b, q, v);
    const auto t2 = s2 - s1;
    b = fma(b, q, w);
    const auto high = s2 + b;
    const auto e = e1 + fms(q, k.c2, t2);
    return {high, (b - (high - s2)) + e};
  }
  template <int N>
  static TwoParts<Vec<float, N>> log2(Vec<float, N> x, const PowFloatBlock& k) {
    using V = Vec<float, N>;
    const FineReciprocalReduction<5, V> l(x, k);
    const V r = l.r;
    const V h = lookup(k.th, l.index) + l.e;
    V a = fma(r, k.c5, k.c4);
    const V q = r * r;
    a = fma(r, a, k.c3);
    const V b = fma(r, a, k.c2lo);
    const V ql = fms(r, r, q);
    const V s1 = fma(r, k.c1, h);
    const V g = fma(r, b, k.c1lo);
    V w = fma(ql, k.c2, lookup(k.tl, l.index));
    const V s2 = fma(q, k.c2, s1);
    w = fma(r, g, w);
    const V e1 = fms(r, k.c1, s1 - h);
    const V high = s2 + w;
    const V e = e1 + fms(q, k.c2, s2 - s1);
    return {high, (w - (high - s2)) + e};
  }
};

// ---- powr --------------------------------------------------------------------------------------

/// Its own is the default float kernel alone, where c2 r^2 is a term of the polynomial like others
/// and 2^(j/16) has one part.
struct Powr {
  template <Tier tier, class V>
  static Outcome<V> apply(V x, V y) {
    if constexpr (same<typename V::Element, float> && tier == Tier::standard)
      return {power(x, y), outside_power_domain(x, y)};
    else
      return Pow::apply<tier>(x, y);
  }

 private:
  template <class V>
  static V power(V x, V y) {
    const auto& k = rows(__zorp_spowr_data_avx512);
    const auto p = cut_product(y, log2(x, k));
    const V t = add<rz>(p.high, p.low);
    const PowerSplit<0x41, V> s(t, rest_of_sum(t, p), k);
    V e = fma(s.r, k.e3, k.e2);
    e = fma(s.r, e, k.e1);
    const V power = lookup(k.power, s.index);
    return scale(fma(power * s.r, e, power), t);
  }

  template <class V>
  static TwoParts<V> log2(V x, const PowrFloatBlock& k) {
    const FineReciprocalReduction<5, V> l(x, k);
    const V h = lookup(k.th, l.index) + l.e;
    V a = fma(l.r, k.c5, k.c4);
    a = fma(l.r, a, k.c3);
    a = fma(l.r, a, k.c2);
    const V s = fma(l.r, k.c1, h);
    V g = fma(l.r, a, k.c1lo);
    g = fma(g, l.r, lookup(k.tl, l.index));
    const V e1 = fms(l.r, k.c1, s - h);
    const V high = s + g;
    return {high, (g - (high - s)) + e1};
  }
};

}  // namespace zorp
