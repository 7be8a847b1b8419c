// Float arithmetic: one 512-bit register of 16 lanes, and the scalar forms for a single lane.
#pragma once

#include "frame/assembly.h"
#include "frame/instructions.h"
#include "frame/rounding.h"

namespace zorp {

template <int N>
struct Instructions<float, N> {
  using Register = __m512;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return _mm512_add_round_ps(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return _mm512_sub_round_ps(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return _mm512_mul_round_ps(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return _mm512_div_round_ps(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return _mm512_sqrt_round_ps(a, embedded<mode>);
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return _mm512_fmadd_round_ps(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return _mm512_fmsub_round_ps(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return _mm512_fnmadd_round_ps(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return _mm512_scalef_round_ps(v, s, embedded<mode>);
  }
  static Register exponent(Register v) { return _mm512_getexp_round_ps(v, sae); }
  template <int imm>
  static Register significand(Register v) {
    return _mm512_getmant_round_ps(v, mantissa_interval<imm>, mantissa_sign<imm>, sae);
  }
  template <int imm>
  static Register round_scale(Register v) {
    return _mm512_roundscale_round_ps(v, imm, sae);
  }
  template <int imm>
  static Register reduce(Register v) {
    return _mm512_reduce_round_ps(v, imm, sae);
  }
  static Register min(Register a, Register b) { return _mm512_min_round_ps(a, b, sae); }
  static Register max(Register a, Register b) { return _mm512_max_round_ps(a, b, sae); }
  static Register reciprocal14(Register v) { return _mm512_rcp14_ps(v); }
  static Register reciprocal_root14(Register v) { return _mm512_rsqrt14_ps(v); }
  template <int imm>
  static __mmask16 classify(Register v) {
    return _mm512_fpclass_ps_mask(v, imm);
  }
  template <int predicate>
  static __mmask16 compare(Register a, Register b) {
    return _mm512_cmp_ps_mask(a, b, predicate);
  }
  static Register blend(__mmask16 mask, Register set, Register clear) {
    return _mm512_mask_mov_ps(clear, mask, set);
  }
  template <Rounding mode>
  static Register add_where(__mmask16 mask, Register a, Register b) {
    return _mm512_mask_add_round_ps(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub_where(__mmask16 mask, Register a, Register b) {
    return _mm512_mask_sub_round_ps(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul_where(__mmask16 mask, Register a, Register b) {
    return _mm512_mask_mul_round_ps(a, mask, a, b, embedded<mode>);
  }
  static Register add_in_order(Register a, Register b) { return assembly::add(a, b); }
  static Register mul_in_order(Register a, Register b) { return assembly::mul(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) {
    return assembly::fma(a, b, c);
  }
  static Register fnma_in_order(Register a, Register b, Register c) {
    return assembly::fnma(a, b, c);
  }
  static Register bit_and(Register a, Register b) { return _mm512_and_ps(a, b); }
  static Register bit_or(Register a, Register b) { return _mm512_or_ps(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm512_xor_ps(a, b); }
  static __m512i bits(Register v) { return _mm512_castps_si512(v); }
  static Register from_bits(__m512i v) { return _mm512_castsi512_ps(v); }
  static Register load_row(const void* row) { return from_bits(broadcast_32(row)); }
};

template <>
struct Instructions<float, 1> {
  using Register = __m128;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return _mm_add_round_ss(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return _mm_sub_round_ss(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return _mm_mul_round_ss(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return _mm_div_round_ss(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return _mm_sqrt_round_ss(a, a, embedded<mode>);
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return _mm_fmadd_round_ss(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return _mm_fmsub_round_ss(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return _mm_fnmadd_round_ss(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return _mm_scalef_round_ss(v, s, embedded<mode>);
  }
  static Register exponent(Register v) { return _mm_getexp_round_ss(v, v, sae); }
  template <int imm>
  static Register significand(Register v) {
    return _mm_getmant_round_ss(v, v, mantissa_interval<imm>, mantissa_sign<imm>, sae);
  }
  template <int imm>
  static Register round_scale(Register v) {
    return _mm_roundscale_round_ss(v, v, imm, sae);
  }
  template <int imm>
  static Register reduce(Register v) {
    return _mm_reduce_round_ss(v, v, imm, sae);
  }
  static Register min(Register a, Register b) { return _mm_min_round_ss(a, b, sae); }
  static Register max(Register a, Register b) { return _mm_max_round_ss(a, b, sae); }
  static Register reciprocal14(Register v) { return _mm_rcp14_ss(v, v); }
  static Register reciprocal_root14(Register v) { return _mm_rsqrt14_ss(v, v); }
  template <int imm>
  static __mmask8 classify(Register v) {
    return _mm_fpclass_ss_mask(v, imm);
  }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm_cmp_ss_mask(a, b, predicate);
  }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm_mask_move_ss(clear, mask, clear, set);
  }
  template <Rounding mode>
  static Register add_where(__mmask8 mask, Register a, Register b) {
    return _mm_mask_add_round_ss(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub_where(__mmask8 mask, Register a, Register b) {
    return _mm_mask_sub_round_ss(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul_where(__mmask8 mask, Register a, Register b) {
    return _mm_mask_mul_round_ss(a, mask, a, b, embedded<mode>);
  }
  static Register add_in_order(Register a, Register b) { return assembly::add(a, b); }
  static Register mul_in_order(Register a, Register b) { return assembly::mul(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) {
    return assembly::fma(a, b, c);
  }
  static Register fnma_in_order(Register a, Register b, Register c) {
    return assembly::fnma(a, b, c);
  }
  static Register bit_and(Register a, Register b) { return _mm_and_ps(a, b); }
  static Register bit_or(Register a, Register b) { return _mm_or_ps(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm_xor_ps(a, b); }
  static __m128i bits(Register v) { return _mm_castps_si128(v); }
  static Register from_bits(__m128i v) { return _mm_castsi128_ps(v); }
  static Register load_row(const void* row) { return _mm_load_ss(static_cast<const float*>(row)); }
};

}  // namespace zorp
