// Ordinary operands for every family: inside its domain and away from its special lanes.
#pragma once

#include <cstddef>

#include "export/grammar.h"

namespace zorp::bench {

/// A multiple of every width; operands and results of one measurement stay in the first-level
/// cache.
inline constexpr int kOperands = 1024;

/// The arrays that one measurement reads and writes: kOperands lanes of any type each, and two
/// results a lane in `second`. SLEEF wants results in memory aligned.
struct Buffers {
  alignas(64) std::byte operand[3][8 * kOperands];
  alignas(64) std::byte result[8 * kOperands];
  alignas(64) std::byte second[16 * kOperands];

  explicit Buffers(const grammar::Kernel& kernel);
};

}  // namespace zorp::bench
