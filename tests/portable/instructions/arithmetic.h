// Floating-point arithmetic, comparison, minimum and maximum, bits of floating-point registers.
#pragma once

#include "integers.h"

namespace zorp {
namespace portable {

/// Whether a rounding argument asks for another mode than the one that the code runs under.
constexpr bool is_nearest(int rounding) { return (rounding & 7) == 0; }

// One instruction between two loads of MXCSR. The operands' order is kept, and with it the NaN that
// the result takes: of several NaNs the first one's, quieted; of a fused operation in the order
// a, b, c.

#define ZORP_OPERATIONS(Register, suffix, Scalar)   \
  ZORP_BINARY(Register, add, "vadd" suffix)         \
  ZORP_BINARY(Register, sub, "vsub" suffix)         \
  ZORP_BINARY(Register, mul, "vmul" suffix)         \
  ZORP_BINARY(Register, div, "vdiv" suffix)         \
  ZORP_FUSED(Register, fmadd, "vfmadd132" suffix)   \
  ZORP_FUSED(Register, fmsub, "vfmsub132" suffix)   \
  ZORP_FUSED(Register, fnmadd, "vfnmadd132" suffix) \
  ZORP_FUSED(Register, fnmsub, "vfnmsub132" suffix)
#define ZORP_BINARY(Register, name, instruction)                          \
  inline Register name##_in(int rounding, Register a, Register b) {       \
    Register r;                                                           \
    asm("vldmxcsr %3\n\t" instruction " %2, %1, %0\n\tvldmxcsr %4"        \
        : "=x"(r)                                                         \
        : "x"(a), "x"(b), "m"(controls[rounding & 7]), "m"(controls[0])); \
    return r;                                                             \
  }                                                                       \
  inline Register name##_in_order(Register a, Register b) {               \
    Register r;                                                           \
    asm(instruction " %2, %1, %0" : "=x"(r) : "x"(a), "x"(b));            \
    return r;                                                             \
  }
#define ZORP_FUSED(Register, name, instruction)                                 \
  inline Register name##_in(int rounding, Register a, Register b, Register c) { \
    asm("vldmxcsr %3\n\t" instruction " %2, %1, %0\n\tvldmxcsr %4"              \
        : "+x"(a)                                                               \
        : "x"(c), "x"(b), "m"(controls[rounding & 7]), "m"(controls[0]));       \
    return a;                                                                   \
  }                                                                             \
  inline Register name##_in_order(Register a, Register b, Register c) {         \
    asm(instruction " %2, %1, %0" : "+x"(a) : "x"(c), "x"(b));                  \
    return a;                                                                   \
  }
ZORP_OPERATIONS(__m256d, "pd", )
ZORP_OPERATIONS(__m256, "ps", )
ZORP_OPERATIONS(__m128d, "sd", )
ZORP_OPERATIONS(__m128, "ss", )
#undef ZORP_OPERATIONS
#undef ZORP_BINARY
#undef ZORP_FUSED

#define ZORP_ROOT(Register, instruction)                          \
  inline Register sqrt_in(int rounding, Register a) {             \
    Register r;                                                   \
    asm("vldmxcsr %2\n\t" instruction "\n\tvldmxcsr %3"           \
        : "=x"(r)                                                 \
        : "x"(a), "m"(controls[rounding & 7]), "m"(controls[0])); \
    return r;                                                     \
  }
ZORP_ROOT(__m256d, "vsqrtpd %1, %0")
ZORP_ROOT(__m256, "vsqrtps %1, %0")
ZORP_ROOT(__m128d, "vsqrtsd %1, %1, %0")
ZORP_ROOT(__m128, "vsqrtss %1, %1, %0")
#undef ZORP_ROOT

/// A product of two numbers, rounded by the argument.
inline double multiply(double a, double b, int rounding) {
  if (is_nearest(rounding)) return a * b;
  return _mm_cvtsd_f64(mul_in(rounding, _mm_set_sd(a), _mm_set_sd(b)));
}
inline float multiply(float a, float b, int rounding) {
  if (is_nearest(rounding)) return a * b;
  return _mm_cvtss_f32(mul_in(rounding, _mm_set_ss(a), _mm_set_ss(b)));
}

}  // namespace portable

// ---- Rounded arithmetic ----

#define ZORP_ROUNDED(op)                                                                     \
  template <class V, class... A>                                                             \
  inline V op##_rounded(int rounding, V a, A... rest) {                                      \
    return is_nearest(rounding) ? op##_in_order(a, rest...) : op##_in(rounding, a, rest...); \
  }
namespace portable {
ZORP_ROUNDED(add)
ZORP_ROUNDED(sub)
ZORP_ROUNDED(mul)
ZORP_ROUNDED(div)
ZORP_ROUNDED(fmadd)
ZORP_ROUNDED(fmsub)
ZORP_ROUNDED(fnmadd)
ZORP_ROUNDED(fnmsub)
}  // namespace portable
#undef ZORP_ROUNDED

