// Numbers in two parts, for the rare routines: in double arithmetic in which every operation rounds
// by itself.
#pragma once

#include "frame/scalar.h"

namespace zorp {

struct Pair {
  double high, low;
};

/// The upper half of v's significand.
inline double split(double v) {
  const double shifted = v * 0x1.0000002p27;  // 2^27 + 1
  return shifted - (shifted - v);
}

/// p + q and what its rounding leaves.
inline Pair sum(double p, double q) {
  const double s = p + q;
  const double g = p - s;
  return {s, (q + g) + (p - (s + g))};
}

/// 1 / (high + low), high being a short number.
inline Pair reciprocal(double high, double low) {
  const double r = split(1 / high);
  const double e = (1 - high * r) - low * r;
  return {r, (1 + e) * e * r};
}

/// a b, not normalised: the upper parts are short, their product is exact.
inline Pair product(const Pair& a, const Pair& b) {
  return {a.high * b.high, a.low * b.high + (b.low * a.high + a.low * b.low)};
}

inline constexpr double inv_pi = from_bits(uint64_t{0x3FD45F306DC9C883});
/// 1/pi with an upper part of 26 bits.
inline constexpr Pair inv_pi_pair = {from_bits(uint64_t{0x3FD45F3070000000}),
                                     from_bits(uint64_t{0xBE21B1BBEAD603D9})};

/// (high + low) / pi, by a pair for 1/pi or a multiple of it.
inline double over_pi(double high, double low, const Pair& by = inv_pi_pair) {
  const double h = split(high);
  const double l = low + (high - h);
  return h * by.high + (l * by.high + (h * by.low + l * by.low));
}

}  // namespace zorp
