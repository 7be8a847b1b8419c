// Integer lanes, bits, masks, permutations, casts, memory.
#pragma once

#include "registers.h"

namespace zorp {
namespace portable {

using I64 = long long;
using I32 = int;
using I16 = short;

/// All bits of the lanes of T whose bit is set in the mask.
template <class T>
inline __m256i spread(uint32_t mask) {
  if constexpr (sizeof(T) == 8) {
    const __m256i bit = _mm256_setr_epi64x(1, 2, 4, 8);
    return _mm256_cmpeq_epi64(_mm256_and_si256(_mm256_set1_epi64x(mask), bit), bit);
  } else if constexpr (sizeof(T) == 4) {
    const __m256i bit = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
    return _mm256_cmpeq_epi32(_mm256_and_si256(_mm256_set1_epi32(static_cast<int>(mask)), bit),
                              bit);
  } else {
    const __m256i bit = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096,
                                          8192, 16384, -32768);
    return _mm256_cmpeq_epi16(_mm256_and_si256(_mm256_set1_epi16(static_cast<short>(mask)), bit),
                              bit);
  }
}
/// The sign bits of the lanes of T.
template <class T>
inline uint32_t signs(__m256i v) {
  if constexpr (sizeof(T) == 8) {
    return static_cast<uint32_t>(_mm256_movemask_pd(_mm256_castsi256_pd(v)));
  } else if constexpr (sizeof(T) == 4) {
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(v)));
  } else {
    const __m128i bytes =
        _mm_packs_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    return static_cast<uint32_t>(_mm_movemask_epi8(bytes));
  }
}
template <class T>
inline uint32_t signs(__m512i v) {
  return signs<T>(split(v).low) | signs<T>(split(v).high) << 32 / sizeof(T);
}
template <class T>
inline uint32_t signs(__m128i v) {
  return signs<T>(_mm256_zextsi128_si256(v));
}

template <class T>
inline __m256i select(uint32_t mask, __m256i set, __m256i clear) {
  return _mm256_blendv_epi8(clear, set, spread<T>(mask));
}
template <class T>
inline __m128i select(uint32_t mask, __m128i set, __m128i clear) {
  return _mm_blendv_epi8(clear, set, _mm256_castsi256_si128(spread<T>(mask)));
}
template <class T>
inline __m512i select(uint32_t mask, __m512i set, __m512i clear) {
  return join<__m512i>(select<T>(mask, split(set).low, split(clear).low),
                       select<T>(mask >> 32 / sizeof(T), split(set).high, split(clear).high));
}

template <class T>
inline __m256i equal(__m256i a, __m256i b) {
  if constexpr (sizeof(T) == 8) return _mm256_cmpeq_epi64(a, b);
  if constexpr (sizeof(T) == 4) return _mm256_cmpeq_epi32(a, b);
  return _mm256_cmpeq_epi16(a, b);
}
template <class T>
inline __m256i greater(__m256i a, __m256i b) {
  if constexpr (sizeof(T) == 8) return _mm256_cmpgt_epi64(a, b);
  if constexpr (sizeof(T) == 4) return _mm256_cmpgt_epi32(a, b);
  return _mm256_cmpgt_epi16(a, b);
}
template <class T>
inline __m512i equal(__m512i a, __m512i b) {
  return by_halves<__m512i>([](__m256i x, __m256i y) { return equal<T>(x, y); }, a, b);
}
template <class T>
inline __m512i greater(__m512i a, __m512i b) {
  return by_halves<__m512i>([](__m256i x, __m256i y) { return greater<T>(x, y); }, a, b);
}
template <class T>
inline __m128i equal(__m128i a, __m128i b) {
  return _mm256_castsi256_si128(equal<T>(_mm256_zextsi128_si256(a), _mm256_zextsi128_si256(b)));
}
template <class T>
inline __m128i greater(__m128i a, __m128i b) {
  return _mm256_castsi256_si128(greater<T>(_mm256_zextsi128_si256(a), _mm256_zextsi128_si256(b)));
}
/// The comparison of signed integers by the processor's predicate.
template <class T, class V>
[[gnu::always_inline]] inline uint32_t compare(V a, V b, int predicate) {
  constexpr uint32_t all = static_cast<uint32_t>(~uint64_t{0} >> (64 - sizeof(V) / sizeof(T)));
  switch (predicate) {
    case _MM_CMPINT_EQ:
      return signs<T>(equal<T>(a, b)) & all;
    case _MM_CMPINT_LT:
      return signs<T>(greater<T>(b, a)) & all;
    case _MM_CMPINT_LE:
      return ~signs<T>(greater<T>(a, b)) & all;
    case _MM_CMPINT_NE:
      return ~signs<T>(equal<T>(a, b)) & all;
    case _MM_CMPINT_NLT:
      return ~signs<T>(greater<T>(b, a)) & all;
    case _MM_CMPINT_NLE:
      return signs<T>(greater<T>(a, b)) & all;
    default:
      return predicate == 7 ? all : 0;
  }
}

