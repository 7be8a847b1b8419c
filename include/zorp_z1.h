/**
 * libzorp_z1: vector mathematics for x86-64 processors with AVX-512, for C and C++.
 *
 * Every kernel of the library is a function here: the exported name without its two leading
 * underscores. __zorp_z1_expf16_native is zorp_z1_expf16_native(x).
 *
 *   zorp_z1_<function><type letter><width><tier>
 *
 *   type letter   none for double, f for float, s for half
 *   width         lanes: 1, 2, 3, 4, 8, 16; float and half also 32
 *   tier          none for the standard tier, _native, _half or _rm for looser, faster forms
 *
 * A name is read from its end, so functions that end in a digit run into the width: zorp_z1_exp2 is
 * exp of two doubles, zorp_z1_exp21 is exp2 of one. Likewise zorp_z1_log2 is log of two doubles and
 * zorp_z1_atan2 is atan of two doubles.
 *
 * Types. Width 1 is a double, a float or an integer. Wider vectors are __m128d, __m256d, __m512d
 * (double), __m128, __m256, __m512 (float), __m128i, __m256i, __m512i (half and integers), the
 * smallest that holds the lanes; width 3 travels as 4. Half of width 1 is lane 0 of an __m128i.
 * What fills two 512-bit registers is a struct {lo, hi}. Lanes beyond the width may hold anything,
 * on the way in and on the way out.
 *
 * A second result is written through the pointer named `second`, which needs the alignment of an
 * element only, but room for four elements at width 3. Halves in memory are uint16_t, to be read as
 * encodings. sincosreg, idivrem and udivrem return both results in a struct.
 *
 * No kernel fails, reports or keeps anything: every operand has its result, and any number of
 * threads may call. Run with the default rounding mode: a few kernels take it from MXCSR.
 */
#ifndef ZORP_Z1_H
#define ZORP_Z1_H

#if !defined(__x86_64__) || !defined(__ELF__) || !(defined(__GNUC__) || defined(__clang__))
#error "zorp_z1.h is for gcc and clang on x86-64 with ELF"
#endif
#ifndef __AVX512F__
#error "zorp_z1.h passes vectors in 512-bit registers: compile with -mavx512f or a matching -march"
#endif

#include <immintrin.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Vectors of two registers: lanes 0 to 7, 0 to 15 or 0 to 7 in lo, the others in hi. */
typedef struct {
  __m512d lo, hi;
} zorp_f64x16;
typedef struct {
  __m512 lo, hi;
} zorp_f32x32;
typedef struct {
  __m512i lo, hi;
} zorp_i64x16;
typedef struct {
  __m512i lo, hi;
} zorp_i32x32;

#define ZORP_Z1_NOTHROW __attribute__((__nothrow__))
#define ZORP_Z1_PURE __attribute__((__const__, __nothrow__))
#define ZORP_Z1_INLINE static __inline__ __attribute__((__always_inline__, __unused__))

/*
 * Results that the platform's calling convention can't return in registers are fetched by a call
 * from inline assembly. The call steps over the 128 bytes below the stack pointer, which the
 * compiler may be using. A kernel leaves zmm16 to zmm31, k4 to k7, rbx, rbp, rsi, rdi (unless it
 * carries the pointer) and r12 to r15 alone; the x87 stack must be empty at a call.
 */
#define ZORP_Z1_CALL                     \
  "add{q\t$-128, %%rsp|\trsp, -128}\n\t" \
  "call\t{*%[kernel]|%[kernel]}\n\t"     \
  "sub{q\t$-128, %%rsp|\trsp, -128}"
#define ZORP_Z1_CLOBBERS_6                                                                     \
  "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12", "xmm13", "xmm14", "xmm15", "k0",  \
      "k1", "k2", "k3", "rax", "rcx", "rdx", "r8", "r9", "r10", "r11", "st", "st(1)", "st(2)", \
      "st(3)", "st(4)", "st(5)", "st(6)", "st(7)", "cc"
#define ZORP_Z1_CLOBBERS_4 "xmm4", "xmm5", ZORP_Z1_CLOBBERS_6
#define ZORP_Z1_CLOBBERS_3 "xmm3", ZORP_Z1_CLOBBERS_4
#define ZORP_Z1_CLOBBERS_2 "xmm2", ZORP_Z1_CLOBBERS_3

#include "zorp_z1_kernels.h"

#undef ZORP_Z1_NOTHROW
#undef ZORP_Z1_PURE
#undef ZORP_Z1_INLINE
#undef ZORP_Z1_CALL
#undef ZORP_Z1_CLOBBERS_6
#undef ZORP_Z1_CLOBBERS_4
#undef ZORP_Z1_CLOBBERS_3
#undef ZORP_Z1_CLOBBERS_2

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // ZORP_Z1_H
