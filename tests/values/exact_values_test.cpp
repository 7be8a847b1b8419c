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

// ---- fma ---------------------------------------------------------------------------------------

/// Rounds once to an IEEE 754 format.
class ExactFma {
 public:
  explicit ExactFma(Element element) : element_(element) {
    const Format& f = format(element);
    const int bias = (1 << (f.exponent_bits - 1)) - 1;
    mpfr_set_emax(bias + 1);
    mpfr_set_emin(2 - bias - f.mantissa_bits);
    mpfr_init2(result_, f.mantissa_bits + 1);
    for (auto& operand : operands_) mpfr_init2(operand, 53);
  }
  ExactFma(const ExactFma&) = delete;
  ~ExactFma() {
    mpfr_clear(result_);
    for (auto& operand : operands_) mpfr_clear(operand);
    mpfr_set_emax(mpfr_get_emax_max());
    mpfr_set_emin(mpfr_get_emin_min());
  }

  Bits operator()(const Tuple& x) {
    for (int i = 0; i < 3; ++i) mpfr_set_d(operands_[i], value(element_, x[i]), MPFR_RNDN);
    const int inexact = mpfr_fma(result_, operands_[0], operands_[1], operands_[2], MPFR_RNDN);
    mpfr_subnormalize(result_, inexact, MPFR_RNDN);
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

  ExactFma exact(element);
  expect_exactly(GetParam(), operands, [&](const Tuple& x, int, Bits result) {
    for (Bits operand : x)
      if (f.is_nan(operand)) return result == (operand | f.quiet_bit());  // the first of them
    const Bits expected = exact(x);
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

}  // namespace
}  // namespace zorp::test
