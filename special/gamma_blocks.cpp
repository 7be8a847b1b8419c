// The constants of lgamma's kernels, from the polynomials of its routine.
#include "log/log_tables.h"
#include "special/gamma.h"
#include "special/gamma_tables.h"
#include "special/lgamma_ranges.h"

namespace zorp {
namespace {

constexpr double absolute(double v) { return v < 0 ? -v : v; }

// ---- Float -------------------------------------------------------------------------------------

/// The entries of one range, and the bound of its polynomial's error: with |u| <= largest, the sum
/// of the terms' magnitudes times 2^-47. A value is off by less than 2^-48 of that sum: u by half a
/// unit in the last place, which the derivative multiplies by 10 at most, and each of 20 operations
/// by another half.
constexpr void enter(LgammaFloatBlock& block, int index, double scale, double offset,
                     double largest, const double (&c)[11]) {
  double sum = 0;
  for (int i = 10; i >= 0; --i) {
    block.c[i].entry[index] = bits(c[i]);
    sum = sum * largest + absolute(c[i]);
  }
  block.scale.entry[index] = bits(scale);
  block.offset.entry[index] = bits(offset);
  block.error.entry[index] = bits(sum * 0x1p-47);
}

template <int n>
constexpr void enter(LgammaFloatBlock& block, int index, double offset, double largest,
                     const FloatRange<n>& range) {
  double c[11] = {from_bits(range.c)};
  for (int i = 0; i < n; ++i) {
    c[2 * i + 1] = from_bits(range.a[n - 1 - i]);
    c[2 * i + 2] = from_bits(range.b[n - 1 - i]);
  }
  enter(block, index, 1, offset, largest, c);
}

constexpr LgammaFloatBlock lgamma_float_block() {
  LgammaFloatBlock block{.scale = {},
                         .offset = {},
                         .error = {},
                         .c = {},
                         .one = 0x3FF0000000000000,
                         .two = 0x4000000000000000,
                         .end = 0x40C0000000000000,  // 8192
                         .exponent_1 = 1024};
  enter(block, 0, 0, 4, float_from_2);
  double scale = 0.25;
  for (int i = 0; i < 11; ++i, scale /= 2) {
    const FloatBinade& b = float_binades[i];
    const uint64_t patterns[11] = {b.d[2], b.c[3], b.c[2], b.c[7], b.c[6], b.d[1],
                                   b.d[0], b.c[5], b.c[4], b.c[1], b.c[0]};
    double c[11];
    for (int j = 0; j < 11; ++j) c[j] = from_bits(patterns[j]);
    enter(block, i + 1, scale, -1, 1, c);
  }
  enter(block, 12, 0, 2, float_from_1);
  enter(block, 13, from_bits(float_minimum), 2, float_from_1_25);
  enter(block, 14, 0, 2, float_from_1_5);
  enter(block, 15, 0, 2, float_from_1_75);
  return block;
}

// ---- Double ------------------------------------------------------------------------------------

/// A sum of two doubles with some 100 bits, for the expansions below.
struct TwoDoubles {
  double high = 0, low = 0;

  constexpr TwoDoubles() = default;
  constexpr TwoDoubles(double high, double low = 0) : high(high), low(low) {}
  constexpr TwoDoubles(Extended v) : TwoDoubles(split(v).high, split(v).low) {}

  friend constexpr TwoDoubles operator+(TwoDoubles a, TwoDoubles b) {
    const double sum = a.high + b.high, part = sum - a.high;
    const double error = (a.high - (sum - part)) + (b.high - part);
    return normalized(sum, error + a.low + b.low);
  }
  friend constexpr TwoDoubles operator*(TwoDoubles a, TwoDoubles b) {
    const double product = a.high * b.high;
    return normalized(product,
                      __builtin_fma(a.high, b.high, -product) + a.high * b.low + a.low * b.high);
  }

 private:
  static constexpr TwoDoubles normalized(double high, double low) {
    const double sum = high + low;
    return {sum, low - (sum - high)};
  }
};

/// A polynomial in u, from the constant term up.
struct Polynomial {
  static constexpr int degree = LgammaDoubleBlock::degree;
  TwoDoubles c[degree + 1];

