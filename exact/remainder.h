// fmod, remainder, remquo: the exact remainders of a division.
// Kernels: __zorp_z1_{fmod,remainder,remquo}{,f,s}{1,2,3,4,8,16,32}.
//
// The remainder x - n y is representable where n is the quotient rounded to an integer: toward zero
// for fmod, to nearest even for remainder and remquo. The fast paths find n, or its neighbour, from
// a reciprocal of y and two corrections, form x - n y without a rounding and mend it by one y. They
// serve quotients of few bits and divisors away from the ends of the range; the rare routines
// divide in integers. Half fmod and remquo compute in float. Half remainder divides in half
// arithmetic, takes long quotients down in stages, and serves every pair.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct FmodDoubleBlock {
  Row<double> absmask, sign, limit, one;
  Row<int64_t> range_offset, range_limit;
};
struct FmodFloatBlock {
  Row<float> absmask, sign, limit;
  Row<int32_t> range_offset, range_limit;
};
template <class T>
struct RemainderBlock {
  Row<T> split, absmask, sign, half, one;
  Row<Encoding<T>> limit, range_offset, range_limit;
};
struct RemainderHalfBlock {
  Row<half> sign, limit8, limit19, limit29, zero, low_bit;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const FmodDoubleBlock __zorp_dfmod_data;
extern const FmodFloatBlock __zorp_sfmod_data, __zorp_hfmod_data;
extern const RemainderBlock<double> __zorp_dremainder_data, __zorp_dremquo_data;
extern const RemainderBlock<float> __zorp_sremainder_data, __zorp_sremquo_data, __zorp_hremquo_data;
extern const RemainderHalfBlock __zorp_hremainder_data;
}
#pragma GCC visibility pop

// ---- Steps that the families share -------------------------------------------------------------

/// The lanes whose magnitude lies outside the range: the offset moves its lower end to the least
/// integer, and what lies below wraps around to large ones.
template <class V, class Block>
inline Mask<V::lanes> out_of_range(V magnitude, const Block& k) {
  return greater(bits(magnitude) - k.range_offset, k.range_limit);
}

// ---- fmod --------------------------------------------------------------------------------------

struct Fmod {
  template <Tier, int N>
  static auto apply(Vec<double, N> x, Vec<double, N> y) {
    return divide(x, y, rows(__zorp_dfmod_data));
  }
  template <Tier, int N>
  static auto apply(Vec<float, N> x, Vec<float, N> y) {
    return divide(x, y, rows(__zorp_sfmod_data));
  }
  template <Tier, int N>
  static auto apply(Vec<half, N> x, Vec<half, N> y) {
    const auto [rest, special] = divide(widen(x), widen(y), rows(__zorp_hfmod_data));
    return Outcome<Vec<half, N>>{narrow<rn>(rest), special};
  }

 private:
  static constexpr int negatives = 0x50;

  template <class V, class Block>
  static Outcome<V> divide(V x, V y, const Block& k) {
    const V ax = x & k.absmask, ay = y & k.absmask;
    V r = reciprocal14(y);
    if constexpr (same<typename V::Element, double>) r = fma(fnma(r, y, k.one), r, r);
    const V estimate = r * x;
    const V quotient = fma(fnma(y, estimate, x), r, estimate);
    // Rounding may have lifted the quotient to the next integer, and never lowers it below one.
    const V n = round_scale<_MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC>(quotient);
    const V sign = x & k.sign;
    const V rest = fnma(n, y ^ sign, ax);  // the product is |n y|
    const auto far = compare<_CMP_NLE_UQ>(exponent(ax) - exponent(ay), k.limit);
    return {add_where(classify<negatives>(rest), rest, ay) | sign, far | out_of_range(ay, k)};
  }
};

// ---- remainder, remquo -------------------------------------------------------------------------

/// x - n y for the integer n next to x / y, and the lanes that must be served otherwise.
template <class V>
struct NearestDivision {
  V rest, n;
  Mask<V::lanes> special;

