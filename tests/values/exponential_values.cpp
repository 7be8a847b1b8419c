// exp, exp2, exp10, expm1: special values, the ends of the range, exact powers.
#include <cmath>
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

ValueTable with_limits(const std::string& family) {
  ValueTable table{family, {}};
  table.everywhere(0.0, 1.0);
  table.everywhere(-0.0, 1.0);
  table.everywhere(kInfinity, kInfinity);
  table.everywhere(-kInfinity, 0.0);
  for (Element element : kElements) {
    const Format& f = format(element);
    table.add(element, kAllTiers, f.max_finite(), exactly(f.infinity()));
    table.add(element, kAllTiers, f.sign() | f.max_finite(), exactly(0));
  }
  table.nans_stay_nans();
  return table;
}

/// The result is finite up to `last` and infinite from its neighbour on.
void overflows_after(ValueTable& table, Element element, const Tiers& tiers, double last) {
  const Bits bits = encode(element, last);
  table.add(element, tiers, bits, kFinite);
  table.add(element, tiers, next_up(element, bits), exactly(format(element).infinity()));
}

/// The result is the smallest subnormal at `last` and zero from its neighbour on.
void vanishes_after(ValueTable& table, Element element, const Tiers& tiers, double last) {
  const Bits bits = encode(element, last);
  table.add(element, tiers, bits, exactly(format(element).min_subnormal()));
  table.add(element, tiers, next_down(element, bits), exactly(0));
}

const Tiers kFullFloatTiers = {Tier::standard, Tier::rm};
const Tiers kReducedFloatTiers = {Tier::native, Tier::half};

ValueTable exp_values() {
  ValueTable table = with_limits("exp");
  overflows_after(table, Element::f64, kAllTiers, 709.782712893384);
  overflows_after(table, Element::f32, kFullFloatTiers, 88.72283172607422);
  overflows_after(table, Element::f32, kReducedFloatTiers, 88.72283935546875);
  overflows_after(table, Element::f16, kAllTiers, 11.0859375);
  vanishes_after(table, Element::f64, kAllTiers, -745.1332191019411);
  vanishes_after(table, Element::f32, kAllTiers, -103.97207641601562);
  vanishes_after(table, Element::f16, kAllTiers, -17.328125);
  // A tiny negative operand is reduced from the table's last entry.
  table.at(Element::f64, kStandardTier, -5e-324, exactly(format(Element::f64).one()));
  table.at(Element::f32, kFullFloatTiers, -0x1p-149, exactly(format(Element::f32).one()));
  table.at(Element::f64, kReducedTiers, -5e-324, exactly(0x3fefffffffeb0fed));
  table.at(Element::f16, kAllTiers, -0x1p-24, exactly(0x3bff));
  return table;
}

ValueTable exp2_values() {
  ValueTable table = with_limits("exp2");
  overflows_after(table, Element::f64, kAllTiers, 1023.9999999999999);
  overflows_after(table, Element::f32, kAllTiers, 127.99999237060547);
  overflows_after(table, Element::f16, kAllTiers, 15.9921875);
  vanishes_after(table, Element::f64, kAllTiers, -1074.9999999999998);
  vanishes_after(table, Element::f32, kAllTiers, -149.99998474121094);
  vanishes_after(table, Element::f16, kAllTiers, -24.984375);
  // Integers are exact, and rounded to zero or infinity just outside the range.
  for (Element element : kElements) {
    const Format& f = format(element);
    const int bias = (1 << (f.exponent_bits - 1)) - 1;
    for (int n = 1 - bias - f.mantissa_bits - 2; n <= bias + 2; ++n)
      table.at(element, kAllTiers, n, exactly(encode(element, std::ldexp(1.0, n))));
  }
  return table;
}

ValueTable exp10_values() {
  ValueTable table = with_limits("exp10");
  overflows_after(table, Element::f64, kAllTiers, 308.2547155599167);
  overflows_after(table, Element::f32, kAllTiers, 38.531837463378906);
  overflows_after(table, Element::f16, kAllTiers, 4.8125);
  vanishes_after(table, Element::f64, kAllTiers, -323.60724533877976);
  vanishes_after(table, Element::f32, kStandardTier, -45.15449905395508);
  vanishes_after(table, Element::f32, kReducedTiers, -45.15447998046875);
  vanishes_after(table, Element::f16, kAllTiers, -7.5234375);
  for (int n = 1; n <= 4; ++n) {
    const double power = std::pow(10.0, n);
    if (n <= 3) table.at(Element::f32, kStandardTier, n, exactly(encode(Element::f32, power)));
    table.at(Element::f16, kAllTiers, n, exactly(encode(Element::f16, power)));
  }
  table.at(Element::f32, kReducedTiers, 1.0, exactly(encode(Element::f32, 9.999801635742188)));
  return table;
}

ValueTable expm1_values() {
  ValueTable table{"expm1", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(kInfinity, kInfinity);
  table.everywhere(-kInfinity, -1.0);
  table.nans_are_kept();
  // -0, tiny and subnormal operands are their own results; half loses the sign of zero on its way
  // through float.
  table.at(Element::f16, kAllTiers, -0.0, exactly(0));
  for (Element element : {Element::f64, Element::f32}) {
    const Format& f = format(element);
    table.at(element, kAllTiers, -0.0, exactly(f.sign()));
    for (Bits sign : {Bits{0}, f.sign()})
      for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal(), f.min_normal() + 1,
                        encode(element, std::ldexp(1.0, -f.mantissa_bits - 2))})
        table.add(element, kAllTiers, sign | tiny, exactly(sign | tiny));
  }
  for (Element element : kElements) {
    const Format& f = format(element);
    // e^x is lost beside 1.
    constexpr double lost[] = {-1024.0, -128.0, -10.0};
    for (Bits x : {encode(element, lost[int(element)]), f.sign() | f.max_finite()})
      table.add(element, kAllTiers, x, exactly(encode(element, -1.0)));
    table.add(element, kAllTiers, f.max_finite(), exactly(f.infinity()));
  }
  overflows_after(table, Element::f64, kAllTiers, 709.782712893384);
  overflows_after(table, Element::f32, kAllTiers, 88.72283172607422);
  overflows_after(table, Element::f16, kAllTiers, 11.0859375);
  // The first operands of the rare routine, and their neighbours below.
  for (const auto& [element, bits] : {std::pair{Element::f64, Bits{0x40861da04cbafe44}},
                                      std::pair{Element::f32, Bits{0x42ad496b}}}) {
    table.add(element, kAllTiers, bits, kFinite);
    table.add(element, kAllTiers, next_down(element, bits), kFinite);
  }
  table.at(Element::f16, kAllTiers, 10.0, exactly(encode(Element::f16, std::expm1(10.0))));
  return table;
}

}  // namespace

std::vector<ValueTable> exponential_values() {
  return {exp_values(), exp2_values(), exp10_values(), expm1_values()};
}

}  // namespace zorp::test
