// fmax, fmin, maxmag, minmag, fdim, copysign, fabs, nan against their definitions, by comparisons
// of the values and by bits.
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "tests/values/references.h"

namespace zorp::test {
namespace {

struct Pair {
  const Format& f;
  Bits x, y;
  double a, b;

  Pair(Element element, const Tuple& operands)
      : f(format(element)),
        x(operands[0]),
        y(operands[1]),
        a(value(element, x)),
        b(value(element, y)) {}
  bool has_nan() const { return f.is_nan(x) || f.is_nan(y); }
  /// The number if there is one, else the second NaN.
  LaneResults number() const {
    if (f.is_nan(y)) return {f.is_nan(x) ? y | f.quiet_bit() : x};
    return {y};
  }
};

LaneResults fmax(Element element, const Tuple& operands) {
  const Pair p(element, operands);
  if (p.has_nan()) return p.number();
  return {p.a > p.b ? p.x : p.y};
}
LaneResults fmin(Element element, const Tuple& operands) {
  const Pair p(element, operands);
  if (p.has_nan()) return p.number();
  return {p.a < p.b ? p.x : p.y};
}
LaneResults maxmag(Element element, const Tuple& operands) {
  const Pair p(element, operands);
  if (p.has_nan()) return p.number();
  if (std::abs(p.a) != std::abs(p.b)) return {std::abs(p.a) > std::abs(p.b) ? p.x : p.y};
  return {p.b > p.a ? p.y : p.x};
}
LaneResults minmag(Element element, const Tuple& operands) {
  const Pair p(element, operands);
  if (p.has_nan()) return p.number();
  if (std::abs(p.a) != std::abs(p.b)) return {std::abs(p.a) < std::abs(p.b) ? p.x : p.y};
  return {p.b < p.a ? p.y : p.x};
}

/// Double holds the difference of two halves exactly, and that of two floats well enough for the
/// second rounding to be the right one.
LaneResults fdim(Element element, const Tuple& operands) {
  const Pair p(element, operands);
  if (p.f.is_nan(p.y)) return {p.y | p.f.quiet_bit()};
  if (p.f.is_nan(p.x)) return {p.x | p.f.quiet_bit()};
  return {p.b < p.a ? encode(element, p.a - p.b) : 0};
}

LaneResults copysign(Element element, const Tuple& operands) {
  const Format& f = format(element);
  return {f.magnitude(operands[0]) | (operands[1] & f.sign())};
}

LaneResults fabs(Element element, const Tuple& operands) {
  const Format& f = format(element);
  const Bits magnitude = f.magnitude(operands[0]);
  const bool quiets = element == Element::f16 && f.is_nan(magnitude);
  return {quiets ? magnitude | f.quiet_bit() : magnitude};
}

LaneResults nan(Element element, const Tuple& operands) {
  constexpr Bits patterns[] = {0x7ff8000000000000, 0x7fc00000, 0x7fc0};
  return {operands[0] | patterns[int(element)]};
}

const std::map<std::string, Reference> kReferences = {
    {"fmax", fmax}, {"fmin", fmin},         {"maxmag", maxmag}, {"minmag", minmag},
    {"fdim", fdim}, {"copysign", copysign}, {"fabs", fabs},     {"nan", nan}};

class SelectionValues : public testing::TestWithParam<Variant> {};

TEST_P(SelectionValues, FollowTheDefinitions) {
  const Variant& variant = GetParam();
  const std::vector<Lane> lanes = variant.kernel(1).operands();
  expect_reference(
      variant, kReferences.at(variant.family->name),
      lanes.size() == 2 ? telling_pairs(lanes[0], lanes[1]) : telling_operands(lanes[0]));
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SelectionValues);
INSTANTIATE_TEST_SUITE_P(, SelectionValues,
                         testing::ValuesIn(variants_of({"fmax", "fmin", "maxmag", "minmag", "fdim",
                                                        "copysign", "fabs", "nan"})),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
