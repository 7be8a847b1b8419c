// The half instructions: what each computes, and how its operands are laid out.
#pragma once

#include <cstdint>

#include "evex.h"
#include "frame/rounding.h"
#include "vector_register.h"

namespace fp16trap {

/// Operands and results of one instruction. Operations compute all lanes; the emulator picks the
/// ones that count.
struct Work {
  Register old;     // the destination's former value
  Register first;   // EVEX.vvvv
  Register second;  // ModRM.rm
  zorp::Rounding rounding;
  uint8_t immediate;
  zorp::Rounding dynamic;  // MXCSR's mode, which some immediates ask for
  Register result;
  uint64_t mask_result;
  uint64_t flags_result;
};

/// How the operands are passed.
enum class Form : uint8_t {
  packed,        // vector (op vector) op vector/memory
  scalar,        // the same on lane 0; the rest of the low 128 bits comes from `first`
  scalar_fused,  // the same, but the rest keeps its former value
  packed_test,   // to a mask register
  scalar_test,   // to bit 0 of a mask register
  flags,         // to the processor's flags
  to_general,    // from a lane to a general register
  from_general,  // from a general register or memory to lane 0, else as `scalar`
  load,          // vmovsh from memory or `second` to `reg`
  store,         // vmovsh from `reg` to memory or `second`
  word_in,       // vmovw from a general register or memory
  word_out,      // vmovw to a general register or memory
};

struct Instruction {
  Form form;
  uint8_t map;
  uint8_t prefix;
  int8_t w;  // -1: either
  uint8_t opcode;
  uint8_t source_bytes;  // a lane of `second`, of memory and of a broadcast
  uint8_t result_bytes;  // a lane of the result
  void (*compute)(Work&);
};

/// The half instruction of this encoding, or null.
const Instruction* find_instruction(const Evex& code);

}  // namespace fp16trap
