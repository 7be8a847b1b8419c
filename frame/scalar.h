// Scalar helpers of rare routines, which compute in ordinary C++ arithmetic.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include "frame/row.h"

namespace zorp {

constexpr double from_bits(uint64_t pattern) { return __builtin_bit_cast(double, pattern); }
constexpr float from_bits(uint32_t pattern) { return __builtin_bit_cast(float, pattern); }
constexpr half from_bits(uint16_t pattern) { return {pattern}; }
constexpr uint64_t bits(double v) { return __builtin_bit_cast(uint64_t, v); }
constexpr uint32_t bits(float v) { return __builtin_bit_cast(uint32_t, v); }
constexpr uint16_t bits(half v) { return v.bits; }

/// The encodings of a floating-point type, for routines that go by the bits alone.
template <class T>
struct Format {
  static constexpr int fraction_bits = same<T, double> ? 52 : same<T, float> ? 23 : 10;
  static constexpr int exponent_bits = 8 * sizeof(T) - 1 - fraction_bits;
  static constexpr int bias = (1 << (exponent_bits - 1)) - 1;
  static constexpr Pattern<T> implicit_bit = Pattern<T>{1} << fraction_bits;
  static constexpr Pattern<T> quiet_bit = implicit_bit >> 1;
  static constexpr Pattern<T> sign = Pattern<T>{1} << (fraction_bits + exponent_bits);
  static constexpr Pattern<T> infinity = sign - implicit_bit;
  static constexpr Pattern<T> default_nan = sign | infinity | quiet_bit;  // what 0/0 gives
};

template <class T>
constexpr Pattern<T> sign_bits(T v) {
  return bits(v) & Format<T>::sign;
}
template <class T>
constexpr Pattern<T> magnitude_bits(T v) {
  return bits(v) & (Format<T>::sign - 1);
}
template <class T>
constexpr bool is_nan(T v) {
  return magnitude_bits(v) > Format<T>::infinity;
}
template <class T>
constexpr T quieted(T nan) {
  return from_bits(Pattern<T>(bits(nan) | Format<T>::quiet_bit));
}

/// Exact; quiets a NaN.
inline float widened(half v) { return _cvtsh_ss(v.bits); }
/// Rounded in the caller's mode.
inline half narrowed(float v) { return {_cvtss_sh(v, _MM_FROUND_CUR_DIRECTION)}; }

inline constexpr double infinity = from_bits(uint64_t{0x7FF0000000000000});

inline double magnitude(double v) { return from_bits(bits(v) & 0x7FFFFFFFFFFFFFFF); }
inline double with_sign_of(double v, double sign) {
  return from_bits(bits(v) | (bits(sign) & 0x8000000000000000));
}
inline bool is_finite(double v) { return magnitude(v) < infinity; }

}  // namespace zorp
