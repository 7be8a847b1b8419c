// Small steps that all inverse trigonometric functions share.
#pragma once

#include "frame/kernel.h"

namespace zorp {

/// -|x|
template <class V>
inline V minus_magnitude(V x) {
  return x | sign_mask<V>();
}
/// -v where x is negative, v elsewhere.
template <class V>
inline V flipped_by(V v, V x) {
  return ternary_logic<0x78>(v, x, sign_mask<V>());
}
/// |v| with the sign of x.
template <class V>
inline V with_sign_of(V v, V x) {
  return merge_bits(sign_mask<V>(), x, v);
}

// The processor's estimates of half, and of the float in which half's standard tier computes.
template <int N>
inline Vec<float, N> reciprocal_estimate(Vec<float, N> v) {
  return reciprocal14(v);
}
template <int N>
inline Vec<half, N> reciprocal_estimate(Vec<half, N> v) {
  return reciprocal11(v);
}
template <int N>
inline Vec<float, N> reciprocal_root_estimate(Vec<float, N> v) {
  return reciprocal_root14(v);
}
template <int N>
inline Vec<half, N> reciprocal_root_estimate(Vec<half, N> v) {
  return reciprocal_root11(v);
}

}  // namespace zorp
