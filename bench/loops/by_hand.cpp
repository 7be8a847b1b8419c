// The same loops written over the kernels that fill a register.
#include <zorp_z1.h>

#include "examples/black_scholes.h"

namespace {

__m512d load(const double* x) { return _mm512_loadu_pd(x); }
__m512 load(const float* x) { return _mm512_loadu_ps(x); }
void store(double* r, __m512d value) { _mm512_storeu_pd(r, value); }
void store(float* r, __m512 value) { _mm512_storeu_ps(r, value); }

template <auto kernel, class T>
void unary(int n, const T* x, T* r) {
  for (int i = 0; i < n; i += int(64 / sizeof(T))) store(r + i, kernel(load(x + i)));
}

template <auto kernel, class T>
void binary(int n, const T* x, const T* y, T* r) {
  for (int i = 0; i < n; i += int(64 / sizeof(T))) store(r + i, kernel(load(x + i), load(y + i)));
}

}  // namespace

extern "C" {

void exp_loop(int n, const double* x, const double*, double* r) { unary<zorp_z1_exp8>(n, x, r); }
void log_loop(int n, const double* x, const double*, double* r) { unary<zorp_z1_log8>(n, x, r); }
void sin_loop(int n, const double* x, const double*, double* r) { unary<zorp_z1_sin8>(n, x, r); }
void pow_loop(int n, const double* x, const double* y, double* r) {
  binary<zorp_z1_pow8>(n, x, y, r);
}
void expf_loop(int n, const float* x, const float*, float* r) { unary<zorp_z1_expf16>(n, x, r); }
void logf_loop(int n, const float* x, const float*, float* r) { unary<zorp_z1_logf16>(n, x, r); }
void sinf_loop(int n, const float* x, const float*, float* r) { unary<zorp_z1_sinf16>(n, x, r); }
void powf_loop(int n, const float* x, const float* y, float* r) {
  binary<zorp_z1_powf16>(n, x, y, r);
}

void black_scholes(int n, const double* sign, const double* spot, const double* strike,
                   const double* rate, const double* volatility, const double* years,
                   double* price) {
  price_with_zorp({sign, spot, strike, rate, volatility, years, std::size_t(n)}, price);
}

}  // extern "C"
