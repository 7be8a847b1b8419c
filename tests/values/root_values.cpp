// cbrt, rcbrt, hypot: powers of two of every exponent, special values, the ends of the range.
#include <cmath>
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The exponents of the least and the greatest power of two.
struct Exponents {
  int least, greatest;
  explicit Exponents(Element element) {
    const Format& f = format(element);
    greatest = (1 << (f.exponent_bits - 1)) - 1;
    least = 1 - greatest - f.mantissa_bits;
  }
};

/// The root of 2^e is nearest in all tiers: the significand is 1 and no polynomial takes part.
ValueTable cube_roots(const char* family, int power) {
  ValueTable table{family, {}};
  const double zero = power < 0 ? kInfinity : 0.0, infinity = power < 0 ? 0.0 : kInfinity;
  table.everywhere(0.0, zero);
  table.everywhere(-0.0, -zero);
  table.everywhere(kInfinity, infinity);
  table.everywhere(-kInfinity, -infinity);
  table.nans_are_kept();
  constexpr double roots[] = {1, 1.2599210498948731648, 1.5874010519681994748};  // 2^(b/3)
  constexpr double inverses[] = {1, 0.7937005259840997374, 0.6299605249474365824};
  for (Element element : kElements) {
    const Exponents range(element);
    for (int e = range.least; e <= range.greatest; ++e) {
      const int third = int(std::floor(e / 3.0)), rest = e - 3 * third;
      const double root = std::ldexp(power < 0 ? inverses[rest] : roots[rest], power * third);
      for (double sign : {1.0, -1.0})
        table.at(element, kAllTiers, sign * std::ldexp(1.0, e),
                 exactly(encode(element, sign * root)));
    }
  }
  return table;
}

ValueTable cbrt_values() {
  ValueTable table = cube_roots("cbrt", 1);
  for (Element element : {Element::f64, Element::f32})
    for (double n : {3.0, 5.0, 7.0, 11.0, 13.0, 15.0, 63.0, 65.0, 127.0, 251.0, 255.0})
      table.at(element, kStandardTier, -n * n * n, exactly(encode(element, -n)));
  return table;
}

ValueTable hypot_values() {
  ValueTable table{"hypot", {}};
  for (Element element : kElements) {
    const Format& f = format(element);
    auto both_orders = [&](const Tiers& tiers, Bits x, Bits y, Bits result) {
      for (Bits sign : {Bits{0}, f.sign()})
        for (auto [first, second] : {std::pair{x, y}, {y, x}})
          table.entries.push_back({element, tiers, {first, second ^ sign}, {exactly(result)}});
    };
    // Right triangles of every size, through the fast path and the rare routine to both ends of the
    // range. The looser tiers of double and float are exact in the rare routine alone.
    const Exponents range(element);
    const int reach = element == Element::f64 ? 515 : 79;
    for (int e = range.least; e < range.greatest; ++e) {
      const bool exact = element == Element::f16 || std::abs(e) > reach;
      const Tiers& tiers = exact ? kAllTiers : kStandardTier;
      auto scaled = [&](double v) { return encode(element, std::ldexp(v, e)); };
      both_orders(tiers, scaled(1), 0, scaled(1));
      if (e + 2 <= range.greatest) both_orders(tiers, scaled(3), scaled(4), scaled(5));
      if (e + 4 <= range.greatest) both_orders(tiers, scaled(8), scaled(15), scaled(17));
    }
    both_orders(kAllTiers, 0, 0, 0);
    both_orders(kAllTiers, f.min_subnormal(), f.min_subnormal(), f.min_subnormal());
    both_orders(kAllTiers, f.max_finite(), f.max_finite(), f.infinity());
    both_orders(element == Element::f16 ? kAllTiers : kStandardTier, f.max_finite(), f.one(),
                f.max_finite());
    // An infinity wins over a NaN, and a NaN over a number.
    for (Bits nan : {f.quiet_nan() | 5, f.signalling_nan() | f.sign()}) {
      both_orders(kAllTiers, f.infinity(), f.quiet_nan() | 5, f.infinity());
      for (Bits number : {Bits{0}, f.min_subnormal(), f.one(), f.max_finite()})
        for (const Tuple& operands : {Tuple{nan, number}, Tuple{number, nan}})
          table.entries.push_back({element, kAllTiers, operands, {exactly(nan | f.quiet_bit())}});
    }
    both_orders(kAllTiers, f.infinity(), f.one(), f.infinity());
    both_orders(kAllTiers, f.infinity(), f.infinity(), f.infinity());
  }
  return table;
}

}  // namespace

std::vector<ValueTable> root_values() {
  return {cbrt_values(), cube_roots("rcbrt", -1), hypot_values()};
}

}  // namespace zorp::test