#define ZORP_BINARY(op)                                                                  \
  inline __m512d _mm512_##op##_round_pd(__m512d a, __m512d b, int rounding) {            \
    return portable::by_halves<__m512d>(                                                 \
        [rounding](auto... x) { return portable::op##_rounded(rounding, x...); }, a, b); \
  }                                                                                      \
  inline __m512 _mm512_##op##_round_ps(__m512 a, __m512 b, int rounding) {               \
    return portable::by_halves<__m512>(                                                  \
        [rounding](auto... x) { return portable::op##_rounded(rounding, x...); }, a, b); \
  }                                                                                      \
  inline __m128d _mm_##op##_round_sd(__m128d a, __m128d b, int rounding) {               \
    return portable::op##_rounded(rounding, a, b);                                       \
  }                                                                                      \
  inline __m128 _mm_##op##_round_ss(__m128 a, __m128 b, int rounding) {                  \
    return portable::op##_rounded(rounding, a, b);                                       \
  }
ZORP_BINARY(add)
ZORP_BINARY(sub)
ZORP_BINARY(mul)
ZORP_BINARY(div)
#undef ZORP_BINARY

#define ZORP_FUSED(op)                                                                      \
  inline __m512d _mm512_##op##_round_pd(__m512d a, __m512d b, __m512d c, int rounding) {    \
    return portable::by_halves<__m512d>(                                                    \
        [rounding](auto... x) { return portable::op##_rounded(rounding, x...); }, a, b, c); \
  }                                                                                         \
  inline __m512 _mm512_##op##_round_ps(__m512 a, __m512 b, __m512 c, int rounding) {        \
    return portable::by_halves<__m512>(                                                     \
        [rounding](auto... x) { return portable::op##_rounded(rounding, x...); }, a, b, c); \
  }                                                                                         \
  inline __m128d _mm_##op##_round_sd(__m128d a, __m128d b, __m128d c, int rounding) {       \
    return portable::op##_rounded(rounding, a, b, c);                                       \
  }                                                                                         \
  inline __m128 _mm_##op##_round_ss(__m128 a, __m128 b, __m128 c, int rounding) {           \
    return portable::op##_rounded(rounding, a, b, c);                                       \
  }
ZORP_FUSED(fmadd)
ZORP_FUSED(fmsub)
ZORP_FUSED(fnmadd)
ZORP_FUSED(fnmsub)
#undef ZORP_FUSED

inline __m512d _mm512_sqrt_round_pd(__m512d a, int rounding) {
  return portable::by_halves<__m512d>(
      [rounding](__m256d x) { return portable::sqrt_in(rounding, x); }, a);
}
inline __m512 _mm512_sqrt_round_ps(__m512 a, int rounding) {
  return portable::by_halves<__m512>(
      [rounding](__m256 x) { return portable::sqrt_in(rounding, x); }, a);
}
inline __m128d _mm_sqrt_round_sd(__m128d a, __m128d b, int rounding) {
  return _mm_move_sd(a, portable::sqrt_in(rounding, b));
}
inline __m128 _mm_sqrt_round_ss(__m128 a, __m128 b, int rounding) {
  return _mm_move_ss(a, portable::sqrt_in(rounding, b));
}

// ---- Bits, selection ----

inline __m512d _mm512_and_pd(__m512d a, __m512d b) { return (__m512d)((__m512i)a & (__m512i)b); }
inline __m512d _mm512_or_pd(__m512d a, __m512d b) { return (__m512d)((__m512i)a | (__m512i)b); }
inline __m512d _mm512_xor_pd(__m512d a, __m512d b) { return (__m512d)((__m512i)a ^ (__m512i)b); }
inline __m512 _mm512_and_ps(__m512 a, __m512 b) { return (__m512)((__m512i)a & (__m512i)b); }
inline __m512 _mm512_or_ps(__m512 a, __m512 b) { return (__m512)((__m512i)a | (__m512i)b); }
inline __m512 _mm512_xor_ps(__m512 a, __m512 b) { return (__m512)((__m512i)a ^ (__m512i)b); }

inline __m512d _mm512_mask_mov_pd(__m512d clear, __mmask8 mask, __m512d set) {
  return (__m512d)portable::select<long long>(mask, (__m512i)set, (__m512i)clear);
}
inline __m512 _mm512_mask_mov_ps(__m512 clear, __mmask16 mask, __m512 set) {
  return (__m512)portable::select<int>(mask, (__m512i)set, (__m512i)clear);
}
inline __m128d _mm_mask_move_sd(__m128d clear, __mmask8 mask, __m128d a, __m128d b) {
  return _mm_move_sd(a, mask & 1 ? b : clear);
}
inline __m128 _mm_mask_move_ss(__m128 clear, __mmask8 mask, __m128 a, __m128 b) {
  return _mm_move_ss(a, mask & 1 ? b : clear);
}

