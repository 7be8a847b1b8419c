// sinpi, cospi: sine and cosine of pi x.
// Kernels: __zorp_z1_{sinpi,cospi}{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// The period is a whole number, so taking away the nearest integer n is exact for every x, and what
// is left, at most 1/2, is served by one odd polynomial. For the cosine it is the distance to the
// nearest zero of the cosine, half a unit from n. The lowest bit of n gives the sign. Where n
// exceeds the integers of the lane it is even, and the conversion's result for such numbers, too.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks: sin(pi t) = t (c0 + c1 t^2 + ...) ----------------------------------------

struct SinpiDoubleBlock {
  Row<double> one_half, c0, c1, c2, c3, c4, c5, c6, c7, c8;
};
struct SinpiDoubleShortBlock {
  Row<double> one_half, c0, c1, c2, c3, c4, c5;
};
struct SinpiFloatBlock {
  Row<float> one_half, c0, c1, c2, c3, c4;
};
struct SinpiHalfBlock {
  Row<half> absmask, four, one_half, h0, h1, h2;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const SinpiDoubleBlock __zorp_dsinpi_data_avx2;
extern const SinpiDoubleShortBlock __zorp_dsinpi_native_data_avx2;
extern const SinpiFloatBlock __zorp_ssinpi_data;
extern const SinpiHalfBlock __zorp_hsinpi_data;
}
#pragma GCC visibility pop

// ---- Steps that sine and cosine share ----------------------------------------------------------

template <Tier tier, class T>
inline const auto& sinpi_rows() {
  if constexpr (same<T, float>)
    return rows(__zorp_ssinpi_data);
  else if constexpr (tier == Tier::standard)
    return rows(__zorp_dsinpi_data_avx2);
  else
    return rows(__zorp_dsinpi_native_data_avx2);
}

/// sin(pi t) for |t| <= 1/2.
template <class V>
inline V sine_of_turn(V t, const SinpiDoubleBlock& k) {
  const V z = t * t;
  V p = fma(z, k.c8, k.c7);
  p = fma(p, z, k.c6);
  p = fma(p, z, k.c5);
  p = fma(p, z, k.c4);
  p = fma(p, z, k.c3);
  p = fma(p, z, k.c2);
  p = fma(p, z, k.c1);
  p = fma(p, z, k.c0);
  return p * t;
}
template <class V>
inline V sine_of_turn(V t, const SinpiDoubleShortBlock& k) {
  const V z = t * t;
  V p = fma(z, k.c5, k.c4);
  p = fma(p, z, k.c3);
  p = fma(p, z, k.c2);
  p = fma(p, z, k.c1);
  p = fma(p, z, k.c0);
  return p * t;
}
template <class V>
inline V sine_of_turn(V t, const SinpiFloatBlock& k) {
  const V z = t * t;
  V p = fma(z, k.c4, k.c3);
  p = fma(p, z, k.c2);
  p = fma(p, z, k.c1);
  p = fma(p, z, k.c0);
  return p * t;
}
/// The same with a sign word on the result. 4 t is exact and the main term of the last fused step;
/// the polynomial tells how far the result is from it.
template <int N>
inline Vec<half, N> sine_of_turn(Vec<half, N> t, Vec<half, N> sign, const SinpiHalfBlock& k) {
  const auto z = t * t;
  const auto w = (t * k.four) ^ sign;
  auto q = fma(z, k.h2, k.h1);
  q = fma(z, q, k.h0);
  return fma_in_order(q, w, w);  // a NaN has lost the sign of w in q
}

/// The lowest bit of the integral n, in the place of the sign.
template <int N>
inline Vec<double, N> sign_of_odd(Vec<double, N> n) {
  return from_bits<double>(shift_left<63>(to_int64(n)));
}
template <int N>
inline Vec<float, N> sign_of_odd(Vec<float, N> n) {
  return from_bits<float>(shift_left<31>(to_int32(n)));
}
template <int N>
inline Vec<half, N> sign_of_odd(Vec<half, N> n) {
  return from_bits<half>(shift_left<15>(reinterpret<int16_t>(to_uint16(n))));
}

// ---- sinpi -------------------------------------------------------------------------------------

struct Sinpi {
  template <Tier tier, class T, int N>
  static Vec<T, N> apply(Vec<T, N> x) {
    using V = Vec<T, N>;
    const auto& k = sinpi_rows<tier, T>();
    const V n = round_scale<0x0>(x);
    const V f = x - n;
    // The sine of an integer is a zero with the sign of x.
    const auto integral = compare<_CMP_EQ_OQ>(f, constant<V>(0));
    return sine_of_turn(f, k) ^ select(integral, x & sign_mask<V>(), sign_of_odd(n));
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hsinpi_data);
    const auto a = x & k.absmask;
    const auto n = round_scale<0x0>(a);
    return sine_of_turn(a - n, sign_of_odd(n), k) ^ (x ^ a);
  }
};

// ---- cospi -------------------------------------------------------------------------------------

struct Cospi {
  template <Tier tier, class T, int N>
  static Vec<T, N> apply(Vec<T, N> x) {
    using V = Vec<T, N>;
    const auto& k = sinpi_rows<tier, T>();
    const V n = round_scale<0x0>(x);
    const V one_half = k.one_half;
    return sine_of_turn(one_half - magnitude(x - n), k) ^ sign_of_odd(n);
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    const auto& k = rows(__zorp_hsinpi_data);
    const auto a = x & k.absmask;
    const auto n = round_scale<0x0>(a);
    const Vec<half, N> one_half = k.one_half;
    return sine_of_turn(one_half - ((a - n) & k.absmask), sign_of_odd(n), k);
  }
};

}  // namespace zorp
