// sinh, cosh: hyperbolic sine and cosine.
// Kernels: __zorp_z1_{sinh,cosh}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// Double and float split |x| = (k + j/n) ln 2 + R and combine, by the addition theorems, the
// hyperbolic values of the first term with short polynomials for sinh R and cosh R. The values
// 2^k 2^(j/n) / 2 and 2^-k 2^(-j/n) / 2 come from table entries by moving k into their exponent
// fields with integer additions. Operands so large that k would leave the field, infinities and
// NaNs go to the rare routines.
// Half forms e^|x| / 2 by a scale and e^-|x| / 2 from its reciprocal, and serves every operand.
#pragma once

#include "frame/gather.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct SinhDoubleBlock {
  Row<double> log2e, ln2hi, ln2lo, sign;
  Table<double, 256> pairs;  // sinh(j ln 2 / 128), 0.5 x 2^(-j/128)
  Row<double> shift;
  Row<int64_t> limit;
  Row<double> c2, c3, c4, c5;
  Row<int64_t> jmask;
};
struct SinhDoubleShortBlock {
  Table<double, 16> tp, tm;  // 0.5 x 2^(j/16), 0.5 x 2^(-j/16)
  Row<double> shift;
  Row<int64_t> limit, jmask;
  Row<double> c2, c3, c4, c5, log2e, ln2hi, ln2lo, sign;
};
struct SinhFloatBlock {
  Row<float> log2e, ln2hi, ln2lo, sign, shift;
  Row<int32_t> limit;
  Row<float> c2, c3, c4, c5, c6, half;
};
struct SinhFloatShortBlock {
  Row<float> log2e, ln2hi, ln2lo, sign, shift;
  Row<int32_t> limit;
  Row<float> c1, c2, c3, c4, half;
};
struct SinhHalfBlock {
  Row<half> absmask;
  Row<float> log2e, shift, ln2, rmask, c3, c2, c1, c0, one, quarter;
};
struct SinhHalfShortBlock {
  Row<half> absmask, log2e, shift, ln2hi, ln2lo, rmask, c3, c2, c1, c0, quarter;
};

struct CoshDoubleBlock {
  Table<double, 16> tp, tm;
  Row<double> shift, c2, c3, c4, c5, c6, c7, log2e, ln2hi, ln2lo;
  Row<int64_t> emask;
  Row<double> sign;
  Row<int64_t> limit;
};
struct CoshDoubleShortBlock {
  Table<double, 16> tp, tm;
  Row<double> shift, c2, c3, c4, c5, log2e, ln2hi, ln2lo;
  Row<int64_t> emask;
  Row<double> sign;
  Row<int64_t> limit;
};
struct CoshFloatBlock {
  Table<float, 32> tp, tm;
  Row<float> shift;
  Row<int32_t> limit;
  Row<float> c2, c3, log2e, ln2hi, ln2lo, sign;
  Row<int32_t> emask;
};
struct CoshFloatShortBlock {
  Table<float, 32> tp, tm;
  Row<float> shift;
  Row<int32_t> limit;
  Row<float> log2e, ln2hi, ln2lo, sign;
  Row<int32_t> emask;
};
struct CoshHalfBlock {
  Row<half> absmask, log2e, shift, ln2hi, ln2lo, c4, c3, c2, one, quarter;
};

/// 2^(j/64) in two parts for the rare routines, entry by entry.
using PowerTable = Table<double, 130>;

#pragma GCC visibility push(hidden)
extern "C" {
extern const SinhDoubleBlock __zorp_dsinh_data;
extern const SinhDoubleShortBlock __zorp_dsinh_native_data;
extern const SinhFloatBlock __zorp_ssinh_data;
extern const SinhFloatShortBlock __zorp_ssinh_native_data;
extern const SinhHalfBlock __zorp_hsinh_data;
extern const SinhHalfShortBlock __zorp_hsinh_native_data;
extern const CoshDoubleBlock __zorp_dcosh_data;
extern const CoshDoubleShortBlock __zorp_dcosh_native_data;
extern const CoshFloatBlock __zorp_scosh_data;
extern const CoshFloatShortBlock __zorp_scosh_native_data;
extern const CoshHalfBlock __zorp_hcosh_data;
extern const PowerTable __dsinh_g_CoutTab, __ssinh_g_CoutTab, __dcosh_g_CoutTab, __scosh_g_CoutTab;
}
#pragma GCC visibility pop

// ---- Steps that the algorithms share -----------------------------------------------------------

/// |x| = N ln 2 + R with N = k + j/n: the unit in the last place of `shift` is 1/n, so t's
/// encoding ends in k and j.
template <class V>
struct HyperbolicSplit {
  V sign, a, r;
  decltype(bits(V())) t;

