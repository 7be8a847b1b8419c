// The reduction of large angles, for every family that needs one: x less a multiple of a 1/n turn,
// by the bits of 1/(2 pi) that matter for x's exponent, and sine and cosine by a table of the
// circle.
//
// x = m 2^(e-b) with an integer m. Of the infinite expansion of 1/(2 pi), the bits of weight
// 2^(b-e) and above only add whole turns to x/(2 pi), and bits far below don't count. What remains
// for each e is a row of three words W: x/(2 pi) = m W / 2^(bits of W), modulo 1. The product is
// formed in integers of half a word.
#pragma once

#include "frame/kernel.h"
#include "frame/scalar.h"

namespace zorp {

// ---- Constant blocks ---------------------------------------------------------------------------

template <class T>
struct ReductionBlock {
  Table<Encoding<T>, 3 << Format<T>::exponent_bits> words;  // by exponent, upper words first
  Row<Encoding<T>> exponent, fraction, leading_bit, one;
  Row<T> step_shift;   // the unit in the last place of the sum is 1/n turn
  Row<T> middle, low;  // weights of the lower pieces of the fraction
  Row<T> two_pi1, two_pi2;
};

/// Sine and cosine of j/n turn, four fields an entry, and a quarter of a turn more than a circle:
/// cosines are read as sines from a quarter further on. The cosine is held as a power of two and
/// the rest, as r times a power of two is exact. p: sin r - r over r^3; q: cos r - 1 over r^2.
template <class T>
struct CircleBlock;
template <>
struct CircleBlock<double> {
  static constexpr int steps = 512;
  Table<double, 4 * (steps + steps / 4)> circle;
  Row<double> p1, p2, q1, q2, q3;
};
template <>
struct CircleBlock<float> {
  static constexpr int steps = 256;
  Table<float, 4 * (steps + steps / 4)> circle;
  Row<float> p1, p2, q1, q2;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const ReductionBlock<double> __zorp_dsin_reduction_data;
extern const ReductionBlock<float> __zorp_ssin_reduction_data;
extern const CircleBlock<double> __zorp_dsin_data_ha;
extern const CircleBlock<float> __zorp_scircle_data;
}
#pragma GCC visibility pop

// ---- The reduction -----------------------------------------------------------------------------

/// x = j/n turn + r + rl, modulo whole turns, |r| <= 1/(2n) turn. The low bits of `step` are j. For
/// negative x they count down, and r and rl have their signs: no sign is to be applied afterwards.
/// Infinities and NaNs give some value.
template <class T, int N>
struct TurnReduction {
  using V = Vec<T, N>;
  using Bits = Vec<Encoding<T>, N>;
  Bits step;
  V r, rl;

  explicit TurnReduction(Vec<T, N> x) {
    const auto& k = rows(block());
    const Bits sign = bits(x) & bits(sign_mask<V>());
    const auto [upper, lower] = turn_fraction(x, k);

    // The fraction f in three pieces, each brought to its weight by an exact subtraction: v = 1 + f
    // cut to the size of a significand, the bits that follow, and those that follow these.
    constexpr int to_middle = 2 * fraction_bits - word_bits;
    const Bits middle_bits =
        (shift_left<to_middle>(upper) & k.fraction) | shift_right<word_bits - to_middle>(lower);
    const Bits low_bits = shift_left<fraction_bits + to_middle - word_bits>(lower) & k.fraction;
    const V v = from_bits<T>(shift_right<word_bits - fraction_bits>(upper) | k.one | sign);
    const V middle = weighted(middle_bits, k.middle, sign);
    const V low = weighted(low_bits, k.low, sign);

    const V shifted = v + k.step_shift;
    step = bits(shifted);
    const V rest = v - (shifted - k.step_shift);
    const V f = rest + middle;
    const V fl = (middle + (rest - f)) + low;

    r = f * k.two_pi1;
    rl = fms(f, k.two_pi1, r);
    rl = fma(f, k.two_pi2, rl);
    rl = fma(fl, k.two_pi1, rl);
  }

 private:
  static constexpr int word_bits = 8 * sizeof(T), limb_bits = word_bits / 2;
  static constexpr int fraction_bits = Format<T>::fraction_bits;

  static const auto& block() {
    if constexpr (same<T, double>)
      return __zorp_dsin_reduction_data;
    else
      return __zorp_ssin_reduction_data;
  }

  struct Fraction {
    Bits upper, lower;
  };
  static Bits low_limb(Bits v) { return v & constant<Bits>((uint64_t{1} << limb_bits) - 1); }
  static Bits high_limb(Bits v) { return shift_right<limb_bits>(v); }
  /// The product of the low limbs.
  static Bits product(Bits a, Bits b) {
    if constexpr (same<T, double>)
      return mul_low_words(a, b);
    else
      return low_limb(a) * low_limb(b);
  }

