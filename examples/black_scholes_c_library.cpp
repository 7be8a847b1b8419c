#include <cmath>
#include <numbers>

#include "black_scholes.h"

namespace {

double normal_cdf(double x) { return 0.5 * std::erfc(-x / std::numbers::sqrt2); }

}  // namespace

void price_with_c_library(const OptionArrays& o, double* price) {
  for (std::size_t i = 0; i < o.count; ++i) {
    const double deviation = o.volatility[i] * std::sqrt(o.years[i]);
    const double drift = (o.rate[i] + 0.5 * o.volatility[i] * o.volatility[i]) * o.years[i];
    const double d1 = (std::log(o.spot[i] / o.strike[i]) + drift) / deviation;
    const double d2 = d1 - deviation;
    const double discounted = o.strike[i] * std::exp(-o.rate[i] * o.years[i]);
    const double s = o.sign[i];
    price[i] = s * (o.spot[i] * normal_cdf(s * d1) - discounted * normal_cdf(s * d2));
  }
}
