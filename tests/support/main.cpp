#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/processor.h"

int main(int argc, char** argv) {
  if (!zorp::test::has_avx512())
    std::puts(
        "This processor has no AVX-512: the portable build stands in for the kernels, and what "
        "concerns registers isn't tested.");
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
