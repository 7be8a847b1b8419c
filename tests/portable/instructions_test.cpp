// The shadows of intrinsics give the bits of the processor's instructions: for special values,
// every exponent and random bits, in all static rounding modes and the caller's, with subnormals
// and with zeros in their place. Estimates are close to the processor's, no more.
#include <gtest/gtest.h>
#include <immintrin.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "tests/support/operands.h"

namespace {

union alignas(64) Register {
  __m512d pd;
  __m512 ps;
  __m512i i;
  __m256d half_pd;
  __m256 half_ps;
  __m256i half_i;
  __m128d sd;
  __m128 ss;
  __m128i low_i;
  unsigned char bytes[64];
};
struct Operands {
  Register a, b, c;
};
struct Result {
  unsigned char bytes[64] = {};
};
using Operation = void (*)(const Operands&, Result&);
struct Named {
  const char* name;
  bool of_double;
  Operation operation;
};

// Powers beyond all exponents: some emulations of the processor take 2^-huge for an exact zero,
// whatever the rounding mode.
template <class T, class V>
V limited(V v, T limit) {
  T lanes[sizeof(V) / sizeof(T)];
  std::memcpy(lanes, &v, sizeof v);
  for (T& lane : lanes)
    if (std::isfinite(lane) && std::fabs(lane) > limit) lane = std::copysign(limit, lane);
  std::memcpy(&v, lanes, sizeof v);
  return v;
}
__m512d within_reach(__m512d v) { return limited(v, 4000.0); }
__m128d within_reach(__m128d v) { return limited(v, 4000.0); }
__m512 within_reach(__m512 v) { return limited(v, 400.0f); }
__m128 within_reach(__m128 v) { return limited(v, 400.0f); }

// An expression over the operands a, b, c; R is the rounding argument. The table is compiled twice:
// outside the library's namespace it finds the intrinsics, inside it their shadows.
#define ZORP_OPERATION(of_double, rounding, expression)                          \
  {#expression " " #rounding, of_double, [](const Operands& o, Result& result) { \
     [[maybe_unused]] constexpr int R = rounding;                                \
     [[maybe_unused]] const Register &a = o.a, &b = o.b, &c = o.c;               \
     const auto value = expression;                                              \
     std::memcpy(result.bytes, &value, sizeof value);                            \
   }},
#define ZORP_ALL_ROUNDINGS(d, expression) \
  ZORP_OPERATION(d, 8, expression)        \
  ZORP_OPERATION(d, 9, expression)        \
  ZORP_OPERATION(d, 10, expression)       \
  ZORP_OPERATION(d, 11, expression)       \
  ZORP_OPERATION(d, 4, expression)
