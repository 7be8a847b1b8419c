// tanpi: tangent of pi x.
// Kernels: __zorp_z1_tanpi{,f,s}{1,2,3,4,8,16,32}{,_native}.
//
// Double and float split |x| = i + j/N + f, exactly, and put tan(pi (j/N + f)) together from the
// table's tan(pi j/N) and a polynomial for tan(pi f). In the middle half of the period, where the
// tangent is large, the table holds that of j/N - 1/2, and the quotient is turned upside down.
// Half splits at multiples of 1/2 and takes the reciprocal at the odd ones.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct TanpiDoubleBlock {
  Table<double, 16> tangent, turned;  // tan(pi j/16) or tan(pi (j/16 - 1/2)); -0 for the latter
  Row<double> absmask, shift, zero, one, infinity, t0, t1, t2, t3, t4, t5;
};
struct TanpiDoubleShortBlock {
  Table<double, 16> tangent, turned;
  Row<double> absmask, shift, zero, one, infinity, t0, t1, t2, t3;
};
struct TanpiFloatBlock {
  Table<float, 32> tangent, turned;  // the same by 1/32
  Row<float> absmask, shift, zero, one, infinity, t0, t1, t2;
};
struct TanpiFloatShortBlock {
  Table<float, 32> tangent, turned;
  Row<float> absmask, shift, zero, one, infinity, t0, t1;
};
struct TanpiHalfBlock {
  Row<half> absmask, two;
  Row<float> u0, u1, u2, u3;
};
struct TanpiHalfShortBlock {
  Row<half> absmask, two, u0, u1, u2;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const TanpiDoubleBlock __zorp_dtanpi_data_avx512;
extern const TanpiDoubleShortBlock __zorp_dtanpi_native_data_avx512;
extern const TanpiFloatBlock __zorp_stanpi_data_avx512;
extern const TanpiFloatShortBlock __zorp_stanpi_native_data_avx512;
extern const TanpiHalfBlock __zorp_htanpi_data;
extern const TanpiHalfShortBlock __zorp_htanpi_native_data;
}
#pragma GCC visibility pop

struct Tanpi {
  template <Tier tier, int N>
  static Vec<double, N> apply(Vec<double, N> x) {
    if constexpr (tier == Tier::standard)
      return by_addition<0x40>(x, rows(__zorp_dtanpi_data_avx512));
    else
      return by_addition<0x40>(x, rows(__zorp_dtanpi_native_data_avx512));
  }

