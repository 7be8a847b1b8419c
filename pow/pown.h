// pown, rootn: x^n and x^(1/n) for an integer n.
// Kernels: __zorp_z1_{pown,rootn}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// pown multiplies out powers of x by the bits of |n|, if these are few. Where some |n| has more, or
// a power overflows whose reciprocal is wanted, a second path goes by the logarithm in all lanes
// and replaces these. rootn forms 1/n and goes by the logarithm at once. The accurate kernels carry
// the logarithm, the exponent (n or 1/n) and their product in two parts. Logarithm and power come
// from tables, read by gathers, and polynomials; in the short float kernels from polynomials alone.
//
// Where a logarithm has been computed, lanes with zeros, subnormals, infinities, NaNs or a product
// near the ends of the range go to the rare routines, for rootn also negative x with even n.
// Half computes in float.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"
#include "pow/two_parts.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

/// For the products of squares: 1, the bits of |n|, and the bits beyond the first 3, 8, 12.
struct PownSmallBlock {
  Row<double> one_double;
  Row<float> one_float;
  Row<int32_t> bit[12];
  Row<int32_t> beyond_3, beyond_8, beyond_12;

  template <class T>
  const Row<T>& one() const {
    if constexpr (same<T, double>)
      return one_double;
    else
      return one_float;
  }
  template <int count>
  const Row<int32_t>& beyond() const {
    return count == 3 ? beyond_3 : count == 8 ? beyond_8 : beyond_12;
  }
};
struct PownDoubleBlock {
  Table<double, 1025> reciprocals;  // k/(1 + i/1024), rounded
  Table<double, 2050> logs;         // of k over these, to base 2: high part and rest, by turns
  Table<double, 256> powers;        // 2^(j/128): likewise
  Row<double> fraction, one, upper, k, c7, c6, c5, c4, c3, c2, shift, q5, q4, q3, q2, q1, splitter;
  Row<int64_t> index_bits, half_index, upper_half, low, bound, root_bound;
};
struct PownDoubleShortBlock {
  Table<double, 513> logs;     // ln 512/c, c = 512 + i, where this is next to 0, or ln 1024/c
  Table<double, 2048> powers;  // 2^(j/2048), a little reduced
  Row<double> fraction, scaled_one, one, root_two, c3, c2, ln2, log2e, half, shift, step;
  Row<int64_t> first, low, bound;
};
struct PownFloatBlock {
  Table<float, 195> logs;  // -ln r: high part and rest; r: by turns
  Row<float> fraction, one, upper, c4, c3, c2, ln2hi, ln2lo, splitter, log2e, shift, reduce_hi,
      reduce_lo, e5, e4, e3, e2, e1, root_e5, root_e4, root_e3, root_e2, root_e1, root_e0;
  Row<int32_t> index_bits, half_index, near_one, near_one_end, bound, normal, normal_end;
};
struct PownFloatShortBlock {
  Row<float> one, a7, a6, a5, a4, a3, a2, ln2hi, ln2lo, log2e, shift, ln2, e3, e2, e1, e0;
  Row<int32_t> two_thirds, fraction, bound, normal, normal_end;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const PownSmallBlock __zorp_pown_small_data;
extern const PownDoubleBlock __zorp_dpown_data;
extern const PownDoubleShortBlock __zorp_dpown_native_data;
extern const PownFloatBlock __zorp_spown_data;
extern const PownFloatShortBlock __zorp_spown_native_data;
}
#pragma GCC visibility pop

// ---- Steps that the algorithms share -----------------------------------------------------------

/// a x b for high parts whose product is exact.
template <class V>
inline TwoParts<V> product(const TwoParts<V>& a, const TwoParts<V>& b) {
  V low = a.low * b.low;
  low = fma(a.high, b.low, low);
  low = fma(a.low, b.high, low);
  return {a.high * b.high, low};
}

/// x's sign where n is odd.
template <int N>
inline Vec<float, N> odd_sign(Vec<float, N> x, Vec<int32_t, N> n) {
  return x & from_bits<float>(shift_left<31>(n));
}
template <int N>
inline Vec<double, N> odd_sign(Vec<double, N> x, Vec<int32_t, N> n) {
  return x & from_bits<double>(shift_left<63>(zero_extend(n)));
}