  /// The value of the terms' magnitudes, each times the weight that its power has.
  template <class Weight>
  constexpr double magnitudes(double u, Weight weight) const {
    double sum = 0, power = 1;
    for (int k = 0; k <= degree; ++k, power *= absolute(u))
      sum += weight(k) * absolute(c[k].high) * power;
    return sum;
  }
};

/// p(u + step) as a polynomial in u, by repeated synthetic division.
constexpr Polynomial shifted(Polynomial p, TwoDoubles step) {
  for (int i = 0; i < p.degree; ++i)
    for (int k = p.degree - 1; k >= i; --k) p.c[k] = p.c[k] + step * p.c[k + 1];
  return p;
}

/// What the routine evaluates in z: K times the product of z^2 + a z + b.
struct Product {
  Extended b[11], a[11], k;

  constexpr Polynomial expanded() const {
    Polynomial p{{TwoDoubles(k)}};
    for (int i = 0; i < 11; ++i)
      for (int j = 2 * i + 2; j >= 0; --j) {
        TwoDoubles c = TwoDoubles(b[i]) * p.c[j];
        if (j >= 1) c = c + TwoDoubles(a[i]) * p.c[j - 1];
        if (j >= 2) c = c + p.c[j - 2];
        p.c[j] = c;
      }
    return p;
  }
  /// Bound of the value's relative error for |z - middle| <= reach, in units of 2^-64. A factor has
  /// the errors of its terms and of two sums; to multiply by it makes one more.
  constexpr double error(double middle, double reach, double) const {
    const double most = absolute(middle) + reach;
    double sum = 2;
    for (int i = 0; i < 11; ++i) {
      const double a_i = split(a[i]).high, b_i = split(b[i]).high;
      const double terms = most * (most + absolute(a_i));
      const double first_sum = most * (absolute(middle + a_i) + reach);
      const double least =
          absolute((middle + a_i) * middle + b_i) - reach * (absolute(2 * middle + a_i) + reach);
      sum += 2 + (terms + first_sum) / least;
    }
    return sum;
  }
};

/// What the routine evaluates in z: z A(z^2) + z^2 B(z^2), to which it may add a constant.
struct Series {
  DoubleRange range;
  bool has_constant = false;
  Extended constant{};

