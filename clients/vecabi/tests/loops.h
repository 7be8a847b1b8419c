// The loops that generate_loops writes and the test calls.
#pragma once

namespace zorp::vecabi::test {

inline constexpr int kLoopLength = 1024;

/// Three arrays of operands and two of results, as many as the function has.
using Loop = void (*)(const void* x, const void* y, const void* z, void* r, void* s);

}  // namespace zorp::vecabi::test
