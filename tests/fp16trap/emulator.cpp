#include "emulator.h"

#include <xmmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "evex.h"
#include "machine_state.h"
#include "operations.h"

namespace fp16trap {
namespace {

using zorp::Rounding;

constexpr uint32_t denormals_are_zero = 0x40;

Rounding rounding_mode(uint32_t bits) { return static_cast<Rounding>(bits & 3); }

uint64_t low_bits(int count) { return count < 64 ? (uint64_t{1} << count) - 1 : ~uint64_t{0}; }

class Emulator {
 public:
  Emulator(MachineState& state, const Evex& code, const Instruction& instruction)
      : state_(state), code_(code), instruction_(instruction) {}

  bool run() {
    if (!valid()) return false;
    switch (instruction_.form) {
      case Form::packed:
        read_operands(lanes());
        compute();
        write_lanes();
        break;
      case Form::scalar:
      case Form::scalar_fused:
      case Form::from_general:
        read_operands(1);
        compute();
        if (instruction_.form == Form::scalar_fused) work_.first = work_.old;
        write_lane(work_.result);
        break;
      case Form::packed_test:
      case Form::scalar_test: {
        const int count = instruction_.form == Form::packed_test ? lanes() : 1;
        read_operands(count);
        compute();
        state_.set_mask(code_.reg & 7, work_.mask_result & write_mask(count));
        break;
      }
      case Form::flags: {
        read_operands(1);
        compute();
        constexpr uint64_t arithmetic_flags = 0x8d5;  // overflow, sign, zero, adjust, parity, carry
        state_.set_flags(arithmetic_flags, work_.flags_result);
        break;
      }
      case Form::to_general: {
        read_operands(1);
        compute();
        uint64_t value = 0;
        std::memcpy(&value, work_.result.bytes, instruction_.result_bytes);
        state_.set_general(code_.reg & 15, value);
        break;
      }
      case Form::load:
        load();
        break;
      case Form::store:
        store();
        break;
      case Form::word_in:
        word_in();
        break;
      case Form::word_out:
        word_out();
        break;
    }
    state_.set_instruction_pointer(state_.instruction_pointer() + code_.length);
    return true;
  }

 private:
  bool packed() const {
    return instruction_.form == Form::packed || instruction_.form == Form::packed_test;
  }
  /// Whether the field b stands for rounding or SAE.
  bool controls_rounding() const { return code_.b && !code_.memory; }

  bool valid() const {
    if (!packed()) return !(code_.b && code_.memory);
    return controls_rounding() || code_.vector_length < 3;
  }

  /// The vector length in bytes; rounding control works on full registers only.
  int vector_bytes() const { return controls_rounding() ? 64 : 16 << code_.vector_length; }
  int lanes() const {
    return vector_bytes() / std::max(instruction_.source_bytes, instruction_.result_bytes);
  }

  uint64_t write_mask(int count) const {
    return (code_.write_mask ? state_.mask(code_.write_mask) : ~uint64_t{0}) & low_bits(count);
  }

  uint8_t* address() const {
    const Address& a = code_.address;
    int64_t unit = 1;
    if (a.compressed) {
      unit = packed() && !code_.b ? lanes() * instruction_.source_bytes : instruction_.source_bytes;
    }
    uint64_t sum = static_cast<uint64_t>(a.displacement * unit);
    if (a.base != Address::none) sum += state_.general(a.base);
    if (a.index != Address::none) sum += state_.general(a.index) * a.scale;
    if (a.from_next_instruction) sum += state_.instruction_pointer() + code_.length;
    return reinterpret_cast<uint8_t*>(sum);
  }

  /// Reads `count` lanes of the last operand; masked lanes of memory aren't touched.
  Register read_second(int count) const {
    const int size = instruction_.source_bytes;
    Register value;
    if (!code_.memory) {
      if (instruction_.form != Form::from_general) return state_.vector(code_.rm);
      const uint64_t general = state_.general(code_.rm_general);
      std::memcpy(value.bytes, &general, size);
      return value;
    }
    const uint8_t* from = address();
    const uint64_t mask = write_mask(count);
    for (int i = 0; i < count; ++i) {
      if (mask >> i & 1) std::memcpy(value.bytes + i * size, from + (code_.b ? 0 : i * size), size);
    }
    return value;
  }

