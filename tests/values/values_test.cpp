// Every kernel of a family returns the values of the family's table, in every lane position.
#include "tests/values/values.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/caller.h"

namespace zorp::test {
namespace {

const std::vector<ValueTable>& tables() {
  static const std::vector<ValueTable> all = [] {
    std::vector<ValueTable> list;
    for (auto* values :
         {arithmetic_values, conversion_values, error_function_values, exponential_values,
          gamma_values, half_turn_values, hyperbolic_values, integer_division_values,
          inverse_hyperbolic_values, inverse_trigonometric_values, logarithm_values, power_values,
          root_values, rounding_values, trigonometric_values})
      for (ValueTable& table : values()) list.push_back(std::move(table));
    return list;
  }();
  return all;
}

std::vector<ValueEntry> entries_for(const Variant& variant) {
  std::vector<ValueEntry> list;
  for (const ValueTable& table : tables()) {
    if (table.family != variant.family->name) continue;
    for (const ValueEntry& entry : table.entries)
      if (entry.element == variant.element &&
          std::find(entry.tiers.begin(), entry.tiers.end(), variant.tier) != entry.tiers.end())
        list.push_back(entry);
  }
  return list;
}

std::vector<Variant> variants_with_values() {
  std::vector<Variant> list;
  for (const Variant& variant : variants())
    if (!entries_for(variant).empty()) list.push_back(variant);
  return list;
}

class Values : public testing::TestWithParam<Variant> {};

TEST_P(Values, HoldInEveryLane) {
  const std::vector<ValueEntry> entries = entries_for(GetParam());
  for (const Kernel& kernel : GetParam().kernels()) {
    Caller caller(kernel, loaded(*GetParam().library));
    std::vector<Tuple> lanes(kernel.width);
    for (std::size_t start = 0; start < entries.size(); ++start) {
      auto entry = [&](int lane) -> const ValueEntry& {
        return entries[(start + lane) % entries.size()];
      };
      for (int lane = 0; lane < kernel.width; ++lane) lanes[lane] = entry(lane).operands;
      const Results& results = caller(lanes);
      for (std::size_t output = 0; output < caller.outputs().size(); ++output)
        for (int lane = 0; lane < kernel.width; ++lane) {
          const Bits actual = caller.output(results, output, lane);
          const Expected& expected = entry(lane).results.at(output);
          ASSERT_TRUE(expected.holds(caller.outputs()[output], actual))
              << kernel.name() << hex(lanes[lane], caller.operands().size()) << " in lane " << lane
              << ", result " << output << ": " << hex(actual) << " instead of "
              << expected.describe();
        }
    }
  }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Values);
INSTANTIATE_TEST_SUITE_P(, Values, testing::ValuesIn(variants_with_values()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
