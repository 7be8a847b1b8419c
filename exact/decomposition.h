// frexp, ldexp, ilogb, logb, modf, fract, nextafter: taking numbers apart, and the next number.
// Kernels: __zorp_z1_{frexp,ldexp,ilogb,logb,modf,fract,nextafter}{,f,s}{1,2,3,4,8,16,32}.
//
// All results are exact; ldexp rounds once where it underflows. The fast paths are a few operations
// that are right for ordinary numbers; infinities, NaNs and in most families zeros go to the rare
// routines.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

template <class T>
struct FractBlock {
  Row<T> below_one;
};
template <class Integer>
struct NextafterBlock {
  Row<Integer> plus_one, minus_one;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const FractBlock<double> __zorp_dfract_data;
extern const FractBlock<float> __zorp_sfract_data;
extern const FractBlock<half> __zorp_hfract_data;
extern const NextafterBlock<int64_t> __zorp_dnextafter_data;
extern const NextafterBlock<int32_t> __zorp_snextafter_data;
extern const NextafterBlock<int16_t> __zorp_hnextafter_data;
}
#pragma GCC visibility pop

// ---- frexp, ilogb, logb ------------------------------------------------------------------------

// The processor's exponent and significand operations normalise subnormals. Where MXCSR has these
// read as zeros, the classes see zeros as well, and the rare routines, which go by the bits, serve
// them.

struct Frexp {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    constexpr int from_half_to_one = 2;
    const auto one = constant<Vec<int32_t, N>>(1);
    return Outcome<Vec<T, N>, Vec<int32_t, N>>{significand<from_half_to_one>(x),
                                               to_int32(exponent(x)) + one,
                                               classify<zeros | infinities | nans>(x)};
  }
};

struct Ilogb {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    return Outcome<Vec<int32_t, N>>{to_int32(exponent(x)), classify<zeros | infinities | nans>(x)};
  }
};

struct Logb {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    return Outcome<Vec<T, N>>{exponent(x), classify<zeros | infinities | nans>(x)};
  }
};

// ---- ldexp -------------------------------------------------------------------------------------

/// A large n is rounded on its way to float, where it saturates the result anyway.
struct Ldexp {
  template <class T>
  static constexpr uint64_t filler() {
    if constexpr (same<T, double>) return 0x3FF0000000000000;
    if constexpr (same<T, float>) return 0x3F800000;
    if constexpr (same<T, half>) return 0x3C00;
    return 1;
  }
  template <Tier, int N>
  static Vec<double, N> apply(Vec<double, N> x, Vec<int32_t, N> n) {
    return scale(x, to_double(n));
  }
  template <Tier, int N>
  static Vec<float, N> apply(Vec<float, N> x, Vec<int32_t, N> n) {
    return scale(x, to_float(n));
  }
  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x, Vec<int32_t, N> n) {
    return narrow(scale(widen(x), to_float(n)));
  }
};

// ---- modf, fract -------------------------------------------------------------------------------

struct Modf {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    const auto integral = round_scale<_MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC>(x);
    // The difference is exact, and +0 where x is integral: it takes the sign of x.
    const auto fraction = merge_bits(sign_mask<Vec<T, N>>(), x, x - integral);
    return Outcome<Vec<T, N>, Vec<T, N>>{fraction, integral, classify<infinities | nans>(x)};
  }
};

struct Fract {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x) {
    const auto& k = rows(block_of<T>(__zorp_dfract_data, __zorp_sfract_data, __zorp_hfract_data));
    const auto floor = round_scale<_MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC>(x);
    // For a tiny negative x the difference rounds to 1.
    const auto fraction = min(x - floor, k.below_one);
    return Outcome<Vec<T, N>, Vec<T, N>>{fraction, floor, classify<zeros | infinities | nans>(x)};
  }
};

// ---- nextafter ---------------------------------------------------------------------------------

/// Among numbers of one sign the encodings are in the order of magnitudes: the step from x toward
/// y is the sign of their difference, which doesn't overflow. Toward a y of the other sign the step
/// is -1. Zeros and what isn't finite are the exceptions.
struct Nextafter {
  template <Tier, class T, int N>
  static auto apply(Vec<T, N> x, Vec<T, N> y) {
    const auto& k =
        rows(block_of<T>(__zorp_dnextafter_data, __zorp_snextafter_data, __zorp_hnextafter_data));
    const auto from = bits(x), to = bits(y);
    const auto opposite = shift_right_signed<8 * sizeof(T) - 1>(from ^ to);  // all ones or zero
    const auto step = max(min((to - from) | opposite, k.plus_one), k.minus_one);
    return Outcome<Vec<T, N>>{
        from_bits<T>(from + step),
        classify<zeros | infinities | nans>(x) | classify<zeros | infinities | nans>(y)};
  }
};

}  // namespace zorp