  template <class Block>
  HyperbolicSplit(V x, const Block& k) : sign(x & k.sign), a(x ^ sign) {
    const V shifted = fma(a, k.log2e, k.shift);
    const V n = shifted - k.shift;
    r = fnma(n, k.ln2hi, a);
    r = fnma(n, k.ln2lo, r);
    t = bits(shifted);
  }
};

/// v x 2^k and v x 2^-k, with k in the exponent field of e.
template <class T, int N>
inline Vec<T, N> raise(Vec<T, N> v, Vec<Encoding<T>, N> e) {
  return from_bits<T>(bits(v) + e);
}
template <class T, int N>
inline Vec<T, N> lower(Vec<T, N> v, Vec<Encoding<T>, N> e) {
  return from_bits<T>(bits(v) - e);
}

// ---- sinh --------------------------------------------------------------------------------------

struct Sinh {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dsinh_data);
      const HyperbolicSplit split(x, k);
      const auto r = split.r;
      const auto j = split.t & k.jmask;
      const auto e = shift_left<45>(split.t ^ j);
      const auto offset = shift_left<4>(j);
      const auto [ta, tb] = gather_pairs(k.pairs.entry, offset);
      const auto s = r * r;
      // With 2^k and 2^-k: sh = sinh((k + j/128) ln 2), ch = cosh of the same.
      const auto a = raise(ta, e), b = raise(tb, e), c = lower(tb, e);
      const auto sh = a + (b - c);
      const auto ch = a + (b + c);
      auto u = fma(s, k.c5, k.c3) * s;
      u = fma(u, r, r);  // sinh r
      auto v = fma(s, k.c4, k.c2) * s;
      v = v * sh;
      const auto w = fma(ch, u, v) + sh;
      return Outcome<Vec<double, N>>{w | split.sign, greater(bits(split.a), k.limit)};
    } else {
      const auto& k = rows(__zorp_dsinh_native_data);
      const HyperbolicSplit split(x, k);
      const auto r = split.r;
      const auto e = shift_left<48>(split.t ^ (split.t & k.jmask));
      const auto p = raise(lookup(k.tp, split.t), e), m = lower(lookup(k.tm, split.t), e);
      const auto ch = p + m, sh = p - m;
      const auto s = r * r;
      auto u = fma(s, k.c5, k.c3) * s;
      auto v = fma(s, k.c4, k.c2) * s;
      u = fma(u, r, r);
      v = fma(v, sh, sh);
      const auto w = fma(ch, u, v);
      return Outcome<Vec<double, N>>{w | split.sign, greater(bits(split.a), k.limit)};
    }
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_ssinh_data);
      const HyperbolicSplit split(x, k);
      const auto r = split.r;
      const auto [ch, sh] = whole_powers(split.t, k);
      const auto s = r * r;
      auto u = fma(s, k.c5, k.c3) * s;
      u = fma(u, r, r);
      auto p = fma(s, k.c6, k.c4);
      p = fma(p, s, k.c2);
      const auto v = p * s * sh;
      const auto w = fma(ch, u, v) + sh;
      return Outcome<Vec<float, N>>{w | split.sign, greater(bits(split.a), k.limit)};
    } else {
      const auto& k = rows(__zorp_ssinh_native_data);
      const HyperbolicSplit split(x, k);
      const auto r = split.r;
      const auto [ch, sh] = whole_powers(split.t, k);
      const auto s = r * r;
      const auto u = fma(s, k.c3, k.c1) * ch;
      auto v = fma(s, k.c4, k.c2) * sh;
      v = fma(v, r, u);
      const auto w = fma(v, r, sh);
      return Outcome<Vec<float, N>>{w | split.sign, greater(bits(split.a), k.limit)};
    }
  }

  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_hsinh_data);
      const auto magnitude = x & k.absmask;
      const auto a = widen(magnitude);
      const auto n = fma<rz>(a, k.log2e, k.shift) - k.shift;
      const auto r = fnma(n, k.ln2, a) & k.rmask;
      const auto p = rising(r, k), m = falling(r, k);
      const Vec<float, N> one = k.one;
      const auto b = scale(one, n - k.c0);  // c0 is just below 1: 2^(n-1)
      const auto w = combine(p, m, r, b, reciprocal14(b), k);
      return x ^ magnitude ^ narrow(w);
    } else {
      const auto& k = rows(__zorp_hsinh_native_data);
      const auto a = x & k.absmask;
      const auto n = fma<rz>(a, k.log2e, k.shift) - k.shift;
      auto r = fnma(n, k.ln2hi, a);
      r = fnma(n, k.ln2lo, r) & k.rmask;
      const auto p = rising(r, k), m = falling(r, k);
      const Vec<half, N> one = k.c0;
      const auto b = scale(one, n - k.c0);
      return x ^ a ^ combine(p, m, r, b, reciprocal11(b), k);
    }
  }

 private:
  template <class V>
  struct CoshSinh {
    V ch, sh;
  };
  /// cosh and sinh of k ln 2, for n = 1.
  template <int N, class Block>
  static CoshSinh<Vec<float, N>> whole_powers(Vec<int32_t, N> t, const Block& k) {
    const auto e = shift_left<23>(t);
    const Vec<float, N> one_half = k.half;
    const auto p = raise(one_half, e), m = lower(one_half, e);
    return {p + m, p - m};
  }

  /// (e^r - 1) / r and (1 - e^-r) / r.
  template <class V, class Block>
  static V rising(V r, const Block& k) {
    V p = fma(r, k.c3, k.c2);
    p = fma(p, r, k.c1);
    return fma(p, r, k.c0);
  }
  template <class V, class Block>
  static V falling(V r, const Block& k) {
    V m = fnma(r, k.c3, k.c2);
    m = fnma(m, r, k.c1);
    return fnma(m, r, k.c0);
  }
  /// With b = 2^(n-1) and i = 1/b: b e^r - e^-r i/4, in the form b r p + i r m / 4 + (b - i/4).
  template <class V, class Block>
  static V combine(V p, V m, V r, V b, V i, const Block& k) {
    const V u = b * r;
    V w = m * (i * r);
    const V h = fnma(i, k.quarter, b);
    w = w * k.quarter;
    w = fma(p, u, w);
    w = w + h;
    return select(classify<0x08>(b), b, w);
  }
};

