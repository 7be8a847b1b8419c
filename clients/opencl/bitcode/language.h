// What the language asks of its built-ins: how large errors may be, and the results for special
// operands.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/library.h"
#include "tests/support/operands.h"

namespace zorp::opencl {

/// The largest error allowed to the standard tier of a family, in units in the last place; nothing
/// for a family whose results are exact or rounded once.
std::optional<double> error_limit(const std::string& family, grammar::Element element);

/// Of half_ functions, in units in the last place of float.
constexpr double kHalfFunctionLimit = 8192;

/// A special operand for which a kernel doesn't return what the language requires.
struct Deviation {
  std::string operands, required, returned;
};

/// On zeros, infinities, NaNs, the ends of the range and small multiples of
/// 1/2, in all pairs.
std::vector<Deviation> deviations(const test::Library& library, const grammar::Kernel& kernel);

}  // namespace zorp::opencl
