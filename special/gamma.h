// lgamma, lgammar, tgamma: the logarithm of |gamma(x)|, with the sign of gamma(x) beside it, and
// gamma(x).
// Kernels: __zorp_z1_{lgamma,lgammar,tgamma}{,f,s}{1,2,3,4,8,16,32}.
//
// Lanes are served by scalar routines (lgamma_rare.cpp, tgamma_rare.cpp), all but those of lgamma
// and lgammar with x in [0.875, 512), in float and half in (1, 8192). There the kernel evaluates
// the polynomial that the routine evaluates in extended arithmetic: for float in double, for double
// in two doubles as far as its terms count. Where all values within the bound of either's errors
// round to the same result, it is the routine's; elsewhere, once in some ten thousand lanes of
// float and in 30 of double, the routine is asked.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"
#include "log/log_reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

/// Entries by range: 0 for [2, 4), where the polynomial gives log gamma(x) / (x - 2); 1 to 11 for
/// [4, 8) to [4096, 8192); 12 to 15 for the quarters of [1, 2), whose encodings' bits these are.
struct LgammaFloatBlock {
  Table<double, 16> scale, offset;  // the polynomial's variable is scale x + offset
  Table<double, 16> error;          // bound of what its value is off
  Table<double, 16> c[11];          // from the constant term up
  Row<double> one, two, end;
  Row<int64_t> exponent_1;
};

/// Entries by range: 0 for [1.75, 2.25), 1 to 4 for the quarters of [2.25, 4), 5 to 11 for [4, 8)
/// to [256, 512), 12 to 15 for [0.875, 1), [1, 1.25), [1.25, 1.5), [1.5, 1.75).
struct LgammaDoubleBlock {
  static constexpr int degree = 22, split_terms = 4;
  Table<double, 16> scale, offset;                // the polynomial's variable, exact
  Table<double, 16> factor_scale, factor_offset;  // what its value is multiplied by: x minus a zero
  Table<double, 16> error;                        // bound of the relative error
  Table<double, 16> high[split_terms], low[split_terms];  // from the constant term up
  Table<double, 16> tail[degree + 1 - split_terms];
  Row<double> start, quarter, four, end;
  Row<int64_t> next_index;
  // The logarithm, and where the polynomials don't serve.
  Table<double, 16> ln_high, ln_low;
  Row<double> log_c[12], ln2hi, ln2lo, three_quarters, one, least, largest, log_error,
      log_relative_error, half, half_log_2pi, one_12th, one_360th, stirling_error;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const LgammaDoubleBlock __zorp_dlgamma_data;
extern const LgammaFloatBlock __zorp_slgamma_data;
}
#pragma GCC visibility pop

// ---- lgamma ------------------------------------------------------------------------------------

struct Lgamma {
  template <class T>
  static constexpr uint64_t filler() {
    return same<T, double> ? 0x4000000000000000 : same<T, float> ? 0x40000000 : 0x4000;  // 2
  }

