#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/processor.h"

int main(int argc, char** argv) {
  if (!zorp::test::has_avx512()) {
    std::puts("This processor has no AVX-512: nothing is tested.");
    return 0;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
