// The widths of one algorithm give the same bits for the same operands in every lane position, and
// so do the tiers that share an algorithm.
#include <gtest/gtest.h>

#include "tests/support/caller.h"

namespace zorp::test {
namespace {

class Widths : public testing::TestWithParam<Variant> {
 protected:
  std::vector<Tuple> pool() const {
    return operand_pool(GetParam().kernel(1).operands(), GetParam().trapped() ? 48 : 256);
  }
  const Library& library() const { return loaded(*GetParam().library); }
  /// Lanes of pown that multiply out to a number near the ends of the range, or start from a
  /// subnormal, go to the rare routine once another lane needs the second path, and may then have
  /// other last bits.
  bool lanes_depend_on_neighbours() const { return GetParam().family->name == "pown"; }
  static constexpr Tuple kNeedsSecondPath = {0, 0x80000000};
};

TEST_P(Widths, AgreeInEveryLane) {
  const std::vector<Tuple> pool = this->pool();
  const int widest = GetParam().widest();
  Caller scalar(GetParam().kernel(1), library()), whole(GetParam().kernel(widest), library());
  std::vector<Results> expected, beside;
  for (const Tuple& tuple : pool) {
    expected.push_back(scalar({&tuple, 1}));
    if (lanes_depend_on_neighbours()) {
      std::vector<Tuple> lanes(widest, kNeedsSecondPath);
      lanes[0] = tuple;
      beside.push_back(whole(lanes));
    }
  }

  for (const Kernel& kernel : GetParam().kernels()) {
    Caller caller(kernel, library());
    std::vector<Tuple> lanes(kernel.width);
    // Moving on by one operand brings each operand into each lane, beside changing neighbours.
    for (std::size_t start = 0; start < pool.size(); ++start) {
      for (int i = 0; i < kernel.width; ++i) lanes[i] = pool[(start + i) % pool.size()];
      const Results& results = caller(lanes);
      for (std::size_t output = 0; output < caller.outputs().size(); ++output)
        for (int i = 0; i < kernel.width; ++i) {
          const std::size_t from = (start + i) % pool.size();
          const Bits actual = caller.output(results, output, i);
          if (lanes_depend_on_neighbours() && actual == whole.output(beside[from], output, 0))
            continue;
          ASSERT_EQ(hex(actual), hex(scalar.output(expected[from], output, 0)))
              << kernel.name() << hex(lanes[i], caller.operands().size()) << " in lane " << i
              << " against width 1, result " << output;
        }
    }
  }
}

TEST_P(Widths, TiersOfOneAlgorithmAgree) {
  if (!GetParam().kernel(1).is_alias()) return;
  const std::vector<Tuple> pool = this->pool();
  for (const Kernel& kernel : GetParam().kernels()) {
    Kernel leader = kernel;
    leader.tier = kernel.algorithm_tier();
    Caller caller(kernel, library()), reference(leader, library());
    std::vector<Tuple> lanes(kernel.width);
    for (std::size_t start = 0; start < pool.size(); start += kernel.width) {
      for (int i = 0; i < kernel.width; ++i) lanes[i] = pool[(start + i) % pool.size()];
      const Results& expected = reference(lanes);
      const Results& actual = caller(lanes);
      ASSERT_TRUE(caller.agree(expected, actual)) << caller.difference(expected, actual, lanes);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, Widths, testing::ValuesIn(variants()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
