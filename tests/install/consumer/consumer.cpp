#include <zorp_z1.h>

#include <cmath>
#include <cstdio>

int main() {
  if (!__builtin_cpu_supports("avx512vbmi2")) {
    std::puts("This processor lacks AVX-512: built, not run.");
    return 0;
  }
  double x[8] = {-2, -1, 0, 0.5, 1, 2, 3, 10}, y[8];
  _mm512_storeu_pd(y, zorp_z1_exp8(_mm512_loadu_pd(x)));
  for (int i = 0; i < 8; ++i)
    if (!(std::fabs(y[i] / std::exp(x[i]) - 1) < 4e-16)) return 1;
  return 0;
}
