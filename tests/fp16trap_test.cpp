// The emulator of half instructions: real machine code runs with all registers under control, and a
// model that reads the instruction's text, not its bytes, says what must come out. On a processor
// with AVX512-FP16 nothing traps, and the model is compared with the processor.
#include <gtest/gtest.h>
#include <immintrin.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "frame/half_emulated.h"

struct MachineRegisters {
  uint8_t vector[32][64];
  uint64_t mask[8];
  uint64_t general[16];
  uint64_t flags;
  uint32_t mxcsr;
};

using Code = void (*)();

struct InstructionEntry {
  Code code;
  const char* text;
};

extern "C" {
void fp16trap_run(MachineRegisters* registers, Code code);
extern const InstructionEntry fp16trap_instructions[];
alignas(64) uint8_t fp16trap_memory[4096];
}

namespace {

namespace emulated = zorp::emulated;
using zorp::rd;
using zorp::rn;
using zorp::Rounding;
using zorp::ru;
using zorp::rz;

constexpr Rounding current = Rounding::current;
constexpr uint32_t default_mxcsr = 0x1f80;

// ---- The model: text of an instruction

struct Operand {
  enum Kind { vector, mask, general, memory, immediate } kind;
  int number = 0;  // of the register
  int bytes = 0;   // its size, or that of memory
  int write_mask = 0;
  bool zeroing = false;
  int broadcast = 0;    // the number of lanes, 0: no broadcast
  std::string address;  // what is between the brackets
  int value = 0;
};

struct Parsed {
  std::string mnemonic;
  std::vector<Operand> operands;
  int rounding = -1;  // a static mode, -1: none
};

const char* const general_names[16] = {"rax", "rcx", "rdx", "rbx", "rsp", "rbp", "rsi", "rdi",
                                       "r8",  "r9",  "r10", "r11", "r12", "r13", "r14", "r15"};
const char* const general_names32[16] = {"eax",  "ecx",  "edx",  "ebx", "esp",  "ebp",
                                         "esi",  "edi",  "r8d",  "r9d", "r10d", "r11d",
                                         "r12d", "r13d", "r14d", "r15d"};

int index_of(const char* const (&names)[16], const std::string& name) {
  for (int i = 0; i < 16; ++i) {
    if (name == names[i]) return i;
  }
  return -1;
}

Operand parse_operand(std::string text) {
  Operand o;
  const size_t bracket = text.find(']');
  for (size_t brace = text.find('{'); brace != std::string::npos; brace = text.find('{')) {
    const std::string modifier = text.substr(brace + 1, text.find('}', brace) - brace - 1);
    text.erase(brace, modifier.size() + 2);
    if (modifier == "z") {
      o.zeroing = true;
    } else if (modifier[0] == 'k') {
      o.write_mask = modifier[1] - '0';
    } else {
      o.broadcast = std::stoi(modifier.substr(3));  // 1toN
    }
  }
  if (bracket != std::string::npos) {
    static const std::map<std::string, int> sizes = {
        {"word", 2}, {"dword", 4}, {"qword", 8}, {"xmmword", 16}, {"ymmword", 32}, {"zmmword", 64}};
    o.kind = Operand::memory;
    o.bytes = sizes.at(text.substr(0, text.find(' ')));
    const size_t open = text.find('[');
    o.address = text.substr(open + 1, bracket - open - 1);
  } else if (text.compare(1, 2, "mm") == 0) {
    o.kind = Operand::vector;
    o.bytes = text[0] == 'x' ? 16 : text[0] == 'y' ? 32 : 64;
    o.number = std::stoi(text.substr(3));
  } else if (text[0] == 'k') {
    o.kind = Operand::mask;
    o.number = text[1] - '0';
  } else if (std::isdigit(text[0])) {
    o.kind = Operand::immediate;
    o.value = std::stoi(text, nullptr, 0);
  } else {
    o.kind = Operand::general;
    o.number = index_of(general_names, text);
    o.bytes = o.number >= 0 ? 8 : 4;
    if (o.number < 0) o.number = index_of(general_names32, text);
    if (o.number < 0) throw std::runtime_error("no operand: " + text);
  }
  return o;
}

Parsed parse(const std::string& text) {
  Parsed p;
  size_t begin = text.find(' ');
  p.mnemonic = text.substr(0, begin);
  while (begin != std::string::npos) {
    const size_t end = text.find(',', ++begin);
    std::string operand = text.substr(begin, end == std::string::npos ? end : end - begin);
    operand.erase(0, operand.find_first_not_of(' '));
    operand.erase(operand.find_last_not_of(' ') + 1);
    if (operand[0] == '{') {
      static const std::map<std::string, int> modes = {
          {"{sae}", -1}, {"{rn-sae}", 0}, {"{rd-sae}", 1}, {"{ru-sae}", 2}, {"{rz-sae}", 3}};
      p.rounding = modes.at(operand);
    } else {
      p.operands.push_back(parse_operand(operand));
    }
    begin = end;
  }
  return p;
}

/// Evaluates "a+b*s-d", where a name is a register or the test's memory.
uint8_t* address_of(const std::string& text, const MachineRegisters& m) {
  uint64_t sum = 0;
  for (size_t i = 0; i < text.size();) {
    const bool minus = text[i] == '-';
    if (minus || text[i] == '+') ++i;
    const size_t end = std::min(text.find_first_of("+-", i), text.size());
    const std::string term = text.substr(i, end - i);
    const size_t star = term.find('*');
    const std::string name = term.substr(0, star);
    uint64_t value;
    if (std::isdigit(name[0])) {
      value = std::stoull(name, nullptr, 0);
    } else if (name == "fp16trap_memory") {
      value = reinterpret_cast<uint64_t>(fp16trap_memory);
    } else if (name == "rip") {
      value = 0;  // the assembler makes the symbol relative to it
    } else {
      value = m.general[index_of(general_names, name)];
    }
    if (star != std::string::npos) value *= std::stoull(term.substr(star + 1));
    sum += minus ? -value : value;
    i = end;
  }
  return reinterpret_cast<uint8_t*>(sum);
}

// ---- The model: what a lane computes

/// A lane of each operand. The modes of rounding come from MXCSR, which the caller sets.
struct Lane {
  uint64_t old, first, second;
  int immediate;
  int index;
};

using Compute = std::function<uint64_t(const Lane&)>;

__m256i vector_of(uint64_t half) { return _mm256_set1_epi16(static_cast<short>(half)); }
uint16_t half_of(__m256i v) { return static_cast<uint16_t>(_mm256_extract_epi16(v, 0)); }
uint64_t low32(__m512i v) { return static_cast<uint32_t>(_mm512_cvtsi512_si32(v)); }
uint64_t low64(__m512i v) {
  return static_cast<uint64_t>(_mm_cvtsi128_si64(_mm512_castsi512_si128(v)));
}

template <auto operation>
uint64_t binary(const Lane& l) {
  return half_of(operation(vector_of(l.first), vector_of(l.second)));
}
template <auto operation>
uint64_t unary(const Lane& l) {
  return half_of(operation(vector_of(l.second)));
}

using Ternary = __m256i (*)(__m256i, __m256i, __m256i);

uint16_t apply(Ternary f, uint64_t a, uint64_t b, uint64_t c) {
  return half_of(f(vector_of(a), vector_of(b), vector_of(c)));
}

/// Calls f<imm>() for the immediates that occur in the test's instructions.
template <int... known, class Function>
uint64_t with_immediate(int immediate, Function f) {
  uint64_t result = 0;
  if (!((immediate == known ? (result = f.template operator()<known>(), true) : false) || ...)) {
    throw std::runtime_error("immediate without a model");
  }
  return result;
}

uint64_t round_scale(const Lane& l) {
  return with_immediate<0x10, 0x01, 0x32, 0x54, 0xa3>(l.immediate, [&]<int imm>() {
    return half_of(emulated::round_scale<imm>(vector_of(l.second)));
  });
}
uint64_t reduce(const Lane& l) {
  return with_immediate<0x24, 0x01, 0x32, 0x54, 0xa3>(
      l.immediate, [&]<int imm>() { return half_of(emulated::reduce<imm>(vector_of(l.second))); });
}
uint64_t significand(const Lane& l) {
  return with_immediate<0x06, 0x00, 0x05, 0x0b>(l.immediate, [&]<int imm>() {
    return half_of(emulated::significand<imm>(vector_of(l.second)));
  });
}
uint64_t compare(const Lane& l) {
  return with_immediate<0x00, 0x05, 0x0e, 0x13, 0x1c>(l.immediate, [&]<int imm>() -> uint64_t {
    return emulated::compare<imm>(vector_of(l.first), vector_of(l.second)) & 1;
  });
}
uint64_t classify(const Lane& l) {
  return with_immediate<0x01, 0x5a, 0x99, 0xe6>(l.immediate, [&]<int imm>() -> uint64_t {
    return emulated::classify<imm>(vector_of(l.second)) & 1;
  });
}

/// (a + bi)(c + di) with its roundings in the order of the instruction; with `conjugate`
/// (a + bi)(c - di). `add` adds the destination's former value.
template <bool add, bool conjugate>
uint64_t complex(const Lane& l) {
  const uint64_t a = l.first & 0xffff, b = l.first >> 16, c = l.second & 0xffff, d = l.second >> 16;
  const Ternary fma = emulated::fma<current>, fnma = emulated::fnma<current>;
  uint64_t real, imaginary;
  if (add) {
    real = apply(fma, a, c, l.old & 0xffff);
    imaginary = apply(fma, b, c, l.old >> 16);
  } else {
    real = half_of(emulated::mul<current>(vector_of(a), vector_of(c)));
    imaginary = half_of(emulated::mul<current>(vector_of(b), vector_of(c)));
  }
  real = apply(conjugate ? fma : fnma, b, d, real);
  imaginary = apply(conjugate ? fnma : fma, a, d, imaginary);
  return imaginary << 16 | real;
}

/// The order in which an instruction's digits name factors and addend.
Compute fused(int digits, Ternary even, Ternary odd) {
  return [=](const Lane& l) -> uint64_t {
    const std::array operands = {l.old, l.first, l.second};
    const auto operand = [&](int digit) { return operands[digit - 1]; };
    // Of two NaN factors the one that the encoding names first passes: for 213 the middle operand.
    return apply(l.index % 2 ? odd : even, operand(digits / 100), operand(digits / 10 % 10),
                 operand(digits % 10));
  };
}

enum class Shape { packed, scalar, packed_test, scalar_test };

struct Semantics {
  Shape shape;
  int source_bytes, result_bytes;
  Compute compute;
};

/// Adds an operation's packed and scalar instruction.
void add_both(std::map<std::string, Semantics>& model, const std::string& name, int bytes,
              const Compute& compute) {
  model[name + "ph"] = {Shape::packed, bytes, bytes, compute};
  model[name + "sh"] = {Shape::scalar, bytes, bytes, compute};
}

/// Adds to-integer conversions of 16, 32, 64 bits: rounding and truncating.
template <Rounding mode>
void add_to_integers(std::map<std::string, Semantics>& model, const std::string& prefix) {
  const auto packed = [&](const char* name, int bytes, Compute compute) {
    model[prefix + name] = {Shape::packed, 2, bytes, std::move(compute)};
  };
  packed("w", 2, unary<emulated::to_int16<mode>>);
  packed("uw", 2, unary<emulated::to_uint16<mode>>);
  packed("dq", 4,
         [](const Lane& l) { return low32(emulated::to_int32<mode>(vector_of(l.second))); });
  packed("udq", 4,
         [](const Lane& l) { return low32(emulated::to_uint32<mode>(vector_of(l.second))); });
  packed("qq", 8, [](const Lane& l) {
    return low64(emulated::to_int64<mode>(_mm256_castsi256_si128(vector_of(l.second))));
  });
  packed("uqq", 8, [](const Lane& l) {
    return low64(emulated::to_uint64<mode>(_mm256_castsi256_si128(vector_of(l.second))));
  });
}

std::map<std::string, Semantics> make_model() {
  std::map<std::string, Semantics> m;
  add_both(m, "vadd", 2, binary<emulated::add<current>>);
  add_both(m, "vsub", 2, binary<emulated::sub<current>>);
  add_both(m, "vmul", 2, binary<emulated::mul<current>>);
  add_both(m, "vdiv", 2, binary<emulated::div<current>>);
  add_both(m, "vscalef", 2, binary<emulated::scale<current>>);
  add_both(m, "vmin", 2, binary<emulated::min>);
  add_both(m, "vmax", 2, binary<emulated::max>);
  add_both(m, "vsqrt", 2, unary<emulated::sqrt<current>>);
  add_both(m, "vgetexp", 2, unary<emulated::exponent>);
  add_both(m, "vrcp", 2, unary<emulated::reciprocal>);
  add_both(m, "vrsqrt", 2, unary<emulated::reciprocal_root>);
  add_both(m, "vrndscale", 2, round_scale);
  add_both(m, "vreduce", 2, reduce);
  add_both(m, "vgetmant", 2, significand);
  add_both(m, "vfmulc", 4, complex<false, false>);
  add_both(m, "vfcmulc", 4, complex<false, true>);
  add_both(m, "vfmaddc", 4, complex<true, false>);
  add_both(m, "vfcmaddc", 4, complex<true, true>);
  for (int digits : {132, 213, 231}) {
    const Ternary fma = emulated::fma<current>, fms = emulated::fms<current>;
    const Ternary fnma = emulated::fnma<current>, fnms = emulated::fnms<current>;
    const std::string suffix = std::to_string(digits);
    add_both(m, "vfmadd" + suffix, 2, fused(digits, fma, fma));
    add_both(m, "vfmsub" + suffix, 2, fused(digits, fms, fms));
    add_both(m, "vfnmadd" + suffix, 2, fused(digits, fnma, fnma));
    add_both(m, "vfnmsub" + suffix, 2, fused(digits, fnms, fnms));
    add_both(m, "vfmaddsub" + suffix, 2, fused(digits, fms, fma));
    add_both(m, "vfmsubadd" + suffix, 2, fused(digits, fma, fms));
  }
  m["vcmpph"] = {Shape::packed_test, 2, 2, compare};
  m["vcmpsh"] = {Shape::scalar_test, 2, 2, compare};
  m["vfpclassph"] = {Shape::packed_test, 2, 2, classify};
  m["vfpclasssh"] = {Shape::scalar_test, 2, 2, classify};

  const Compute to_float = [](const Lane& l) {
    return low32(_mm512_castps_si512(emulated::widen(vector_of(l.second))));
  };
  const Compute to_double = [](const Lane& l) {
    return low64(
        _mm512_castpd_si512(emulated::widen_double(_mm256_castsi256_si128(vector_of(l.second)))));
  };
  const Compute from_float = [](const Lane& l) -> uint64_t {
    return half_of(emulated::narrow<current>(
        _mm512_set1_ps(std::bit_cast<float>(static_cast<uint32_t>(l.second)))));
  };
  const Compute from_double = [](const Lane& l) -> uint64_t {
    return static_cast<uint16_t>(_mm_extract_epi16(
        emulated::narrow<current>(_mm512_set1_pd(std::bit_cast<double>(l.second))), 0));
  };
  m["vcvtph2psx"] = {Shape::packed, 2, 4, to_float};
  m["vcvtph2pd"] = {Shape::packed, 2, 8, to_double};
  m["vcvtps2phx"] = {Shape::packed, 4, 2, from_float};
  m["vcvtpd2ph"] = {Shape::packed, 8, 2, from_double};
  m["vcvtsh2ss"] = {Shape::scalar, 2, 4, to_float};
  m["vcvtsh2sd"] = {Shape::scalar, 2, 8, to_double};
  m["vcvtss2sh"] = {Shape::scalar, 4, 2, from_float};
  m["vcvtsd2sh"] = {Shape::scalar, 8, 2, from_double};

  add_to_integers<current>(m, "vcvtph2");
  add_to_integers<rz>(m, "vcvttph2");
  m["vcvtw2ph"] = {Shape::packed, 2, 2, unary<emulated::from_int16<current>>};
  m["vcvtuw2ph"] = {Shape::packed, 2, 2, unary<emulated::from_uint16<current>>};
  m["vcvtdq2ph"] = {Shape::packed, 4, 2, [](const Lane& l) -> uint64_t {
                      return half_of(emulated::from_int32<current>(
                          _mm512_set1_epi32(static_cast<int>(l.second))));
                    }};
  m["vcvtudq2ph"] = {Shape::packed, 4, 2, [](const Lane& l) -> uint64_t {
                       return half_of(emulated::from_uint32<current>(
                           _mm512_set1_epi32(static_cast<int>(l.second))));
                     }};
  m["vcvtqq2ph"] = {
      Shape::packed, 8, 2, [](const Lane& l) -> uint64_t {
        return static_cast<uint16_t>(_mm_extract_epi16(
            emulated::from_int64<current>(_mm512_set1_epi64(static_cast<long long>(l.second))), 0));
      }};
  m["vcvtuqq2ph"] = {
      Shape::packed, 8, 2, [](const Lane& l) -> uint64_t {
        return static_cast<uint16_t>(_mm_extract_epi16(
            emulated::from_uint64<current>(_mm512_set1_epi64(static_cast<long long>(l.second))),
            0));
      }};
  return m;
}

const std::map<std::string, Semantics>& model() {
  static const auto instance = make_model();
  return instance;
}

// ---- The model: operands

uint64_t lane(const void* from, int index, int bytes) {
  uint64_t value = 0;
  std::memcpy(&value, static_cast<const uint8_t*>(from) + index * bytes, bytes);
  return value;
}

void set_lane(void* to, int index, int bytes, uint64_t value) {
  std::memcpy(static_cast<uint8_t*>(to) + index * bytes, &value, bytes);
}

const uint8_t* bytes_of(const Operand& o, const MachineRegisters& m) {
  if (o.kind == Operand::memory) return address_of(o.address, m);
  if (o.kind == Operand::general) return reinterpret_cast<const uint8_t*>(&m.general[o.number]);
  return m.vector[o.number];
}

/// Computes under the given rounding mode and the program's treatment of subnormals.
uint64_t evaluate(const Compute& compute, const Lane& l, int rounding, uint32_t mxcsr) {
  const unsigned saved = _mm_getcsr();
  _mm_setcsr(default_mxcsr | (mxcsr & 0x40) |
             (rounding >= 0 ? static_cast<unsigned>(rounding) << 13 : mxcsr & 0x6000));
  const uint64_t result = compute(l);
  _mm_setcsr(saved);
  return result;
}

/// Writes a vector register and zeroes it above `bytes`.
void write_vector(MachineRegisters& m, int number, const uint8_t* value, int bytes) {
  uint8_t copy[64] = {};
  std::memcpy(copy, value, bytes);
  std::memcpy(m.vector[number], copy, 64);
}

void model_lanes(const Parsed& p, const Semantics& s, MachineRegisters& m) {
  std::vector<Operand> operands = p.operands;
  int immediate = 0;
  if (operands.back().kind == Operand::immediate) {
    immediate = operands.back().value;
    operands.pop_back();
  }
  const Operand& to = operands.front();
  const Operand& second = operands.back();
  const bool test = s.shape == Shape::packed_test || s.shape == Shape::scalar_test;
  const bool scalar = s.shape == Shape::scalar || s.shape == Shape::scalar_test;
  const uint8_t* const second_bytes = bytes_of(second, m);
  const uint8_t* const first_bytes = operands.size() > 2 ? bytes_of(operands[1], m) : nullptr;
  int count = 1;
  if (!scalar) {
    count = second.broadcast ? second.broadcast : second.bytes / s.source_bytes;
    if (!test) count = std::min(count, to.bytes / s.result_bytes);
  }
  const uint64_t mask = to.write_mask ? m.mask[to.write_mask] : ~uint64_t{0};

  uint8_t result[64] = {};
  uint64_t test_result = 0;
  for (int i = 0; i < count; ++i) {
    const bool active = mask >> i & 1;
    Lane l = {};
    l.second = lane(second_bytes, second.broadcast ? 0 : i, s.source_bytes);
    if (first_bytes) l.first = lane(first_bytes, i, s.source_bytes);
    if (!test) l.old = lane(m.vector[to.number], i, s.result_bytes);
    l.immediate = immediate;
    l.index = i;
    const uint64_t value = evaluate(s.compute, l, p.rounding, m.mxcsr);
    if (test) {
      test_result |= uint64_t{active && value} << i;
    } else {
      set_lane(result, i, s.result_bytes, active ? value : to.zeroing ? 0 : l.old);
    }
  }
  if (test) {
    m.mask[to.number] = test_result;
  } else if (scalar) {
    std::memcpy(result + s.result_bytes, first_bytes + s.result_bytes, 16 - s.result_bytes);
    write_vector(m, to.number, result, 16);
  } else {
    write_vector(m, to.number, result, count * s.result_bytes);
  }
}

void model_order(const Parsed& p, MachineRegisters& m) {
  const __m256i a = vector_of(lane(bytes_of(p.operands[0], m), 0, 2));
  const __m256i b = vector_of(lane(bytes_of(p.operands[1], m), 0, 2));
  constexpr uint64_t all = 0x8d5, unordered = 0x45, less = 0x01, equal = 0x40;
  uint64_t flags = 0;
  if (emulated::compare<_CMP_UNORD_Q>(a, b) & 1) flags = unordered;
  if (emulated::compare<_CMP_LT_OQ>(a, b) & 1) flags = less;
  if (emulated::compare<_CMP_EQ_OQ>(a, b) & 1) flags = equal;
  m.flags = (m.flags & ~all) | flags;
}

/// vcvt[t]sh2[u]si; the packed conversion of the same element types computes the lane.
void model_to_general(const Parsed& p, MachineRegisters& m) {
  const Operand& to = p.operands[0];
  const bool truncating = p.mnemonic.starts_with("vcvtt"), wide = to.bytes == 8;
  const bool is_unsigned = p.mnemonic.ends_with("usi");
  const std::string packed = std::string(truncating ? "vcvttph2" : "vcvtph2") +
                             (is_unsigned ? "u" : "") + (wide ? "qq" : "dq");
  Lane l = {};
  l.second = lane(bytes_of(p.operands[1], m), 0, 2);
  m.general[to.number] = evaluate(model().at(packed).compute, l, p.rounding, m.mxcsr);
}

void model_from_general(const Parsed& p, MachineRegisters& m) {
  const Operand& from = p.operands[2];
  const std::string packed = std::string("vcvt") + (p.mnemonic == "vcvtusi2sh" ? "u" : "") +
                             (from.bytes == 8 ? "qq" : "dq") + "2ph";
  Lane l = {};
  l.second = lane(bytes_of(from, m), 0, from.bytes);
  uint8_t result[16];
  std::memcpy(result, bytes_of(p.operands[1], m), 16);
  set_lane(result, 0, 2, evaluate(model().at(packed).compute, l, p.rounding, m.mxcsr));
  write_vector(m, p.operands[0].number, result, 16);
}

void model_vmovsh(const Parsed& p, MachineRegisters& m) {
  const Operand& to = p.operands.front();
  const Operand& from = p.operands.back();
  const bool active = !to.write_mask || (m.mask[to.write_mask] & 1);
  const uint64_t value = lane(bytes_of(from, m), 0, 2);
  if (to.kind == Operand::memory) {
    if (active) set_lane(address_of(to.address, m), 0, 2, value);
    return;
  }
  uint8_t result[16] = {};
  if (p.operands.size() == 3) std::memcpy(result, bytes_of(p.operands[1], m), 16);
  const uint64_t old = lane(m.vector[to.number], 0, 2);
  set_lane(result, 0, 2, active ? value : to.zeroing ? 0 : old);
  write_vector(m, to.number, result, 16);
}

void model_vmovw(const Parsed& p, MachineRegisters& m) {
  const Operand& to = p.operands[0];
  const uint64_t value = lane(bytes_of(p.operands[1], m), 0, 2);
  if (to.kind == Operand::memory) {
    set_lane(address_of(to.address, m), 0, 2, value);
  } else if (to.kind == Operand::general) {
    m.general[to.number] = value;
  } else {
    uint8_t result[2];
    set_lane(result, 0, 2, value);
    write_vector(m, to.number, result, 2);
  }
}

/// Changes registers and memory as the instruction must.
void model_execute(const std::string& text, MachineRegisters& m) {
  const Parsed p = parse(text);
  if (p.mnemonic == "vcomish" || p.mnemonic == "vucomish") return model_order(p, m);
  if (p.mnemonic.ends_with("2si") || p.mnemonic.ends_with("2usi")) return model_to_general(p, m);
  if (p.mnemonic == "vcvtsi2sh" || p.mnemonic == "vcvtusi2sh") return model_from_general(p, m);
  if (p.mnemonic.starts_with("vmovsh")) return model_vmovsh(p, m);
  if (p.mnemonic == "vmovw") return model_vmovw(p, m);
  model_lanes(p, model().at(p.mnemonic), m);
}

// ---- Running

/// Fills memory with lanes of one kind, so that every kind of operand gets telling values.
void fill(uint8_t* to, size_t bytes, std::mt19937_64& random) {
  switch (random() % 4) {
    case 0:  // halves, special ones among them
      for (size_t i = 0; i < bytes / 2; ++i) {
        uint64_t half = random();
        if (half >> 60 == 0) half = (half & 0x8000) | (half >> 20 & 1 ? 0x7c00 : 0);
        set_lane(to, static_cast<int>(i), 2, half);
      }
      break;
    case 1:  // floats in and around the range of halves
      for (size_t i = 0; i < bytes / 4; ++i) {
        const double x = std::ldexp(static_cast<double>(random()) * 0x1p-63 - 1,
                                    static_cast<int>(random() % 48) - 28);
        set_lane(to, static_cast<int>(i), 4, std::bit_cast<uint32_t>(static_cast<float>(x)));
      }
      break;
    case 2:  // doubles there, some too fine for float
      for (size_t i = 0; i < bytes / 8; ++i) {
        const double x = std::ldexp(static_cast<double>(random()) * 0x1p-63 - 1,
                                    static_cast<int>(random() % 48) - 28);
        set_lane(to, static_cast<int>(i), 8, std::bit_cast<uint64_t>(x));
      }
      break;
    default:  // integers of all magnitudes
      for (size_t i = 0; i < bytes / 8; ++i) {
        const auto x = static_cast<int64_t>(random()) >> random() % 64;
        set_lane(to, static_cast<int>(i), 8, static_cast<uint64_t>(x));
      }
  }
}

MachineRegisters random_registers(std::mt19937_64& random) {
  MachineRegisters m = {};
  for (auto& v : m.vector) fill(v, sizeof v, random);
  for (auto& k : m.mask) k = random();
  for (auto& g : m.general)
    g = static_cast<uint64_t>(static_cast<int64_t>(random()) >> random() % 64);
  const auto at = [](int offset) { return reinterpret_cast<uint64_t>(fp16trap_memory + offset); };
  m.general[0] = at(512);  // rax
  m.general[1] = 5;        // rcx
  m.general[2] = at(800);  // rdx
  m.general[5] = at(608);  // rbp
  m.general[7] = at(256);  // rdi
  m.general[9] = 24;
  m.general[10] = 0x44;
  m.general[12] = at(1024);
  m.general[13] = at(700);
  m.flags = 0x202 | (random() & 0x8d5);
  const uint32_t modes[] = {0, 0x2000, 0x4000, 0x6000};
  m.mxcsr = default_mxcsr | modes[random() % 4] | (random() % 2 ? 0x40 : 0);
  fill(fp16trap_memory, sizeof fp16trap_memory, random);
  return m;
}

std::string hex(const uint8_t* from, int bytes) {
  std::string text;
  for (int i = bytes - 1; i >= 0; --i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", from[i]);
    text += digits;
    if (i % 2 == 0 && i) text += '.';
  }
  return text;
}

/// The exactness of vrcp and vrsqrt is the emulator's choice.
bool left_to_the_processor(const std::string& text) {
  return __builtin_cpu_supports("avx512fp16") &&
         (text.starts_with("vrcp") || text.starts_with("vrsqrt"));
}

TEST(Fp16Trap, EveryInstructionMatchesItsText) {
  std::mt19937_64 random(5);
  int shown = 0, entries = 0;
  for (const InstructionEntry* e = fp16trap_instructions; e->code && shown < 10; ++e, ++entries) {
    if (left_to_the_processor(e->text)) continue;
    for (int run = 0; run < 16; ++run) {
      const MachineRegisters before = random_registers(random);
      std::array<uint8_t, sizeof fp16trap_memory> memory;
      std::memcpy(memory.data(), fp16trap_memory, memory.size());

      MachineRegisters want = before;
      model_execute(e->text, want);
      std::array<uint8_t, sizeof fp16trap_memory> want_memory;
      std::memcpy(want_memory.data(), fp16trap_memory, memory.size());
      std::memcpy(fp16trap_memory, memory.data(), memory.size());

      MachineRegisters got = before;
      fp16trap_run(&got, e->code);

      std::string difference;
      for (int i = 0; i < 32; ++i) {
        if (std::memcmp(got.vector[i], want.vector[i], 64) == 0) continue;
        difference += "\n  zmm" + std::to_string(i) + "\n    " + hex(got.vector[i], 64) +
                      ", want\n    " + hex(want.vector[i], 64);
      }
      for (int i = 1; i < 8; ++i) {
        if (got.mask[i] != want.mask[i]) difference += "\n  k" + std::to_string(i);
      }
      for (int i = 0; i < 16; ++i) {
        if (got.general[i] != want.general[i]) difference += std::string("\n  ") + general_names[i];
      }
      if (got.flags != want.flags) difference += "\n  flags";
      if (std::memcmp(fp16trap_memory, want_memory.data(), memory.size()) != 0) {
        difference += "\n  memory";
      }
      if (difference.empty()) continue;
      ADD_FAILURE() << e->text << " run " << run << ", mxcsr " << std::hex << before.mxcsr
                    << difference;
      ++shown;
      break;
    }
  }
  EXPECT_GT(entries, 1000);
}

/// An address whose next byte can't be touched.
uint8_t* end_of_page(int protection) {
  const long page = sysconf(_SC_PAGESIZE);
  auto* const pages = static_cast<uint8_t*>(mmap(
      nullptr, 2 * page, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  EXPECT_NE(static_cast<void*>(pages), MAP_FAILED);
  mprotect(pages + page, page, protection);
  return pages + page;
}

Code find_code(const std::string& text) {
  for (const InstructionEntry* e = fp16trap_instructions; e->code; ++e) {
    if (text == e->text) return e->code;
  }
  throw std::runtime_error("no such instruction: " + text);
}

TEST(Fp16Trap, MaskedLanesOfMemoryAreNotRead) {
  std::mt19937_64 random(6);
  MachineRegisters m = random_registers(random);
  const std::string text = "vaddph zmm5{k4}{z},zmm29,zmmword ptr [rax+0x80]";
  uint8_t* const end = end_of_page(PROT_NONE);
  fill(end - 32, 32, random);
  m.general[0] = reinterpret_cast<uint64_t>(end) - 32 - 0x80;
  m.mask[4] = 0xffff;
  const MachineRegisters before = m;
  fp16trap_run(&m, find_code(text));
  for (int i = 0; i < 32; ++i) {
    const Lane l = {0, lane(before.vector[29], i, 2), i < 16 ? lane(end - 32, i, 2) : 0, 0, i};
    const uint64_t sum = evaluate(binary<emulated::add<current>>, l, -1, before.mxcsr);
    EXPECT_EQ(lane(m.vector[5], i, 2), i < 16 ? sum : 0) << i;
  }
}

TEST(Fp16Trap, InstructionAtTheEndOfAPage) {
  std::mt19937_64 random(7);
  const Code code = find_code("vaddph zmm1,zmm2,zmm3");
  constexpr int length = 7;  // with the return
  uint8_t* const copy = end_of_page(PROT_NONE) - length;
  std::memcpy(copy, reinterpret_cast<const void*>(code), length);
  MachineRegisters want = random_registers(random), got = want;
  fp16trap_run(&want, code);
  fp16trap_run(&got, reinterpret_cast<Code>(copy));
  EXPECT_EQ(std::memcmp(&want, &got, sizeof want), 0);
}

/// A component of the state that the processor knows to be all zeros has no copy in the signal's
/// frame.
TEST(Fp16Trap, RegistersInTheirInitialState) {
  alignas(64) static uint8_t nothing[4096];  // an XSAVE area whose components are all absent
  alignas(64) uint16_t from[32], merged[32], masked[32];
  for (int i = 0; i < 32; ++i) from[i] = static_cast<uint16_t>(0x3c00 + i);
  uint64_t mask;
  // Restores masks and upper registers to their initial state, then computes 0 + from.
  asm volatile(
      "xrstor %[nothing]\n\t"
      "vaddph %[from], %%zmm18, %%zmm17\n\t"
      "vmovdqu64 %%zmm17, %[merged]\n\t"
      "vmovdqu64 %%zmm19, %[masked]\n\t"
      "vcmpph $0, %%zmm17, %%zmm17, %%k3\n\t"
      "kmovq %%k3, %[mask]\n\t"
      : [merged] "=m"(merged), [masked] "=m"(masked), [mask] "=r"(mask)
      : [nothing] "m"(nothing), [from] "m"(from), "a"(0xe0), "d"(0)
      : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10",
        "xmm11", "xmm12", "xmm13", "xmm14", "xmm15", "xmm16", "xmm17", "xmm18", "xmm19", "xmm20",
        "xmm21", "xmm22", "xmm23", "xmm24", "xmm25", "xmm26", "xmm27", "xmm28", "xmm29", "xmm30",
        "xmm31", "k1", "k2", "k3", "k4", "k5", "k6", "k7", "memory");
  EXPECT_EQ(std::memcmp(merged, from, sizeof from), 0);
  EXPECT_EQ(mask, 0xffffffff);
  for (uint16_t lane : masked) EXPECT_EQ(lane, 0);
}

TEST(Fp16TrapDeathTest, OtherInstructionsEndTheProgram) {
  EXPECT_EXIT(asm volatile("ud2"), testing::KilledBySignal(SIGILL),
              "not a half instruction: 0f 0b");
  // The float rounding instruction's encoding with the prefix of the half one, and W set.
  EXPECT_EXIT(asm volatile(".byte 0x62, 0xf3, 0xfc, 0x48, 0x08, 0xca, 0x03"),
              testing::KilledBySignal(SIGILL), "not a half instruction: 62 f3 fc 48 08 ca 03");
}

/// Runs the program made for AVX512-FP16; what waitpid says.
int run_program(bool preload) {
  std::vector<std::string> variables;
  for (char** e = environ; *e; ++e) {
    if (std::string(*e).rfind("LD_PRELOAD=", 0) != 0) variables.push_back(*e);
  }
  if (preload) variables.push_back("LD_PRELOAD=" FP16TRAP_LIBRARY);
  std::vector<char*> environment;
  for (auto& v : variables) environment.push_back(v.data());
  environment.push_back(nullptr);
  std::string name = FP16TRAP_PROGRAM;
  char* arguments[] = {name.data(), nullptr};
  pid_t child;
  EXPECT_EQ(posix_spawn(&child, name.c_str(), nullptr, nullptr, arguments, environment.data()), 0);
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

TEST(Fp16Trap, PreloadedIntoAProgram) {
  const int status = run_program(true);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  if (!__builtin_cpu_supports("avx512fp16")) {
    const int without = run_program(false);
    EXPECT_TRUE(WIFSIGNALED(without) && WTERMSIG(without) == SIGILL) << without;
  }
}

}  // namespace
