// Scalar helpers of rare routines, which compute in ordinary C++ arithmetic.
#pragma once

#include <stdint.h>

#include "frame/row.h"

namespace zorp {

constexpr double from_bits(uint64_t pattern) { return __builtin_bit_cast(double, pattern); }
constexpr float from_bits(uint32_t pattern) { return __builtin_bit_cast(float, pattern); }
constexpr uint64_t bits(double v) { return __builtin_bit_cast(uint64_t, v); }
constexpr uint32_t bits(float v) { return __builtin_bit_cast(uint32_t, v); }

inline constexpr double infinity = from_bits(uint64_t{0x7FF0000000000000});

inline double magnitude(double v) { return from_bits(bits(v) & 0x7FFFFFFFFFFFFFFF); }
inline double with_sign_of(double v, double sign) {
  return from_bits(bits(v) | (bits(sign) & 0x8000000000000000));
}
inline bool is_finite(double v) { return magnitude(v) < infinity; }

}  // namespace zorp
