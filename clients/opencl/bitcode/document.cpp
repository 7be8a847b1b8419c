// Prints docs/opencl.md: which kernel serves which built-in, and how well.
//
//   zorp_opencl_document LIBRARY docs/accuracy.md float_errors.txt
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <numbers>
#include <sstream>

#include "clients/opencl/bitcode/language.h"
#include "clients/opencl/builtins.h"
#include "tests/support/caller.h"
#include "tests/support/processor.h"

namespace zorp::opencl {
namespace {

using grammar::Element;
using grammar::Form;
using grammar::Kernel;
using grammar::Tier;

constexpr Element kElements[] = {Element::f64, Element::f32, Element::f16};

constexpr const char* kIntroduction =
    R"(# OpenCL C

Written by `zorp_opencl_document`. Kernels are named at width 8, without `__zorp_z1_`.

## By clang

clang-19 leaves the built-ins of OpenCL C as calls, but for operators and casts. A bitcode library
defines them by calls of the kernels, inlined at every level of optimisation, so that an object holds
calls of `libzorp_z1.so` and nothing else:

    clang-19 -x cl -cl-std=CL3.0 -target x86_64-unknown-linux-gnu -march=native \
        -Xclang -finclude-default-header \
        -Xclang -mlink-builtin-bitcode -Xclang PREFIX/lib/zorp_z1/zorp_z1_opencl.bc -O2 -c kernel.cl

- OpenCL C 1.2, 2.0 and 3.0; all widths; double, float and half; pointers to private, local, global
  and generic memory.
- The processor named by `-march` needs AVX-512, as the kernels do: without it clang passes wide
  vectors in another way, and doesn't tell.
- `-cl-fast-relaxed-math` leaves no trace that a bitcode library could see. With it, link
  `zorp_z1_opencl_relaxed.bc` instead, which takes the `_rm` kernels.
- With clang's pass plugin of this library (`-fpass-plugin=zorp_z1_llvm.so`, after `-O2` or `-O3`),
  loops over built-ins on scalars become loops over wide kernels. Built-ins with a pointer stay scalar.
- A built-in without a kernel stays undefined, for another library to define.
)";

constexpr const char* kMapping =
    R"(
## Built-ins and their kernels

All operands have one width; `fmax`, `fmin` and `ldexp` also take a scalar for all lanes. The relaxed
kernels are those of `-cl-fast-relaxed-math`. `fma` of `double16` calls `fma8` twice: `fma16` takes
its operands from the stack.

| Built-in | Of | Kernels | Relaxed |
|---|---|---|---|
)";

constexpr const char* kWithoutKernels =
    R"(
## Built-ins without kernels

| Of OpenCL C 3.0 | |
|---|---|
| mathematics | `mad` |
| common | `clamp` `degrees` `max` `min` `mix` `radians` `sign` `smoothstep` `step` |
| geometry | `cross` `distance` `dot` `fast_distance` `fast_length` `fast_normalize` `length` `normalize` |
| integers | `abs` `abs_diff` `add_sat` `clz` `ctz` `dot_acc_sat` `hadd` `mad24` `mad_hi` `mad_sat` `mul24` `mul_hi` `popcount` `rhadd` `rotate` `sub_sat` `upsample` and the other integer functions |
| relations | `all` `any` `bitselect` `isequal` `isfinite` `isgreater` `isgreaterequal` `isinf` `isless` `islessequal` `islessgreater` `isnan` `isnormal` `isnotequal` `isordered` `isunordered` `select` `signbit` |
| conversions | from and to `char`, `uchar`, `short`, `ushort`, `half`; between integers; from float to double |
| the rest | `vload` and `vstore`, `shuffle`, work-items, synchronisation, atomics, asynchronous copies, images, pipes, `printf`, sub-groups, queues |

Kernels that no built-in reaches: `div` and `inv` but for `native_` and `half_` forms, `idiv` `irem`
`idivrem` `udiv` `urem` `udivrem` (operators in the language), `nearbyint`, `rcbrt`, `sincosreg`,
width 32, and the looser tiers of functions and types that have no `native_` or `half_` form.
)";

constexpr const char* kErrors =
    R"(
## Errors

The largest errors found and the language's limits, in units in the last place: those of
[accuracy.md](accuracy.md) and, in most float functions of one operand, on every 37th float. Functions
that aren't listed have exact or correctly rounded results. `native_` functions have no limit, nor has
`lgamma`.

