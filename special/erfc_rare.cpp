// erfc of single operands from where the result vanishes, and of NaNs.
#include "frame/kernel.h"
#include "frame/scalar.h"

namespace zorp {
namespace {

/// Zero from the limit on. The one operand below it that a kernel hands over gives `least`.
template <class T>
T vanishing(T x, double limit, T least) {
  if (is_nan(x)) return quieted(x);
  return double{x} >= limit ? T{0} : least;
}

// Where erfc is half the smallest subnormal number of double and of float.
constexpr double double_limit = 27.226017111108366;
constexpr double float_limit = 10.054194928818097;

}  // namespace

extern "C" {

void __zorp_derfc_cout_rare(const double* x, double* result) {
  *result = vanishing(*x, double_limit, 0.0);
}
void __zorp_serfc_cout_rare(const float* x, float* result) {
  *result = vanishing(*x, float_limit, from_bits(uint32_t{1}));
}
/// No half lies between the kernel's limit and the exact one.
void __zorp_herfc_cout_rare(const half* x, half* result) {
  *result = is_nan(*x) ? quieted(*x) : half{0};
}

}  // extern "C"
}  // namespace zorp
