// tan.
// Kernels: __zorp_z1_tan{,f,s}{1,2,3,4,8,16,32}{,_native,_half,_rm}.
//
// Double and float: x = n steps of pi/16 (pi/32) + r, T = tan of n steps from a table, u = tan r by
// a short polynomial, and tan x = (T + u) / (1 - T u). For the quotient a reciprocal estimate is
// refined by residuals. Large arguments are reduced by the bits of 1/(2 pi) and join before the
// table.
//
// T of the pole is the most negative number: the quotient is then -1/u, as far as it must be. T of
// 0 is -0, so that T + u keeps the sign of a zero u.
//
// Half: r is less than pi/4 from a multiple of pi/2, and in the odd quadrants tan x = -1/tan r.
#pragma once

#include "trig/reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct TanDoubleBlock {
  Row<double> absmask, limit, inv_step, shift, step1, step2, step3, one;
  Row<double> fine1, fine2;  // an entry of the circle, in two parts
  Table<double, 16> tangents;
  Row<double> c1, c2, c3, c4, c5;
};
struct TanFloatBlock {
  Row<float> absmask, limit, inv_step, shift, step1, step2, step3, one;
  Row<float> fine1, fine2;
  Table<float, 32> tangents;
  Row<float> c1, c2;
};
struct TanHalfBlock {
  Row<half> absmask;
  Row<float> shift, two_over_pi, pi_half1, pi_half2, c1, c2, c3, c4;
};
struct TanHalfShortBlock {
  Row<half> absmask;
  Row<float> shift, two_over_pi, pi_half1, pi_half2;
  Row<half> c1, c2, c3, c4;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const TanDoubleBlock __zorp_dtan_data;
extern const TanFloatBlock __zorp_stan_data;
extern const TanHalfBlock __zorp_htan_data;
extern const TanHalfShortBlock __zorp_htan_native_data;
}
#pragma GCC visibility pop

// ---- Steps that the algorithms share -----------------------------------------------------------

/// x = n steps + r; the low bits of `index` are n's.
template <class T, int N>
struct StepReduction {
  Vec<Encoding<T>, N> index;
  Vec<T, N> r;
};

template <class T, int N, class Block>
inline StepReduction<T, N> near_steps(Vec<T, N> x, const Block& k) {
  using V = Vec<T, N>;
  const V y = fma(x, k.inv_step, k.shift);
  const V n = y - k.shift;
  V r = fnma(n, k.step1, x);
  r = fnma(n, k.step2, r);
  r = fnma(n, k.step3, r);
  return {bits(y), r};
}

/// x of any size. Of the 1/512 (1/256) turns that the reduction tells, 16 (4) make a step: j = 16 n
/// + m. Where m could be 8 as well as -8, the sign of r decides, so that what is left stays small.
template <class T, int N, class Block>
inline StepReduction<T, N> far_steps(Vec<T, N> x, const Block& k) {
  using V = Vec<T, N>;
  using Bits = Vec<Encoding<T>, N>;
  if constexpr (V::paired) {
    const auto low = far_steps(x.lo, k), high = far_steps(x.hi, k);
    return {{low.index, high.index}, {low.r, high.r}};
  } else {
    constexpr int log_entries = same<T, double> ? 4 : 2;  // of the circle in a step
    constexpr uint64_t entries = 1 << log_entries;
    const TurnReduction<T, N> a(x);
    const Bits below_zero = shift_right_signed<8 * sizeof(T) - 1>(bits(a.r));  // -1 or 0
    const Bits g = a.step + below_zero + constant<Bits>(entries / 2);
    const Bits m = a.step - (g & constant<Bits>(-entries));
    const V m_exact = from_bits<T>(bits(V(k.shift)) + m) - k.shift;
    const V r = fma(m_exact, k.fine1, fma(m_exact, k.fine2, a.rl) + a.r);
    return {shift_right<log_entries>(g), r};
  }
}

/// The tangent of what `finish` gets reduced, for x of any size. Infinities and NaNs are left for
/// the rare routine.
template <class T, int N, class Block, class Finish>
[[gnu::always_inline]] inline Outcome<Vec<T, N>> by_steps(Vec<T, N> x, const Block& k,
                                                          Finish finish) {
  const StepReduction<T, N> near = near_steps(x, k);
  const auto large = compare<_CMP_NLE_UQ>(x & k.absmask, k.limit);
  if (any(large)) [[unlikely]] {
    const StepReduction<T, N> far = far_steps(x, k);
    return {finish(StepReduction<T, N>{select(large, far.index, near.index),
                                       select(large, far.r, near.r)}),
            classify<infinities | nans>(x)};
  }
  return {finish(near), {0}};
}

