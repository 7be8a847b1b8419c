// OpenCL C that uses each built-in at each width, as a program would.
#pragma once

#include <string>
#include <vector>

#include "clients/opencl/builtins.h"

namespace zorp::opencl {

/// One use of a built-in: a kernel that takes pointers to the operands, to the result and, if there
/// is a second result, to that.
struct Use {
  const Builtin* builtin;
  int width;
  /// Where the built-in's pointer points: "private", "local", "global"; empty if it has none.
  std::string space;

  /// fmax_float4_float, sincos_double8_local
  std::string symbol() const;
};

std::vector<Use> all_uses();

/// The program, to stdout.
void print_test_kernels();

}  // namespace zorp::opencl