  template <Tier tier, int N>
  static Vec<float, N> apply(Vec<float, N> x) {
    if constexpr (tier == Tier::standard)
      return by_addition<0x50>(x, rows(__zorp_stanpi_data_avx512));
    else
      return by_addition<0x50>(x, rows(__zorp_stanpi_native_data_avx512));
  }

  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_htanpi_data);
      const HalfSplit<Vec<half, N>> split(x, k);
      const auto f = widen(split.f);
      const auto z = f * f;
      auto p = fma(z, k.u3, k.u2);
      p = fma(z, p, k.u1);
      p = fma(z, p, k.u0);
      const auto t = fma(p, f, f);
      return narrow(select(split.odd, reciprocal14(t), t)) ^ split.sign;
    } else {
      const auto& k = rows(__zorp_htanpi_native_data);
      const HalfSplit<Vec<half, N>> split(x, k);
      const auto z = split.f * split.f;
      auto p = fma(z, k.u2, k.u1);
      p = fma(z, p, k.u0);
      const auto t = fma(p, split.f, split.f);
      return select(split.odd, reciprocal11(t), t) ^ split.sign;
    }
  }

 private:
  /// `nearest` is the immediate that rounds to a multiple of 1/N.
  template <int nearest, class V, class Block>
  static V by_addition(V x, const Block& k) {
    const V a = x & k.absmask, sign = x ^ a;
    const V b = round_scale<nearest>(a);
    const V f = a - b;
    const auto j = bits(reduce<0x09>(b) + k.shift);  // N (b - floor b)
    const V at_j = lookup(k.tangent, j), turned = lookup(k.turned, j);
    const V q = polynomial(f * f, k) * f;
    // tan(pi (j/N + f)) = (T + q) / (1 - T q), or -(1 - T q) / (T + q) if T is half a turn behind.
    const V sum = at_j + q, rest = fnma(at_j, q, k.one);
    const auto swapped = is_negative(bits(turned));
    const V numerator = select(swapped, rest, sum) ^ turned;
    const V denominator = select(swapped, sum, rest);
    // For infinite x all are NaNs, but their signs differ.
    V r = mul_in_order(reciprocal(denominator, k), numerator ^ sign);
    r = select(classify<nans>(x), x + k.infinity, r);
    // Zeros and poles change their sign with every period.
    const V period_sign = sign ^ sign_of_odd_part(a);
    r = select(compare<_CMP_EQ_OQ>(denominator, k.zero), period_sign ^ k.infinity, r);
    return select(compare<_CMP_EQ_OQ>(numerator, k.zero), period_sign, r);
  }

  /// tan(pi f) / f in z = f^2.
  template <class V>
  static V polynomial(V z, const TanpiDoubleBlock& k) {
    V p = fma(z, k.t5, k.t4);
    p = fma(p, z, k.t3);
    p = fma(p, z, k.t2);
    p = fma(p, z, k.t1);
    return fma(p, z, k.t0);
  }
  template <class V>
  static V polynomial(V z, const TanpiDoubleShortBlock& k) {
    V p = fma(z, k.t3, k.t2);
    p = fma(p, z, k.t1);
    return fma(p, z, k.t0);
  }
  template <class V>
  static V polynomial(V z, const TanpiFloatBlock& k) {
    const V p = fma(z, k.t2, k.t1);
    return fma(p, z, k.t0);
  }
  template <class V>
  static V polynomial(V z, const TanpiFloatShortBlock& k) {
    return fma(z, k.t1, k.t0);
  }

  /// 1/d: with r the estimate and e = 1 - r d, r (1 + e + e^2 + e^3).
  template <class V>
  static V reciprocal(V d, const TanpiDoubleBlock& k) {
    const V r = reciprocal14(d);
    const V e = fnma(r, d, k.one);
    const V t = fma(e + k.one, e, k.one);
    return r + (r * e) * t;
  }
  /// r (1 + e)
  template <class V>
  static V reciprocal(V d, const TanpiDoubleShortBlock& k) {
    const V r = reciprocal14(d);
    return fma(fnma(r, d, k.one), r, r);
  }
  template <class V>
  static V reciprocal(V d, const TanpiFloatBlock& k) {
    const V r = reciprocal14(d);
    return fma(fnma(r, d, k.one), r, r);
  }
  template <class V>
  static V reciprocal(V d, const TanpiFloatShortBlock&) {
    return reciprocal14(d);
  }

  /// The lowest bit of floor(a), in the place of the sign. What exceeds the integers of the lane is
  /// even, and the conversion's result for it, too.
  template <int N>
  static Vec<double, N> sign_of_odd_part(Vec<double, N> a) {
    return from_bits<double>(shift_left<63>(to_int64<rz>(a)));
  }
  template <int N>
  static Vec<float, N> sign_of_odd_part(Vec<float, N> a) {
    return from_bits<float>(shift_left<31>(to_int32<rz>(a)));
  }

  /// |x| = m/2 + f. For odd m, f is turned round: tan(pi |x|) = 1 / tan(-pi f). `sign` goes on the
  /// result; where f is zero it changes with every period.
  template <class V>
  struct HalfSplit {
    V f, sign;
    Mask<V::lanes> odd;

    template <class Block>
    HalfSplit(V x, const Block& k) {
      const V a = x & k.absmask;
      const V b = round_scale<0x10>(a);
      const auto m = to_int16(b * k.two);
      const auto odd_bit = shift_left<15>(m);
      odd = is_negative(odd_bit);
      f = (a - b) ^ from_bits<half>(odd_bit);
      const V period = from_bits<half>(odd_bit ^ shift_left<14>(m)) & sign_mask<V>();
      sign = (x ^ a) ^ select(compare<_CMP_EQ_OQ>(b, a), period, constant<V>(0));
    }
  };
};

}  // namespace zorp
