// The errors stay within those of the measured table in docs/accuracy.md. The operands are a
// beginning of those measured there.
#include "tests/accuracy/accuracy.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>

#include "tests/support/digest.h"

namespace zorp::test {
namespace {

constexpr std::size_t kOperands = 150'000;

/// The largest error, and how many NaNs, infinities and zeros are wrong.
struct Limit {
  double error;
  std::size_t wrong_specials;
};

/// The table's rows by "family|element|tiers".
std::map<std::string, Limit> read_limits() {
  std::map<std::string, Limit> limits;
  std::ifstream table(ZORP_ACCURACY_TABLE);
  for (std::string line; std::getline(table, line);) {
    std::istringstream row(line);
    std::vector<std::string> cells;
    for (std::string cell; std::getline(row, cell, '|');) {
      const std::size_t begin = cell.find_first_not_of(' ');
      if (begin == std::string::npos) continue;
      cells.push_back(cell.substr(begin, cell.find_last_not_of(' ') + 1 - begin));
    }
    if (cells.size() < 7) continue;
    char* end;
    const double limit = std::strtod(cells[3].c_str(), &end);
    if (end != cells[3].c_str())
      limits[cells[0] + '|' + cells[1] + '|' + cells[2]] = {limit, std::stoul(cells[6])};
  }
  return limits;
}

std::vector<Variant> measurable_variants() {
  std::vector<Variant> list;
  for (const Variant& variant : variants())
    if (variant.is_representative() && variant.tier == Tier::standard &&
        reference(variant.family->name))
      list.push_back(variant);
  return list;
}

/// Processors' estimates differ in their last bits, all with relative errors below 2^-14: where
/// results depend on them, what exceeds half a unit may be twice what one processor showed.
double largest_error(double measured, Variant variant, const Measurement& measurement) {
  variant.tier = measurement.tiers.front();
  const DigestRow* row = digest_row(variant);
  const bool depends_on_estimates = row && !row->all;
  return depends_on_estimates ? 0.5 + 2 * (measured - 0.5) : measured;
}

class Accuracy : public testing::TestWithParam<Variant> {};

TEST_P(Accuracy, StaysWithinTheMeasuredErrors) {
  static const std::map<std::string, Limit> limits = read_limits();
  const Variant& variant = GetParam();
  for (const Measurement& measurement :
       measure(loaded(*variant.library), *reference(variant.family->name), *variant.family,
               variant.element, kOperands, 1)) {
    const std::string row = variant.family->name + '|' + std::string(name(variant.element)) + '|' +
                            tier_names(measurement.tiers);
    const auto limit = limits.find(row);
    ASSERT_NE(limit, limits.end()) << "docs/accuracy.md has no row for " << row;
    EXPECT_LE(measurement.worst_error, largest_error(limit->second.error, variant, measurement))
        << row << " at " << describe(measurement.worst_operands, *variant.family, variant.element)
        << ": " << hex(measurement.worst_result);
    EXPECT_LE(measurement.wrong_specials, limit->second.wrong_specials)
        << row << " at "
        << describe(measurement.wrong_special_operands.value_or(Tuple{}), *variant.family,
                    variant.element);
  }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Accuracy);
INSTANTIATE_TEST_SUITE_P(, Accuracy, testing::ValuesIn(measurable_variants()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
