// frexp, ilogb, logb, modf, fract and nextafter of single zeros, subnormals, infinities and NaNs.
// All routines go by the bits.
#include "exact/decomposition.h"
#include "frame/scalar.h"

namespace zorp {
namespace {

/// Where the leading one of a subnormal's fraction stands.
template <class T>
int leading_bit(Pattern<T> fraction) {
  return 63 - __builtin_clzll(fraction);
}
/// floor(log2 |x|) of a subnormal x.
template <class T>
int subnormal_exponent(Pattern<T> fraction) {
  return leading_bit<T>(fraction) + 1 - Format<T>::bias - Format<T>::fraction_bits;
}

template <class T>
void frexp(T x, T* significand, int32_t* exponent) {
  using F = Format<T>;
  const Pattern<T> a = magnitude_bits(x);
  if (a == 0 || a >= F::infinity) {
    *significand = x;
    *exponent = 0;
    return;
  }
  // The leading one goes where the exponent field begins, and makes the exponent of one half.
  constexpr Pattern<T> exponent_of_quarter = Pattern<T>(F::bias - 2) << F::fraction_bits;
  const Pattern<T> normalised = a << (F::fraction_bits - leading_bit<T>(a));
  *significand = from_bits(Pattern<T>(sign_bits(x) | (exponent_of_quarter + normalised)));
  *exponent = subnormal_exponent<T>(a) + 1;
}

template <class T>
void ilogb(T x, int32_t* result) {
  const Pattern<T> a = magnitude_bits(x);
  if (a == 0)
    *result = INT32_MIN;
  else if (a >= Format<T>::infinity)
    *result = INT32_MAX;
  else
    *result = subnormal_exponent<T>(a);
}

/// Of a zero, an infinity or a NaN.
template <class T>
T logb_of_special(T x) {
  using F = Format<T>;
  const Pattern<T> a = magnitude_bits(x);
  if (a == 0) return from_bits(Pattern<T>(F::sign | F::infinity));
  return is_nan(x) ? quieted(from_bits(a)) : from_bits(a);
}
template <class T>
T logb(T x) {
  const Pattern<T> a = magnitude_bits(x);
  if (a == 0 || a >= Format<T>::infinity) return logb_of_special(x);
  return static_cast<T>(subnormal_exponent<T>(a));
}

template <class T>
void modf(T x, T* fraction, T* integral) {
  *fraction = is_nan(x) ? quieted(x) : from_bits(sign_bits(x));
  *integral = is_nan(x) ? quieted(x) : x;
}

template <class T>
void fract(T x, T* fraction, T* floor) {
  *fraction = magnitude_bits(x) == Format<T>::infinity ? from_bits(sign_bits(x)) : x;
  *floor = x;
}

template <class T>
T nextafter(T x, T y) {
  if (is_nan(x)) return quieted(x);
  if (is_nan(y)) return quieted(y);
  const Pattern<T> a = magnitude_bits(x), b = magnitude_bits(y);
  if (bits(x) == bits(y) || (a == 0 && b == 0)) return y;
  constexpr Pattern<T> smallest_subnormal = 1;
  if (a == 0) return from_bits(Pattern<T>(sign_bits(y) | smallest_subnormal));
  const bool toward_zero = sign_bits(x) != sign_bits(y) || a > b;
  return from_bits(Pattern<T>(toward_zero ? bits(x) - 1 : bits(x) + 1));
}

}  // namespace

extern "C" {

void __zorp_dfrexp_cout_rare(const double* x, double* significand, int32_t* exponent) {
  frexp(*x, significand, exponent);
}
void __zorp_sfrexp_cout_rare(const float* x, float* significand, int32_t* exponent) {
  frexp(*x, significand, exponent);
}
void __zorp_hfrexp_cout_rare(const half* x, half* significand, int32_t* exponent) {
  frexp(*x, significand, exponent);
}

void __zorp_dilogb_cout_rare(const double* x, int32_t* result) { ilogb(*x, result); }
void __zorp_silogb_cout_rare(const float* x, int32_t* result) { ilogb(*x, result); }
void __zorp_hilogb_cout_rare(const half* x, int32_t* result) { ilogb(*x, result); }

void __zorp_dlogb_cout_rare(const double* x, double* result) { *result = logb(*x); }
void __zorp_slogb_cout_rare(const float* x, float* result) { *result = logb(*x); }
void __zorp_hlogb_cout_rare(const half* x, half* result) { *result = logb_of_special(*x); }

void __zorp_dmodf_cout_rare(const double* x, double* fraction, double* integral) {
  modf(*x, fraction, integral);
}
void __zorp_smodf_cout_rare(const float* x, float* fraction, float* integral) {
  modf(*x, fraction, integral);
}
void __zorp_hmodf_cout_rare(const half* x, half* fraction, half* integral) {
  modf(*x, fraction, integral);
}

void __zorp_dfract_cout_rare(const double* x, double* fraction, double* floor) {
  fract(*x, fraction, floor);
}
void __zorp_sfract_cout_rare(const float* x, float* fraction, float* floor) {
  fract(*x, fraction, floor);
}
void __zorp_hfract_cout_rare(const half* x, half* fraction, half* floor) {
  fract(*x, fraction, floor);
}

void __zorp_dnextafter_cout_rare(const double* x, const double* y, double* result) {
  *result = nextafter(*x, *y);
}
void __zorp_snextafter_cout_rare(const float* x, const float* y, float* result) {
  *result = nextafter(*x, *y);
}
void __zorp_hnextafter_cout_rare(const half* x, const half* y, half* result) {
  *result = nextafter(*x, *y);
}

}  // extern "C"
}  // namespace zorp
