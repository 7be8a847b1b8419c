// Half arithmetic by the AVX512-FP16 instructions.
#pragma once

#include "frame/assembly.h"
#include "frame/instructions.h"
#include "frame/rounding.h"

namespace zorp {

template <int N>
struct Instructions<half, N> {
  using Register = __m512h;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return _mm512_add_round_ph(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return _mm512_sub_round_ph(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return _mm512_mul_round_ph(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return _mm512_div_round_ph(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return _mm512_sqrt_round_ph(a, embedded<mode>);
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return _mm512_fmadd_round_ph(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return _mm512_fmsub_round_ph(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return _mm512_fnmadd_round_ph(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return _mm512_scalef_round_ph(v, s, embedded<mode>);
  }
  static Register exponent(Register v) { return _mm512_getexp_round_ph(v, sae); }
  template <int imm>
  static Register significand(Register v) {
    return _mm512_getmant_round_ph(v, mantissa_interval<imm>, mantissa_sign<imm>, sae);
  }
  template <int imm>
  static Register round_scale(Register v) {
    return _mm512_roundscale_round_ph(v, imm, sae);
  }
  template <int imm>
  static Register reduce(Register v) {
    return _mm512_reduce_round_ph(v, imm, sae);
  }
  static Register min(Register a, Register b) { return _mm512_min_round_ph(a, b, sae); }
  static Register max(Register a, Register b) { return _mm512_max_round_ph(a, b, sae); }
  static Register reciprocal(Register v) { return _mm512_rcp_ph(v); }
  static Register reciprocal_root(Register v) { return _mm512_rsqrt_ph(v); }
  template <int imm>
  static __mmask32 classify(Register v) {
    return _mm512_fpclass_ph_mask(v, imm);
  }
  template <int predicate>
  static __mmask32 compare(Register a, Register b) {
    return _mm512_cmp_ph_mask(a, b, predicate);
  }
  static Register blend(__mmask32 mask, Register set, Register clear) {
    return _mm512_mask_blend_ph(mask, clear, set);
  }
  static Register add_in_order(Register a, Register b) { return assembly::add(a, b); }
  static Register mul_in_order(Register a, Register b) { return assembly::mul(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) {
    return assembly::fma(a, b, c);
  }
  static Register fnma_in_order(Register a, Register b, Register c) {
    return assembly::fnma(a, b, c);
  }
  static Register bit_and(Register a, Register b) {
    return from_bits(_mm512_and_si512(bits(a), bits(b)));
  }
  static Register bit_or(Register a, Register b) {
    return from_bits(_mm512_or_si512(bits(a), bits(b)));
  }
  static Register bit_xor(Register a, Register b) {
    return from_bits(_mm512_xor_si512(bits(a), bits(b)));
  }
  static __m512i bits(Register v) { return _mm512_castph_si512(v); }
  static Register from_bits(__m512i v) { return _mm512_castsi512_ph(v); }
  static Register load_row(const void* row) { return _mm512_load_ph(row); }
  template <Rounding mode>
  static __m512i to_int16(Register v) {
    return _mm512_cvt_roundph_epi16(v, embedded<mode>);
  }
  template <Rounding mode>
  static __m512i to_uint16(Register v) {
    return _mm512_cvt_roundph_epu16(v, embedded<mode>);
  }
  static __m512 widen_low(Register v) {
    return _mm512_cvtx_roundph_ps(_mm512_castph512_ph256(v), sae);
  }
  static __m512 widen_high(Register v) {
    return _mm512_cvtx_roundph_ps(
        _mm256_castsi256_ph(_mm512_extracti64x4_epi64(_mm512_castph_si512(v), 1)), sae);
  }
  template <Rounding mode>
  static Register narrow(__m512 low) {
    return _mm512_zextph256_ph512(_mm512_cvtx_roundps_ph(low, embedded<mode>));
  }
  template <Rounding mode>
  static Register narrow(__m512 low, __m512 high) {
    const __m512i lower = _mm512_castph_si512(narrow<mode>(low));
    const __m256i upper = _mm256_castph_si256(_mm512_cvtx_roundps_ph(high, embedded<mode>));
    return _mm512_castsi512_ph(_mm512_inserti64x4(lower, upper, 1));
  }
};

template <>
struct Instructions<half, 1> {
  using Register = __m128h;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return _mm_add_round_sh(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return _mm_sub_round_sh(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return _mm_mul_round_sh(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return _mm_div_round_sh(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return _mm_sqrt_round_sh(a, a, embedded<mode>);
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return _mm_fmadd_round_sh(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return _mm_fmsub_round_sh(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return _mm_fnmadd_round_sh(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return _mm_scalef_round_sh(v, s, embedded<mode>);
  }
  static Register exponent(Register v) { return _mm_getexp_round_sh(v, v, sae); }
  template <int imm>
  static Register significand(Register v) {
    return _mm_getmant_round_sh(v, v, mantissa_interval<imm>, mantissa_sign<imm>, sae);
  }
  template <int imm>
  static Register round_scale(Register v) {
    return _mm_roundscale_round_sh(v, v, imm, sae);
  }
  template <int imm>
  static Register reduce(Register v) {
    return _mm_reduce_round_sh(v, v, imm, sae);
  }
  static Register min(Register a, Register b) { return _mm_min_round_sh(a, b, sae); }
  static Register max(Register a, Register b) { return _mm_max_round_sh(a, b, sae); }
  static Register reciprocal(Register v) { return _mm_rcp_sh(v, v); }
  static Register reciprocal_root(Register v) { return _mm_rsqrt_sh(v, v); }
  template <int imm>
  static __mmask8 classify(Register v) {
    return _mm_fpclass_sh_mask(v, imm);
  }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm_cmp_sh_mask(a, b, predicate);
  }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm_mask_move_sh(clear, mask, clear, set);
  }
  static Register add_in_order(Register a, Register b) { return assembly::add(a, b); }
  static Register mul_in_order(Register a, Register b) { return assembly::mul(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) {
    return assembly::fma(a, b, c);
  }
  static Register fnma_in_order(Register a, Register b, Register c) {
    return assembly::fnma(a, b, c);
  }
  static Register bit_and(Register a, Register b) {
    return from_bits(_mm_and_si128(bits(a), bits(b)));
  }
  static Register bit_or(Register a, Register b) {
    return from_bits(_mm_or_si128(bits(a), bits(b)));
  }
  static Register bit_xor(Register a, Register b) {
    return from_bits(_mm_xor_si128(bits(a), bits(b)));
  }
  static __m128i bits(Register v) { return _mm_castph_si128(v); }
  static Register from_bits(__m128i v) { return _mm_castsi128_ph(v); }
  static Register load_row(const void* row) { return _mm_load_sh(row); }
  // There is no form for a single lane, and none of 128 bits with a static mode.
  template <Rounding mode>
  static __m128i to_int16(Register v) {
    if constexpr (mode == Rounding::current)
      return _mm_cvtph_epi16(v);
    else
      return _mm512_castsi512_si128(
          _mm512_cvt_roundph_epi16(_mm512_castph128_ph512(v), embedded<mode>));
  }
  template <Rounding mode>
  static __m128i to_uint16(Register v) {
    if constexpr (mode == Rounding::current)
      return _mm_cvtph_epu16(v);
    else
      return _mm512_castsi512_si128(
          _mm512_cvt_roundph_epu16(_mm512_castph128_ph512(v), embedded<mode>));
  }
  static __m128 widen_low(Register v) { return _mm_cvt_roundsh_ss(_mm_setzero_ps(), v, sae); }
  template <Rounding mode>
  static Register narrow(__m128 v) {
    return _mm_cvt_roundss_sh(_mm_setzero_ph(), v, embedded<mode>);
  }
};

}  // namespace zorp
