// tanh of single huge operands, infinities and NaNs.
#include "exp/tanh.h"
#include "frame/scalar.h"

namespace zorp {
namespace {

template <class T>
T tanh(T x) {
  if (is_nan(x)) return x + x;
  return sign_bits(x) ? T{-1} : T{1};
}

}  // namespace

extern "C" {

void __zorp_dtanh_cout_rare(const double* x, double* result) { *result = tanh(*x); }
void __zorp_stanh_cout_rare(const float* x, float* result) { *result = tanh(*x); }

}  // extern "C"
}  // namespace zorp
