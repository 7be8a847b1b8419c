// fmod, remainder and remquo against MPFR's long division: every distance of the exponents, exact
// multiples, ties and their neighbours.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <cmath>
#include <map>
#include <optional>

#include "tests/values/references.h"

namespace zorp::test {
namespace {

/// The operands in MPFR, and room for a result.
class Division {
 public:
  Division(Element element, const Tuple& operands) : element_(element) {
    for (mpfr_ptr number : {x, y, rest}) mpfr_init2(number, 53);
    mpfr_set_d(x, value(element, operands[0]), MPFR_RNDN);
    mpfr_set_d(y, value(element, operands[1]), MPFR_RNDN);
  }
  ~Division() { mpfr_clears(x, y, rest, mpfr_ptr(nullptr)); }
  Division(const Division&) = delete;

  Bits result() const { return encode(element_, mpfr_get_d(rest, MPFR_RNDN)); }

  mpfr_t x, y, rest;

 private:
  Element element_;
};

/// The first NaN among the operands, quieted; the family's own where the division has no result.
std::optional<Bits> nan_of(Element element, const Tuple& operands, Bits own) {
  const Format& f = format(element);
  const auto [x, y, unused] = operands;
  for (Bits operand : {x, y})
    if (f.is_nan(operand)) return operand | f.quiet_bit();
  if (!f.is_finite(x) || f.magnitude(y) == 0) return own;
  return std::nullopt;
}

LaneResults fmod(Element element, const Tuple& operands) {
  if (const auto nan = nan_of(element, operands, format(element).quiet_nan())) return {*nan};
  Division d(element, operands);
  mpfr_fmod(d.rest, d.x, d.y, MPFR_RNDN);
  return {d.result()};
}

LaneResults remquo(Element element, const Tuple& operands) {
  const Format& f = format(element);
  const Bits own = element == Element::f64 ? f.sign() | f.quiet_nan() : f.quiet_nan();
  if (const auto nan = nan_of(element, operands, own)) return {*nan, 0};
  Division d(element, operands);
  long quotient;
  mpfr_remquo(d.rest, &quotient, d.x, d.y, MPFR_RNDN);
  const int low = int(std::labs(quotient) & 0x7fffffff);
  return {d.result(), std::uint32_t(quotient < 0 ? -low : low)};
}

LaneResults remainder(Element element, const Tuple& operands) {
  return {remquo(element, operands)[0]};
}

const std::map<std::string, Reference> kReferences = {
    {"fmod", fmod}, {"remainder", remainder}, {"remquo", remquo}};

std::vector<Tuple> divisions(Element element) {
  const Lane lane = lane_of(element);
  const Format& f = format(element);
  std::vector<Tuple> tuples = telling_pairs(lane, lane);
  const std::vector<Bits> far = every_exponent(lane, 4), near = moderate(lane, int(far.size()), 5);
  for (std::size_t i = 0; i < far.size(); ++i) {
    tuples.push_back({far[i], i % 2 ? near[i] : f.min_subnormal() + i % 3});
    // Some binades up, at the ends of what the fast paths serve.
    const Bits up = Bits(8 + i % 24) * f.min_normal();
    if (f.magnitude(far[i]) + up < f.infinity()) tuples.push_back({far[i] + up, far[i] ^ i % 64});
  }
  // (k + 1/2) y, k y, and the numbers beside them: y has few bits, so that these are exact.
  const Bits few_bits = ~((f.min_normal() >> f.mantissa_bits / 3) - 1);
  const std::vector<Bits> divisors = moderate(lane, 1000, 6), k = random_bits(Lane::u32, 1000, 7);
  for (std::size_t i = 0; i < k.size(); ++i) {
    const Bits divisor = divisors[i] & few_bits;
    const double halves = double(k[i] >> (31 - k[i] % (f.mantissa_bits / 2))) / 2;
    const Bits multiple = encode(element, halves * value(element, divisor));
    for (Bits offset : {-1, 0, 1})
      if (f.is_finite(multiple + offset)) tuples.push_back({multiple + offset, divisor});
  }
  return tuples;
}

class RemainderValues : public testing::TestWithParam<Variant> {};

TEST_P(RemainderValues, AreExact) {
  const Variant& variant = GetParam();
  const Reference reference = kReferences.at(variant.family->name);
  std::vector<Tuple> operands = divisions(variant.element);
  // Half remainder alone leaves open which NaN it gives.
  if (variant.element == Element::f16 && variant.family->name == "remainder")
    std::erase_if(operands, [&](const Tuple& tuple) {
      return format(variant.element).is_nan(reference(variant.element, tuple)[0]);
    });
  expect_reference(variant, reference, operands);
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RemainderValues);
INSTANTIATE_TEST_SUITE_P(, RemainderValues,
                         testing::ValuesIn(variants_of({"fmod", "remainder", "remquo"})),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
