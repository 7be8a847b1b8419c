// The same loops by hand, over the kernels that fill a register.
#include <zorp_z1.h>

#include "loops.h"

#define LANES(T) (int)(sizeof(__m512) / sizeof(T))
#define LOADdouble _mm512_loadu_pd
#define LOADfloat _mm512_loadu_ps
#define STOREdouble _mm512_storeu_pd
#define STOREfloat _mm512_storeu_ps
#define KERNELdouble(F) zorp_z1_##F##8
#define KERNELfloat(F) zorp_z1_##F##f16

#define UNARY(F, T, SUFFIX)                               \
  void kernel_##F##SUFFIX PARAMETERS(T) {                 \
    for (int i = 0; i < kElements; i += LANES(T))         \
      STORE##T(result + i, KERNEL##T(F)(LOAD##T(x + i))); \
  }
#define BINARY(F, T, SUFFIX)                                              \
  void kernel_##F##SUFFIX PARAMETERS(T) {                                 \
    for (int i = 0; i < kElements; i += LANES(T))                         \
      STORE##T(result + i, KERNEL##T(F)(LOAD##T(x + i), LOAD##T(y + i))); \
  }
FUNCTIONS(UNARY, double, )
FUNCTIONS(UNARY, float, f)
BINARY(pow, double, )
BINARY(pow, float, f)
