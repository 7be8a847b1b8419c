// sin, cos.
// Kernels: __zorp_z1_{sin,cos}{,f,s}{1,2,3,4,8,16,32}{,_native,_half,_rm}.
//
// x less the nearest multiple of pi, by two or three parts of pi, leaves r, and an odd polynomial
// gives sin r. Adding a number so large that its unit in the last place is 1 rounds to an integer,
// and the last bit of the sum is the integer's parity, which is the sign of the result. The cosine
// is a sine whose multiples of pi are odd halves.
//
// Beyond the range in which the parts of pi are good enough, double and float take a second path
// through the circle (the reduced tiers of double one of their own), and half one through float
// arithmetic. Infinities and NaNs of double and float go to the rare routine.
#pragma once

#include "trig/pieces.h"
#include "trig/reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct SinDoubleBlock {
  Row<double> absmask, inv_pi, pi1, pi2, pi3, shift, limit, s1, s2, s3, s4, s5, s6, s7;
};
struct CosDoubleBlock {
  Row<double> absmask, inv_pi, pi1, pi2, pi3, shift, centre, limit, tiny, one;
  Row<double> s1, s2, s3, s4, s5, s6, s7;
};
struct SinDoubleShortBlock {
  Row<double> absmask, limit, inv_pi, shift, pi1, pi2, s1, s2, s3, s4;
};
struct CosDoubleShortBlock {
  Row<double> absmask, limit, inv_pi, shift, pi1, pi2, s1, s2, s3, s4, pi_half, half, one;
};

struct SinFloatBlock {
  Row<float> absmask, limit, inv_pi, shift, pi1, pi2, pi3, s1, s2, s3, s4;
};
struct CosFloatBlock {
  Row<float> absmask, limit, inv_pi, shift, pi1, pi2, pi3, s1, s2, s3, s4, pi_half, half, one;
};
struct SinFloatShortBlock {
  Row<float> absmask, limit, inv_pi, shift, pi1, pi2, c0, c1, c2;
};
struct CosFloatShortBlock {
  Row<float> absmask, limit, inv_pi, shift, pi1, pi2, c0, c1, c2, pi_half, half, one;
};

struct SinHalfBlock {
  Row<half> absmask;
  Row<int16_t> limit;
  Row<half> shift, inv_pi32, pi32_1, pi32_2, s1, s2;
  Row<float> large_shift, large_inv_pi, large_pi1, large_pi2, t1, t2;
};
struct CosHalfBlock {
  Row<half> absmask;
  Row<int16_t> limit;
  Row<half> shift, inv_pi32, pi32_1, pi32_2, pi_half, step, s1, s2, s3;
  Row<float> large_shift, large_centre, large_inv_pi, large_pi1, large_pi2, t1, t2;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const SinDoubleBlock __zorp_dsin_data;
extern const CosDoubleBlock __zorp_dcos_data;
extern const SinDoubleShortBlock __zorp_dsin_native_data;
extern const CosDoubleShortBlock __zorp_dcos_native_data;
extern const SinFloatBlock __zorp_ssin_data;
extern const CosFloatBlock __zorp_scos_data;
extern const SinFloatShortBlock __zorp_ssin_native_data;
extern const CosFloatShortBlock __zorp_scos_native_data;
extern const SinHalfBlock __zorp_hsin_data;
extern const CosHalfBlock __zorp_hcos_data;
}
#pragma GCC visibility pop

// ---- Steps that both share ---------------------------------------------------------------------

/// v, negated where the integer in the last bits of `shifted` is odd.
template <class T, int N>
inline Vec<T, N> negate_if_odd(Vec<T, N> v, Vec<T, N> shifted) {
  return v ^ from_bits<T>(shift_left<8 * sizeof(T) - 1>(bits(shifted)));
}

/// (sin r / r - 1) / t for t = r^2
template <class V, class Block>
inline V sine_polynomial4(V t, const Block& k) {
  V p = fma(t, k.s4, k.s3);
  p = fma(t, p, k.s2);
  return fma(t, p, k.s1);
}

/// x has not passed a comparison with the limit of the fast path. What the second path gives
/// replaces the result there; infinities and NaNs are left for the rare routine.
template <class V, class SecondPath>
[[gnu::always_inline]] inline Outcome<V> with_second_path(Mask<V::lanes> large, V x, V result,
                                                          SecondPath second) {
  if (any(large)) [[unlikely]]
    return {select(large, second(), result), classify<infinities | nans>(x)};
  return {result, {0}};
}

