// pown and rootn of single pairs: zeros, subnormals, infinities, NaNs, signs, and results near the
// ends of the range. Half computes in float.
#include "frame/scalar.h"
#include "pow/scalar_power.h"

namespace zorp {
namespace {

/// n as an exponent. Double holds it.
Exponent<double> whole(double, int32_t n) { return Exponent(static_cast<double>(n)); }
/// Float rounds it, and the low part takes in what is lost: the difference from n, modulo 2^32,
/// where 2^31 stands for -2^31.
Exponent<float> whole(float, int32_t n) {
  const auto y = static_cast<float>(n);
  const uint32_t back = y < 0x1p31f ? static_cast<uint32_t>(static_cast<int32_t>(y)) : 0x80000000;
  const auto lost = static_cast<int32_t>(static_cast<uint32_t>(n) - back);
  const float high = upper_part(y);
  return {y, high, static_cast<float>(lost) + (y - high)};
}

/// 1/n for y = 1/n, rounded; the low part comes from the residual of n.
template <class T>
Exponent<T> inverse(T y, T n) {
  const T high = upper_part(y);
  const T e = 1 - n * high;
  return {y, high, ((1 + e) * e) * high};
}

template <class T>
T pown(T x, int32_t n) {
  using F = Format<T>;
  if (x == 1 || n == 0) return 1;
  if (is_nan(x)) return quieted(x);
  const T sign = sign_bits(x) && n & 1 ? -1 : 1;
  if (x == -1) return sign;
  const bool x_is_zero = x == 0;
  if (x_is_zero || magnitude_bits(x) == F::infinity)
    return sign * (x_is_zero == (n < 0) ? from_bits(F::infinity) : T(0));
  return scalar_power(x, whole(x, n), sign);
}

template <class T>
T rootn(T x, int32_t n) {
  using F = Format<T>;
  const T huge = from_bits(F::infinity);
  const bool odd = n & 1;
  if (n == 0) return from_bits(F::default_nan);
  if (x == 0 && !odd) return n < 0 ? huge : T(0);
  if (odd && (x == 0 || magnitude_bits(x) == F::infinity)) return n > 0 ? x : 1 / x;
  if (sign_bits(x) && !odd) return from_bits(F::default_nan);
  const T sign = sign_bits(x) ? -1 : 1;
  x = from_bits(magnitude_bits(x));
  if (x == 1) return sign;
  if (is_nan(x)) return quieted(x);
  if (x == huge) return n < 0 ? T(0) : huge;
  const auto nf = static_cast<T>(n);
  return scalar_power(x, inverse(1 / nf, nf), T(1)) * sign;
}

}  // namespace

extern "C" {

void __zorp_dpown_cout_rare(const double* x, const int32_t* n, double* result) {
  *result = pown(*x, *n);
}
void __zorp_spown_cout_rare(const float* x, const int32_t* n, float* result) {
  *result = pown(*x, *n);
}
void __zorp_hpown_cout_rare(const half* x, const int32_t* n, half* result) {
  *result = narrowed(pown(widened(*x), *n));
}
void __zorp_drootn_cout_rare(const double* x, const int32_t* n, double* result) {
  *result = rootn(*x, *n);
}
void __zorp_srootn_cout_rare(const float* x, const int32_t* n, float* result) {
  *result = rootn(*x, *n);
}
void __zorp_hrootn_cout_rare(const half* x, const int32_t* n, half* result) {
  *result = narrowed(rootn(widened(*x), *n));
}

}  // extern "C"
}  // namespace zorp
