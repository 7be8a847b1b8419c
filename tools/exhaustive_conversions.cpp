// Checks the conversions of 32-bit lanes on all 2^32 operands against integer arithmetic.
//
//   exhaustive_conversions LIBRARY [NAME...]
//
// Without names (cvti32tofprte, cvtfptou64rtzsat ...), all families of the grammar that have such
// operands are checked. Takes minutes for each.
#include <dlfcn.h>
#include <immintrin.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "export/grammar.h"
#include "tests/values/conversions.h"

namespace zorp::test {
namespace {

/// Runs a kernel over all operands; returns how many results are wrong.
template <class Operand, class Result>
std::uint64_t check(const void* entry, const Conversion& conversion) {
  const auto kernel = reinterpret_cast<Result (*)(Operand)>(const_cast<void*>(entry));
  constexpr int lanes = sizeof(Operand) / 4, bytes = sizeof(Result) / lanes;
  std::uint64_t wrong = 0;
  std::uint32_t in[lanes];
  std::byte out[sizeof(Result)];
  for (std::uint64_t start = 0; start < std::uint64_t{1} << 32; start += lanes) {
    for (int i = 0; i < lanes; ++i) in[i] = std::uint32_t(start + i);
    Operand operand;
    std::memcpy(&operand, in, sizeof in);
    const Result result = kernel(operand);
    std::memcpy(out, &result, sizeof out);
    for (int i = 0; i < lanes; ++i) {
      Bits actual = 0;
      std::memcpy(&actual, out + i * bytes, bytes);
      const Bits expected = conversion(in[i]);
      if (actual == expected) continue;
      if (wrong++ < 5)
        std::printf("  %08x: %llx instead of %llx\n", in[i], (unsigned long long)actual,
                    (unsigned long long)expected);
    }
  }
  return wrong;
}

std::uint64_t check(const grammar::Kernel& kernel, const void* entry) {
  const Conversion conversion(kernel);
  const bool wide = grammar::lane_bytes(conversion.to) == 8;
  if (is_float(conversion.from))
    return wide ? check<__m256, __m512i>(entry, conversion)
                : check<__m512, __m512i>(entry, conversion);
  return wide ? check<__m256i, __m512d>(entry, conversion)
              : check<__m512i, __m512>(entry, conversion);
}

int run(int argc, char** argv) {
  void* library = argc > 1 ? dlopen(argv[1], RTLD_NOW) : nullptr;
  if (!library) {
    std::fprintf(stderr, "usage: exhaustive_conversions LIBRARY [NAME...]\n");
    return 2;
  }
  const std::vector<std::string> names(argv + 2, argv + argc);
  bool failed = false;
  for (const grammar::Kernel& kernel : grammar::kernels()) {
    if (kernel.family->form != grammar::Form::conversion) continue;
    if (!names.empty() && std::find(names.begin(), names.end(), kernel.family->name) == names.end())
      continue;
    // The width whose wider side fills one register.
    const int bytes = std::max(grammar::lane_bytes(kernel.operands()[0]),
                               grammar::lane_bytes(kernel.results()[0]));
    if (grammar::lane_bytes(kernel.operands()[0]) != 4 || kernel.width != 64 / bytes) continue;
    const void* entry = dlsym(library, kernel.symbol().c_str());
    if (!entry) {
      std::printf("%s: missing\n", kernel.name().c_str());
      failed = true;
      continue;
    }
    const std::uint64_t wrong = check(kernel, entry);
    std::printf("%s: %llu of 2^32 wrong\n", kernel.name().c_str(), (unsigned long long)wrong);
    std::fflush(stdout);
    failed |= wrong != 0;
  }
  return failed;
}

}  // namespace
}  // namespace zorp::test

int main(int argc, char** argv) { return zorp::test::run(argc, argv); }
