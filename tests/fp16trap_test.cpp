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
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/half_model.h"

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

namespace model = zorp::test::half_model;
using model::Lane;
using zorp::Rounding;
using zorp::rz;

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

// ---- The model: what an instruction computes

enum class Shape { packed, scalar, packed_test, scalar_test };

/// `operands` names, by digits, which of destination (1), first (2) and second source (3) the
/// operation takes in turn; odd lanes may have an operation of their own.
struct Semantics {
  Shape shape;
  int source_bytes, result_bytes;
  std::string operands;
  model::Operation even, odd;
};

/// (a + bi)(c + di) with its roundings in the order of the instruction; with `conjugate`
/// (a + bi)(c - di). `adds` adds the destination's former value.
template <bool adds, bool conjugate>
uint64_t complex(const Lane& l) {
  const uint64_t a = l.a & 0xffff, b = l.a >> 16, c = l.b & 0xffff, d = l.b >> 16;
  const auto apply = [&l](model::Operation f, uint64_t x, uint64_t y, uint64_t z) {
    return f({x, y, z, l.mode});
  };
  const uint64_t real = apply(adds ? model::fma : model::mul, a, c, l.c & 0xffff);
  const uint64_t imaginary = apply(adds ? model::fma : model::mul, b, c, l.c >> 16);
  return apply(conjugate ? model::fnma : model::fma, a, d, imaginary) << 16 |
         apply(conjugate ? model::fma : model::fnma, b, d, real);
}

uint64_t reciprocal(const Lane& l) {
  const __m128 x = _mm_set_ss(float(model::number(model::Half(l.a))));
  return model::narrowed_estimate(l, _mm_cvtss_f32(_mm_rcp14_ss(x, x)));
}
uint64_t reciprocal_root(const Lane& l) {
  const __m128 x = _mm_set_ss(float(model::number(model::Half(l.a))));
  return model::narrowed_estimate(l, _mm_cvtss_f32(_mm_rsqrt14_ss(x, x)));
}

uint64_t truncate(model::Operation f, Lane l) {
  l.mode = rz;
  return f(l);
}

