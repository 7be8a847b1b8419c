// sinh and cosh of single large operands, infinities and NaNs, in double arithmetic in which every
// operation rounds by itself.
#include "exp/exp_rare.h"
#include "exp/hyperbolic.h"

namespace zorp {
namespace {

/// e^a / 2 for a from about 88 to 710.48.
double half_exp(double a, const PowerTable& powers) {
  const ScalarExpReduction reduced(a);
  const double power = from_bits(powers.entry[2 * reduced.j]),
               power_low = from_bits(powers.entry[2 * reduced.j + 1]);
  return times_power_of_two(reduced.p * power + power_low + power, reduced.k - 1);
}

double sinh(double x, double overflow, const PowerTable& powers) {
  if (!is_finite(x)) return x + x;
  const double a = magnitude(x);
  if (!(a < overflow)) return x * 0x1.fffffffffffffp1023;
  return with_sign_of(half_exp(a, powers), x);
}

double cosh(double x, double overflow, const PowerTable& powers) {
  if (!is_finite(x)) return x * x;
  const double a = magnitude(x);
  if (!(a < overflow)) return infinity;
  return half_exp(a, powers);
}

// Where the results of double and of float overflow.
constexpr double double_overflow = 710.475860073944;
constexpr double float_overflow = 89.4159927368164;

}  // namespace

extern "C" {

void __zorp_dsinh_cout_rare(const double* x, double* result) {
  *result = sinh(*x, double_overflow, __dsinh_g_CoutTab);
}
void __zorp_ssinh_cout_rare(const float* x, float* result) {
  *result = static_cast<float>(sinh(double{*x}, float_overflow, __ssinh_g_CoutTab));
}
void __zorp_dcosh_cout_rare(const double* x, double* result) {
  *result = cosh(*x, double_overflow, __dcosh_g_CoutTab);
}
void __zorp_scosh_cout_rare(const float* x, float* result) {
  *result = static_cast<float>(cosh(double{*x}, float_overflow, __scosh_g_CoutTab));
}

}  // extern "C"
}  // namespace zorp
