// atan of infinities; atanpi of single operands that are infinite, huge, tiny, zero or a NaN.
#include "frame/scalar.h"

namespace zorp {
namespace {

constexpr double inv_pi = from_bits(uint64_t{0x3FD45F306DC9C883});

}  // namespace

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
    // Below 2^-1020: x/pi by 1/pi in two parts, times 2^82, so that only the last operation may
    // underflow.
    constexpr double inv_pi_high = from_bits(uint64_t{0x3FD45F3070000000}),
                     inv_pi_low = from_bits(uint64_t{0xBE21B1BBEAD603D9});
    const double v = a * 0x1p82;
    const double shifted = v * 0x1.0000002p27;  // 2^27 + 1 splits v into two halves
    const double high = shifted - (shifted - v);
    const double low = v - high;
    const double product =
        ((low * inv_pi_high) + ((high * inv_pi_low) + (low * inv_pi_low))) + high * inv_pi_high;
    *result = with_sign_of(product * 0x1p-82, *x);
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
