// lgamma, lgammar, tgamma: poles, exact values, the ends of the range, the sign beside lgammar.
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

ValueTable lgamma_values() {
  ValueTable table{"lgamma", {}};
  for (double pole : {0.0, -0.0, -1.0, -2.0, -3.0, -16.0, -17.0, -1024.0})
    table.everywhere(pole, kInfinity);
  table.everywhere(kInfinity, kInfinity);
  table.everywhere(-kInfinity, kInfinity);
  table.everywhere(1.0, 0.0);
  table.everywhere(2.0, 0.0);
  table.nans_are_kept();
  for (Element element : {Element::f64, Element::f32}) {
    const Format& f = format(element);
    table.add(element, kAllTiers, f.max_finite(), exactly(f.infinity()));
    table.add(element, kAllTiers, f.sign() | f.max_finite(), exactly(f.infinity()));  // an integer
  }
  // The last operands before the result overflows.
  table.add(Element::f64, kAllTiers, 0x7F5754D9278B51A7, kFinite);
  table.add(Element::f64, kAllTiers, 0x7F5754D9278B51A8, exactly(0x7FF0000000000000));
  table.add(Element::f32, kAllTiers, 0x7C44AF8D, kFinite);
  table.add(Element::f32, kAllTiers, 0x7C44AF8E, exactly(0x7F800000));
  // Half is rounded twice after the sum, which shows in three operands.
  table.add(Element::f16, kAllTiers, 0x0C66, exactly(0x481C));
  table.add(Element::f16, kAllTiers, 0x4087, exactly(0x3040));
  table.add(Element::f16, kAllTiers, 0xD313, exactly(0xD96C));
  return table;
}

ValueTable lgammar_values() {
  ValueTable table{"lgammar", {}};
  const auto add = [&](double x, double logarithm, Bits sign) {
    for (Element element : kElements)
      table.entries.push_back({element,
                               kAllTiers,
                               {encode(element, x)},
                               {exactly(encode(element, logarithm)), exactly(sign)}});
  };
  constexpr Bits minus = 0xFFFFFFFF;
  add(0.0, kInfinity, 1);
  add(-0.0, kInfinity, minus);
  add(kInfinity, kInfinity, 1);
  add(-kInfinity, kInfinity, 1);
  add(1.0, 0.0, 1);
  add(-1.0, kInfinity, 1);
  add(-2.0, kInfinity, 1);
  add(-3.0, kInfinity, 1);
  // 0.5 ln(pi) and its neighbours by the recurrence: numbers known to more places than any element
  // has.
  add(-0.5, 1.26551212348464539649, minus);
  add(-1.5, 0.86004701537648101450, 1);
  add(-2.5, -0.05624371649767405067, minus);
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()})
      table.entries.push_back({element,
                               kAllTiers,
                               {sign | f.quiet_nan() | 1},
                               {exactly(sign | f.quiet_nan() | 1), exactly(1)}});
  }
  return table;
}

ValueTable tgamma_values() {
  ValueTable table{"tgamma", {}};
  table.everywhere(0.0, kInfinity);
  table.everywhere(-0.0, -kInfinity);
  table.everywhere(kInfinity, kInfinity);
  double factorial = 1;
  for (int n = 1; n <= 8; factorial *= n++) table.everywhere(n, factorial);
  table.everywhere(0.5, 1.77245385090551602730);
  table.everywhere(-0.5, -3.54490770181103205460);
  table.everywhere(-1.5, 2.36327180120735470306);
  table.everywhere(-2.5, -0.94530872048294188123);
  table.nans_are_kept();
  for (Element element : kElements) {
    const Format& f = format(element);
    const Expected nan = exactly(f.quiet_nan());
    table.add(element, kAllTiers, f.sign() | f.infinity(), nan);
    table.add(element, kAllTiers, f.sign() | f.max_finite(), nan);
    for (double pole : {-1.0, -2.0, -3.0, -44.0, -186.0}) table.at(element, kAllTiers, pole, nan);
    table.add(element, kAllTiers, f.max_finite(), exactly(f.infinity()));
    if (element == Element::f16) continue;
    for (Bits sign : {Bits{0}, f.sign()})
      table.add(element, kAllTiers, sign | f.min_subnormal(), exactly(sign | f.infinity()));
  }
  // Up to 2^-1024 and 2^-128 the reciprocal overflows.
  table.add(Element::f64, kAllTiers, 0x0004000000000000, exactly(0x7FF0000000000000));
  table.add(Element::f64, kAllTiers, 0x8004000000000001, kFinite);
  table.add(Element::f32, kAllTiers, 0x80200000, exactly(0xFF800000));
  table.add(Element::f32, kAllTiers, 0x00200001, kFinite);
  table.at(Element::f64, kAllTiers, 171.6243769563, kFinite);
  table.at(Element::f64, kAllTiers, 171.62437695630275, exactly(0x7FF0000000000000));
  table.add(Element::f32, kAllTiers, 0x420C2910, exactly(0x7F800000));
  table.add(Element::f32, kAllTiers, 0x420C290F, kFinite);
  table.at(Element::f64, kAllTiers, -185.5, exactly(0));
  table.at(Element::f64, kAllTiers, -186.5, exactly(0x8000000000000000));
  table.at(Element::f64, kAllTiers, -184.5, exactly(0x8000000000000000));
  table.at(Element::f32, kAllTiers, -43.5, exactly(0));
  table.at(Element::f32, kAllTiers, -44.5, exactly(0x80000000));
  return table;
}

}  // namespace

std::vector<ValueTable> gamma_values() {
  return {lgamma_values(), lgammar_values(), tgamma_values()};
}

}  // namespace zorp::test