template <class T, class V>
inline V shift_left(V v, V count) {
  return by_lanes<T>(
      [](T x, T n) { return static_cast<T>(n < T(8 * sizeof(T)) ? uint64_t(x) << n : 0); }, v,
      by_lanes<T>([](T n) { return n < 0 ? T(8 * sizeof(T)) : n; }, count));
}
/// The upper word of high:low shifted left by n, modulo 32.
template <class V>
inline V shift_left_joined(V high, V low, int n) {
  return by_lanes<uint32_t>(
      [n](uint32_t h, uint32_t l) {
        return static_cast<uint32_t>((uint64_t{h} << 32 | l) << (n & 31) >> 32);
      },
      high, low);
}
/// Entry index mod n of the table's n lanes, or of two tables one after the other.
template <class T>
inline __m512i permute(__m512i index, __m512i table) {
  const auto entries = lanes<T>(table);
  return by_lanes<T>([&](T i) { return entries.lane[i & (entries.count - 1)]; }, index);
}
template <class T>
inline __m512i permute(__m512i index, __m512i low, __m512i high) {
  struct {
    Lanes<T, __m512i> part[2];
  } tables = {{lanes<T>(low), lanes<T>(high)}};
  constexpr int count = Lanes<T, __m512i>::count;
  return by_lanes<T>([&](T i) { return tables.part[i & count ? 1 : 0].lane[i & (count - 1)]; },
                     index);
}
template <class V>
[[gnu::always_inline]] inline V ternary_logic(V a, V b, V c, int truth) {
  const auto zero = a ^ a;
  auto result = zero;
  for (int i = 0; i < 8; ++i)
    if (truth >> i & 1) result |= (i & 4 ? a : ~a) & (i & 2 ? b : ~b) & (i & 1 ? c : ~c);
  return result;
}

using V64 = long long __attribute__((vector_size(64), may_alias));
using V32 = int __attribute__((vector_size(64), may_alias));
using V16 = short __attribute__((vector_size(64), may_alias));
using U64 = unsigned long long __attribute__((vector_size(64), may_alias));
using U32 = unsigned __attribute__((vector_size(64), may_alias));
using U16 = unsigned short __attribute__((vector_size(64), may_alias));

}  // namespace portable

// ---- Arithmetic, shifts. Vectors of 64 bytes are lowered to registers that there are. ----

