// Vector types of all sizes, and loops with conditions: every lane has the bits of the kernel of
// width 1.
#include <math.h>
#include <stdio.h>
#include <string.h>

double __zorp_z1_exp1(double), __zorp_z1_pow1(double, double), __zorp_z1_log1(double);
float __zorp_z1_expf1(float), __zorp_z1_powf1(float, float), __zorp_z1_logf1(float);
_Float16 __zorp_z1_exps1(_Float16), __zorp_z1_pows1(_Float16, _Float16);

static int failures;

static void compare(const void* found, const void* expected, size_t bytes, const char* what) {
  if (!memcmp(found, expected, bytes)) return;
  printf("%s differs from the kernel of width 1\n", what);
  ++failures;
}

#define VECTOR(T, LETTER, N)                                                                       \
  typedef T T##N __attribute__((ext_vector_type(N)));                                              \
  static __attribute__((noinline)) void compute_##T##N(T##N* e, T##N* p, const T##N* x,            \
                                                       const T##N* y) {                            \
    *e = __builtin_elementwise_exp(*x);                                                            \
    *p = __builtin_elementwise_pow(*x, *y);                                                        \
  }                                                                                                \
  static void test_##T##N(void) {                                                                  \
    T##N x, y, e, p;                                                                               \
    for (int i = 0; i < N; ++i) {                                                                  \
      x[i] = (T)(0.25f * (float)(i + 1));                                                          \
      y[i] = (T)(1.5f - 0.125f * (float)i);                                                        \
    }                                                                                              \
    compute_##T##N(&e, &p, &x, &y);                                                                \
    for (int i = 0; i < N; ++i) {                                                                  \
      const T found[] = {e[i], p[i]};                                                              \
      const T expected[] = {__zorp_z1_exp##LETTER##1(x[i]), __zorp_z1_pow##LETTER##1(x[i], y[i])}; \
      compare(found, expected, sizeof found, "a lane of " #T #N);                                  \
    }                                                                                              \
  }
#define SIZES(USE, T, LETTER) \
  USE(T, LETTER, 1)           \
  USE(T, LETTER, 2)           \
  USE(T, LETTER, 3)           \
  USE(T, LETTER, 4)           \
  USE(T, LETTER, 5)           \
  USE(T, LETTER, 8)           \
  USE(T, LETTER, 11)          \
  USE(T, LETTER, 16) USE(T, LETTER, 24) USE(T, LETTER, 32) USE(T, LETTER, 41) USE(T, LETTER, 64)
SIZES(VECTOR, double, )
SIZES(VECTOR, float, f)
SIZES(VECTOR, _Float16, s)

enum { kElements = 999 };

#define CONDITION(T, SUFFIX)                                                           \
  static __attribute__((noinline)) void logs_##T(T* restrict r, const T* restrict x) { \
    for (int i = 0; i < kElements; ++i)                                                \
      if (x[i] > 1) r[i] = __zorp_z1_log##SUFFIX##1(x[i]);                             \
  }                                                                                    \
  static void test_condition_##T(void) {                                               \
    static T x[kElements], found[kElements], expected[kElements];                      \
    for (int i = 0; i < kElements; ++i) {                                              \
      x[i] = (T)(i % 7 - 2);                                                           \
      found[i] = expected[i] = (T)i;                                                   \
      if (x[i] > 1) expected[i] = __zorp_z1_log##SUFFIX##1(x[i]);                      \
    }                                                                                  \
    logs_##T(found, x);                                                                \
    compare(found, expected, sizeof found, "a loop of " #T " with a condition");       \
  }
CONDITION(double, )
CONDITION(float, f)

#define TEST(T, LETTER, N) test_##T##N();

// Runs on any processor.
__attribute__((target("arch=x86-64"))) int main(void) {
  if (!__builtin_cpu_supports("avx512vl") || !__builtin_cpu_supports("avx512vbmi2")) {
    printf("skipped: this processor lacks AVX-512\n");
    return 77;
  }
  SIZES(TEST, double, )
  SIZES(TEST, float, f)
  SIZES(TEST, _Float16, s)
  test_condition_double();
  test_condition_float();
  return failures != 0;
}
