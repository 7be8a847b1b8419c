// lgamma and lgammar, a lane at a time: log |gamma(x)| in extended arithmetic, rounded once, and
// the sign of gamma(x).
//
// Positive x is served by polynomials on short ranges and, from where they end, by Stirling's
// series. Negative x comes to them by the recurrence gamma(x + 1) = x gamma(x) or by the reflection
// gamma(x) gamma(-x) = -pi / (x sin(pi x)). Both cancel near the zeros of log gamma between the
// negative integers: around each zero a polynomial of its own keeps the relative error small.
#include "special/lgamma_ranges.h"
#include "special/own_log.h"
#include "special/own_logl.h"

namespace zorp {
namespace {

/// 0.5 ln(2 pi)
constexpr Extended half_log_2pi = 0x3FFEEB3F8E4325F5A535_ext;

// ---- Float and half: ranges of x > 0 ------------------------------------------------------------

/// For x in [2^(i + 2), 2^(i + 3)): t from 0 to 1, exact.
struct BinadeArgument {
  int i;
  long double t;
  BinadeArgument(double range, long double x)
      : i(static_cast<int>(bits(range) >> 52) - 1025),
        t((x - from_bits(uint64_t(i + 1025) << 52)) * from_bits(uint64_t(1021 - i) << 52)) {}
};

/// log gamma for x in [1, 8192).
long double own_lgammaf_pos(long double x) {
  const double range = static_cast<double>(x);
  if (range >= 4) {
    const BinadeArgument binade(range, x);
    return float_binades[binade.i](binade.t);
  }
  if (x == 2) return 0;
  if (range >= 2) return (x - 2) * float_from_2(x);
  if (range >= 1.75) return float_from_1_75(x);
  if (range >= 1.5) return float_from_1_5(x);
  if (range >= 1.25) return float_from_1_25(x + value_of(float_minimum));
  return float_from_1(x);
}

// ---- Float and half: x < 0 ----------------------------------------------------------------------

// The zeros in (-3, -2) and in (-4, -3) that lie left (_LR) and right (_RR) of the minimum: bounds
// and zero, and a cubic in the distance from it.
// lgamma(x) = p[3 + j] + p[2 + j] t + p[1 + j] t^2 + p[j] t^3
// with p = float_LRP, j = 4 i, t = x - float_LRIB[3 i + 1]
// on [float_LRIB[3 i], float_LRIB[3 i + 2]], i = 0..1: error 2^-42.8
constexpr uint64_t float_LRIB[2][3] = {
    {0xC005FB43A9328A1D, 0xC005FB410A1BD901, 0xC005FB3E6B0527E5},
    {0xC00FA47BD0D6F455, 0xC00FA471547C2FE5, 0xC00FA45D80000000}};
constexpr uint64_t float_LRP[2][4] = {
    {0xC034185AC31314FF, 0x4023267F3C28DFE3, 0xBFFEA12DA904B194, 0x3CA8FB8530BA7689},
    {0xC0AD25359E70C888, 0x406F76DEAEA1B8C6, 0xC034B99D966C5644, 0xBCBDDC0336980B58}};
// lgamma(x) = p[3 + j] + p[2 + j] t + p[1 + j] t^2 + p[j] t^3
// with p = float_RRP, j = 4 i, t = x - float_RRIB[3 i + 1]
// on [float_RRIB[3 i], float_RRIB[3 i + 2]], i = 0..1: error 2^-61.5
constexpr uint64_t float_RRIB[2][3] = {
    {0xC003A7FF3517A988, 0xC003A7FC9600F86C, 0xC003A7F9F6EA4750},
    {0xC00926105BB50ACB, 0xC009260DBC9E59AF, 0xC009260B1D87A893}};
constexpr uint64_t float_RRP[2][4] = {
    {0x3FF694A6058D9592, 0x40136EEBB003A92B, 0x3FF83FE966AF5360, 0x3C90323B6D1FE86D},
    {0x405C11371268DA38, 0x4039D4D2977D2C23, 0x401F20A65F2FAC62, 0x3CDE9605E3AE7A62}};

struct Root {
  const uint64_t (&bounds)[3];
  const uint64_t (&c)[4];
};

bool between(double x, const uint64_t (&bounds)[3]) {
  return from_bits(bounds[0]) < x && x < from_bits(bounds[2]);
}

// sin(pi d) = pi d e^(float_reflection[7] d^2 + ... + float_reflection[0] d^16)
// on [0, 1/2]: relative error 2^-34.5
constexpr uint64_t float_reflection[] = {0xBFD58731A486E820, 0xBFA4452CC28E15A9, 0xBFC86A0D5252E778,
                                         0xBFC93E08C9EE284B, 0xBFD013F6E1B86C4F, 0xBFD5B3F19F7A341F,
                                         0xBFE15132555C9EDD, 0xBFFA51A662480E35};
constexpr uint64_t float_reflection_odd[] = {0xBFA4452CC28E15A9, 0xBFC93E08C9EE284B,
                                             0xBFD5B3F19F7A341F, 0xBFFA51A662480E35};
constexpr uint64_t float_reflection_even[] = {0xBFD58731A486E820, 0xBFC86A0D5252E778,
                                              0xBFD013F6E1B86C4F, 0xBFE15132555C9EDD};

template <class Arithmetic>
long double float_by_recurrence(long double x) {
  long double product = 1;
  for (; x < 1; x = x + 1) product = product * x;
  return own_lgammaf_pos(x) - own_log<Arithmetic>(static_cast<double>(magnitude(product)));
}

template <class Arithmetic>
long double float_by_reflection(float x) {
  const float a = -x;
  const float n = (a + 0x1.8p23f) - 0x1.8p23f;
  const long double d = a - n;
  const long double w = d * d, s = w * w;
  const long double log_d = own_log<Arithmetic>(static_cast<double>(magnitude(d)));
  const double log_a = own_log<Arithmetic>(a);
  if (a < 8192) {
    const long double r =
        w * horner(float_reflection_odd, s) + s * horner(float_reflection_even, s);
    return (-static_cast<long double>(log_a) - own_lgammaf_pos(a) - r) - log_d;
  }
  const long double r = horner(float_reflection, w) * w;
  return ((static_cast<long double>(x) - 0.5L) * log_a - half_log_2pi + a - r) - log_d;
}

template <class Arithmetic>
long double float_negative(float x) {
  const float a = -x;
  if (a < 2) return float_by_recurrence<Arithmetic>(x);
  if (a < 4) {
    const int n = a > 3;
    const Root nearby[] = {{float_LRIB[n], float_LRP[n]}, {float_RRIB[n], float_RRP[n]}};
    for (const Root& root : nearby)
      if (between(x, root.bounds))
        return horner(root.c, static_cast<long double>(x) - from_bits(root.bounds[1]));
    return float_by_recurrence<Arithmetic>(x);
  }
  return a < 9 ? float_by_recurrence<Arithmetic>(x) : float_by_reflection<Arithmetic>(x);
}

// ---- Double: ranges of x > 0 --------------------------------------------------------------------

constexpr FactorTable<7> binades = _C5;

/// log gamma for x in [0.875, 512).
long double own_lgamma_pos(long double x) {
  const double range = static_cast<double>(x);
  if (range >= 4) {
    const BinadeArgument binade(range, x);
    return binades.of[binade.i](binade.t);
  }
  if (range >= 2.25) {
    const long double s = x * x;
    long double v = (x - 2) * quotient_k;
    for (int i = 0; i < 11; ++i) v = v * (s + quotient_a[i] * x + quotient_b[i]);
    return v;
  }
  if (range >= 1.75) return double_around_2(x - 2);
  if (range >= 1.25) return double_around_minimum(x + double_minimum) + log_at_minimum;
  return double_around_1(x - 1);
}

/// 1 / (12 x) - 1 / (360 x^3), what Stirling's series adds.
long double stirling_rest(long double x) { return (1 / x) * (1.0L / 12 - (1.0L / 360) / (x * x)); }

// ---- Double: x < 0 ------------------------------------------------------------------------------

// The odd and the even powers of d^2 in ln(sin(pi d) / (pi d)).
struct DoubleReflection {
  uint64_t high[4];
  Extended low[3];
  long double operator()(long double s) const { return horner_from(horner(high, s), low, s); }
};
// sin(pi d) = pi d e^(p[6] w + ... + p[0] w^13 + q[6] w^2 + ... + q[0] w^14)
// with p = reflection_odd, q = reflection_even, w = d^2 on [0, 1/2]: relative error 2^-58.0
constexpr DoubleReflection reflection_odd = {
    {0x3FD36D6D6CE263D7, 0xBF9957F5146FC7AF, 0xBFBBE1703F315086, 0xBFC248DEC29CAC4A},
    {0xBFFCCD00EFF2F8F86899_ext, 0xBFFDADA06587FACD668B_ext, 0xBFFFD28D3312983E98A0_ext}};
constexpr DoubleReflection reflection_even = {
    {0xBFDC1BF0931AE591, 0xBFD23AB9E6CC88AC, 0xBFBD516F4FD9FB18, 0xBFC007B324E23040},
    {0xBFFCAAB5A3CCEFCD3628_ext, 0xBFFD80859B5C318E19A5_ext, 0xBFFE8A8991563EC7EB33_ext}};

/// Polynomials around a zero, from the constant term up, in chains of even and odd powers.
template <class Row>
long double at_root(const Row& row, long double t) {
  const long double s = t * t;
  long double even = 0, odd = 0;
  for (int k = Row::degree / 2; k >= 0; --k) {
    even = even * s + row.coefficient(2 * k);
    if (2 * k + 1 <= Row::degree) odd = odd * s + row.coefficient(2 * k + 1);
  }
  return even + t * odd;
}

/// A product carried as two numbers.
struct CarriedProduct {
  long double high = 1, low = 0;

