// rcbrt of single halves that are zeros, infinities or NaNs.
#include "frame/scalar.h"
#include "pow/cbrt.h"

namespace zorp {
namespace {

half rcbrt_of_special(half x) {
  if (is_nan(x)) return quieted(x);
  const bool zero = magnitude_bits(x) == 0;
  return from_bits(uint16_t(sign_bits(x) | (zero ? Format<half>::infinity : 0)));
}

}  // namespace

extern "C" {

void __zorp_hinvcbrt_cout_rare(const half* x, half* result) { *result = rcbrt_of_special(*x); }

}  // extern "C"
}  // namespace zorp
