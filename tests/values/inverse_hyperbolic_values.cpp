// asinh, acosh, atanh: special values, the ends of the domains, tiny and large operands.
#include <cmath>
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Operands outside the domain, of both signs: a quiet NaN, in double without a sign.
void add_outside(ValueTable& table, Element element, std::initializer_list<Bits> operands) {
  const Format& f = format(element);
  const Bits nan = element == Element::f64 ? f.quiet_nan() : f.sign() | f.quiet_nan();
  for (Bits operand : operands) table.add(element, kAllTiers, operand, exactly(nan));
}

/// The results of tiny operands are the operands.
void add_tiny(ValueTable& table, Element element, const Tiers& tiers) {
  const Format& f = format(element);
  for (Bits sign : {Bits{0}, f.sign()})
    for (Bits tiny : {f.min_subnormal(), f.min_subnormal() + 1, f.min_normal() - 1, f.min_normal(),
                      f.min_normal() + 1})
      table.add(element, tiers, sign | tiny, exactly(sign | tiny));
}

/// asinh and acosh of a large number: log 2x.
double log_of_twice(double x) { return double(std::log(2.0L * x)); }

/// The numbers from which on x^2 is not formed, with their neighbours, and the largest.
void add_large(ValueTable& table, bool odd) {
  for (auto [element, bound] : {std::pair{Element::f64, 0x1p511}, {Element::f32, 0x1p63}}) {
    const Bits first = encode(element, bound);
    for (Bits x : {next_down(element, first), first, next_up(element, first),
                   format(element).max_finite()}) {
      const double y = log_of_twice(value(element, x));
      table.add(element, kStandardTier, x, exactly(encode(element, y)));
      table.add(element, kReducedTiers, x, kFinite);
      if (odd)
        table.add(element, kStandardTier, format(element).sign() | x, exactly(encode(element, -y)));
    }
  }
}

ValueTable asinh_values() {
  ValueTable table{"asinh", {}};
  for (double x : {0.0, -0.0, kInfinity, -kInfinity}) table.everywhere(x, x);
  table.nans_are_kept();
  for (Element element : kElements) add_tiny(table, element, kAllTiers);
  add_large(table, true);
  return table;
}

ValueTable acosh_values() {
  ValueTable table{"acosh", {}};
  table.everywhere(1.0, 0.0);
  table.everywhere(kInfinity, kInfinity);
  table.nans_are_kept();
  for (Element element : kElements) {
    const Format& f = format(element);
    add_outside(
        table, element,
        {0, f.min_subnormal(), f.min_normal(), f.one() - 1, f.sign(), f.sign() | f.min_subnormal(),
         f.sign() | f.one(), f.sign() | f.max_finite(), f.sign() | f.infinity()});
  }
  // Next to 1 the result is the root of twice the distance.
  table.add(Element::f64, kStandardTier, format(Element::f64).one() + 1,
            exactly(encode(Element::f64, std::sqrt(0x1p-51))));
  add_large(table, false);
  return table;
}

ValueTable atanh_values() {
  ValueTable table{"atanh", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  table.everywhere(1.0, kInfinity);
  table.everywhere(-1.0, -kInfinity);
  table.nans_are_kept();
  for (Element element : kElements) {
    const Format& f = format(element);
    add_outside(table, element,
                {f.one() + 1, f.max_finite(), f.infinity(), f.sign() | (f.one() + 1),
                 f.sign() | f.max_finite(), f.sign() | f.infinity()});
    // The coefficient of x in the faster float tier isn't quite 1.
    add_tiny(table, element, element == Element::f32 ? kStandardTier : kAllTiers);
    if (element == Element::f16) continue;
    // The last operands of the domain, 1 - 2^-n: log(2^(n+1) - 1) / 2.
    const double y = std::log(std::ldexp(1.0, f.mantissa_bits + 2) - 1) / 2;
    table.add(element, kStandardTier, f.one() - 1, exactly(encode(element, y)));
    table.add(element, kStandardTier, f.sign() | (f.one() - 1), exactly(encode(element, -y)));
  }
  return table;
}

}  // namespace

std::vector<ValueTable> inverse_hyperbolic_values() {
  return {asinh_values(), acosh_values(), atanh_values()};
}

}  // namespace zorp::test
