// A program as a compiler makes it for AVX512-FP16, for the test of the emulator. Its exit status
// says whether all results were right.
#include <immintrin.h>

#include <cstdio>

namespace {

int failures = 0;

void check(bool right, const char* what) {
  if (right) return;
  std::printf("wrong: %s\n", what);
  ++failures;
}

// Values that the compiler can't fold.
volatile int hundred = 100;

/// Vectorised by the compiler; all operands are small integers, so every sum is exact.
[[gnu::noinline]] _Float16 dot(const _Float16* a, const _Float16* b, int n) {
  _Float16 sum = 0;
  for (int i = 0; i < n; ++i) sum += a[i] * b[i];
  return sum;
}

[[gnu::noinline]] void scale_and_add(_Float16* to, const _Float16* from, _Float16 factor, int n) {
  for (int i = 0; i < n; ++i) to[i] += factor * from[i];
}

[[gnu::noinline]] int clamp(_Float16 x) {
  return x > (_Float16)10 ? 10 : x < (_Float16)0 ? 0 : (int)x;
}

void check_loops() {
  const int n = hundred;
  _Float16 a[100], b[100];
  for (int i = 0; i < n; ++i) {
    a[i] = (_Float16)(i % 5);
    b[i] = (_Float16)(i % 3 - 1);
  }
  int exact = 0;
  for (int i = 0; i < n; ++i) exact += i % 5 * (i % 3 - 1);
  check(dot(a, b, n) == (_Float16)exact, "dot");
  scale_and_add(a, b, (_Float16)0.25f, n);
  bool sums = true;
  for (int i = 0; i < n; ++i) sums &= (float)a[i] == (float)(i % 5) + 0.25f * (float)(i % 3 - 1);
  check(sums, "scale_and_add");
  check(clamp((_Float16)n) == 10 && clamp((_Float16)-n) == 0 && clamp((_Float16)(n / 16)) == 6,
        "clamp");
}

/// Operands on the stack, under masks and broadcast.
void check_intrinsics() {
  alignas(64) _Float16 lanes[32];
  for (int i = 0; i < 32; ++i) lanes[i] = (_Float16)(i - hundred / 10);
  const __m512h v = _mm512_load_ph(lanes);
  const __mmask32 negative = _mm512_cmp_ph_mask(v, _mm512_setzero_ph(), _CMP_LT_OQ);
  check(negative == 0x3ff, "compare");
  const __m512h magnitude = _mm512_mask_sub_ph(v, negative, _mm512_setzero_ph(), v);
  const __m512h squared = _mm512_fmadd_ph(magnitude, v, _mm512_set1_ph(lanes[20]));
  _Float16 out[32];
  _mm512_storeu_ph(out, squared);
  bool right = true;
  for (int i = 0; i < 32; ++i) {
    const int x = i - 10;
    right &= (int)out[i] == (x < 0 ? -x : x) * x + 10;
  }
  check(right, "fmadd");
  check((float)_mm512_reduce_add_ph(v) == 176, "reduce_add");
  const __m512 wide = _mm512_cvtxph_ps(_mm512_castph512_ph256(v));
  check(_mm512_reduce_add_ps(wide) == -40, "widen");
  const __m256h third = _mm512_cvtx_roundps_ph(_mm512_div_ps(wide, _mm512_set1_ps(3)),
                                               _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC);
  check((float)_mm256_cvtsh_h(third) == -3.33203125f, "narrow upwards");
}

}  // namespace

int main() {
  check_loops();
  check_intrinsics();
  return failures != 0;
}
