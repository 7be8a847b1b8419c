// Large angles in the reduced tiers of double: sine and cosine in plain double arithmetic, every
// operation rounded by itself.
//
// x is reduced to a multiple of pi/2 and a pair rh + rl: up to 2^30 by taking the multiple off in
// five parts of pi/4, from there on by the slices of 4/pi that matter for x's exponent. The pair is
// reduced to a multiple of pi/32 and a rest r, and the circle at that multiple with two polynomials
// gives the sine.
#pragma once

#include "trig/reduction.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

/// 2^200 x 4/pi in slices of 25 bits, the first 48 from each of the first 9 on: one index serves
/// for nine in a row.
struct SlicesTable {
  Table<double, 48> from[9];
};
/// Sine and cosine of j pi/32 on half a circle; the other half is its negative.
struct HalfCircle {
  Table<double, 32> c_rest, s_high, s_low, c_power;
};
struct PiecesBlock {
  Row<double> four_over_pi, integer_shift;  // 2^52: the last bits of a sum are those of an integer
  Row<double> q0, q1, q2, q3, q4;           // pi/4 in five parts
  Row<double> least_parts, least_slices;    // what these reductions serve
  Row<double> one, minus_one;
  Row<int64_t> scale;      // 200 in the place of the exponent
  Row<double> upper_half;  // mask of a significand
  Row<int64_t> per_exponent, exponent_origin, slice_bits, turn_origin, integer_exponent;
  Row<double> split, pi_4_high, pi_4_low;
  Row<double> inverse_step, shift, step1, step2, step3;  // steps of pi/32
  Row<double> s1, s2, s3, s4, k1, k2, k3, k4;            // of the series of sine and cosine
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const PiecesBlock __zorp_dsin_pieces_data;
extern const SlicesTable __dsin_g_ReductionTab;
extern const HalfCircle __dsin_g_CoutTab;
}
#pragma GCC visibility pop

/// Entry index of the table, by permutations: they take a third of a gather's time.
template <int N>
inline Vec<double, N> lookup(const Table<double, 48>& table, Vec<int64_t, N> index) {
  if constexpr (N == 1) {
    return gather(table.entry, shift_left<3>(index));
  } else {
    const auto rows_from = [&](int i) {
      return detail::lookup_two_rows<double>(table.entry + i, index);
    };
    const Mask<N> from_16 = is_negative(shift_left<63 - 4>(index));
    const Mask<N> from_32 = is_negative(shift_left<63 - 5>(index));
    return select(from_32, rows_from(32), select(from_16, rows_from(16), rows_from(0)));
  }
}

// ---- The reduction -----------------------------------------------------------------------------

/// |x| = quadrant pi/2 + rh + rl. The low bits of `quadrant` count.
template <int N>
struct PiecesReduction {
  Vec<double, N> rh, rl;
  Vec<int64_t, N> quadrant;
};

/// v where the integer is odd, else +0.
template <int N>
inline Vec<double, N> where_odd(Vec<int64_t, N> integer, Vec<double, N> v) {
  return v & from_bits<double>(shift_right_signed<63>(shift_left<63>(integer)));
}

/// a < 2^30
template <int N>
[[gnu::always_inline]] inline PiecesReduction<N> reduce_by_parts(Vec<double, N> a,
                                                                 const PiecesBlock& k) {
  using V = Vec<double, N>;
  using Bits = Vec<int64_t, N>;
  // The octant is the floor of t.
  const V t = a * k.four_over_pi;
  const V shifted = add<rz>(t, k.integer_shift);
  const Bits octant = bits(shifted);
  const V n = (shifted - k.integer_shift) + where_odd<N>(octant, k.one);  // even
  const V u = a - n * k.q0;
  const V p1 = n * k.q1, p2 = n * k.q2;
  const V b = u - p1;
  const V c = b - p2;
  V e = ((b - c) - p2) + ((u - b) - p1);
  const V d = c + e;
  e = (c - d) + e;
  const V t3 = n * k.q3, t4 = n * k.q4;
  const V h = d - t3;
  const V l = (((d - h) - t3) + e) - t4;
  const V rh = l + h;
  return {rh, (h - rh) + l, shift_right<1>(octant + constant<Bits>(1))};
}

