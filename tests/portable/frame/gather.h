// The loads of frame/gather.h, lane by lane.
#pragma once

#include "frame/vector.h"

namespace zorp {

template <class V>
struct TwoFields {
  V first, second;
};
template <class V>
struct FourFields {
  V first, second, third, fourth;
};

template <int N>
inline TwoFields<Vec<double, N>> gather_pairs(const void* base, Vec<int64_t, N> offset) {
  const auto* at = static_cast<const double*>(base);
  return {gather(at, offset), gather(at + 1, offset)};
}
template <int N>
inline TwoFields<Vec<float, N>> gather_pairs(const void* base, Vec<int32_t, N> offset) {
  const auto* at = static_cast<const float*>(base);
  return {gather(at, offset), gather(at + 1, offset)};
}
template <int N>
inline FourFields<Vec<double, N>> gather_fours(const void* base, Vec<int64_t, N> offset) {
  const auto* at = static_cast<const double*>(base);
  return {gather(at, offset), gather(at + 1, offset), gather(at + 2, offset),
          gather(at + 3, offset)};
}
template <int N>
inline FourFields<Vec<float, N>> gather_fours(const void* base, Vec<int32_t, N> offset) {
  const auto* at = static_cast<const float*>(base);
  return {gather(at, offset), gather(at + 1, offset), gather(at + 2, offset),
          gather(at + 3, offset)};
}

}  // namespace zorp
