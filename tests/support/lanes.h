// Lanes as bit patterns, and vectors of them as they stand in registers and in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "export/grammar.h"

namespace zorp::test {

using grammar::Element;
using grammar::Lane;

using Bits = std::uint64_t;

/// The special encodings of a floating-point format.
struct Format {
  int mantissa_bits, exponent_bits;

  constexpr Bits sign() const { return Bits{1} << (mantissa_bits + exponent_bits); }
  constexpr Bits infinity() const { return ((Bits{1} << exponent_bits) - 1) << mantissa_bits; }
  constexpr Bits quiet_bit() const { return Bits{1} << (mantissa_bits - 1); }
  constexpr Bits quiet_nan() const { return infinity() | quiet_bit(); }
  constexpr Bits signalling_nan() const { return infinity() | 1; }
  constexpr Bits one() const { return infinity() >> 1 & ~(min_normal() - 1); }
  constexpr Bits max_finite() const { return infinity() - 1; }
  constexpr Bits min_normal() const { return Bits{1} << mantissa_bits; }
  constexpr Bits min_subnormal() const { return 1; }

  constexpr Bits magnitude(Bits x) const { return x & (sign() - 1); }
  constexpr bool is_nan(Bits x) const { return magnitude(x) > infinity(); }
  constexpr bool is_quiet_nan(Bits x) const { return magnitude(x) >= quiet_nan(); }
  constexpr bool is_finite(Bits x) const { return magnitude(x) < infinity(); }
};

constexpr Format kFormats[] = {{52, 11}, {23, 8}, {10, 5}};  // by Element

constexpr const Format& format(Element element) { return kFormats[int(element)]; }

constexpr Lane lane_of(Element element) { return Lane(int(element)); }
constexpr bool is_float(Lane lane) { return int(lane) <= int(Lane::f16); }
constexpr const Format& format(Lane lane) { return kFormats[int(lane)]; }

/// The value of a lane of a floating-point type.
double value(Element element, Bits bits);
/// The value rounded to nearest.
Bits encode(Element element, double value);
/// The neighbour in the direction of plus or minus infinity.
Bits next_up(Element element, Bits bits);
Bits next_down(Element element, Bits bits);

/// Up to 32 lanes: one or two full registers.
struct alignas(64) Vector {
  std::array<std::byte, 128> bytes{};

  Bits get(int lane_bytes, int index) const {
    Bits bits = 0;
    std::memcpy(&bits, &bytes[index * lane_bytes], lane_bytes);
    return bits;
  }
  void set(int lane_bytes, int index, Bits bits) {
    std::memcpy(&bytes[index * lane_bytes], &bits, lane_bytes);
  }
};

}  // namespace zorp::test
