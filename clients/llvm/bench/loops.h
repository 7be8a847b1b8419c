// The loops that are timed, each written three times: with the program's own functions, compiled
// with the plugin (plain_) and without it (library_), and by hand over the kernels (kernel_).
#pragma once

enum { kElements = 4096 };

#define FUNCTIONS(USE, T, SUFFIX) USE(exp, T, SUFFIX) USE(log, T, SUFFIX) USE(sin, T, SUFFIX)
#define ALL_FUNCTIONS(USE) \
  FUNCTIONS(USE, double, ) \
  USE(pow, double, )       \
  FUNCTIONS(USE, float, f) \
  USE(pow, float, f)

#define PARAMETERS(T) (T* restrict result, const T* restrict x, const T* restrict y)
#define DECLARE(F, T, SUFFIX)             \
  void plain_##F##SUFFIX PARAMETERS(T);   \
  void library_##F##SUFFIX PARAMETERS(T); \
  void kernel_##F##SUFFIX PARAMETERS(T);
ALL_FUNCTIONS(DECLARE)
#undef DECLARE
