// sqrt and rsqrt of single halves that have no square root or are an end of the range: zeros,
// infinities, negative numbers.
#include "arith/roots.h"
#include "frame/scalar.h"

namespace zorp {
namespace {

using F = Format<half>;
constexpr half default_nan = {F::sign | F::infinity | F::quiet_bit};

bool is_negative_number(half x) { return sign_bits(x) != 0 && magnitude_bits(x) != 0; }

}  // namespace

extern "C" {

void __zorp_hsqrt_cout_rare(const half* x, half* result) {
  *result = is_negative_number(*x) ? default_nan : *x;
}

void __zorp_hinvsqrt_cout_rare(const half* x, half* result) {
  if (is_negative_number(*x))
    *result = default_nan;
  else if (magnitude_bits(*x) == 0)
    *result = from_bits(uint16_t(sign_bits(*x) | F::infinity));
  else
    *result = from_bits(uint16_t{0});
}

}  // extern "C"
}  // namespace zorp