/// Zeros, subnormals, infinities and NaNs; in float the largest finite number, too.
template <int N, class Block>
inline Mask<N> not_normal(Vec<double, N> x, const Block&) {
  return classify<0xBF>(x);
}
template <int N, class Block>
inline Mask<N> not_normal(Vec<float, N> x, const Block& k) {
  return not_less(bits(magnitude(x)) - k.normal, k.normal_end);
}

/// The lanes whose product is too large for the exponential, or a NaN.
template <int N>
inline Mask<N> out_of_range(Vec<double, N> product, const Row<int64_t>& bound) {
  return not_less(bits(magnitude(product)), bound);
}
template <int N>
inline Mask<N> out_of_range(Vec<float, N> product, const Row<int32_t>& bound) {
  return greater(bits(magnitude(product)), bound);
}

// ---- Double: 2^(y log2 |x|) --------------------------------------------------------------------

/// log2 |x| = high + low + rest for normal x.
template <class V>
struct DoubleLog2 {
  TwoParts<V> parts;
  V rest;

  DoubleLog2(V x, const PownDoubleBlock& k) {
    const V a = magnitude(x);
    // m = |x| / 2^e is brought next to k, a number of few bits near log2 e, by a short reciprocal.
    // In the upper half of the table e counts from the next power of two.
    const auto rounded = (bits(a) & k.index_bits) + k.half_index;
    const auto i = shift_right<42>(rounded);
    const V r = gather(k.reciprocals.entry, shift_left<3>(i));
    const V log_high = gather(&k.logs.entry[0], shift_left<4>(i));
    const V log_low = gather(&k.logs.entry[1], shift_left<4>(i));
    const V e = add_where(any_common_bit(rounded, k.upper_half), exponent(a), k.one);
    const V m = merge_bits(V(k.fraction), a, k.one);
    const V mh = m & k.upper;
    const V ml = m - mh;
    const V t = m * r;
    const V u = t - k.k;
    V l = fms(mh, r, t);  // u + l = m r - k
    l = fma(r, ml, l);
    const V b = e + log_high;
    const V s1 = b + u;
    const V e1 = (b - s1) + u;
    const V s2 = s1 + l;
    const V e2 = (s1 - s2) + l;
    const V low = (e2 + e1) + log_low;
    const V u2 = u + l;
    V q = fma(u2, k.c7, k.c6);
    q = fma(q, u2, k.c5);
    q = fma(q, u2, k.c4);
    q = fma(u2, q, k.c3);
    q = fma(u2, q, k.c2);
    const V w = fma(q, u2, low);
    const V sum = s2 + w;
    parts.high = sum & k.upper;
    parts.low = sum - parts.high;
    rest = w - (sum - s2);
  }
};

/// p.high + p.low = N + r with N a multiple of 1/128: 2^N is 2^(j/128) times `factor`.
template <class V>
struct DoublePowerSplit {
  V r, factor;
  decltype(bits(V())) offset;  // of entry j

  DoublePowerSplit(const TwoParts<V>& p, const PownDoubleBlock& k) {
    const V shifted = p.high + k.shift;
    r = p.low + (p.high - (shifted - k.shift));
    const auto n = bits(shifted);
    const auto j = n & k.low;
    const V one = k.one;
    factor = from_bits<double>(shift_left<45>(n ^ j) + bits(one));
    offset = shift_left<4>(j);
  }
};

// ---- Short double: e^(y ln |x|) ----------------------------------------------------------------

/// ln |x| for normal x.
template <class V>
inline V short_ln(V x, const PownDoubleShortBlock& k) {
  const V a = magnitude(x);
  const V m = merge_bits(V(k.fraction), a, k.scaled_one);
  const V c = round_scale<0x08>(reciprocal14(m));  // an integer, from 512 to 1024
  const V r = fms(c, m, k.one);
  const V t = gather(k.logs.entry, shift_right<40>(bits(c) - k.first));
  const V e = add_where(compare<_CMP_LE_OQ>(c, k.root_two), exponent(a), k.one);
  const V l = e * k.ln2;
  const V p = fma(r, k.c3, k.c2);
  V z = p * (r * r);
  z = r + z;
  z = z + t;
  return z + l;
}

