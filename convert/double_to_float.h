// Double to float, with the rounding in the name and gradual underflow.
// Kernels: __zorp_z1_cvtfp64tofp32{rte,rtn,rtp,rtz}{1,2,3,4,8,16}.
//
// The directed modes convert to nearest, widen the result again, which is exact, and step by one
// unit in the last place where it fell on the wrong side of x. Encodings are ordered as magnitudes
// are, so the step works from zero to the smallest subnormal and from infinity to the largest
// number. Comparisons with NaNs are false, and no NaN is stepped.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

struct DoubleToFloatBlock {
  Row<double> double_magnitude_mask;
  Row<int32_t> float_magnitude_mask, sign_mask, sign_test_mask, zero, plus_one;
};

#pragma GCC visibility push(hidden)
extern "C" {
// One block serves the directed roundings.
extern const DoubleToFloatBlock __zorp_dcvtfp64tofp32rtz_data;
}
#pragma GCC visibility pop

template <Rounding rounding>
struct DoubleToFloat {
  template <Tier, int N>
  static Vec<float, N> apply(Vec<double, N> x) {
    const auto nearest = to_float<rn>(x);
    if constexpr (rounding == rn) {
      return nearest;
    } else {
      const auto& k = rows(__zorp_dcvtfp64tofp32rtz_data);
      const auto encoding = bits(nearest);
      const auto back = to_double(nearest);
      if constexpr (rounding == rz) {
        const auto too_large = compare_silently<_CMP_LT_OQ>(x & k.double_magnitude_mask,
                                                            back & k.double_magnitude_mask);
        const auto magnitude = encoding & k.float_magnitude_mask;
        const auto stepped = select(for_words(too_large), magnitude - k.plus_one, magnitude);
        return from_bits<float>(stepped | (encoding & k.sign_mask));
      } else {
        const auto wrong = rounding == rd ? compare_silently<_CMP_LT_OQ>(x, back)
                                          : compare_silently<_CMP_LT_OQ>(back, x);
        const auto negative = greater(Vec<int32_t, N>(k.zero), encoding & k.sign_test_mask);
        const auto outward = encoding + k.plus_one, inward = encoding - k.plus_one;
        const auto stepped =
            rounding == rd ? select(negative, outward, inward) : select(negative, inward, outward);
        return from_bits<float>(select(for_words(wrong), stepped, encoding));
      }
    }
  }
};

}  // namespace zorp
