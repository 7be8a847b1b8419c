// A program of the days before: linked to earlier_library.c, which offers these names, too.
#define _GNU_SOURCE
#include <math.h>
#include <stdio.h>

enum { kNumbers = 64 };

int main(void) {
  double x[kNumbers], exponential[kNumbers], sine[kNumbers], cosine[kNumbers];
  float y[kNumbers], exponent[kNumbers], power[kNumbers];
  for (int i = 0; i < kNumbers; ++i) {
    y[i] = x[i] = i / 8.0;
    exponent[i] = 3 - y[i];
  }
  for (int i = 0; i < kNumbers; ++i) exponential[i] = exp(x[i]);
  for (int i = 0; i < kNumbers; ++i) power[i] = powf(y[i], exponent[i]);
#pragma omp simd
  for (int i = 0; i < kNumbers; ++i) sincos(x[i], sine + i, cosine + i);
  for (int i = 0; i < kNumbers; ++i) printf("%a\n", exponential[i]);
  for (int i = 0; i < kNumbers; ++i) printf("%a\n", power[i]);
  for (int i = 0; i < kNumbers; ++i) printf("%a\n", sine[i]);
  for (int i = 0; i < kNumbers; ++i) printf("%a\n", cosine[i]);
  return 0;
}
