#include "evex.h"

#include <cstring>

namespace fp16trap {
namespace {

/// A field of one bit that is stored inverted, moved to the given place.
constexpr uint8_t inverted(uint8_t byte, int bit, int place) {
  return static_cast<uint8_t>((~byte >> bit & 1) << place);
}

/// Takes bytes in turn.
class Reader {
 public:
  explicit Reader(const uint8_t* code) : begin_(code), next_(code) {}
  uint8_t byte() { return *next_++; }
  int32_t displacement8() { return static_cast<int8_t>(byte()); }
  int32_t displacement32() {
    int32_t value;
    std::memcpy(&value, next_, sizeof value);
    next_ += sizeof value;
    return value;
  }
  uint8_t length() const { return static_cast<uint8_t>(next_ - begin_); }

 private:
  const uint8_t* begin_;
  const uint8_t* next_;
};

/// Reads what follows a ModRM byte that names memory. `x` and `b` extend index and base.
Address read_address(Reader& reader, uint8_t modrm, uint8_t x, uint8_t b) {
  const int mod = modrm >> 6, rm = modrm & 7;
  constexpr int sib_follows = 4, no_base = 5, no_index = 4;
  Address address;
  int base = rm;
  if (rm == sib_follows) {
    const uint8_t sib = reader.byte();
    const int index = (sib >> 3 & 7) | x;
    if (index != no_index) address.index = index;
    address.scale = 1 << (sib >> 6);
    base = sib & 7;
  }
  if (mod == 0 && base == no_base) {
    address.from_next_instruction = rm == no_base;
    address.displacement = reader.displacement32();
    return address;
  }
  address.base = base | b;
  if (mod == 1) {
    address.compressed = true;
    address.displacement = reader.displacement8();
  } else if (mod == 2) {
    address.displacement = reader.displacement32();
  }
  return address;
}

}  // namespace

std::optional<Evex> decode(const uint8_t* code) {
  Reader reader(code);
  if (reader.byte() != 0x62) return {};
  const uint8_t p0 = reader.byte();
  const uint8_t map = p0 & 7;
  if ((p0 & 8) || (map != map_3a && map != map_5 && map != map_6)) return {};
  const uint8_t p1 = reader.byte();
  if (!(p1 & 4)) return {};
  const uint8_t p2 = reader.byte();

  Evex i = {};
  i.map = map;
  i.prefix = p1 & 3;
  i.w = p1 >> 7;
  i.write_mask = p2 & 7;
  i.zeroing = p2 >> 7;
  i.b = p2 >> 4 & 1;
  i.vector_length = p2 >> 5 & 3;
  i.vvvv = static_cast<uint8_t>((~p1 >> 3 & 15) | inverted(p2, 3, 4));
  i.opcode = reader.byte();

  const uint8_t modrm = reader.byte();
  const uint8_t x = inverted(p0, 6, 3), b = inverted(p0, 5, 3);
  i.reg = static_cast<uint8_t>((modrm >> 3 & 7) | inverted(p0, 7, 3) | inverted(p0, 4, 4));
  i.memory = modrm >> 6 != 3;
  if (i.memory) {
    i.address = read_address(reader, modrm, x, b);
  } else {
    i.rm_general = (modrm & 7) | b;
    i.rm = static_cast<uint8_t>(i.rm_general | x << 1);
  }
  if (map == map_3a) i.immediate = reader.byte();
  i.length = reader.length();
  return i;
}

}  // namespace fp16trap
