// Results are what they were: digests over fixed operands agree with the table that tools/digests
// wrote. This guards bits against a refactoring, a compiler or a flag that changes one result in
// millions; it proves nothing about their being right. The portable build computes a beginning, the
// library all that doesn't depend on the processor's own estimates.
#include <gtest/gtest.h>

#include "tests/support/digest.h"
#include "tests/support/operands.h"

namespace zorp::test {
namespace {

std::vector<Variant> algorithms() {
  std::vector<Variant> list;
  for (const Variant& variant : portable_variants())
    if (!variant.kernel(1).is_alias()) list.push_back(variant);
  for (const Variant& variant : variants()) {
    const DigestRow* row = digest_row(variant);
    if (!variant.is_portable() && !variant.kernel(1).is_alias() && row && row->all &&
        (variant.is_representative() || variant.element == Element::f16))
      list.push_back(variant);
  }
  return list;
}

class Digests : public testing::TestWithParam<Variant> {};

TEST_P(Digests, AreThoseOfTheTable) {
  const Variant& variant = GetParam();
  const DigestRow* row = digest_row(variant);
  ASSERT_NE(row, nullptr) << "the table has no row; tools/digests writes it";
  const bool short_of_time = variant.is_portable() || variant.trapped();
  const Digest& expected = short_of_time ? row->beginning : *row->all;
  const Digest actual = digest(loaded(*variant.library), variant, expected.operands);
  EXPECT_EQ(hex(actual.value), hex(expected.value)) << digest_key(variant);
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Digests);
INSTANTIATE_TEST_SUITE_P(, Digests, testing::ValuesIn(algorithms()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