/// e^p: p log2 e 2^11 = N + f, N an integer, f from 0 to 1. The table's factor spreads the error of
/// 1 + r for e^r.
template <class V>
inline V short_exp(V p, const PownDoubleShortBlock& k) {
  const V w = p * k.log2e;
  const V shifted = (w - k.half) + k.shift;
  const V r = (w - (shifted - k.shift)) * k.step;
  const auto n = bits(shifted);
  const auto j = n & k.low;
  const V t = gather(k.powers.entry, shift_left<3>(j));
  return from_bits<double>(shift_left<41>(n ^ j) + bits(fma(r, t, t)));
}

// ---- Float: e^(y ln |x|) -----------------------------------------------------------------------

/// ln |x| for normal x below the largest number.
template <class V>
inline TwoParts<V> ln(V x, const PownFloatBlock& k) {
  const V a = magnitude(x);
  const auto i = shift_right<17>((bits(a) & k.index_bits) + k.half_index);
  const auto offset = shift_left<3>(i) + shift_left<2>(i);
  const V log_high = gather(&k.logs.entry[0], offset);
  const V log_low = gather(&k.logs.entry[1], offset);
  const V r = gather(&k.logs.entry[2], offset);
  const V e = exponent(a);
  const V m = merge_bits(V(k.fraction), a, k.one);
  const V mh = m & k.upper;
  const V ml = m - mh;
  const V u = fms(mh, r, k.one);  // exact, as mh r is
  const V v = ml * r;
  const V t = u + v;
  V p = fma(t, k.c4, k.c3);
  p = fma(t, p, k.c2);
  p = p * (t * t);
  V high = fma(e, k.ln2hi, u + log_high);  // e ln2hi is exact
  V low = e * k.ln2lo + log_low;
  low = p + low;
  // Next to 1 the logarithm is small, and v belongs to its high part.
  const auto near_one = greater(bits(a) + k.near_one, k.near_one_end);
  high = add_where(near_one, high, v);
  low = add_where(~near_one, low, v);
  const V sum = high + low;
  const V s = sum * k.splitter;
  const V upper = (sum + s) - s;
  return {upper, (high - upper) + low};
}

/// e^(p.high + p.low), by the coefficients for pown or for rootn.
template <bool root, class V>
inline V exp(const TwoParts<V>& p, const PownFloatBlock& k) {
  const V shifted = fma(p.high, k.log2e, k.shift);
  const V n = shifted - k.shift;
  V r = fnma(n, k.reduce_hi, p.high);
  r = fnma(n, k.reduce_lo, r);
  r = r + p.low;
  V e;
  if constexpr (root) {
    e = fma(r, k.root_e5, k.root_e4);
    e = fma(r, e, k.root_e3);
    e = fma(r, e, k.root_e2);
    e = fma(r, e, k.root_e1);
    e = fma(r, e, k.root_e0);
  } else {
    e = fma(r, k.e5, k.e4);
    e = fma(r, e, k.e3);
    e = fma(r, e, k.e2);
    e = fma(e, r, k.e1);
    e = fma(e, r, k.e1);  // the same constant again
  }
  return from_bits<float>(shift_left<23>(bits(shifted)) + bits(e));
}

// ---- Short float -------------------------------------------------------------------------------

template <class V>
inline V short_ln(V x, const PownFloatShortBlock& k) {
  // |x| = 2^e (1 + z) with 1 + z in [2/3, 4/3)
  const auto u = bits(magnitude(x)) - k.two_thirds;
  const V e = to_float(shift_right_signed<23>(u));
  const V z = from_bits<float>((u & k.fraction) + k.two_thirds) - k.one;
  V p = fma(z, k.a7, k.a6);
  p = fma(z, p, k.a5);
  p = fma(p, z, k.a4);
  p = fma(p, z, k.a3);
  p = fma(p, z, k.a2);
  V q = p * z;
  q = fma(q, z, z);
  const V b = fma(e, k.ln2lo, q);
  return fma(e, k.ln2hi, b);  // e ln2hi is exact
}

template <class V>
inline V short_exp(V p, const PownFloatShortBlock& k) {
  const V shifted = fma(p, k.log2e, k.shift);
  const V n = shifted - k.shift;
  const V f = fnma(n, k.ln2, p);
  V e = fma(f, k.e3, k.e2);
  e = fma(e, f, k.e1);
  e = fma(e, f, k.e0);
  return from_bits<float>(shift_left<23>(bits(shifted)) + bits(e));
}

