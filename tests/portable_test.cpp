// The portable build with the processor's own estimates gives the bits of the library, where that
// runs: at width 1 and at the widest, in the caller's rounding modes, with subnormals and without.
#include <gtest/gtest.h>

#include "tests/portable/portable.h"
#include "tests/support/caller.h"
#include "tests/support/processor.h"

namespace zorp::test {
namespace {

class Portable : public testing::TestWithParam<Variant> {
 protected:
  void SetUp() override { set_estimate_bits(0); }
  void TearDown() override { set_estimate_bits(14); }

 private:
  static void set_estimate_bits(int bits) {
    const void* const function = loaded(portable_file()).find("zorp_portable_set_estimate_bits");
    reinterpret_cast<decltype(&zorp_portable_set_estimate_bits)>(const_cast<void*>(function))(bits);
  }
};

TEST_P(Portable, GivesTheLibrarysBits) {
  constexpr std::uint32_t kDown = 0x3f80, kUp = 0x5f80, kFlushing = 0x9fc0;
  for (const Kernel& kernel : GetParam().kernels()) {
    Caller portable(kernel, loaded(portable_file()));
    Caller real(kernel, loaded(*library_file("emulated")));
    const std::vector<Tuple> pool = operand_pool(kernel.operands(), 2048);
    std::vector<Tuple> lanes(kernel.width);
    for (std::uint32_t mxcsr : {kDefaultMxcsr, kDown, kUp, kFlushing})
      for (std::size_t start = 0; start < pool.size(); start += kernel.width) {
        for (int i = 0; i < kernel.width; ++i) lanes[i] = pool[(start + i) % pool.size()];
        const Results& expected = real(lanes, {.mxcsr = mxcsr});
        const Results& actual = portable(lanes, {.mxcsr = mxcsr});
        ASSERT_TRUE(portable.agree(expected, actual))
            << portable.difference(expected, actual, lanes) << " under MXCSR " << hex(mxcsr);
      }
  }
}

std::vector<Variant> comparable_variants() {
  return has_avx512() ? portable_variants() : std::vector<Variant>{};
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Portable);
INSTANTIATE_TEST_SUITE_P(, Portable, testing::ValuesIn(comparable_variants()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
