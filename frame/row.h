// Constant blocks: read-only objects of 64-byte rows. A block is defined in a translation unit of
// its own, so that kernels see addresses and never values: the compiler then loads each row where
// it is used, and all widths of a family share one copy.
#pragma once

#include <stdint.h>

#include "frame/element.h"

namespace zorp {

/// One constant, by its bit pattern, in every lane of a 64-byte row.
template <class T>
struct alignas(64) Row {
  static constexpr int lanes = 64 / sizeof(T);
  Pattern<T> lane[lanes];

  constexpr Row(uint64_t bits) {
    for (Pattern<T>& each : lane) each = static_cast<Pattern<T>>(bits);
  }
};

/// A threshold for the high word of a double, in the form that compares whole encodings: for any
/// encoding v, (v >> 32) > limit exactly if v > high_word(limit).
constexpr uint64_t high_word(uint32_t limit) { return uint64_t{limit} << 32 | 0xFFFFFFFF; }

/// A table of `entries` different elements in consecutive rows, for lookups by permutation, by
/// gather or, for a single lane, by a scalar load.
template <class T, int entries>
struct alignas(64) Table {
  Pattern<T> entry[entries];
};

/// The block at an address that the compiler can't see through: rows are then loaded at fixed
/// displacements from one base register.
template <class Block>
inline const Block& rows(const Block& block) {
  const Block* base = &block;
  asm("" : "+r"(base));
  return *base;
}

/// The block of element type T, of three that differ in that alone.
template <class T, class OfDouble, class OfFloat, class OfHalf>
constexpr const auto& block_of(const OfDouble& of_double, const OfFloat& of_float,
                               const OfHalf& of_half) {
  if constexpr (same<T, double>)
    return of_double;
  else if constexpr (same<T, float>)
    return of_float;
  else
    return of_half;
}

}  // namespace zorp

/// A further name of a block: tiers that run one algorithm share its rows.
#define ZORP_SAME_BLOCK(Block, name, block) extern const Block name __attribute__((alias(#block)))
