// Ordinary loops, for compilers to vectorise. By black_scholes.h of the examples: prices of
// European options.
#include <math.h>

#define LOOP(name, type, ...)                                                                 \
  void name##_loop(int n, const type* restrict x, const type* restrict y, type* restrict r) { \
    (void)y;                                                                                  \
    for (int i = 0; i < n; ++i) r[i] = name(__VA_ARGS__);                                     \
  }
LOOP(exp, double, x[i])
LOOP(log, double, x[i])
LOOP(sin, double, x[i])
LOOP(pow, double, x[i], y[i])
LOOP(expf, float, x[i])
LOOP(logf, float, x[i])
LOOP(sinf, float, x[i])
LOOP(powf, float, x[i], y[i])

static double normal_cdf(double x) { return 0.5 * erfc(x * -0.70710678118654752); }

void black_scholes(int n, const double* restrict sign, const double* restrict spot,
                   const double* restrict strike, const double* restrict rate,
                   const double* restrict volatility, const double* restrict years,
                   double* restrict price) {
  for (int i = 0; i < n; ++i) {
    const double deviation = volatility[i] * sqrt(years[i]);
    const double drift = (rate[i] + 0.5 * volatility[i] * volatility[i]) * years[i];
    const double d1 = (log(spot[i] / strike[i]) + drift) / deviation;
    const double d2 = d1 - deviation;
    const double discounted = strike[i] * exp(-rate[i] * years[i]);
    const double s = sign[i];
    price[i] = s * (spot[i] * normal_cdf(s * d1) - discounted * normal_cdf(s * d2));
  }
}
