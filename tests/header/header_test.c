/* The header in C: plain functions, a register pair, and agreement with the C library. */
#include <math.h>
#include <stdio.h>
#include <zorp_z1.h>

int check_from_c(void);

int check_from_c(void) {
  int faults = 0;
  const double step = 0.37;
  double x[16], y[16];
  for (int i = 0; i < 16; ++i) x[i] = (i - 8) * step;
  const zorp_f64x16 in = {_mm512_loadu_pd(x), _mm512_loadu_pd(x + 8)};
  const zorp_f64x16 out = zorp_z1_exp16(in);
  _mm512_storeu_pd(y, out.lo);
  _mm512_storeu_pd(y + 8, out.hi);
  for (int i = 0; i < 16; ++i) {
    const double expected = exp(x[i]);
    faults += !(fabs(y[i] - expected) <= 4e-16 * expected);
    faults += !(fabs(zorp_z1_exp1(x[i]) - expected) <= 4e-16 * expected);
  }
  if (faults) printf("%d results of exp differ from the C library's\n", faults);
  return faults;
}
