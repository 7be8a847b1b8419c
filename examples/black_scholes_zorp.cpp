#include <zorp_z1.h>

#include <numbers>

#include "black_scholes.h"

namespace {

__m512d normal_cdf(__m512d x) {
  return _mm512_mul_pd(_mm512_set1_pd(0.5),
                       zorp_z1_erfc8(_mm512_mul_pd(x, _mm512_set1_pd(-1 / std::numbers::sqrt2))));
}

}  // namespace

void price_with_zorp(const OptionArrays& o, double* price) {
  const __m512d one = _mm512_set1_pd(1), half = _mm512_set1_pd(0.5);
  for (std::size_t i = 0; i < o.count; i += 8) {
    // The last few options share a vector with ones, whose prices are not stored.
    const std::size_t left = o.count - i;
    const __mmask8 present = left < 8 ? __mmask8((1 << left) - 1) : __mmask8(0xFF);
    const __m512d sign = _mm512_mask_loadu_pd(one, present, o.sign + i);
    const __m512d spot = _mm512_mask_loadu_pd(one, present, o.spot + i);
    const __m512d strike = _mm512_mask_loadu_pd(one, present, o.strike + i);
    const __m512d rate = _mm512_mask_loadu_pd(one, present, o.rate + i);
    const __m512d volatility = _mm512_mask_loadu_pd(one, present, o.volatility + i);
    const __m512d years = _mm512_mask_loadu_pd(one, present, o.years + i);

    const __m512d deviation = volatility * _mm512_sqrt_pd(years);
    const __m512d drift = (rate + half * volatility * volatility) * years;
    const __m512d d1 = (zorp_z1_log8(spot / strike) + drift) / deviation;
    const __m512d d2 = d1 - deviation;
    const __m512d discounted = strike * zorp_z1_exp8(-rate * years);
    const __m512d value =
        sign * (spot * normal_cdf(sign * d1) - discounted * normal_cdf(sign * d2));
    _mm512_mask_storeu_pd(price + i, present, value);
  }
}
