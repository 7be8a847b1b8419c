// The registers of a program that a signal interrupted.
#pragma once

#include <ucontext.h>

#include <cstdint>

#include "vector_register.h"

namespace fp16trap {

/// Reads and writes registers in the signal's frame; what is written takes effect when the handler
/// returns.
class MachineState {
 public:
  explicit MachineState(ucontext_t* context);

  /// Whether the frame holds the vector registers; nothing else may be called if not.
  bool complete() const { return complete_; }

  uint64_t general(int number) const;
  void set_general(int number, uint64_t value);

  /// All 512 bits.
  Register vector(int number) const;
  void set_vector(int number, const Register& value);

  uint64_t mask(int number) const;
  void set_mask(int number, uint64_t value);

  uint64_t instruction_pointer() const;
  void set_instruction_pointer(uint64_t value);
  void set_flags(uint64_t affected, uint64_t value);
  uint32_t mxcsr() const;

 private:
  /// A register's part in an XSAVE component: null if the component is in its initial state, all
  /// zeros, of which the frame holds no copy.
  const uint8_t* read(int component, int offset) const;
  /// The same for writing; gives the component a copy first.
  uint8_t* write(int component, int offset);
  void get(int component, int offset, void* to, int size) const;
  void set(int component, int offset, const void* from, int size);

  ucontext_t* context_;
  uint8_t* area_;
  bool complete_;
};

}  // namespace fp16trap