// ---- sin ---------------------------------------------------------------------------------------

struct Sin {
  template <Tier tier, int N>
  static Outcome<Vec<double, N>> apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dsin_data);
      const V y = fma(x, k.inv_pi, k.shift);
      const V n = y - k.shift;
      V r = fnma(n, k.pi1, x);
      r = fnma(n, k.pi2, r);
      const V t = r * r;
      r = fnma(n, k.pi3, r);
      V p = fma(t, k.s7, k.s6);
      p = fma(t, p, k.s5);
      p = fma(t, p, k.s4);
      p = fma(t, p, k.s3);
      const V c = t * r;
      p = fma(t, p, k.s2);
      p = fma(t, p, k.s1);
      // The polynomial gives +0 for either zero.
      const V zero = select(classify<zeros>(x), x, constant<V>(0));
      const V result = negate_if_odd(fma(p, c, r) ^ zero, y);
      const V a = x & k.absmask;
      return with_second_path(compare<_CMP_NLE_UQ>(a, k.limit), x, result,
                              [&] { return (x ^ a) ^ large_sine(a, rows(__zorp_dsin_data_ha)); });
    } else {
      const auto& k = rows(__zorp_dsin_native_data);
      const V a = x & k.absmask;
      const V y = fma(a, k.inv_pi, k.shift);
      const V n = y - k.shift;
      V r = fnma(n, k.pi1, a);
      r = fnma(n, k.pi2, r);
      const V t = r * r;
      const V rs = negate_if_odd(r, y);
      const V result = fma(sine_polynomial4(t, k) * t, rs, rs);
      return with_second_path(compare<_CMP_NLE_UQ>(a, k.limit), x, x ^ a ^ result, [&] {
        return by_halves(x, [](auto half) { return pieces_sine(half); });
      });
    }
  }

  template <Tier tier, int N>
  static Outcome<Vec<float, N>> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    const auto& k = [&]() -> const auto& {
      if constexpr (tier == Tier::standard)
        return rows(__zorp_ssin_data);
      else
        return rows(__zorp_ssin_native_data);
    }
    ();
    const V a = x & k.absmask;
    const V y = fma(a, k.inv_pi, k.shift);
    const V n = y - k.shift;
    V r = fnma(n, k.pi1, a);
    r = fnma(n, k.pi2, r);
    V result;
    if constexpr (tier == Tier::standard) {
      r = fnma(n, k.pi3, r);
      const V t = r * r;
      const V rs = negate_if_odd(r, y);
      result = fma(sine_polynomial4(t, k) * t, rs, rs);
    } else {
      const V t = r * r;
      const V rs = negate_if_odd(r, y);
      result = fma(fma(t, k.c2, k.c1) * t, rs, rs * k.c0);
    }
    return with_second_path(compare<_CMP_NLE_UQ>(a, k.limit), x, x ^ a ^ result,
                            [&] { return large_sine(x, rows(__zorp_scircle_data)); });
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    using V = Vec<half, N>;
    const auto& k = rows(__zorp_hsin_data);
    // The shifter is 48, whose unit in the last place is 1/32: all counts in 32 pi.
    const V a = x & k.absmask;
    const V y = fma(a, k.inv_pi32, k.shift);
    const V n = y - k.shift;
    V r = fma(n, k.pi32_1, a);
    r = fma(n, k.pi32_2, r);
    const V t = r * r;
    const V p = fma(t, k.s2, k.s1);
    V result = negate_if_odd(fma(t * r, p, r), y);
    const auto large = greater(bits(a), k.limit);
    if (any(large)) [[unlikely]]
      result = select(large, by_float(a, k), result);
    return x ^ a ^ result;
  }

 private:
  template <int N>
  static Vec<half, N> by_float(Vec<half, N> magnitude, const SinHalfBlock& k) {
    using V = Vec<float, N>;
    const V a = widen(magnitude);
    const V y = fma(a, k.large_inv_pi, k.large_shift);
    const V n = y - k.large_shift;
    V r = fma(n, k.large_pi1, a);
    r = fma(n, k.large_pi2, r);
    const V t = r * r;
    const V p = fma(t, k.t2, k.t1);
    return narrow(negate_if_odd(fma(t * r, p, r), y));
  }
};

// ---- cos ---------------------------------------------------------------------------------------

