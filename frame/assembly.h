// Operations written in assembly, all in one place: where the order of operands matters, which the
// compiler is free to exchange, and where no intrinsic has the form that is needed.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include "frame/rounding.h"

namespace zorp::assembly {

// ---- Rounded to nearest; among several NaN operands the first gives the result. ----------------

inline __m512d add(__m512d a, __m512d b) {
  __m512d sum;
  asm("vaddpd %R3%2, %1, %0" : "=v"(sum) : "v"(a), "v"(b), "n"(embedded<rn>));
  return sum;
}
inline __m128d add(__m128d a, __m128d b) {
  __m128d sum;
  asm("vaddsd %R3%2, %1, %0" : "=v"(sum) : "v"(a), "v"(b), "n"(embedded<rn>));
  return sum;
}
inline __m512 add(__m512 a, __m512 b) {
  __m512 sum;
  asm("vaddps %R3%2, %1, %0" : "=v"(sum) : "v"(a), "v"(b), "n"(embedded<rn>));
  return sum;
}
inline __m128 add(__m128 a, __m128 b) {
  __m128 sum;
  asm("vaddss %R3%2, %1, %0" : "=v"(sum) : "v"(a), "v"(b), "n"(embedded<rn>));
  return sum;
}

inline __m512d mul(__m512d a, __m512d b) {
  __m512d product;
  asm("vmulpd %R3%2, %1, %0" : "=v"(product) : "v"(a), "v"(b), "n"(embedded<rn>));
  return product;
}
inline __m128d mul(__m128d a, __m128d b) {
  __m128d product;
  asm("vmulsd %R3%2, %1, %0" : "=v"(product) : "v"(a), "v"(b), "n"(embedded<rn>));
  return product;
}
inline __m512 mul(__m512 a, __m512 b) {
  __m512 product;
  asm("vmulps %R3%2, %1, %0" : "=v"(product) : "v"(a), "v"(b), "n"(embedded<rn>));
  return product;
}
inline __m128 mul(__m128 a, __m128 b) {
  __m128 product;
  asm("vmulss %R3%2, %1, %0" : "=v"(product) : "v"(a), "v"(b), "n"(embedded<rn>));
  return product;
}

inline __m512d fma(__m512d a, __m512d b, __m512d c) {
  asm("vfmadd132pd %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m128d fma(__m128d a, __m128d b, __m128d c) {
  asm("vfmadd132sd %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m512 fma(__m512 a, __m512 b, __m512 c) {
  asm("vfmadd132ps %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m128 fma(__m128 a, __m128 b, __m128 c) {
  asm("vfmadd132ss %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}

/// c - a x b
inline __m512d fnma(__m512d a, __m512d b, __m512d c) {
  asm("vfnmadd132pd %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m128d fnma(__m128d a, __m128d b, __m128d c) {
  asm("vfnmadd132sd %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m512 fnma(__m512 a, __m512 b, __m512 c) {
  asm("vfnmadd132ps %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m128 fnma(__m128 a, __m128 b, __m128 c) {
  asm("vfnmadd132ss %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}

#ifdef __AVX512FP16__
inline __m512h add(__m512h a, __m512h b) {
  __m512h sum;
  asm("vaddph %R3%2, %1, %0" : "=v"(sum) : "v"(a), "v"(b), "n"(embedded<rn>));
  return sum;
}
inline __m128h add(__m128h a, __m128h b) {
  __m128h sum;
  asm("vaddsh %R3%2, %1, %0" : "=v"(sum) : "v"(a), "v"(b), "n"(embedded<rn>));
  return sum;
}
inline __m512h mul(__m512h a, __m512h b) {
  __m512h product;
  asm("vmulph %R3%2, %1, %0" : "=v"(product) : "v"(a), "v"(b), "n"(embedded<rn>));
  return product;
}
inline __m128h mul(__m128h a, __m128h b) {
  __m128h product;
  asm("vmulsh %R3%2, %1, %0" : "=v"(product) : "v"(a), "v"(b), "n"(embedded<rn>));
  return product;
}
inline __m512h fma(__m512h a, __m512h b, __m512h c) {
  asm("vfmadd132ph %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m128h fma(__m128h a, __m128h b, __m128h c) {
  asm("vfmadd132sh %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m512h fnma(__m512h a, __m512h b, __m512h c) {
  asm("vfnmadd132ph %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
inline __m128h fnma(__m128h a, __m128h b, __m128h c) {
  asm("vfnmadd132sh %R3%2, %1, %0" : "+v"(a) : "v"(c), "v"(b), "n"(embedded<rn>));
  return a;
}
#endif

// ---- In any mode; among several NaN operands the first gives the result. -----------------------

template <Rounding mode>
inline __m512 add(__m512 a, __m512 b) {
  __m512 r;
  if constexpr (mode == Rounding::current) {
    asm volatile("vaddps %2, %1, %0" : "=v"(r) : "v"(a), "v"(b));
  } else {
    asm("vaddps %R3%2, %1, %0" : "=v"(r) : "v"(a), "v"(b), "n"(embedded<mode>));
  }
  return r;
}

inline __m512 mul_toward_zero(__m512 a, __m512 b) {
  __m512 r;
  asm("vmulps %R3%2, %1, %0" : "=v"(r) : "v"(a), "v"(b), "n"(embedded<rz>));
  return r;
}

/// The signs of a fused operation: madd = a*b + c, msub = a*b - c, nmadd = -a*b + c,
/// nmsub = -a*b - c.
enum class Fused { madd, msub, nmadd, nmsub };

/// In its 231 form the instruction takes the first factor from the second operand.
template <Fused form, Rounding mode>
inline __m512 fused(__m512 a, __m512 b, __m512 c) {
  static_assert(mode != Rounding::current);
  if constexpr (form == Fused::madd) {
    asm("vfmadd231ps %R3%2, %1, %0" : "+v"(c) : "v"(a), "v"(b), "n"(embedded<mode>));
  } else if constexpr (form == Fused::msub) {
    asm("vfmsub231ps %R3%2, %1, %0" : "+v"(c) : "v"(a), "v"(b), "n"(embedded<mode>));
  } else if constexpr (form == Fused::nmadd) {
    asm("vfnmadd231ps %R3%2, %1, %0" : "+v"(c) : "v"(a), "v"(b), "n"(embedded<mode>));
  } else {
    asm("vfnmsub231ps %R3%2, %1, %0" : "+v"(c) : "v"(a), "v"(b), "n"(embedded<mode>));
  }
  return c;
}

// ---- Forms without an intrinsic. ---------------------------------------------------------------

/// 16 floats rounded to halves (vcvtps2phx). The intrinsic has no form that suppresses exceptions.
template <Rounding mode>
inline __m256i narrow(__m512 v) {
  __m256i r;
  if constexpr (mode == Rounding::current) {
    asm volatile("vcvtps2ph %2, %{sae%}, %1, %0" : "=v"(r) : "v"(v), "n"(_MM_FROUND_CUR_DIRECTION));
  } else {
    asm("vcvtps2ph %2, %{sae%}, %1, %0" : "=v"(r) : "v"(v), "n"(static_cast<int>(mode)));
  }
  return r;
}

/// A mask of eight lanes, whose further bits the processor has cleared already, as a wider one; the
/// compiler would clear them again, by way of a general register.
inline uint32_t widened_mask(uint8_t mask) {
  uint32_t wide;
  asm("" : "=k"(wide) : "0"(mask));
  return wide;
}

}  // namespace zorp::assembly
