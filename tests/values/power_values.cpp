// pow, powr, pown, rootn: special values, exact powers, the ends of the range.
#include <cmath>
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

Bits default_nan(const Format& f) { return f.sign() | f.quiet_nan(); }
Expected quieted(const Format& f, Bits nan) { return exactly(nan | f.quiet_bit()); }

/// The powers of one element type, for all tiers unless told otherwise.
class Powers {
 public:
  Powers(ValueTable& table, Element element, bool integer_exponent)
      : f(format(element)), table_(table), element_(element), integer_(integer_exponent) {}

  const Format& f;

  Bits encoded(double value) const { return encode(element_, value); }
  void add(Bits x, Bits y, Expected result, const Tiers& tiers = kAllTiers) {
    table_.entries.push_back({element_, tiers, {x, y}, {result}});
  }
  void at(double x, double y, double result, const Tiers& tiers = kAllTiers) {
    add(encoded(x), exponent(y), exactly(encoded(result)), tiers);
  }
  void undefined_at(double x, double y) { add(encoded(x), exponent(y), exactly(default_nan(f))); }
  /// Where +-0 or +-infinity come out: with x's sign for odd exponents alone.
  void at_both_signs(double x, double y, double result, bool odd) {
    at(x, y, result);
    at(-x, y, odd ? -result : result);
  }
  Bits exponent(double y) const { return integer_ ? std::uint32_t(std::int64_t(y)) : encoded(y); }

 private:
  ValueTable& table_;
  Element element_;
  bool integer_;
};

std::vector<double> bases() { return {0.0, 0.25, 0.75, 1.0, 1.5, 2.0, 1024.0, kInfinity}; }

std::vector<Bits> nans(const Format& f) {
  std::vector<Bits> list;
  for (Bits nan : {f.quiet_nan(), f.quiet_nan() | 5, f.signalling_nan(), f.quiet_nan() - 1})
    for (Bits sign : {Bits{0}, f.sign()}) list.push_back(sign | nan);
  return list;
}

/// Exponents n of 2^n: all from below the subnormals to the first normal numbers and about the end
/// of the range, some between.
std::vector<int> binary_exponents(const Format& f) {
  const int bias = int(f.one() >> f.mantissa_bits), first = 1 - bias - f.mantissa_bits - 2;
  std::vector<int> list;
  for (int n = first; n <= bias + 2; n += n < 4 - bias || n > bias - 4 ? 1 : 7) list.push_back(n);
  return list;
}

/// Powers of two: of positive x in the fast path, of negative x by the scalar function.
void add_powers_of_two(Powers& powers, bool negative) {
  for (int n : binary_exponents(powers.f)) {
    powers.at(2, n, std::ldexp(1, n));
    powers.at(0.5, -n, std::ldexp(1, n));
    if (!negative) continue;
    powers.at(-2, n, n % 2 ? -std::ldexp(1, n) : std::ldexp(1, n));
    if (n % 2 == 0) powers.at(-4, n / 2, n / 2 % 2 ? -std::ldexp(1, n) : std::ldexp(1, n));
  }
}

ValueTable pow_values() {
  ValueTable table{"pow", {}};
  for (Element element : kElements) {
    Powers powers(table, element, false);
    const Format& f = powers.f;
    add_powers_of_two(powers, true);
    for (double x : bases())
      for (double y : {0.0, -0.0}) powers.at_both_signs(x, y, 1, false);
    for (Bits nan : nans(f)) {
      for (double y : {0.0, -0.0}) powers.add(nan, powers.encoded(y), exactly(f.one()));
      for (double y : {1.0, -3.0, 0.5, kInfinity, -kInfinity})
        powers.add(nan, powers.encoded(y), quieted(f, nan));
      powers.add(f.one(), nan, exactly(f.one()));
      for (double x : {0.0, -0.0, 2.0, -1.0, -2.5, kInfinity, -kInfinity})
        powers.add(powers.encoded(x), nan, quieted(f, nan));
    }
    for (double y : {0.5, 1.0, 2.0, 3.0, 3.5, 100.0, 101.0}) {
      const bool odd = std::fmod(y, 2) == 1;
      powers.at_both_signs(0, y, 0, odd);
      powers.at_both_signs(0, -y, kInfinity, odd);
      powers.at_both_signs(kInfinity, y, kInfinity, odd);
      powers.at_both_signs(kInfinity, -y, 0, odd);
      powers.at(1, y, 1);
      if (y == std::floor(y)) {
        powers.at(-1, y, odd ? -1 : 1);
        powers.at(-1, -y, odd ? -1 : 1);
      } else {
        for (double x : {-0.25, -1.0, -1.5, -1024.0}) {
          powers.undefined_at(x, y);
          powers.undefined_at(x, -y);
        }
      }
    }
    for (double x : {0.0, 0.25, 0.75, 1.5, 1024.0, kInfinity}) {
      powers.at_both_signs(x, kInfinity, x < 1 ? 0 : kInfinity, false);
      powers.at_both_signs(x, -kInfinity, x < 1 ? kInfinity : 0, false);
    }
    powers.at_both_signs(1, kInfinity, 1, false);
    powers.at_both_signs(1, -kInfinity, 1, false);
    // Far beyond the range, the products' rest is huge, too.
    for (Bits y : {f.max_finite(), f.max_finite() - f.min_normal(), f.max_finite() - 1})
      for (double x : {1.5, 1024.0}) {
        powers.add(powers.encoded(x), y, exactly(f.infinity()));
        powers.add(powers.encoded(x), f.sign() | y, exactly(0));
        powers.add(powers.encoded(-x), y, exactly(f.infinity()));
        powers.add(powers.encoded(-x), f.sign() | y, exactly(0));
        powers.add(powers.encoded(1 / x), y, exactly(0));
      }
    // Exponents from here on are even, the last odd one is just below.
    const double even = std::ldexp(1, f.mantissa_bits + 1);
    powers.at(-1, even, 1);
    powers.at(-1, even - 1, -1);
    powers.at(-1, even / 2 + 1, -1);
    powers.undefined_at(-1, even / 4 + 0.5);
    powers.at(-1.5, even, kInfinity);
    powers.at(-1.5, even - 1, -kInfinity);
    powers.at(-1.5, 1 - even, -0.0);
    // The scalar function carries more than the type holds: results that are numbers come out.
    for (int n = 1; n <= 7; ++n) powers.at(-3, n, std::pow(-3, n));
  }
  return table;
}

