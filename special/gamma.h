// lgamma, lgammar, tgamma: the logarithm of |gamma(x)|, with the sign of gamma(x) beside it, and
// gamma(x).
// Kernels: __zorp_z1_{lgamma,lgammar,tgamma}{,f,s}{1,2,3,4,8,16,32}.
//
// Lanes are served by scalar routines (lgamma_rare.cpp, tgamma_rare.cpp), all but those of float
// lgamma and lgammar with x in (1, 8192). There the kernel evaluates the polynomial that the
// routine evaluates in extended arithmetic, in double; where the rounding to float is the same for
// all values within the bound of either's errors, it is the routine's result, and elsewhere, once
// in some ten thousand lanes, the routine is asked.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

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

#pragma GCC visibility push(hidden)
extern "C" {
extern const LgammaFloatBlock __zorp_slgamma_data;
}
#pragma GCC visibility pop

// ---- lgamma ------------------------------------------------------------------------------------

struct Lgamma {
  template <class T>
  static constexpr uint64_t filler() {
    return same<T, float> ? 0x40000000 : default_filler<T>();
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
};

struct Lgammar {
  template <class T>
  static constexpr uint64_t filler() {
    return Lgamma::filler<T>();
  }

  /// Where the kernel serves them, gamma(x) is positive.
  template <Tier, int N>
  static auto apply(Vec<float, N> x) {
    using Signs = Vec<int32_t, N>;
    const auto result = Lgamma::apply<Tier::standard>(x);
    return Outcome<Vec<float, N>, Signs>{result.first, constant<Signs>(1), result.special};
  }
};

// ---- tgamma ------------------------------------------------------------------------------------

struct Tgamma {};

}  // namespace zorp