  /// Divided by z where there is no constant.
  constexpr Polynomial expanded() const {
    Polynomial p;
    TwoDoubles* c = p.c;
    if (has_constant) *c++ = constant;
    for (int i = 8; i >= 0; --i, c += 2) {
      c[0] = i < 6 ? TwoDoubles(from_bits(range.a_high[i])) : range.a_low[i - 6];
      if (i > 0) c[1] = i < 7 ? TwoDoubles(from_bits(range.b_high[i - 1])) : range.b_low[i - 7];
    }
    return p;
  }
  /// As above, where the value is not below `least`. A term has the errors of z and of z^2 in every
  /// power and of two operations in every step of its chain.
  constexpr double error(double middle, double reach, double least) const {
    return expanded().magnitudes(absolute(middle) + reach, [](int k) {
      return 3 * (k / 2) + k + 5;
    }) / least;
  }
};

/// Where the argument is x scale + offset = u and |u| <= reach, and the routine's z is u +
/// z_middle: the value is P(u) times x factor_scale + factor_offset.
struct Place {
  double scale, offset, reach, factor_scale, factor_offset;
};

template <class Form>
constexpr void enter(LgammaDoubleBlock& block, int index, const Place& place, TwoDoubles z_middle,
                     const Form& form) {
  constexpr int split_terms = LgammaDoubleBlock::split_terms;
  const Polynomial p = shifted(form.expanded(), z_middle);
  double bound = 0;
  constexpr int parts = 64;
  const double reach = place.reach / parts;
  for (int part = 0; part < parts; ++part) {
    const double u = reach * (2 * part + 1 - parts), most = absolute(u) + reach;
    double value = 0;
    for (int k = p.degree; k >= 0; --k) value = value * u + p.c[k].high;
    const double slope = p.magnitudes(most, [](int k) { return k; }) / most;
    const double least = absolute(value) - reach * slope;
    // A term of the tail has the errors of its rounding, of u^2 in every power, of every step of
    // its chain, and of the chains' sum.
    const double tail =
        p.magnitudes(most, [](int k) { return k < split_terms ? 0x1p-40 : k - split_terms + 3; });
    const double own = tail / least * 0x1p-53;
    const double routine = form.error(z_middle.high + u, reach, least) * 0x1p-64;
    if (own + routine > bound) bound = own + routine;
  }
  block.scale.entry[index] = bits(place.scale);
  block.offset.entry[index] = bits(place.offset);
  block.factor_scale.entry[index] = bits(place.factor_scale);
  block.factor_offset.entry[index] = bits(place.factor_offset);
  block.error.entry[index] = bits(bound * 1.01);
  for (int k = 0; k < split_terms; ++k) {
    block.high[k].entry[index] = bits(p.c[k].high);
    block.low[k].entry[index] = bits(p.c[k].low);
    // What follows a term must be small beside it for their sum to be exact in two doubles.
    double rest = 0;
    for (int j = p.degree; j > k; --j) rest = (rest + absolute(p.c[j].high)) * place.reach;
    if (rest > absolute(p.c[k].high) * (k > 1 ? 0.5 : 1)) __builtin_abort();
  }
  for (int k = split_terms; k <= p.degree; ++k)
    block.tail[k - split_terms].entry[index] = bits(p.c[k].high);
}

constexpr LgammaDoubleBlock lgamma_double_block() {
  LgammaDoubleBlock block{.scale = {},
                          .offset = {},
                          .factor_scale = {},
                          .factor_offset = {},
                          .error = {},
                          .high = {},
                          .low = {},
                          .tail = {},
                          .start = 0x3FEC000000000000,  // 0.875
                          .quarter = 0x3FD0000000000000,
                          .four = 0x4010000000000000,
                          .end = 0x4080000000000000,  // 512
                          .next_index = 4,
                          .ln_high = ln_high_double_16,
                          .ln_low = ln_low_double_16,
                          // (log(1 + r) - r) / r^2 to 1/13 r^11
                          .log_c = {bits(-0.5), bits(1 / 3.0), bits(-0.25), bits(0.2),
                                    bits(-1 / 6.0), bits(1 / 7.0), bits(-0.125), bits(1 / 9.0),
                                    bits(-0.1), bits(1 / 11.0), bits(-1 / 12.0), bits(1 / 13.0)},
                          // ln 2 = ln2hi + ln2lo: relative error 2^-77.5
                          .ln2hi = 0x3FE62E42FEFA0000,
                          .ln2lo = 0x3D7CF79ABC9E0000,
                          .three_quarters = bits(0.75),
                          .one = bits(1.0),
                          .least = bits(0x1p-1000),
                          .largest = bits(0x1p1000),
                          // The logarithms of both, the difference in extended arithmetic, x + 1.
                          .log_error = bits(0x1.4p-61),
                          .log_relative_error = bits(0x1.8p-62),
                          .half = bits(0.5),
                          .half_log_2pi = bits(0.5 * 1.83787706640934548356),
                          .one_12th = bits(1 / 12.0),
                          .one_360th = bits(1 / 360.0),
                          // Both less than 12 units of 2^-64.
                          .stirling_error = bits(0x1.8p-60)};
  enter(block, 0, {1, -2, 0.25, 1, -2}, 0.0, Series{double_around_2});
  Product quotient{.b = {}, .a = {}, .k = quotient_k};
  for (int i = 0; i < 11; ++i) {
    quotient.b[i] = quotient_b[i];
    quotient.a[i] = quotient_a[i];
  }
  enter(block, 1, {1, -2.5, 0.25, 1, -2}, 2.5, quotient);
  enter(block, 2, {1, -3, 0.25, 1, -2}, 3.0, quotient);
  enter(block, 3, {1, -3.5, 0.25, 1, -2}, 3.5, quotient);
  enter(block, 4, {1, -3.875, 0.125, 1, -2}, 3.875, quotient);
  double scale = 0.25;
  for (int i = 0; i < 7; ++i, scale /= 2) {
    Product binade{.b = {}, .a = {}, .k = _C5[i][22]};
    for (int j = 0; j < 11; ++j) {
      binade.b[j] = _C5[i][2 * j];
      binade.a[j] = _C5[i][2 * j + 1];
    }
    enter(block, 5 + i, {scale, -1.5, 0.5, 0, 1}, 0.5, binade);
  }
  const Series around_1{double_around_1};
  enter(block, 12, {1, -0.9375, 0.0625, 1, -1}, -0.0625, around_1);
  enter(block, 13, {1, -1.125, 0.125, 1, -1}, 0.125, around_1);
  const Series minimum{double_around_minimum, true, log_at_minimum};
  enter(block, 14, {1, -1.375, 0.125, 0, 1}, TwoDoubles(1.375) + double_minimum, minimum);
  enter(block, 15, {1, -1.625, 0.125, 0, 1}, TwoDoubles(1.625) + double_minimum, minimum);
  return block;
}

}  // namespace

extern "C" {
const LgammaDoubleBlock __zorp_dlgamma_data = lgamma_double_block();
const LgammaFloatBlock __zorp_slgamma_data = lgamma_float_block();
}
}  // namespace zorp
