// Every built-in at every type and width, as clang compiles it with the bitcode library, has the
// bits of its kernel, and leaves nothing else than the kernel's call in the object.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "clients/opencl/bitcode/test_kernels.h"
#include "tests/support/caller.h"
#include "tests/support/elf_file.h"

namespace zorp::opencl {
namespace {

using test::Tuple;

/// The program, compiled in one way.
struct Module {
  const char *name, *path;
  bool is_relaxed() const { return std::string_view(name) == "relaxed"; }
};

constexpr Module kModules[] = {ZORP_OPENCL_MODULES};

void PrintTo(const Module& module, std::ostream* out) { *out << module.name; }

class Bitcode : public testing::TestWithParam<Module> {};

/// The lanes' operands as a program has them in memory.
std::vector<test::Vector> in_memory(const Use& use, const std::vector<grammar::Lane>& types,
                                    const std::vector<Tuple>& lanes) {
  std::vector<test::Vector> vectors(types.size());
  for (std::size_t operand = 0; operand < types.size(); ++operand)
    for (int lane = 0; lane < use.width; ++lane)
      vectors[operand].set(grammar::lane_bytes(types[operand]), lane, lanes[lane][operand]);
  return vectors;
}

TEST_P(Bitcode, BuiltinsHaveTheBitsOfTheirKernels) {
  const test::Library kernels(ZORP_LIBRARY), program(GetParam().path);
  for (const Use& use : all_uses()) {
    const grammar::Kernel& kernel = use.builtin->kernel(use.width, GetParam().is_relaxed());
    const auto call = reinterpret_cast<void (*)(void*, void*, void*, void*, void*)>(
        const_cast<void*>(program.find(use.symbol())));
    ASSERT_TRUE(call) << use.symbol();
    test::Caller caller(kernel, kernels);
    const auto& operands = use.builtin->operands;
    const std::vector<Tuple> pool = test::operand_pool(caller.operands(), 8 * use.width + 48);
    std::vector<Tuple> lanes(use.width);
    for (std::size_t start = 0; start < pool.size(); start += use.width) {
      for (int lane = 0; lane < use.width; ++lane) {
        lanes[lane] = pool[(start + lane) % pool.size()];
        for (std::size_t i = 0; i < operands.size(); ++i)
          if (operands[i].scalar) lanes[lane][i] = lanes[0][i];
      }
      std::vector<test::Vector> vectors = in_memory(use, caller.operands(), lanes);
      test::Results results;
      std::array<void*, 5> arguments{};
      std::size_t count = 0;
      for (test::Vector& vector : vectors) arguments[count++] = &vector;
      for (std::size_t i = 0; i < caller.outputs().size(); ++i)
        arguments[count++] = &results.outputs[i];
      std::apply(call, arguments);
      const test::Results& expected = caller(lanes);
      ASSERT_TRUE(caller.agree(expected, results))
          << use.symbol() << ": " << caller.difference(expected, results, lanes);
    }
  }
}

TEST_P(Bitcode, NothingIsLeftButTheCalls) {
  std::set<std::string> called, used;
  for (const test::ElfFile::Symbol& symbol : test::ElfFile(GetParam().path).symbols(SHT_DYNSYM))
    if (!symbol.name.empty()) (symbol.defined() ? used : called).emplace(symbol.name);
  std::set<std::string> kernels, uses;
  for (const Use& use : all_uses()) {
    uses.insert(use.symbol());
    const grammar::Kernel& kernel = use.builtin->kernel(use.width, GetParam().is_relaxed());
    // Served by two calls of half the width.
    if (!kernel.operands_on_stack()) kernels.insert(kernel.symbol());
  }
  EXPECT_EQ(called, kernels);
  EXPECT_EQ(used, uses);
}

INSTANTIATE_TEST_SUITE_P(, Bitcode, testing::ValuesIn(kModules),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zorp::opencl
