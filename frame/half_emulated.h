// Half arithmetic for processors without AVX512-FP16, on AVX-512 float operations.
//
// Every operation takes 16 halves packed in a __m256i and gives the bits that the AVX512-FP16
// instruction of the same meaning gives: in all rounding modes, for subnormals, both zeros,
// infinities, quiet and signalling NaNs. The static modes don't depend on MXCSR and raise no
// exception flags; `current`, and an immediate that asks for it, takes the rounding mode from
// there. As in the instructions, narrowing takes subnormal floats and doubles for zeros if MXCSR
// says so.
//
// Why one detour through float rounds only once:
//  - Float holds every half as a normal number, and no sum, product, quotient or square root of
//    halves under- or overflows there, nor does a fused a*b + c (2^-48 <= |result| < 2^33).
//  - Directed roundings compose: rounding down to float and then down to half is rounding down.
//  - To nearest, float's 24 bits exceed 2*11 + 1, so a sum, quotient or root rounded to float never
//    lands on a midpoint of two halves (a product is exact there). The fused operation has no such
//    guarantee; it rounds to odd before it narrows.
//
// NaN operands: the float instruction passes them on by the same rules as the half one, and
// widening and narrowing keep payload and sign. The first NaN operand wins, in the order (a, b, c)
// for the fused operations. Operations whose operands the compiler may exchange are written in
// assembly.
#pragma once

#include <immintrin.h>

#include "frame/assembly.h"
#include "frame/rounding.h"

