// fmax, fmin, maxmag, minmag and fdim of single pairs with a NaN. Pairs with an infinity keep what
// the kernel made of them.
#include "exact/selection.h"
#include "frame/scalar.h"

namespace zorp {
namespace {

/// The number, if one of the two is a number; of two NaNs the second.
template <class T>
void choose_number(T x, T y, T* result) {
  if (is_nan(x))
    *result = is_nan(y) ? quieted(y) : y;
  else if (is_nan(y))
    *result = x;
}

/// The NaN; of two NaNs the second.
template <class T>
void choose_nan(T x, T y, T* result) {
  if (is_nan(y))
    *result = quieted(y);
  else if (is_nan(x))
    *result = quieted(x);
}

}  // namespace

extern "C" {

void __zorp_dfmax_cout_rare(const double* x, const double* y, double* result) {
  choose_number(*x, *y, result);
}
void __zorp_sfmax_cout_rare(const float* x, const float* y, float* result) {
  choose_number(*x, *y, result);
}
void __zorp_hfmax_cout_rare(const half* x, const half* y, half* result) {
  choose_number(*x, *y, result);
}

// fmin, maxmag and minmag treat NaNs as fmax does.
[[gnu::alias("__zorp_dfmax_cout_rare")]] void __zorp_dfmin_cout_rare(const double*, const double*,
                                                                     double*);
[[gnu::alias("__zorp_sfmax_cout_rare")]] void __zorp_sfmin_cout_rare(const float*, const float*,
                                                                     float*);
[[gnu::alias("__zorp_hfmax_cout_rare")]] void __zorp_hfmin_cout_rare(const half*, const half*,
                                                                     half*);
[[gnu::alias("__zorp_dfmax_cout_rare")]] void __zorp_dmaxmag_cout_rare(const double*, const double*,
                                                                       double*);
[[gnu::alias("__zorp_sfmax_cout_rare")]] void __zorp_smaxmag_cout_rare(const float*, const float*,
                                                                       float*);
[[gnu::alias("__zorp_hfmax_cout_rare")]] void __zorp_hmaxmag_cout_rare(const half*, const half*,
                                                                       half*);
[[gnu::alias("__zorp_dfmax_cout_rare")]] void __zorp_dminmag_cout_rare(const double*, const double*,
                                                                       double*);
[[gnu::alias("__zorp_sfmax_cout_rare")]] void __zorp_sminmag_cout_rare(const float*, const float*,
                                                                       float*);
[[gnu::alias("__zorp_hfmax_cout_rare")]] void __zorp_hminmag_cout_rare(const half*, const half*,
                                                                       half*);

void __zorp_dfdim_cout_rare(const double* x, const double* y, double* result) {
  choose_nan(*x, *y, result);
}
void __zorp_sfdim_cout_rare(const float* x, const float* y, float* result) {
  choose_nan(*x, *y, result);
}
void __zorp_hfdim_cout_rare(const half* x, const half* y, half* result) {
  choose_nan(*x, *y, result);
}

}  // extern "C"
}  // namespace zorp