inline __m512i _mm512_add_epi64(__m512i a, __m512i b) {
  return (__m512i)((portable::U64)a + (portable::U64)b);
}
inline __m512i _mm512_add_epi32(__m512i a, __m512i b) {
  return (__m512i)((portable::U32)a + (portable::U32)b);
}
inline __m512i _mm512_add_epi16(__m512i a, __m512i b) {
  return (__m512i)((portable::U16)a + (portable::U16)b);
}
inline __m512i _mm512_sub_epi64(__m512i a, __m512i b) {
  return (__m512i)((portable::U64)a - (portable::U64)b);
}
inline __m512i _mm512_sub_epi32(__m512i a, __m512i b) {
  return (__m512i)((portable::U32)a - (portable::U32)b);
}
inline __m512i _mm512_sub_epi16(__m512i a, __m512i b) {
  return (__m512i)((portable::U16)a - (portable::U16)b);
}
inline __m512i _mm512_mullo_epi64(__m512i a, __m512i b) {
  return (__m512i)((portable::U64)a * (portable::U64)b);
}
inline __m512i _mm512_mullo_epi32(__m512i a, __m512i b) {
  return (__m512i)((portable::U32)a * (portable::U32)b);
}
inline __m512i _mm512_mullo_epi16(__m512i a, __m512i b) {
  return (__m512i)((portable::U16)a * (portable::U16)b);
}
inline __m512i _mm512_mul_epu32(__m512i a, __m512i b) {
  return portable::by_halves<__m512i>(::_mm256_mul_epu32, a, b);
}
inline __m512i _mm512_mul_epi32(__m512i a, __m512i b) {
  return portable::by_halves<__m512i>(::_mm256_mul_epi32, a, b);
}
inline __m512i _mm512_and_si512(__m512i a, __m512i b) { return a & b; }
inline __m512i _mm512_or_si512(__m512i a, __m512i b) { return a | b; }
inline __m512i _mm512_xor_si512(__m512i a, __m512i b) { return a ^ b; }
inline __m512i _mm512_andnot_si512(__m512i a, __m512i b) { return ~a & b; }

#define ZORP_SHIFT(name, T, instruction)                                                         \
  inline __m512i _mm512_##name(__m512i v, unsigned n) {                                          \
    return portable::by_halves<__m512i>(                                                         \
        [n](__m256i half) { return _mm256_##instruction(half, _mm_cvtsi32_si128(int(n))); }, v); \
  }
ZORP_SHIFT(slli_epi64, long long, sll_epi64)
ZORP_SHIFT(slli_epi32, int, sll_epi32)
ZORP_SHIFT(slli_epi16, short, sll_epi16)
ZORP_SHIFT(srli_epi64, long long, srl_epi64)
ZORP_SHIFT(srli_epi32, int, srl_epi32)
ZORP_SHIFT(srli_epi16, short, srl_epi16)
ZORP_SHIFT(srai_epi32, int, sra_epi32)
ZORP_SHIFT(srai_epi16, short, sra_epi16)
#undef ZORP_SHIFT
inline __m512i _mm512_srai_epi64(__m512i v, unsigned n) {
  return (__m512i)((portable::V64)v >> (n < 64 ? n : 63));
}
inline __m128i _mm_srai_epi64(__m128i v, unsigned n) {
  return portable::by_lanes<portable::I64>([n](long long x) { return x >> (n < 64 ? n : 63); }, v);
}
inline __m512i _mm512_sllv_epi64(__m512i v, __m512i n) {
  return portable::by_halves<__m512i>([](__m256i x, __m256i c) { return _mm256_sllv_epi64(x, c); },
                                      v, n);
}
inline __m512i _mm512_sllv_epi32(__m512i v, __m512i n) {
  return portable::by_halves<__m512i>([](__m256i x, __m256i c) { return _mm256_sllv_epi32(x, c); },
                                      v, n);
}
inline __m512i _mm512_srlv_epi64(__m512i v, __m512i n) {
  return portable::by_halves<__m512i>([](__m256i x, __m256i c) { return _mm256_srlv_epi64(x, c); },
                                      v, n);
}
inline __m512i _mm512_srlv_epi32(__m512i v, __m512i n) {
  return portable::by_halves<__m512i>([](__m256i x, __m256i c) { return _mm256_srlv_epi32(x, c); },
                                      v, n);
}
inline __m512i _mm512_sllv_epi16(__m512i v, __m512i n) { return portable::shift_left<short>(v, n); }
inline __m128i _mm_sllv_epi16(__m128i v, __m128i n) { return portable::shift_left<short>(v, n); }
inline __m512i _mm512_shldi_epi32(__m512i high, __m512i low, int n) {
  return portable::shift_left_joined(high, low, n);
}
inline __m128i _mm_shldi_epi32(__m128i high, __m128i low, int n) {
  return portable::shift_left_joined(high, low, n);
}

inline __m512i _mm512_abs_epi64(__m512i v) {
  return portable::by_lanes<uint64_t>([](uint64_t x) { return int64_t(x) < 0 ? -x : x; }, v);
}
inline __m128i _mm_abs_epi64(__m128i v) {
  return portable::by_lanes<uint64_t>([](uint64_t x) { return int64_t(x) < 0 ? -x : x; }, v);
}
inline __m512i _mm512_abs_epi32(__m512i v) {
  return portable::by_halves<__m512i>([](__m256i x) { return _mm256_abs_epi32(x); }, v);
}

#define ZORP_MINMAX(bits, T)                                                          \
  inline __m512i _mm512_min_epi##bits(__m512i a, __m512i b) {                         \
    return portable::select<T>(portable::signs<T>(portable::greater<T>(a, b)), b, a); \
  }                                                                                   \
  inline __m512i _mm512_max_epi##bits(__m512i a, __m512i b) {                         \
    return portable::select<T>(portable::signs<T>(portable::greater<T>(a, b)), a, b); \
  }
