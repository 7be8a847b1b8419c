// A call through a register pair keeps what the compiler holds in registers and below the stack
// pointer. Instead of the library a kernel stands here that destroys all that a kernel may.
#include <zorp_z1.h>

#include <cstdint>
#include <cstdio>
#include <utility>

asm(R"(
    .text
    .globl __zorp_z1_exp16
    .type __zorp_z1_exp16, @function
__zorp_z1_exp16:
    endbr64
    .irp n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
    vpternlogd $0xFF, %zmm\n, %zmm\n, %zmm\n
    .endr
    kxnorw %k0, %k0, %k0
    kxnorw %k1, %k1, %k1
    kxnorw %k2, %k2, %k2
    kxnorw %k3, %k3, %k3
    .irp r, rax, rcx, rdx, r8, r9, r10, r11
    mov $-1, %\r
    .endr
    .irp below, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120, 128
    movq $-1, -\below(%rsp)
    .endr
    ret
    .size __zorp_z1_exp16, . - __zorp_z1_exp16
)");

namespace {

constexpr int kVectors = 28, kMasks = 7, kIntegers = 12;
volatile __m512i vectors[kVectors];
volatile std::uint64_t integers[kIntegers];

/// Has the value in a register at this point.
[[gnu::always_inline]] inline void hold(__m512i& vector) { asm volatile("" : "+v"(vector)); }
[[gnu::always_inline]] inline void hold(__mmask16& mask) { asm volatile("" : "+Yk"(mask)); }
[[gnu::always_inline]] inline void hold(std::uint64_t& integer) {
  asm volatile("" : "+r"(integer));
}

bool same(__m512i a, __m512i b) { return _mm512_cmpneq_epi64_mask(a, b) == 0; }

[[gnu::noinline]] bool keeps_vectors(const zorp_f64x16& x, zorp_f64x16& y) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return [&](auto... vector) __attribute__((always_inline)) {
      (hold(vector), ...);
      y = zorp_z1_exp16(x);
      (hold(vector), ...);
      return (same(vector, vectors[i]) && ...);
    }
    (__m512i(vectors[i])...);
  }
  (std::make_integer_sequence<int, kVectors>());
}

[[gnu::noinline]] bool keeps_integers(const zorp_f64x16& x, zorp_f64x16& y) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return [&](auto... integer) __attribute__((always_inline)) {
      (hold(integer), ...);
      y = zorp_z1_exp16(x);
      (hold(integer), ...);
      return ((integer == integers[i]) && ...);
    }
    (integers[i]...);
  }
  (std::make_integer_sequence<int, kIntegers>());
}

[[gnu::noinline]] bool keeps_masks(const zorp_f64x16& x, zorp_f64x16& y) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return [&](auto... mask) __attribute__((always_inline)) {
      (hold(mask), ...);
      y = zorp_z1_exp16(x);
      (hold(mask), ...);
      return ((mask == __mmask16(integers[i])) && ...);
    }
    (__mmask16(integers[i])...);
  }
  (std::make_integer_sequence<int, kMasks>());
}

[[gnu::noinline]] bool keeps_red_zone(const zorp_f64x16& x, zorp_f64x16& y) {
  volatile std::uint64_t local[12];
  for (std::uint64_t i = 0; i < 12; ++i) local[i] = i;
  y = zorp_z1_exp16(x);
  bool good = true;
  for (std::uint64_t i = 0; i < 12; ++i) good &= local[i] == i;
  return good;
}

}  // namespace

int main() {
  if (!__builtin_cpu_supports("avx512f")) {
    std::puts("This processor lacks AVX-512: skipped.");
    return 77;
  }
  for (int i = 0; i < kVectors; ++i) vectors[i] = _mm512_set1_epi64(3 * i + 1);
  for (int i = 0; i < kIntegers; ++i) integers[i] = std::uint64_t(5 * i + 1);
  const zorp_f64x16 x = {_mm512_set1_pd(1), _mm512_set1_pd(2)};
  zorp_f64x16 y = x;
  const bool vectors_kept = keeps_vectors(x, y), integers_kept = keeps_integers(x, y);
  const bool masks_kept = keeps_masks(x, y), red_zone_kept = keeps_red_zone(x, y);
  const __m512i ones = _mm512_set1_epi64(-1);
  const bool result =
      same(_mm512_castpd_si512(y.lo), ones) && same(_mm512_castpd_si512(y.hi), ones);
  std::printf("kept: vectors %d, integers %d, masks %d, red zone %d; result %d\n", vectors_kept,
              integers_kept, masks_kept, red_zone_kept, result);
  return vectors_kept && integers_kept && masks_kept && red_zone_kept && result ? 0 : 1;
}
