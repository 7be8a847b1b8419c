// The grammar of the exported names: its counts, and the names that are easily misread.
#include "export/grammar.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace zorp::grammar {
namespace {

TEST(Grammar, Counts) {
  EXPECT_EQ(families().size(), 129u);
  EXPECT_EQ(kernels().size(), 3480u);
  std::set<std::string> names, wrappers, rare_routines;
  for (const Kernel& kernel : kernels()) {
    names.insert(kernel.symbol());
    if (!kernel.calls_out()) continue;
    wrappers.insert(kernel.wrapper_symbol());
    rare_routines.insert(kernel.rare_symbol());
  }
  EXPECT_EQ(names.size(), 3480u);
  EXPECT_EQ(wrappers.size(), 1227u);
  EXPECT_EQ(rare_routines.size(), 109u);
}

TEST(Grammar, NamesAreReadFromTheirEnd) {
  struct {
    const char* name;
    const char* family;
    Element element;
    int width;
    Tier tier = Tier::standard;
  } const cases[] = {
      {"exp2", "exp", Element::f64, 2},
      {"exp21", "exp2", Element::f64, 1},
      {"exp22", "exp2", Element::f64, 2},
      {"exp216", "exp2", Element::f64, 16},
      {"exp16", "exp", Element::f64, 16},
      {"exp101", "exp10", Element::f64, 1},
      {"exp1016", "exp10", Element::f64, 16},
      {"log21", "log2", Element::f64, 1},
      {"log101", "log10", Element::f64, 1},
      {"log1p1", "log1p", Element::f64, 1},
      {"atan2", "atan", Element::f64, 2},
      {"atan21", "atan2", Element::f64, 1},
      {"cos16", "cos", Element::f64, 16},
      {"cosf16", "cos", Element::f32, 16},
      {"coss16", "cos", Element::f16, 16},
      {"fabss8", "fabs", Element::f16, 8},
      {"erff8", "erf", Element::f32, 8},
      {"erfs8", "erf", Element::f16, 8},
      {"modff8", "modf", Element::f32, 8},
      {"modfs8", "modf", Element::f16, 8},
      {"sinf16_native", "sin", Element::f32, 16, Tier::native},
      {"powr32", nullptr, Element::f64, 32},
      {"pows32_rm", "pow", Element::f16, 32, Tier::rm},
      {"cvtfptoi32rtesat16", "cvtfptoi32rtesat", Element::f64, 16},
      {"cvtfptoi32rtesatf16", "cvtfptoi32rtesat", Element::f32, 16},
      {"cvtfptoi64rtesatf32", nullptr, Element::f32, 32},
      {"cvtfp64tofp32rtp3", "cvtfp64tofp32rtp", Element::f64, 3},
      {"idivrem1", "idivrem", Element::f64, 1},
  };
  for (const auto& [name, family, element, width, tier] : cases) {
    SCOPED_TRACE(name);
    const Kernel* kernel = find(name);
    if (!family) {
      EXPECT_EQ(kernel, nullptr);
      continue;
    }
    ASSERT_NE(kernel, nullptr);
    EXPECT_EQ(kernel->family->name, family);
    EXPECT_EQ(kernel->element, element);
    EXPECT_EQ(kernel->width, width);
    EXPECT_EQ(kernel->tier, tier);
    EXPECT_EQ(kernel->name(), name);
  }
}

TEST(Grammar, KernelsPerFamily) {
  std::map<std::size_t, int> families_by_size;
  for (const Family& family : families()) {
    std::size_t count = 0;
    for (const Kernel& kernel : kernels()) count += kernel.family == &family;
    ++families_by_size[count];
  }
  const std::map<std::size_t, int> expected = {{80, 10}, {60, 6},  {40, 28}, {20, 27},
                                               {13, 24}, {12, 24}, {6, 10}};
  EXPECT_EQ(families_by_size, expected);
}

TEST(Grammar, OperandsAndResults) {
  auto shape = [](const char* name) {
    const Kernel* kernel = find(name);
    std::vector<Lane> lanes = kernel->operands();
    for (Lane lane : kernel->results()) lanes.push_back(lane);
    if (kernel->pointer()) lanes.push_back(*kernel->pointer());
    return lanes;
  };
  using enum Lane;
  EXPECT_EQ(shape("powns32"), (std::vector{f16, i32, f16}));
  EXPECT_EQ(shape("fmaf4"), (std::vector{f32, f32, f32, f32}));
  EXPECT_EQ(shape("ilogb8"), (std::vector{f64, i32}));
  EXPECT_EQ(shape("nans8"), (std::vector{i16, f16}));
  EXPECT_EQ(shape("sincosf3"), (std::vector{f32, f32, f32}));
  EXPECT_EQ(shape("sincosreg16"), (std::vector{f64, f64, f64}));
  EXPECT_EQ(shape("remquos2"), (std::vector{f16, f16, f16, i32}));
  EXPECT_EQ(shape("udivrem8"), (std::vector{u32, u32, u32, u32}));
  EXPECT_EQ(shape("cvtu64tofprtzf16"), (std::vector{u64, f32}));
  EXPECT_EQ(shape("cvtfp64tofp32rte1"), (std::vector{f64, f32}));
  EXPECT_TRUE(find("fma16")->operands_on_stack());
  EXPECT_TRUE(find("fma16_rm")->operands_on_stack());
  EXPECT_FALSE(find("fmaf32")->operands_on_stack());
}

}  // namespace
}  // namespace zorp::grammar