ZORP_MINMAX(64, long long)
ZORP_MINMAX(32, int)
ZORP_MINMAX(16, short)
#undef ZORP_MINMAX
inline __m128i _mm_min_epi64(__m128i a, __m128i b) {
  return portable::by_lanes<portable::I64>([](auto x, auto y) { return x < y ? x : y; }, a, b);
}
inline __m128i _mm_max_epi64(__m128i a, __m128i b) {
  return portable::by_lanes<portable::I64>([](auto x, auto y) { return x > y ? x : y; }, a, b);
}
[[gnu::always_inline]] inline __m512i _mm512_ternarylogic_epi64(__m512i a, __m512i b, __m512i c,
                                                                int truth) {
  return portable::ternary_logic(a, b, c, truth);
}
[[gnu::always_inline]] inline __m128i _mm_ternarylogic_epi64(__m128i a, __m128i b, __m128i c,
                                                             int truth) {
  return portable::ternary_logic(a, b, c, truth);
}

// ---- Comparisons, masks ----

#define ZORP_MASKS(bits, T, Mask)                                                          \
  [[gnu::always_inline]] inline Mask _mm512_cmp_epi##bits##_mask(__m512i a, __m512i b,     \
                                                                 int predicate) {          \
    return static_cast<Mask>(portable::compare<T>(a, b, predicate));                       \
  }                                                                                        \
  [[gnu::always_inline]] inline __mmask8 _mm_cmp_epi##bits##_mask(__m128i a, __m128i b,    \
                                                                  int predicate) {         \
    return static_cast<__mmask8>(portable::compare<T>(a, b, predicate));                   \
  }                                                                                        \
  inline Mask _mm512_cmpgt_epi##bits##_mask(__m512i a, __m512i b) {                        \
    return static_cast<Mask>(portable::compare<T>(a, b, _MM_CMPINT_NLE));                  \
  }                                                                                        \
  inline Mask _mm512_cmpeq_epi##bits##_mask(__m512i a, __m512i b) {                        \
    return static_cast<Mask>(portable::compare<T>(a, b, _MM_CMPINT_EQ));                   \
  }                                                                                        \
  inline Mask _mm512_movepi##bits##_mask(__m512i v) {                                      \
    return static_cast<Mask>(portable::signs<T>(v));                                       \
  }                                                                                        \
  inline __mmask8 _mm_movepi##bits##_mask(__m128i v) {                                     \
    return static_cast<__mmask8>(portable::signs<T>(v));                                   \
  }                                                                                        \
  inline Mask _mm512_test_epi##bits##_mask(__m512i a, __m512i b) {                         \
    return static_cast<Mask>(portable::compare<T>(a & b, a ^ a, _MM_CMPINT_NE));           \
  }                                                                                        \
  inline __mmask8 _mm_test_epi##bits##_mask(__m128i a, __m128i b) {                        \
    return static_cast<__mmask8>(portable::compare<T>(a & b, a ^ a, _MM_CMPINT_NE));       \
  }                                                                                        \
  inline __m512i _mm512_mask_mov_epi##bits(__m512i clear, Mask mask, __m512i set) {        \
    return portable::select<T>(mask, set, clear);                                          \
  }                                                                                        \
  inline __m128i _mm_mask_mov_epi##bits(__m128i clear, __mmask8 mask, __m128i set) {       \
    return portable::select<T>(mask, set, clear);                                          \
  }                                                                                        \
  inline __m512i _mm512_permutexvar_epi##bits(__m512i index, __m512i table) {              \
    return portable::permute<T>(index, table);                                             \
  }                                                                                        \
  inline __m512i _mm512_permutex2var_epi##bits(__m512i low, __m512i index, __m512i high) { \
    return portable::permute<T>(index, low, high);                                         \
  }