// ---- pown --------------------------------------------------------------------------------------

struct Pown {
  template <class T>
  static constexpr uint64_t filler() {
    return same<T, double>  ? 0x3FF0000000000000
           : same<T, float> ? 0x3F800000
           : same<T, half>  ? 0x3C00
                            : 1;
  }

  template <Tier tier, class T, int N>
  static Outcome<Vec<T, N>> apply(Vec<T, N> x, Vec<int32_t, N> n) {
    if constexpr (same<T, half>) {
      const auto p = power<tier>(widen(x), n);
      return {narrow(p.first), p.special};
    } else {
      return power<tier>(x, n);
    }
  }

 private:
  template <Tier tier, class V>
  static Outcome<V> power(V x, Vec<int32_t, V::lanes> n) {
    using T = typename V::Element;
    constexpr int count = tier == Tier::standard ? 3 : same<T, double> ? 12 : 8;
    const auto& k = rows(__zorp_pown_small_data);
    const V one = k.template one<T>();
    const auto a = absolute(n);
    V p = mul_where(any_common_bit(a, k.bit[0]), one, x);
    V s = x;
    multiply_bits<1, 3>(p, s, a, k);
    // Squares that no lane needs may underflow, which takes the processor long.
    if constexpr (count > 3)
      if (any(any_common_bit(a, k.beyond_3))) multiply_bits<3, 8>(p, s, a, k);
    if constexpr (count > 8)
      if (any(any_common_bit(a, k.beyond_8))) multiply_bits<8, 12>(p, s, a, k);
    const auto negative = is_negative(n);
    const auto larger = any_common_bit(a, k.template beyond<count>());
    const auto missing = larger | (negative & classify<infinities | nans>(p));
    if constexpr (same<T, double> && tier == Tier::standard) {
      if (any(negative)) [[unlikely]]  // a division takes longer than all else here
        p = select(negative, div(one, p), p);
    } else {
      p = select(negative, div(one, p), p);
    }
    Mask<V::lanes> special = {0};
    if (any(missing)) [[unlikely]] {
      const auto second = by_logarithm<tier>(x, n);
      p = select(missing, second.first, p);
      special = second.special;
    }
    return {p, special};
  }

  /// Multiplies p by the powers s^2, s^4, ... for the bits of a in [from, to).
  template <int from, int to, class V, class Bits>
  static void multiply_bits(V& p, V& s, Bits a, const PownSmallBlock& k) {
#pragma GCC unroll 16
    for (int i = from; i < to; ++i) {
      s = s * s;
      p = mul_where(any_common_bit(a, k.bit[i]), p, s);
    }
  }

  template <Tier tier, int N>
  static Outcome<Vec<double, N>> by_logarithm(Vec<double, N> x, Vec<int32_t, N> n) {
    using V = Vec<double, N>;
    const V y = to_double(n);
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dpown_data);
      const DoubleLog2<V> log(x, k);
      const V high = y & k.upper;
      auto p = product({high, y - high}, log.parts);
      p.low = p.low + y * log.rest;
      const DoublePowerSplit<V> s(p, k);
      const V power = gather(k.powers.entry, s.offset) * s.factor;
      V q = fma(s.r, k.q5, k.q4);
      q = fma(s.r, q, k.q3);
      q = fma(s.r, q, k.q2);
      q = fma(s.r, q, k.q1);
      const V result = fma(q, s.r * power, power);
      return {result | odd_sign(x, n), not_normal(x, k) | out_of_range(p.high, k.bound)};
    } else {
      const auto& k = rows(__zorp_dpown_native_data);
      const V p = short_ln(x, k) * y;
      return {short_exp(p, k) | odd_sign(x, n), not_normal(x, k) | out_of_range(p, k.bound)};
    }
  }

  template <Tier tier, int N>
  static Outcome<Vec<float, N>> by_logarithm(Vec<float, N> x, Vec<int32_t, N> n) {
    using V = Vec<float, N>;
    const V y = to_float(n);
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_spown_data);
      const V lost = to_float(n - to_int32(y));  // by the conversion to float
      const V s = y * k.splitter;
      const V high = s - (s - y);
      const auto p = product(ln(x, k), {high, (y - high) + lost});
      return {exp<false>(p, k) | odd_sign(x, n), not_normal(x, k) | out_of_range(p.high, k.bound)};
    } else {
      const auto& k = rows(__zorp_spown_native_data);
      const V p = short_ln(x, k) * y;
      return {short_exp(p, k) | odd_sign(x, n), not_normal(x, k) | out_of_range(p, k.bound)};
    }
  }
};