  template <class Block>
  NearestDivision(V x, V y, const Block& k) {
    constexpr bool is_double = same<typename V::Element, double>;
    constexpr int fraction_bits = is_double ? 52 : 23;
    const V ay = y & k.absmask;
    const auto distance =
        shift_right<fraction_bits>(bits(x & k.absmask)) - shift_right<fraction_bits>(bits(ay));
    special = out_of_range(ay, k) | greater(distance, k.limit);

    const V mx = significand<0x00>(x), my = significand<0x00>(y);
    const V r0 = reciprocal14(my);
    V r = r0;
    if constexpr (is_double) {
      const V e = fnma(my, r0, k.one);
      r = fma(fma(e, e, e), r0, r0);
    }
    const V estimate = mx * r0;
    const V quotient = fma(fnma(my, estimate, mx), r, estimate);
    // In the caller's mode: to nearest even in the default one.
    n = round_scale<_MM_FROUND_CUR_DIRECTION | _MM_FROUND_NO_EXC>(
        scale(quotient, exponent(x) - exponent(y)));

    // n times half of y's significand needs no rounding.
    const V high = y & k.split, low = y - high;
    const V a = fnma(n, low, fnma(n, high, x));
    // More than half of y is left where n is off by one: it goes up where a has the sign of y.
    const auto off = compare<_CMP_GT_OQ>(a & k.absmask, ay * k.half);
    n = add_where(off, n, ((a ^ y) & k.sign) | k.one);
    // 0x2E takes the sign that a hasn't, and the other bits from |y|.
    const V b = add_where(off, a, ternary_logic<0x2E>(a, k.sign, ay));
    rest = select(classify<zeros>(b), x & k.sign, b);
  }
};

struct Remainder {
  template <Tier, int N>
  static auto apply(Vec<double, N> x, Vec<double, N> y) {
    return outcome(NearestDivision<Vec<double, N>>(x, y, rows(__zorp_dremainder_data)));
  }
  template <Tier, int N>
  static auto apply(Vec<float, N> x, Vec<float, N> y) {
    return outcome(NearestDivision<Vec<float, N>>(x, y, rows(__zorp_sremainder_data)));
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x, Vec<half, N> y) {
    using V = Vec<half, N>;
    const auto& k = rows(__zorp_hremainder_data);
    const V sign = x & k.sign, minus_y = y ^ k.sign;
    const auto distance = bits(exponent(x) - exponent(y));
    V a = magnitude(x);
    // A stage takes a below |y| 2^L by a multiple of y 2^L. The encodings of positive distances
    // compare as integers.
    const auto stage = [&](const Row<half>& limit) {
      const V l = limit;
      const V n = truncated(div<rz>(a, scale(y, l)));
      a = select(greater(distance, bits(l)), fma_in_order(n, scale(minus_y, l), a), a);
    };
    if (any(greater(distance, bits(V(k.limit8))))) [[unlikely]] {
      stage(k.limit29);
      stage(k.limit19);
      stage(k.limit8);
    }
    // Rounded to odd, the quotient shows every tie to the rounding that follows.
    V u = div<rz>(a, y);
    const auto inexact = compare<_CMP_NEQ_UQ>(fnma<ru>(u, y, a), k.zero);
    u = select(inexact, u | k.low_bit, u);
    const V n = round_scale<_MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC>(u);
    const V rest = fma_in_order(n, minus_y, a) ^ sign;
    // An infinite y leaves x as it is; an infinite x becomes a NaN.
    return select(classify<infinities>(y), fma(x, k.zero, x), rest);
  }

 private:
  template <class V>
  static Outcome<V> outcome(const NearestDivision<V>& a) {
    return {a.rest, a.special};
  }
  template <class V>
  static V truncated(V v) {
    return round_scale<_MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC>(v);
  }
};

struct Remquo {
  template <Tier, int N>
  static auto apply(Vec<double, N> x, Vec<double, N> y) {
    return outcome(NearestDivision<Vec<double, N>>(x, y, rows(__zorp_dremquo_data)));
  }
  template <Tier, int N>
  static auto apply(Vec<float, N> x, Vec<float, N> y) {
    return outcome(NearestDivision<Vec<float, N>>(x, y, rows(__zorp_sremquo_data)));
  }
  template <Tier, int N>
  static auto apply(Vec<half, N> x, Vec<half, N> y) {
    const NearestDivision<Vec<float, N>> a(widen(x), widen(y), rows(__zorp_hremquo_data));
    return Outcome<Vec<half, N>, Vec<int32_t, N>>{narrow<rn>(a.rest), to_int32(a.n), a.special};
  }

 private:
  template <class V>
  static Outcome<V, Vec<int32_t, V::lanes>> outcome(const NearestDivision<V>& a) {
    return {a.rest, to_int32(a.n), a.special};
  }
};

}  // namespace zorp