| Built-in | double | float | half |
|---|---|---|---|
)";

constexpr const char* kRelaxed =
    R"(
## Relaxed mathematics

The largest errors in units in the last place where relaxed kernels have code of their own. In double
they have about half of the digits.

| Built-in | double | float |
|---|---|---|
)";

constexpr const char* kDeviations =
    R"(
## Special operands

The kernels were compared with what the language asks for at zeros, infinities, NaNs, the ends of the
range and small multiples of 1/2, in all pairs. They differ here; in `lgamma_r`, the sign does:

| Built-in | Of | Operands | Required | Returned |
|---|---|---|---|---|
)";

std::vector<std::string> unique(std::vector<std::string> list) {
  std::vector<std::string> kept;
  for (const std::string& text : list)
    if (std::find(kept.begin(), kept.end(), text) == kept.end()) kept.push_back(text);
  return kept;
}

std::string joined(const std::vector<std::string>& list, const std::string& quote) {
  std::string text;
  for (const std::string& item : list) text += (text.empty() ? "" : ", ") + quote + item + quote;
  return text;
}

void print_mapping() {
  std::fputs(kMapping, stdout);
  constexpr int kWidth = 8;
  struct Row {
    std::vector<std::string> types, kernels, relaxed;
  };
  std::vector<std::string> order;
  std::map<std::string, Row> rows;
  for (const Builtin& builtin : builtins()) {
    const std::string name = builtin.name(kWidth);
    order.push_back(name);
    Row& row = rows[name];
    row.types.push_back(builtin.operands[0].element);
    row.kernels.push_back(builtin.kernel(kWidth).name());
    if (builtin.relaxed_tier != builtin.tier)
      row.relaxed.push_back(builtin.kernel(kWidth, true).name());
  }
  for (const std::string& name : unique(order)) {
    const Row& row = rows[name];
    std::printf("| `%s` | %s | %s | %s |\n", name.c_str(), joined(unique(row.types), "").c_str(),
                joined(unique(row.kernels), "`").c_str(), joined(unique(row.relaxed), "`").c_str());
  }
}

/// By "family double native".
using Errors = std::map<std::string, double>;

/// The largest errors of docs/accuracy.md.
Errors read_accuracy(const char* file) {
  Errors errors;
  std::ifstream table(file);
  for (std::string line; std::getline(table, line);) {
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream row(line);
    std::string bar, family, type, tier;
    row >> bar >> family >> bar >> type >> bar;
    std::vector<std::string> tiers;
    while (row >> tier && tier != "|") tiers.push_back(tier);
    double error;
    if (row >> error)
      for (const std::string& tier : tiers) errors[family + " " + type + " " + tier] = error;
  }
  return errors;
}

void raise_float_errors(Errors& errors, const char* file) {
  std::ifstream table(file);
  for (std::string line; std::getline(table, line);) {
    std::istringstream row(line);
    std::string family, tier;
    double error;
    if (!(row >> family >> tier >> error)) continue;
    double& known = errors[family + " float " + tier];
    known = std::max(known, error);
  }
}

class Report {
 public:
  Report(const test::Library& library, Errors errors)
      : library_(library), errors_(std::move(errors)) {}

  void print() {
    print_errors();
    print_relaxed();
    print_deviations();
  }

 private:
  /// Of the tier whose code the kernel runs, or null.
  const double* error(const Kernel& kernel) const {
    const auto found =
        errors_.find(kernel.family->name + " " + std::string(test::name(kernel.element)) + " " +
                     std::string(test::name(kernel.algorithm_tier())));
    return found == errors_.end() ? nullptr : &found->second;
  }

  /// "1.661 of 4", and notes what is too much.
  std::string cell(const std::string& name, Element element, double error,
                   std::optional<double> limit) {
    char text[64];
    if (!limit) {
      std::snprintf(text, sizeof text, "%.3f", error);
      return text;
    }
    if (error > *limit) outside_.push_back(name + " of " + std::string(test::name(element)));
    std::snprintf(text, sizeof text, "%.3f of %g", error, *limit);
    return text;
  }

