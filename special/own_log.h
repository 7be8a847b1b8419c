// The natural logarithm of one number in double arithmetic: what the gamma functions of float and
// half take it from.
//
// Next to 1 a polynomial in f = x - 1, with the terms f and f^2 / 2 in two parts each; elsewhere
// x = 2^k m, and r from a table of reciprocals makes m r - 1 = w small:
// ln x = k ln 2 - ln r + ln(1 + w).
#pragma once

#include "special/arithmetic.h"
#include "special/gamma_tables.h"

namespace zorp {

/// v without the low half of its encoding: products of two such are exact.
inline double upper_half(double v) { return from_bits(bits(v) & 0xFFFFFFFF00000000); }

/// ln x for positive finite x.
template <class Arithmetic>
double own_log(double x) {
  constexpr auto mul_add = Arithmetic::multiply_add;
  const uint32_t high_word = bits(x) >> 32;
  if (high_word >= 0x3FEF8000 && high_word < 0x3FF04000) {
    const double f = x - 1, s = f * f;
    if (high_word >= 0x3FEFFF00 && high_word < 0x3FF00080) {
      if (f == 0) return 0;
      const double odd = mul_add(0.20000000372548288, s, 1.0 / 3);
      const double even = mul_add(-0.2500000031044086, s, -0.5);
      return mul_add(mul_add(odd, s, even * f), f, f);
    }
    // f^2 = g + e with f = fh + fl.
    const double fh = upper_half(f), fl = f - fh;
    const double g = upper_half(fh * fh);
    const double e = mul_add(fl, fh, (fl + fh) * fl) + mul_add(fh, fh, -g);
    double odd = mul_add(0.11116661653512257, s, 0.14285713099855774);
    odd = mul_add(odd, s, 0.20000000000103405);
    odd = mul_add(odd, s, 1.0 / 3);
    double even = mul_add(-0.10006105984234723, s, -0.12499998353772789);
    even = mul_add(even, s, -0.16666666666863844);
    even = mul_add(even, s, -0.2499999999999999);
    const double p = mul_add(mul_add(odd, f, even * s), s, fl);
    return mul_add(-0.5, e, p) + mul_add(-0.5, g, fh);
  }
  int k = 0;
  if (high_word < 0x00100000) {
    x *= 0x1p55;
    k = -55;
  }
  k += static_cast<int>(bits(x) >> 52) - 1023;
  const double m = from_bits((bits(x) & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000);
  const int i = bits(m) >> 44 & 0xFF;
  const double r = __libm_rcp_table_256[i];
  const double m1 = upper_half(m), m2 = m - m1;
  const double u = mul_add(m1, r, -1), v = m2 * r, w = u + v;
  const double w2 = w * w;
  double even = mul_add(-0.1666678766814359, w2, -0.2499999999965227);
  even = mul_add(even, w2, -0.5);
  const double odd = mul_add(0.20000103714740713, w2, 0.33333333333145093);
  const double p = mul_add(even, w2, odd * (w2 * w));
  constexpr double ln2_high = 0.6931471803691238, ln2_low = 1.9082149292705877e-10;
  const double low = from_bits(__libm_log_table_256[i][0]);
  const double high = from_bits(__libm_log_table_256[i][1]);
  return (mul_add(k, ln2_high, high) + u) + (mul_add(k, ln2_low, low) + v + p);
}

}  // namespace zorp
