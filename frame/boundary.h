// The boundary of a kernel: how vectors travel in registers, and what stands in the lanes beyond
// the width. The compiler's flags keep the upper vector and mask registers, rsi and rdi alive; the
// register classes below then give the calling convention.
#pragma once

#include "frame/vector.h"

namespace zorp {

namespace detail {
/// Bytes of the register class that holds `width` lanes of T: width 3 travels as 4.
template <class T, int width>
inline constexpr int register_bytes = [] {
  const int bytes = sizeof(T) * (width == 3 ? 4 : width);
  return bytes <= 16 ? 16 : bytes <= 32 ? 32 : 64;
}();

template <class T, int bytes>
struct VectorRegister;
template <>
struct VectorRegister<double, 16> {
  using type = __m128d;
};
template <>
struct VectorRegister<double, 32> {
  using type = __m256d;
};
template <>
struct VectorRegister<double, 64> {
  using type = __m512d;
};
template <>
struct VectorRegister<float, 16> {
  using type = __m128;
};
template <>
struct VectorRegister<float, 32> {
  using type = __m256;
};
template <>
struct VectorRegister<float, 64> {
  using type = __m512;
};
template <class T>
struct VectorRegister<T, 16> {
  using type = __m128i;
};
template <class T>
struct VectorRegister<T, 32> {
  using type = __m256i;
};
template <class T>
struct VectorRegister<T, 64> {
  using type = __m512i;
};

template <class T, int width>
struct BoundaryRegister : VectorRegister<T, register_bytes<T, width>> {};
/// A single integer travels in a general register.
template <class T>
requires is_integer<T>
struct BoundaryRegister<T, 1> {
  using type = T;
};
}  // namespace detail

/// The register of the calling convention that holds `width` lanes of T, or the first or second
/// half of them where they take two registers.
template <class T, int width>
using Register = typename detail::BoundaryRegister<T, width>::type;

/// Vector lanes inside a kernel of that width: width 3 computes on 4. A kernel of half or 16-bit
/// lanes without half instructions works on 16 or 32.
template <int width, class... T>
inline constexpr int lanes_held = half_is_emulated && ((sizeof(T) == 2) || ...)
                                      ? (width <= 16 ? 16 : 32)
                                  : width == 3 ? 4
                                               : width;

/// An operand as it arrives: `width` lanes of T in one register or two.
template <class T, int width>
struct Operand {
  using Element = T;
  static constexpr bool in_pair = width * sizeof(T) > 64;
  Register<T, width> reg[in_pair ? 2 : 1];
};

namespace detail {
inline __m512i zero_extend(__m128i r) { return _mm512_zextsi128_si512(r); }
inline __m512i zero_extend(__m256i r) { return _mm512_zextsi256_si512(r); }
inline __m512i zero_extend(__m512i r) { return r; }
inline __m512i zero_extend(__m128d r) { return zero_extend(_mm_castpd_si128(r)); }
inline __m512i zero_extend(__m256d r) { return zero_extend(_mm256_castpd_si256(r)); }
inline __m512i zero_extend(__m512d r) { return _mm512_castpd_si512(r); }
inline __m512i zero_extend(__m128 r) { return zero_extend(_mm_castps_si128(r)); }
inline __m512i zero_extend(__m256 r) { return zero_extend(_mm256_castps_si256(r)); }
inline __m512i zero_extend(__m512 r) { return _mm512_castps_si512(r); }

inline __m128i low_xmm(__m128i r) { return r; }
inline __m128i low_xmm(__m128d r) { return _mm_castpd_si128(r); }
inline __m128i low_xmm(__m128 r) { return _mm_castps_si128(r); }
inline __m128i low_xmm(int64_t r) { return _mm_cvtsi64_si128(r); }
inline __m128i low_xmm(uint64_t r) { return _mm_cvtsi64_si128(static_cast<int64_t>(r)); }
inline __m128i low_xmm(int32_t r) { return _mm_cvtsi32_si128(r); }
inline __m128i low_xmm(uint32_t r) { return _mm_cvtsi32_si128(static_cast<int32_t>(r)); }
inline __m128i low_xmm(int16_t r) { return _mm_cvtsi32_si128(r); }

/// The register with the lanes that the caller need not have set replaced by the filler.
template <class T, int width>
inline Register<T, width> fill(Register<T, width> r, uint64_t filler) {
  using Bits = Encoding<T>;
  if constexpr (width == 3 && sizeof(T) == 8) {
    const auto pad = _mm256_set1_epi64x(static_cast<int64_t>(filler));
    if constexpr (same<T, double>)
      return _mm256_blend_pd(r, _mm256_castsi256_pd(pad), 0b1000);
    else
      return _mm256_blend_epi32(r, pad, 0b11000000);
  } else if constexpr (width == 3 && sizeof(T) == 4) {
    const auto pad = _mm_set1_epi32(static_cast<int32_t>(filler));
    if constexpr (same<T, float>)
      return _mm_blend_ps(r, _mm_castsi128_ps(pad), 0b1000);
    else
      return _mm_blend_epi32(r, pad, 0b1000);
  } else if constexpr (width == 2 && same<T, float>) {
    return _mm_movelh_ps(r, r);
  } else if constexpr (width == 2 && sizeof(T) == 4) {
    return _mm_blend_epi32(r, _mm_set1_epi32(static_cast<int32_t>(filler)), 0b1100);
  } else if constexpr (sizeof(T) == 2 && width >= 2 && width <= 4) {
    const auto pad = _mm_set1_epi16(static_cast<Bits>(filler));
    if constexpr (width == 3)
      return _mm_blend_epi16(r, pad, 0b11111000);
    else
      return _mm_blend_epi32(r, pad, width == 2 ? 0b1110 : 0b1100);
  } else {
    return r;
  }
}

/// The lanes of T, from the zero-extended register.
template <class T, int N>
inline Vec<T, N> from_zmm(__m512i r) {
  return Vec<T, N>(Vec<T, N>::Ops::from_bits(r));
}
}  // namespace detail

/// The operand as a vector, its further lanes filled.
template <int N, class T, int width>
inline Vec<T, N> receive(Operand<T, width> operand, uint64_t filler) {
  if constexpr (Operand<T, width>::in_pair)
    return Vec<T, N>(detail::from_zmm<T, N / 2>(detail::zero_extend(operand.reg[0])),
                     detail::from_zmm<T, N / 2>(detail::zero_extend(operand.reg[1])));
  else if constexpr (N == 1)
    return Vec<T, 1>(Vec<T, 1>::Ops::from_bits(detail::low_xmm(operand.reg[0])));
  else if constexpr (width == 1)
    return detail::from_zmm<T, N>(detail::zero_extend(detail::low_xmm(operand.reg[0])));
  else
    return detail::from_zmm<T, N>(
        detail::zero_extend(detail::fill<T, width>(operand.reg[0], filler)));
}

namespace detail {
inline void low_part(__m512i r, __m512i& to) { to = r; }
inline void low_part(__m512i r, __m256i& to) { to = _mm512_castsi512_si256(r); }
inline void low_part(__m512i r, __m128i& to) { to = _mm512_castsi512_si128(r); }
inline void low_part(__m512i r, __m512d& to) { to = _mm512_castsi512_pd(r); }
inline void low_part(__m512i r, __m256d& to) {
  to = _mm512_castpd512_pd256(_mm512_castsi512_pd(r));
}
inline void low_part(__m512i r, __m128d& to) {
  to = _mm512_castpd512_pd128(_mm512_castsi512_pd(r));
}
inline void low_part(__m512i r, __m512& to) { to = _mm512_castsi512_ps(r); }
inline void low_part(__m512i r, __m256& to) { to = _mm512_castps512_ps256(_mm512_castsi512_ps(r)); }
inline void low_part(__m512i r, __m128& to) { to = _mm512_castps512_ps128(_mm512_castsi512_ps(r)); }
inline void low_part(__m128i r, __m128i& to) { to = r; }
inline void low_part(__m128i r, __m128d& to) { to = _mm_castsi128_pd(r); }
inline void low_part(__m128i r, __m128& to) { to = _mm_castsi128_ps(r); }
template <class Integer>
requires is_integer<Integer>
inline void low_part(__m128i r, Integer& to) {
  if constexpr (sizeof(Integer) == 8)
    to = static_cast<Integer>(_mm_cvtsi128_si64(r));
  else
    to = static_cast<Integer>(_mm_cvtsi128_si32(r));
}
template <class Integer>
requires is_integer<Integer>
inline void low_part(__m512i r, Integer& to) { low_part(_mm512_castsi512_si128(r), to); }

/// The boundary register of an unpaired vector.
template <int width, class T, int N>
inline Register<T, width> to_register(const Vec<T, N>& v) {
  Register<T, width> r;
  low_part(Vec<T, N>::Ops::bits(v.reg), r);
  return r;
}

/// Returns r0 and keeps further results in the next vector registers: the platform's convention
/// returns one vector, so they are pinned just before the kernel's return.
template <class R>
[[gnu::always_inline]] inline R return_registers(R r0, R r1) {
  register R second asm("xmm1") = r1;
  asm volatile("" : "+v"(r0) : "v"(second));
  return r0;
}
template <class R>
[[gnu::always_inline]] inline R return_registers(R r0, R r1, R r2, R r3) {
  register R second asm("xmm1") = r1;
  register R third asm("xmm2") = r2;
  register R fourth asm("xmm3") = r3;
  asm volatile("" : "+v"(r0) : "v"(second), "v"(third), "v"(fourth));
  return r0;
}
/// For a kernel that has nothing left to do but to return r.
template <class R>
[[gnu::always_inline]] inline void clean_upper_halves(R& r) {
  asm volatile("vzeroupper" : "+v"(r));
}
}  // namespace detail

/// Returns one result from a kernel.
template <int width, class T, int N>
[[gnu::always_inline]] inline Register<T, width> deliver(const Vec<T, N>& v) {
  if constexpr (v.paired)
    return detail::return_registers(detail::to_register<width>(v.lo),
                                    detail::to_register<width>(v.hi));
  else
    return detail::to_register<width>(v);
}

/// Returns two results: the second in the registers after those of the first. Two integers of
/// width 1 share one general register, the second in its high half.
template <int width, class T, int N>
[[gnu::always_inline]] inline auto deliver(const Vec<T, N>& first, const Vec<T, N>& second) {
  if constexpr (first.paired)
    return detail::return_registers(
        detail::to_register<width>(first.lo), detail::to_register<width>(first.hi),
        detail::to_register<width>(second.lo), detail::to_register<width>(second.hi));
  else if constexpr (width == 1 && is_integer<T>)
    return static_cast<uint64_t>(static_cast<uint32_t>(detail::to_register<1>(second))) << 32 |
           static_cast<uint32_t>(detail::to_register<1>(first));
  else
    return detail::return_registers(detail::to_register<width>(first),
                                    detail::to_register<width>(second));
}

/// Stores `width` lanes (four at width 3) at an address that is aligned to an element only.
template <int width, class T, int N>
inline void store(T* to, const Vec<T, N>& v) {
  if constexpr (v.paired) {
    store<width / 2>(to, v.lo);
    store<width / 2>(to + N / 2, v.hi);
  } else {
    constexpr int bytes = sizeof(T) * (width == 3 ? 4 : width);
    const auto r = Vec<T, N>::Ops::bits(v.reg);
    if constexpr (bytes == 64) {
      _mm512_storeu_si512(to, r);
    } else if constexpr (bytes == 32) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_castsi512_si256(r));
    } else {
      __m128i low;
      detail::low_part(r, low);
      if constexpr (bytes == 16)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), low);
      else if constexpr (bytes == 8)
        _mm_storeu_si64(to, low);
      else if constexpr (bytes == 4)
        _mm_storeu_si32(to, low);
      else
        _mm_storeu_si16(to, low);
    }
  }
}

/// The same lanes back; lanes beyond them are zero.
template <int width, class V>
inline V load(const typename V::Element* from) {
  if constexpr (V::paired) {
    return V(load<width / 2, typename V::Part>(from),
             load<width / 2, typename V::Part>(from + V::lanes / 2));
  } else {
    constexpr int bytes = sizeof(typename V::Element) * (width == 3 ? 4 : width);
    if constexpr (bytes == 64) {
      return V(V::Ops::from_bits(_mm512_loadu_si512(from)));
    } else if constexpr (bytes == 32) {
      return V(V::Ops::from_bits(
          detail::zero_extend(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)))));
    } else {
      __m128i r;
      if constexpr (bytes == 16)
        r = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
      else if constexpr (bytes == 8)
        r = _mm_loadu_si64(from);
      else if constexpr (bytes == 4)
        r = _mm_loadu_si32(from);
      else
        r = _mm_loadu_si16(from);
      if constexpr (V::lanes == 1)
        return V(V::Ops::from_bits(r));
      else
        return V(V::Ops::from_bits(detail::zero_extend(r)));
    }
  }
}

}  // namespace zorp