  /// The upper two words of m W, modulo whole turns. W has six limbs a5 to a0, m two. a0 b0 and the
  /// lower halves of a1 b0 and a0 b1 are left out: less than three units in the last place. No
  /// number is closer than 2^-64 (float: 2^-32) turns to a quarter: as many good bits are left.
  static Fraction turn_fraction(V x, const ReductionBlock<T>& k) {
    const Bits e = bits(x) & k.exponent;
    constexpr int log_bytes = same<T, double> ? 3 : 2;  // of a word
    const Bits offset =
        shift_right<fraction_bits - log_bytes>(e) + shift_right<fraction_bits - log_bytes - 1>(e);
    const Bits w2 = bits(gather(&k.words.entry[0], offset));
    const Bits w1 = bits(gather(&k.words.entry[1], offset));
    const Bits w0 = bits(gather(&k.words.entry[2], offset));
    const Bits a5 = high_limb(w2), a4 = w2, a3 = high_limb(w1), a2 = w1, a1 = high_limb(w0),
               a0 = w0;
    const Bits b0 = (bits(x) & k.fraction) | k.leading_bit, b1 = high_limb(b0);

    const Bits a1b0 = product(a1, b0), a2b0 = product(a2, b0);
    const Bits a3b0 = product(a3, b0), a4b0 = product(a4, b0);
    const Bits d0 = low_limb(a2b0) + product(a1, b1) + high_limb(a1b0) + high_limb(product(a0, b1));
    const Bits d1 = high_limb(a2b0) + product(a2, b1) + low_limb(a3b0) + high_limb(d0);
    const Bits d2 = low_limb(a4b0) + product(a3, b1) + high_limb(a3b0) + high_limb(d1);
    const Bits d3 = high_limb(a4b0) + product(a5, b0) + product(a4, b1);
    return {d2 + shift_left<limb_bits>(d3), shift_left<limb_bits>(d1) | low_limb(d0)};
  }

  /// The digits as a fraction of the weight, with the sign of x.
  static V weighted(Bits digits, const Row<T>& weight, Bits sign) {
    const V base = from_bits<T>(bits(V(weight)) | sign);
    return (from_bits<T>(digits) | base) - base;
  }
};

// ---- Sine and cosine by the circle -------------------------------------------------------------

/// The entry of a circle at `step`, modulo n; `from` is the circle or a quarter of it further on.
template <class T, int N>
struct CirclePoint {
  using V = Vec<T, N>;
  V c_rest, c_power, s_high, s_low;

  CirclePoint(const Pattern<T>* from, Vec<Encoding<T>, N> step) {
    using Bits = Vec<Encoding<T>, N>;
    constexpr int log_entry_bytes = same<T, double> ? 5 : 4;
    constexpr int circle_bytes = CircleBlock<T>::steps << log_entry_bytes;
    const Bits within = constant<Bits>(circle_bytes - (1 << log_entry_bytes));
    const Bits offset = within & shift_left<log_entry_bytes>(step);
    c_rest = gather(from, offset);
    if constexpr (same<T, double>) {
      c_power = gather(from + 1, offset);
      s_high = gather(from + 2, offset);
      s_low = gather(from + 3, offset);
    } else {
      s_high = gather(from + 1, offset);
      s_low = gather(from + 2, offset);
      c_power = gather(from + 3, offset);
    }
  }
};

/// sin(B + r) = h + what was lost, for B at the point: s_high + c r in two sums, the larger first.
template <class V>
struct CircleSum {
  V b, h;
  template <class Point>
  CircleSum(const Point& p, V r) : b(fma(p.c_power, r, p.s_high)), h(fma(r, p.c_rest, b)) {}

  template <class Point>
  V lost_first(const Point& p, V r) const {
    return fma(r, p.c_power, p.s_high - b);
  }
  template <class Point>
  V lost_second(const Point& p, V r) const {
    return fma(p.c_rest, r, b - h);
  }
};

/// sin r - r
template <class T, int N>
inline Vec<T, N> sine_minus_angle(Vec<T, N> r, Vec<T, N> z, const CircleBlock<T>& k) {
  return fma(z, k.p2, k.p1) * z * r;
}
/// cos r - 1
template <class T, int N>
inline Vec<T, N> cosine_minus_one(Vec<T, N> z, const CircleBlock<T>& k) {
  if constexpr (same<T, double>)
    return fma(z, fma(z, k.q3, k.q2), k.q1) * z;
  else
    return fma(z, k.q2, k.q1) * z;
}

/// sin(B + r + rl). d, the derivative of the sine in B + r, also multiplies sin r - r in float.
template <class T, int N>
inline Vec<T, N> circle_sine(const Pattern<T>* from, const TurnReduction<T, N>& a,
                             const CircleBlock<T>& k) {
  using V = Vec<T, N>;
  const CirclePoint<T, N> p(from, a.step);
  const V z = a.r * a.r;
  const CircleSum<V> sum(p, a.r);
  const V lost = sum.lost_second(p, a.r) + sum.lost_first(p, a.r);
  const V s = sine_minus_angle(a.r, z, k);
  const V c = cosine_minus_one(z, k);
  const V cosine = p.c_rest + p.c_power;
  const V d = fnma(p.s_high, a.r, cosine);
  V l = fma(a.rl, d, p.s_low), m;
  if constexpr (same<T, double>) {
    m = fma(s, cosine, lost);
    m = fma(c, p.s_high, m);
  } else {
    l = fma(p.s_high, c, l);
    m = fma(d, s, lost);
  }
  return sum.h + (l + m);
}

/// f of x, of a pair one half after the other: a second path needs many registers.
template <class V, class F>
[[gnu::always_inline]] inline V by_halves(V x, F f) {
  if constexpr (V::paired)
    return V(f(x.lo), f(x.hi));
  else
    return f(x);
}

/// The sine and the cosine of large x by the circle; x may be of any size.
template <class T, int N>
inline Vec<T, N> large_sine(Vec<T, N> x, const CircleBlock<T>& k) {
  return by_halves(
      x, [&](auto half) { return circle_sine(&k.circle.entry[0], TurnReduction(half), k); });
}
template <class T, int N>
inline Vec<T, N> large_cosine(Vec<T, N> x, const CircleBlock<T>& k) {
  return by_halves(
      x, [&](auto half) { return circle_sine(&k.circle.entry[k.steps], TurnReduction(half), k); });
}

}  // namespace zorp
