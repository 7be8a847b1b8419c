// log, log2, log10, log1p: special values, exact powers, the neighbours of 1, the ends of the
// range.
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

ValueTable with_domain(const std::string& family) {
  ValueTable table{family, {}};
  table.everywhere(0.0, -kInfinity);
  table.everywhere(-0.0, -kInfinity);
  table.everywhere(kInfinity, kInfinity);
  table.everywhere(1.0, 0.0);
  table.nans_are_kept();
  for (Element element : kElements) {
    const Format& f = format(element);
    const Expected default_nan = exactly(f.sign() | f.quiet_nan());
    for (Bits magnitude : {f.min_subnormal(), f.min_normal() - 1, f.min_normal(), f.one(),
                           f.max_finite(), f.infinity()})
      table.add(element, kAllTiers, f.sign() | magnitude, default_nan);
  }
  return table;
}

/// Powers of two from the smallest subnormal to the largest.
template <class F>
void for_powers_of_two(Element element, F f) {
  const Format& format = test::format(element);
  const int bias = (1 << (format.exponent_bits - 1)) - 1;
  for (int n = 1 - bias - format.mantissa_bits; n <= bias; ++n) f(n);
}

const Tiers kFullFloatTiers = {Tier::standard, Tier::rm};

/// The result next to 1 keeps its relative precision: log(1 + e) is e - e^2/2 + ..., which is e or
/// the number below it.
ValueTable log_values() {
  ValueTable table = with_domain("log");
  for (auto [element, tiers] :
       {std::pair{Element::f64, kStandardTier}, {Element::f32, kFullFloatTiers}}) {
    const Bits one = format(element).one();
    const double unit = std::ldexp(1.0, -format(element).mantissa_bits);
    table.add(element, tiers, one + 1, exactly(next_down(element, encode(element, unit))));
    table.add(element, tiers, one - 1, exactly(encode(element, -unit / 2)));
  }
  // The reciprocal serves float up to about 2^126, a normalised argument above, and at 2^-128 and
  // below: here each gives the nearest number.
  for_powers_of_two(Element::f32, [&](int n) {
    table.at(Element::f32, kFullFloatTiers, std::ldexp(1.0, n),
             exactly(encode(Element::f32, n * std::numbers::ln2)));
  });
  // The two ways differ in few operands. Here the nearest number comes from the reciprocal, also
  // where the lanes beside it need the other way.
  const double ordinary = 0x1.41c354p-4;
  table.at(Element::f32, kFullFloatTiers, ordinary,
           exactly(encode(Element::f32, std::log(ordinary))));
  return table;
}

ValueTable log2_values() {
  ValueTable table = with_domain("log2");
  for (Element element : kElements)
    for_powers_of_two(element, [&](int n) {
      table.at(element, kAllTiers, std::ldexp(1.0, n), exactly(encode(element, n)));
    });
  return table;
}

ValueTable log10_values() {
  ValueTable table = with_domain("log10");
  for (int n = 1; n <= 22; ++n) {  // exact in double, up to 10 in float
    const double power = std::pow(10.0, n);
    table.at(Element::f64, kStandardTier, power, exactly(encode(Element::f64, n)));
    if (n <= 10) table.at(Element::f32, kFullFloatTiers, power, exactly(encode(Element::f32, n)));
  }
  return table;
}

ValueTable log1p_values() {
  ValueTable table{"log1p", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  table.everywhere(-1.0, -kInfinity);
  table.everywhere(kInfinity, kInfinity);
  table.nans_are_kept();
  for (Element element : kElements) {
    const Format& f = format(element);
    // The NaN outside the domain has a sign in half alone.
    const Bits nan_sign = element == Element::f16 ? f.sign() : 0;
    for (Bits magnitude : {f.one() + 1, f.max_finite(), f.infinity()})
      table.add(element, kAllTiers, f.sign() | magnitude, exactly(nan_sign | f.quiet_nan()));
    for (Bits sign : {Bits{0}, f.sign()})
      for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal(), f.min_normal() + 1})
        table.add(element, kAllTiers, sign | tiny, exactly(sign | tiny));
    // The last operand above -1 gives a sum of one bit.
    table.add(element, kStandardTier, f.sign() | (f.one() - 1),
              exactly(encode(element, -(f.mantissa_bits + 1) * std::numbers::ln2)));
  }
  // The faster float tier hands these operands to a routine with a table for every 64th of the
  // significand: here both its entries and the borders between them.
  for (int i = 0; i < 128; ++i) {
    const double x = std::ldexp(1 + i / 128.0, 127);
    table.at(Element::f32, kAllTiers, x, exactly(encode(Element::f32, std::log(x))));
  }
  return table;
}

}  // namespace

std::vector<ValueTable> logarithm_values() {
  return {log_values(), log2_values(), log10_values(), log1p_values()};
}

}  // namespace zorp::test
