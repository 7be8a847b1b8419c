// exp, exp2, exp10: e^x, 2^x, 10^x.
// Kernels: __zorp_z1_{exp,exp2,exp10}{,f,s}{1,2,3,4,8,16,32}{,_native,_half,_rm}.
//
// x is split into N ln(base 2 logarithm unit) + R with N a multiple of 1/n: b^x = 2^k 2^(j/n) b'^R,
// where k = floor(N), j/n its fraction, 2^(j/n) comes from a table and b'^R from a short
// polynomial. The last step scales by 2^k; all that is special about huge, infinite and NaN
// operands happens in that one operation, so no kernel compares x with anything.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct ExpDoubleBlock {
  Table<double, 8> th, tl;  // 2^(j/8): high part, and the rest relative to it
  Row<double> log2e, shift, ln2hi, ln2lo, rmask, c7, c6, c5, c4, c3, c2, c1;
};
struct ExpDoubleShortBlock {
  Table<double, 8> th;
  Row<double> log2e, shift, ln2hi, rmask, c4, c3, c2, c1, absmask;
};
struct ExpFloatBlock {
  Table<float, 16> tl, th;
  Row<float> log2e, shift, ln2hi, ln2lo, rmask, c3, c2, absmask;
};
struct ExpFloatShortBlock {
  Table<float, 16> th;
  Row<float> log2e, shift, ln2hi, rmask, c1, c0, absmask;
};
struct ExpHalfBlock {
  Row<int16_t> delta;
  Row<half> shift, log2e, nln2hi, ln2lo;
  Table<half, 32> th;
  Row<half> absmask;
};

struct Exp2DoubleBlock {
  Table<double, 16> th, tl;  // here the rest is absolute
  Row<double> c1, c2, c3, c4, c5, c6, shift;
};
struct Exp2DoubleShortBlock {
  Table<double, 16> th;
  Row<double> c1, c2, c3, shift;
};
struct Exp2FloatBlock {
  Table<float, 16> th, tl;
  Row<float> c1, c2, c3, c4, shift;
};
struct Exp2FloatShortBlock {
  Table<float, 16> th;
  Row<float> c1, c2, shift;
};
struct Exp2HalfBlock {
  Row<half> c3, c2, c1, c0;
};

struct Exp10DoubleBlock {
  Table<double, 16> th, tl;
  Row<double> log210, shift, lg2hi, lg2lo, rmask, c6, c5, c4, c3, c2, c1;
};
struct Exp10DoubleShortBlock {
  Table<double, 16> th;
  Row<double> log210, shift, lg2hi, rmask, c3, c2, c1, absmask;
};
struct Exp10FloatBlock {
  Table<float, 32> tl, th;
  Row<float> log210, shift, lg2hi, lg2lo, rmask, c3, c2, c1, absmask;
};
struct Exp10FloatShortBlock {
  Table<float, 16> ta;      // 2^(j/2^14)
  Table<float, 32> tb, tc;  // 2^(j/2^10), 2^(j/2^5)
  Row<float> log210, shift;
};
struct Exp10HalfBlock {
  Row<half> xmin, xmax, shift, log210, log210lo, c4, c3, c2, c1, inf;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const ExpDoubleBlock __zorp_dexp_data_avx512;
extern const ExpDoubleShortBlock __zorp_dexp_native_data_avx512;
extern const ExpFloatBlock __zorp_sexp_data_avx512;
extern const ExpFloatShortBlock __zorp_sexp_native_data_avx512;
extern const ExpHalfBlock __zorp_hexp_data;

extern const Exp2DoubleBlock __zorp_dexp2_data_avx512;
extern const Exp2DoubleShortBlock __zorp_dexp2_native_data_avx512;
extern const Exp2FloatBlock __zorp_sexp2_data_avx512;
extern const Exp2FloatShortBlock __zorp_sexp2_native_data_avx512;
extern const Exp2HalfBlock __zorp_hexp2_data;

extern const Exp10DoubleBlock __zorp_dexp10_data_avx512;
extern const Exp10DoubleShortBlock __zorp_dexp10_native_data_avx512;
extern const Exp10FloatBlock __zorp_sexp10_data_avx512;
extern const Exp10FloatShortBlock __zorp_sexp10_native_data_avx512;
extern const Exp10HalfBlock __zorp_hexp10_data;
}
#pragma GCC visibility pop

// ---- Reductions --------------------------------------------------------------------------------

