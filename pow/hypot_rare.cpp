// hypot of single pairs that are not finite, or too large or too small for their squares, in double
// arithmetic in which every operation rounds by itself.
//
// A power of two brings the larger operand to [4, 8). The squares are summed in a high and a low
// part, from operands split in halves of 26 bits whose products are exact. Three Newton steps lead
// from a table's 11 bits to the root, and a last correction takes the low part in.
#include "frame/scalar.h"
#include "pow/hypot.h"

namespace zorp {
namespace {

int exponent_field(double v) { return static_cast<int>(bits(v) >> 52 & 0x7FF); }
double power_with_field(int field) { return from_bits(uint64_t(field & 0x7FF) << 52); }

/// The upper half of v's significand.
double upper_half(double v) {
  const double t = 0x1.0000002p27 * v;
  return t - (t - v);
}

/// Of finite numbers, not both zero.
double scaled_hypot(double x, double y, const HypotTable& roots) {
  double a = magnitude(x), b = magnitude(y);
  if (a < b) {
    const double smaller = a;
    a = b;
    b = smaller;
  }
  const int e = exponent_field(a);
  // Subnormals, and what is hardly larger, stay below 2^-20: the scale is a normal number.
  const int scale_field = e >= 25 ? -e : -e - 23;
  const double scale = power_with_field(scale_field);
  a = a * scale;
  b = b * scale;

  // hi + lo is a^2 + b^2. A b far below a has its whole square in the low part.
  const double a_high = upper_half(a);
  double b_high = 0, b_low = b;
  if (exponent_field(a) - exponent_field(b) < 7) {
    b_high = upper_half(b);
    b_low = b - b_high;
  }
  double lo = b * b_low + (a - a_high) * (a + a_high);
  const double hi = a_high * a_high + b_high * b_high;
  lo = b_high * b_low + lo;

  // The sum is m 2^(e2), m in [1, 4) and e2 even.
  const uint64_t sum = bits(hi + lo);
  const int sum_exponent = static_cast<int>(sum >> 52) - 1023;
  const bool odd = sum_exponent & 1;
  const double m = from_bits((sum & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000) * (odd ? 2.0 : 1.0);
  const double estimate = from_bits(roots.entry[256 * odd + (sum >> 44 & 0xFF)]);

  // y tends to sqrt(m) and w to 1 / (2 sqrt(m)).
  double root = m * estimate, w = estimate * 0.5;
  for (int i = 0; i < 3; ++i) {
    const double r = 0.5 - root * w;
    root = r * root + root;
    w = r * w + w;
  }

  const double root_high = upper_half(root), root_low = root - root_high;
  const double down = power_with_field(1023 - (sum_exponent & 0x7FE));  // 2^-e2
  double d = hi * down - root_high * root_high;
  d = (root_high * -2.0 * root_low + d) - root_low * root_low;
  d = lo * down + d;
  const double v = d * w + root;
  // Only the last multiplication can overflow or round to a subnormal.
  return v * power_with_field(1023 + (sum_exponent >> 1)) * power_with_field(2046 - scale_field);
}

template <class T>
T hypot(T x, T y, const HypotTable& roots) {
  constexpr Pattern<T> infinite = Format<T>::infinity;
  const Pattern<T> a = magnitude_bits(x), b = magnitude_bits(y);
  if (a == infinite || b == infinite) return from_bits(infinite);
  if (is_nan(x)) return quieted(x);
  if (is_nan(y)) return quieted(y);
  if ((a | b) == 0) return 0;
  return static_cast<T>(scaled_hypot(x, y, roots));
}

}  // namespace

extern "C" {

void __zorp_dhypot_cout_rare(const double* x, const double* y, double* result) {
  *result = hypot(*x, *y, __dhypot_g__qaxdHypotHATab);
}
void __zorp_shypot_cout_rare(const float* x, const float* y, float* result) {
  *result = hypot(*x, *y, _qaxsHypotHATab);
}

}  // extern "C"
}  // namespace zorp
