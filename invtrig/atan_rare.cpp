// atan of infinities; atanpi of single operands that are infinite, huge, tiny, zero or a NaN.
#include "invtrig/pairs.h"

namespace zorp {
extern "C" {

void __zorp_datan_cout_rare(const double* x, double* result) {
  *result = with_sign_of(from_bits(uint64_t{0x3FF921FB54442D18}), *x);
}
void __zorp_satan_cout_rare(const float* x, float* result) {
  *result = from_bits(uint32_t{0x3FC90FDB} | sign_bits(*x));
}

void __zorp_datanpi_cout_rare(const double* x, double* result) {
  const double a = magnitude(*x);
  if (is_nan(a)) {
    *result = quieted(*x);
  } else if (a >= 0x1p54) {
    *result = with_sign_of(0.5, *x);
  } else {
    // Below 2^-1020: scaled, so that only the last operation may underflow.
    *result = with_sign_of(over_pi(a * 0x1p82, 0) * 0x1p-82, *x);
  }
}

void __zorp_satanpi_cout_rare(const float* x, float* result) {
  if (is_nan(*x))
    *result = quieted(*x);
  else if (magnitude(double{*x}) >= 0x1p54)
    *result = from_bits(bits(0.5f) | sign_bits(*x));
  else  // below 2^-125: the quotient as a double, and its rounding
    *result = static_cast<float>(*x * inv_pi);
}

}  // extern "C"
}  // namespace zorp