  void multiply(long double t) {
    constexpr long double splitter = 0x1p33L + 1;
    const long double high_1 = upper(high, splitter), low_1 = high - high_1;
    const long double high_2 = upper(t, splitter), low_2 = t - high_2;
    const long double p = high * t;
    const long double error =
        ((high_1 * high_2 - p) + high_1 * low_2 + low_1 * high_2) + low_1 * low_2;
    const long double rest = low * t + error;
    high = p + rest;
    low = rest - (high - p);
  }

 private:
  static long double upper(long double v, long double splitter) {
    const long double c = v * splitter;
    return c - (c - v);
  }
};

long double double_by_recurrence(long double x) {
  long double product = 1;
  for (; x < 1; x = x + 1) product = product * x;
  return own_lgamma_pos(x) - own_logl(magnitude(product));
}

long double double_by_long_recurrence(long double x) {
  CarriedProduct product;
  for (; x < 1; x = x + 1) product.multiply(x);
  return own_lgamma_pos(x) - own_logl(magnitude(product.high));
}

long double double_by_reflection(double negative) {
  const double a = -negative;
  const double n = (a + 0x1.8p52) - 0x1.8p52;
  const long double x = negative;
  const long double d = a - n;
  const long double w = d * d, s = w * w;
  const long double r = w * reflection_odd(s) + s * reflection_even(s);
  const long double log_a = own_logl(a), log_d = own_logl(magnitude(d));
  if (a < 512) return (-log_a - own_lgamma_pos(a) - r) - log_d;
  return ((x - 0.5L) * log_a - half_log_2pi - x + stirling_rest(x) - r) - log_d;
}

long double double_negative(double x) {
  const double a = -x;
  if (a < 2) return double_by_recurrence(x);
  if (a < 15) {
    const int n = static_cast<int>(a) - 2;  // a is no integer
    const long double t = x;
    if (between(x, _LRIB[n])) return at_root(_LRP[n], t - from_bits(_LRIB[n][1]));
    if (between(x, _RRIB[n])) return at_root(_RRP[n], t - from_bits(_RRIB[n][1]));
    return double_by_recurrence(x);
  }
  return a < 17 ? double_by_long_recurrence(x) : double_by_reflection(x);
}

// ---- The routines -------------------------------------------------------------------------------

constexpr uint32_t float_overflow = 0x7C44AF8D;
constexpr uint64_t double_overflow = 0x7F5754D9278B51A8;

template <class T>
bool is_integer_or_huge(T x) {
  return __builtin_floor(static_cast<double>(x)) == x;
}

template <class Arithmetic>
[[gnu::noinline]] float log_gamma(float x) {
  if (is_nan(x) || magnitude_bits(x) == Format<float>::infinity) return x * x;
  if (x == 0) return static_cast<float>(infinity);
  if (x < 0) {
    if (is_integer_or_huge(x)) return static_cast<float>(infinity);
    return static_cast<float>(float_negative<Arithmetic>(x));
  }
  if (bits(x) > float_overflow) return static_cast<float>(infinity);
  const long double v = x;
  if (x < 1) return static_cast<float>(own_lgammaf_pos(v + 1) - own_log<Arithmetic>(x));
  if (x == 1) return 0;
  if (x < 8192) return static_cast<float>(own_lgammaf_pos(v));
  return static_cast<float>((v - 0.5L) * own_log<Arithmetic>(x) + half_log_2pi - v);
}

[[gnu::noinline]] double log_gamma(double x) {
  if (is_nan(x) || magnitude_bits(x) == Format<double>::infinity) return x * x;
  if (x == 0) return infinity;
  if (x < 0) {
    if (is_integer_or_huge(x)) return infinity;
    return static_cast<double>(double_negative(x));
  }
  if (bits(x) >= double_overflow) return infinity;
  const long double v = x;
  if (x < 0.875) return static_cast<double>(own_lgamma_pos(v + 1) - own_logl(v));
  if (x == 1) return 0;
  if (x < 512) return static_cast<double>(own_lgamma_pos(v));
  return static_cast<double>((v - 0.5L) * own_logl(v) + half_log_2pi - v + stirling_rest(v));
}

/// The sign of gamma(x); 1 at its negative poles, that of the zero at 0.
int32_t gamma_sign(double x) {
  if (x == 0) return __builtin_signbit(x) ? -1 : 1;
  if (!(x < 0) || !is_finite(x) || __builtin_floor(x) == x) return 1;
  return static_cast<int64_t>(x) & 1 ? 1 : -1;
}

void evaluate(const double* x, double* result) {
  const X87Settings<true> settings;
  *result = log_gamma(*x);
}
void evaluate(const float* x, float* result) {
  const X87Settings<false> settings;
  *result = log_gamma<Separate>(*x);
}
void evaluate(const half* x, half* result) {
  const X87Settings<false> settings;
  *result = narrowed(log_gamma<Fused>(widened(*x)));
}

}  // namespace

extern "C" {

void __zorp_dlgamma_cout_rare(const double* x, double* result) { evaluate(x, result); }
void __zorp_slgamma_cout_rare(const float* x, float* result) { evaluate(x, result); }
void __zorp_hlgamma_cout_rare(const half* x, half* result) { evaluate(x, result); }

void __zorp_dlgammar_cout_rare(const double* x, double* result, int32_t* sign) {
  evaluate(x, result);
  *sign = gamma_sign(*x);
}
void __zorp_slgammar_cout_rare(const float* x, float* result, int32_t* sign) {
  evaluate(x, result);
  *sign = gamma_sign(*x);
}
void __zorp_hlgammar_cout_rare(const half* x, half* result, int32_t* sign) {
  evaluate(x, result);
  *sign = gamma_sign(widened(*x));
}

}  // extern "C"
}  // namespace zorp