ZORP_MASKS(64, long long, __mmask8)
ZORP_MASKS(32, int, __mmask16)
ZORP_MASKS(16, short, __mmask32)
#undef ZORP_MASKS

inline __m256i _mm256_mask_mov_epi16(__m256i clear, __mmask16 mask, __m256i set) {
  return portable::select<short>(mask, set, clear);
}
inline __mmask16 _mm256_cmpeq_epi16_mask(__m256i a, __m256i b) {
  return static_cast<__mmask16>(portable::signs<short>(_mm256_cmpeq_epi16(a, b)));
}
inline __mmask16 _mm256_cmpge_epu16_mask(__m256i a, __m256i b) {
  return _mm256_cmpeq_epi16_mask(_mm256_max_epu16(a, b), a);
}
inline __mmask16 _mm256_cmple_epu16_mask(__m256i a, __m256i b) {
  return _mm256_cmpge_epu16_mask(b, a);
}
inline __mmask16 _mm256_mask_testn_epi16_mask(__mmask16 mask, __m256i a, __m256i b) {
  return mask & _mm256_cmpeq_epi16_mask(_mm256_and_si256(a, b), _mm256_setzero_si256());
}

#define ZORP_MASK_LOGIC(bits)                                                \
  inline __mmask##bits _kand_mask##bits(__mmask##bits a, __mmask##bits b) {  \
    return static_cast<__mmask##bits>(a & b);                                \
  }                                                                          \
  inline __mmask##bits _kandn_mask##bits(__mmask##bits a, __mmask##bits b) { \
    return static_cast<__mmask##bits>(~a & b);                               \
  }                                                                          \
  inline __mmask##bits _kor_mask##bits(__mmask##bits a, __mmask##bits b) {   \
    return static_cast<__mmask##bits>(a | b);                                \
  }                                                                          \
  inline __mmask##bits _kxor_mask##bits(__mmask##bits a, __mmask##bits b) {  \
    return static_cast<__mmask##bits>(a ^ b);                                \
  }                                                                          \
  inline __mmask##bits _knot_mask##bits(__mmask##bits a) { return static_cast<__mmask##bits>(~a); }
