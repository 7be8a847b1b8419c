// e^a of a single large operand, for rare routines: in double arithmetic in which every operation
// rounds by itself.
#pragma once

#include "frame/scalar.h"

namespace zorp {

/// a = (k + j/64) ln 2 + r for a from about 86 to 711, and p, a polynomial for e^r - 1.
struct ScalarExpReduction {
  int k, j;
  double p;

  explicit ScalarExpReduction(double a) {
    constexpr double shifter = 0x1.8p52;  // the low bits of t's encoding are 64 k + j
    const double t = a * from_bits(uint64_t{0x40571547652B82FE}) + shifter;
    const double n = t - shifter;
    const double r = (n * from_bits(uint64_t{0xBF862E42FEFA0000}) + a) +
                     n * from_bits(uint64_t{0xBD1CF79ABC9E3B3A});
    // e^r - 1 = r + 1/2 r^2 + c3 r^3 + ... + c6 r^6 on |r| <= ln 2 / 128: relative error 2^-61.7
    constexpr double c3 = from_bits(uint64_t{0x3FC55555555548F8}),
                     c4 = from_bits(uint64_t{0x3FA5555555558FCC}),
                     c5 = from_bits(uint64_t{0x3F8111123AAF20D3}),
                     c6 = from_bits(uint64_t{0x3F56C16A1C2A3FFD});
    p = ((((c6 * r + c5) * r + c4) * r + c3) * r + 0.5) * r * r + r;
    const uint32_t steps = static_cast<uint32_t>(bits(t));
    j = steps & 63;
    k = static_cast<int>(steps >> 6);
  }
};

/// v x 2^k with one rounding, k from 0 to 1024: 2^1024 has no encoding.
inline double times_power_of_two(double v, int k) {
  if (k == 1024) return v * 0x1p1023 + v * 0x1p1023;
  return v * from_bits(static_cast<uint64_t>(k + 1023) << 52);
}

}  // namespace zorp
