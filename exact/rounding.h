// ceil, floor, trunc, rint, nearbyint, round: rounding to an integral value.
// Kernels: __zorp_z1_{ceil,floor,trunc,rint,nearbyint,round}{,f,s}{1,2,3,4,8,16,32}.
//
// All but round are one operation of the processor. The result keeps the operand's sign, also where
// it is zero; infinities pass, NaNs come out quiet.
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

template <class T>
struct RoundBlock {
  Row<T> sign, half, one;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const RoundBlock<double> __zorp_dround_data;
extern const RoundBlock<float> __zorp_sround_data;
extern const RoundBlock<float> __zorp_hround_data;
}
#pragma GCC visibility pop

// ---- Roundings that the processor knows --------------------------------------------------------

struct Ceil {
  template <Tier, class V>
  static V apply(V x) {
    return round_scale<0x2>(x);
  }
};

struct Floor {
  template <Tier, class V>
  static V apply(V x) {
    return round_scale<0x1>(x);
  }
};

struct Trunc {
  template <Tier, class V>
  static V apply(V x) {
    return round_scale<0x3>(x);
  }
};

/// In the caller's rounding mode.
struct Rint {
  template <Tier, class V>
  static V apply(V x) {
    return round_scale<0x4>(x);
  }
};

/// In the caller's rounding mode, without the inexact flag.
struct Nearbyint {
  template <Tier, class V>
  static V apply(V x) {
    return round_scale<0xC>(x);
  }
};

// ---- round: ties away from zero ----------------------------------------------------------------

struct Round {
  template <Tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    return ties_away(x, rows(__zorp_dround_data));
  }
  template <Tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    return ties_away(x, rows(__zorp_sround_data));
  }
  /// The integral value of a half is a half again: narrowing is exact.
  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    return narrow<rn>(ties_away(widen(x), rows(__zorp_hround_data)));
  }

 private:
  /// |x| to nearest even. The difference from it is exact, and 1/2 only at a tie that went down.
  template <class V, class Block>
  static V ties_away(V x, const Block& k) {
    const V sign = x & k.sign;
    const V a = x ^ sign;
    const V n = round_scale<0x0>(a);
    const auto went_down = compare<_CMP_EQ_OQ>(a - n, k.half);
    return add_where(went_down, n, k.one) | sign;
  }
};

}  // namespace zorp
