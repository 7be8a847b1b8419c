// The natural logarithm in extended arithmetic, with a relative error near 2^-64.
//
// The same ways as in own_log.h: next to 1 a short polynomial in f = x - 1; around it one whose
// terms f - f^2 / 2 + t3 f^3 are summed in two parts; elsewhere x = 2^k m and a table of
// reciprocals.
#pragma once

#include "special/gamma_tables.h"

namespace zorp {

/// ln x for positive finite x.
inline long double own_logl(long double x) {
  const Extended encoding = __builtin_bit_cast(Extended, x);
  // Sign, exponent and the 16 leading bits of the significand.
  const uint32_t key =
      static_cast<uint32_t>(encoding.sign_exponent << 16) | encoding.significand >> 48;
  const long double f = x - 1;
  if (key >= 0x3FFEFFFF && key <= 0x3FFF8000) {
    if (f == 0) return 0;
    // ln(1 + f) = f - 1/2 f^2 + b f^3 + c f^4 + a f^5 on [-2^-16, 2^-15]: relative error 2^-80.5
    constexpr Extended a = 0x3FFCCCCACCD25F7EF9AA_ext, b = 0x3FFDAAAAAAAAAAAC1552_ext,
                       c = 0xBFFCFFFFFFFFC004AE8A_ext;
    const long double s = f * f;
    return f + (((a * s + b) * s) * f + s * (c * s - 0.5L));
  }
  if (key >= 0x3FFEF800 && key <= 0x3FFF8800) {
    // ln(1 + f) = f (1 - f/2 + 0.333251953125 f^2 + q[6] f + ... + q[0] f^13 + p[6] f^2
    // + ... + p[0] f^14) on [-1/32, 1/16]: relative error 2^-80.3
    constexpr Extended p[] = {0x3FFADA3EB73F2509BDB7_ext, 0x3FFB9D86222D7A648AC4_ext,
                              0x3FFBBA2E9A1CE811D305_ext, 0x3FFBE38E38DDBC1754F0_ext,
                              0x3FFC9249249249A4A0C4_ext, 0x3FFCCCCCCCCCCCCCC236_ext,
                              0x3FF1AAAAAAAAAAAAADC6_ext};
    constexpr Extended q[] = {0xBFFB9033450A5189D630_ext, 0xBFFBAAAC2BCE12338B18_ext,
                              0xBFFBCCCCCC8103D7E06E_ext, 0xBFFBFFFFFFFFFF0A3715_ext,
                              0xBFFCAAAAAAAAAAAB8F55_ext, 0xBFFCFFFFFFFFFFFFFFEA_ext,
                              0xBFB49F28EA2D2DF7E646_ext};
    constexpr long double t3 = 0.333251953125L;
    // h: the upper 12 bits of f, so that its square hh is exact.
    const long double shifter = f * 0x1.8p52L;
    const long double h = (f + shifter) - shifter, l = f - h;
    const long double c = f * l + h * l;
    const long double hh = h * h, s = hh + c;
    const long double upper = hh * t3 - h / 2;
    const long double lower = ((f * horner(q, s) + s * horner(p, s)) + t3 * c) - l / 2;
    // f (1 + upper + lower), the large term last.
    const long double w = (upper + lower) * l + lower * h;
    const long double v = h + upper * h;
    return v + ((w + l) + ((h - v) + upper * h));
  }
  // ln(1 + w) = w + g[2] w^2 + e[2] w^3 + g[1] w^4 + e[1] w^5 + g[0] w^6 + e[0] w^7
  // on |w| <= 1.09/512: relative error 2^-69.2
  constexpr Extended e[] = {0x3FFC92497ECBBF12A224_ext, 0x3FFCCCCCCCCCB4796149_ext,
                            0x3FFDAAAAAAAAAAAAABEA_ext};
  constexpr Extended g[] = {0xBFFCAAAAFBDE6BC3DEDD_ext, 0xBFFCFFFFFFFFEFE6E52E_ext,
                            0xBFFE8000000000000041_ext};
  constexpr double ln2_high = 0.6931471806019545, ln2_low = -4.2009150726810846e-11;
  const int k = static_cast<int>(encoding.sign_exponent & 0x7FFF) - 16383;
  const long double m = Extended{encoding.significand, 16383};
  const int i = encoding.significand >> 55 & 0xFF;
  const long double mh = (m + 0x1.8p32L) - 0x1.8p32L, ml = m - mh;
  const long double r = __libm_rcp_table_256[i];
  const long double u = mh * r - 1, v = ml * r, w = u + v, s = w * w;
  const long double even = horner(g, s), odd = horner(e, s) * s;
  const long double high = from_bits(__libm_logl_table_256[i][0]);
  const long double low = from_bits(__libm_logl_table_256[i][1]);
  return ((k * static_cast<long double>(ln2_high) + high) + u) +
         ((v + (s * even + w * odd)) + (k * static_cast<long double>(ln2_low) + low));
}

}  // namespace zorp