  template <Tier, int N>
  static Outcome<Vec<double, N>> apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    if constexpr (V::paired) {
      const auto low = apply<Tier::standard>(x.lo), high = apply<Tier::standard>(x.hi);
      return {V(low.first, high.first), join(low.special, high.special)};
    } else {
      return in_two_doubles(x, rows(__zorp_dlgamma_data));
    }
  }

  template <Tier, int N>
  static Outcome<Vec<float, N>> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    if constexpr (V::paired) {
      const auto low = apply<Tier::standard>(x.lo), high = apply<Tier::standard>(x.hi);
      return {V(low.first, high.first), join(low.special, high.special)};
    } else {
      return in_double(to_double(x), rows(__zorp_slgamma_data));
    }
  }

  template <Tier tier, int N>
  static Outcome<Vec<half, N>> apply(Vec<half, N> x) {
    const auto result = apply<tier>(widen(x));
    return {narrow(result.first), result.special};
  }

 private:
  template <int N>
  static Outcome<Vec<float, N>> in_double(Vec<double, N> x, const LgammaFloatBlock& k) {
    using V = Vec<double, N>;
    const auto served = compare<_CMP_GT_OQ>(x, k.one) & compare<_CMP_LT_OQ>(x, k.end);
    const auto index = select(compare<_CMP_LT_OQ>(x, k.two), shift_right<50>(bits(x)),
                              shift_right<52>(bits(x)) - k.exponent_1);
    const V u = fma(x, lookup(k.scale, index), lookup(k.offset, index));
    V p = lookup(k.c[10], index);
#pragma GCC unroll 16
    for (int i = 9; i >= 0; --i) p = fma(p, u, lookup(k.c[i], index));
    V error = lookup(k.error, index);
    const auto from_2 = equal(index, constant<Vec<int64_t, N>>(0));
    const V factor = x - k.two;  // exact
    p = mul_where(from_2, p, factor);
    error = mul_where(from_2, error, magnitude(factor));
    const auto least = to_float(p - error), most = to_float(p + error);
    const auto safe = equal(bits(least), bits(most));
    return {most, ~(served & safe)};
  }

  template <int N>
  static Outcome<Vec<double, N>> in_two_doubles(Vec<double, N> x, const LgammaDoubleBlock& k) {
    const auto near = is_near(x, k);
    auto result = rounded(by_range<false>(x, x, k), near);
    if (any(result.special)) [[unlikely]] {
      if (any(~near)) {
        result.first = select(near, result.first, elsewhere(x));
        result.special = result.special & (near | classify<nans>(result.first));
      }
      return result;
    }
    return {result.first, {0}};
  }

  /// Whether a polynomial serves.
  template <class V>
  static Mask<V::lanes> is_near(V x, const LgammaDoubleBlock& k) {
    return compare<_CMP_GE_OQ>(x, k.start) & compare<_CMP_LT_OQ>(x, k.end);
  }

  /// A sum of two doubles and a bound of what it and the routine's result are apart.
  template <class V>
  struct Parts {
    V high, low, error;
  };

  template <class V>
  [[gnu::always_inline]] static Outcome<V> rounded(const Parts<V>& value, Mask<V::lanes> served) {
    const V least = value.high + (value.low - value.error);
    const V most = value.high + (value.low + value.error);
    return {most, ~(served & equal(bits(least), bits(most)))};
  }

  /// By the polynomials: for x in [0.875, 512), or for x + rest with a rest far below x.
  template <bool has_rest, class V>
  [[gnu::always_inline]] static Parts<V> by_range(V x, V rest, const LgammaDoubleBlock& k) {
    const auto index = select(compare<_CMP_LT_OQ>(x, k.four), shift_right<50>(bits(x + k.quarter)),
                              shift_right<52>(bits(x)) + k.next_index);
    const V u = fma(x, lookup(k.scale, index), lookup(k.offset, index));

    const V square = u * u;
    constexpr int last = LgammaDoubleBlock::degree - LgammaDoubleBlock::split_terms;
    static_assert(last % 2 == 0);
    V even = lookup(k.tail[last], index), odd = lookup(k.tail[last - 1], index);
#pragma GCC unroll 16
    for (int i = last - 2; i > 0; i -= 2) {
      even = fma(even, square, lookup(k.tail[i], index));
      odd = fma(odd, square, lookup(k.tail[i - 1], index));
    }
    even = fma(even, square, lookup(k.tail[0], index));
    V high = fma(odd, u, even), low = high, slope = high;
#pragma GCC unroll 8
    for (int i = LgammaDoubleBlock::split_terms - 1; i >= 0; --i) {
      const V c = lookup(k.high[i], index), p = high;
      if constexpr (has_rest) slope = i == 3 ? p : fma(slope, u, p);
      V error;
      if (i > 1) {  // the product is less than half of c: their sum minus c is exact
        high = fma(u, p, c);
        error = fma(u, p, c - high);
      } else {
        const V product = u * p;
        high = c + product;
        error = ((c - high) + product) + fms(u, p, product);
      }
      error = error + lookup(k.low[i], index);
      low = i == LgammaDoubleBlock::split_terms - 1 ? error : fma(u, low, error);
    }

    const V factor_scale = lookup(k.factor_scale, index);
    const V factor = fma(x, factor_scale, lookup(k.factor_offset, index));
    const V value = factor * high;
    V value_low = fma(factor, low, fms(factor, high, value));
    if constexpr (has_rest)
      value_low = fma(fma(slope, factor, factor_scale * high), rest, value_low);
    return {value, value_low, lookup(k.error, index) * magnitude(value)};
  }

  /// log x.
  template <class V>
  static Parts<V> log_parts(V x, const LgammaDoubleBlock& k) {
    const ReciprocalReduction<5, V> a(x, k);
    const V h = fma(a.e, k.ln2hi, lookup(k.ln_high, a.index));  // exact
    const V high = h + a.r;
    V p = fma(a.r, k.log_c[11], k.log_c[10]);
#pragma GCC unroll 16
    for (int i = 9; i >= 0; --i) p = fma(p, a.r, k.log_c[i]);
    const V low = fma(a.e, k.ln2lo, lookup(k.ln_low, a.index));
    return {high, fma(p, a.r * a.r, (a.r + (h - high)) + low),
            fma(magnitude(high), k.log_relative_error, k.log_error)};
  }

  /// Positive x below 0.875, by gamma(x + 1) = x gamma(x), and from 512 on, by Stirling's series. A
  /// NaN where the routine is to be asked.
  template <class V>
  [[gnu::noinline]] static V elsewhere(V x) {
    const auto& k = rows(__zorp_dlgamma_data);
    const auto small = compare<_CMP_LT_OQ>(x, k.start);
    const V z = add_where(small, x, k.one);
    const V rest = select(small, x - (z - k.one), constant<V>(0));
    const Parts<V> at_z = by_range<true>(z, rest, k);
    const Parts<V> log = log_parts(x, k);

    const V below = at_z.high - log.high, part = below - at_z.high;
    const V below_error = (at_z.high - (below - part)) - (log.high + part);
    const V below_low = below_error + (at_z.low - log.low);
    const V below_bound = at_z.error + log.error;

    // x (log x - 1) - log x / 2 + log(2 pi) / 2 + 1 / (12 x) - 1 / (360 x^3)
    const V log_less_1 = log.high - k.one;  // exact
    const V above = x * log_less_1;
    const V estimate = reciprocal14(x), e = fnma(x, estimate, k.one);
    const V r = fma(fma(e, e, e), estimate, estimate);
    const V added = fma(r, fnma(r * r, k.one_360th, k.one_12th),
                        fnma(log.high + log.low, k.half, k.half_log_2pi));
    const V above_low = fma(x, log.low, fms(x, log_less_1, above)) + added;
    const V above_bound = above * k.stirling_error;

    const Parts<V> value = {select(small, below, above), select(small, below_low, above_low),
                            select(small, below_bound, above_bound)};
    const auto served = compare<_CMP_GE_OQ>(x, k.least) & compare<_CMP_LT_OQ>(x, k.largest);
    const auto result = rounded(value, served);
    return select(result.special, constant<V>(0x7FF8000000000000), result.first);
  }
};

struct Lgammar {
  template <class T>
  static constexpr uint64_t filler() {
    return Lgamma::filler<T>();
  }

  /// gamma(x) is positive where the kernel serves x.
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    using Signs = Vec<int32_t, N>;
    auto result = Lgamma::apply<Tier::standard>(x);
    return Outcome<Vec<T, N>, Signs>{result.first, constant<Signs>(1), result.special};
  }
};

// ---- tgamma ------------------------------------------------------------------------------------

struct Tgamma {};

}  // namespace zorp