std::map<std::string, Semantics> make_instructions() {
  std::map<std::string, Semantics> all;
  const auto add = [&all](const std::string& name, Shape shape, int source_bytes, int result_bytes,
                          const std::string& operands, model::Operation even,
                          model::Operation odd = nullptr) {
    all[name] = {shape, source_bytes, result_bytes, operands, even, odd ? odd : even};
  };
  struct Row {
    const char *name, *operands;
    model::Operation operation;
    int bytes = 2;
  };
  // Packed and scalar.
  constexpr Row both[] = {{"vadd", "23", model::add},
                          {"vsub", "23", model::sub},
                          {"vmul", "23", model::mul},
                          {"vdiv", "23", model::div},
                          {"vscalef", "23", model::scale},
                          {"vmin", "23", model::min},
                          {"vmax", "23", model::max},
                          {"vsqrt", "3", model::sqrt},
                          {"vgetexp", "3", model::exponent},
                          {"vrcp", "3", reciprocal},
                          {"vrsqrt", "3", reciprocal_root},
                          {"vrndscale", "3", model::round_scale},
                          {"vreduce", "3", model::reduce},
                          {"vgetmant", "3", model::significand},
                          {"vfmulc", "231", complex<false, false>, 4},
                          {"vfcmulc", "231", complex<false, true>, 4},
                          {"vfmaddc", "231", complex<true, false>, 4},
                          {"vfcmaddc", "231", complex<true, true>, 4}};
  for (const auto& [name, operands, operation, bytes] : both) {
    add(std::string(name) + "ph", Shape::packed, bytes, bytes, operands, operation);
    add(std::string(name) + "sh", Shape::scalar, bytes, bytes, operands, operation);
  }
  // The digits name factors and addend. Of two NaN factors the one that the encoding names first
  // passes: for 213 the middle operand.
  constexpr Row fused[] = {{"vfmadd", "", model::fma},
                           {"vfmsub", "", model::fms},
                           {"vfnmadd", "", model::fnma},
                           {"vfnmsub", "", model::fnms}};
  for (const std::string digits : {"132", "213", "231"}) {
    for (const auto& [name, operands, operation, bytes] : fused) {
      add(name + digits + "ph", Shape::packed, 2, 2, digits, operation);
      add(name + digits + "sh", Shape::scalar, 2, 2, digits, operation);
    }
    add("vfmaddsub" + digits + "ph", Shape::packed, 2, 2, digits, model::fms, model::fma);
    add("vfmsubadd" + digits + "ph", Shape::packed, 2, 2, digits, model::fma, model::fms);
  }
  add("vcmpph", Shape::packed_test, 2, 2, "23", model::compare);
  add("vcmpsh", Shape::scalar_test, 2, 2, "23", model::compare);
  add("vfpclassph", Shape::packed_test, 2, 2, "3", model::classify);
  add("vfpclasssh", Shape::scalar_test, 2, 2, "3", model::classify);
  add("vcvtph2psx", Shape::packed, 2, 4, "3", model::to_float);
  add("vcvtph2pd", Shape::packed, 2, 8, "3", model::to_double);
  add("vcvtps2phx", Shape::packed, 4, 2, "3", model::from_float);
  add("vcvtpd2ph", Shape::packed, 8, 2, "3", model::from_double);
  add("vcvtsh2ss", Shape::scalar, 2, 4, "3", model::to_float);
  add("vcvtsh2sd", Shape::scalar, 2, 8, "3", model::to_double);
  add("vcvtss2sh", Shape::scalar, 4, 2, "3", model::from_float);
  add("vcvtsd2sh", Shape::scalar, 8, 2, "3", model::from_double);
  // Integers of 16, 32, 64 bits.
  const auto add_integer = [&add]<class I>(const std::string& name, I) {
    constexpr int bytes = sizeof(I);
    add("vcvtph2" + name, Shape::packed, 2, bytes, "3", model::to_integer<I>);
    add("vcvttph2" + name, Shape::packed, 2, bytes, "3",
        [](const Lane& l) { return truncate(model::to_integer<I>, l); });
    add("vcvt" + name + "2ph", Shape::packed, bytes, 2, "3", model::from_integer<I>);
  };
  add_integer("w", int16_t());
  add_integer("uw", uint16_t());
  add_integer("dq", int32_t());
  add_integer("udq", uint32_t());
  add_integer("qq", int64_t());
  add_integer("uqq", uint64_t());
  return all;
}

