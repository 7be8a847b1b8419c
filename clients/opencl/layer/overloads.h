// The generated definitions of built-ins, as OpenCL C.
#pragma once

#include <vector>

namespace zorp::opencl {

struct Overload {
  bool by_default;  // faster than the runtime's own
  const char* text;
};

extern const std::vector<Overload> kOverloads;

}  // namespace zorp::opencl