namespace zorp::emulated {

using assembly::Fused;

// ---- Widening and narrowing

/// 16 halves as floats; exact, signalling NaNs become quiet (vcvtph2psx).
inline __m512 widen(__m256i v) { return _mm512_cvt_roundph_ps(v, sae); }

/// 16 floats rounded to halves (vcvtps2phx).
template <Rounding mode>
inline __m256i narrow(__m512 v) {
  return assembly::narrow<mode>(v);
}

namespace detail {

/// Narrows floats that are halves already.
inline __m256i narrow_exact(__m512 v) { return narrow<rz>(v); }

/// Narrows the low 8 floats.
template <Rounding mode>
inline __m128i narrow8(__m256 v) {
  return _mm256_castsi256_si128(narrow<mode>(_mm512_zextps256_ps512(v)));
}

/// Widens 8 halves.
inline __m256 widen8(__m128i v) { return _mm512_castps512_ps256(widen(_mm256_zextsi128_si256(v))); }

/// Round to odd from the roundings down and up of one value. They are equal where it is exact and
/// neighbours otherwise; of two neighbours exactly one has an odd significand. The result rounds
/// once more, in any mode, as the exact value would. An exact zero sum comes out as +0.
inline __m512 round_to_odd(__m512 down, __m512 up) {
  const __mmask16 odd = _mm512_test_epi32_mask(_mm512_castps_si512(down), _mm512_set1_epi32(1));
  return _mm512_mask_mov_ps(up, odd, down);
}

template <Fused form, Rounding mode>
inline __m256i fused(__m256i a, __m256i b, __m256i c) {
  const __m512 x = widen(a), y = widen(b), z = widen(c);
  if constexpr (mode == rd || mode == ru || mode == rz) {
    return narrow<mode>(assembly::fused<form, mode>(x, y, z));
  } else {
    const __m512 down = assembly::fused<form, rd>(x, y, z);
    const __m512 up = assembly::fused<form, ru>(x, y, z);
    __m512 sum = round_to_odd(down, up);
    if constexpr (mode == Rounding::current) {
      // An exact zero sum is -0 + +0 here, and so gets the sign that the current mode gives it.
      const __mmask16 zero = _mm512_cmp_round_ps_mask(sum, _mm512_setzero_ps(), _CMP_EQ_OQ, sae);
      sum = _mm512_mask_mov_ps(sum, zero, assembly::add<mode>(down, up));
    }
    return narrow<mode>(sum);
  }
}

}  // namespace detail

/// 8 halves as doubles; exact.
inline __m512d widen_double(__m128i v) { return _mm512_cvt_roundps_pd(detail::widen8(v), sae); }

/// 8 doubles rounded once to halves (vcvtpd2ph).
template <Rounding mode>
inline __m128i narrow(__m512d v) {
  if constexpr (mode == rn) {
    const __m512 down = _mm512_castps256_ps512(_mm512_cvt_roundpd_ps(v, embedded<rd>));
    const __m512 up = _mm512_castps256_ps512(_mm512_cvt_roundpd_ps(v, embedded<ru>));
    return detail::narrow8<mode>(_mm512_castps512_ps256(detail::round_to_odd(down, up)));
  } else if constexpr (mode == rz) {
    return detail::narrow8<mode>(_mm512_cvt_roundpd_ps(v, embedded<mode>));
  } else {
    // A nonzero value must stay nonzero in float even where subnormals are flushed: below half's
    // smallest subnormal any magnitude rounds like any other.
    const __mmask8 nonzero = _mm512_cmp_round_pd_mask(v, _mm512_setzero_pd(), _CMP_NEQ_OQ, sae);
    constexpr int larger_magnitude = 3;
    const __m512d kept =
        _mm512_mask_range_round_pd(v, nonzero, v, _mm512_set1_pd(0x1p-100), larger_magnitude, sae);
    if constexpr (mode == Rounding::current) {
      const __m512 down = _mm512_castps256_ps512(_mm512_cvt_roundpd_ps(kept, embedded<rd>));
      const __m512 up = _mm512_castps256_ps512(_mm512_cvt_roundpd_ps(kept, embedded<ru>));
      return detail::narrow8<mode>(_mm512_castps512_ps256(detail::round_to_odd(down, up)));
    } else {
      return detail::narrow8<mode>(_mm512_cvt_roundpd_ps(kept, embedded<mode>));
    }
  }
}

// ---- Arithmetic

template <Rounding mode = rn>
inline __m256i add(__m256i a, __m256i b) {
  return narrow<mode>(assembly::add<mode>(widen(a), widen(b)));
}

template <Rounding mode = rn>
inline __m256i sub(__m256i a, __m256i b) {
  return narrow<mode>(_mm512_sub_round_ps(widen(a), widen(b), embedded<mode>));
}

template <Rounding mode = rn>
inline __m256i mul(__m256i a, __m256i b) {
  return narrow<mode>(assembly::mul_toward_zero(widen(a), widen(b)));
}

template <Rounding mode = rn>
inline __m256i div(__m256i a, __m256i b) {
  return narrow<mode>(_mm512_div_round_ps(widen(a), widen(b), embedded<mode>));
}

template <Rounding mode = rn>
inline __m256i sqrt(__m256i v) {
  return narrow<mode>(_mm512_sqrt_round_ps(widen(v), embedded<mode>));
}

/// a*b + c
template <Rounding mode = rn>
inline __m256i fma(__m256i a, __m256i b, __m256i c) {
  return detail::fused<Fused::madd, mode>(a, b, c);
}

/// a*b - c
template <Rounding mode = rn>
inline __m256i fms(__m256i a, __m256i b, __m256i c) {
  return detail::fused<Fused::msub, mode>(a, b, c);
}

/// c - a*b
template <Rounding mode = rn>
inline __m256i fnma(__m256i a, __m256i b, __m256i c) {
  return detail::fused<Fused::nmadd, mode>(a, b, c);
}

/// -a*b - c
template <Rounding mode = rn>
inline __m256i fnms(__m256i a, __m256i b, __m256i c) {
  return detail::fused<Fused::nmsub, mode>(a, b, c);
}

namespace detail {
/// An estimate of 14 bits as half's instructions give it: rounded to nearest, ties away from zero.
inline __m256i narrow_estimate(__m512 v) {
  const __mmask16 finite = ~_mm512_fpclass_ps_mask(v, 0x18);
  const __m512i beyond_tie = _mm512_or_si512(_mm512_castps_si512(v), _mm512_set1_epi32(1));
  return narrow<rn>(_mm512_mask_mov_ps(v, finite, _mm512_castsi512_ps(beyond_tie)));
}
}  // namespace detail

/// An estimate of 1/v, the one that processors with half arithmetic have.
inline __m256i reciprocal(__m256i v) { return detail::narrow_estimate(_mm512_rcp14_ps(widen(v))); }

/// The same of 1/sqrt(v).
inline __m256i reciprocal_root(__m256i v) {
  return detail::narrow_estimate(_mm512_rsqrt14_ps(widen(v)));
}

// ---- Comparison and classes

/// One bit per lane; `predicate` is one of the 32 _CMP_ values.
template <int predicate>
inline __mmask16 compare(__m256i a, __m256i b) {
  return _mm512_cmp_round_ps_mask(widen(a), widen(b), predicate, sae);
}

/// a < b ? a : b, so the second operand where either is a NaN or both are zeros.
inline __m256i min(__m256i a, __m256i b) {
  return _mm256_mask_mov_epi16(b, compare<_CMP_LT_OQ>(a, b), a);
}

/// a > b ? a : b, so the second operand where either is a NaN or both are zeros.
inline __m256i max(__m256i a, __m256i b) {
  return _mm256_mask_mov_epi16(b, compare<_CMP_GT_OQ>(a, b), a);
}

namespace detail {

/// Whether a half belongs to one of the classes that vfpclassph's immediate names.
constexpr bool in_classes(int imm, unsigned bits) {
  const bool negative = bits >> 15;
  const unsigned magnitude = bits & 0x7fff;
  int classes = 0;
  if (magnitude == 0) {
    classes = negative ? 0x04 : 0x02;
  } else if (magnitude < 0x0400) {
    classes = negative ? 0x60 : 0x20;
  } else if (magnitude < 0x7c00) {
    classes = negative ? 0x40 : 0;
  } else if (magnitude == 0x7c00) {
    classes = negative ? 0x10 : 0x08;
  } else {
    classes = magnitude < 0x7e00 ? 0x80 : 0x01;
  }
  return imm & classes;
}

/// The first half above `bits` whose class may differ: classes are runs of encodings.
constexpr unsigned next_class(unsigned bits) {
  const unsigned sign = bits & 0x8000;
  constexpr unsigned begins[] = {0x0001, 0x0400, 0x7c00, 0x7c01, 0x7e00};
  for (unsigned begin : begins) {
    if ((bits & 0x7fff) < begin) return sign | begin;
  }
  return sign + 0x8000;
}

constexpr unsigned skip_classes(int imm, unsigned bits, unsigned end, bool inside) {
  while (bits < end && in_classes(imm, bits) == inside) bits = next_class(bits);
  return bits < end ? bits : end;
}

constexpr bool ignores_sign(int imm) {
  for (unsigned bits = 0; bits < 0x8000; bits = next_class(bits)) {
    if (in_classes(imm, bits) != in_classes(imm, bits | 0x8000)) return false;
  }
  return true;
}

/// The lanes of `v`, all below `end`, that lie at or above `from` and in the classes: one range
/// check for each run of encodings.
template <int imm, unsigned from, unsigned end>
inline __mmask16 classify_from(__m256i v) {
  constexpr unsigned first = skip_classes(imm, from, end, false);
  constexpr unsigned last = skip_classes(imm, first, end, true) - 1;
  if constexpr (first == end) {
    return 0;
  } else {
    __mmask16 run;
    if constexpr (first == last) {
      run = _mm256_cmpeq_epi16_mask(v, _mm256_set1_epi16(static_cast<short>(first)));
    } else if constexpr (last + 1 == end) {
      run = _mm256_cmpge_epu16_mask(v, _mm256_set1_epi16(static_cast<short>(first)));
    } else {
      run =
          _mm256_cmple_epu16_mask(_mm256_sub_epi16(v, _mm256_set1_epi16(static_cast<short>(first))),
                                  _mm256_set1_epi16(static_cast<short>(last - first)));
    }
    return run | classify_from<imm, last + 1, end>(v);
  }
}

}  // namespace detail

/// The lanes in any of the classes that `imm` names: 1 quiet NaN, 2 +0, 4 -0, 8 +inf, 16 -inf,
/// 32 subnormal, 64 negative finite (not -0), 128 signalling NaN.
template <int imm>
inline __mmask16 classify(__m256i v) {
  if constexpr (detail::ignores_sign(imm)) {
    return detail::classify_from<imm, 0, 0x8000>(_mm256_and_si256(v, _mm256_set1_epi16(0x7fff)));
  } else {
    return detail::classify_from<imm, 0, 0x10000>(v);
  }
}

// ---- Exponent and significand

/// v * 2^floor(s) (vscalefph).
template <Rounding mode = rn>
inline __m256i scale(__m256i v, __m256i s) {
  const __m512 x = widen(v);
  __m512 power = widen(s);
  if constexpr (mode != rn && mode != rz) {
    // Keep a finite power from underflowing in float: 2^-64 is tiny enough for every half.
    const __m512 infinity = _mm512_set1_ps(-__builtin_inff());
    const __mmask16 not_infinite = _mm512_cmp_round_ps_mask(power, infinity, _CMP_NEQ_UQ, sae);
    power = _mm512_mask_max_round_ps(power, not_infinite, _mm512_set1_ps(-64), power, sae);
  }
  const __m512 scaled = _mm512_scalef_round_ps(x, power, embedded<mode>);
  // An infinite power overrides a quiet NaN but not a signalling one, which widening has quieted.
  const __mmask16 nan = _mm512_cmp_round_ps_mask(x, x, _CMP_UNORD_Q, sae);
  const __mmask16 signalling = _mm256_mask_testn_epi16_mask(nan, v, _mm256_set1_epi16(0x0200));
  return narrow<mode>(_mm512_mask_mov_ps(scaled, signalling, x));
}

/// floor(log2|v|); -inf for a zero, +inf for an infinity (vgetexpph).
inline __m256i exponent(__m256i v) {
  return detail::narrow_exact(_mm512_getexp_round_ps(widen(v), sae));
}

/// The significand in the interval and with the sign that vgetmantph's `imm` names.
template <int imm>
inline __m256i significand(__m256i v) {
  return detail::narrow_exact(
      _mm512_getmant_round_ps(widen(v), static_cast<_MM_MANTISSA_NORM_ENUM>(imm & 3),
                              static_cast<_MM_MANTISSA_SIGN_ENUM>(imm >> 2 & 3), sae));
}

/// v rounded to a multiple of 2^-(imm >> 4) (vrndscaleph).
template <int imm>
inline __m256i round_scale(__m256i v) {
  return detail::narrow_exact(_mm512_roundscale_round_ps(widen(v), imm, sae));
}

/// v less its rounding to a multiple of 2^-(imm >> 4) (vreduceph). The difference is exact in
/// float; it rounds in the mode of `imm`.
template <int imm>
inline __m256i reduce(__m256i v) {
  constexpr Rounding mode =
      imm & _MM_FROUND_CUR_DIRECTION ? Rounding::current : static_cast<Rounding>(imm & 3);
  return narrow<mode>(_mm512_reduce_round_ps(widen(v), imm, sae));
}

// ---- Integers
//
// With rz these are the truncating conversions. A value out of range, an infinity or a NaN gives
// the most negative integer in the signed and the largest in the unsigned types.

template <Rounding mode>
inline __m256i to_int16(__m256i v) {
  const __m512i i = _mm512_cvt_roundps_epi32(widen(v), embedded<mode>);
  // Saturation serves the negative side, and the invalid conversions, which are INT32_MIN.
  return _mm256_mask_mov_epi16(_mm512_cvtsepi32_epi16(i),
                               _mm512_cmpgt_epi32_mask(i, _mm512_set1_epi32(0x7fff)),
                               _mm256_set1_epi16(-0x8000));
}

template <Rounding mode>
inline __m256i to_uint16(__m256i v) {
  // Negative and invalid results are large as unsigned numbers, so saturation serves them all.
  return _mm512_cvtusepi32_epi16(_mm512_cvt_roundps_epi32(widen(v), embedded<mode>));
}

template <Rounding mode>
inline __m512i to_int32(__m256i v) {
  return _mm512_cvt_roundps_epi32(widen(v), embedded<mode>);
}

template <Rounding mode>
inline __m512i to_uint32(__m256i v) {
  return _mm512_cvt_roundps_epu32(widen(v), embedded<mode>);
}

template <Rounding mode>
inline __m512i to_int64(__m128i v) {
  return _mm512_cvt_roundps_epi64(detail::widen8(v), embedded<mode>);
}

template <Rounding mode>
inline __m512i to_uint64(__m128i v) {
  return _mm512_cvt_roundps_epu64(detail::widen8(v), embedded<mode>);
}

// From integers: float is exact below 2^24, and every larger magnitude overflows half in the same
// way, whatever float made of it.

template <Rounding mode>
inline __m256i from_int32(__m512i v) {
  return narrow<mode>(_mm512_cvt_roundepi32_ps(v, embedded<mode>));
}

template <Rounding mode>
inline __m256i from_uint32(__m512i v) {
  return narrow<mode>(_mm512_cvt_roundepu32_ps(v, embedded<mode>));
}

template <Rounding mode>
inline __m256i from_int16(__m256i v) {
  return from_int32<mode>(_mm512_cvtepi16_epi32(v));
}

template <Rounding mode>
inline __m256i from_uint16(__m256i v) {
  return from_int32<mode>(_mm512_cvtepu16_epi32(v));
}

template <Rounding mode>
inline __m128i from_int64(__m512i v) {
  return detail::narrow8<mode>(_mm512_cvt_roundepi64_ps(v, embedded<mode>));
}

template <Rounding mode>
inline __m128i from_uint64(__m512i v) {
  return detail::narrow8<mode>(_mm512_cvt_roundepu64_ps(v, embedded<mode>));
}

}  // namespace zorp::emulated
