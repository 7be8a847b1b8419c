// Kernels that prove the boundary forms which no family of the library uses yet: register pairs in
// and out with a callout behind them, an integer operand beside elements, two pointers' worth of
// results, and kernels whose lanes all go through the rare routine. Each borrows the name, and so
// the form, of a family that is still to come; what it computes is made up and easily checked.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

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

/// x - y and x rounded to an integer; calls out where y is a NaN.
struct Remquo {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x, Vec<T, N> y) {
    const auto nan = classify<0x81>(y);
    if constexpr (same<T, half>)
      return Outcome<Vec<T, N>, Vec<int32_t, N>>{x - y, to_int32(widen(x)), nan};
    else
      return Outcome<Vec<T, N>, Vec<int32_t, N>>{x - y, to_int32(x), nan};
  }
};

/// Every lane by its rare routine: -x, and for Lgammar the sign of x as an integer beside it.
struct Lgamma {};
struct Lgammar {};

}  // namespace zorp
