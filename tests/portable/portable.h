// The portable build: the kernels' algorithms on a processor without AVX-512, for arrays in memory.
// A shared library with one function, so that programs may load it by name.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace zorp::portable {

/// Evaluates a kernel on `count` lanes. `operands` and `results` hold the arrays' addresses: the
/// results in registers first, then what goes through a pointer. Runs with the caller's `mxcsr`,
/// all exceptions masked.
using Evaluate = void (*)(const void* const* operands, void* const* results, size_t count,
                          uint32_t mxcsr);

struct Entry {
  const char* kernel;  // exp8_native: the exported name without its prefix
  Evaluate evaluate;
};

}  // namespace zorp::portable

/// Sets the number of bits that the estimates of reciprocals have: 14, but for telling the kernels
/// that depend on it; 0 for the processor's own, if it has AVX-512.
extern "C" [[gnu::visibility("default")]] void zorp_portable_set_estimate_bits(int bits);

/// The function of the kernel with that name, or nullptr. The widths that are there: 1 and the
/// widest.
extern "C" [[gnu::visibility("default")]] zorp::portable::Evaluate zorp_portable_find(
    const char* kernel);