// ---- cosh --------------------------------------------------------------------------------------

struct Cosh {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    const auto& k = [&]() -> const auto& {
      if constexpr (tier == Tier::standard)
        return rows(__zorp_dcosh_data);
      else
        return rows(__zorp_dcosh_native_data);
    }
    ();
    const HyperbolicSplit split(x, k);
    const auto r = split.r;
    const auto e = shift_left<48>(split.t) & k.emask;
    const auto p = raise(lookup(k.tp, split.t), e), m = lower(lookup(k.tm, split.t), e);
    const auto sh = p - m, ch = p + m;
    const auto s = r * r;
    Vec<double, N> q, c;
    if constexpr (tier == Tier::standard) {
      q = fma(s, k.c7, k.c5);
      q = fma(q, s, k.c3);
      c = fma(s, k.c6, k.c4);
      c = fma(c, s, k.c2);
    } else {
      q = fma(s, k.c5, k.c3);
      c = fma(s, k.c4, k.c2);
    }
    auto u = q * s;
    auto v = c * s;
    u = fma(u, r, r);
    v = fma(v, ch, ch);
    return Outcome<Vec<double, N>>{fma(sh, u, v), greater(bits(split.a), k.limit)};
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_scosh_data);
      const HyperbolicSplit split(x, k);
      const auto r = split.r;
      const auto [ch, sh] = powers(split.t, k);
      const auto s = r * r;
      auto u = s * k.c3;
      u = fma(u, r, r);
      auto v = s * k.c2;
      v = fma(v, ch, ch);
      return Outcome<Vec<float, N>>{fma(sh, u, v), not_less(bits(split.a), k.limit)};
    } else {
      const auto& k = rows(__zorp_scosh_native_data);
      const HyperbolicSplit split(x, k);
      const auto [ch, sh] = powers(split.t, k);
      return Outcome<Vec<float, N>>{fma(split.r, sh, ch), not_less(bits(split.a), k.limit)};
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hcosh_data);
    const auto a = x & k.absmask;
    const auto n = fma<rz>(a, k.log2e, k.shift) - k.shift;
    auto r = fnma(n, k.ln2hi, a);
    r = fnma(n, k.ln2lo, r);
    auto q = fma(r, k.c4, k.c3);
    q = fma(q, r, k.c2);
    q = fma(q, r, k.one);
    q = fma(q, r, k.one);
    const auto v = scale(q, n - k.one);  // e^|x| / 2
    return fma(reciprocal11(v), k.quarter, v);
  }

 private:
  template <class V>
  struct CoshSinh {
    V ch, sh;
  };
  template <int N, class Block>
  static CoshSinh<Vec<float, N>> powers(Vec<int32_t, N> t, const Block& k) {
    const auto e = shift_left<18>(t) & k.emask;
    const auto p = raise(lookup(k.tp, t), e), m = lower(lookup(k.tm, t), e);
    return {p + m, p - m};
  }
};

}  // namespace zorp