  void read_operands(int count) {
    work_.old = state_.vector(code_.reg);
    work_.first = state_.vector(code_.vvvv);
    work_.second = read_second(count);
    work_.dynamic = rounding_mode(state_.mxcsr() >> 13);
    work_.rounding = controls_rounding() ? rounding_mode(code_.vector_length) : work_.dynamic;
    work_.immediate = code_.immediate;
  }

  /// The operations round statically, so of MXCSR only the treatment of subnormal floats and
  /// doubles counts.
  void compute() {
    const unsigned saved = _mm_getcsr();
    _mm_setcsr(saved | (state_.mxcsr() & denormals_are_zero));
    instruction_.compute(work_);
    _mm_setcsr(saved);
  }

  /// Merges the active lanes of the result into the destination.
  void write_lanes() {
    const int size = instruction_.result_bytes, count = lanes();
    const uint64_t mask = write_mask(count);
    Register value;
    for (int i = 0; i < count; ++i) {
      if (mask >> i & 1) {
        std::memcpy(value.bytes + i * size, work_.result.bytes + i * size, size);
      } else if (!code_.zeroing) {
        std::memcpy(value.bytes + i * size, work_.old.bytes + i * size, size);
      }
    }
    state_.set_vector(code_.reg, value);
  }

  /// Lane 0 of the result under the mask; the rest of the low 128 bits from `first`.
  void write_lane(const Register& result) {
    const int size = instruction_.result_bytes;
    Register value;
    std::memcpy(value.bytes, work_.first.bytes, 16);
    std::memset(value.bytes, 0, size);
    if (write_mask(1)) {
      std::memcpy(value.bytes, result.bytes, size);
    } else if (!code_.zeroing) {
      std::memcpy(value.bytes, work_.old.bytes, size);
    }
    state_.set_vector(code_.reg, value);
  }

  void load() {
    read_operands(1);
    if (code_.memory) work_.first = Register();
    write_lane(work_.second);
  }

  void store() {
    const Register source = state_.vector(code_.reg);
    if (code_.memory) {
      if (write_mask(1)) std::memcpy(address(), source.bytes, 2);
      return;
    }
    Register value;
    std::memcpy(value.bytes, state_.vector(code_.vvvv).bytes, 16);
    std::memset(value.bytes, 0, 2);
    if (write_mask(1)) {
      std::memcpy(value.bytes, source.bytes, 2);
    } else if (!code_.zeroing) {
      std::memcpy(value.bytes, state_.vector(code_.rm).bytes, 2);
    }
    state_.set_vector(code_.rm, value);
  }

  void word_in() {
    Register value;
    if (code_.memory) {
      std::memcpy(value.bytes, address(), 2);
    } else {
      const uint64_t general = state_.general(code_.rm_general);
      std::memcpy(value.bytes, &general, 2);
    }
    state_.set_vector(code_.reg, value);
  }

  void word_out() {
    const Register source = state_.vector(code_.reg);
    if (code_.memory) {
      std::memcpy(address(), source.bytes, 2);
    } else {
      uint64_t value = 0;
      std::memcpy(&value, source.bytes, 2);
      state_.set_general(code_.rm_general, value);
    }
  }

  MachineState& state_;
  const Evex& code_;
  const Instruction& instruction_;
  Work work_ = {};
};

}  // namespace

bool emulate(ucontext_t* context) {
  MachineState state(context);
  if (!state.complete()) return false;
  const auto code = decode(reinterpret_cast<const uint8_t*>(state.instruction_pointer()));
  if (!code) return false;
  const Instruction* instruction = find_instruction(*code);
  return instruction && Emulator(state, *code, *instruction).run();
}

}  // namespace fp16trap