const std::map<std::string, Semantics>& instructions() {
  static const auto instance = make_instructions();
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

/// What decides a lane's result beside its operands.
Lane lane_under(const Parsed& p, const MachineRegisters& m) {
  Lane l = {};
  l.mode = Rounding(p.rounding >= 0 ? p.rounding : m.mxcsr >> 13 & 3);
  l.flushes = m.mxcsr & 0x40;
  if (p.operands.back().kind == Operand::immediate) l.immediate = p.operands.back().value;
  return l;
}

/// Writes a vector register and zeroes it above `bytes`.
void write_vector(MachineRegisters& m, int number, const uint8_t* value, int bytes) {
  uint8_t copy[64] = {};
  std::memcpy(copy, value, bytes);
  std::memcpy(m.vector[number], copy, 64);
}

void model_lanes(const Parsed& p, const Semantics& s, MachineRegisters& m) {
  std::vector<Operand> operands = p.operands;
  if (operands.back().kind == Operand::immediate) operands.pop_back();
  const Operand& to = operands.front();
  const Operand& second_operand = operands.back();
  const bool test = s.shape == Shape::packed_test || s.shape == Shape::scalar_test;
  const bool scalar = s.shape == Shape::scalar || s.shape == Shape::scalar_test;
  const uint8_t* const second_bytes = bytes_of(second_operand, m);
  const uint8_t* const first_bytes = operands.size() > 2 ? bytes_of(operands[1], m) : nullptr;
  int count = 1;
  if (!scalar) {
    count =
        second_operand.broadcast ? second_operand.broadcast : second_operand.bytes / s.source_bytes;
    if (!test) count = std::min(count, to.bytes / s.result_bytes);
  }
  const uint64_t mask = to.write_mask ? m.mask[to.write_mask] : ~uint64_t{0};

  uint8_t result[64] = {};
  uint64_t test_result = 0;
  for (int i = 0; i < count; ++i) {
    const bool active = mask >> i & 1;
    const uint64_t old = test ? 0 : lane(m.vector[to.number], i, s.result_bytes);
    const uint64_t first = first_bytes ? lane(first_bytes, i, s.source_bytes) : 0;
    const uint64_t second = lane(second_bytes, second_operand.broadcast ? 0 : i, s.source_bytes);
    Lane l = lane_under(p, m);
    uint64_t Lane::*place[] = {&Lane::a, &Lane::b, &Lane::c};
    for (size_t k = 0; k < s.operands.size(); ++k)
      l.*place[k] = std::array{old, first, second}[s.operands[k] - '1'];
    const uint64_t value = (i % 2 ? s.odd : s.even)(l);
    if (test) {
      test_result |= uint64_t{active && value} << i;
    } else {
      set_lane(result, i, s.result_bytes, active ? value : to.zeroing ? 0 : old);
    }
  }
  if (test) {
    m.mask[to.number] = test_result;
  } else if (scalar) {
    const bool fused = p.mnemonic.starts_with("vf") && s.result_bytes == 2;
    const uint8_t* const rest = fused ? bytes_of(to, m) : first_bytes;
    std::memcpy(result + s.result_bytes, rest + s.result_bytes, 16 - s.result_bytes);
    write_vector(m, to.number, result, 16);
  } else {
    write_vector(m, to.number, result, count * s.result_bytes);
  }
}

void model_order(const Parsed& p, MachineRegisters& m) {
  Lane l = {lane(bytes_of(p.operands[0], m), 0, 2), lane(bytes_of(p.operands[1], m), 0, 2)};
  constexpr uint64_t all = 0x8d5;
  uint64_t flags = 0;
  for (const auto& [predicate, set] :
       {std::pair(_CMP_UNORD_Q, 0x45), {_CMP_LT_OQ, 0x01}, {_CMP_EQ_OQ, 0x40}}) {
    l.immediate = predicate;
    if (model::compare(l)) flags = set;
  }
  m.flags = (m.flags & ~all) | flags;
}

/// vcvt[t]sh2[u]si; the packed conversion of the same element types computes the lane.
void model_to_general(const Parsed& p, MachineRegisters& m) {
  const Operand& to = p.operands[0];
  const bool truncating = p.mnemonic.starts_with("vcvtt"), wide = to.bytes == 8;
  const bool is_unsigned = p.mnemonic.ends_with("usi");
  const std::string packed = std::string(truncating ? "vcvttph2" : "vcvtph2") +
                             (is_unsigned ? "u" : "") + (wide ? "qq" : "dq");
  Lane l = lane_under(p, m);
  l.a = lane(bytes_of(p.operands[1], m), 0, 2);
  m.general[to.number] = instructions().at(packed).even(l);
}

void model_from_general(const Parsed& p, MachineRegisters& m) {
  const Operand& from = p.operands[2];
  const std::string packed = std::string("vcvt") + (p.mnemonic == "vcvtusi2sh" ? "u" : "") +
                             (from.bytes == 8 ? "qq" : "dq") + "2ph";
  Lane l = lane_under(p, m);
  l.a = lane(bytes_of(from, m), 0, from.bytes);
  uint8_t result[16];
  std::memcpy(result, bytes_of(p.operands[1], m), 16);
  set_lane(result, 0, 2, instructions().at(packed).even(l));
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
  model_lanes(p, instructions().at(p.mnemonic), m);
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
    const uint64_t addend = i < 16 ? lane(end - 32, i, 2) : 0;
    const Rounding mode = Rounding(before.mxcsr >> 13 & 3);
    const uint64_t sum = model::add({lane(before.vector[29], i, 2), addend, 0, mode});
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
