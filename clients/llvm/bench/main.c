// Prints, for each function, the least ns an element of the plain loop, the loop over kernels and
// the loop over the C library's function.
#define _POSIX_C_SOURCE 199309L
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "loops.h"

enum { kCalls = 20, kLoops = 3 };

static _Alignas(64) double x[kElements], y[kElements], result[kElements];
static _Alignas(64) float xf[kElements], yf[kElements], resultf[kElements];

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return 1e9 * (double)time.tv_sec + (double)time.tv_nsec;
}

// The loops take turns, so that what else runs on the machine meets all of them.
#define TIME(F, T, SUFFIX)                                                            \
  {                                                                                   \
    void(*const loops[kLoops])                                                        \
        PARAMETERS(T) = {plain_##F##SUFFIX, kernel_##F##SUFFIX, library_##F##SUFFIX}; \
    double least[kLoops] = {1e9, 1e9, 1e9};                                           \
    for (int repetition = 0; repetition < repetitions; ++repetition)                  \
      for (int loop = 0; loop < kLoops; ++loop) {                                     \
        const double start = now();                                                   \
        for (int call = 0; call < kCalls; ++call)                                     \
          loops[loop](result##SUFFIX, x##SUFFIX, y##SUFFIX);                          \
        const double time = (now() - start) / kCalls / kElements;                     \
        if (time < least[loop]) least[loop] = time;                                   \
      }                                                                               \
    printf("%s %.4f %.4f %.4f\n", #F #SUFFIX, least[0], least[1], least[2]);          \
  }

int main(int argc, char** argv) {
  const int repetitions = argc > 1 ? atoi(argv[1]) : 500;
  for (int i = 0; i < kElements; ++i) {
    x[i] = 0.01 + 0.002 * i;
    y[i] = -3 + 0.0015 * i;
    xf[i] = (float)x[i];
    yf[i] = (float)y[i];
  }
  ALL_FUNCTIONS(TIME)
}
