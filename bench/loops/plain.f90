! The same ordinary loops in Fortran.
subroutine exp_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_double) :: x(n), y(n), r(n)
  r = exp(x)
end subroutine

subroutine log_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_double) :: x(n), y(n), r(n)
  r = log(x)
end subroutine

subroutine sin_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_double) :: x(n), y(n), r(n)
  r = sin(x)
end subroutine

subroutine pow_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_double) :: x(n), y(n), r(n)
  r = x**y
end subroutine

subroutine expf_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_float) :: x(n), y(n), r(n)
  r = exp(x)
end subroutine

subroutine logf_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_float) :: x(n), y(n), r(n)
  r = log(x)
end subroutine

subroutine sinf_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_float) :: x(n), y(n), r(n)
  r = sin(x)
end subroutine

subroutine powf_loop(n, x, y, r) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_float) :: x(n), y(n), r(n)
  r = x**y
end subroutine

subroutine black_scholes(n, sign, spot, strike, rate, volatility, years, price) bind(c)
  use iso_c_binding
  integer(c_int), value :: n
  real(c_double), dimension(n) :: sign, spot, strike, rate, volatility, years, price
  real(c_double), parameter :: minus_sqrt_half = -0.70710678118654752d0
  real(c_double) :: deviation, drift, d1, d2, discounted
  integer :: i
  do i = 1, n
    deviation = volatility(i) * sqrt(years(i))
    drift = (rate(i) + 0.5d0 * volatility(i) * volatility(i)) * years(i)
    d1 = (log(spot(i) / strike(i)) + drift) / deviation
    d2 = d1 - deviation
    discounted = strike(i) * exp(-rate(i) * years(i))
    price(i) = sign(i) * (spot(i) * 0.5d0 * erfc(sign(i) * d1 * minus_sqrt_half) &
                          - discounted * 0.5d0 * erfc(sign(i) * d2 * minus_sqrt_half))
  end do
end subroutine
