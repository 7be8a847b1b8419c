// Kernels that prove the boundary forms which no family of the library uses yet: register pairs in
// and out with a callout behind them, an integer operand beside elements, and kernels whose lanes
// all go through the rare routine. Each borrows the name, and so the form, of a family that is
// still to come; what it computes is made up and easily checked.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

/// 2 x and x / 2; in double, infinities and NaNs call out.
struct Sincosreg {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    auto twice = x + x;
    auto one_half = scale(x, minus_one<Vec<T, N>>());
    if constexpr (same<T, double>)
      return Outcome<Vec<T, N>, Vec<T, N>>{twice, one_half, classify<0x99>(x)};
    else
      return Results<Vec<T, N>, Vec<T, N>>{twice, one_half};
  }

 private:
  template <class V>
  static V minus_one() {
    using T = typename V::Element;
    return constant<V>(same<T, double> ? 0xBFF0000000000000 : same<T, float> ? 0xBF800000 : 0xBC00);
  }
};

/// x 2^n; calls out where n is the least integer.
struct Pown {
  template <Tier, int N>
  static auto apply(Vec<double, N> x, Vec<int32_t, N> n) {
    return Outcome<Vec<double, N>>{scale(x, to_double(n)), special(n)};
  }
  template <Tier, int N>
  static auto apply(Vec<float, N> x, Vec<int32_t, N> n) {
    return Outcome<Vec<float, N>>{scale(x, to_float(n)), special(n)};
  }
  template <Tier, int N>
  static auto apply(Vec<half, N> x, Vec<int32_t, N> n) {
    return Outcome<Vec<half, N>>{narrow<rn>(scale(widen(x), to_float(n))), special(n)};
  }

 private:
  template <class V>
  static auto special(V n) {
    return equal(n, constant<V>(0x80000000));
  }
};

/// Every lane by its rare routine: -x, and for Lgammar the sign of x as an integer beside it.
struct Lgamma {};
struct Lgammar {};

}  // namespace zorp
