// The reductions of a logarithm's argument, for every family that needs one: x is split into
// a power of two, whose logarithm is an integer, and a factor near 1.
//
// Zero, negative, infinite and NaN arguments pass through without a test. The exponent of a zero is
// -infinity and that of an infinity +infinity, and in both the factor is 1; the significand of a
// negative number is the default NaN and that of a NaN the NaN itself, quieted. The arithmetic that
// follows hands all this on to the result.
#pragma once

#include "frame/kernel.h"

namespace zorp {

/// Of the element's encoding.
template <class V>
inline constexpr int fraction_bits = same<typename V::Element, double> ? 52 : 23;

/// x = 2^e (1 + r) / c', |r| <= 2^-bits or hardly more. c is the reciprocal of the
/// significand in [1, 2), rounded to a multiple of 2^-bits in [1/2, 1]; c' is c, or 2 c below 3/4,
/// which counts into the next binade: so x just below 1 has e = 0 and c' = 1, as x just above 1,
/// and nothing cancels there. The top of c's fraction indexes a table of 2^(bits-1) values -log c'.
template <int bits_of_c, class V>
struct ReciprocalReduction {
  V c, e, r;
  decltype(bits(V())) index;

  template <class Block>
  ReciprocalReduction(V x, const Block& k) {
    const V m = significand<0x08>(x);
    c = round_scale<bits_of_c << 4 | 0x08>(reciprocal14(m));
    e = add_where(compare<_CMP_LT_OQ>(c, k.three_quarters), exponent(x), k.one);
    r = fms(m, c, k.one);  // exact
    index = shift_right<fraction_bits<V> - (bits_of_c - 1)>(bits(c));
  }
};

/// The same by the significand in [1/2, 1), so that c is a multiple of 2^-bits in [1, 2]: |r| is
/// half as large or hardly more, and the table has 2^bits values.
template <int bits_of_c, class V>
struct FineReciprocalReduction {
  V e, r;
  decltype(bits(V())) index;

  template <class Block>
  FineReciprocalReduction(V x, const Block& k) {
    const V m = significand<0x0A>(x);
    const V c = round_scale<bits_of_c << 4 | 0x08>(reciprocal14(m));
    e = add_where(compare<_CMP_LT_OQ>(c, k.three_halves), exponent(x), k.one);
    r = fms(m, c, k.one);  // exact
    index = shift_right<fraction_bits<V> - bits_of_c>(bits(c));
  }
};

/// Float: x = 2^d (1 + r) 2 / c', |r| <= 2^-bits or hardly more. c is the reciprocal of the
/// significand in [1/2, 1), rounded to a multiple of 2^-bits in [1, 2]; c' in [1, 2) is c without
/// its exponent, which went into d. The top of c's fraction indexes a table of 2^bits values
/// log 2 - log c'.
template <int bits_of_c, class V>
struct UpperReciprocalReduction {
  V d, r;
  decltype(bits(V())) index;

  template <class Block>
  UpperReciprocalReduction(V x, const Block& k) {
    const V m = significand<0x0A>(x);
    const V c = round_scale<bits_of_c << 4 | 0x08>(reciprocal14(m));
    d = exponent(x) - exponent(c);
    r = fms(c, m, k.one);
    index = shift_right<23 - bits_of_c>(bits(c));
  }
};

/// c = 1/x, rounded to bits_of_c fraction bits by an integer addition that carries into the
/// exponent: x = (1 + r) / c, whatever the magnitude of x. The fraction of c indexes a table.
template <int bits_of_c, class V>
struct RoundedReciprocal {
  V c;
  decltype(bits(V())) index;

  template <class Block>
  RoundedReciprocal(V x, const Block& k) {
    const auto encoding = (bits(reciprocal14(x)) + k.round) & k.mask;
    c = from_bits<typename V::Element>(encoding);
    index = shift_right<(same<typename V::Element, double> ? 52 : 23) - bits_of_c>(encoding);
  }
};

/// x = 2^d m, m = 1 + z in [3/4, 3/2): z keeps its relative precision on both sides of 1.
template <class V>
struct CentredReduction {
  V d, z;
  decltype(bits(V())) encoding;  // of m; its top fraction bits tell m's interval

  template <class Block>
  CentredReduction(V x, const Block& k) {
    const V m = significand<0x0B>(x);
    encoding = bits(m);
    z = m - k.one;  // exact
    d = exponent(x) - exponent(m);
  }
};

/// h - s for the rounded sum s = h + r: minus the part of r that s holds, exactly. Where x is zero
/// or infinite, h and s are infinite and the difference is set to zero.
template <class V>
inline V minus_held_part(V x, V h, V s) {
  return select(classify<0x1E>(x), constant<V>(0), h - s);
}

}  // namespace zorp