ZORP_MASK_LOGIC(8)
ZORP_MASK_LOGIC(16)
ZORP_MASK_LOGIC(32)
#undef ZORP_MASK_LOGIC
#undef _kshiftli_mask8
#undef _kshiftri_mask16
#undef _kshiftri_mask32
inline __mmask8 _kshiftli_mask8(__mmask8 a, unsigned n) {
  return static_cast<__mmask8>(n < 8 ? a << n : 0);
}
inline unsigned char _kortestz_mask8_u8(__mmask8 a, __mmask8 b) { return (a | b) == 0; }
inline __mmask16 _kshiftri_mask16(__mmask16 a, unsigned n) {
  return static_cast<__mmask16>(n < 16 ? a >> n : 0);
}
inline __mmask32 _kshiftri_mask32(__mmask32 a, unsigned n) { return n < 32 ? a >> n : 0; }
inline __mmask16 _mm512_kunpackb(__mmask16 high, __mmask16 low) {
  return static_cast<__mmask16>((high & 0xff) << 8 | (low & 0xff));
}
inline __mmask32 _mm512_kunpackw(__mmask32 high, __mmask32 low) {
  return high << 16 | (low & 0xffff);
}

// ---- Constants, memory, parts, casts ----

inline __m512i _mm512_set1_epi64(long long x) {
  return portable::join<__m512i>(_mm256_set1_epi64x(x), _mm256_set1_epi64x(x));
}
inline __m512i _mm512_set1_epi32(int x) {
  return portable::join<__m512i>(_mm256_set1_epi32(x), _mm256_set1_epi32(x));
}
inline __m512i _mm512_set1_epi16(short x) {
  return portable::join<__m512i>(_mm256_set1_epi16(x), _mm256_set1_epi16(x));
}
inline __m512d _mm512_set1_pd(double x) {
  return portable::join<__m512d>(_mm256_set1_pd(x), _mm256_set1_pd(x));
}
inline __m512 _mm512_set1_ps(float x) {
  return portable::join<__m512>(_mm256_set1_ps(x), _mm256_set1_ps(x));
}
#undef _mm512_setr_epi32
template <class... Int>
inline __m512i _mm512_setr_epi32(Int... lane) {
  return __builtin_bit_cast(__m512i, (portable::Lanes<int, __m512i>{{lane...}}));
}
#undef _mm512_setr_epi64
template <class... Int>
inline __m512i _mm512_setr_epi64(Int... lane) {
  return __builtin_bit_cast(__m512i, (portable::Lanes<long long, __m512i>{{lane...}}));
}
inline __m512i _mm512_setzero_si512() { return __m512i{}; }
inline __m512d _mm512_setzero_pd() { return __m512d{}; }
inline __m512 _mm512_setzero_ps() { return __m512{}; }

inline __m512i _mm512_load_si512(const void* from) { return *static_cast<const __m512i*>(from); }
inline __m512i _mm512_loadu_si512(const void* from) {
  __m512i v;
  __builtin_memcpy(&v, from, sizeof v);
  return v;
}
inline __m512d _mm512_loadu_pd(const void* from) { return (__m512d)_mm512_loadu_si512(from); }
inline __m512 _mm512_loadu_ps(const void* from) { return (__m512)_mm512_loadu_si512(from); }
inline void _mm512_storeu_si512(void* to, __m512i v) { __builtin_memcpy(to, &v, sizeof v); }

inline void _mm512_storeu_pd(void* to, __m512d v) { __builtin_memcpy(to, &v, sizeof v); }
inline void _mm512_storeu_ps(void* to, __m512 v) { __builtin_memcpy(to, &v, sizeof v); }

/// A program's own change of MXCSR changes the caller's one.
inline unsigned _mm_getcsr() { return portable::controls[4]; }
inline void _mm_setcsr(unsigned mxcsr) {
  portable::set_caller_control(mxcsr);
  asm volatile("vldmxcsr %0" : : "m"(portable::controls[0]) : "memory");
}