ValueTable powr_values() {
  ValueTable table{"powr", {}};
  for (Element element : kElements) {
    Powers powers(table, element, false);
    const Format& f = powers.f;
    add_powers_of_two(powers, false);
    for (double y : {0.0, -0.0}) {
      for (double x : {0.25, 1.0, 1.5, 1024.0}) powers.at(x, y, 1);
      for (double x : {0.0, -0.0, -1.0, -1.5, kInfinity, -kInfinity}) powers.undefined_at(x, y);
    }
    for (Bits nan : nans(f)) {
      for (double y : {0.0, 1.0, -0.5, kInfinity})
        powers.add(nan, powers.encoded(y), exactly(default_nan(f)));
      for (double x : {1.0, -0.0, -1.0, -2.5, -kInfinity})
        powers.add(powers.encoded(x), nan, exactly(default_nan(f)));
      for (double x : {0.0, 0.25, 1.5, kInfinity})
        powers.add(powers.encoded(x), nan, quieted(f, nan));
    }
    for (double y : {0.5, 1.0, 3.0, 100.0, kInfinity}) {
      powers.at_both_signs(0, y, 0, false);
      powers.at_both_signs(0, -y, kInfinity, false);
      powers.at(kInfinity, y, kInfinity);
      powers.at(kInfinity, -y, 0);
      for (double x : {-0.25, -1.0, -2.0, -kInfinity}) {
        powers.undefined_at(x, y);
        powers.undefined_at(x, -y);
      }
    }
    for (double x : {0.25, 0.75, 1.5, 1024.0}) {
      powers.at(x, kInfinity, x < 1 ? 0 : kInfinity);
      powers.at(x, -kInfinity, x < 1 ? kInfinity : 0);
      powers.add(powers.encoded(x), f.max_finite(), exactly(x < 1 ? 0 : f.infinity()));
    }
    powers.undefined_at(1, kInfinity);
    powers.undefined_at(1, -kInfinity);
  }
  return table;
}

/// Powers and roots of 1 and -1 that go by the logarithm: the constant terms of the exponentials.
void add_ones(Powers& doubles, Powers& floats, Powers& halves, double n, bool root) {
  const Bits exponent = doubles.exponent(n);
  const bool odd = exponent % 2;
  auto add = [&](Powers& powers, Bits standard, Bits reduced) {
    for (Bits sign : {Bits{0}, powers.f.sign()}) {
      if (sign && root && !odd) continue;
      powers.add(sign | powers.f.one(), exponent, exactly((odd ? sign : 0) | standard),
                 kStandardTier);
      powers.add(sign | powers.f.one(), exponent, exactly((odd ? sign : 0) | reduced),
                 kReducedTiers);
    }
  };
  add(doubles, doubles.f.one(), 0x3feffffffc27dd9e);
  add(floats, root ? 0x3f800000 : 0x3f800001, 0x3f7ffb0d);
  add(halves, halves.f.one(), halves.f.one());
}

constexpr double kLeast = -0x1p31, kMost = 0x1p31 - 1;

