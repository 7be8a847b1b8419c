// Operations with one right result, on operands too many for a table: every half, and floats and
// doubles of every exponent, against the C library and MPFR. Only rint and nearbyint may follow the
// caller's rounding mode.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <functional>

#include "tests/values/references.h"

namespace zorp::test {
namespace {

/// MXCSR and the C library's mode for each rounding.
struct Mode {
  std::uint32_t mxcsr;
  int environment;
};
constexpr Mode kModes[] = {
    {0x1f80, FE_TONEAREST}, {0x3f80, FE_DOWNWARD}, {0x5f80, FE_UPWARD}, {0x7f80, FE_TOWARDZERO}};

/// Runs the widest kernel on all operands, in each rounding mode of the caller.
void expect_exactly(const Variant& variant, const std::vector<Tuple>& operands,
                    const std::function<bool(const Tuple&, int mode, Bits result)>& is_right) {
  Caller caller(variant.kernel(variant.widest()), loaded(*variant.library));
  const int width = variant.widest();
  std::vector<Tuple> lanes(width);
  for (const Mode& mode : kModes)
    for (std::size_t start = 0; start < operands.size(); start += width) {
      for (int i = 0; i < width; ++i) lanes[i] = operands[(start + i) % operands.size()];
      const Results& results = caller(lanes, {.mxcsr = mode.mxcsr});
      for (int i = 0; i < width; ++i) {
        const Bits result = caller.output(results, 0, i);
        ASSERT_TRUE(is_right(lanes[i], mode.environment, result))
            << variant.name() << hex(lanes[i], caller.operands().size()) << " in mode "
            << mode.environment << " gives " << hex(result);
      }
    }
}

// ---- Rounding to integral values ---------------------------------------------------------------

struct Function {
  const char* family;
  double (*exact)(double);
};
const Function kRoundings[] = {
    {"ceil", std::ceil}, {"floor", std::floor},         {"trunc", std::trunc},
    {"rint", std::rint}, {"nearbyint", std::nearbyint}, {"round", std::round},
};

class RoundingValues : public testing::TestWithParam<Variant> {};

TEST_P(RoundingValues, AreTheExactOnes) {
  const Element element = GetParam().element;
  const Format& f = format(element);
  std::vector<Tuple> operands;
  if (element == Element::f16) {
    for (Bits bits = 0; bits < 1 << 16; ++bits) operands.push_back({bits});
  } else {
    for (std::uint64_t seed = 0; seed < 20; ++seed)
      for (Bits bits : every_exponent(lane_of(element), seed)) operands.push_back({bits});
    for (Bits bits : random_bits(lane_of(element), 10000, 1)) operands.push_back({bits});
    // Ties, and the numbers beside them.
    for (Bits n : random_bits(Lane::u64, 10000, 2)) {
      const double tie = double(n >> (65 - f.mantissa_bits + n % f.mantissa_bits)) + 0.5;
      for (Bits offset : {-1, 0, 1})
        operands.push_back({(encode(element, tie) + offset) | (n & 1 ? f.sign() : 0)});
    }
  }
  const auto* function = std::find_if(std::begin(kRoundings), std::end(kRoundings),
                                      [](auto& f) { return GetParam().family->name == f.family; });
  expect_exactly(GetParam(), operands, [&](const Tuple& x, int mode, Bits result) {
    if (f.is_nan(x[0])) return result == (x[0] | f.quiet_bit());
    std::fesetround(mode);
    const double exact = function->exact(value(element, x[0]));
    std::fesetround(FE_TONEAREST);
    return result == encode(element, exact);
  });
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RoundingValues);
INSTANTIATE_TEST_SUITE_P(, RoundingValues,
                         testing::ValuesIn(variants_of({"ceil", "floor", "trunc", "rint",
                                                        "nearbyint", "round"})),
                         [](const auto& info) { return info.param.name(); });

// ---- fma, and where they are the processor's own div, inv and sqrt -----------------------------

/// Rounds once to an IEEE 754 format.
class ExactOperation {
 public:
  explicit ExactOperation(Element element) : element_(element) {
    const Format& f = format(element);
    const int bias = (1 << (f.exponent_bits - 1)) - 1;
    mpfr_set_emax(bias + 1);
    mpfr_set_emin(2 - bias - f.mantissa_bits);
    mpfr_init2(result_, f.mantissa_bits + 1);
    for (auto& operand : operands_) mpfr_init2(operand, 53);
  }
  ExactOperation(const ExactOperation&) = delete;
  ~ExactOperation() {
    mpfr_clear(result_);
    for (auto& operand : operands_) mpfr_clear(operand);
    mpfr_set_emax(mpfr_get_emax_max());
    mpfr_set_emin(mpfr_get_emin_min());
  }

  /// `operation` has the arguments of an MPFR function: result, operands, mode.
  template <class Operation>
  Bits operator()(const Tuple& x, Operation operation, mpfr_rnd_t mode = MPFR_RNDN) {
    for (int i = 0; i < 3; ++i) mpfr_set_d(operands_[i], value(element_, x[i]), MPFR_RNDN);
    const int inexact = operation(result_, operands_, mode);
    mpfr_subnormalize(result_, inexact, mode);
    return encode(element_, mpfr_get_d(result_, MPFR_RNDN));
  }

