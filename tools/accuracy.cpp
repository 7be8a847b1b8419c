// Measures the largest errors of a library's kernels against MPFR and prints docs/accuracy.md.
//
//   accuracy LIBRARY [-n OPERANDS] [-j THREADS] [FAMILY...]
//
// Half is measured on all operands, double and float on OPERANDS (10,000,000 if not told). Without
// families, all are measured that the library has and that have a reference.
#include "tests/accuracy/accuracy.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "tests/support/processor.h"

namespace zorp::test {
namespace {

constexpr const char* kIntroduction =
    R"(# Accuracy

The largest errors found against MPFR, in units in the last place of the correctly rounded result,
rounded up in the last digit shown. A result of half a unit or less is correctly rounded. Half is
measured on all its operands; double and float on neighbourhoods of special values and on dense
random operands, so that a larger error may exist between them. An infinity where the exact result
is a number counts as the power of two above the largest number. Written by `tools/accuracy` on the
library; rows of all 4294967296 floats are what `zorp_check` found. Estimates of reciprocals and roots
are the processor's own, so that the errors of what depends on them differ a little between
processors, and from those of the portable build.

Families with one right result (`fma`, rounding to integers, taking numbers apart, selection, integer
division, conversions) have no rows: they give that result, and the tests compare it bit for bit.

![Largest errors](errors.svg)

| Family | Type | Tiers | Largest error | At | Operands | Wrong NaNs, infinities, zeros |
|---|---|---|---|---|---|---|
)";

struct Options {
  std::string library;
  std::size_t operands = 10'000'000;
  int threads = int(std::thread::hardware_concurrency());
  std::vector<std::string> families;
};

Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const bool has_value = i + 1 < argc;
    if (std::strcmp(argv[i], "-n") == 0 && has_value)
      options.operands = std::strtoull(argv[++i], nullptr, 10);
    else if (std::strcmp(argv[i], "-j") == 0 && has_value)
      options.threads = std::atoi(argv[++i]);
    else if (options.library.empty())
      options.library = argv[i];
    else
      options.families.push_back(argv[i]);
  }
  return options;
}

void print_rows(const Library& library, const grammar::Family& family, const Options& options) {
  for (Element element : family.elements)
    for (const Measurement& m : measure(library, *reference(family.name), family, element,
                                        options.operands, options.threads)) {
      std::printf("| %s | %s | %s | %.3f | %s | %zu | %zu |\n", family.name.c_str(),
                  std::string(name(element)).c_str(), tier_names(m.tiers).c_str(),
                  std::ceil(m.worst_error * 1000) / 1000,
                  describe(m.worst_operands, family, element).c_str(), m.operands,
                  m.wrong_specials);
      std::fflush(stdout);
    }
}

bool wanted(const grammar::Family& family, const Options& options, const Library& library) {
  const Kernel scalar{&family, family.elements[0], 1, Tier::standard};
  if (!reference(family.name)) return false;
  if (!library.is_portable() && !library.find(scalar.symbol())) return false;
  if (options.families.empty()) return true;
  for (const std::string& name : options.families)
    if (name == family.name) return true;
  return false;
}

int run(int argc, char** argv) {
  const Options options = parse(argc, argv);
  if (options.library.empty() || options.threads < 1) {
    std::fputs("usage: accuracy LIBRARY [-n OPERANDS] [-j THREADS] [FAMILY...]\n", stderr);
    return 2;
  }
  const Library library(options.library);
  if (!has_avx512() && !library.is_portable()) {
    std::puts("This processor has no AVX-512: only the portable build can be measured.");
    return 0;
  }
  std::fputs(kIntroduction, stdout);
  for (const grammar::Family& family : grammar::families())
    if (wanted(family, options, library)) print_rows(library, family, options);
  return 0;
}

}  // namespace
}  // namespace zorp::test

int main(int argc, char** argv) { return zorp::test::run(argc, argv); }
