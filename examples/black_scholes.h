// Prices of European options by the Black-Scholes formula:
//
//   price = s (S N(s d1) - K e^(-rT) N(s d2)),   s = 1 for a call, -1 for a put,
//   d1 = (ln(S/K) + (r + v^2/2) T) / (v sqrt(T)),   d2 = d1 - v sqrt(T),
//   N(x) = erfc(-x/sqrt(2)) / 2.
#pragma once

#include <cstddef>

/// Options, one array for each of their terms.
struct OptionArrays {
  const double *sign, *spot, *strike, *rate, *volatility, *years;
  std::size_t count;
};

/// With the C library, one option at a time.
void price_with_c_library(const OptionArrays& options, double* price);

/// With libzorp_z1, eight options at a time. Needs AVX-512.
void price_with_zorp(const OptionArrays& options, double* price);