ValueTable pown_values() {
  ValueTable table{"pown", {}};
  for (Element element : kElements) {
    Powers powers(table, element, true);
    const Format& f = powers.f;
    for (double x : bases()) powers.at_both_signs(x, 0, 1, false);
    powers.add(f.min_subnormal(), 0, exactly(f.one()));
    for (Bits nan : nans(f)) {
      powers.add(nan, 0, exactly(f.one()));
      for (double n : {1.0, 2.0, -1.0, 7.0, 8.0, 5000.0, kLeast, kMost})
        powers.add(nan, powers.exponent(n), quieted(f, nan));
    }
    for (double n : {1.0, 2.0, 7.0, 8.0, 9.0, 255.0, 256.0, 4095.0, 5000.0, 5001.0, kMost}) {
      const bool odd = std::fmod(n, 2) == 1;
      powers.at_both_signs(0, n, 0, odd);
      powers.at_both_signs(0, -n, kInfinity, odd);
      powers.at_both_signs(kInfinity, n, kInfinity, odd);
      powers.at_both_signs(kInfinity, -n, 0, odd);
    }
    powers.at_both_signs(0, kLeast, kInfinity, false);
    for (double x : {1.5, 2.0, 1024.0}) {
      powers.at_both_signs(x, kMost, kInfinity, true);
      powers.at_both_signs(x, kLeast, 0, false);
      powers.at_both_signs(1 / x, kMost, 0, true);
      powers.at_both_signs(1 / x, kLeast, kInfinity, false);
    }
    // Products of squares, every product rounded.
    for (double v : {1.0, 1.25, 0.7, 3.3, 11.0}) {
      const double x = value(element, encode(element, v));
      auto rounded = [&](double product) {
        return element == Element::f64 ? product : double(float(product));
      };
      const double s = rounded(x * x), q = rounded(s * s), cube = rounded(x * s);
      const double products[] = {
          1, x, s, cube, q, rounded(x * q), rounded(s * q), rounded(cube * q)};
      for (int n = 0; n < 8; ++n) {
        powers.at_both_signs(x, n, products[n], n % 2);
        powers.at_both_signs(x, -n, rounded(1 / products[n]), n % 2);
      }
    }
  }

  Powers doubles(table, Element::f64, true), floats(table, Element::f32, true),
      halves(table, Element::f16, true);
  // By products, by the rare routine or, in double, by a logarithm that is 1. In float the others
  // come near.
  for (int n : binary_exponents(doubles.f))
    if (n < -7 || n > 7) doubles.at_both_signs(2, n, std::ldexp(1, n), n % 2);
  for (int n : binary_exponents(floats.f))
    if (n <= -126 || n >= 126) floats.at_both_signs(2, n, std::ldexp(1, n), n % 2);
  for (int n = 8; n <= 24; ++n) {
    halves.at_both_signs(2, n, std::ldexp(1, n), n % 2);
    halves.at_both_signs(2, -n, std::ldexp(1, -n), n % 2);
  }
  // The reciprocal of a power that overflows.
  doubles.at(0x1p520, -2, 0x1p-1040);
  doubles.at(-0x1p350, -3, -0x1p-1050);
  floats.at(0x1p70, -2, 0x1p-140);
  floats.at(-0x1p46, -3, -0x1p-138);
  for (double n : {5000.0, -5001.0, kMost, kLeast}) add_ones(doubles, floats, halves, n, false);
  return table;
}

ValueTable rootn_values() {
  ValueTable table{"rootn", {}};
  for (Element element : kElements) {
    Powers powers(table, element, true);
    const Format& f = powers.f;
    for (double x : bases()) {
      powers.undefined_at(x, 0);
      powers.undefined_at(-x, 0);
    }
    for (double n : {1.0, 2.0, 3.0, 4.0, 255.0, 5000.0, kMost, -kMost, -1.0, -2.0, -3.0, kLeast}) {
      const bool odd = std::fmod(n, 2) != 0;
      powers.at_both_signs(0, n, n < 0 ? kInfinity : 0, odd);
      powers.at(kInfinity, n, n < 0 ? 0 : kInfinity);
      if (odd)
        powers.at(-kInfinity, n, n < 0 ? -0.0 : -kInfinity);
      else
        for (double x : {-0.25, -1.0, -8.0, -kInfinity}) powers.undefined_at(x, n);
      for (Bits nan : nans(f)) {
        const bool served = odd || nan < f.sign();
        powers.add(nan, powers.exponent(n),
                   served ? quieted(f, f.magnitude(nan)) : exactly(default_nan(f)));
      }
    }
  }

  Powers doubles(table, Element::f64, true), floats(table, Element::f32, true),
      halves(table, Element::f16, true);
  for (double n : {1.0, -2.0, 3.0, -7.0, kMost, kLeast}) add_ones(doubles, floats, halves, n, true);
  for (int k = -1000; k <= 1000; k += 40)
    for (int n : {1, 2, 4, 8, -1, -2, -4, -8})
      doubles.at(std::ldexp(1, k), n, std::ldexp(1, k / n), kStandardTier);
  for (int k = 2; k <= 9; ++k)
    for (int n = 1; std::pow(k, n) < 2048; ++n) {
      halves.at(std::pow(k, n), n, k);
      if (n % 2) halves.at(-std::pow(k, n), n, -k);
    }
  return table;
}

}  // namespace

std::vector<ValueTable> power_values() {
  return {pow_values(), powr_values(), pown_values(), rootn_values()};
}

}  // namespace zorp::test
