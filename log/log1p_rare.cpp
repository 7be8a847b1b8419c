// log1p of single operands for which the fast paths give nothing: x <= -1, infinities, NaNs, and
// in float, for the faster tier, x from 2^127 up. Every operation rounds by itself.
#include "frame/scalar.h"
#include "log/log1p.h"

namespace zorp {
namespace {

/// log(s) of a sum s = 1 + x that is zero, negative, infinite or a NaN.
template <class T>
T log_of_special(T s) {
  if (s == 0) return from_bits(Format<T>::sign | Format<T>::infinity);
  if (s < 0) return from_bits(Format<T>::infinity | Format<T>::quiet_bit);
  return s * s;
}

/// log(s) of a normal s: s = 2^e m, m = (1 + w) / r with r from the table for m to six bits. m is
/// split at 2^-10, so that the product of its upper part t and r is exact, and the sum of
/// exponent, table and that part of w is carried in two parts.
float log_of_large(float s) {
  const float e = static_cast<float>(static_cast<int>(bits(s) >> 23) - 127);
  const float m = from_bits((bits(s) & 0x007FFFFF) | 0x3F800000);
  const uint32_t* entry = &__slog1p_g_CoutTab.entry[3 * (bits(131073 + m) & 127)];
  const float r = from_bits(entry[0]);
  const float log_high = from_bits(entry[1]), log_low = from_bits(entry[2]);

  const float high = e * from_bits(uint32_t{0x3F317200});
  const float x = high + log_high;
  const float low = (e * from_bits(uint32_t{0x35BFBE8E}) + log_low) + (log_high - (x - high));

  const float t = (8192 + m) - 8192;
  const float v = (m - t) * r;
  const float u = t * r - 1;
  const float z = u + x;
  const float w = u + v;
  const float rest = low + v;
  // ln(1 + w) = w + c2 w^2 + ... + c8 w^8 on |w| <= 1.5/128: relative error 2^-39.4
  constexpr float c2 = from_bits(uint32_t{0xBF000000}), c3 = from_bits(uint32_t{0x3EAAAAAB}),
                  c4 = from_bits(uint32_t{0xBE800000}), c5 = from_bits(uint32_t{0x3E4CCCCD}),
                  c6 = from_bits(uint32_t{0xBE2AAAAB}), c7 = from_bits(uint32_t{0x3E124E01}),
                  c8 = from_bits(uint32_t{0xBE0005A0});
  const float p = ((((((c8 * w + c7) * w + c6) * w + c5) * w + c4) * w + c3) * w + c2) * w * w;
  const float sum = z + rest;
  return sum + ((p + (v - (rest - low))) + (rest - (sum - z)));
}

}  // namespace

extern "C" {

void __zorp_dlog1p_cout_rare(const double* x, double* result) { *result = log_of_special(*x + 1); }
void __zorp_slog1p_cout_rare(const float* x, float* result) {
  const float s = *x + 1;
  *result = s > 0 && s < from_bits(Format<float>::infinity) ? log_of_large(s) : log_of_special(s);
}

}  // extern "C"
}  // namespace zorp
