// Element types, and the integers that hold their encodings.
#pragma once

#include <stdint.h>

namespace zorp {

/// IEEE 754 binary16, held by its encoding; arithmetic happens in vectors only.
struct half {
  uint16_t bits;
};

/// The variants of an algorithm that a caller selects by the suffix of a kernel's name.
enum class Tier { standard, native, half, rm };

namespace detail {
template <class T>
struct EncodingOf {
  using type = T;  // integers encode themselves
};
template <>
struct EncodingOf<uint64_t> {
  using type = int64_t;
};
template <>
struct EncodingOf<uint32_t> {
  using type = int32_t;
};
template <>
struct EncodingOf<uint16_t> {
  using type = int16_t;
};
template <>
struct EncodingOf<double> {
  using type = int64_t;
};
template <>
struct EncodingOf<float> {
  using type = int32_t;
};
template <>
struct EncodingOf<half> {
  using type = int16_t;
};
template <int bytes>
struct PatternOf;
template <>
struct PatternOf<8> {
  using type = uint64_t;
};
template <>
struct PatternOf<4> {
  using type = uint32_t;
};
template <>
struct PatternOf<2> {
  using type = uint16_t;
};
}  // namespace detail

/// The signed integer of the element's size.
template <class T>
using Encoding = typename detail::EncodingOf<T>::type;

/// The unsigned integer of the element's size, for bit patterns.
template <class T>
using Pattern = typename detail::PatternOf<sizeof(T)>::type;

template <class T, class U>
inline constexpr bool same = false;
template <class T>
inline constexpr bool same<T, T> = true;

template <class T>
inline constexpr bool is_integer =
    same<T, Encoding<T>> || same<T, uint16_t> || same<T, uint32_t> || same<T, uint64_t>;

}  // namespace zorp
