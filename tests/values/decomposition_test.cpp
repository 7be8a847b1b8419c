// frexp, ldexp, ilogb, logb, modf, fract, nextafter against the C library's functions for double,
// in which every step of all three element types is exact or, at the end, rounded once.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>

#include "tests/values/references.h"

namespace zorp::test {
namespace {

Bits quieted(const Format& f, Bits nan) { return nan | f.quiet_bit(); }
Bits integer(int n) { return std::uint32_t(n); }
bool is_ordinary(const Format& f, Bits x) { return f.is_finite(x) && f.magnitude(x) != 0; }

LaneResults frexp(Element element, const Tuple& operands) {
  const Bits x = operands[0];
  if (!is_ordinary(format(element), x)) return {x, 0};
  int exponent;
  const double significand = std::frexp(value(element, x), &exponent);
  return {encode(element, significand), integer(exponent)};
}

LaneResults ilogb(Element element, const Tuple& operands) {
  const Format& f = format(element);
  if (f.magnitude(operands[0]) == 0) return {integer(INT_MIN)};
  if (!f.is_finite(operands[0])) return {integer(INT_MAX)};
  return {integer(std::ilogb(value(element, operands[0])))};
}

LaneResults logb(Element element, const Tuple& operands) {
  const Format& f = format(element);
  if (f.is_nan(operands[0])) return {quieted(f, f.magnitude(operands[0]))};
  return {encode(element, std::logb(value(element, operands[0])))};
}

LaneResults modf(Element element, const Tuple& operands) {
  const Format& f = format(element);
  const Bits x = operands[0];
  if (f.is_nan(x)) return {quieted(f, x), quieted(f, x)};
  double integral;
  const double fraction = std::modf(value(element, x), &integral);
  return {encode(element, fraction), encode(element, integral)};
}

LaneResults fract(Element element, const Tuple& operands) {
  const Format& f = format(element);
  const Bits x = operands[0];
  if (f.is_nan(x) || f.magnitude(x) == 0) return {x, x};
  if (!f.is_finite(x)) return {x & f.sign(), x};
  const double floor = std::floor(value(element, x));
  const Bits fraction = encode(element, value(element, x) - floor);
  return {std::min(fraction, f.one() - 1), encode(element, floor)};
}

LaneResults ldexp(Element element, const Tuple& operands) {
  const Format& f = format(element);
  if (f.is_nan(operands[0])) return {quieted(f, operands[0])};
  const int n = int(std::uint32_t(operands[1]));
  const double x = value(element, operands[0]);
  if (element == Element::f64) return {encode(element, std::ldexp(x, n))};
  // Exact in double, and beyond the other types' range at both ends.
  return {encode(element, std::ldexp(x, std::clamp(n, -500, 500)))};
}

LaneResults nextafter(Element element, const Tuple& operands) {
  const Format& f = format(element);
  const auto [x, y, unused] = operands;
  if (f.is_nan(x)) return {quieted(f, x)};
  if (f.is_nan(y)) return {quieted(f, y)};
  const double from = value(element, x), to = value(element, y);
  if (from == to) return {y};
  return {from < to ? next_up(element, x) : next_down(element, x)};
}

const std::map<std::string, Reference> kReferences = {
    {"frexp", frexp}, {"ilogb", ilogb}, {"logb", logb},          {"modf", modf},
    {"fract", fract}, {"ldexp", ldexp}, {"nextafter", nextafter}};

/// Every shift that a result can show, and far more, for significands that round up, down and to
/// even.
std::vector<Tuple> shifts(Element element) {
  const Format& f = format(element);
  const int range = 2 * (1 << f.exponent_bits) + f.mantissa_bits;
  std::vector<Tuple> tuples = telling_pairs(lane_of(element), Lane::i32);
  for (int n = -range; n <= range; ++n)
    for (Bits x : {f.one(), f.one() + 1, f.one() + f.min_normal() / 2,
                   f.one() + f.min_normal() * 3 / 4, f.max_finite(), f.min_normal() + 1, Bits{3}})
      for (Bits sign : {Bits{0}, f.sign()}) tuples.push_back({sign | x, integer(n)});
  return tuples;
}

class DecompositionValues : public testing::TestWithParam<Variant> {};

TEST_P(DecompositionValues, AreExact) {
  const Variant& variant = GetParam();
  const std::vector<Lane> lanes = variant.kernel(1).operands();
  const std::vector<Tuple> operands = variant.family->name == "ldexp" ? shifts(variant.element)
                                      : lanes.size() == 2 ? telling_pairs(lanes[0], lanes[1])
                                                          : telling_operands(lanes[0]);
  expect_reference(variant, kReferences.at(variant.family->name), operands);
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DecompositionValues);
INSTANTIATE_TEST_SUITE_P(, DecompositionValues,
                         testing::ValuesIn(variants_of({"frexp", "ldexp", "ilogb", "logb", "modf",
                                                        "fract", "nextafter"})),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
