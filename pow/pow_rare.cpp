// pow and powr of single pairs: zeros, infinities, NaNs, and for pow powers of negative numbers.
// Half computes in float.
#include "frame/scalar.h"
#include "pow/scalar_power.h"

namespace zorp {
namespace {

enum class Parity { no_integer, odd, even };

/// By the encoding alone: the bits below the unit's tell whether y is an integer, that bit its
/// parity.
template <class T>
Parity parity(T y) {
  using F = Format<T>;
  const Pattern<T> magnitude = magnitude_bits(y);
  if (magnitude == 0) return Parity::even;
  if (magnitude >= F::infinity) return Parity::no_integer;
  const int exponent = static_cast<int>(magnitude >> F::fraction_bits) - F::bias;
  if (exponent < 0) return Parity::no_integer;
  if (exponent > F::fraction_bits) return Parity::even;
  const Pattern<T> significand = (magnitude & (F::implicit_bit - 1)) | F::implicit_bit;
  const Pattern<T> unit = F::implicit_bit >> exponent;
  if (significand & (unit - 1)) return Parity::no_integer;
  return significand & unit ? Parity::odd : Parity::even;
}

double negative_power(double x, double y, double sign) {
  return scalar_power(x, Exponent(y), sign);
}
float negative_power(float x, float y, float sign) { return scalar_power(x, y, sign); }

template <class T>
T pow(T x, T y) {
  using F = Format<T>;
  const bool x_is_zero = magnitude_bits(x) == 0, x_is_infinite = magnitude_bits(x) == F::infinity;
  const bool y_is_infinite = magnitude_bits(y) == F::infinity;
  const bool falls = sign_bits(y) != 0;
  if (x == 1 || y == 0) return 1;
  if (is_nan(x)) return quieted(x);
  if (is_nan(y)) return quieted(y);

  const Parity parity_of_y = parity(y);
  const T sign = sign_bits(x) && parity_of_y == Parity::odd ? -1 : 1;
  const T zero = sign * 0, huge = sign * from_bits(F::infinity);
  if (x_is_zero) return falls ? huge : zero;
  if (x == -1 && (parity_of_y != Parity::no_integer || y_is_infinite)) return sign;
  if (x_is_infinite || y_is_infinite) {
    const bool below_one = from_bits(magnitude_bits(x)) < 1;
    return below_one == falls ? huge : zero;
  }
  if (parity_of_y == Parity::no_integer) return from_bits(F::default_nan);
  return negative_power(x, y, sign);
}

template <class T>
T powr(T x, T y) {
  using F = Format<T>;
  const T nan = from_bits(F::default_nan), huge = from_bits(F::infinity);
  const bool y_is_finite = magnitude_bits(y) < F::infinity;
  if (is_nan(x)) return nan;
  if (y == 0) return x > 0 && x < huge ? T(1) : nan;
  if (x == 0 && !is_nan(y)) return y > 0 ? T(0) : huge;
  if (x == 1) return y_is_finite ? T(1) : nan;
  if (sign_bits(x)) return nan;
  if (is_nan(y)) return quieted(y);
  return (x < 1) == (y < 0) ? huge : T(0);
}

}  // namespace

extern "C" {

void __zorp_dpow_cout_rare(const double* x, const double* y, double* result) {
  *result = pow(*x, *y);
}
void __zorp_spow_cout_rare(const float* x, const float* y, float* result) { *result = pow(*x, *y); }
void __zorp_hpow_cout_rare(const half* x, const half* y, half* result) {
  *result = narrowed(pow(widened(*x), widened(*y)));
}
void __zorp_dpowr_cout_rare(const double* x, const double* y, double* result) {
  *result = powr(*x, *y);
}
void __zorp_spowr_cout_rare(const float* x, const float* y, float* result) {
  *result = powr(*x, *y);
}
void __zorp_hpowr_cout_rare(const half* x, const half* y, half* result) {
  *result = narrowed(powr(widened(*x), widened(*y)));
}

}  // extern "C"
}  // namespace zorp
