// asinpi and acospi of single operands from 1 on in magnitude.
#include "frame/scalar.h"

namespace zorp {
namespace {

/// The value at 1, the value at -1, the default NaN beyond.
template <class T>
void at_the_ends(T x, T at_one, T at_minus_one, T* result) {
  if (x == 1)
    *result = at_one;
  else if (x == -1)
    *result = at_minus_one;
  else
    *result = from_bits(Pattern<T>(Format<T>::sign | Format<T>::infinity | Format<T>::quiet_bit));
}

}  // namespace

extern "C" {

void __zorp_dasinpi_cout_rare(const double* x, double* result) {
  at_the_ends(*x, 0.5, -0.5, result);
}
void __zorp_sasinpi_cout_rare(const float* x, float* result) {
  at_the_ends(*x, 0.5f, -0.5f, result);
}
void __zorp_dacospi_cout_rare(const double* x, double* result) {
  at_the_ends(*x, 0.0, 1.0, result);
}
void __zorp_sacospi_cout_rare(const float* x, float* result) {
  at_the_ends(*x, 0.0f, 1.0f, result);
}

}  // extern "C"
}  // namespace zorp
