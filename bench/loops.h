// Loops that call a function on all operands. Kernels keep more registers than the C convention
// asks for, so a kernel of one-register operands is called like any C function.
#pragma once

#include "bench/operands.h"
#include "export/grammar.h"

namespace zorp::bench {

using Function = void (*)();

/// How results come back.
enum class Results {
  in_register,
  in_two_registers,  // the second in zmm1
  through_pointer,   // the second through a pointer
  in_memory,         // both through a pointer, the C convention for two vectors
};

/// How the library's kernel, or a C function with the same operands, returns its results.
Results conventional_results(const grammar::Kernel& kernel);

enum class Measure {
  throughput,  // calls independent of each other, results stored
  latency,     // each call waits for the result of the call before
};

/// Calls the function on kOperands lanes.
using Loop = void (*)(Function function, Buffers& buffers);

/// The loop for a kernel's operands and width, or nullptr where a latency can't be measured: the
/// result isn't of the kind of the first operand.
Loop find_loop(const grammar::Kernel& kernel, Results results, Measure measure);

/// The widest width at which each operand and result takes one register.
int full_width(const grammar::Kernel& kernel);

}  // namespace zorp::bench
