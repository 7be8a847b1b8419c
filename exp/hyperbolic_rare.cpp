// sinh and cosh of single large operands, infinities and NaNs, in double arithmetic in which every
// operation rounds by itself.
//
// e^A / 2 by A = (k + j/64) ln 2 + r: a table of 2^(j/64) in two parts and a polynomial of degree 6
// for e^r - 1. The factor 2^(k-1) is built in the exponent field.
#include "exp/hyperbolic.h"
#include "frame/scalar.h"

namespace zorp {
namespace {

/// e^a / 2 for a from about 88 to 710.48.
double half_exp(double a, const PowerTable& powers) {
  constexpr double shifter = 0x1.8p52;
  const double t = a * from_bits(uint64_t{0x40571547652B82FE}) + shifter;
  const double n = t - shifter;
  const double r = (n * from_bits(uint64_t{0xBF862E42FEFA0000}) + a) +
                   n * from_bits(uint64_t{0xBD1CF79ABC9E3B3A});
  const uint64_t steps = bits(t);
  const double p =
      ((((from_bits(uint64_t{0x3F56C16A1C2A3FFD}) * r + from_bits(uint64_t{0x3F8111123AAF20D3})) *
             r +
         from_bits(uint64_t{0x3FA5555555558FCC})) *
            r +
        from_bits(uint64_t{0x3FC55555555548F8})) *
           r +
       0.5) *
          r * r +
      r;
  const int j = steps & 63;
  const double power = from_bits(powers.entry[2 * j]),
               power_low = from_bits(powers.entry[2 * j + 1]);
  const double v = p * power + power_low + power;
  if ((steps & 0x1FFC0) == 0x10040) return v * 0x1p1023 + v * 0x1p1023;  // k = 1025
  const uint64_t k = static_cast<uint32_t>(steps) >> 6;
  return v * from_bits((k + 1022) << 52);
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
