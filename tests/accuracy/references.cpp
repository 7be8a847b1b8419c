// The exact functions, a line a family.
#include <algorithm>

#include "tests/accuracy/accuracy.h"

namespace zorp::test {
namespace {

int reciprocal(mpfr_ptr result, mpfr_srcptr x, mpfr_rnd_t mode) {
  return mpfr_ui_div(result, 1, x, mode);
}

int lgamma(mpfr_ptr result, mpfr_srcptr x, mpfr_rnd_t mode) {
  int sign;
  return mpfr_lgamma(result, &sign, x, mode);
}

int rcbrt(mpfr_ptr result, mpfr_srcptr x, mpfr_rnd_t mode) {
  return mpfr_rootn_si(result, x, -3, mode);
}

/// -infinity at -0, where MPFR has +infinity.
int rsqrt(mpfr_ptr result, mpfr_srcptr x, mpfr_rnd_t mode) {
  const int inexact = mpfr_rec_sqrt(result, x, mode);
  if (mpfr_zero_p(x)) mpfr_set_inf(result, mpfr_signbit(x) ? -1 : 1);
  return inexact;
}

/// Nothing at 1 for an infinity or a NaN.
int powr(mpfr_ptr result, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t mode) {
  const int inexact = mpfr_powr(result, x, y, mode);
  if (!mpfr_nan_p(x) && mpfr_cmp_ui(x, 1) == 0 && !mpfr_number_p(y)) mpfr_set_nan(result);
  return inexact;
}

const Reference kReferences[] = {
    {"acos", {mpfr_acos}, {{{-1, 1}, {-1, 1}}}},
    {"acosh", {mpfr_acosh}, {{{1, 4}, {1, 4}}}},
    {"acospi", {mpfr_acospi}, {{{-1, 1}, {-1, 1}}}},
    {"asin", {mpfr_asin}, {{{-1, 1}, {-1, 1}}}},
    {"asinh", {mpfr_asinh}, {{{-4, 4}, {-4, 4}}}},
    {"asinpi", {mpfr_asinpi}, {{{-1, 1}, {-1, 1}}}},
    {"atan", {mpfr_atan}, {{{-10, 10}, {-10, 10}}}},
    {"atan2", {mpfr_atan2}, {{{-10, 10}, {-10, 10}}}},
    {"atan2pi", {mpfr_atan2pi}, {{{-10, 10}, {-10, 10}}}},
    {"atanh", {mpfr_atanh}, {{{-1, 1}, {-1, 1}}}},
    {"atanpi", {mpfr_atanpi}, {{{-10, 10}, {-10, 10}}}},
    {"cbrt", {mpfr_cbrt}, {{{0, 8}, {0, 8}}}},
    {"cos", {mpfr_cos}, {{{-100, 100}, {-100, 100}}}},
    {"cosh", {mpfr_cosh}, {{{-712, 712}, {-91, 91}}}},
    {"cospi", {mpfr_cospi}, {{{-2, 2}, {-2, 2}}}},
    {"div", {mpfr_div}, {{{-4, 4}, {-4, 4}}}},
    {"erf", {mpfr_erf}, {{{-6.5, 6.5}, {-4.5, 4.5}}}},
    {"erfc", {mpfr_erfc}, {{{-6.5, 27.5}, {-4.5, 10.2}}}},
    {"exp", {mpfr_exp}, {{{-746, 711}, {-105, 90}}}},
    {"exp10", {mpfr_exp10}, {{{-325, 309}, {-46, 39}}}},
    {"exp2", {mpfr_exp2}, {{{-1076, 1025}, {-151, 129}}}},
    {"expm1", {mpfr_expm1}, {{{-40, 711}, {-20, 90}}}},
    {"hypot", {mpfr_hypot}, {{{-8, 8}, {-8, 8}}}},
    {"inv", {reciprocal}, {{{-4, 4}, {-4, 4}}}},
    {"lgamma", {lgamma}, {{{-20, 40}, {-20, 40}}}},
    {"lgammar", {lgamma}, {{{-20, 40}, {-20, 40}}}},
    {"log", {mpfr_log}, {{{0, 4}, {0, 4}}}},
    {"log10", {mpfr_log10}, {{{0, 4}, {0, 4}}}},
    {"log1p", {mpfr_log1p}, {{{-1, 4}, {-1, 4}}}},
    {"log2", {mpfr_log2}, {{{0, 4}, {0, 4}}}},
    {"pow", {mpfr_pow}, {{{0, 8}, {0, 8}}}, Reference::Ranges{{{-360, 360}, {-44, 44}}}},
    {"pown", {mpfr_pow_si}, {{{-8, 8}, {-8, 8}}}, Reference::Ranges{{{-360, 360}, {-44, 44}}}},
    {"powr", {powr}, {{{0, 8}, {0, 8}}}, Reference::Ranges{{{-360, 360}, {-44, 44}}}},
    {"rcbrt", {rcbrt}, {{{0, 8}, {0, 8}}}},
    {"rootn", {mpfr_rootn_si}, {{{0, 1024}, {0, 1024}}}, Reference::Ranges{{{-40, 40}, {-40, 40}}}},
    {"rsqrt", {rsqrt}, {{{0, 4}, {0, 4}}}},
    {"sin", {mpfr_sin}, {{{-100, 100}, {-100, 100}}}},
    {"sincos", {mpfr_sin, mpfr_cos}, {{{-100, 100}, {-100, 100}}}},
    {"sincosreg", {mpfr_sin, mpfr_cos}, {{{-100, 100}, {-100, 100}}}},
    {"sinh", {mpfr_sinh}, {{{-712, 712}, {-91, 91}}}},
    {"sinpi", {mpfr_sinpi}, {{{-2, 2}, {-2, 2}}}},
    {"sqrt", {mpfr_sqrt}, {{{0, 4}, {0, 4}}}},
    {"tan", {mpfr_tan}, {{{-100, 100}, {-100, 100}}}},
    {"tanh", {mpfr_tanh}, {{{-25, 25}, {-11, 11}}}},
    {"tanpi", {mpfr_tanpi}, {{{-2, 2}, {-2, 2}}}},
    {"tgamma", {mpfr_gamma}, {{{-186, 172}, {-43, 36}}}},
};

}  // namespace

Reference::Range Reference::range(Element element, std::size_t operand) const {
  const int index = std::min(int(element), 1);  // half like float
  return operand == 1 && second ? (*second)[index] : first[index];
}

const Reference* reference(const std::string& family) {
  for (const Reference& reference : kReferences)
    if (family == reference.family) return &reference;
  return nullptr;
}

}  // namespace zorp::test
