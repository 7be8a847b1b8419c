// The constants of lgamma's kernels, from the polynomials of its routine.
#include "special/gamma.h"
#include "special/lgamma_ranges.h"

namespace zorp {
namespace {

constexpr double absolute(double v) { return v < 0 ? -v : v; }

/// The entries of one range, and the bound of its polynomial's error: with |u| <= largest, the sum
/// of the terms' magnitudes times 2^-47. A value is off by less than 2^-48 of that sum: u by half a
/// unit in the last place, which the derivative multiplies by 10 at most, and each of 20 operations
/// by another half.
constexpr void enter(LgammaFloatBlock& block, int index, double scale, double offset,
                     double largest, const double (&c)[11]) {
  double sum = 0;
  for (int i = 10; i >= 0; --i) {
    block.c[i].entry[index] = bits(c[i]);
    sum = sum * largest + absolute(c[i]);
  }
  block.scale.entry[index] = bits(scale);
  block.offset.entry[index] = bits(offset);
  block.error.entry[index] = bits(sum * 0x1p-47);
}

template <int n>
constexpr void enter(LgammaFloatBlock& block, int index, double offset, double largest,
                     const FloatRange<n>& range) {
  double c[11] = {from_bits(range.c)};
  for (int i = 0; i < n; ++i) {
    c[2 * i + 1] = from_bits(range.a[n - 1 - i]);
    c[2 * i + 2] = from_bits(range.b[n - 1 - i]);
  }
  enter(block, index, 1, offset, largest, c);
}

constexpr LgammaFloatBlock lgamma_block() {
  LgammaFloatBlock block{.scale = {},
                         .offset = {},
                         .error = {},
                         .c = {},
                         .one = 0x3FF0000000000000,
                         .two = 0x4000000000000000,
                         .end = 0x40C0000000000000,  // 8192
                         .exponent_1 = 1024};
  enter(block, 0, 0, 4, float_from_2);
  double scale = 0.25;
  for (int i = 0; i < 11; ++i, scale /= 2) {
    const FloatBinade& b = float_binades[i];
    const uint64_t patterns[11] = {b.d[2], b.c[3], b.c[2], b.c[7], b.c[6], b.d[1],
                                   b.d[0], b.c[5], b.c[4], b.c[1], b.c[0]};
    double c[11];
    for (int j = 0; j < 11; ++j) c[j] = from_bits(patterns[j]);
    enter(block, i + 1, scale, -1, 1, c);
  }
  enter(block, 12, 0, 2, float_from_1);
  enter(block, 13, from_bits(float_minimum), 2, float_from_1_25);
  enter(block, 14, 0, 2, float_from_1_5);
  enter(block, 15, 0, 2, float_from_1_75);
  return block;
}

}  // namespace

extern "C" {
const LgammaFloatBlock __zorp_slgamma_data = lgamma_block();
}
}  // namespace zorp
