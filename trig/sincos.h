// sincos, sincosreg: sine and cosine of one argument at once.
// Kernels: __zorp_z1_sincos{,f,s}{1,2,3,4,8,16,32}{,_native,_rm},
// __zorp_z1_sincosreg{,f,s}...{,_native}.
//
// Double: r is x less the nearest multiple of pi, and the cosine is the sine of r -+ pi/2, which is
// x less the half multiple of pi on r's side: two reductions of one n, one polynomial. Large
// arguments take a second path through the circle, which is another one in the reduced tiers.
// Float: r is x less the nearest multiple of pi/2; polynomials of their own for sine and cosine,
// which the quadrant then puts in order. Large arguments are reduced in double arithmetic.
// Half: in float arithmetic, two reductions and one polynomial.
#pragma once

#include "frame/conversions.h"
#include "trig/pieces.h"
#include "trig/reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

struct SincosDoubleBlock {
  Row<double> absmask, limit, inv_pi, shift, half, one, pi1, pi2, pi3;
  Row<double> c1, c2, c3, c4, c5, c6, c7;
};
struct SincosDoubleShortBlock {
  Row<double> absmask, limit, inv_pi, shift, half, one, pi1, pi2;
  Row<double> c1, c2, c3, c4;
};
struct SincosFloatBlock {
  Row<float> absmask, shift, two_over_pi, limit, pi_half1, pi_half2, pi_half3, one;
  Row<float> s0, s1, s2, s3, k1, k2, k3;
  // For exponents 23 + 8i to 30 + 8i, the bits of 2/pi below those that only add whole turns.
  Table<double, 16> high, low;
  Row<double> floor;
  Row<int64_t> bias;
  Row<double> large_shift, pi_half;
};
struct SincosHalfBlock {
  Row<half> absmask;
  Row<float> centre, shift, inv_pi, pi1, pi2, t1, t2;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const SincosDoubleBlock __zorp_dsincos_data;
extern const SincosDoubleShortBlock __zorp_dsincos_native_data;
extern const SincosFloatBlock __zorp_ssincos_data_avx2;
extern const SincosHalfBlock __zorp_hsincos_data;
}
#pragma GCC visibility pop

// ---- sincos ------------------------------------------------------------------------------------

struct Sincos {
  template <Tier tier, int N>
  static auto apply(Vec<double, N> x) {
    using V = Vec<double, N>;
    const auto& k = [&]() -> const auto& {
      if constexpr (tier == Tier::standard)
        return rows(__zorp_dsincos_data);
      else
        return rows(__zorp_dsincos_native_data);
    }
    ();
    const V a = x & k.absmask;
    const auto large = compare<_CMP_NLE_UQ>(a, k.limit);
    if (any(large)) [[unlikely]] {
      const auto far = far_from_zero<tier>(x, a);
      const auto special = classify<infinities | nans>(x);
      if (!any(~large)) return Outcome<V, V>{far.first, far.second, special};
      const auto close = near_zero<tier>(x, a, k);
      return Outcome<V, V>{select(large, far.first, close.first),
                           select(large, far.second, close.second), special};
    }
    const auto close = near_zero<tier>(x, a, k);
    return Outcome<V, V>{close.first, close.second, {0}};
  }

  template <Tier, int N>
  static auto apply(Vec<float, N> x) {
    using V = Vec<float, N>;
    const auto& k = rows(__zorp_ssincos_data_avx2);
    const V a = x & k.absmask;
    const V y = fma(a, k.two_over_pi, k.shift);
    const V n = y - k.shift;
    V r = fma(n, k.pi_half1, a);
    r = fma(n, k.pi_half2, r);
    r = fma(n, k.pi_half3, r);
    Quadrant<N> reduced{bits(y), r};
    const auto large = compare<_CMP_NLT_UQ>(a, k.limit);
    if (any(large)) [[unlikely]] {
      const auto far = by_double(a, rows(k));
      reduced = {select(large, far.q, reduced.q), select(large, far.r, reduced.r)};
    }
    return in_quadrant(x ^ a, reduced, k);
  }

