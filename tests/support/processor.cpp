#include "tests/support/processor.h"

#include <cpuid.h>

namespace zorp::test {
namespace {

bool feature(unsigned leaf, unsigned subleaf, int output, int bit) {
  unsigned registers[4] = {};
  __get_cpuid_count(leaf, subleaf, &registers[0], &registers[1], &registers[2], &registers[3]);
  return registers[output] >> bit & 1;
}

}  // namespace

bool has_avx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("fma");
}

bool has_half_arithmetic() { return has_avx512() && feature(7, 0, 3, 23); }

bool has_xinuse() { return feature(13, 1, 0, 2); }

}  // namespace zorp::test