struct Cos {
  template <Tier tier, int N>
  static Outcome<Vec<double, N>> apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_dcos_data);
      const V a = x & k.absmask;
      // y = 2^52 + floor(a/pi), and the centre is 2^52 - 1/2: r = (floor(a/pi) + 1/2) pi - a.
      const V y = fma<rz>(a, k.inv_pi, k.shift);
      const V n = y - k.centre;
      V r = fms(n, k.pi1, a);
      r = fma(n, k.pi2, r);
      const V t = r * r;
      r = fma(n, k.pi3, r);
      const V rs = negate_if_odd(r, y);
      V p = fma(t, k.s7, k.s6);
      p = fma(t, p, k.s5);
      p = fma(t, p, k.s4);
      p = fma(t, p, k.s3);
      p = fma(t, p, k.s2);
      p = fma(t, p, k.s1);
      V result = fma(rs * t, p, rs);
      result = select(compare<_CMP_LT_OQ>(a, k.tiny), V(k.one), result);
      return with_second_path(compare<_CMP_NLE_UQ>(y, k.limit), x, result,
                              [&] { return large_cosine(x, rows(__zorp_dsin_data_ha)); });
    } else {
      const auto& k = rows(__zorp_dcos_native_data);
      const V a = x & k.absmask;
      const V pi_half = k.pi_half, half = k.half;
      const V w = pi_half - a;
      const V y = fma(w, k.inv_pi, k.shift);
      const V n = half - (y - k.shift);
      V r = fms(n, k.pi1, a);
      r = fma(n, k.pi2, r);
      const V t = r * r;
      const V rs = negate_if_odd(r, y);
      V result = fma(t * rs, sine_polynomial4(t, k), rs);
      result = select(compare<_CMP_EQ_OQ>(w, pi_half), V(k.one), result);
      return with_second_path(compare<_CMP_NLE_UQ>(w & k.absmask, k.limit), x, result, [&] {
        return by_halves(x, [](auto half) { return pieces_cosine(half); });
      });
    }
  }

  template <Tier tier, int N>
  static Outcome<Vec<float, N>> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    const auto& k = [&]() -> const auto& {
      if constexpr (tier == Tier::standard)
        return rows(__zorp_scos_data);
      else
        return rows(__zorp_scos_native_data);
    }
    ();
    const V a = x & k.absmask;
    const V w = a + k.pi_half;
    const V y = fma(w, k.inv_pi, k.shift);
    const V n = y - k.shift - k.half;
    V r = fnma(n, k.pi1, a);
    r = fnma(n, k.pi2, r);
    V result;
    if constexpr (tier == Tier::standard) {
      r = fnma(n, k.pi3, r);
      const V t = r * r;
      const V rs = negate_if_odd(r, y);
      result = fma(t * rs, sine_polynomial4(t, k), rs);
    } else {
      const V t = r * r;
      const V rs = negate_if_odd(r, y);
      result = fma(rs * t, fma(t, k.c2, k.c1), rs * k.c0);
    }
    result = select(compare<_CMP_EQ_OQ>(w, k.pi_half), V(k.one), result);
    return with_second_path(compare<_CMP_NLE_UQ>(a, k.limit), x, result,
                            [&] { return large_cosine(x, rows(__zorp_scircle_data)); });
  }

  template <Tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    using V = Vec<half, N>;
    const auto& k = rows(__zorp_hcos_data);
    const V a = x & k.absmask;
    const V w = a + k.pi_half;
    const V y = fma(w, k.inv_pi32, k.shift);
    const V n = y - k.shift - k.step;
    V r = fma(n, k.pi32_1, a);
    r = fma(n, k.pi32_2, r);
    const V t = r * r;
    const V rs = negate_if_odd(r, y);
    V p = fma(t, k.s3, k.s2);
    p = fma(t, p, k.s1);
    V result = fma(t * rs, p, rs);
    const auto large = greater(bits(a), k.limit);
    if (any(large)) [[unlikely]]
      result = select(large, by_float(a, k), result);
    return result;
  }

 private:
  /// As in the standard tier of double.
  template <int N>
  static Vec<half, N> by_float(Vec<half, N> magnitude, const CosHalfBlock& k) {
    using V = Vec<float, N>;
    const V a = widen(magnitude);
    const V y = fma<rz>(a, k.large_inv_pi, k.large_shift);
    const V n = y - k.large_centre;
    V r = fms(n, k.large_pi1, a);
    r = fma(n, k.large_pi2, r);
    const V t = r * r;
    const V p = fma(t, k.t2, k.t1);
    return narrow(negate_if_odd(fma(t * r, p, r), y));
  }
};

}  // namespace zorp
