#include "machine_state.h"

#include <cpuid.h>
#include <signal.h>

#include <algorithm>
#include <cstring>

namespace fp16trap {
namespace {

/// Numbers of XSAVE state components.
enum Component { sse = 1, avx = 2, opmask = 5, zmm_high256 = 6, zmm_high16 = 7, components = 8 };

struct Extent {
  uint32_t offset, size;
};

/// Where the components lie in an XSAVE area (standard format).
struct Layout {
  Extent extent[components] = {};
  Layout() {
    extent[sse] = {160, 16 * 16};
    for (int i : {avx, opmask, zmm_high256, zmm_high16}) {
      uint32_t ecx, edx;
      __cpuid_count(0xd, i, extent[i].size, extent[i].offset, ecx, edx);
    }
  }
};

const Layout layout;

constexpr int mxcsr_offset = 24;
constexpr int state_bits_offset = 512;  // XSTATE_BV: the components that have a copy

constexpr int general_registers[16] = {REG_RAX, REG_RCX, REG_RDX, REG_RBX, REG_RSP, REG_RBP,
                                       REG_RSI, REG_RDI, REG_R8,  REG_R9,  REG_R10, REG_R11,
                                       REG_R12, REG_R13, REG_R14, REG_R15};

}  // namespace

MachineState::MachineState(ucontext_t* context)
    : context_(context), area_(reinterpret_cast<uint8_t*>(context->uc_mcontext.fpregs)) {
  constexpr int software_bytes_offset = 464;
  _fpx_sw_bytes software;
  std::memcpy(&software, area_ + software_bytes_offset, sizeof software);
  constexpr uint64_t needed =
      1 << sse | 1 << avx | 1 << opmask | 1 << zmm_high256 | 1 << zmm_high16;
  complete_ = software.magic1 == FP_XSTATE_MAGIC1 && (software.xstate_bv & needed) == needed;
}

uint64_t MachineState::general(int number) const {
  return static_cast<uint64_t>(context_->uc_mcontext.gregs[general_registers[number]]);
}

void MachineState::set_general(int number, uint64_t value) {
  context_->uc_mcontext.gregs[general_registers[number]] = static_cast<greg_t>(value);
}

Register MachineState::vector(int number) const {
  Register value;
  if (number < 16) {
    get(sse, 16 * number, value.bytes, 16);
    get(avx, 16 * number, value.bytes + 16, 16);
    get(zmm_high256, 32 * number, value.bytes + 32, 32);
  } else {
    get(zmm_high16, 64 * (number - 16), value.bytes, 64);
  }
  return value;
}

void MachineState::set_vector(int number, const Register& value) {
  if (number < 16) {
    set(sse, 16 * number, value.bytes, 16);
    set(avx, 16 * number, value.bytes + 16, 16);
    set(zmm_high256, 32 * number, value.bytes + 32, 32);
  } else {
    set(zmm_high16, 64 * (number - 16), value.bytes, 64);
  }
}

uint64_t MachineState::mask(int number) const {
  uint64_t value;
  get(opmask, 8 * number, &value, sizeof value);
  return value;
}

void MachineState::set_mask(int number, uint64_t value) {
  set(opmask, 8 * number, &value, sizeof value);
}

uint64_t MachineState::instruction_pointer() const {
  return static_cast<uint64_t>(context_->uc_mcontext.gregs[REG_RIP]);
}

void MachineState::set_instruction_pointer(uint64_t value) {
  context_->uc_mcontext.gregs[REG_RIP] = static_cast<greg_t>(value);
}

void MachineState::set_flags(uint64_t affected, uint64_t value) {
  auto& flags = context_->uc_mcontext.gregs[REG_EFL];
  flags = static_cast<greg_t>((static_cast<uint64_t>(flags) & ~affected) | value);
}

uint32_t MachineState::mxcsr() const {
  uint32_t value;
  std::memcpy(&value, area_ + mxcsr_offset, sizeof value);
  return value;
}

const uint8_t* MachineState::read(int component, int offset) const {
  uint64_t present;
  std::memcpy(&present, area_ + state_bits_offset, sizeof present);
  if (!(present >> component & 1)) return nullptr;
  return area_ + layout.extent[component].offset + offset;
}

uint8_t* MachineState::write(int component, int offset) {
  uint8_t* const begin = area_ + layout.extent[component].offset;
  if (!read(component, 0)) {
    std::memset(begin, 0, layout.extent[component].size);
    uint64_t present;
    std::memcpy(&present, area_ + state_bits_offset, sizeof present);
    present |= uint64_t{1} << component;
    std::memcpy(area_ + state_bits_offset, &present, sizeof present);
  }
  return begin + offset;
}

void MachineState::get(int component, int offset, void* to, int size) const {
  if (const uint8_t* from = read(component, offset)) {
    std::memcpy(to, from, size);
  } else {
    std::memset(to, 0, size);
  }
}

void MachineState::set(int component, int offset, const void* from, int size) {
  // Zeros need no copy of a component that has none.
  const auto bytes = static_cast<const uint8_t*>(from);
  const bool zeros = std::all_of(bytes, bytes + size, [](uint8_t byte) { return byte == 0; });
  if (zeros && !read(component, offset)) return;
  std::memcpy(write(component, offset), from, size);
}

}  // namespace fp16trap
