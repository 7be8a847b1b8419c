// Every built-in at every type and width, as clang compiles it with the bitcode library, has the
// bits of its kernel, and leaves nothing else than the kernel's call in the object.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <map>
#include <set>

#include "clients/opencl/bitcode/test_kernels.h"
#include "tests/support/caller.h"
#include "tests/support/elf_file.h"

namespace zorp::opencl {
namespace {

using test::Bits;
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
  std::set<std::string> called, functions;
  const test::ElfFile file(GetParam().path);
  for (const test::ElfFile::Symbol& symbol : file.symbols(SHT_SYMTAB)) {
    if (symbol.type() == STT_FUNC && symbol.defined()) functions.emplace(symbol.name);
    if (!symbol.name.empty() && !symbol.defined()) called.emplace(symbol.name);
  }
  std::set<std::string> kernels, uses;
  for (const Use& use : all_uses()) {
    uses.insert(use.symbol());
    const grammar::Kernel& kernel = use.builtin->kernel(use.width, GetParam().is_relaxed());
    // Served by two calls of half the width.
    if (!kernel.operands_on_stack()) kernels.insert(kernel.symbol());
  }
  EXPECT_EQ(called, kernels);
  EXPECT_EQ(functions, uses);
}

/// A number in a type of the language, rounded in the current mode if need be.
struct Number {
  long double value;

  static Number read(const std::string& type, Bits bits) {
    if (type == "double") return {std::bit_cast<double>(bits)};
    if (type == "float") return {std::bit_cast<float>(std::uint32_t(bits))};
    if (type == "int") return {(long double)(std::int32_t(bits))};
    if (type == "uint") return {(long double)(std::uint32_t(bits))};
    return {type == "long" ? (long double)(std::int64_t(bits)) : (long double)(bits)};
  }

  Bits write(const std::string& type) const {
    if (type == "double") return std::bit_cast<Bits>(double(value));
    if (type == "float") return std::bit_cast<std::uint32_t>(float(value));
    const long double integral = std::rint(value);
    if (type == "ulong") return Bits(integral);
    const Bits bits = Bits(std::int64_t(integral));
    return type == "long" ? bits : std::uint32_t(bits);
  }

  bool fits(const std::string& type) const {
    const long double limit = std::ldexp(1.0L, type.ends_with("long") ? 63 : 31);
    const bool is_unsigned = type[0] == 'u';
    const long double integral = std::rint(value);
    return type == "double" || type == "float" ||
           (integral >= (is_unsigned ? 0 : -limit) && integral < (is_unsigned ? 2 * limit : limit));
  }
};

Bits saturated(const std::string& type, bool is_negative) {
  const Bits all = type.ends_with("long") ? ~Bits{0} : ~std::uint32_t{0};
  if (type[0] == 'u') return is_negative ? 0 : all;
  return is_negative ? all / 2 + 1 : all / 2;
}

// The table of built-ins is what the other tests rest on: here names are taken at their word.
TEST(BitcodeConversions, RoundAsTheirNamesSay) {
  const test::Library program(kModules[0].path);
  const std::map<std::string, int> modes = {
      {"_rte", FE_TONEAREST}, {"_rtn", FE_DOWNWARD}, {"_rtp", FE_UPWARD}, {"_rtz", FE_TOWARDZERO}};
  for (const Use& use : all_uses()) {
    if (!use.builtin->is_conversion || use.width != 1) continue;
    const std::string name = use.builtin->name(1);
    const std::string from = use.builtin->operands[0].element, to = use.builtin->result;
    EXPECT_TRUE(name.starts_with("convert_" + to)) << name;
    const bool to_integer = to != "double" && to != "float";
    const auto mode = modes.find(name.substr(name.size() - 4));
    const int rounding = mode != modes.end() ? mode->second
                         : to_integer        ? FE_TOWARDZERO
                                             : FE_TONEAREST;
    const auto call = reinterpret_cast<void (*)(const void*, void*)>(
        const_cast<void*>(program.find(use.symbol())));
    for (long double value : {0.0L, 0.25L, 0.5L, 0.75L, 1.5L, 2.5L, 16777217.0L, 16777219.0L, 3e9L,
                              4294967295.0L, 9007199254740993.0L, 1.7e19L, 1e25L})
      for (long double sign : {1, -1}) {
        const Number wanted{sign * value};
        if (!wanted.fits(from)) continue;
        const Bits operand = wanted.write(from);
        const Number exact = Number::read(from, operand);
        Bits actual = 0;
        call(&operand, &actual);
        std::fesetround(rounding);
        const bool fits = exact.fits(to);
        const Bits expected = fits ? exact.write(to) : saturated(to, sign < 0);
        std::fesetround(FE_TONEAREST);
        if (fits || name.find("_sat") != name.npos) {
          EXPECT_EQ(actual, expected) << name << "(" << exact.value << ")";
        }
      }
  }
}

INSTANTIATE_TEST_SUITE_P(, Bitcode, testing::ValuesIn(kModules),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zorp::opencl