  template <Tier, int N>
  static auto apply(Vec<half, N> x) {
    using V = Vec<float, N>;
    const auto& k = rows(__zorp_hsincos_data);
    const auto magnitude = x & k.absmask;
    const V a = widen(magnitude);
    const V y = fma(a, k.inv_pi, k.shift);
    const V n = y - k.shift;
    V r = fnma(n, k.pi1, a);
    r = fnma(n, k.pi2, r);
    // 2^23 + floor(a/pi), and from the centre, 2^23 - 1/2: r = (floor(a/pi) + 1/2) pi - a.
    const V yc = fma<rz>(a, k.inv_pi, k.shift);
    const V m = yc - k.centre;
    V rc = fms(m, k.pi1, a);
    rc = fma(m, k.pi2, rc);
    const auto sine = x ^ magnitude ^ narrow(short_sine(r, y, k));
    return Results<Vec<half, N>, Vec<half, N>>{sine, narrow(short_sine(rc, yc, k))};
  }

 private:
  template <class V>
  struct Both {
    V r, rc;
  };
  /// Side by side, so that each row is loaded once and not kept.
  template <Tier tier, class V, class Block>
  static Both<V> sines(V r, V rc, const Block& k) {
    const V z = r * r, zc = rc * rc;
    Both<V> p{k.c1, k.c1};
    const auto next = [&](const Row<double>& row) {
      const V c = row;
      p = {fma(p.r, z, c), fma(p.rc, zc, c)};
    };
    next(k.c2), next(k.c3), next(k.c4);
    if constexpr (tier == Tier::standard) next(k.c5), next(k.c6), next(k.c7);
    return {fma(p.r * z, r, r), fma(p.rc * zc, rc, rc)};
  }

  template <int N>
  using SineCosine = Results<Vec<double, N>, Vec<double, N>>;
  template <Tier tier, int N, class Block>
  [[gnu::always_inline]] static SineCosine<N> near_zero(Vec<double, N> x, Vec<double, N> a,
                                                        const Block& k) {
    using V = Vec<double, N>;
    const V y = fma(a, k.inv_pi, k.shift);
    const V n = y - k.shift;
    const V parity = from_bits<double>(shift_left<63>(bits(y)));
    V r = fnma(n, k.pi1, a);
    r = fnma(n, k.pi2, r);
    // Where r is next to 0, pi3 may change its sign yet: rc is then next to pi/2 on either side.
    const V side = r & sign_mask<V>();
    const V m = n + (side ^ k.half);
    V rc = fnma(m, k.pi1, a);
    rc = fnma(m, k.pi2, rc);
    if constexpr (tier == Tier::standard) {
      r = fnma(n, k.pi3, r);
      rc = fnma(m, k.pi3, rc);
    }
    const auto [s, c] = sines<tier>(r, rc, k);
    const V sine = s ^ parity ^ (x ^ a);
    const V cosine = select(classify<zeros>(x), V(k.one), c ^ side ^ parity ^ sign_mask<V>());
    return {sine, cosine};
  }
  template <Tier tier, int N>
  static SineCosine<N> far_from_zero(Vec<double, N> x, Vec<double, N> a) {
    if constexpr (tier == Tier::standard) {
      const auto [sine, cosine] = by_circle(a, rows(__zorp_dsin_data_ha));
      return {x ^ a ^ sine, cosine};
    } else {
      return by_pieces(x);
    }
  }
  template <int N>
  static SineCosine<N> by_pieces(Vec<double, N> x) {
    if constexpr (x.paired) {
      const auto low = by_pieces(x.lo), high = by_pieces(x.hi);
      return {{low.first, high.first}, {low.second, high.second}};
    } else {
      return pieces_sincos(x);
    }
  }
  /// Of magnitudes of any size.
  template <int N>
  static SineCosine<N> by_circle(Vec<double, N> a, const CircleBlock<double>& k) {
    using V = Vec<double, N>;
    if constexpr (V::paired) {
      const auto low = by_circle(a.lo, k), high = by_circle(a.hi, k);
      return {{low.first, high.first}, {low.second, high.second}};
    } else {
      const TurnReduction<double, N> turn(a);
      const V z = turn.r * turn.r;
      const V s = sine_minus_angle(turn.r, z, k);
      const V c = cosine_minus_one(z, k);
      const auto at = [&](const Pattern<double>* from) {
        const CirclePoint<double, N> p(from, turn.step);
        const CircleSum<V> sum(p, turn.r);
        const V cosine = p.c_rest + p.c_power;
        const V d = fnma(p.s_high, turn.r, cosine);
        V l = fma(turn.rl, d, p.s_low);
        l = fma(s, cosine, l) + sum.lost_second(p, turn.r);
        l = fma(c, p.s_high, l) + sum.lost_first(p, turn.r);
        return sum.h + l;
      };
      return {at(&k.circle.entry[0]), at(&k.circle.entry[k.steps])};
    }
  }

