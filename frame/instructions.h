// The processor's operations on one register, under one set of names for all element types. Every
// element type has a specialisation for full registers and one for a single lane; the vocabulary
// of algorithms (frame/vector.h) is built on them and nothing else uses intrinsics.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include "frame/element.h"

namespace zorp {

/// Operations on the register that holds N lanes of T (N = 1: the scalar forms).
template <class T, int N>
struct Instructions;

/// The constant of a row, in every lane. Broadcasts from memory run on the load ports alone, and on
/// some processors at twice the rate of loads of a full register; there, only the integer forms do.
inline __m512i broadcast_64(const void* row) {
  return _mm512_set1_epi64(*static_cast<const int64_t*>(row));
}
inline __m512i broadcast_32(const void* row) {
  return _mm512_set1_epi32(*static_cast<const int32_t*>(row));
}

/// Fields of the significand operation's immediate.
template <int imm>
inline constexpr auto mantissa_interval = static_cast<_MM_MANTISSA_NORM_ENUM>(imm & 3);
template <int imm>
inline constexpr auto mantissa_sign = static_cast<_MM_MANTISSA_SIGN_ENUM>(imm >> 2);

}  // namespace zorp
