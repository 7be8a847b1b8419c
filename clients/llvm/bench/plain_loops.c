// Ordinary loops. NAME(function) names them.
#include <math.h>

#include "loops.h"

#define UNARY(F, T, SUFFIX)                                          \
  void NAME(F##SUFFIX) PARAMETERS(T) {                               \
    for (int i = 0; i < kElements; ++i) result[i] = F##SUFFIX(x[i]); \
  }
#define BINARY(F, T, SUFFIX)                                               \
  void NAME(F##SUFFIX) PARAMETERS(T) {                                     \
    for (int i = 0; i < kElements; ++i) result[i] = F##SUFFIX(x[i], y[i]); \
  }
FUNCTIONS(UNARY, double, )
FUNCTIONS(UNARY, float, f)
BINARY(pow, double, )
BINARY(pow, float, f)
