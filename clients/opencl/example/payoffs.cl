// Payoffs of a power option on two assets, one random draw a lane. Options give the types: VECTOR,
// and SCALAR of its lanes.
#define RATE ((SCALAR)0.03)
#define VOLATILITY ((SCALAR)0.2)
#define YEARS ((SCALAR)2)
#define POWER ((VECTOR)(SCALAR)1.5)

static VECTOR growth(VECTOR normal) {
  const SCALAR drift = (RATE - VOLATILITY * VOLATILITY / 2) * YEARS;
  return exp(drift + VOLATILITY * sqrt(YEARS) * normal);
}

// u and v are uniform between 0 and 1.
kernel void payoffs(global const VECTOR *u, global const VECTOR *v, global VECTOR *payoff) {
  const size_t i = get_global_id(0);
  // Two independent normal variates (Box and Muller).
  const VECTOR radius = sqrt(-2 * log(u[i]));
  VECTOR cosine;
  const VECTOR sine = sincos(2 * (SCALAR)M_PI * v[i], &cosine);
  const VECTOR first = pow(growth(radius * sine), POWER);
  const VECTOR second = pow(growth(radius * cosine), POWER);
  payoff[i] = fmax(first + second - 2, (SCALAR)0);
}
