// div, inv: the quotient a / b and the reciprocal 1 / x.
// Kernels: __zorp_z1_{div,inv}{,f,s}{1,2,3,4,8,16,32}{,_native,_half,_rm}.
//
// Default double and half div, and default half inv, are the processor's division. The others
// begin with its reciprocal estimate and refine it, or don't. Where a quotient is refined, the
// significands alone are divided, numbers in [1, 2) that neither overflow nor underflow on the way;
// one scale by the difference of the exponents rounds the result to its range. Zeros and infinities
// have the significand 1, and infinite exponents that the scale turns into the right result.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct DivFloatShortBlock {
  Row<int32_t> absmask, minnorm, limit;
};
template <class T>
struct InvBlock {
  Row<T> one;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const DivFloatShortBlock __zorp_sdiv_native_data;
extern const InvBlock<double> __zorp_dinv_data_avx512;
extern const InvBlock<float> __zorp_sinv_data_avx512;
}
#pragma GCC visibility pop

// ---- div ---------------------------------------------------------------------------------------

/// Of two NaNs a survives, but in the refined double quotient b.
struct Div {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> a, Vec<double, N> b) {
    if constexpr (tier == Tier::standard) {
      return div(a, b);
    } else {
      const auto one = constant<Vec<double, N>>(0x3FF0000000000000);
      const auto divisor = significand<0x00>(b), dividend = significand<0x00>(a);
      const auto y = reciprocal14(divisor);
      const auto q = dividend * y;
      const auto e = fnma(divisor, q, dividend);
      auto d = fnma(y, divisor, one);
      d = fma(d, d, d);
      const auto z = fma(d, y, y);  // y (1 + d + d^2)
      return scale(fma_in_order(z, e, q), exponent(a) - exponent(b));
    }
  }

  template <Tier tier, int N>
  static auto apply(Vec<float, N> a, Vec<float, N> b) {
    using V = Vec<float, N>;
    if constexpr (tier == Tier::standard) {
      const V divisor = significand<0x00>(b), dividend = significand<0x00>(a);
      const V y = reciprocal14(divisor);
      const V q = mul_in_order(dividend, y);
      const V e = fnma_in_order(q, divisor, dividend);
      return scale(fma_in_order(e, y, q), exponent(a) - exponent(b));
    } else {
      // The estimate is good for 2^-126 <= |b| < 2^126. The difference wraps around below, and
      // without its sign bit it exceeds the limit on both sides.
      const auto& k = rows(__zorp_sdiv_native_data);
      const auto excess = (bits(b) - k.minnorm) & k.absmask;
      return Outcome<V>{a * reciprocal14(b), greater(excess, k.limit)};
    }
  }

  /// In the caller's rounding mode.
  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> a, Vec<half, N> b) {
    return div<Rounding::current>(a, b);
  }
};

// ---- inv ---------------------------------------------------------------------------------------

struct Inv {
  /// One for half, whose division the lanes beyond the width take part in.
  template <class T>
  static constexpr uint64_t filler() {
    return same<T, half> ? 0x3C00 : default_filler<T>();
  }

  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    const auto& k = rows(__zorp_dinv_data_avx512);
    const auto y = reciprocal14(x);
    auto r = refined(x, y, k);
    if constexpr (tier == Tier::standard) r = refined(x, r, k);
    return select(classify<zeros | infinities>(y), y, r);
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    const auto y = reciprocal14(x);
    if constexpr (tier == Tier::standard)
      return select(classify<zeros | infinities>(y), y,
                    refined(x, y, rows(__zorp_sinv_data_avx512)));
    else
      return y;
  }

  /// The default in the caller's rounding mode.
  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard)
      return div<Rounding::current>(constant<Vec<half, N>>(0x3C00), x);
    else
      return reciprocal11(x);
  }

 private:
  /// One Newton step: y (1 + (1 - x y)).
  template <class V, class Block>
  static V refined(V x, V y, const Block& k) {
    return fma(fnma(x, y, k.one), y, y);
  }
};

}  // namespace zorp