/// A sum that gathers what its additions lose.
template <class V>
struct GatheringSum {
  V s, lost;
  void add(V v) {
    const V sum = s + v;
    lost = ((s - sum) + v) + lost;
    s = sum;
  }
};

/// a >= 2^30. The slices are scaled by 2^200 and a by 2^-200, and a is cut in two, so that every
/// product with a slice is exact.
template <int N>
[[gnu::always_inline]] inline PiecesReduction<N> reduce_by_slices(Vec<double, N> a,
                                                                  const PiecesBlock& k) {
  using V = Vec<double, N>;
  using Bits = Vec<int64_t, N>;
  const auto without_low_bits = [&](V v, Bits count) {
    return v & from_bits<double>(shift_left_by(constant<Bits>(~uint64_t{0}), count));
  };
  const Bits exponent = shift_right<52>(bits(a));
  const V scaled = from_bits<double>(bits(a) - k.scale);
  const V xh = scaled & k.upper_half;
  const V xl = scaled - xh;
  // (exponent - 1053) / 25, by a product of 2^21 / 25.
  const Bits first =
      shift_right<21>(mul_low_words(exponent, Bits(k.per_exponent)) - k.exponent_origin);
  const auto slice = [&](int i) { return lookup(__dsin_g_ReductionTab.from[i], first); };
  const V t1 = slice(1), t2 = slice(2), t3 = slice(3);

  const V first_product = slice(0) * xl, second_product = t1 * xh;
  const V both = first_product + second_product;
  GatheringSum<V> sum{both, (first_product - both) + second_product};
  // Whole turns.
  const Bits below_turn = mul_low_words(first, Bits(k.slice_bits)) - (exponent - k.turn_origin);
  sum.s = sum.s - without_low_bits(sum.s + sum.lost, below_turn);
  sum.add(t1 * xl);
  sum.add(t2 * xh);

  // The octant is the floor of an estimate; an even one is taken off, or an odd one and 1 more.
  const V w = ((sum.s + sum.lost) + t2 * xl) + t3 * xh;
  const V floor_w = without_low_bits(w, Bits(k.integer_exponent) - shift_right<52>(bits(w)));
  const Bits octant = bits(floor_w + k.integer_shift);
  const V v = sum.s - floor_w;
  const V v1 = v + sum.lost;
  sum.lost = (v - v1) + sum.lost;
  sum.s = v1 + where_odd<N>(octant, k.minus_one);

  sum.add(t2 * xl);
  sum.add(t3 * xh);
  sum.add(t3 * xl);
  const V t4 = slice(4);
  sum.add(t4 * xh);
  sum.add(t4 * xl);
  const V t5 = slice(5), t6 = slice(6);
  sum.add(t5 * xh);
  sum.add(t5 * xl + t6 * xh);
  const V t7 = slice(7);
  sum.add(t6 * xl + t7 * xh);
  const V g = t7 * xl + slice(8) * xh;

  // From parts of pi/4 to radians, with f in two parts.
  const V f = sum.s + g;
  const V shifted = f * k.split;
  const V fh = (f + shifted) - shifted;
  const V fl = ((sum.s - fh) + g) + sum.lost;
  const V p = fh * k.pi_4_high;
  const V q = fl * k.pi_4_high + (fh + fl) * k.pi_4_low;
  const V rh = p + q;
  return {rh, (p - rh) + q, shift_right<1>(octant + constant<Bits>(1))};
}

