// fmod, remainder and remquo of single pairs, by division of the significands as integers.
#include "exact/remainder.h"
#include "frame/scalar.h"

namespace zorp {
namespace {

/// significand x 2^exponent, up to a factor that all numbers of the format share. The exponent is
/// the encoding's field, that of subnormals 1.
struct Scaled {
  uint64_t significand;
  int exponent;
};

template <class T>
Scaled unpack(Pattern<T> magnitude) {
  using F = Format<T>;
  const int field = magnitude >> F::fraction_bits;
  if (field == 0) return {magnitude, 1};
  return {(magnitude & (F::implicit_bit - 1u)) | F::implicit_bit, field};
}

/// The number's encoding, exactly: the leading one goes to its place, or as far as the exponent
/// reaches.
template <class T>
Pattern<T> pack(Scaled v) {
  constexpr int fraction_bits = Format<T>::fraction_bits;
  if (v.significand == 0) return 0;
  const int missing = __builtin_clzll(v.significand) - (63 - fraction_bits);
  const int shift = missing < v.exponent ? missing : v.exponent - 1;
  return static_cast<Pattern<T>>((v.significand << shift) +
                                 (uint64_t(v.exponent - 1 - shift) << fraction_bits));
}

struct Division {
  uint64_t quotient, rest;  // the quotient modulo 2^64
};

/// a 2^n / b, up to 63 bits of the quotient at a time.
Division divide(uint64_t a, int n, uint64_t b) {
  Division d = {a / b, a % b};
  while (n > 0) {
    const int step = n < 63 ? n : 63;
    const uint64_t high = d.rest >> (64 - step), low = d.rest << step;
    // The rest is below b, so the quotient fits.
    uint64_t digits;
    asm("divq %4" : "=a"(digits), "=d"(d.rest) : "a"(low), "d"(high), "rm"(b) : "cc");
    d.quotient = d.quotient << step | digits;
    n -= step;
  }
  return d;
}

template <class T>
T fmod(T x, T y) {
  using F = Format<T>;
  if (is_nan(x)) return quieted(x);
  if (is_nan(y)) return quieted(y);
  const Pattern<T> ax = magnitude_bits(x), ay = magnitude_bits(y);
  if (ay == 0 || ax == F::infinity) return from_bits(Pattern<T>(F::infinity | F::quiet_bit));
  if (ax < ay) return x;
  const Scaled a = unpack<T>(ax), b = unpack<T>(ay);
  const uint64_t rest = divide(a.significand, a.exponent - b.exponent, b.significand).rest;
  return from_bits(Pattern<T>(sign_bits(x) | pack<T>({rest, b.exponent})));
}

/// 0/0 as the processor makes it in double, a positive NaN in the other types.
template <class T>
T default_nan() {
  using F = Format<T>;
  return from_bits(Pattern<T>((same<T, double> ? F::sign : 0) | F::infinity | F::quiet_bit));
}

/// The remainder by the nearest quotient, and the sign and the low 31 bits of that.
template <class T>
T remquo(T x, T y, int32_t* quotient) {
  using F = Format<T>;
  *quotient = 0;
  if (is_nan(x)) return quieted(x);
  if (is_nan(y)) return quieted(y);
  const Pattern<T> ax = magnitude_bits(x), ay = magnitude_bits(y);
  if (ay == 0 || ax == F::infinity) return default_nan<T>();
  if (ay == F::infinity || ax == 0) return x;

  const Scaled a = unpack<T>(ax);
  Scaled b = unpack<T>(ay);
  if (a.exponent < b.exponent - 1) return x;  // less than half of y
  if (a.exponent < b.exponent) b = {b.significand << 1, a.exponent};
  Division d = divide(a.significand, a.exponent - b.exponent, b.significand);

  Pattern<T> sign = sign_bits(x);
  const uint64_t above = b.significand - d.rest;  // to the next multiple of y
  if (d.rest > above || (d.rest == above && d.quotient & 1)) {
    d = {d.quotient + 1, above};
    sign ^= F::sign;
  }
  const auto low_bits = static_cast<int32_t>(d.quotient & 0x7FFFFFFF);
  *quotient = sign_bits(x) == sign_bits(y) ? low_bits : -low_bits;
  if (d.rest == 0) sign = sign_bits(x);
  return from_bits(Pattern<T>(sign | pack<T>({d.rest, b.exponent})));
}

template <class T>
T remainder(T x, T y) {
  int32_t quotient;
  return remquo(x, y, &quotient);
}

}  // namespace

extern "C" {

void __zorp_dfmod_cout_rare(const double* x, const double* y, double* result) {
  *result = fmod(*x, *y);
}
void __zorp_sfmod_cout_rare(const float* x, const float* y, float* result) {
  *result = fmod(*x, *y);
}
void __zorp_hfmod_cout_rare(const half* x, const half* y, half* result) { *result = fmod(*x, *y); }

void __zorp_dremainder_cout_rare(const double* x, const double* y, double* result) {
  *result = remainder(*x, *y);
}
void __zorp_sremainder_cout_rare(const float* x, const float* y, float* result) {
  *result = remainder(*x, *y);
}

void __zorp_dremquo_cout_rare(const double* x, const double* y, double* rest, int32_t* quotient) {
  *rest = remquo(*x, *y, quotient);
}
void __zorp_sremquo_cout_rare(const float* x, const float* y, float* rest, int32_t* quotient) {
  *rest = remquo(*x, *y, quotient);
}
void __zorp_hremquo_cout_rare(const half* x, const half* y, half* rest, int32_t* quotient) {
  *rest = remquo(*x, *y, quotient);
}

}  // extern "C"
}  // namespace zorp
