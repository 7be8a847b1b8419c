// sin, cos, sincos and tan of single operands that the vector paths leave over, in double
// arithmetic in which every operation rounds by itself: infinities and NaNs, and for the reduced
// tiers of double all large arguments.
//
// x is reduced to a multiple of pi/2 and a pair rh + rl; the pair to a multiple of pi/32 and a
// rest r, and the circle at that multiple with two polynomials gives the sine. Up to 2^30 the
// multiple of pi/2 is taken off in five parts, from 2^30 on x is multiplied by the slices of 4/pi
// that matter for its exponent.
#include "frame/scalar.h"
#include "trig/reduction.h"

namespace zorp {
namespace {

constexpr double number(uint64_t pattern) { return from_bits(pattern); }

constexpr uint64_t fraction_mask = Format<double>::implicit_bit - 1;
constexpr int exponent_field(double v) {
  return static_cast<int>(magnitude_bits(v) >> Format<double>::fraction_bits);
}
/// The significand as an integer.
constexpr uint64_t significand(double v) {
  return (bits(v) & fraction_mask) | Format<double>::implicit_bit;
}
constexpr double without_low_bits(double v, int count) {
  return from_bits(bits(v) & ~((uint64_t{1} << count) - 1));
}

/// x = quadrant pi/2 + rh + rl, the pair with the sign of x, the quadrant without.
struct Reduced {
  double rh, rl;
  uint32_t quadrant;
};

/// a < 2^30
Reduced reduce_medium(double a, double sign) {
  constexpr double four_over_pi = number(0x3FF45F306DC9C883);
  // pi/4 = q0 + q1 + q2 + q3 + q4: relative error 2^-142.4
  constexpr double q0 = number(0x3FE921FA00000000), q1 = number(0x3EA5444300000000),
                   q2 = number(0xBD373DCA00000000), q3 = number(0xBBF3B39A00000000),
                   q4 = number(0x3A845C06E0E68948);
  const double t = four_over_pi * a;
  const auto octant = static_cast<uint32_t>(significand(t) >> (1023 + 52 - exponent_field(t)));
  const double n = octant + (octant & 1);  // even: in quarters of pi
  const double u = a + -q0 * n;
  const double p1 = n * q1, p2 = n * q2;
  const double b = u - p1;
  const double c = b - p2;
  double e = ((b - c) - p2) + ((u - b) - p1);
  const double d = c + e;
  e = (c - d) + e;
  const double t3 = q3 * n, t4 = q4 * n;
  double h = d - t3;
  double l = (((d - h) - t3) + e) - t4;
  h = h * sign;
  l = l * sign;
  const double rh = l + h;
  return {rh, (h - rh) + l, (octant + 1) >> 1};
}

/// A sum that gathers what its additions lose.
struct Sum {
  double s, lost;
  void add(double v) {
    const double sum = s + v;
    lost = ((s - sum) + v) + lost;
    s = sum;
  }
};

/// a >= 2^30. The slices are scaled by 2^200 and a by 2^-200, and a is cut in two, so that every
/// product with a slice is exact.
Reduced reduce_large(double a, double sign) {
  constexpr double split = number(0x4198000000000000);  // 1.5 x 2^26
  // pi/4 = pi_4_high + pi_4_low: relative error 2^-78.9
  constexpr double pi_4_high = number(0x3FE921FB40000000), pi_4_low = number(0x3E64442D18469899);
  const auto exponent = static_cast<uint32_t>(exponent_field(a));
  const double scaled = from_bits(bits(a) - (uint64_t{200} << 52));
  const double xh = without_low_bits(scaled, 27);
  const double xl = scaled - xh;
  const uint32_t first = (exponent * 83886 - 88248072) >> 21;  // (exponent - 1052) / 25
  const auto t = [&](uint32_t i) { return from_bits(__dsin_g_ReductionTab.entry[first + i]); };

  Sum sum{t(0) * xl, 0};
  const double p1 = t(1) * xh;
  const double s1 = sum.s + p1;
  sum.lost = (sum.s - s1) + p1;
  sum.s = s1;
  // Whole turns.
  sum.s = sum.s - without_low_bits(sum.s + sum.lost, (25 * first - exponent + 66) & 63);
  sum.add(t(1) * xl);
  sum.add(t(2) * xh);

  // The octant: floor of an estimate.
  const double w = ((sum.s + sum.lost) + t(2) * xl) + t(3) * xh;
  const int below_one = (51 - exponent_field(w)) & 63;
  const uint64_t octant = significand(w) >> below_one;
  const double v = sum.s - without_low_bits(w, below_one);
  const double v1 = v + sum.lost;
  sum.lost = (v - v1) + sum.lost;
  sum.s = (octant & 1 ? -1.0 : 0.0) + v1;

  sum.add(t(2) * xl);
  sum.add(t(3) * xh);
  sum.add(t(3) * xl);
  sum.add(t(4) * xh);
  sum.add(t(4) * xl);
  sum.add(t(5) * xh);
  sum.add(t(5) * xl + t(6) * xh);
  sum.add(t(6) * xl + t(7) * xh);
  const double g = t(7) * xl + t(8) * xh;

  // From parts of pi/4 to radians, with f in two parts.
  const double f = sum.s + g;
  const double shifted = f * split;
  const double fh = (f + shifted) - shifted;
  const double fl = ((sum.s - fh) + g) + sum.lost;
  const double p = pi_4_high * fh;
  const double q = fl * pi_4_high + (fh + fl) * pi_4_low;
  const double r = p + q;
  return {r * sign, ((p - r) + q) * sign, static_cast<uint32_t>(octant + 1) >> 1};
}

Reduced reduce(double x) {
  const double a = magnitude(x), sign = sign_bits(x) ? -1.0 : 1.0;
  return exponent_field(a) <= 1052 ? reduce_medium(a, sign) : reduce_large(a, sign);
}

/// The sine of the reduced x and a number of quarter turns.
double sine(const Reduced& a, bool negative, uint32_t quarters) {
  constexpr double inverse_step = number(0x40245F306DC9C883), shifter = number(0x4338000000000000);
  // pi/32 = step1 + step2 + step3: relative error 2^-123.5
  constexpr double step1 = number(0x3FB921FB54400000), step2 = number(0x3D90B4611A600000),
                   step3 = number(0x3B63198A2E037073);
  // sin r = r + s1 r^3 + ... + s4 r^9 on |r| <= pi/64: relative error 2^-65.1
  constexpr double s1 = number(0xBFC5555555555555), s2 = number(0x3F81111111111111),
                   s3 = number(0xBF2A01A01A01A01A), s4 = number(0x3EC71DE3A556C734);
  // cos r = 1 + k1 r^2 + ... + k4 r^8 on |r| <= pi/64: relative error 2^-65.2
  constexpr double k1 = number(0xBFE0000000000000), k2 = number(0x3FA5555555555555),
                   k3 = number(0xBF56C16C16C16C17), k4 = number(0x3EFA01A01A01A01A);
  const double y = inverse_step * a.rh + shifter;
  const double n = y - shifter;
  const uint32_t quadrant = negative ? -a.quadrant : a.quadrant;
  const uint32_t j = (static_cast<uint32_t>(bits(y)) + 16 * (quadrant + quarters)) & 63;
  const uint64_t* entry = &__dsin_g_CoutTab.entry[4 * j];
  const double c_rest = from_bits(entry[0]), s_high = from_bits(entry[1]),
               s_low = from_bits(entry[2]), c_power = from_bits(entry[3]);

  const double u = -step1 * n + a.rh;
  const double m = step2 * n;
  const double r = u - m;
  const double e = (((u - r) - m) + -step3 * n) + a.rl;
  const double z = r * r;
  const double s = (((s4 * z + s3) * z + s2) * z + s1) * z * r * (c_rest + c_power);
  const double c = ((((k4 * z + k3) * z + k2) * z + k1) * z) * s_high;
  const double d = ((c_rest + c_power) - r * s_high) * e + s_low;
  const double power = c_power * r;
  const double sum = s_high + power;
  const double rest = c_rest * r;
  const double h = rest + sum;
  return ((((sum - h) + rest) + (((s_high - sum) + power) + d)) + s + c) + h;
}

/// What infinities and NaNs give: the default NaN, the NaN itself quieted.
template <class T>
T not_finite(T x) {
  return is_nan(x) ? x * x : x * 0;
}

double sine_quarters_on(double x, uint32_t quarters) {
  if (!is_finite(x)) return not_finite(x);
  return sine(reduce(x), sign_bits(x), quarters);
}

}  // namespace

extern "C" {

void __zorp_dsin_cout_rare(const double* x, double* result) { *result = sine_quarters_on(*x, 0); }
void __zorp_dcos_cout_rare(const double* x, double* result) { *result = sine_quarters_on(*x, 1); }
void __zorp_dsincos_cout_rare(const double* x, double* sine, double* cosine) {
  *sine = sine_quarters_on(*x, 0);
  *cosine = sine_quarters_on(*x, 1);
}
void __zorp_dsincosreg_cout_rare(const double* x, double* sine, double* cosine) {
  __zorp_dsincos_cout_rare(x, sine, cosine);
}

// No finite operand comes here.
void __zorp_dtan_cout_rare(const double* x, double* result) { *result = not_finite(*x); }
void __zorp_ssin_cout_rare(const float* x, float* result) { *result = not_finite(*x); }
void __zorp_scos_cout_rare(const float* x, float* result) { *result = not_finite(*x); }
void __zorp_stan_cout_rare(const float* x, float* result) { *result = not_finite(*x); }

}  // extern "C"
}  // namespace zorp
