// Ordinary loops through the compilers: they call the names of the width asked for, give the bits
// of the kernels of width 1, and need no other library of vector functions.
#include "clients/vecabi/tests/loops.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <regex>
#include <set>

#include "clients/vecabi/tests/reference.h"
#include "tests/support/elf_file.h"
#include "tests/support/processor.h"

namespace zorp::vecabi::test {
namespace {

using namespace zorp::test;
using Strings = std::set<std::string>;

/// Loops as one compiler made them with one width of registers.
struct Loops {
  std::string compiler, source, path;
  char letter;
};

void PrintTo(const Loops& loops, std::ostream* out) { *out << loops.path; }

std::vector<Loops> all_loops() {
  std::vector<Loops> all;
  std::ifstream list(ZORP_VECABI_LOOPS_FILE);
  for (Loops loops; list >> loops.compiler >> loops.source >> loops.letter >> loops.path;)
    all.push_back(loops);
  return all;
}

/// Nobody may come by the C library's vector functions.
void expect_no_other_vector_functions(const ElfFile& file) {
  for (std::string_view needed : file.dynamic_strings(DT_NEEDED))
    EXPECT_EQ(needed.find("mvec"), needed.npos) << needed;
}

class VectorAbiLoops : public testing::TestWithParam<Loops> {
 protected:
  /// The functions that have a loop, and those of them that are called by a name of this ABI.
  void SetUp() override {
    const std::regex vector_name("_ZGV([bcde])N\\d+((?:v|l\\d)+)_(\\w+)");
    for (const ElfFile::Symbol& symbol : file_.symbols(SHT_DYNSYM)) {
      const std::string name(symbol.name);
      std::smatch match;
      if (symbol.defined() && name.starts_with("loop_")) functions_.insert(name.substr(5));
      if (!std::regex_match(name, match, vector_name)) continue;
      const std::string function = match[3];
      called_.insert(function);
      // With integers of 128 bits, gcc takes four floats beside pointers.
      const Reference reference(function);
      const bool narrower = GetParam().letter == 'c' && reference.results() == 2 &&
                            reference.operands()[0] == Lane::f32;
      EXPECT_EQ(match[1], std::string(1, narrower ? 'b' : GetParam().letter)) << name;
    }
  }

  Strings to_be_called() const {
    if (GetParam().compiler != "clang") return functions_;
    // What its own table has.
    Strings list;
    for (const char* function : {"cos", "exp", "log", "pow", "sin"})
      for (const char* letter : {"", "f"}) list.insert(std::string(function) + letter);
    return list;
  }

  const ElfFile file_{GetParam().path};
  Strings functions_, called_;
};

TEST_P(VectorAbiLoops, CallTheNamesOfTheirWidth) {
  EXPECT_FALSE(functions_.empty());
  for (const std::string& function : to_be_called())
    EXPECT_TRUE(called_.count(function)) << function;
  const auto needed = file_.dynamic_strings(DT_NEEDED);
  EXPECT_EQ(std::count(needed.begin(), needed.end(), "libzorp_z1_vecabi.so"), 1);
  expect_no_other_vector_functions(file_);
}

TEST_P(VectorAbiLoops, GiveTheKernelsBits) {
  if (!has_avx512()) GTEST_SKIP() << "this processor has no AVX-512";
  void* library = dlopen(GetParam().path.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_TRUE(library) << dlerror();
  for (const std::string& function : called_) {
    SCOPED_TRACE(function);
    Reference reference(function);
    const std::vector<Tuple> pool = operand_pool(reference.operands(), kLoopLength);
    struct alignas(64) Array {
      std::byte bytes[8 * kLoopLength];
    };
    std::array<Array, 3> operands{};
    std::array<Array, 2> results{};
    for (std::size_t j = 0; j < reference.operands().size(); ++j) {
      const int bytes = lane_bytes(reference.operands()[j]);
      for (int i = 0; i < kLoopLength; ++i)
        std::memcpy(&operands[j].bytes[i * bytes], &pool[i % pool.size()][j], bytes);
    }
    const auto loop = reinterpret_cast<Loop>(dlsym(library, ("loop_" + function).c_str()));
    ASSERT_TRUE(loop);
    loop(&operands[0], &operands[1], &operands[2], &results[0], &results[1]);
    for (int i = 0; i < kLoopLength; ++i) {
      const Tuple& tuple = pool[i % pool.size()];
      const std::vector<Bits> expected = reference(tuple);
      for (int k = 0; k < reference.results(); ++k) {
        const int bytes = lane_bytes(reference.result(k));
        Bits actual = 0;
        std::memcpy(&actual, &results[k].bytes[i * bytes], bytes);
        ASSERT_EQ(hex(actual), hex(expected[k]))
            << hex(tuple, reference.operands().size()) << ", result " << k;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, VectorAbiLoops, testing::ValuesIn(all_loops()), [](const auto& info) {
  return info.param.compiler + '_' + info.param.source + '_' + info.param.letter;
});

class VectorAbiPreloaded : public testing::TestWithParam<const char*> {
 protected:
  /// What earlier_program.c prints.
  static std::vector<double> run(const std::string& environment) {
    // The loader remarks on the one that binds early.
    std::FILE* pipe = popen((environment + ' ' + GetParam() + " 2> /dev/null").c_str(), "r");
    std::vector<double> numbers;
    for (double number; std::fscanf(pipe, "%la", &number) == 1;) numbers.push_back(number);
    EXPECT_EQ(pclose(pipe), 0);
    return numbers;
  }
};

TEST_P(VectorAbiPreloaded, ServesAProgramThatWasLinkedEarlier) {
  if (!has_avx512()) GTEST_SKIP() << "this processor has no AVX-512";
  expect_no_other_vector_functions(ElfFile(GetParam()));
  Reference exp("exp"), powf("powf"), sincos("sincos");
  const std::vector<double> before = run("");
  const std::vector<double> after = run("LD_PRELOAD=" ZORP_VECABI_FILE);
  constexpr int numbers = 64;
  ASSERT_EQ(before.size(), 4u * numbers);
  ASSERT_EQ(after.size(), before.size());
  for (int i = 0; i < numbers; ++i) {
    const double x = i / 8.0;
    EXPECT_EQ(before[i], x);  // the earlier library returns its operand
    const Bits bits = encode(Element::f64, x);
    const Bits power = powf({encode(Element::f32, x), encode(Element::f32, 3 - x)})[0];
    EXPECT_EQ(after[i], value(Element::f64, exp({bits})[0])) << x;
    EXPECT_EQ(after[numbers + i], value(Element::f32, power)) << x;
    for (int k = 0; k < 2; ++k)
      EXPECT_EQ(after[(2 + k) * numbers + i], value(Element::f64, sincos({bits})[k])) << x;
  }
}

INSTANTIATE_TEST_SUITE_P(, VectorAbiPreloaded,
                         testing::Values(ZORP_VECABI_EARLIER_PROGRAM, ZORP_VECABI_EARLY_BINDING));

}  // namespace
}  // namespace zorp::vecabi::test
