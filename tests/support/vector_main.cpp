// The main program of tests that are compiled with AVX-512 themselves. Compiled without it: the
// constructor runs before anything that may use such instructions.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

[[gnu::constructor(101)]] void skip_without_avx512() {
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512vbmi2")) return;
  std::puts("skipped: this processor has no AVX-512");
  std::exit(0);
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