#undef _mm512_extracti64x4_epi64
#undef _mm512_extractf32x8_ps
#undef _mm512_inserti64x4
#undef _mm512_insertf32x8
inline __m256i _mm512_extracti64x4_epi64(__m512i v, int i) {
  return i & 1 ? portable::split(v).high : portable::split(v).low;
}
inline __m256 _mm512_extractf32x8_ps(__m512 v, int i) {
  return i & 1 ? portable::split(v).high : portable::split(v).low;
}
inline __m512i _mm512_inserti64x4(__m512i v, __m256i part, int i) {
  return i & 1 ? portable::join<__m512i>(portable::split(v).low, part)
               : portable::join<__m512i>(part, portable::split(v).high);
}
inline __m512 _mm512_insertf32x8(__m512 v, __m256 part, int i) {
  return i & 1 ? portable::join<__m512>(portable::split(v).low, part)
               : portable::join<__m512>(part, portable::split(v).high);
}

inline __m512i _mm512_castpd_si512(__m512d v) { return (__m512i)v; }
inline __m512i _mm512_castps_si512(__m512 v) { return (__m512i)v; }
inline __m512d _mm512_castsi512_pd(__m512i v) { return (__m512d)v; }
inline __m512 _mm512_castsi512_ps(__m512i v) { return (__m512)v; }
inline __m256i _mm512_castsi512_si256(__m512i v) { return portable::split(v).low; }
inline __m256d _mm512_castpd512_pd256(__m512d v) { return portable::split(v).low; }
inline __m256 _mm512_castps512_ps256(__m512 v) { return portable::split(v).low; }
inline __m128i _mm512_castsi512_si128(__m512i v) {
  return _mm256_castsi256_si128(portable::split(v).low);
}
inline __m128d _mm512_castpd512_pd128(__m512d v) {
  return _mm256_castpd256_pd128(portable::split(v).low);
}
inline __m128 _mm512_castps512_ps128(__m512 v) {
  return _mm256_castps256_ps128(portable::split(v).low);
}
inline __m512i _mm512_castsi256_si512(__m256i v) { return portable::join<__m512i>(v, __m256i{}); }
inline __m512d _mm512_castpd256_pd512(__m256d v) { return portable::join<__m512d>(v, __m256d{}); }
inline __m512 _mm512_castps256_ps512(__m256 v) { return portable::join<__m512>(v, __m256{}); }
inline __m512i _mm512_zextsi256_si512(__m256i v) { return portable::join<__m512i>(v, __m256i{}); }
inline __m512d _mm512_zextpd256_pd512(__m256d v) { return portable::join<__m512d>(v, __m256d{}); }
inline __m512 _mm512_zextps256_ps512(__m256 v) { return portable::join<__m512>(v, __m256{}); }
inline __m512i _mm512_zextsi128_si512(__m128i v) {
  return _mm512_zextsi256_si512(_mm256_zextsi128_si256(v));
}
inline __m512d _mm512_zextpd128_pd512(__m128d v) {
  return _mm512_zextpd256_pd512(_mm256_zextpd128_pd256(v));
}
inline __m512 _mm512_zextps128_ps512(__m128 v) {
  return _mm512_zextps256_ps512(_mm256_zextps128_ps256(v));
}

#undef _mm512_i64gather_pd
#undef _mm512_i32gather_ps
#undef _mm512_i64gather_epi64
#undef _mm512_i32gather_epi32
inline __m512d _mm512_i64gather_pd(__m512i offset, const void* base, int scale) {
  return portable::by_lanes<double>(
      [&](double at) {
        double v;
        __builtin_memcpy(
            &v, static_cast<const char*>(base) + __builtin_bit_cast(int64_t, at) * scale, sizeof v);
        return v;
      },
      (__m512d)offset);
}
inline __m512 _mm512_i32gather_ps(__m512i offset, const void* base, int scale) {
  return portable::by_lanes<float>(
      [&](float at) {
        float v;
        __builtin_memcpy(
            &v, static_cast<const char*>(base) + int64_t{__builtin_bit_cast(int, at)} * scale,
            sizeof v);
        return v;
      },
      (__m512)offset);
}

}  // namespace zorp
