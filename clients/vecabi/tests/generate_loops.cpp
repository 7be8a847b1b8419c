// Writes the ordinary loops that the compilers under test are to vectorise, one a function:
//
//   generate_loops c HEADER        C, for the functions that the C library's HEADER declares as
//                                  vectorisable
//   generate_loops declared HEADER C, for all forms beyond these, with declarations of their own
//   generate_loops fortran         Fortran, for its intrinsic functions
//
// Each is a function of the same five arrays: three of operands, two of results.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include "clients/vecabi/names.h"
#include "clients/vecabi/tests/loops.h"

namespace zorp::vecabi::test {
namespace {

using grammar::Element;
using grammar::Kernel;
using grammar::Lane;

/// The intrinsic functions of Fortran; pow is the operator **.
const std::set<std::string> kFortran = {"acos",  "acosh", "asin", "asinh", "atan", "atan2", "atanh",
                                        "cos",   "cosh",  "erf",  "erfc",  "exp",  "hypot", "log",
                                        "log10", "pow",   "sin",  "sinh",  "tan",  "tanh"};

/// A function's prototype, and the call for one element of the arrays.
class Prototype {
 public:
  explicit Prototype(const Name& name) : name_(name), kernel_(name.kernels()[0]) {
    for (Lane lane : kernel_.operands()) operands_.push_back(c_type(lane));
  }

  std::string declaration() const {
    std::string parameters;
    for (const std::string& type : operands_) parameters += (parameters.empty() ? "" : ", ") + type;
    std::string linear;
    for (const char* pointer : {"r", "s"})
      if (writes_through(pointer)) {
        parameters += ", " + element() + "* " + pointer;
        linear += std::string(linear.empty() ? " linear(" : ", ") + pointer;
      }
    // Where a result is narrower than an operand, it would decide the number of lanes.
    const bool returns_int = result() == "int";
    return "#pragma omp declare simd notinbranch" + (linear.empty() ? "" : linear + ")") +
           (returns_int ? " simdlen(LANES_" + element() + ")" : "") + '\n' + result() + ' ' +
           name_.scalar() + '(' + parameters + ");\n";
  }

  /// `vectorise` tells the compiler to, where it can't know by itself that it may: a function
  /// writes through pointers, or might change anything.
  std::string c_loop(bool vectorise) const {
    const std::string arrays[] = {"x", "y", "z"};
    std::string text = "void loop_" + name_.scalar() + '(', arguments;
    for (std::size_t i = 0; i < std::size(arrays); ++i) {
      const std::string type = i < operands_.size() ? operands_[i] : element();
      text += "const " + type + "* restrict " + arrays[i] + ", ";
      if (i < operands_.size()) arguments += (i ? ", " : "") + arrays[i] + "[i]";
    }
    for (const char* pointer : {"r", "s"})
      if (writes_through(pointer)) arguments += std::string(", ") + pointer + " + i";
    const std::string call = name_.scalar() + '(' + arguments + ')';
    const std::string first = result() == "void" ? element() : result();
    return text + first + "* restrict r, " + element() + "* restrict s) {\n" +
           (vectorise ? "#pragma omp simd\n" : "") + "  for (int i = 0; i < " +
           std::to_string(kLoopLength) + "; ++i) " + (result() == "void" ? "" : "r[i] = ") + call +
           ";\n}\n";
  }

  std::string fortran_loop() const {
    const std::string type = name_.element == Element::f64 ? "c_double" : "c_float";
    const std::string function(name_.function->name);
    const std::string value = function == "pow"       ? "x(i)**y(i)"
                              : operands_.size() == 2 ? function + "(x(i), y(i))"
                                                      : function + "(x(i))";
    return "subroutine loop_" + name_.scalar() + "(x, y, z, r, s) bind(c)\n" +
           "  use iso_c_binding\n  real(" + type + "), dimension(" + std::to_string(kLoopLength) +
           ") :: x, y, z, r, s\n  integer :: i\n  do i = 1, " + std::to_string(kLoopLength) +
           "\n    r(i) = " + value + "\n  end do\nend subroutine\n";
  }

 private:
  std::string element() const { return name_.element == Element::f64 ? "double" : "float"; }
  std::string c_type(Lane lane) const { return lane == Lane::i32 ? "int" : element(); }

  std::string result() const {
    switch (name_.function->results) {
      case Results::stored_two:
      case Results::scattered_two:
        return "void";
      case Results::returned_second:
        return "int";
      default:
        return c_type(kernel_.results()[0]);
    }
  }

  bool writes_through(const std::string& pointer) const {
    return result() == "void" || (name_.function->results == Results::stored_one && pointer == "s");
  }

  Name name_;
  Kernel kernel_;
  std::vector<std::string> operands_;
};

std::set<std::string> declared_by(const std::string& header) {
  std::set<std::string> functions;
  std::ifstream file(header);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string hash, define, macro, value;
    words >> hash >> define >> macro >> value;
    constexpr std::string_view prefix = "__DECL_SIMD_";
    if (macro.starts_with(prefix) && value == "__DECL_SIMD_x86_64")
      functions.insert(macro.substr(prefix.size()));
  }
  return functions;
}

int run(const std::vector<std::string>& arguments) {
  const std::string what = arguments.empty() ? "" : arguments[0];
  const bool needs_header = what == "c" || what == "declared";
  if (arguments.size() != (needs_header ? 2 : 1) || !(needs_header || what == "fortran")) {
    std::fprintf(stderr, "usage: generate_loops c HEADER|declared HEADER|fortran\n");
    return 2;
  }
  if (needs_header) std::printf("#define _GNU_SOURCE\n#include <math.h>\n\n");
  const std::set<std::string> in_header =
      needs_header ? declared_by(arguments[1]) : std::set<std::string>();
  for (const Function& function : functions())
    for (Element element : {Element::f64, Element::f32}) {
      const Name name = {&function, element, kLetters[0], false};
      const Prototype prototype(name);
      // The header lets the compilers think of pointers as of any other operand.
      const bool by_header =
          in_header.count(name.scalar()) && function.results != Results::stored_two;
      if (what == "c" && by_header)
        std::printf("%s\n", prototype.c_loop(function.results == Results::scattered_two).c_str());
      if (what == "declared" && !by_header && function.results != Results::scattered_two)
        std::printf("%s%s\n", prototype.declaration().c_str(), prototype.c_loop(true).c_str());
      if (what == "fortran" && kFortran.count(std::string(function.name)))
        std::printf("%s\n", prototype.fortran_loop().c_str());
    }
  return 0;
}

}  // namespace
}  // namespace zorp::vecabi::test

int main(int argc, char** argv) { return zorp::vecabi::test::run({argv + 1, argv + argc}); }
