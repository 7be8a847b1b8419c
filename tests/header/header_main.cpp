// Compiled without AVX-512, so that the program can say where it can't run.
#include <cstdio>

int check_double();
int check_float();
int check_half();
extern "C" int check_from_c();

int main() {
  if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512dq") ||
      !__builtin_cpu_supports("avx512bw") || !__builtin_cpu_supports("avx512vl") ||
      !__builtin_cpu_supports("avx512vbmi2")) {
    std::puts("This processor lacks AVX-512: skipped.");
    return 77;
  }
  return check_double() + check_float() + check_half() + check_from_c() == 0 ? 0 : 1;
}
