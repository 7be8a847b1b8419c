// Half kernels give the same bits in the native flavour as in the emulated one.
#include <gtest/gtest.h>

#include "tests/support/caller.h"

namespace zorp::test {
namespace {

std::vector<Variant> native_half_variants() {
  std::vector<Variant> list;
  for (const Variant& variant : kernel_variants())
    if (variant.library->name == "native" && variant.element == Element::f16)
      list.push_back(variant);
  return list;
}

class Flavours : public testing::TestWithParam<Variant> {
 protected:
  void SetUp() override { ASSERT_NE(library_file("emulated"), nullptr); }

  void compare(const Kernel& kernel, const std::vector<Tuple>& operands) {
    Caller native(kernel, loaded(*GetParam().library));
    Caller emulated(kernel, loaded(*library_file("emulated")));
    std::vector<Tuple> lanes(kernel.width);
    for (std::size_t start = 0; start < operands.size(); start += kernel.width) {
      for (int i = 0; i < kernel.width; ++i) lanes[i] = operands[(start + i) % operands.size()];
      const Results& expected = emulated(lanes);
      const Results& actual = native(lanes);
      ASSERT_TRUE(native.agree(expected, actual)) << native.difference(expected, actual, lanes);
    }
  }
};

std::vector<Tuple> all_halves() {
  std::vector<Tuple> list(1 << 16);
  for (Bits bits = 0; bits < list.size(); ++bits) list[bits][0] = bits;
  return list;
}

TEST_P(Flavours, AgreeAtFullWidth) {
  const Kernel widest = GetParam().kernel(GetParam().widest());
  if (widest.is_alias()) return;  // the tier that it shares its code with is compared
  const std::vector<Lane> operands = widest.operands();
  compare(widest, operands.size() == 1 ? all_halves() : operand_pool(operands, 1 << 15));
}

TEST_P(Flavours, AgreeAtEveryWidth) {
  for (const Kernel& kernel : GetParam().kernels())
    compare(kernel, operand_pool(kernel.operands(), GetParam().trapped() ? 128 : 1024));
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Flavours);
INSTANTIATE_TEST_SUITE_P(, Flavours, testing::ValuesIn(native_half_variants()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
