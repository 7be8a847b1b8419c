// asinh, acosh and atanh of NaNs, infinities and operands outside the domain.
#include "frame/scalar.h"
#include "log/inverse_hyperbolic.h"

namespace zorp {
namespace {

template <class T>
constexpr T positive_infinity = from_bits(Format<T>::infinity);

/// What a function returns outside its domain: in double a quiet NaN without, in float one with a
/// sign.
constexpr double outside(double) { return from_bits(uint64_t{0x7FF8000000000000}); }
constexpr float outside(float) { return from_bits(uint32_t{0xFFC00000}); }

template <class T>
T asinh(T x) {
  return is_nan(x) ? quieted(x) : x;
}

template <class T>
T acosh(T x) {
  if (is_nan(x)) return quieted(x);
  if (x == positive_infinity<T>) return x;
  return x == 1 ? T{0} : outside(x);
}

template <class T>
T atanh(T x) {
  if (is_nan(x)) return quieted(x);
  if (x == 1) return positive_infinity<T>;
  return x == -1 ? -positive_infinity<T> : outside(x);
}

}  // namespace

extern "C" {

void __zorp_dasinh_cout_rare(const double* x, double* result) { *result = asinh(*x); }
void __zorp_sasinh_cout_rare(const float* x, float* result) { *result = asinh(*x); }
void __zorp_dacosh_cout_rare(const double* x, double* result) { *result = acosh(*x); }
void __zorp_sacosh_cout_rare(const float* x, float* result) { *result = acosh(*x); }
void __zorp_datanh_cout_rare(const double* x, double* result) { *result = atanh(*x); }
void __zorp_satanh_cout_rare(const float* x, float* result) { *result = atanh(*x); }

}  // extern "C"
}  // namespace zorp
