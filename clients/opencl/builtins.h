// The built-ins of OpenCL C that the library has kernels for. Written down here once, over the
// grammar of the exported names; both ways of serving OpenCL C and their tests derive from it.
#pragma once

#include <string>
#include <vector>

#include "export/grammar.h"

namespace zorp::opencl {

struct Operand {
  std::string element;  // "double", "int", "ulong", ...
  /// One value for all lanes: fmax(double8, double).
  bool scalar = false;
};

/// A built-in at one signature of element types, for all its widths.
struct Builtin {
  /// The name is stem, the width if this is a conversion to a vector, ending.
  std::string stem, ending = "";
  bool is_conversion = false;
  grammar::Element element;  // of the kernels
  std::string family;
  grammar::Tier tier;
  /// The tier that -cl-fast-relaxed-math takes: _rm where the family has it.
  grammar::Tier relaxed_tier;
  std::vector<Operand> operands;
  std::string result;
  /// What the last parameter points to; empty if there is none. Such a built-in exists for private,
  /// local, global and, where the language has it, generic pointers.
  std::string pointer = "";
  std::vector<int> widths;

  std::string name(int width) const;  // exp, native_cos, convert_int8_sat_rtz
  const grammar::Kernel& kernel(int width, bool relaxed = false) const;
};

/// All of them: mathematical functions, half_ and native_ functions, conversions.
const std::vector<Builtin>& builtins();

/// "double8"; at width 1 "double".
std::string type_name(const std::string& element, int width);

}  // namespace zorp::opencl
