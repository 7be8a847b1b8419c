// Programs that the layer must not disturb: built and run with it and without it, everything that a
// user sees is the same.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <cstring>
#include <regex>
#include <string>
#include <vector>

#include "clients/opencl/layer/runtime.h"
#include "tests/support/processor.h"

namespace zorp::opencl {
namespace {

constexpr std::size_t kItems = 16;

const Runtime& runtime() {
  static const Runtime only = [] {
    setenv("ZORP_Z1_OPENCL", "all", 1);
    return Runtime(ZORP_OPENCL_LAYER);
  }();
  return only;
}

/// What the user sees of a program with a kernel `void k(global T *x)`, at most 8 bytes an item.
struct Outcome {
  cl_int status;
  std::string log;
  std::vector<double> results;

  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
  *out << "status " << outcome.status << "\n" << outcome.log;
  for (double result : outcome.results) *out << " " << result;
}

std::vector<double> run(const Program& program) {
  std::vector<double> x(kItems);
  for (std::size_t i = 0; i < kItems; ++i) x[i] = 0.5 + double(i);
  const Launch launch(runtime(), program, "k", {{x.data(), kItems * sizeof(double)}});
  launch(1, kItems);
  launch.read();
  return x;
}

Outcome outcome(const Entries& entries, const std::string& source, const std::string& options) {
  const Program program(runtime(), entries, source, options);
  // The runtime names a program's file at random.
  const std::regex file("tempfile_\\w+");
  Outcome seen{program.status(), std::regex_replace(program.log(), file, "tempfile"), {}};
  if (seen.status == CL_SUCCESS) seen.results = run(program);
  return seen;
}

struct Case {
  const char* name;
  const char* source;
  const char* options = "";
  bool builds = true;
};

// Results don't depend on whose built-ins are called, but for exact functions.
const Case kCases[] = {
    {"ErrorsAndTheirLines",
     "kernel void k(global double *x) {\n  x[0] = exp(x[0])\n}\nint f() { return g; }\n", "",
     false},
    {"WarningsOfTheProgramAlone",
     "#pragma clang diagnostic warning \"-Wall\"\n#pragma clang diagnostic warning \"-Wextra\"\n"
     "#warning here\n"
     "int f(int unused) { int u; return 0; }\nkernel void k(global double *x) { x[0] = __LINE__; "
     "}\n"},
    {"WarningsAsErrors", "kernel void k(global double *x) { x[0] = __LINE__; }\n", "-Werror"},
    {"ByteOrderMark", "\xef\xbb\xbfkernel void k(global double *x) { x[0] = __LINE__; }\n"},
    {"OwnFileNames",
     "#line 70 \"mine.cl\"\nkernel void k(global double *x) { x[0] = y; }\n#error stop\n", "",
     false},
    {"FunctionOfTheSameSignature",
     "__attribute__((overloadable)) double exp(double x) { return x + 1; }\n"
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n  x[i] = exp(x[i]);\n}\n"},
    {"FunctionUsedBeforeItsDefinition",
     "__attribute__((overloadable)) double8 exp(double8 x);\n"
     "kernel void k(global double *x) {\n"
     "  if (get_global_id(0) == 0) vstore8(exp(vload8(0, x)), 0, x);\n}\n"
     "__attribute__((overloadable)) double8 exp(double8 x) { return x + 1; }\n"},
    {"FunctionOfAnotherSignature",
     "double exp(int x, global double *y) { return y[x] + 1; }\n"
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n  x[i] = exp((int)i, x);\n}\n"},
    {"FunctionThatIsNotOverloadable",
     "double exp(double x) { return x + 1; }\nkernel void k(global double *x) {}\n", "", false},
    {"Variables",
     "struct S { double log; };\n"
     "double f(double pow) { double sin = pow + 1; struct S s = {sin}; return s.log; }\n"
     "kernel void k(global double *exp) {\n"
     "  size_t floor = get_global_id(0);\n  exp[floor] = f(exp[floor]);\n}\n"},
    {"KernelsNamedAsBuiltins",
     "kernel void round(global int *x, int y) { *x = y; }\nkernel void k(global double *x) {}\n"},
    {"Macros",
     "#undef exp\n#define exp(x) ((x) + 1)\n#undef sin\n#define sin exp\n"
     "#ifdef floor\n#undef floor\n#endif\n#define floor ceil\n"
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n  x[i] = sin(x[i]) + exp(1) + floor(x[i] + "
     "0.25);\n}\n"},
    {"MacroArguments",
     "#define APPLY(f, x) f(x)\n#define JOIN(a, b) a##b\n#define TEXT(a) #a\n"
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n"
     "  x[i] = APPLY(floor, x[i]) + JOIN(fa, bs)(x[i]) + JOIN(, ceil)(x[i]) + sizeof TEXT(exp);\n"
     "}\n"},
    {"OptionsThatNameFunctions",
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n  x[i] = F(x[i]) + CALL(floor, 2.5);\n}\n",
     "-DF=ceil -D\"CALL(f, x)=f(x)\""},
    {"OptionsThatNameBuiltins",
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n  x[i] = floor(x[i]);\n}\n",
     "-Dfloor=ceil"},
    {"OptionsThatNamePlainWords",
     "kernel void k(global double *a) {\n"
     "  const size_t j = get_global_id(0);\n  a[j] = floor(a[j]) + n + r;\n}\n",
     "-Dn=4 -Dr=2 -Dp=q -Dlo=1 -Dhi=2 -Dinline= -Dkernel_name=exp -Dcall=0 -Dcc=1 -DT=double "
     "-Dsecond=1 -Dxyz=zyx -Dgnu_inline -Dalways_inline"},
    {"PragmaEnables",
     "#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n"
     "kernel void k(global double *x) { x[get_global_id(0)] = floor(2.5); }\n"},
    {"PragmaInACondition",
     "#ifdef cl_khr_fp64\n#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n#else\n#error none\n"
     "#endif\nkernel void k(global double *x) { x[get_global_id(0)] = floor(2.5); }\n",
     "-cl-std=CL1.1"},
    {"PragmaMissing", "kernel void k(global double *x) { x[get_global_id(0)] = floor(2.5); }\n",
     "-cl-std=CL1.1"},
    {"PragmaDisables",
     "#pragma OPENCL EXTENSION cl_khr_fp64 : disable\n"
     "kernel void k(global double *x) { x[get_global_id(0)] = floor(2.5); }\n",
     "-cl-std=CL1.2"},
    {"Version12",
     "kernel void k(global double *x) { double w; const size_t i = get_global_id(0);\n"
     "  x[i] = fract(x[i], &w) + w; global double *p = x + i; *p += fract(2.5, p); }\n",
     "-cl-std=CL1.2"},
    {"Version20",
     "kernel void k(global double *x) { double w; const size_t i = get_global_id(0);\n"
     "  x[i] = fract(x[i], &w) + w; double *p = &w; x[i] += fract(2.5, p) + *p; }\n",
     "-cl-std=CL2.0"},
    {"Version30",
     "kernel void k(global double *x) { double w; const size_t i = get_global_id(0);\n"
     "  x[i] = fract(x[i], &w) + w; global double *p = x + i; *p += fract(2.5, p); }\n",
     "-cl-std=CL3.0"},
    {"VersionUnknown", "kernel void k(global double *x) {}\n", "-cl-std=CL9.9", false},
    {"WithoutOptimisation",
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n  x[i] = floor(x[i]) + fmax(x[i], 3.0);\n}\n",
     "-cl-opt-disable"},
    {"ForADebugger",
     "kernel void k(global double *x) {\n"
     "  const size_t i = get_global_id(0);\n  x[i] = floor(x[i]) + fmax(x[i], 3.0);\n}\n",
     "-g"},
    {"BarriersAndBranches",
     "kernel void k(global double *x) {\n"
     "  local double y[16];\n  const size_t i = get_local_id(0);\n"
     "  if (i % 3) y[i] = floor(x[i]); else y[i] = ceil(x[i]);\n"
     "  barrier(CLK_LOCAL_MEM_FENCE);\n  double w;\n"
     "  for (int j = 0; j < (int)i; ++j) x[i] += fmax(y[15 - j], modf(y[j] + 0.25, &w)) + w;\n}\n"},
    // More than there are registers, so that all are in use that a kernel may change.
    {"ValuesAliveAcrossCalls",
     "kernel void k(global double *x) {\n  if (get_global_id(0)) return;\n"
     "  double8 a[32]; int n[32];\n  __attribute__((opencl_unroll_hint(32)))\n"
     "  for (int i = 0; i < 32; ++i) {\n"
     "    a[i] = fmod(vload8(0, x) * (i + 1), 1.7);\n    n[i] = ilogb(x[i % 16] * (i + 1));\n  }\n"
     "  double8 sum = 0;\n  __attribute__((opencl_unroll_hint(32)))\n"
     "  for (int i = 0; i < 32; ++i) sum += a[i] * (n[i] + i);\n  vstore8(sum, 0, x);\n}\n"},
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

class OpenclLayerPrograms : public testing::TestWithParam<Case> {};

TEST_P(OpenclLayerPrograms, AreAsWithoutTheLayer) {
  const Case& c = GetParam();
  const Outcome expected = outcome(runtime().without_layer(), c.source, c.options);
  EXPECT_EQ(expected.status == CL_SUCCESS, c.builds) << expected.log;
  EXPECT_EQ(outcome(runtime().with_layer(), c.source, c.options), expected);
}

INSTANTIATE_TEST_SUITE_P(All, OpenclLayerPrograms, testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zorp::opencl
