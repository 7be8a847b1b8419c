// Half arithmetic: by its own instructions where the target has them, else by float arithmetic that
// gives the same bits.
#pragma once

#ifdef __AVX512FP16__

#include "frame/half_native.h"

namespace zorp {
inline constexpr bool half_is_emulated = false;
}  // namespace zorp

#else

#include "frame/half_emulated.h"
#include "frame/instructions.h"

namespace zorp {

inline constexpr bool half_is_emulated = true;

/// Up to 16 lanes, in a 256-bit register.
template <>
struct Instructions<half, 16> {
  using Register = __m256i;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return emulated::add<mode>(a, b);
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return emulated::sub<mode>(a, b);
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return emulated::mul<mode>(a, b);
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return emulated::div<mode>(a, b);
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return emulated::sqrt<mode>(a);
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return emulated::fma<mode>(a, b, c);
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return emulated::fms<mode>(a, b, c);
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return emulated::fnma<mode>(a, b, c);
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return emulated::scale<mode>(v, s);
  }
  static Register exponent(Register v) { return emulated::exponent(v); }
  template <int imm>
  static Register significand(Register v) {
    return emulated::significand<imm>(v);
  }
  template <int imm>
  static Register round_scale(Register v) {
    return emulated::round_scale<imm>(v);
  }
  template <int imm>
  static Register reduce(Register v) {
    return emulated::reduce<imm>(v);
  }
  static Register min(Register a, Register b) { return emulated::min(a, b); }
  static Register max(Register a, Register b) { return emulated::max(a, b); }
  static Register reciprocal(Register v) { return emulated::reciprocal(v); }
  static Register reciprocal_root(Register v) { return emulated::reciprocal_root(v); }
  template <int imm>
  static __mmask16 classify(Register v) {
    return emulated::classify<imm>(v);
  }
  template <int predicate>
  static __mmask16 compare(Register a, Register b) {
    return emulated::compare<predicate>(a, b);
  }
  static Register blend(__mmask16 mask, Register set, Register clear) {
    return _mm256_mask_mov_epi16(clear, mask, set);
  }
  static Register add_in_order(Register a, Register b) { return emulated::add<rn>(a, b); }
  static Register mul_in_order(Register a, Register b) { return emulated::mul<rn>(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) {
    return emulated::fma<rn>(a, b, c);
  }
  static Register fnma_in_order(Register a, Register b, Register c) {
    return emulated::fnma<rn>(a, b, c);
  }
  static Register bit_and(Register a, Register b) { return _mm256_and_si256(a, b); }
  static Register bit_or(Register a, Register b) { return _mm256_or_si256(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm256_xor_si256(a, b); }
  static __m512i bits(Register v) { return _mm512_castsi256_si512(v); }
  static Register from_bits(__m512i v) { return _mm512_castsi512_si256(v); }
  static Register load_row(const void* row) {
    return _mm256_load_si256(static_cast<const __m256i*>(row));
  }
  template <Rounding mode>
  static __m512i to_int16(Register v) {
    return bits(emulated::to_int16<mode>(v));
  }
  template <Rounding mode>
  static __m512i to_uint16(Register v) {
    return bits(emulated::to_uint16<mode>(v));
  }
  static __m512 widen_low(Register v) { return emulated::widen(v); }
  template <Rounding mode>
  static Register narrow(__m512 v) {
    return emulated::narrow<mode>(v);
  }
};

/// 32 lanes, as two times 16.
template <>
struct Instructions<half, 32> {
  using Register = __m512i;

  template <Rounding mode>
  static Register add(Register a, Register b) {
    return join(emulated::add<mode>(low(a), low(b)), emulated::add<mode>(high(a), high(b)));
  }
  template <Rounding mode>
  static Register sub(Register a, Register b) {
    return join(emulated::sub<mode>(low(a), low(b)), emulated::sub<mode>(high(a), high(b)));
  }
  template <Rounding mode>
  static Register mul(Register a, Register b) {
    return join(emulated::mul<mode>(low(a), low(b)), emulated::mul<mode>(high(a), high(b)));
  }
  template <Rounding mode>
  static Register div(Register a, Register b) {
    return join(emulated::div<mode>(low(a), low(b)), emulated::div<mode>(high(a), high(b)));
  }
  template <Rounding mode>
  static Register sqrt(Register a) {
    return join(emulated::sqrt<mode>(low(a)), emulated::sqrt<mode>(high(a)));
  }
  template <Rounding mode>
  static Register fma(Register a, Register b, Register c) {
    return join(emulated::fma<mode>(low(a), low(b), low(c)),
                emulated::fma<mode>(high(a), high(b), high(c)));
  }
  template <Rounding mode>
  static Register fms(Register a, Register b, Register c) {
    return join(emulated::fms<mode>(low(a), low(b), low(c)),
                emulated::fms<mode>(high(a), high(b), high(c)));
  }
  template <Rounding mode>
  static Register fnma(Register a, Register b, Register c) {
    return join(emulated::fnma<mode>(low(a), low(b), low(c)),
                emulated::fnma<mode>(high(a), high(b), high(c)));
  }
  template <Rounding mode>
  static Register scale(Register v, Register s) {
    return join(emulated::scale<mode>(low(v), low(s)), emulated::scale<mode>(high(v), high(s)));
  }
  static Register exponent(Register v) {
    return join(emulated::exponent(low(v)), emulated::exponent(high(v)));
  }
  template <int imm>
  static Register significand(Register v) {
    return join(emulated::significand<imm>(low(v)), emulated::significand<imm>(high(v)));
  }
  template <int imm>
  static Register round_scale(Register v) {
    return join(emulated::round_scale<imm>(low(v)), emulated::round_scale<imm>(high(v)));
  }
  template <int imm>
  static Register reduce(Register v) {
    return join(emulated::reduce<imm>(low(v)), emulated::reduce<imm>(high(v)));
  }
  static Register min(Register a, Register b) {
    return join(emulated::min(low(a), low(b)), emulated::min(high(a), high(b)));
  }
  static Register max(Register a, Register b) {
    return join(emulated::max(low(a), low(b)), emulated::max(high(a), high(b)));
  }
  static Register reciprocal(Register v) {
    return join(emulated::reciprocal(low(v)), emulated::reciprocal(high(v)));
  }
  static Register reciprocal_root(Register v) {
    return join(emulated::reciprocal_root(low(v)), emulated::reciprocal_root(high(v)));
  }
  template <int imm>
  static __mmask32 classify(Register v) {
    return _mm512_kunpackw(emulated::classify<imm>(high(v)), emulated::classify<imm>(low(v)));
  }
  template <int predicate>
  static __mmask32 compare(Register a, Register b) {
    return _mm512_kunpackw(emulated::compare<predicate>(high(a), high(b)),
                           emulated::compare<predicate>(low(a), low(b)));
  }
  static Register blend(__mmask32 mask, Register set, Register clear) {
    return _mm512_mask_mov_epi16(clear, mask, set);
  }
  static Register add_in_order(Register a, Register b) { return add<rn>(a, b); }
  static Register mul_in_order(Register a, Register b) { return mul<rn>(a, b); }
  static Register fma_in_order(Register a, Register b, Register c) { return fma<rn>(a, b, c); }
  static Register fnma_in_order(Register a, Register b, Register c) { return fnma<rn>(a, b, c); }
  static Register bit_and(Register a, Register b) { return _mm512_and_si512(a, b); }
  static Register bit_or(Register a, Register b) { return _mm512_or_si512(a, b); }
  static Register bit_xor(Register a, Register b) { return _mm512_xor_si512(a, b); }
  static __m512i bits(Register v) { return v; }
  static Register from_bits(__m512i v) { return v; }
  static Register load_row(const void* row) { return _mm512_load_si512(row); }
  template <Rounding mode>
  static __m512i to_int16(Register v) {
    return join(emulated::to_int16<mode>(low(v)), emulated::to_int16<mode>(high(v)));
  }
  template <Rounding mode>
  static __m512i to_uint16(Register v) {
    return join(emulated::to_uint16<mode>(low(v)), emulated::to_uint16<mode>(high(v)));
  }
  static __m512 widen_low(Register v) { return emulated::widen(low(v)); }
  static __m512 widen_high(Register v) { return emulated::widen(high(v)); }
  template <Rounding mode>
  static Register narrow(__m512 low, __m512 high) {
    return join(emulated::narrow<mode>(low), emulated::narrow<mode>(high));
  }

 private:
  static __m256i low(Register v) { return _mm512_castsi512_si256(v); }
  static __m256i high(Register v) { return _mm512_extracti64x4_epi64(v, 1); }
  static Register join(__m256i low, __m256i high) {
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
  }
};

}  // namespace zorp

#endif
