// e^a of a single large operand, for rare routines: in double arithmetic in which every operation
// rounds by itself.
#pragma once

#include "frame/scalar.h"

namespace zorp {

/// a = (k + j/64) ln 2 + r for a from about 86 to 711, and p, a polynomial of degree 6 for e^r - 1
/// on [-ln 2 / 128, ln 2 / 128].
struct ScalarExpReduction {
  int k, j;
  double p;

  explicit ScalarExpReduction(double a) {
    constexpr double shifter = 0x1.8p52;  // the low bits of t's encoding are 64 k + j
    const double t = a * from_bits(uint64_t{0x40571547652B82FE}) + shifter;
    const double n = t - shifter;
    const double r = (n * from_bits(uint64_t{0xBF862E42FEFA0000}) + a) +
                     n * from_bits(uint64_t{0xBD1CF79ABC9E3B3A});
    p = ((((from_bits(uint64_t{0x3F56C16A1C2A3FFD}) * r + from_bits(uint64_t{0x3F8111123AAF20D3})) *
               r +
           from_bits(uint64_t{0x3FA5555555558FCC})) *
              r +
          from_bits(uint64_t{0x3FC55555555548F8})) *
             r +
         0.5) *
            r * r +
        r;
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