#define ZORP_MASKED(op)                                                                          \
  inline __m512d _mm512_mask_##op##_round_pd(__m512d clear, __mmask8 mask, __m512d a, __m512d b, \
                                             int rounding) {                                     \
    return _mm512_mask_mov_pd(clear, mask, _mm512_##op##_round_pd(a, b, rounding));              \
  }                                                                                              \
  inline __m512 _mm512_mask_##op##_round_ps(__m512 clear, __mmask16 mask, __m512 a, __m512 b,    \
                                            int rounding) {                                      \
    return _mm512_mask_mov_ps(clear, mask, _mm512_##op##_round_ps(a, b, rounding));              \
  }                                                                                              \
  inline __m128d _mm_mask_##op##_round_sd(__m128d clear, __mmask8 mask, __m128d a, __m128d b,    \
                                          int rounding) {                                        \
    return _mm_mask_move_sd(clear, mask, a, _mm_##op##_round_sd(a, b, rounding));                \
  }                                                                                              \
  inline __m128 _mm_mask_##op##_round_ss(__m128 clear, __mmask8 mask, __m128 a, __m128 b,        \
                                         int rounding) {                                         \
    return _mm_mask_move_ss(clear, mask, a, _mm_##op##_round_ss(a, b, rounding));                \
  }
ZORP_MASKED(add)
ZORP_MASKED(sub)
ZORP_MASKED(mul)
#undef ZORP_MASKED

// ---- Minimum and maximum: the second operand where either is a NaN or both are zeros. ----

#define ZORP_MINMAX(op)                                                                           \
  inline __m512d _mm512_##op##_round_pd(__m512d a, __m512d b, int) {                              \
    return portable::by_halves<__m512d>(                                                          \
        [](__m256d x, __m256d y) { return _mm256_##op##_pd(x, y); }, a, b);                       \
  }                                                                                               \
  inline __m512 _mm512_##op##_round_ps(__m512 a, __m512 b, int) {                                 \
    return portable::by_halves<__m512>([](__m256 x, __m256 y) { return _mm256_##op##_ps(x, y); }, \
                                       a, b);                                                     \
  }                                                                                               \
  inline __m512 _mm512_mask_##op##_round_ps(__m512 clear, __mmask16 mask, __m512 a, __m512 b,     \
                                            int) {                                                \
    return _mm512_mask_mov_ps(clear, mask, _mm512_##op##_round_ps(a, b, 0));                      \
  }                                                                                               \
  inline __m128d _mm_##op##_round_sd(__m128d a, __m128d b, int) { return _mm_##op##_sd(a, b); }   \
  inline __m128 _mm_##op##_round_ss(__m128 a, __m128 b, int) { return _mm_##op##_ss(a, b); }
ZORP_MINMAX(min)
ZORP_MINMAX(max)
#undef ZORP_MINMAX

// ---- Comparisons by all 32 predicates ----

#undef _mm512_cmp_pd_mask
#undef _mm512_cmp_ps_mask
#undef _mm512_cmp_round_pd_mask
#undef _mm512_cmp_round_ps_mask
#undef _mm_cmp_sd_mask
#undef _mm_cmp_ss_mask
#undef _mm_cmp_round_sd_mask
#undef _mm_cmp_round_ss_mask
[[gnu::always_inline]] inline __mmask8 _mm512_cmp_pd_mask(__m512d a, __m512d b, int predicate) {
  const auto x = portable::split(a), y = portable::split(b);
  return static_cast<__mmask8>(_mm256_movemask_pd(_mm256_cmp_pd(x.low, y.low, predicate)) |
                               _mm256_movemask_pd(_mm256_cmp_pd(x.high, y.high, predicate)) << 4);
}
[[gnu::always_inline]] inline __mmask16 _mm512_cmp_ps_mask(__m512 a, __m512 b, int predicate) {
  const auto x = portable::split(a), y = portable::split(b);
  return static_cast<__mmask16>(_mm256_movemask_ps(_mm256_cmp_ps(x.low, y.low, predicate)) |
                                _mm256_movemask_ps(_mm256_cmp_ps(x.high, y.high, predicate)) << 8);
}
[[gnu::always_inline]] inline __mmask8 _mm_cmp_sd_mask(__m128d a, __m128d b, int predicate) {
  return static_cast<__mmask8>(_mm_movemask_pd(_mm_cmp_sd(a, b, predicate)) & 1);
}
[[gnu::always_inline]] inline __mmask8 _mm_cmp_ss_mask(__m128 a, __m128 b, int predicate) {
  return static_cast<__mmask8>(_mm_movemask_ps(_mm_cmp_ss(a, b, predicate)) & 1);
}
[[gnu::always_inline]] inline __mmask8 _mm512_cmp_round_pd_mask(__m512d a, __m512d b, int predicate,
                                                                int) {
  return _mm512_cmp_pd_mask(a, b, predicate);
}
[[gnu::always_inline]] inline __mmask16 _mm512_cmp_round_ps_mask(__m512 a, __m512 b, int predicate,
                                                                 int) {
  return _mm512_cmp_ps_mask(a, b, predicate);
}
[[gnu::always_inline]] inline __mmask8 _mm_cmp_round_sd_mask(__m128d a, __m128d b, int predicate,
                                                             int) {
  return _mm_cmp_sd_mask(a, b, predicate);
}
[[gnu::always_inline]] inline __mmask8 _mm_cmp_round_ss_mask(__m128 a, __m128 b, int predicate,
                                                             int) {
  return _mm_cmp_ss_mask(a, b, predicate);
}

}  // namespace zorp
