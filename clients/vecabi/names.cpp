#include "clients/vecabi/names.h"

#include <algorithm>

namespace zorp::vecabi {

using grammar::Element;
using grammar::Kernel;

namespace {

// Functions of the C library that one kernel of the same name computes.
constexpr std::string_view kOfOneKernel[] = {
    "acos",  "acosh",    "asin",      "asinh", "atan",      "atan2",  "atanh", "cbrt",
    "ceil",  "copysign", "cos",       "cosh",  "cospi",     "erf",    "erfc",  "exp",
    "exp10", "exp2",     "expm1",     "fabs",  "fdim",      "floor",  "fma",   "fmax",
    "fmin",  "fmod",     "hypot",     "ilogb", "ldexp",     "lgamma", "log",   "log10",
    "log1p", "log2",     "nextafter", "pow",   "remainder", "rint",   "round", "sin",
    "sinh",  "sinpi",    "sqrt",      "tan",   "tanh",      "tgamma", "trunc"};

std::vector<Function> all_functions() {
  std::vector<Function> all;
  for (std::string_view name : kOfOneKernel) all.push_back({name, {name}, Results::returned});
  all.push_back({"modf", {"modf"}, Results::stored_one});
  all.push_back({"sincos", {"sincosreg"}, Results::stored_two});
  all.push_back({"sincos", {"sincosreg"}, Results::scattered_two});
  all.push_back({"sincospi", {"sinpi", "cospi"}, Results::stored_two});
  all.push_back({"expfrexp", {"frexp"}, Results::returned_second});
  all.push_back({"frfrexp", {"frexp"}, Results::dropped_second});
  return all;
}

}  // namespace

const std::vector<Function>& functions() {
  static const std::vector<Function> all = all_functions();
  return all;
}

std::string Name::scalar() const {
  return std::string(function->name) + std::string(grammar::letter(element));
}

std::string Name::parameters() const {
  const std::string pointer = element == Element::f64 ? "l8" : "l4";
  switch (function->results) {
    case Results::stored_one:
      return "v" + pointer;
    case Results::stored_two:
      return "v" + pointer + pointer;
    case Results::scattered_two:
      return "vvv";
    default:
      return std::string(kernels()[0].operands().size(), 'v');
  }
}

std::string Name::symbol() const {
  return std::string("_ZGV") + letter.letter + (masked ? 'M' : 'N') + std::to_string(lanes()) +
         parameters() + '_' + scalar();
}

std::vector<Kernel> Name::kernels() const {
  std::vector<Kernel> list;
  for (std::string_view family : function->families)
    list.push_back(*grammar::find(std::string(family) + std::string(grammar::letter(element)) +
                                  std::to_string(lanes())));
  return list;
}

std::vector<Name> names(const std::vector<std::string>& groups) {
  std::vector<Name> list;
  for (const Function& function : functions())
    for (Element element : {Element::f64, Element::f32})
      for (const Letter& letter : kLetters)
        for (bool masked : {false, true}) {
          // Masks came with the registers of 512 bits; nobody has them for vectors of pointers.
          if (masked && (letter.letter != 'e' || function.results == Results::scattered_two))
            continue;
          const Name name = {&function, element, letter, masked};
          const std::vector<Kernel> kernels = name.kernels();
          if (std::all_of(kernels.begin(), kernels.end(), [&](const Kernel& kernel) {
                return std::count(groups.begin(), groups.end(), kernel.family->group) > 0;
              }))
            list.push_back(name);
        }
  return list;
}

}  // namespace zorp::vecabi
