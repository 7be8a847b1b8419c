// The bitcode library's source: OpenCL C that defines each built-in by a call of its kernel.
#pragma once

namespace zorp::opencl {

/// To stdout. `relaxed` takes the kernels of -cl-fast-relaxed-math.
void print_library(bool relaxed);

}  // namespace zorp::opencl
