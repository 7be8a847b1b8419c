// sin, cos, sincos, sincosreg, tan of double and float where the reduction matters: the numbers
// next to multiples of pi/2, and both sides of each change of path, among ordinary operands.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <set>
#include <variant>

#include "tests/accuracy/accuracy.h"
#include "tests/support/caller.h"
#include "tests/values/hard_angles.h"

namespace zorp::test {
namespace {

/// Past this magnitude all tiers reduce x by the bits of 1/(2 pi) or 4/pi.
constexpr double kLargeEverywhere = 0x1p24;

/// Every angle is followed by an ordinary one, and every fourth by an infinity, so that a vector
/// has lanes of every path.
std::vector<Tuple> operands(Element element) {
  const Format& f = format(element);
  std::vector<Bits> angles = {f.max_finite(), f.max_finite() - 1};
  if (element == Element::f64) {
    angles.insert(angles.end(), std::begin(kHardAngles64), std::end(kHardAngles64));
    for (double limit : {0x1p23, 0x1p24, 128000.0, 0x1p30, 8388607 * M_PI})
      for (int i = -3; i <= 3; ++i) angles.push_back(encode(element, limit) + i);
  } else {
    angles.insert(angles.end(), std::begin(kHardAngles32), std::end(kHardAngles32));
    for (double limit : {8256.0, 10000.0, 524288.0, 0x1p23, 0x1p31, 0x1p127})
      for (int i = -3; i <= 3; ++i) angles.push_back(encode(element, limit) + i);
  }
  std::vector<Tuple> list;
  for (std::size_t i = 0; i < angles.size(); ++i) {
    list.push_back({angles[i]});
    list.push_back({angles[i] | f.sign()});
    list.push_back({encode(element, 0.0625 * double(i))});
    if (i % 4 == 0) list.push_back({f.infinity()});
  }
  return list;
}

/// The error in units in the last place of the exact result.
double error(const Reference::Function& function, Element element, double x, double result) {
  mpfr_t operand, exact, difference;
  mpfr_inits2(53, operand, mpfr_ptr(nullptr));
  mpfr_inits2(120, exact, difference, mpfr_ptr(nullptr));
  mpfr_set_d(operand, x, MPFR_RNDN);
  std::get<Reference::Unary>(function)(exact, operand, MPFR_RNDN);
  mpfr_set_d(difference, result, MPFR_RNDN);
  mpfr_sub(difference, difference, exact, MPFR_RNDN);
  const int digits = format(element).mantissa_bits + 1;
  if (!mpfr_zero_p(exact))
    mpfr_mul_2si(difference, difference, digits - mpfr_get_exp(exact), MPFR_RNDN);
  const double ulps = std::abs(mpfr_get_d(difference, MPFR_RNDU));
  mpfr_clears(operand, exact, difference, mpfr_ptr(nullptr));
  return ulps;
}

/// A reduction that is a bit too coarse costs many units next to a multiple of pi/2. The standard
/// tiers are held to their few units everywhere. The others are for sines and cosines of large
/// angles; their tangents end in a shorter polynomial (double) or an estimate of 14 bits (float).
double allowed(const Variant& variant, double x) {
  const Tier algorithm = variant.family->algorithm_tier[int(variant.element)][int(variant.tier)];
  if (algorithm == Tier::standard) return 4;
  if (variant.family->name == "tan") return variant.element == Element::f64 ? 0x1p13 : 0x1p11;
  return std::abs(x) > kLargeEverywhere ? 4 : HUGE_VAL;
}

std::vector<Variant> variants_of_angles() {
  const std::set<std::string> families = {"sin", "cos", "sincos", "sincosreg", "tan"};
  std::vector<Variant> list;
  for (const Variant& variant : variants())
    if (families.count(variant.family->name) && variant.element != Element::f16)
      list.push_back(variant);
  return list;
}

class LargeAngles : public testing::TestWithParam<Variant> {};

TEST_P(LargeAngles, AreReducedToTheLastBit) {
  const Variant& variant = GetParam();
  const Element element = variant.element;
  const std::vector<Tuple> angles = operands(element);
  const auto& functions = reference(variant.family->name)->results;
  for (const Kernel& kernel : variant.kernels()) {
    Caller caller(kernel, loaded(*variant.library));
    std::vector<Tuple> lanes(kernel.width);
    for (std::size_t start = 0; start < angles.size(); start += kernel.width) {
      for (int i = 0; i < kernel.width; ++i) lanes[i] = angles[(start + i) % angles.size()];
      const Results& results = caller(lanes);
      for (int i = 0; i < kernel.width; ++i)
        for (std::size_t output = 0; output < functions.size(); ++output) {
          const double x = value(element, lanes[i][0]);
          const double y = value(element, caller.output(results, output, i));
          if (std::isinf(x)) {
            ASSERT_TRUE(std::isnan(y)) << kernel.name();
          } else {
            ASSERT_LE(error(functions[output], element, x, y), allowed(variant, x))
                << kernel.name() << hex(lanes[i], 1) << " in lane " << i << ", result " << output;
          }
        }
    }
  }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(LargeAngles);
INSTANTIATE_TEST_SUITE_P(, LargeAngles, testing::ValuesIn(variants_of_angles()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
