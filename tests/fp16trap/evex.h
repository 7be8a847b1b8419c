// Decoder of EVEX-encoded instructions, as far as half arithmetic needs it.
#pragma once

#include <cstdint>
#include <optional>

namespace fp16trap {

/// The opcode maps that hold half instructions.
enum Map : uint8_t { map_3a = 3, map_5 = 5, map_6 = 6 };

/// The mandatory prefix in the encoding of the pp field.
enum Prefix : uint8_t { np = 0, p66 = 1, pf3 = 2, pf2 = 3 };

/// A memory operand before its base and index are known.
struct Address {
  static constexpr int none = -1;
  int base = none;
  int index = none;
  int scale = 1;
  int32_t displacement = 0;
  bool compressed = false;  // the displacement counts units of the operand's size
  bool from_next_instruction = false;
};

struct Evex {
  uint8_t map;
  uint8_t prefix;
  bool w;
  uint8_t opcode;
  uint8_t write_mask;  // the number of the mask register, 0: none
  bool zeroing;
  bool b;                 // broadcast from memory; embedded rounding or SAE for registers
  uint8_t vector_length;  // 0, 1, 2: 128, 256, 512 bits; the rounding mode where b rounds
  uint8_t reg;            // the operand in ModRM.reg
  uint8_t vvvv;           // the operand in EVEX.vvvv
  bool memory;            // whether ModRM.rm is a memory operand:
  Address address;        //   where it is,
  uint8_t rm;             //   else the number of the vector register;
  uint8_t rm_general;     //   or that of the general register
  uint8_t immediate;      // of map 3A
  uint8_t length;         // in bytes
};

/// Reads an instruction at `code`; nothing if it is no EVEX instruction of the three maps or needs
/// a segment or address size prefix. Reads no byte behind the instruction.
std::optional<Evex> decode(const uint8_t* code);

}  // namespace fp16trap
