#include "tests/values/references.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zorp::test {

void expect_reference(const Variant& variant, Reference reference,
                      std::span<const Tuple> operands) {
  std::vector<LaneResults> expected;
  for (const Tuple& tuple : operands) expected.push_back(reference(variant.element, tuple));
  for (const Kernel& kernel : variant.kernels()) {
    Caller caller(kernel, loaded(*variant.library));
    std::vector<Tuple> lanes(kernel.width);
    // Half instructions that trap are slow: all operands at the greatest width, some at the others.
    const std::size_t calls = variant.trapped() ? 2200 : operands.size();
    const std::size_t apart = operands.size() / calls | 1;
    // Each operand meets several neighbours, in several lanes.
    const std::size_t stride = std::max<std::size_t>(apart, kernel.width - kernel.width / 8);
    for (std::size_t start = 0; start < operands.size(); start += stride) {
      for (int lane = 0; lane < kernel.width; ++lane)
        lanes[lane] = operands[(start + lane) % operands.size()];
      const Results& results = caller(lanes);
      for (int lane = 0; lane < kernel.width; ++lane)
        for (std::size_t output = 0; output < caller.outputs().size(); ++output)
          ASSERT_EQ(hex(caller.output(results, output, lane)),
                    hex(expected[(start + lane) % operands.size()].at(output)))
              << kernel.name() << hex(lanes[lane], caller.operands().size()) << " in lane " << lane
              << ", result " << output;
    }
  }
}

std::vector<Tuple> telling_operands(Lane lane) {
  std::vector<Bits> list;
  if (grammar::lane_bytes(lane) == 2) {
    for (Bits bits = 0; bits < 0x10000; ++bits) list.push_back(bits);
  } else {
    list = specials(lane);
    for (const auto& more : {is_float(lane) ? every_exponent(lane, 1) : std::vector<Bits>(),
                             moderate(lane, 2000, 2), random_bits(lane, 2000, 3)})
      list.insert(list.end(), more.begin(), more.end());
  }
  std::vector<Tuple> tuples;
  for (Bits bits : list) tuples.push_back({bits});
  return tuples;
}

std::vector<Tuple> telling_pairs(Lane first, Lane second) {
  std::vector<Tuple> tuples;
  for (Bits x : specials(first))
    for (Bits y : specials(second)) tuples.push_back({x, y});
  const std::vector<Bits> x = moderate(first, 2000, 1), y = moderate(second, 2000, 2),
                          far = random_bits(second, 2000, 3);
  for (std::size_t i = 0; i < x.size(); ++i) {
    tuples.push_back({x[i], y[i]});
    tuples.push_back({x[i], far[i]});
    if (first == second) tuples.push_back({x[i], x[i] + i % 3 - 1});
  }
  return tuples;
}

std::vector<Variant> variants_of(const std::vector<std::string>& families) {
  std::vector<Variant> list;
  for (const Variant& variant : variants())
    if (std::find(families.begin(), families.end(), variant.family->name) != families.end())
      list.push_back(variant);
  return list;
}

}  // namespace zorp::test
