// Runs each loop that calls the kernels' vectors, and the same loop over the kernel of width 1.
#include <stdio.h>
#include <string.h>

#include "loops.h"

static _Alignas(64) double doubles[3][kElements];
static _Alignas(64) float floats[3][kElements];
static _Alignas(64) _Float16 halves[3][kElements];
static _Alignas(64) int64_t integers[3][kElements];

/// Ordinary numbers of both signs and many sizes, small integers, and special ones.
static double operand(int i, int index) {
  static const double special[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 1e300, 1e-310, __builtin_inf(),
                                   0};
  const unsigned mixed = (unsigned)(index * 2654435761u + (unsigned)i * 40503u);
  if (mixed % 16 == 0) return mixed / 16 % 9 ? special[mixed / 16 % 9] : __builtin_nan("");
  const double number = (double)(mixed >> 8) / 65536.0 - 128.0;
  return index % 3 ? number / 128.0 : number;
}

static const void* operands(char type, int i) {
  return type == 'd'   ? (void*)doubles[i]
         : type == 'f' ? (void*)floats[i]
         : type == 'h' ? (void*)halves[i]
                       : (void*)integers[i];
}

// Runs on any processor.
__attribute__((target("arch=x86-64"))) int main(void) {
  if (!__builtin_cpu_supports("avx512vl") || !__builtin_cpu_supports("avx512vbmi2")) {
    printf("skipped: this processor lacks AVX-512\n");
    return 77;
  }
  for (int i = 0; i < 3; ++i) {
    for (int index = 0; index < kElements; ++index) {
      doubles[i][index] = operand(i, index);
      floats[i][index] = (float)operand(i, index);
      halves[i][index] = (_Float16)operand(i, index);
      // Integers of all sizes are read from here.
      const int64_t low = index % 7 - 3 + (index % 5 == 0) * index * 1000003;
      integers[i][index] = low ^ (int64_t)((uint64_t)(index * 37 + i) << 32);
    }
  }
  int failures = 0, count = 0;
  for (const Loop *loop = loop_table, *reference = reference_table; loop->name;
       ++loop, ++reference, ++count) {
    static _Alignas(64) char found[2][kElements * 8], expected[2][kElements * 8];
    const void* x[3] = {0};
    for (int i = 0; loop->operands[i]; ++i) x[i] = operands(loop->operands[i], i);
    loop->run(found[0], found[1], x[0], x[1], x[2]);
    reference->run(expected[0], expected[1], x[0], x[1], x[2]);
    for (int i = 0; i < 2; ++i) {
      if (!memcmp(found[i], expected[i], kElements * loop->result_bytes[i])) continue;
      printf("%s: result %d differs from that of the kernel of width 1\n", loop->name, i);
      ++failures;
    }
  }
  printf("%d loops, %d with other results\n", count, failures);
  return failures || !count;
}