/// x log2(base) rounded down to a multiple of 1/n: `shift` is so large that the unit in the last
/// place of the sum is 1/n, and the sum stays positive, so rounding toward zero is rounding down.
/// The low bits of t's encoding are j.
template <class V, class R>
struct ShiftReduction {
  V t, n;
  ShiftReduction(V x, const R& logbase, const R& shift)
      : t(fma<rz>(x, logbase, shift)), n(t - shift) {}
};

// ---- exp ---------------------------------------------------------------------------------------

struct Exp {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dexp_data_avx512);
      const ShiftReduction reduced(x, k.log2e, k.shift);
      const auto n = reduced.n;
      auto r = fnma(n, k.ln2hi, x);
      r = fnma(n, k.ln2lo, r);
      // |r| < 2 has this bit clear. It is set only where x is out of range, and clearing it keeps
      // the polynomial finite there.
      r = r & k.rmask;
      const auto th = lookup(k.th, bits(reduced.t));
      auto p = fma(r, k.c7, k.c6);
      p = fma(p, r, k.c5);
      p = fma(p, r, k.c4);
      p = fma(p, r, k.c3);
      p = fma(p, r, k.c2);
      p = fma(p, r, k.c1);
      p = fma(p, r, lookup(k.tl, bits(reduced.t)));
      return scale(fma(p, th, th), n);
    } else {
      const auto& k = rows(__zorp_dexp_native_data_avx512);
      const ShiftReduction reduced(x, k.log2e, k.shift);
      const auto n = reduced.n;
      const auto r = fnma(n, k.ln2hi, x) & k.rmask;
      const auto th = lookup(k.th, bits(reduced.t));
      auto q = fma(r, k.c4, k.c3);
      q = fma(r, q, k.c2);
      const auto u = th * r;
      q = fma(r, q, k.c1);
      return scale(fma(u, q, th) & k.absmask, n);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_sexp_data_avx512);
      const ShiftReduction reduced(x, k.log2e, k.shift);
      const auto n = reduced.n;
      auto r = fnma(n, k.ln2hi, x);
      r = fnma(n, k.ln2lo, r) & k.rmask;
      const auto th = lookup(k.th, bits(reduced.t));
      const auto p = fma(r, k.c3, k.c2);
      const auto s = r * r;
      auto u = lookup(k.tl, bits(reduced.t)) + r;
      u = fma(p, s, u);
      return scale(fma(u, th, th) & k.absmask, n);
    } else {
      const auto& k = rows(__zorp_sexp_native_data_avx512);
      const ShiftReduction reduced(x, k.log2e, k.shift);
      const auto r = fnma(reduced.n, k.ln2hi, x) & k.rmask;
      const auto p = fma(r, k.c1, k.c0) * lookup(k.th, bits(reduced.t));
      return scale(p & k.absmask, reduced.n);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hexp_data);
    // x log2(e) runs from about -25 to 16. The shifter is 48 for positive x and 56 for others, so
    // that t stays in [32, 64), where the unit in the last place is 1/32.
    const auto positive = greater(bits(x), constant<Vec<int16_t, N>>(0));
    const Vec<half, N> shift = k.shift;
    const auto s = from_bits<half>(select(positive, bits(shift) - k.delta, bits(shift)));
    const auto t = fma<rz>(x, k.log2e, s);
    const auto n = t - s;
    auto r = fma(n, k.nln2hi, x);
    r = fma(n, k.ln2lo, r);
    const auto th = lookup(k.th, bits(t));
    return scale(fma(r, th, th) & k.absmask, n);
  }
};

// ---- exp2 --------------------------------------------------------------------------------------

