// How the gamma functions of float and of half differ: in the rounding of a b + c.
#pragma once

namespace zorp {

/// How a b + c is rounded: after each operation, or once.
struct Separate {
  static double multiply_add(double a, double b, double c) { return a * b + c; }
};
struct Fused {
  static double multiply_add(double a, double b, double c) { return __builtin_fma(a, b, c); }
};

}  // namespace zorp