#define ZORP_TYPE(d, p, s)                                                                      \
  ZORP_ALL_ROUNDINGS(d, _mm512_add_round_##p(a.p, b.p, R))                                      \
  ZORP_ALL_ROUNDINGS(d, _mm512_sub_round_##p(a.p, b.p, R))                                      \
  ZORP_ALL_ROUNDINGS(d, _mm512_mul_round_##p(a.p, b.p, R))                                      \
  ZORP_ALL_ROUNDINGS(d, _mm512_div_round_##p(a.p, b.p, R))                                      \
  ZORP_ALL_ROUNDINGS(d, _mm512_sqrt_round_##p(a.p, R))                                          \
  ZORP_ALL_ROUNDINGS(d, _mm512_fmadd_round_##p(a.p, b.p, c.p, R))                               \
  ZORP_ALL_ROUNDINGS(d, _mm512_fmsub_round_##p(a.p, b.p, c.p, R))                               \
  ZORP_ALL_ROUNDINGS(d, _mm512_fnmadd_round_##p(a.p, b.p, c.p, R))                              \
  ZORP_ALL_ROUNDINGS(d, _mm512_scalef_round_##p(a.p, within_reach(b.p), R))                     \
  ZORP_ALL_ROUNDINGS(d, _mm_add_round_##s(a.s, b.s, R))                                         \
  ZORP_ALL_ROUNDINGS(d, _mm_sub_round_##s(a.s, b.s, R))                                         \
  ZORP_ALL_ROUNDINGS(d, _mm_mul_round_##s(a.s, b.s, R))                                         \
  ZORP_ALL_ROUNDINGS(d, _mm_div_round_##s(a.s, b.s, R))                                         \
  ZORP_ALL_ROUNDINGS(d, _mm_sqrt_round_##s(a.s, b.s, R))                                        \
  ZORP_ALL_ROUNDINGS(d, _mm_fmadd_round_##s(a.s, b.s, c.s, R))                                  \
  ZORP_ALL_ROUNDINGS(d, _mm_scalef_round_##s(a.s, within_reach(b.s), R))                        \
  ZORP_OPERATION(d, 8, _mm512_getexp_round_##p(a.p, R))                                         \
  ZORP_OPERATION(d, 8, _mm_getexp_round_##s(a.s, b.s, R))                                       \
  ZORP_OPERATION(                                                                               \
      d, 8,                                                                                     \
      _mm512_getmant_round_##p(a.p, _MM_MANTISSA_NORM_ENUM(0), _MM_MANTISSA_SIGN_ENUM(0), R))   \
  ZORP_OPERATION(                                                                               \
      d, 8,                                                                                     \
      _mm512_getmant_round_##p(a.p, _MM_MANTISSA_NORM_ENUM(1), _MM_MANTISSA_SIGN_ENUM(1), R))   \
  ZORP_OPERATION(                                                                               \
      d, 8,                                                                                     \
      _mm512_getmant_round_##p(a.p, _MM_MANTISSA_NORM_ENUM(2), _MM_MANTISSA_SIGN_ENUM(2), R))   \
  ZORP_OPERATION(                                                                               \
      d, 8,                                                                                     \
      _mm_getmant_round_##s(a.s, b.s, _MM_MANTISSA_NORM_ENUM(3), _MM_MANTISSA_SIGN_ENUM(2), R)) \
  ZORP_OPERATION(d, 8, _mm512_roundscale_round_##p(a.p, 0x00, R))                               \
  ZORP_OPERATION(d, 8, _mm512_roundscale_round_##p(a.p, 0x49, R))                               \
  ZORP_OPERATION(d, 8, _mm512_roundscale_round_##p(a.p, 0x1A, R))                               \
  ZORP_OPERATION(d, 8, _mm_roundscale_round_##s(a.s, b.s, 0x0B, R))                             \
  ZORP_OPERATION(d, 8, _mm512_reduce_round_##p(a.p, 0x00, R))                                   \
  ZORP_OPERATION(d, 8, _mm512_reduce_round_##p(a.p, 0x41, R))                                   \
  ZORP_OPERATION(d, 8, _mm512_reduce_round_##p(a.p, 0x1A, R))                                   \
  ZORP_OPERATION(d, 8, _mm_reduce_round_##s(a.s, b.s, 0x0B, R))                                 \
  ZORP_OPERATION(d, 8, _mm512_range_round_##p(a.p, b.p, 0, R))                                  \
  ZORP_OPERATION(d, 8, _mm512_range_round_##p(a.p, b.p, 5, R))                                  \
  ZORP_OPERATION(d, 8, _mm512_range_round_##p(a.p, b.p, 10, R))                                 \
  ZORP_OPERATION(d, 8, _mm512_range_round_##p(a.p, b.p, 3, R))                                  \
  ZORP_OPERATION(d, 8, _mm512_min_round_##p(a.p, b.p, R))                                       \
  ZORP_OPERATION(d, 8, _mm512_max_round_##p(a.p, b.p, R))                                       \
  ZORP_OPERATION(d, 8, _mm_min_round_##s(a.s, b.s, R))                                          \
  ZORP_OPERATION(d, 8, _mm512_fpclass_##p##_mask(a.p, 0x01))                                    \
  ZORP_OPERATION(d, 8, _mm512_fpclass_##p##_mask(a.p, 0x2A))                                    \
  ZORP_OPERATION(d, 8, _mm512_fpclass_##p##_mask(a.p, 0x94))                                    \
  ZORP_OPERATION(d, 8, _mm512_fpclass_##p##_mask(a.p, 0x40))                                    \
  ZORP_OPERATION(d, 8, _mm_fpclass_##s##_mask(a.s, 0x99))                                       \
  ZORP_OPERATION(d, 8, _mm512_cmp_##p##_mask(a.p, b.p, _CMP_LT_OQ))                             \
  ZORP_OPERATION(d, 8, _mm512_cmp_##p##_mask(a.p, b.p, _CMP_NLE_UQ))                            \
  ZORP_OPERATION(d, 8, _mm_cmp_##s##_mask(a.s, b.s, _CMP_EQ_OQ))                                \
  ZORP_OPERATION(d, 8, _mm512_mask_add_round_##p(a.p, 0x5A, a.p, b.p, R))                       \
  ZORP_OPERATION(d, 8, _mm_mask_add_round_##s(a.s, 1, a.s, b.s, R))
#define ZORP_OPERATIONS                                                       \
  ZORP_TYPE(true, pd, sd)                                                     \
  ZORP_TYPE(false, ps, ss)                                                    \
  ZORP_OPERATION(true, 8, _mm512_fixupimm_round_pd(b.pd, a.pd, c.i, 0, R))    \
  ZORP_OPERATION(true, 8, _mm_fixupimm_round_sd(b.sd, a.sd, c.low_i, 0, R))   \
  ZORP_ALL_ROUNDINGS(true, _mm512_cvt_roundpd_ps(a.pd, R))                    \
  ZORP_ALL_ROUNDINGS(true, _mm512_cvt_roundpd_epi32(a.pd, R))                 \
  ZORP_ALL_ROUNDINGS(true, _mm_cvt_roundsd_ss(a.ss, b.sd, R))                 \
  ZORP_ALL_ROUNDINGS(true, _mm_cvt_roundsd_i32(a.sd, R))                      \
  ZORP_OPERATION(true, 8, _mm512_cvtt_roundpd_epi32(a.pd, R))                 \
  ZORP_OPERATION(true, 8, _mm512_cvtt_roundpd_epu32(a.pd, R))                 \
  ZORP_OPERATION(true, 8, _mm_cvtt_roundsd_u32(a.sd, R))                      \
  ZORP_OPERATION(false, 8, _mm512_cvt_roundps_pd(a.half_ps, R))               \
  ZORP_ALL_ROUNDINGS(false, _mm512_cvt_roundps_epi32(a.ps, R))                \
  ZORP_ALL_ROUNDINGS(false, _mm512_cvt_roundps_epu32(a.ps, R))                \
  ZORP_ALL_ROUNDINGS(false, _mm512_cvt_roundps_epi64(a.half_ps, R))           \
  ZORP_ALL_ROUNDINGS(false, _mm512_cvt_roundps_epu64(a.half_ps, R))           \
  ZORP_ALL_ROUNDINGS(false, _mm_cvt_roundss_i32(a.ss, R))                     \
  ZORP_ALL_ROUNDINGS(false, _mm512_cvt_roundepi32_ps(a.i, R))                 \
  ZORP_ALL_ROUNDINGS(false, _mm512_cvt_roundepu32_ps(a.i, R))                 \
  ZORP_ALL_ROUNDINGS(true, _mm512_cvt_roundepi64_ps(a.i, R))                  \
  ZORP_ALL_ROUNDINGS(true, _mm512_cvt_roundepu64_ps(a.i, R))                  \
  ZORP_OPERATION(false, 8, _mm512_cvtepu32_pd(a.half_i))                      \
  ZORP_OPERATION(false, 8, _mm512_cvtsepi32_epi16(a.i))                       \
  ZORP_OPERATION(false, 8, _mm512_cvtusepi32_epi16(a.i))                      \
  ZORP_OPERATION(true, 8, _mm512_permutexvar_epi64(a.i, b.i))                 \
  ZORP_OPERATION(true, 8, _mm512_permutex2var_epi64(a.i, b.i, c.i))           \
  ZORP_OPERATION(true, 8, _mm512_permutexvar_epi32(a.i, b.i))                 \
  ZORP_OPERATION(true, 8, _mm512_permutex2var_epi32(a.i, b.i, c.i))           \
  ZORP_OPERATION(true, 8, _mm512_permutexvar_epi16(a.i, b.i))                 \
  ZORP_OPERATION(true, 8, _mm512_permutex2var_epi16(a.i, b.i, c.i))           \
  ZORP_OPERATION(true, 8, _mm512_ternarylogic_epi64(a.i, b.i, c.i, 0xCA))     \
  ZORP_OPERATION(true, 8, _mm512_ternarylogic_epi64(a.i, b.i, c.i, 0x1E))     \
  ZORP_OPERATION(true, 8, _mm512_srai_epi64(a.i, 52))                         \
  ZORP_OPERATION(true, 8, _mm512_srai_epi16(a.i, 3))                          \
  ZORP_OPERATION(true, 8, _mm512_slli_epi16(a.i, 10))                         \
  ZORP_OPERATION(true, 8, _mm512_sllv_epi64(a.i, _mm512_srli_epi64(b.i, 57))) \
  ZORP_OPERATION(true, 8, _mm512_sllv_epi32(a.i, _mm512_srli_epi32(b.i, 26))) \
  ZORP_OPERATION(true, 8, _mm512_sllv_epi16(a.i, _mm512_srli_epi16(b.i, 11))) \
  ZORP_OPERATION(true, 8, _mm512_shldi_epi32(a.i, b.i, 11))                   \
  ZORP_OPERATION(true, 8, _mm512_abs_epi64(a.i))                              \
  ZORP_OPERATION(true, 8, _mm512_min_epi64(a.i, b.i))                         \
  ZORP_OPERATION(true, 8, _mm512_max_epi16(a.i, b.i))                         \
  ZORP_OPERATION(true, 8, _mm512_mullo_epi16(a.i, b.i))                       \
  ZORP_OPERATION(true, 8, _mm512_cmp_epi64_mask(a.i, b.i, _MM_CMPINT_NLT))    \
  ZORP_OPERATION(true, 8, _mm512_cmp_epi16_mask(a.i, b.i, _MM_CMPINT_NLE))    \
  ZORP_OPERATION(true, 8, _mm512_movepi16_mask(a.i))                          \
  ZORP_OPERATION(true, 8, _mm512_mask_mov_epi16(a.i, 0xA5C31E78, b.i))        \
  ZORP_OPERATION(true, 8, _mm512_inserti64x4(a.i, b.half_i, 1))               \
  ZORP_OPERATION(true, 8, _mm512_extracti64x4_epi64(a.i, 1))

const std::vector<Named> kInstructions = {ZORP_OPERATIONS};

}  // namespace

namespace zorp {
namespace {

const std::vector<Named> kShadows = {ZORP_OPERATIONS};

void set_mxcsr(unsigned mxcsr) { asm volatile("vldmxcsr %0" : : "m"(mxcsr) : "memory"); }

/// Vectors of operands: each lane of a meets several of b and c.
std::vector<Operands> operands(bool of_double) {
  using grammar::Lane;
  const Lane lane = of_double ? Lane::f64 : Lane::f32;
  const int bytes = of_double ? 8 : 4, count = 64 / bytes;
  const std::vector<test::Tuple> pool = test::operand_pool({lane, lane, lane}, 4096);
  std::vector<Operands> list;
  for (std::size_t start = 0; start < pool.size(); start += 5) {
    Operands& o = list.emplace_back();
    for (int i = 0; i < count; ++i) {
      const test::Tuple& tuple = pool[(start + i) % pool.size()];
      std::memcpy(&o.a.bytes[i * bytes], &tuple[0], bytes);
      std::memcpy(&o.b.bytes[i * bytes], &tuple[1], bytes);
      std::memcpy(&o.c.bytes[i * bytes], &tuple[2], bytes);
    }
  }
  return list;
}

std::string text(const unsigned char* bytes) {
  std::string out;
  char buffer[20];
  for (int i = 0; i < 64; i += 4) {
    unsigned word;
    std::memcpy(&word, bytes + i, 4);
    std::snprintf(buffer, sizeof buffer, "%08x ", word);
    out += buffer;
  }
  return out;
}

TEST(PortableInstructions, GiveTheProcessorsBits) {
  constexpr unsigned kNearest = 0x1f80, kDown = 0x3f80, kUp = 0x5f80, kFlushing = 0xffc0;
  const std::vector<Operands> doubles = operands(true), floats = operands(false);
  ASSERT_EQ(kInstructions.size(), kShadows.size());
  for (std::size_t i = 0; i < kShadows.size(); ++i)
    for (unsigned mxcsr : {kNearest, kDown, kUp, kFlushing}) {
      portable::set_caller_control(mxcsr);
      for (const Operands& o : kShadows[i].of_double ? doubles : floats) {
        Result expected, actual;
        set_mxcsr(mxcsr);
        kInstructions[i].operation(o, expected);
        set_mxcsr(portable::controls[0]);
        kShadows[i].operation(o, actual);
        set_mxcsr(kNearest);
        if (std::memcmp(actual.bytes, expected.bytes, sizeof actual.bytes) == 0) continue;
        ADD_FAILURE() << kShadows[i].name << " under MXCSR " << test::hex(mxcsr) << "\nwant "
                      << text(expected.bytes) << "\ngot  " << text(actual.bytes) << "\na    "
                      << text(o.a.bytes) << "\nb    " << text(o.b.bytes) << "\nc    "
                      << text(o.c.bytes);
        break;
      }
    }
}

}  // namespace
}  // namespace zorp
