// |x|^y in double-word arithmetic in which every operation rounds by itself.
//
// log2 |x|: x = 2^E m, and three short reciprocals from tables bring m down to t3 = r1 r2 r3 m
// close to K, a number of few bits near log2 e. As t3 - K is nearly log2 (t3/K), the polynomial for
// this logarithm only adds what is above that difference. The high parts of the tables' logarithms
// are so short that double holds their sum with E; all rests and errors go to a low part.
//
// 2^(y log2 |x|): the product is rounded to a multiple of 1/128, whose power comes from a table,
// and all else is the argument r of a polynomial. Where the result is subnormal, its low part joins
// before the last rounding.
#include "pow/scalar_power.h"

#include "pow/power_path_tables.h"
#include "pow/two_parts.h"

namespace zorp {
namespace {

/// The constants of an element type.
template <class T>
struct Scheme;
template <>
struct Scheme<double> {
  static constexpr double k = from_bits(uint64_t{0x3FF7154740000000});
  static constexpr double splitter = from_bits(uint64_t{0x41A0000002000000});  // 2^27 + 1
  static constexpr double shifter = from_bits(uint64_t{0x42C8000000000000});   // unit 1/128
  // For subnormals, operands and results.
  static constexpr int scaling = 200;
  static constexpr double scale_up = from_bits(uint64_t{0x4C70000000000000});    // 2^200
  static constexpr double scale_down = from_bits(uint64_t{0x3370000000000000});  // 2^-200
  // Of the sum of the exponent fields of y and the logarithm: from the first on the power is out of
  // range, below the second it is 1.
  static constexpr uint32_t out_of_range = 2057, near_one = 1985;
  // The last exponent field, continued below 0, of a result that isn't simply 0.
  static constexpr int last_exponent = -61;
  // The bits of the fraction that index the tables: how many stand above them, how many they are.
  static constexpr int above[] = {0, 4, 8}, count[] = {5, 5, 7};
  // log2(1 + u/k) = (1 + p1) u + p2 u^2 + ... + p4 u^4
  // on |u| <= 1.01 k/2^16: relative error 2^-66.5
  static constexpr double p1 = from_bits(uint64_t{0x3E79C3A6966457E8});
  static constexpr double p2 = from_bits(uint64_t{0xBFD62E4346694107});
  static constexpr double p3 = from_bits(uint64_t{0x3FC47FD462B6DEE1});
  static constexpr double p4 = from_bits(uint64_t{0xBFB550472A9012D8});
};
template <>
struct Scheme<float> {
  static constexpr float k = from_bits(uint32_t{0x3FB88000});
  static constexpr float splitter = from_bits(uint32_t{0x45800800});  // 2^12 + 1
  static constexpr float shifter = from_bits(uint32_t{0x47C00000});   // unit 1/128
  static constexpr int scaling = 64;
  static constexpr float scale_up = from_bits(uint32_t{0x5F800000});    // 2^64
  static constexpr float scale_down = from_bits(uint32_t{0x1F800000});  // 2^-64
  static constexpr uint32_t out_of_range = 265, near_one = 193;
  static constexpr int last_exponent = -32;
  static constexpr int above[] = {0, 2, 4}, count[] = {3, 3, 4};
  // log2(1 + u/k) = (1 + p1) u + p2 u^2 + ... + p4 u^4 on |u| <= 1.25 k/2^9: relative error 2^-34.5
  static constexpr float p1 = from_bits(uint32_t{0x3A6A6369});
  static constexpr float p2 = from_bits(uint32_t{0xBEB1C35D});
  static constexpr float p3 = from_bits(uint32_t{0x3E246F69});
  static constexpr float p4 = from_bits(uint32_t{0xBDAB1EA1});
};

template <class T, int n>
TwoParts<T> pair_at(const Table<T, n>& pairs, int i) {
  return {from_bits(pairs.entry[2 * i]), from_bits(pairs.entry[2 * i + 1])};
}
template <class T, int n>
T at(const Table<T, n>& table, int i) {
  return from_bits(table.entry[i]);
}

template <class T>
int exponent_field(T v) {
  return static_cast<int>(magnitude_bits(v) >> Format<T>::fraction_bits);
}
template <class T>
T with_exponent_field(T v, int field) {
  return from_bits(
      Pattern<T>((bits(v) & ~Format<T>::infinity) | Pattern<T>(field) << Format<T>::fraction_bits));
}

/// The index into a stage's table: bits of v's fraction, rounded by the next lower one.
template <int stage, class T>
int stage_index(T v) {
  constexpr int count = Scheme<T>::count[stage - 1];
  constexpr int lowest = Format<T>::fraction_bits - Scheme<T>::above[stage - 1] - count - 1;
  const auto field = static_cast<int>(bits(v) >> lowest & ((2 << count) - 1));
  return (field + 1) >> 1;
}

/// e + l1 + l2 + l3; in double the sum of the high parts is exact, in float its errors are taken
/// along.
TwoParts<double> sum(double e, TwoParts<double> l1, TwoParts<double> l2, TwoParts<double> l3) {
  return {((e + l1.high) + l2.high) + l3.high, (l2.low + l3.low) + l1.low};
}
TwoParts<float> sum(float e, TwoParts<float> l1, TwoParts<float> l2, TwoParts<float> l3) {
  const float s1 = l1.high + e;
  float rest = (e - s1) + l1.high;
  const float s2 = l2.high + s1;
  rest = rest + ((s1 - s2) + l2.high);
  const float s3 = l3.high + s2;
  rest = rest + ((s2 - s3) + l3.high);
  return {s3, ((rest + l1.low) + l2.low) + l3.low};
}

/// 2^r - 1 over r.
double power_polynomial(double r) {
  // 2^r = 1 + q1 r + ... + q5 r^5 on |r| <= 1/256: relative error 2^-60.4
  constexpr double q1 = from_bits(uint64_t{0x3FE62E42FEFA39EF});
  constexpr double q2 = from_bits(uint64_t{0x3FCEBFBDFF82C58F});
  constexpr double q3 = from_bits(uint64_t{0x3FAC6B08D704A0C0});
  constexpr double q4 = from_bits(uint64_t{0x3F83B2AB6FBA4E77});
  constexpr double q5 = from_bits(uint64_t{0x3F55D87FE78A6731});
  return (((q5 * r + q4) * r + q3) * r + q2) * r + q1;
}
float power_polynomial(float r) {
  // 2^r = 1 + q1 r + ... + q3 r^3 on |r| <= 1/256: relative error 2^-36.5
  constexpr float q1 = from_bits(uint32_t{0x3F317218});
  constexpr float q2 = from_bits(uint32_t{0x3E75FDF0});
  constexpr float q3 = from_bits(uint32_t{0x3D635847});
  return (q3 * r + q2) * r + q1;
}

/// A logarithm times y, as two numbers: what the table and the scale take a multiple of 1/128 from,
/// and the rest.
template <class T>
TwoParts<T> product(T high, T low, const Exponent<T>& y) {
  return {high * y.high, y.low * high + (low * y.low + y.high * low)};
}
/// The same with both terms of single weight in the first number.
TwoParts<float> joined_product(float high, float low, const Exponent<float>& y) {
  const float z1 = high * y.high;
  const float z2 = y.high * low + high * y.low;
  const float z = z1 + z2;
  return {z, y.low * low + ((z1 - z) + z2)};
}

/// sign 2^n (power.high + v), v holding power.low; 2^n alone may lie outside the range.
template <class T>
T assemble(T high, T v, int n, T sign) {
  using S = Scheme<T>;
  const T w = high + v;
  const int e = exponent_field(w) + n;
  if (e >= exponent_field(from_bits(Format<T>::infinity)))
    return sign * from_bits(Format<T>::infinity);
  if (e > 0) return sign * with_exponent_field(w, e);
  if (e < S::last_exponent) return sign * T(0);
  const T factor = with_exponent_field(T(1), n + Format<T>::bias + S::scaling);
  const T down = sign * S::scale_down;
  if (e < -9) return (w * factor) * down;
  const T rest = v + (high - w);
  const T wh = upper_part(w), wl = w - wh;
  return ((rest + wl) * factor + wh * factor) * down;
}

template <class T, class Tables>
T power(T x, const Exponent<T>& y, T sign, const Tables& tables,
        TwoParts<T> (*multiply)(T high, T low, const Exponent<T>& y)) {
  using S = Scheme<T>;
  T a = from_bits(magnitude_bits(x));
  int e = -Format<T>::bias;
  if (magnitude_bits(x) < Format<T>::implicit_bit) {
    a = a * S::scale_up;
    e = e - S::scaling;
  }
  const T m = with_exponent_field(a, Format<T>::bias);
  const int i1 = stage_index<1>(m);
  // In the upper half the table's logarithm counts from the next power of two.
  e = e + exponent_field(a) + (i1 >= 1 << (S::count[0] - 1));
  const T r1 = at(tables.r1, i1);
  const T t1 = r1 * m;
  const int i2 = stage_index<2>(t1);
  const T r2 = at(tables.r2, i2);
  const T t2 = t1 * r2;
  const int i3 = stage_index<3>(t2);
  const T r3 = at(tables.r3, i3);
  const T t3 = t2 * r3;
  const TwoParts<T> logs = sum(static_cast<T>(e), pair_at(tables.l1, i1), pair_at(tables.l2, i2),
                               pair_at(tables.l3, i3));
  const T u = t3 - S::k;
  const T lh = logs.high + u;

  const uint32_t range = exponent_field(lh) + exponent_field(y.y);
  if (range >= S::out_of_range)
    return sign * (sign_bits(lh) == sign_bits(y.y) ? from_bits(Format<T>::infinity) : T(0));
  if (range < S::near_one) return sign;

  // What the three roundings above took from t3: r1 r2 r3 m - t3.
  const T g = (r1 * r2) * r3;
  const T mh = upper_part(m), ml = m - mh;
  const T gh = upper_part(g), gl = g - gh;
  const T l = ml * gl + (mh * gl + (gh * ml + (mh * gh - t3)));
  const T u2 = u + l;
  const T lo = logs.low + (l + ((logs.high - lh) + u));
  const T p = (((S::p4 * u2 + S::p3) * u2 + S::p2) * u2 + S::p1) * u2;
  const T lm = lh + p;
  const T log = lo + lm;
  const T log_rest = ((lh - lm) + p) + ((lm - log) + lo);

  const T high = upper_part(log), low = log - high;
  const TwoParts<T> z = multiply(high, low, y);
  const T shifted = S::shifter + z.high;
  const auto steps = static_cast<int>(bits(shifted) - bits(S::shifter));
  const T r = log_rest * y.y + z.low + (z.high - (shifted - S::shifter));
  const TwoParts<T> power = pair_at(tables.powers, steps & 127);
  const T v = power_polynomial(r) * r * power.high + power.low;
  return assemble(power.high, v, steps >> 7, sign);
}

template <class T>
T upper_part_of(T v) {
  const T t = v * Scheme<T>::splitter;
  return t - (t - v);
}

}  // namespace

double upper_part(double v) { return upper_part_of(v); }
float upper_part(float v) { return upper_part_of(v); }

double scalar_power(double x, const Exponent<double>& y, double sign) {
  return power(x, y, sign, __dpow_g_CoutTab, product<double>);
}
float scalar_power(float x, float y, float sign) {
  return power(x, Exponent(y), sign, __spow_g_CoutTab, joined_product);
}
float scalar_power(float x, const Exponent<float>& y, float sign) {
  return power(x, y, sign, __spow_g_CoutTab, product<float>);
}

extern "C" {

const DoublePowerTables __dpow_g_CoutTab = {
    .r1 = power_reciprocals_1_double,
    .l1 = power_logs_1_double,
    .r2 = power_reciprocals_2_double,
    .l2 = power_logs_2_double,
    .r3 = power_reciprocals_3_double,
    .l3 = power_logs_3_double,
    .powers = exp2_pairs_double_128,
};
ZORP_SAME_BLOCK(DoublePowerTables, __dpown_g_CoutTab, __dpow_g_CoutTab);
ZORP_SAME_BLOCK(DoublePowerTables, __drootn_g_CoutTab, __dpow_g_CoutTab);

const FloatPowerTables __spow_g_CoutTab = {
    .r1 = power_reciprocals_1_float,
    .l1 = power_logs_1_float,
    .r2 = power_reciprocals_2_float,
    .l2 = power_logs_2_float,
    .r3 = power_reciprocals_3_float,
    .l3 = power_logs_3_float,
    .powers = exp2_pairs_float_128,
};
ZORP_SAME_BLOCK(FloatPowerTables, __hpow_g_CoutTab, __spow_g_CoutTab);
ZORP_SAME_BLOCK(FloatPowerTables, __spown_g_CoutTab, __spow_g_CoutTab);
ZORP_SAME_BLOCK(FloatPowerTables, __hpown_g_CoutTab, __spow_g_CoutTab);
ZORP_SAME_BLOCK(FloatPowerTables, __srootn_g_CoutTab, __spow_g_CoutTab);
ZORP_SAME_BLOCK(FloatPowerTables, __hrootn_g_CoutTab, __spow_g_CoutTab);

}  // extern "C"
}  // namespace zorp
