// Registers as halves and as lanes, masks, and the processor's rounding control.
#pragma once

#include_next <immintrin.h>
#include <stdint.h>

namespace zorp::portable {

/// MXCSR for each rounding argument of an intrinsic, by its lower three bits: the four static modes
/// and the caller's own. All exceptions are masked. Code runs under the first of them, to nearest;
/// the others are loaded around single instructions.
inline thread_local constinit uint32_t controls[5] = {0x1f80, 0x3f80, 0x5f80, 0x7f80, 0x1f80};

/// Takes the caller's MXCSR. Whether subnormals count as zeros holds in all modes.
inline void set_caller_control(uint32_t mxcsr) {
  constexpr uint32_t rounding = 0x6000, masks = 0x1f80, flags = 0x3f;
  const uint32_t base = (mxcsr & ~(rounding | flags)) | masks;
  for (uint32_t mode = 0; mode < 4; ++mode) controls[mode] = base | mode << 13;
  controls[4] = base | (mxcsr & rounding);
}
inline bool subnormals_are_zeros() { return controls[0] & 0x40; }

// ---- Registers of 512 bits in two halves ----

template <class V>
struct HalfOf;
template <>
struct HalfOf<__m512d> {
  using type = __m256d;
};
template <>
struct HalfOf<__m512> {
  using type = __m256;
};
template <>
struct HalfOf<__m512i> {
  using type = __m256i;
};
template <class V>
struct Halves {
  typename HalfOf<V>::type low, high;
};

template <class V>
inline Halves<V> split(V v) {
  return __builtin_bit_cast(Halves<V>, v);
}
template <class V>
inline V join(typename HalfOf<V>::type low, typename HalfOf<V>::type high) {
  return __builtin_bit_cast(V, Halves<V>{low, high});
}

/// f on the low and on the high halves.
template <class V, class F, class... A>
[[gnu::always_inline]] inline V by_halves(F f, A... a) {
  return join<V>(f(split(a).low...), f(split(a).high...));
}

// ---- Registers of any size as lanes of T ----

template <class T, class V>
struct Lanes {
  static constexpr int count = sizeof(V) / sizeof(T);
  T lane[count];
};
template <class T, class V>
inline Lanes<T, V> lanes(V v) {
  return __builtin_bit_cast(Lanes<T, V>, v);
}

/// f on each lane of T.
template <class T, class V, class F, class... A>
[[gnu::always_inline]] inline V by_lanes(F f, V first, A... rest) {
  return [f](Lanes<T, V> out, const Lanes<T, A>&... others) __attribute__((always_inline)) {
#pragma GCC unroll 32
    for (int i = 0; i < out.count; ++i) out.lane[i] = f(out.lane[i], others.lane[i]...);
    return __builtin_bit_cast(V, out);
  }
  (lanes<T>(first), lanes<T>(rest)...);
}
/// One bit for each lane of T.
template <class T, class V, class F>
[[gnu::always_inline]] inline uint32_t mask_by_lanes(F f, V v) {
  const Lanes<T, V> in = lanes<T>(v);
  uint32_t mask = 0;
  for (int i = 0; i < in.count; ++i) mask |= uint32_t{f(in.lane[i])} << i;
  return mask;
}
/// f on lane 0 of a and of the others; the further lanes of a.
template <class T, class V, class F, class... A>
[[gnu::always_inline]] inline V in_low_lane(F f, V a, A... rest) {
  Lanes<T, V> out = lanes<T>(a);
  out.lane[0] = f(out.lane[0], lanes<T>(rest).lane[0]...);
  return __builtin_bit_cast(V, out);
}

}  // namespace zorp::portable