// ---- tan ---------------------------------------------------------------------------------------

struct Tan {
  template <Tier tier, int N>
  static Outcome<Vec<double, N>> apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    const auto& k = rows(__zorp_dtan_data);
    return by_steps(
        x, k, [&](const StepReduction<double, N>& a) __attribute__((always_inline)) {
          const V tangent = lookup(k.tangents, a.index);
          const V z = a.r * a.r;
          V p;
          if constexpr (tier == Tier::standard) {
            p = fma(z, k.c5, k.c4);
            p = fma(p, z, k.c3);
          } else {
            p = fma(z, k.c4, k.c3);
          }
          p = fma(p, z, k.c2);
          p = fma(p, z, k.c1);
          const V u = fma(p * a.r, z, a.r);
          const V s = u + tangent;
          const V d = fnma(u, tangent, k.one);
          const V estimate = reciprocal14(d);
          const V e = fnma(estimate, d, k.one);
          const V q = fma(e, estimate, estimate);
          const V w = q * s;
          const V residual = fms(d, w, s);
          return fnma(residual, q, w);
        });
  }

  template <Tier tier, int N>
  static Outcome<Vec<float, N>> apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    const auto& k = rows(__zorp_stan_data);
    return by_steps(
        x, k, [&](const StepReduction<float, N>& a) __attribute__((always_inline)) {
          const V tangent = lookup(k.tangents, a.index);
          const V z = a.r * a.r;
          if constexpr (tier == Tier::standard) {
            const V p = fma(z, k.c2, k.c1);
            const V u = fma(p * a.r, z, a.r);
            // Numerator and denominator with what their sums lost; T is the larger summand, and so
            // is 1 but at the pole, where nothing of the denominator is to be kept.
            const V s = u + tangent;
            const V s_low = u - (s - tangent);
            const V product = tangent * u;
            const V one = k.one;
            const V d = one - product;
            const V d_low = (d - one) + product;
            const V estimate = reciprocal14(d);
            const V w = estimate * s;
            V residual = fms(d, w, s);
            residual = fnma(w, d_low, residual) - s_low;
            return fnma(residual, estimate, w);
          } else {
            const V u = fma(a.r * k.c1, z, a.r);
            const V s = u + tangent;
            const V one = k.one;
            return reciprocal14(one - tangent * u) * s;
          }
        });
  }

  template <Tier tier, int N>
  static Vec<half, N> apply(Vec<half, N> x) {
    if constexpr (tier == Tier::standard) {
      const auto& k = rows(__zorp_htan_data);
      const auto magnitude = x & k.absmask;
      const Quadrant a(magnitude, k);
      const auto z = a.r * a.r;
      auto p = fma(z, k.c1, k.c2);
      p = fma(p, z, k.c3);
      p = fma(p, z, k.c4);
      const auto v = p * select(a.odd, a.r ^ sign_mask<Vec<float, N>>(), a.r);
      return x ^ magnitude ^ narrow(select(a.odd, reciprocal14(v), v));
    } else {
      const auto& k = rows(__zorp_htan_native_data);
      const auto magnitude = x & k.absmask;
      const Quadrant a(magnitude, k);
      const auto r = narrow(a.r);
      const auto z = r * r;
      const auto rs = select(a.odd, r ^ sign_mask<Vec<half, N>>(), r);
      auto p = fma(z, k.c1, k.c2);
      p = fma(p, z, k.c3);
      p = fma(p, z, k.c4);
      const auto v = fma(p, rs, rs);
      return x ^ magnitude ^ select(a.odd, reciprocal11(v), v);
    }
  }

 private:
  /// The nearest multiple of pi/2: whether it is an odd one, and what is left.
  template <int N>
  struct Quadrant {
    Vec<float, N> r;
    Mask<N> odd;

    template <class Block>
    Quadrant(Vec<half, N> magnitude, const Block& k) {
      const auto a = widen(magnitude);
      const auto y = fma(a, k.two_over_pi, k.shift);
      const auto n = y - k.shift;
      r = fma(n, k.pi_half1, a);
      r = fma(n, k.pi_half2, r);
      odd = is_negative(shift_left<31>(bits(y)));
    }
  };
};

}  // namespace zorp
