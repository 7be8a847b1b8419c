// atan2 and atan2pi of single pairs with a NaN, an infinity, a zero, or an operand so small or so
// large that the quotient needs care. In double arithmetic in which every operation rounds by
// itself, also for float.
#include "invtrig/atan2.h"
#include "invtrig/pairs.h"

namespace zorp {
namespace {

constexpr double pi = from_bits(uint64_t{0x400921FB54442D18});
constexpr double pi_low = from_bits(uint64_t{0x3CA1A62633145C07});
constexpr double pi_half = from_bits(uint64_t{0x3FF921FB54442D18});
constexpr double pi_half_low = from_bits(uint64_t{0x3C91A62633145C07});

int exponent_field(double magnitude) { return static_cast<int>(bits(magnitude) >> 52); }
double power_of_two(int exponent_field) {
  return from_bits(static_cast<uint64_t>(exponent_field) << 52);
}

// ---- Axes and diagonals ------------------------------------------------------------------------

/// The angles other than 0, as encodings.
template <class T>
struct Angles {
  Pattern<T> eighth_turn, quarter_turn, three_eighths_turn, half_turn;
};

constexpr Angles<double> radians_double = {0x3FE921FB54442D18, 0x3FF921FB54442D18,
                                           0x4002D97C7F3321D2, 0x400921FB54442D18};
constexpr Angles<float> radians_float = {0x3F490FDB, 0x3FC90FDB, 0x4016CBE4, 0x40490FDB};
constexpr Angles<half> radians_half = {0x3A48, 0x3E48, 0x40B6, 0x4248};
constexpr Angles<double> half_turns_double = {0x3FD0000000000000, 0x3FE0000000000000,
                                              0x3FE8000000000000, 0x3FF0000000000000};
constexpr Angles<float> half_turns_float = {0x3E800000, 0x3F000000, 0x3F400000, 0x3F800000};
constexpr Angles<half> half_turns_half = {0x3400, 0x3800, 0x3A00, 0x3C00};

template <class T>
bool is_infinite(T v) {
  return magnitude_bits(v) == Format<T>::infinity;
}

/// Writes the result of pairs with a NaN, of which the first counts, an infinity or a zero, and
/// tells whether this is one.
template <class T>
bool special_angle(T y, T x, const Angles<T>& angles, T* result) {
  const bool negative = sign_bits(x);
  Pattern<T> angle;
  if (is_nan(y) || is_nan(x)) {
    *result = quieted(is_nan(y) ? y : x);
    return true;
  } else if (is_infinite(y)) {
    angle = !is_infinite(x) ? angles.quarter_turn
            : negative      ? angles.three_eighths_turn
                            : angles.eighth_turn;
  } else if (is_infinite(x) || magnitude_bits(y) == 0) {
    angle = negative ? angles.half_turn : 0;
  } else if (magnitude_bits(x) == 0) {
    angle = angles.quarter_turn;
  } else {
    return false;
  }
  *result = from_bits(Pattern<T>(angle | sign_bits(y)));
  return true;
}

// ---- The angle in general ----------------------------------------------------------------------

/// atan of t, small, with z about t^2: t + t p(z), p a polynomial for atan(t)/t - 1.
Pair small_arc(const Pair& t, double z) {
  // atan t = t + c1 t^3 + ... + c7 t^15 on |t| <= 1/8: relative error 2^-61.7
  constexpr double c1 = from_bits(uint64_t{0xBFD5555555555555}),
                   c2 = from_bits(uint64_t{0x3FC99999999991BB}),
                   c3 = from_bits(uint64_t{0xBFC2492492382A27}),
                   c4 = from_bits(uint64_t{0x3FBC71C6F9B157D3}),
                   c5 = from_bits(uint64_t{0xBFB745BE69CCA475}),
                   c6 = from_bits(uint64_t{0x3FB3AB7C1048AFD1}),
                   c7 = from_bits(uint64_t{0xBFB029BD34239994});
  const double p = ((((((c7 * z + c6) * z + c5) * z + c4) * z + c3) * z + c2) * z + c1) * z;
  const double whole = t.high + t.low;
  const double high = split(whole);
  const double rest = ((t.high - whole) + t.low) + (whole - high);
  const double p_high = split(p);
  const double p_low = p - p_high;
  const Pair s = sum(high * p_high, high);
  return {s.high, rest + s.low + (p_low * high + (p_high * rest + rest * p_low))};
}

/// The angle of (x, |y|) where the exponents differ by 53 at most.
Pair general_angle(double y, double x, const ArcTable& table) {
  const double ay = magnitude(y), ax = magnitude(x);
  const double q = ay / ax;
  // Both are scaled so that |y| lies near 1.
  const int field = exponent_field(ay);
  const double scale = power_of_two(field == 0 ? 2045 : field == 2046 ? 1 : 2046 - field);
  const double a = ay * scale, b = ax * scale;
  const double a_high = split(a), b_high = split(b);
  Pair arc;
  if (q >= 0.125) {
    // atan(a/b) = atan c + atan((a - b c) / (b + a c)) with c, of three bits, next to q.
    int i = static_cast<int32_t>(static_cast<uint32_t>(bits(q) >> 32) - 0x3FC00000) >> 19;
    i = i < 113 ? i : 113;
    const double c = from_bits((bits(q) & 0x7FF8000000000000) | 0x0004000000000000);
    const double m1 = b_high * -c, m2 = -c * (b - b_high);
    const double m = m1 + m2;
    const Pair n = sum(a, m);
    const double n_low = ((m1 - m) + m2) + n.low;
    const double n_high = split(n.high);
    const double k1 = a_high * c, k2 = c * (a - a_high);
    const double k = k1 + k2;
    const Pair d = sum(b, k);
    const double d_high = split(d.high);
    const double d_low = ((k1 - k) + k2) + d.low + (d.high - d_high);
    const Pair t = product({n_high, n_low + (n.high - n_high)}, reciprocal(d_high, d_low));
    const double whole = t.high + t.low;
    const Pair rest = small_arc(t, whole * whole);
    const Pair entry = {from_bits(table.entry[2 * i]), from_bits(table.entry[2 * i + 1])};
    const Pair s = sum(rest.high, entry.high);
    arc = {s.high, rest.low + s.low + entry.low};
  } else {
    const Pair t = product({a_high, a - a_high}, reciprocal(b_high, b - b_high));
    arc = small_arc(t, q * q);
  }
  // pi less the arc for a negative x.
  const bool negative = sign_bits(x);
  const Pair base = negative ? Pair{pi, pi_low} : Pair{0, 0};
  if (negative) arc = {-arc.high, -arc.low};
  const Pair s = sum(arc.high, base.high);
  return {s.high, base.low + (arc.low + s.low)};
}

double with_sign_instead(double v, double sign) { return with_sign_of(magnitude(v), sign); }

// ---- atan2 -------------------------------------------------------------------------------------

/// atan2 of numbers that are neither zero nor infinite.
double atan2(double y, double x, const ArcTable& table) {
  const double ay = magnitude(y), ax = magnitude(x);
  const int d = exponent_field(ay) - exponent_field(ax);
  double angle;
  if (d < -53 && x < 0) {
    angle = pi;
  } else if (d < -53) {
    angle = ay / ax;  // so small that the arc is the quotient
  } else if (d <= 53) {
    const Pair general = general_angle(y, x, table);
    angle = general.low + general.high;
  } else if (d > 73) {
    angle = pi_half;
  } else {
    angle = (pi_half_low - x / ay) + pi_half;
  }
  return with_sign_instead(angle, y);
}

// ---- atan2pi -----------------------------------------------------------------------------------

/// 2^-82/pi
constexpr Pair inv_pi_scaled = {from_bits(uint64_t{0x3AB45F3070000000}),
                                from_bits(uint64_t{0xB901B1BBEAD603D9})};

/// |y| / (pi x) for a quotient below 2^-52, x positive and of moderate size. Where the result is
/// subnormal or nearly so, it is computed times 2^82 and rounds once, at the end.
double tiny_quotient_over_pi(double y, double x) {
  const bool y_is_tiny = exponent_field(y) <= 53;
  const Pair by = y_is_tiny ? inv_pi_scaled : inv_pi_pair;
  if (y_is_tiny) y *= 0x1p82;
  const double y_high = split(y), x_high = split(x);
  Pair r = reciprocal(x_high, x - x_high);
  const auto normalised_quotient = [&] {
    const Pair q = product({y_high, y - y_high}, r);
    const double high = q.high + q.low;
    return Pair{high, (q.high - high) + q.low};
  };
  Pair q = normalised_quotient();
  if (exponent_field(magnitude(q.high * by.high)) >= 61) return over_pi(q.high, q.low, by);
  r = {r.high * 0x1p82, r.low * 0x1p82};
  q = normalised_quotient();
  return over_pi(q.high, q.low, by) * 0x1p-82;
}

double atan2pi(double y, double x, const ArcTable& table) {
  const double ay = magnitude(y), ax = magnitude(x);
  const int largest = exponent_field(ay > ax ? ay : ax);
  const double scale = largest >= 1920 ? 0x1p-128 : largest <= 126 ? 0x1p128 : 1;
  const double b = ax * scale, a = ay * scale;
  const int d = exponent_field(a) - exponent_field(b);
  double angle;
  if (d < -53 && x < 0) {
    angle = 1;
  } else if (d < -53) {
    angle = tiny_quotient_over_pi(a, b);
  } else if (d <= 53) {
    const Pair general = general_angle(a, x * scale, table);
    angle = over_pi(general.high, general.low);
  } else if (d > 73) {
    angle = 0.5;
  } else {
    // 1/2 - x / (pi |y|) as (pi/2 - x/|y|) / pi: pi/2 times the upper part of 1/pi in two parts.
    const double w = pi_half_low - x * scale / a;
    angle =
        (w * inv_pi_pair.high + (inv_pi_pair.low * w + from_bits(uint64_t{0xBE2BCB4A23E73336}))) +
        from_bits(uint64_t{0x3FE0000001BCB4A2});
  }
  return with_sign_instead(angle, y);
}

}  // namespace

extern "C" {

void __zorp_datan2_cout_rare(const double* y, const double* x, double* result) {
  if (!special_angle(*y, *x, radians_double, result)) *result = atan2(*y, *x, __datan2_g_CoutTab);
}
void __zorp_satan2_cout_rare(const float* y, const float* x, float* result) {
  if (!special_angle(*y, *x, radians_float, result))
    *result = static_cast<float>(atan2(*y, *x, __satan2_g_CoutTab));
}
void __zorp_hatan2_cout_rare(const half* y, const half* x, half* result) {
  special_angle(*y, *x, radians_half, result);
}

void __zorp_datan2pi_cout_rare(const double* y, const double* x, double* result) {
  if (!special_angle(*y, *x, half_turns_double, result))
    *result = atan2pi(*y, *x, __datan2pi_g_CoutTab);
}
void __zorp_satan2pi_cout_rare(const float* y, const float* x, float* result) {
  if (!special_angle(*y, *x, half_turns_float, result))
    *result = static_cast<float>(atan2(*y, *x, __satan2pi_g_CoutTab) * inv_pi);
}
void __zorp_hatan2pi_cout_rare(const half* y, const half* x, half* result) {
  special_angle(*y, *x, half_turns_half, result);
}

}  // extern "C"
}  // namespace zorp