struct Exp2 {
  // The reduction is exact: r = x - floor(16 x) / 16, and the scale takes x itself as exponent.
  template <class V>
  static V rest(V x) {
    return reduce<0x41>(x);
  }
  template <class V, class R>
  static auto index(V x, const R& shift) {
    return bits(add<rd>(x, shift));
  }

  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dexp2_data_avx512);
      const auto j = index(x, k.shift);
      const auto r = rest(x);
      auto p = fma(r, k.c6, k.c5);
      p = fma(p, r, k.c4);
      p = fma(p, r, k.c3);
      p = fma(p, r, k.c2);
      p = fma(p, r, k.c1);
      return finish(x, r, p, lookup(k.th, j), lookup(k.tl, j));
    } else {
      const auto& k = rows(__zorp_dexp2_native_data_avx512);
      const auto th = lookup(k.th, index(x, k.shift));
      const auto r = rest(x);
      auto p = fma(r, k.c3, k.c2);
      p = fma(p, r, k.c1);
      return scale(fma(p, th * r, th), x);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_sexp2_data_avx512);
      const auto j = index(x, k.shift);
      const auto r = rest(x);
      auto p = fma(r, k.c4, k.c3);
      p = fma(p, r, k.c2);
      p = fma(p, r, k.c1);
      return finish(x, r, p, lookup(k.th, j), lookup(k.tl, j));
    } else {
      const auto& k = rows(__zorp_sexp2_native_data_avx512);
      const auto th = lookup(k.th, index(x, k.shift));
      const auto r = rest(x);
      const auto p = fma(r, k.c2, k.c1);
      return scale(fma(p, th * r, th), x);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hexp2_data);
    const auto r = reduce<0x09>(x);  // x - floor(x)
    auto p = fma(r, k.c3, k.c2);
    p = fma(p, r, k.c1);
    p = fma(p, r, k.c0);
    return scale(p, x);
  }

 private:
  /// (th + (th r p + tl)) 2^floor(x)
  template <class V>
  static V finish(V x, V r, V p, V th, V tl) {
    const V u = fma(p, th * r, tl);
    return scale(u + th, x);
  }
};

// ---- exp10 -------------------------------------------------------------------------------------

struct Exp10 {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dexp10_data_avx512);
      const ShiftReduction reduced(x, k.log210, k.shift);
      const auto n = reduced.n;
      auto r = fnma(n, k.lg2hi, x);
      r = fnma(n, k.lg2lo, r) & k.rmask;
      const auto th = lookup(k.th, bits(reduced.t));
      const auto a = fma(r, k.c6, k.c5);
      const auto s = r * r;
      auto b = fma(r, k.c4, k.c3);
      b = fma(s, a, b);
      auto c = fma(r, k.c2, k.c1);
      c = fma(s, b, c);
      const auto d = fma(r, c, lookup(k.tl, bits(reduced.t)));
      return scale(fma(th, d, th), n);
    } else {
      const auto& k = rows(__zorp_dexp10_native_data_avx512);
      const ShiftReduction reduced(x, k.log210, k.shift);
      const auto n = reduced.n;
      const auto r = fnma(n, k.lg2hi, x) & k.rmask;
      const auto th = lookup(k.th, bits(reduced.t));
      const auto p = fma(r, k.c3, k.c2);
      const auto u = th * r;
      const auto q = fma(r, p, k.c1);
      return scale(fma(u, q, th) & k.absmask, n);
    }
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_sexp10_data_avx512);
      const ShiftReduction reduced(x, k.log210, k.shift);
      const auto n = reduced.n;
      auto r = fnma(n, k.lg2hi, x);
      r = fnma(n, k.lg2lo, r) & k.rmask;
      const auto th = lookup(k.th, bits(reduced.t));
      const auto a = fma(r, k.c3, k.c2);
      const auto s = r * r;
      auto b = fma(r, k.c1, lookup(k.tl, bits(reduced.t)));
      b = fma(a, s, b);
      return scale(fma(b, th, th) & k.absmask, n);
    } else {
      // No polynomial: the fraction of x log2(10) is taken to 14 bits, and 2^fraction is the
      // product of three table entries of 4, 5 and 5 bits.
      const auto& k = rows(__zorp_sexp10_native_data_avx512);
      const ShiftReduction reduced(x, k.log210, k.shift);
      const auto j = bits(reduced.t);
      auto p = lookup(k.ta, j) * lookup(k.tb, shift_right<4>(j));
      p = lookup(k.tc, shift_right<9>(j)) * p;
      return scale(p, reduced.n);
    }
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hexp10_data);
    const auto y = max(min(x, k.xmax), k.xmin);  // a NaN gives xmax
    // The unit in the last place of the shifter is 2: t - shift is the even integer n nearest to
    // y log2(10). The shifter's low bits turn into the exponent field of 2^(n/2); 2^n itself would
    // not fit into a half, so it comes in as two factors.
    const auto t = fma(y, k.log210, k.shift);
    const auto e = from_bits<half>(shift_left<10>(bits(t)));
    const auto l = select(compare<_CMP_NLE_UQ>(x, k.inf), x, e);
    const auto n = t - k.shift;
    auto r = fms(y, k.log210, n);
    r = fma(y, k.log210lo, r);
    auto q = fma(r, k.c4, k.c3);
    q = fma(q, r, k.c2);
    q = fma(q, r, k.c1);
    auto u = q * r;
    u = fma(u, e, e);
    return u * l;
  }
};

}  // namespace zorp