 private:
  Element element_;
  mpfr_t result_, operands_[3];
};

class FmaValues : public testing::TestWithParam<Variant> {};

TEST_P(FmaValues, AreRoundedOnce) {
  const Element element = GetParam().element;
  const Lane lane = lane_of(element);
  const Format& f = format(element);
  const std::size_t size = GetParam().trapped() ? 1 << 13 : 1 << 15;
  std::vector<Tuple> operands = operand_pool({lane, lane, lane}, int(size));
  // A product against its own rounding, and beside it: what is left is the product's error.
  const std::vector<Bits> a = moderate(lane, int(size), 3), b = moderate(lane, int(size), 4);
  for (std::size_t i = 0; i < size; ++i) {
    const Bits product = encode(element, value(element, a[i]) * value(element, b[i]));
    operands.push_back({a[i], b[i], (product ^ f.sign()) + i % 3 - 1});
  }
  // An addend so far from the product that it decides the rounding of a tie alone.
  for (std::size_t i = 0; i < size; ++i)
    operands.push_back({a[i] & ~Bits{7}, f.one() | (i & 7), (b[i] & f.sign()) | (i % f.one())});

  const auto fma = [](mpfr_ptr result, mpfr_t* x, mpfr_rnd_t mode) {
    return mpfr_fma(result, x[0], x[1], x[2], mode);
  };
  ExactOperation exact(element);
  expect_exactly(GetParam(), operands, [&](const Tuple& x, int, Bits result) {
    for (Bits operand : x)
      if (f.is_nan(operand)) return result == (operand | f.quiet_bit());  // the first of them
    const Bits expected = exact(x, fma);
    return f.is_nan(expected) ? f.is_quiet_nan(result) : result == expected;
  });
}

TEST_P(FmaValues, HaveZerosBehindFewHalves) {
  if (GetParam().element != Element::f16 || GetParam().is_portable()) return;
  const Bits one = format(Element::f16).one();
  for (int width : {2, 3, 4}) {
    Caller caller(GetParam().kernel(width), loaded(*GetParam().library));
    const std::vector<Tuple> lanes(width, {one, one, one});
    const Results& results = caller(lanes, {.fill = {one, one, one}});
    for (int lane = width == 2 ? 2 : 4; lane < 32; ++lane)
      EXPECT_EQ(caller.output(results, 0, lane), 0u)
          << GetParam().kernel(width).name() << " lane " << lane;
  }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(FmaValues);
INSTANTIATE_TEST_SUITE_P(, FmaValues, testing::ValuesIn(variants_of({"fma"})),
                         [](const auto& info) { return info.param.name(); });

mpfr_rnd_t mpfr_mode(int environment) {
  return environment == FE_DOWNWARD     ? MPFR_RNDD
         : environment == FE_UPWARD     ? MPFR_RNDU
         : environment == FE_TOWARDZERO ? MPFR_RNDZ
                                        : MPFR_RNDN;
}

class ProcessorValues : public testing::TestWithParam<Variant> {};

TEST_P(ProcessorValues, AreRoundedOnce) {
  const Element element = GetParam().element;
  const Lane lane = lane_of(element);
  const Format& f = format(element);
  const std::string& family = GetParam().family->name;
  std::vector<Tuple> operands;
  if (family == "div") {
    operands = operand_pool({lane, lane}, GetParam().trapped() ? 1 << 13 : 1 << 16);
    // Quotients next to a number, to the middle of two, and to the subnormals' ends.
    const std::vector<Bits> b = every_exponent(lane, 1), random = random_bits(lane, 1 << 13, 2);
    for (std::size_t i = 0; i < random.size(); ++i) {
      const Bits divisor = b[i % b.size()];
      const double dividend = value(element, divisor) * value(element, random[i]);
      const Bits lane_mask = f.sign() | (f.sign() - 1);
      operands.push_back({(encode(element, dividend) + i % 3 - 1) & lane_mask, divisor});
      operands.push_back({f.magnitude(random[i]) % (4 * f.min_normal()), divisor | 7});
    }
  } else if (element == Element::f16) {
    for (Bits bits = 0; bits < 1 << 16; ++bits) operands.push_back({bits});
  } else {
    operands = operand_pool({lane}, 1 << 16);
  }
  const auto operation = [&](mpfr_ptr result, mpfr_t* x, mpfr_rnd_t mode) {
    if (family == "div") return mpfr_div(result, x[0], x[1], mode);
    if (family == "inv") return mpfr_ui_div(result, 1, x[0], mode);
    return mpfr_sqrt(result, x[0], mode);
  };
  // Half rounds in the caller's mode, double to nearest.
  ExactOperation exact(element);
  expect_exactly(GetParam(), operands, [&](const Tuple& x, int mode, Bits result) {
    for (Bits operand : x)
      if (f.is_nan(operand)) return result == (operand | f.quiet_bit());  // the first of them
    const Bits expected =
        exact(x, operation, element == Element::f16 ? mpfr_mode(mode) : MPFR_RNDN);
    return f.is_nan(expected) ? f.is_quiet_nan(result) : result == expected;
  });
}

std::vector<Variant> variants_rounded_once() {
  std::vector<Variant> list;
  for (const Variant& variant : variants_of({"div", "inv", "sqrt"})) {
    const bool is_inv = variant.family->name == "inv", is_half = variant.element == Element::f16;
    if (is_half ? variant.family->name == "div" || (is_inv && variant.tier == Tier::standard)
                : !is_inv && variant.element == Element::f64 && variant.tier == Tier::standard)
      list.push_back(variant);
  }
  return list;
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ProcessorValues);
INSTANTIATE_TEST_SUITE_P(, ProcessorValues, testing::ValuesIn(variants_rounded_once()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
