// The text that the layer puts in front of a program's source.
#pragma once

#include <string>

namespace zorp::opencl {

/// With all overloads, or with those that are faster than the runtime's own.
std::string header_text(bool all);

}  // namespace zorp::opencl
