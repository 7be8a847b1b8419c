// With the pass plugin, loops over scalar built-ins call wide kernels and keep their bits.
#include <gtest/gtest.h>

#include <set>

#include "tests/support/caller.h"
#include "tests/support/elf_file.h"

namespace zorp::opencl {
namespace {

struct Loop {
  const char *name, *family;
  test::Element element;
  test::Tier tier;
};

constexpr Loop kLoops[] = {
    {"loop_exp", "exp", test::Element::f64, test::Tier::standard},
    {"loop_pow", "pow", test::Element::f64, test::Tier::standard},
    {"loop_native_sin", "sin", test::Element::f32, test::Tier::native},
    {"loop_ldexp", "ldexp", test::Element::f32, test::Tier::standard},
    {"loop_tanh", "tanh", test::Element::f16, test::Tier::standard},
    {"loop_convert", "cvtfptoi32rtesat", test::Element::f32, test::Tier::standard},
};

void PrintTo(const Loop& loop, std::ostream* out) { *out << loop.name; }

class Loops : public testing::TestWithParam<Loop> {};

TEST_P(Loops, AreVectorisedAndKeepTheirBits) {
  const auto& [name, family_name, element, tier] = GetParam();
  const grammar::Kernel kernel =
      *grammar::find(std::string(family_name) + std::string(grammar::letter(element)) + "1" +
                     std::string(grammar::suffix(tier)));

  bool calls_wide = false;
  for (const test::ElfFile::Symbol& symbol : test::ElfFile(ZORP_LOOPS).symbols(SHT_DYNSYM)) {
    const grammar::Kernel* called = symbol.defined() ? nullptr : grammar::find(symbol.name);
    calls_wide |= called && called->family == kernel.family && called->element == element &&
                  called->tier == tier && called->width > 1;
  }
  EXPECT_TRUE(calls_wide);

  const test::Library kernels(ZORP_LIBRARY);
  test::Caller caller(kernel, kernels);
  const std::vector<test::Tuple> pool = test::operand_pool(caller.operands(), 1000);
  const int count = int(pool.size());
  std::array<std::vector<std::byte>, 3> arrays;
  for (auto& array : arrays) array.resize(8 * count);
  for (int i = 0; i < count; ++i)
    for (std::size_t operand = 0; operand < caller.operands().size(); ++operand) {
      const int bytes = grammar::lane_bytes(caller.operands()[operand]);
      std::memcpy(&arrays[operand][i * bytes], &pool[i][operand], bytes);
    }
  const test::Library loops(ZORP_LOOPS);
  const auto call = reinterpret_cast<void (*)(const void*, const void*, void*, int)>(
      const_cast<void*>(loops.find(name)));
  ASSERT_TRUE(call);
  call(arrays[0].data(), arrays[1].data(), arrays[2].data(), count);
  for (int i = 0; i < count; ++i) {
    const int bytes = grammar::lane_bytes(caller.outputs()[0]);
    test::Bits actual = 0;
    std::memcpy(&actual, &arrays[2][i * bytes], bytes);
    ASSERT_EQ(caller.output(caller({&pool[i], 1}), 0, 0), actual)
        << name << test::hex(pool[i], caller.operands().size());
  }
}

INSTANTIATE_TEST_SUITE_P(, Loops, testing::ValuesIn(kLoops),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zorp::opencl