  void print_errors() {
    std::fputs(kErrors, stdout);
    std::map<std::string, std::map<Element, std::string>> rows;
    for (const Builtin& builtin : builtins()) {
      const double* measured = error(builtin.kernel(2));
      if (!measured) continue;
      std::optional<double> limit = error_limit(builtin.family, builtin.element);
      if (builtin.tier == Tier::half) limit = kHalfFunctionLimit;
      if (builtin.tier == Tier::native) limit = std::nullopt;
      rows[builtin.stem][builtin.element] = cell(builtin.stem, builtin.element, *measured, limit);
    }
    for (auto& [name, cells] : rows)
      std::printf("| `%s` | %s | %s | %s |\n", name.c_str(), cells[Element::f64].c_str(),
                  cells[Element::f32].c_str(), cells[Element::f16].c_str());
    std::printf("\nOutside the limits: %s.\n",
                outside_.empty() ? "none" : joined(outside_, "").c_str());
    std::printf(
        "\n`-cl-fp32-correctly-rounded-divide-sqrt` has no effect on `sqrt` of float, whose error "
        "is up to %.3f\nunits. Division is the compiler's own.\n",
        *error(*grammar::find("sqrtf1")));
  }

  /// Of float between -pi and pi, on a million operands.
  double largest_absolute_error(const Kernel& kernel, double (*exact)(double)) const {
    constexpr int kSteps = 1 << 20;
    test::Caller caller(kernel, library_);
    std::vector<test::Tuple> lanes(kernel.width);
    double largest = 0;
    for (int step = 0; step < kSteps; step += kernel.width) {
      const auto operand = [&](int lane) {
        return float(std::numbers::pi * (2.0 * (step + lane) / kSteps - 1));
      };
      for (int lane = 0; lane < kernel.width; ++lane)
        lanes[lane] = {test::encode(Element::f32, operand(lane))};
      const test::Results& results = caller(lanes);
      for (int lane = 0; lane < kernel.width; ++lane) {
        const double y = test::value(Element::f32, caller.output(results, 0, lane));
        largest = std::max(largest, std::fabs(y - exact(operand(lane))));
      }
    }
    return largest;
  }

  void print_relaxed() const {
    std::fputs(kRelaxed, stdout);
    for (const Builtin& builtin : builtins()) {
      if (builtin.element != Element::f64 || builtin.relaxed_tier == builtin.tier) continue;
      std::string cells;
      for (Element element : {Element::f64, Element::f32}) {
        Kernel kernel = builtin.kernel(1, true);
        kernel.element = element;
        const double* measured = error(kernel);
        char text[32] = "as standard";
        if (measured && kernel.algorithm_tier() != Tier::standard)
          std::snprintf(text, sizeof text, "%.3f", *measured);
        cells += std::string(" ") + text + " |";
      }
      std::printf("| `%s` |%s\n", builtin.stem.c_str(), cells.c_str());
    }
    std::printf(
        "\nThe language allows 2^-11 = %.1e as absolute error of `sin` and `cos` of float between "
        "-pi and pi;\nfound: %.1e and %.1e.\n",
        std::ldexp(1, -11),
        largest_absolute_error(*grammar::find("sinf16_rm"), [](double x) { return std::sin(x); }),
        largest_absolute_error(*grammar::find("cosf16_rm"), [](double x) { return std::cos(x); }));
  }

  void print_deviations() const {
    std::fputs(kDeviations, stdout);
    for (const Builtin& builtin : builtins()) {
      if (builtin.is_conversion || builtin.widths[0] != 1) continue;
      std::map<std::pair<std::string, std::string>, std::vector<std::string>> groups;
      for (const Deviation& d : deviations(library_, builtin.kernel(1)))
        groups[{d.required, d.returned}].push_back(d.operands);
      for (const auto& [results, operands] : groups)
        std::printf("| `%s` | %s | %s | %s | %s |\n", builtin.stem.c_str(),
                    builtin.operands[0].element.c_str(), joined(operands, "").c_str(),
                    results.first.c_str(), results.second.c_str());
    }
  }

  const test::Library& library_;
  Errors errors_;
  std::vector<std::string> outside_;
};

}  // namespace
}  // namespace zorp::opencl

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: zorp_opencl_document LIBRARY docs/accuracy.md float_errors.txt\n", stderr);
    return 2;
  }
  if (!zorp::test::has_avx512()) {
    std::fputs("This processor has no AVX-512: the kernels can't be looked at.\n", stderr);
    return 77;
  }
  using namespace zorp::opencl;
  const zorp::test::Library library(argv[1]);
  std::fputs(kIntroduction, stdout);
  print_mapping();
  std::fputs(kWithoutKernels, stdout);
  Errors errors = read_accuracy(argv[2]);
  raise_float_errors(errors, argv[3]);
  Report(library, errors).print();
  return 0;
}
