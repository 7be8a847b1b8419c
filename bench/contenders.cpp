#include "bench/contenders.h"

#include <dlfcn.h>

#include <cmath>
#include <cstdio>

namespace zorp::bench {
namespace {

using grammar::Element;
using grammar::Form;
using grammar::Kernel;
using grammar::Tier;

void* g_library;
void* g_sleef;
void* g_libm;

Function symbol(void* library, const std::string& name) {
  return library ? reinterpret_cast<Function>(dlsym(library, name.c_str())) : nullptr;
}

/// The standard tier meets SLEEF's functions of 1 ulp, reduced tiers those of 3.5 ulp where there
/// are any. The name tells which one it was.
void add_sleef(const Kernel& kernel, std::vector<Contender>& list) {
  if (kernel.element == Element::f16 || kernel.family->form == Form::integer_pointer) return;
  std::string stem = kernel.family->name;
  if (stem == "sincosreg") stem = "sincos";
  const std::string type = kernel.element == Element::f64 ? "d8" : "f16";
  std::vector<std::string> accuracies = {"u10", "u15", "u05", ""};
  if (kernel.tier != Tier::standard) accuracies.insert(accuracies.begin(), "u35");
  for (const std::string& accuracy : accuracies) {
    const std::string name = "Sleef_" + stem + type + "_" + accuracy + "avx512f";
    if (const Function function = symbol(g_sleef, name)) {
      const bool two = kernel.family->form == Form::element_pointer ||
                       kernel.family->form == Form::two_results;
      list.push_back({name, function, two ? Results::in_memory : Results::in_register});
      return;
    }
  }
}

// The C library returns neither in registers nor through one pointer.
double sincos_double(double* cosine, double x) {
  double sine;
  sincos(x, &sine, cosine);
  return sine;
}
float sincos_float(float* cosine, float x) {
  float sine;
  sincosf(x, &sine, cosine);
  return sine;
}

void add_libm(const Kernel& kernel, std::vector<Contender>& list) {
  if (kernel.element == Element::f16) return;
  const bool is_double = kernel.element == Element::f64;
  std::string stem = kernel.family->name;
  if (stem == "nan") return;  // the C function parses a string
  if (stem == "sincos" || stem == "sincosreg") {
    const auto function = is_double ? reinterpret_cast<Function>(sincos_double)
                                    : reinterpret_cast<Function>(sincos_float);
    list.push_back({is_double ? "sincos" : "sincosf", function, Results::through_pointer});
    return;
  }
  if (stem == "lgammar") stem = "lgamma";
  std::string name = stem + (is_double ? "" : "f");
  if (kernel.family->name == "lgammar") name += "_r";
  if (const Function function = symbol(g_libm, name))
    list.push_back({name, function, conventional_results(kernel)});
}

}  // namespace

bool open_libraries(const char* library) {
  g_library = dlopen(library, RTLD_NOW);
  if (!g_library) {
    std::fprintf(stderr, "%s\n", dlerror());
    return false;
  }
  g_sleef = dlopen("libsleef.so.3", RTLD_NOW);
  if (!g_sleef) std::fprintf(stderr, "without SLEEF: %s\n", dlerror());
  g_libm = dlopen("libm.so.6", RTLD_NOW);
  return true;
}

std::vector<Contender> contenders(const Kernel& kernel) {
  std::vector<Contender> list;
  const Function function = symbol(g_library, kernel.symbol());
  if (!function) return list;
  list.push_back({"zorp_z1", function, conventional_results(kernel)});
  if (kernel.width == 1)
    add_libm(kernel, list);
  else
    add_sleef(kernel, list);
  return list;
}

Function shortest_function() { return symbol(g_libm, "fabs"); }

}  // namespace zorp::bench
