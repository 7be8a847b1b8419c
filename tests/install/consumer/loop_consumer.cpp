// An ordinary loop, which the compiler vectorises.
#include <math.h>

#include <cstdio>

int main() {
  if (!__builtin_cpu_supports("avx512vbmi2")) {
    std::puts("This processor lacks AVX-512: built, not run.");
    return 0;
  }
  double x[64], y[64];
  for (int i = 0; i < 64; ++i) x[i] = i / 8.0;
  for (int i = 0; i < 64; ++i) y[i] = exp(x[i]);
  for (int i = 0; i < 64; ++i)
    if (!(fabs(log(y[i]) - x[i]) < 4e-15)) return 1;
  return 0;
}