  /// x = n pi/2 + r; the low two bits of q are n's.
  template <int N>
  struct Quadrant {
    Vec<int32_t, N> q;
    Vec<float, N> r;
  };
  /// Magnitudes from 2^23 on are multiples of 2^(8i), whose product with the upper bits of 2/pi is
  /// a multiple of four quadrants; smaller ones take the row of 2^23.
  template <int N>
  static Quadrant<N> by_double(Vec<float, N> a, const SincosFloatBlock& k) {
    using V = Vec<double, N>;
    if constexpr (a.paired) {
      const auto low = by_double(a.lo, k), high = by_double(a.hi, k);
      return {{low.q, high.q}, {low.r, high.r}};
    } else {
      const V d = to_double(a);
      const auto i = shift_right<3>(shift_right<52>(bits(max(d, k.floor))) - k.bias);
      const V h = lookup(k.high, i);
      const V p = d * h;
      V e = fms(h, d, p);
      const V t = p + k.large_shift;
      const V f = p - (t - k.large_shift);
      e = fma(d, lookup(k.low, i), e);
      return {low_words(bits(t)), to_float((f + e) * k.pi_half)};
    }
  }
  template <int N>
  static auto in_quadrant(Vec<float, N> sign, const Quadrant<N>& a, const SincosFloatBlock& k) {
    using V = Vec<float, N>;
    const V z = a.r * a.r;
    V s = fma(z, k.s3, k.s2);
    V c = fma(z, k.k3, k.k2);
    s = fma(s, z, k.s1);
    c = fma(c, z, k.k1);
    const V w = fma(s, z, k.s0);
    c = fma(c, z, k.one);
    s = fma(w, a.r, a.r);
    // q: sine, cosine of the quadrants 0 to 3 are s, c; c, -s; -s, -c; -c, s.
    const V odd = from_bits<float>(shift_left<31>(a.q));
    const V upper = from_bits<float>(shift_left<30>(a.q)) & sign_mask<V>();
    const auto swapped = is_negative(bits(odd));
    const V sine = select(swapped, c, s) ^ upper ^ sign;
    const V cosine = select(swapped, s, c) ^ upper ^ odd;
    return Results<V, V>{sine, cosine};
  }

  /// sin r, negated where the integer in the last bits of `shifted` is odd.
  template <class V>
  static V short_sine(V r, V shifted, const SincosHalfBlock& k) {
    const V z = r * r;
    const V p = fma(z, k.t2, k.t1);
    return fma(z * r, p, r) ^ from_bits<float>(shift_left<31>(bits(shifted)));
  }
};
using Sincosreg = Sincos;

}  // namespace zorp
