// Ordinary operands for every family: inside its domain and away from its special lanes.
#pragma once

#include <cstddef>
#include <vector>

#include "export/grammar.h"

namespace zorp::bench {

/// A multiple of every width; operands and results of one measurement stay in the first-level
/// cache.
inline constexpr int kOperands = 1024;

/// The arrays that one measurement reads and writes, kOperands lanes each.
struct Buffers {
  std::vector<std::byte> operand[3];
  std::vector<std::byte> result, second;

  explicit Buffers(const grammar::Kernel& kernel);
};

}  // namespace zorp::bench
