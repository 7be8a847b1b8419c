// Double arithmetic: one 512-bit register of 8 lanes, and the scalar forms for a single lane.
#pragma once

#include "frame/assembly.h"
#include "frame/instructions.h"
#include "frame/rounding.h"

namespace zorp {

template <int N>
struct Instructions<double, N> {
  using Register = __m512d;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return _mm512_add_round_pd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return _mm512_sub_round_pd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return _mm512_mul_round_pd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return _mm512_div_round_pd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return _mm512_sqrt_round_pd(a, embedded<mode>);
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return _mm512_fmadd_round_pd(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return _mm512_fmsub_round_pd(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return _mm512_fnmadd_round_pd(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return _mm512_scalef_round_pd(v, s, embedded<mode>);
  }
  static Register exponent(Register v) { return _mm512_getexp_round_pd(v, sae); }
  template <int imm>
  static Register significand(Register v) {
    return _mm512_getmant_round_pd(v, mantissa_interval<imm>, mantissa_sign<imm>, sae);
  }
  template <int imm>
  static Register round_scale(Register v) {
    return _mm512_roundscale_round_pd(v, imm, sae);
  }
  template <int imm>
  static Register reduce(Register v) {
    return _mm512_reduce_round_pd(v, imm, sae);
  }
  static Register min(Register a, Register b) { return _mm512_min_round_pd(a, b, sae); }
  static Register max(Register a, Register b) { return _mm512_max_round_pd(a, b, sae); }
  static Register reciprocal14(Register v) { return _mm512_rcp14_pd(v); }
  static Register reciprocal_root14(Register v) { return _mm512_rsqrt14_pd(v); }
  template <int imm>
  static __mmask8 classify(Register v) {
    return _mm512_fpclass_pd_mask(v, imm);
  }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm512_cmp_pd_mask(a, b, predicate);
  }
  template <int predicate>
  static __mmask8 compare_silently(Register a, Register b) {
    return _mm512_cmp_round_pd_mask(a, b, predicate, sae);
  }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm512_mask_mov_pd(clear, mask, set);
  }
  template <Rounding mode>
  static Register add_where(__mmask8 mask, Register a, Register b) {
    return _mm512_mask_add_round_pd(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub_where(__mmask8 mask, Register a, Register b) {
    return _mm512_mask_sub_round_pd(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul_where(__mmask8 mask, Register a, Register b) {
    return _mm512_mask_mul_round_pd(a, mask, a, b, embedded<mode>);
  }
  static Register add_in_order(Register a, Register b) { return assembly::add(a, b); }
  static Register mul_in_order(Register a, Register b) { return assembly::mul(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) {
    return assembly::fma(a, b, c);
  }
  static Register fnma_in_order(Register a, Register b, Register c) {
    return assembly::fnma(a, b, c);
  }
  static Register fix_up(Register otherwise, Register v, __m512i table) {
    return _mm512_fixupimm_round_pd(otherwise, v, table, 0, sae);
  }
  static Register bit_and(Register a, Register b) { return _mm512_and_pd(a, b); }
  static Register bit_or(Register a, Register b) { return _mm512_or_pd(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm512_xor_pd(a, b); }
  static __m512i bits(Register v) { return _mm512_castpd_si512(v); }
  static Register from_bits(__m512i v) { return _mm512_castsi512_pd(v); }
  static Register load_row(const void* row) { return from_bits(broadcast_64(row)); }
};

template <>
struct Instructions<double, 1> {
  using Register = __m128d;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return _mm_add_round_sd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return _mm_sub_round_sd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return _mm_mul_round_sd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return _mm_div_round_sd(a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return _mm_sqrt_round_sd(a, a, embedded<mode>);
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return _mm_fmadd_round_sd(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return _mm_fmsub_round_sd(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return _mm_fnmadd_round_sd(a, b, c, embedded<mode>);
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return _mm_scalef_round_sd(v, s, embedded<mode>);
  }
  static Register exponent(Register v) { return _mm_getexp_round_sd(v, v, sae); }
  template <int imm>
  static Register significand(Register v) {
    return _mm_getmant_round_sd(v, v, mantissa_interval<imm>, mantissa_sign<imm>, sae);
  }
  template <int imm>
  static Register round_scale(Register v) {
    return _mm_roundscale_round_sd(v, v, imm, sae);
  }
  template <int imm>
  static Register reduce(Register v) {
    return _mm_reduce_round_sd(v, v, imm, sae);
  }
  static Register min(Register a, Register b) { return _mm_min_round_sd(a, b, sae); }
  static Register max(Register a, Register b) { return _mm_max_round_sd(a, b, sae); }
  static Register reciprocal14(Register v) { return _mm_rcp14_sd(v, v); }
  static Register reciprocal_root14(Register v) { return _mm_rsqrt14_sd(v, v); }
  template <int imm>
  static __mmask8 classify(Register v) {
    return _mm_fpclass_sd_mask(v, imm);
  }
  template <int predicate>
  static __mmask8 compare(Register a, Register b) {
    return _mm_cmp_sd_mask(a, b, predicate);
  }
  template <int predicate>
  static __mmask8 compare_silently(Register a, Register b) {
    return _mm_cmp_round_sd_mask(a, b, predicate, sae);
  }
  static Register blend(__mmask8 mask, Register set, Register clear) {
    return _mm_mask_move_sd(clear, mask, clear, set);
  }
  template <Rounding mode>
  static Register add_where(__mmask8 mask, Register a, Register b) {
    return _mm_mask_add_round_sd(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register sub_where(__mmask8 mask, Register a, Register b) {
    return _mm_mask_sub_round_sd(a, mask, a, b, embedded<mode>);
  }
  template <Rounding mode>
  static Register mul_where(__mmask8 mask, Register a, Register b) {
    return _mm_mask_mul_round_sd(a, mask, a, b, embedded<mode>);
  }
  static Register add_in_order(Register a, Register b) { return assembly::add(a, b); }
  static Register mul_in_order(Register a, Register b) { return assembly::mul(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) {
    return assembly::fma(a, b, c);
  }
  static Register fnma_in_order(Register a, Register b, Register c) {
    return assembly::fnma(a, b, c);
  }
  static Register fix_up(Register otherwise, Register v, __m128i table) {
    return _mm_fixupimm_round_sd(otherwise, v, table, 0, sae);
  }
  static Register bit_and(Register a, Register b) { return _mm_and_pd(a, b); }
  static Register bit_or(Register a, Register b) { return _mm_or_pd(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm_xor_pd(a, b); }
  static __m128i bits(Register v) { return _mm_castpd_si128(v); }
  static Register from_bits(__m128i v) { return _mm_castsi128_pd(v); }
  static Register load_row(const void* row) { return _mm_load_sd(static_cast<const double*>(row)); }
};

}  // namespace zorp
