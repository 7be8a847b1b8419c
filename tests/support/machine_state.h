// The whole register state around one kernel call, and the call itself.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "tests/support/trampoline_layout.h"

namespace zorp::test {

enum General { rax, rcx, rdx, rbx, rsp, rbp, rsi, rdi, r8, r9, r10, r11, r12, r13, r14, r15 };

using VectorRegister = std::array<std::uint64_t, 8>;

struct Registers {
  std::array<VectorRegister, 32> zmm;
  std::array<std::uint64_t, 8> k;
  std::array<std::uint64_t, 16> general;  // by General; rsp is neither loaded nor stored
};

/// What fnstenv stores.
struct X87Environment {
  std::uint16_t control, reserved0, status, reserved1, tags, reserved2;
  std::uint32_t pointers[4];
};

struct alignas(64) Frame {
  Registers in, out;
  /// Copied to the bytes right above the return address, and back.
  std::array<std::byte, STACK_ARGUMENT_BYTES> stack_in, stack_out;
  const void* target;
  std::uint64_t stack_offset;  // the stack pointer at the call, modulo 64
  std::uint64_t clear_upper;   // execute vzeroupper before the call: for operands in xmm alone
  std::uint64_t flags_out;
  std::uint64_t has_xinuse;  // the processor can tell which state components are in use
  std::uint64_t xinuse_out;
  std::uint32_t mxcsr_in, mxcsr_out;
  std::uint16_t x87_control_in;
  X87Environment x87_out;
  std::uint64_t host_stack;  // the trampoline's own
  std::uint32_t host_mxcsr;
  std::uint16_t host_x87_control;
};

static_assert(offsetof(Registers, k) == REGISTERS_K);
static_assert(offsetof(Registers, general) == REGISTERS_GENERAL);
static_assert(sizeof(Registers) == REGISTERS_SIZE);
static_assert(offsetof(Frame, out) == FRAME_OUT);
static_assert(offsetof(Frame, stack_in) == FRAME_STACK_IN);
static_assert(offsetof(Frame, stack_out) == FRAME_STACK_OUT);
static_assert(offsetof(Frame, target) == FRAME_TARGET);
static_assert(offsetof(Frame, stack_offset) == FRAME_STACK_OFFSET);
static_assert(offsetof(Frame, clear_upper) == FRAME_CLEAR_UPPER);
static_assert(offsetof(Frame, flags_out) == FRAME_FLAGS_OUT);
static_assert(offsetof(Frame, has_xinuse) == FRAME_HAS_XINUSE);
static_assert(offsetof(Frame, xinuse_out) == FRAME_XINUSE);
static_assert(offsetof(Frame, mxcsr_in) == FRAME_MXCSR_IN);
static_assert(offsetof(Frame, mxcsr_out) == FRAME_MXCSR_OUT);
static_assert(offsetof(Frame, x87_control_in) == FRAME_X87_CONTROL_IN);
static_assert(offsetof(Frame, x87_out) == FRAME_X87_OUT);
static_assert(offsetof(Frame, host_stack) == FRAME_HOST_STACK);
static_assert(offsetof(Frame, host_mxcsr) == FRAME_HOST_MXCSR);
static_assert(offsetof(Frame, host_x87_control) == FRAME_HOST_X87_CONTROL);

/// Loads every register from frame->in, calls frame->target, stores every register to frame->out.
extern "C" void zorp_test_trampoline(Frame* frame);

}  // namespace zorp::test
