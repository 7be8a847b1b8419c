// fmax, fmin, maxmag, minmag, fdim, copysign, fabs, nan: choosing between operands, and signs.
// Kernels: __zorp_z1_{fmax,fmin,maxmag,minmag,fdim,copysign,fabs,nan}{,f,s}{1,2,3,4,8,16,32}.
//
// Where two operands meet, lanes with a NaN or an infinity go to the rare routines, which give the
// operand that is a number if there is one (fdim: the NaN).
#pragma once

#include "frame/kernel.h"

namespace zorp {

// ---- fmax, fmin --------------------------------------------------------------------------------

template <class V>
inline Mask<V::lanes> either_not_finite(V x, V y) {
  return classify<infinities | nans>(x) | classify<infinities | nans>(y);
}

/// Of equal operands, zeros of either sign too, y.
struct Fmax {
  template <Tier, class V>
  static Outcome<V> apply(V x, V y) {
    return {max(x, y), either_not_finite(x, y)};
  }
};
struct Fmin {
  template <Tier, class V>
  static Outcome<V> apply(V x, V y) {
    return {min(x, y), either_not_finite(x, y)};
  }
};

// ---- maxmag, minmag ----------------------------------------------------------------------------

/// Magnitudes compare as their encodings. Where they are equal, the positive operand wins, for
/// minmag the negative one, and of two zeros x.
struct Maxmag {
  template <Tier, class V>
  static Outcome<V> apply(V x, V y) {
    const auto a = bits(magnitude(x)), b = bits(magnitude(y));
    const auto larger = select(greater(a, b), x, y);
    return {select(equal(a, b), max(y, x), larger), either_not_finite(x, y)};
  }
};
struct Minmag {
  template <Tier, class V>
  static Outcome<V> apply(V x, V y) {
    const auto a = bits(magnitude(x)), b = bits(magnitude(y));
    const auto smaller = select(greater(b, a), x, y);
    return {select(equal(a, b), min(y, x), smaller), either_not_finite(x, y)};
  }
};

// ---- fdim --------------------------------------------------------------------------------------

struct Fdim {
  template <Tier, class V>
  static Outcome<V> apply(V x, V y) {
    return {select(compare<_CMP_LT_OQ>(y, x), x - y, constant<V>(0)), either_not_finite(x, y)};
  }
};

// ---- copysign, fabs, nan -----------------------------------------------------------------------

struct Copysign {
  template <Tier, class V>
  static V apply(V x, V y) {
    return merge_bits(sign_mask<V>(), y, x);
  }
};

/// In half a signalling NaN comes back quiet: adding zero changes nothing else.
struct Fabs {
  template <Tier, class T, int N>
  static Vec<T, N> apply(Vec<T, N> x) {
    if constexpr (same<T, half>)
      return magnitude(x) + constant<Vec<T, N>>(0);
    else
      return magnitude(x);
  }
};

/// The quiet NaN of that sign and payload. In half all upper fraction bits are set.
struct Nan {
  template <class Integer>
  static constexpr uint64_t filler() {
    if constexpr (sizeof(Integer) == 8) return 0x7FF8000000000000;
    if constexpr (sizeof(Integer) == 4) return 0x7FC00000;
    return 0x7FC0;
  }
  template <Tier, int N>
  static Vec<double, N> apply(Vec<int64_t, N> payload) {
    return quiet_nan<double>(payload);
  }
  template <Tier, int N>
  static Vec<float, N> apply(Vec<int32_t, N> payload) {
    return quiet_nan<float>(payload);
  }
  template <Tier, int N>
  static Vec<half, N> apply(Vec<int16_t, N> payload) {
    return quiet_nan<half>(payload);
  }

 private:
  template <class T, class Integer, int N>
  static Vec<T, N> quiet_nan(Vec<Integer, N> payload) {
    return from_bits<T>(payload | constant<Vec<Integer, N>>(filler<Integer>()));
  }
};

}  // namespace zorp