// ---- rootn -------------------------------------------------------------------------------------

struct Rootn {
  template <class T>
  static constexpr uint64_t filler() {
    return Pown::filler<T>();
  }

  template <Tier tier, class T, int N>
  static Outcome<Vec<T, N>> apply(Vec<T, N> x, Vec<int32_t, N> n) {
    if constexpr (same<T, half>) {
      const auto root = power<Tier::native>(widen(x), n);
      return {narrow(root.first), root.special};
    } else {
      return power<tier>(x, n);
    }
  }

 private:
  template <Tier tier, int N>
  static Outcome<Vec<double, N>> power(Vec<double, N> x, Vec<int32_t, N> n) {
    using V = Vec<double, N>;
    const V nf = to_double(n);
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dpown_data);
      const DoubleLog2<V> log(x, k);
      const auto y = split_inverse(nf, k);
      auto p = product(y, log.parts);
      p.low = p.low + y.high * log.rest;
      const DoublePowerSplit<V> s(p, k);
      const V high = gather(&k.powers.entry[0], s.offset);
      const V low = gather(&k.powers.entry[1], s.offset);
      const V r2 = s.r * s.r;
      const V r4 = r2 * r2;
      V v = (fma(s.r, k.q5, k.q4) * r4) * high + low;
      v = v + (fma(s.r, k.q3, k.q2) * r2) * high;
      v = v + (s.r * k.q1) * high;
      v = v + high;
      return signed_root(v * s.factor, x, n, not_normal(x, k) | out_of_range(p.high, k.root_bound));
    } else {
      const auto& k = rows(__zorp_dpown_native_data);
      const V p = short_ln(x, k) * inverse(nf, k);
      return signed_root(short_exp(p, k), x, n, not_normal(x, k) | out_of_range(p, k.bound));
    }
  }

  template <Tier tier, int N>
  static Outcome<Vec<float, N>> power(Vec<float, N> x, Vec<int32_t, N> n) {
    using V = Vec<float, N>;
    const V nf = to_float(n);
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_spown_data);
      const auto p = product(ln(x, k), split_inverse(nf, k));
      return signed_root(exp<true>(p, k), x, n, not_normal(x, k) | out_of_range(p.high, k.bound));
    } else {
      const auto& k = rows(__zorp_spown_native_data);
      const V p = short_ln(x, k) * inverse(nf, k);
      return signed_root(short_exp(p, k), x, n, not_normal(x, k) | out_of_range(p, k.bound));
    }
  }

  /// 1/n; infinite for n = 0, so that the product is out of range.
  template <class V, class Block>
  static V inverse(V n, const Block& k) {
    const V m = significand<0x00>(n);
    const V estimate = reciprocal14(m);
    const V e = fnma(m, estimate, k.one);
    V correction = estimate;
    if constexpr (same<typename V::Element, double>)
      correction = fma(fma(e, e, e), estimate, estimate);
    return scale(fma(e, correction, estimate), constant<V>(0) - exponent(n));
  }

  /// 1/n in two parts.
  template <class V, class Block>
  static TwoParts<V> split_inverse(V n, const Block& k) {
    const V y = inverse(n, k);
    const V s = y * k.splitter;
    const V high = s - (s - y);
    const V one = k.one;
    const V e = one - n * high;
    return {high, ((one + e) * e) * high};
  }

  /// The root of |x| with x's sign for odd n; there is none of negative x for even n.
  template <class V>
  static Outcome<V> signed_root(V root, V x, Vec<int32_t, V::lanes> n, Mask<V::lanes> special) {
    const V sign = odd_sign(x, n);
    return {root | sign, special | is_negative(bits(x ^ sign))};
  }
};

}  // namespace zorp
