// sin, cos, sincos and tan of infinities and NaNs of double and float.
#include "frame/scalar.h"

namespace zorp {
namespace {

/// What infinities and NaNs give: the default NaN, the NaN itself quieted.
template <class T>
T not_finite(T x) {
  return is_nan(x) ? x * x : x * 0;
}

}  // namespace

extern "C" {

void __zorp_dsin_cout_rare(const double* x, double* result) { *result = not_finite(*x); }
void __zorp_dcos_cout_rare(const double* x, double* result) { *result = not_finite(*x); }
void __zorp_dsincos_cout_rare(const double* x, double* sine, double* cosine) {
  *sine = *cosine = not_finite(*x);
}
void __zorp_dsincosreg_cout_rare(const double* x, double* sine, double* cosine) {
  *sine = *cosine = not_finite(*x);
}
void __zorp_dtan_cout_rare(const double* x, double* result) { *result = not_finite(*x); }
void __zorp_ssin_cout_rare(const float* x, float* result) { *result = not_finite(*x); }
void __zorp_scos_cout_rare(const float* x, float* result) { *result = not_finite(*x); }
void __zorp_stan_cout_rare(const float* x, float* result) { *result = not_finite(*x); }

}  // extern "C"
}  // namespace zorp
