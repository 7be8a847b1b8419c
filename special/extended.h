// The 80-bit extended format of the processor's x87 unit, as long double, for scalar routines.
#pragma once

#include "frame/scalar.h"

namespace zorp {

/// An extended value by its bit pattern: the significand with its leading one, then sign and
/// exponent.
struct Extended {
  uint64_t significand;
  uint64_t sign_exponent;
  operator long double() const { return __builtin_bit_cast(long double, *this); }
};

/// The value of 20 hexadecimal digits: sign and exponent, significand.
consteval Extended operator""_ext(const char* literal) {
  uint64_t word[2] = {};  // the first 4 digits, the other 16
  for (int i = 2; i < 22; ++i) {
    const char c = literal[i];
    uint64_t& part = word[i >= 6];
    part = part << 4 | static_cast<uint64_t>(c <= '9' ? c - '0' : c - 'A' + 10);
  }
  return {word[1], word[0]};
}

/// An extended value as a sum of two doubles: the processor adds these in less time than it loads
/// 80 bits. For routines that compute with 64-bit significands.
struct SplitExtended {
  double high, low;
  operator long double() const { return static_cast<long double>(high) + low; }
};
constexpr SplitExtended split(Extended v) {
  const uint64_t sign = v.sign_exponent >> 15 << 63;
  const uint64_t exponent = (v.sign_exponent & 0x7FFF) - 16383 + 1023;
  const double low_unit = from_bits(sign | (exponent - 63) << 52);
  return {from_bits(sign | exponent << 52 | v.significand << 1 >> 12),
          static_cast<double>(v.significand & 0x7FF) * low_unit};
}

inline long double value_of(Extended pattern) { return pattern; }
inline long double value_of(uint64_t pattern) { return from_bits(pattern); }

/// The polynomial whose coefficients stand from the highest power down, in extended arithmetic;
/// `v` is what higher coefficients gave so far.
template <class C, int n>
inline long double horner_from(long double v, const C (&c)[n], long double x) {
  for (int i = 0; i < n; ++i) v = v * x + value_of(c[i]);
  return v;
}
template <class C, int n>
inline long double horner(const C (&c)[n], long double x) {
  long double v = value_of(c[0]);
  for (int i = 1; i < n; ++i) v = v * x + value_of(c[i]);
  return v;
}

/// K times the product of z^2 + a z + b; the row holds b and a of each factor, then K.
struct Factors {
  SplitExtended row[23];
  long double operator()(long double z) const {
    const long double s = z * z;
    long double v = row[22];
    for (int i = 0; i < 22; i += 2) v = v * (row[i + 1] * z + s + row[i]);
    return v;
  }
};
template <int n>
struct FactorTable {
  Factors of[n];
  constexpr FactorTable(const Extended (&rows)[n][23]) {
    for (int k = 0; k < n; ++k)
      for (int i = 0; i < 23; ++i) of[k].row[i] = split(rows[k][i]);
  }
};

/// Coefficients from the constant term up, so many of them extended values.
template <int extended_count, int double_count>
struct RootRow {
  Extended low[extended_count];
  uint64_t high[double_count];
  static constexpr int degree = extended_count + double_count - 1;
  long double coefficient(int k) const {
    return k < extended_count ? value_of(low[k]) : value_of(high[k - extended_count]);
  }
};
using LeftRoot = RootRow<5, 12>;
using RightRoot = RootRow<4, 12>;

inline long double magnitude(long double v) { return __builtin_fabsl(v); }

/// While it lives, the x87 unit computes with 64-bit significands (or, for routines that take the
/// caller's precision, with that) and without traps. Then its environment is again what it was:
/// control, status and tag word.
template <bool extended_precision>
class X87Settings {
 public:
  X87Settings() {
    uint16_t control;
    asm volatile("fnstcw %0" : "=m"(control));
    const uint16_t wanted = control | no_traps | (extended_precision ? precision_64 : 0);
    changed_ = wanted != control;
    if (changed_) [[unlikely]] {
      asm volatile("fnstenv %0\n\tfldcw %1" : "=m"(environment_) : "m"(wanted));
    }
  }
  ~X87Settings() {
    if (changed_) [[unlikely]] {
      asm volatile("fldenv %0"
                   :
                   : "m"(environment_)
                   : "st", "st(1)", "st(2)", "st(3)", "st(4)", "st(5)", "st(6)", "st(7)");
    }
  }

 private:
  static constexpr uint16_t no_traps = 0x003F, precision_64 = 0x0300;
  struct Environment {
    uint8_t bytes[28];
  };
  bool changed_;
  Environment environment_;
};

}  // namespace zorp