/// Lanes below 2^23, infinities and NaNs give some value.
template <int N>
[[gnu::always_inline]] inline PiecesReduction<N> reduce_by_pieces(Vec<double, N> a,
                                                                  const PiecesBlock& k) {
  const Mask<N> sliced = compare<_CMP_GE_OQ>(a, k.least_slices);
  const Mask<N> parted = compare<_CMP_GE_OQ>(a, k.least_parts) ^ sliced;
  if (!any(sliced)) return reduce_by_parts(a, k);
  // Smaller numbers have no slices, and their products could be subnormal, which takes long.
  const PiecesReduction<N> slices = reduce_by_slices(max(a, k.least_slices), k);
  if (!any(parted)) return slices;
  const PiecesReduction<N> parts = reduce_by_parts(a, k);
  return {select(parted, parts.rh, slices.rh), select(parted, parts.rl, slices.rl),
          select(parted, parts.quadrant, slices.quadrant)};
}

// ---- Sine and cosine ---------------------------------------------------------------------------

/// x = step pi/32 + r + e, for |x| from 2^23 on.
template <int N>
class PiecesAngle {
  using V = Vec<double, N>;
  using Bits = Vec<int64_t, N>;

 public:
  [[gnu::always_inline]] explicit PiecesAngle(V x) {
    const auto& k = rows(__zorp_dsin_pieces_data);
    const V a = magnitude(x);
    const V sign = x ^ a;
    const PiecesReduction<N> reduced = reduce_by_pieces(a, k);
    const V rh = reduced.rh ^ sign, rl = reduced.rl ^ sign;

    const V y = rh * k.inverse_step + k.shift;
    const V n = y - k.shift;
    const Bits negative = shift_right_signed<63>(bits(x));
    step_ = bits(y) + shift_left<4>((reduced.quadrant ^ negative) - negative);
    const V u = rh - n * k.step1;
    const V m = n * k.step2;
    r_ = u - m;
    e_ = (((u - r_) - m) - n * k.step3) + rl;
    const V z = r_ * r_;
    s_ = (((z * k.s4 + k.s3) * z + k.s2) * z + k.s1) * z * r_;
    c_ = (((z * k.k4 + k.k3) * z + k.k2) * z + k.k1) * z;
  }

  [[gnu::always_inline]] V sine() const { return at(step_); }
  [[gnu::always_inline]] V cosine() const { return at(step_ + constant<Bits>(16)); }

 private:
  Bits step_;
  V r_, e_, s_, c_;  // s: sin r - r, c: cos r - 1

  [[gnu::always_inline]] V at(Bits step) const {
    const V other_half = from_bits<double>(shift_left<64 - 6>(step)) & sign_mask<V>();
    const auto at_step = [&](const Table<double, 32>& t) { return lookup(t, step) ^ other_half; };
    const HalfCircle& circle = __dsin_g_CoutTab;
    const V c_rest = at_step(circle.c_rest), s_high = at_step(circle.s_high);
    const V s_low = at_step(circle.s_low), c_power = at_step(circle.c_power);
    const V cosine = c_rest + c_power;
    const V d = (cosine - r_ * s_high) * e_ + s_low;
    const V power = c_power * r_;
    const V sum = s_high + power;
    const V rest = c_rest * r_;
    const V h = rest + sum;
    return ((((sum - h) + rest) + (((s_high - sum) + power) + d)) + s_ * cosine + c_ * s_high) + h;
  }
};

// One copy for all kernels, but where the results are two: they would need a place on the stack.

/// For |x| from 2^23 on.
template <int N>
[[gnu::noinline]] Vec<double, N> pieces_sine(Vec<double, N> x) {
  return PiecesAngle(x).sine();
}
template <int N>
[[gnu::noinline]] Vec<double, N> pieces_cosine(Vec<double, N> x) {
  return PiecesAngle(x).cosine();
}
template <int N>
inline Results<Vec<double, N>, Vec<double, N>> pieces_sincos(Vec<double, N> x) {
  const PiecesAngle angle(x);
  return {angle.sine(), angle.cosine()};
}

}  // namespace zorp
