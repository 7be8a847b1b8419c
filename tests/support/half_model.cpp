#include "tests/support/half_model.h"

#include <mpfr.h>

#include <bit>
#include <cmath>
#include <initializer_list>
#include <string_view>

namespace zorp::test::half_model {
namespace {

constexpr Half kDefaultNan = 0xfe00;

bool is_nan(Half h) { return (h & 0x7fff) > kInfinity; }
bool is_signalling(Half h) { return is_nan(h) && !(h & 0x0200); }
bool is_negative(Half h) { return h >> 15; }
Half quiet(Half nan) { return nan | 0x0200; }
Half with_sign(Half magnitude, bool negative) { return magnitude | (negative ? 0x8000 : 0); }

/// The first NaN, quiet; 0 without one.
Half first_nan(std::initializer_list<uint64_t> operands) {
  for (uint64_t h : operands)
    if (is_nan(Half(h))) return quiet(Half(h));
  return 0;
}

mpfr_rnd_t mpfr_mode(Rounding mode) {
  return mode == rd ? MPFR_RNDD : mode == ru ? MPFR_RNDU : mode == rz ? MPFR_RNDZ : MPFR_RNDN;
}

/// MPFR numbers of half's precision and range, so that MPFR's rounding is half's.
class Arithmetic {
 public:
  Arithmetic() {
    mpfr_set_emin(-23);
    mpfr_set_emax(16);
    for (auto& x : operand_) mpfr_init2(x, 11);
    mpfr_init2(result_, 11);
  }
  ~Arithmetic() {
    for (auto& x : operand_) mpfr_clear(x);
    mpfr_clear(result_);
  }

  /// `operation(result, operands, mode)` is an MPFR function on non-NaN halves.
  template <class Function>
  Half operator()(std::initializer_list<uint64_t> operands, Rounding mode, Function operation) {
    int i = 0;
    for (uint64_t h : operands) mpfr_set_d(operand_[i++], number(Half(h)), MPFR_RNDN);
    const int ternary = operation(result_, operand_, mpfr_mode(mode));
    mpfr_subnormalize(result_, ternary, mpfr_mode(mode));
    return encode();
  }

 private:
  Half encode() const {
    if (mpfr_nan_p(result_)) return kDefaultNan;
    const bool negative = mpfr_signbit(result_);
    if (mpfr_inf_p(result_)) return with_sign(kInfinity, negative);
    const double magnitude = std::fabs(mpfr_get_d(result_, MPFR_RNDN));
    if (magnitude < 0x1p-14) return with_sign(Half(std::ldexp(magnitude, 24)), negative);
    const int exponent = std::ilogb(magnitude);
    const int fraction = int(std::ldexp(magnitude, 10 - exponent)) - 1024;
    return with_sign(Half((exponent + 15) << 10 | fraction), negative);
  }

  mpfr_t operand_[3];
  mpfr_t result_;
};

template <class Function>
Half rounded(std::initializer_list<uint64_t> operands, Rounding mode, Function operation) {
  static Arithmetic arithmetic;
  return arithmetic(operands, mode, operation);
}

Half round_half(double x, Rounding mode) {
  return rounded({}, mode,
                 [x](mpfr_ptr r, mpfr_t*, mpfr_rnd_t rnd) { return mpfr_set_d(r, x, rnd); });
}

using Unary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
using Binary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);

Half unary(const Lane& l, Unary operation, Rounding mode) {
  if (const Half nan = first_nan({l.a})) return nan;
  return rounded({l.a}, mode, [operation](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
    return operation(r, x[0], rnd);
  });
}

Half binary(const Lane& l, Binary operation) {
  if (const Half nan = first_nan({l.a, l.b})) return nan;
  return rounded({l.a, l.b}, l.mode, [operation](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
    return operation(r, x[0], x[1], rnd);
  });
}

/// A zero or infinite factor with a NaN addend is no invalid operation here: the NaN goes on.
Half fused(const Lane& l, Half product_sign, Half addend_sign) {
  if (const Half nan = first_nan({l.a, l.b, l.c})) return nan;
  return rounded(
      {l.a ^ product_sign, l.b, l.c ^ addend_sign}, l.mode,
      [](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) { return mpfr_fma(r, x[0], x[1], x[2], rnd); });
}

/// An integer in the given mode; exact arithmetic on doubles.
double round_to_integer(double x, Rounding mode) {
  if (mode == rd) return std::floor(x);
  if (mode == ru) return std::ceil(x);
  if (mode == rz) return std::trunc(x);
  const double below = std::floor(x), rest = x - below;
  const bool up = rest > 0.5 || (rest == 0.5 && std::fmod(below, 2) != 0);
  return std::copysign(up ? below + 1 : below, x);
}

Rounding immediate_mode(const Lane& l) {
  return l.immediate & 4 ? l.mode : Rounding(l.immediate & 3);
}

/// To a multiple of 2^-(immediate >> 4).
double multiple(const Lane& l) {
  const int fraction_bits = l.immediate >> 4;
  const double x = std::ldexp(number(Half(l.a)), fraction_bits);
  return std::ldexp(round_to_integer(x, immediate_mode(l)), -fraction_bits);
}

/// F's bits; a NaN turns quiet and keeps its sign and the upper end of its payload.
template <class F, class Bits>
uint64_t widen(const Lane& l) {
  constexpr int fraction_bits = std::numeric_limits<F>::digits - 1;
  const Half h = Half(l.a);
  if (!is_nan(h)) return std::bit_cast<Bits>(F(number(h)));
  return Bits{is_negative(h)} << (8 * sizeof(F) - 1) |
         std::bit_cast<Bits>(std::numeric_limits<F>::infinity()) |
         Bits(quiet(h) & 0x3ff) << (fraction_bits - 10);
}

template <class F, class Bits>
uint64_t narrow(const Lane& l) {
  const F x = std::bit_cast<F>(Bits(l.a));
  if (std::isnan(x)) {
    const Half payload = l.a >> (std::numeric_limits<F>::digits - 11) & 0x3ff;
    return with_sign(quiet(kInfinity | payload), std::signbit(x));
  }
  const bool zero = l.flushes && std::fpclassify(x) == FP_SUBNORMAL;
  return round_half(zero ? std::copysign(F(0), x) : x, l.mode);
}

}  // namespace

double number(Half h) {
  const int exponent = h >> 10 & 31, fraction = h & 0x3ff;
  const double magnitude = exponent == 31  ? fraction ? NAN : INFINITY
                           : exponent == 0 ? std::ldexp(fraction, -24)
                                           : std::ldexp(1024 + fraction, exponent - 25);
  return is_negative(h) ? -magnitude : magnitude;
}

Half nearest(double x) { return round_half(x, rn); }

uint64_t add(const Lane& l) { return binary(l, mpfr_add); }
uint64_t sub(const Lane& l) { return binary(l, mpfr_sub); }
uint64_t mul(const Lane& l) { return binary(l, mpfr_mul); }
uint64_t div(const Lane& l) { return binary(l, mpfr_div); }
uint64_t fma(const Lane& l) { return fused(l, 0, 0); }
uint64_t fms(const Lane& l) { return fused(l, 0, 0x8000); }
uint64_t fnma(const Lane& l) { return fused(l, 0x8000, 0); }
uint64_t fnms(const Lane& l) { return fused(l, 0x8000, 0x8000); }
uint64_t sqrt(const Lane& l) { return unary(l, mpfr_sqrt, l.mode); }

/// Ties go away from zero, as from what lies just behind them.
uint64_t narrowed_estimate(const Lane& l, float estimate) {
  if (const Half nan = first_nan({l.a})) return nan;
  return nearest(std::nextafter(double{estimate}, std::copysign(INFINITY, estimate)));
}

uint64_t scale(const Lane& l) {
  const Half v = Half(l.a), s = Half(l.b), magnitude = v & 0x7fff;
  if (is_signalling(v)) return quiet(v);
  if (is_nan(v) && (s & 0x7fff) == kInfinity) return is_negative(s) ? 0 : kInfinity;
  if (const Half nan = first_nan({v, s})) return nan;
  if (s == kInfinity) return magnitude ? with_sign(kInfinity, is_negative(v)) : kDefaultNan;
  if (s == with_sign(kInfinity, true))
    return magnitude != kInfinity ? with_sign(0, is_negative(v)) : kDefaultNan;
  const long power = long(std::floor(number(s)));
  return rounded({v}, l.mode, [power](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
    return mpfr_mul_2si(r, x[0], power, rnd);
  });
}

uint64_t min(const Lane& l) { return number(Half(l.a)) < number(Half(l.b)) ? l.a : l.b; }
uint64_t max(const Lane& l) { return number(Half(l.a)) > number(Half(l.b)) ? l.a : l.b; }

uint64_t exponent(const Lane& l) {
  if (const Half nan = first_nan({l.a})) return nan;
  const double x = number(Half(l.a));
  if (x == 0) return with_sign(kInfinity, true);
  return std::isinf(x) ? kInfinity : nearest(std::ilogb(x));
}

uint64_t compare(const Lane& l) {
  // Which of "equal, less, greater, unordered" a predicate accepts; the upper half of the
  // predicates differs from the lower in signalling only.
  constexpr std::string_view accepts[] = {"e",  "l",  "le",  "u", "lgu", "egu", "gu", "leg",
                                          "eu", "lu", "leu", "",  "lg",  "eg",  "g",  "legu"};
  const double x = number(Half(l.a)), y = number(Half(l.b));
  const char relation = x == y ? 'e' : x < y ? 'l' : x > y ? 'g' : 'u';
  return accepts[l.immediate % 16].find(relation) != std::string_view::npos;
}

uint64_t classify(const Lane& l) {
  const Half h = Half(l.a);
  const double x = number(h);
  const bool classes[] = {is_nan(h) && !is_signalling(h),
                          h == 0,
                          h == 0x8000,
                          x == INFINITY,
                          x == -INFINITY,
                          x != 0 && std::fabs(x) < 0x1p-14,
                          x < 0 && !std::isinf(x),
                          is_signalling(h)};
  bool any = false;
  for (int bit = 0; bit < 8; ++bit) any |= (l.immediate >> bit & 1) && classes[bit];
  return any;
}

uint64_t significand(const Lane& l) {
  const int interval = l.immediate & 3;
  const bool keeps_sign = !(l.immediate & 4), refuses_negative = l.immediate & 8;
  if (const Half nan = first_nan({l.a})) return nan;
  const double x = number(Half(l.a));
  if (x < 0 && refuses_negative) return kDefaultNan;
  double m = 1;
  if (x != 0 && std::isfinite(x)) {
    const int exponent = std::ilogb(x);
    m = std::ldexp(std::fabs(x), -exponent);
    if (interval == 2 || (interval == 1 && exponent % 2 != 0) || (interval == 3 && m >= 1.5))
      m /= 2;
  }
  return nearest(keeps_sign && std::signbit(x) ? -m : m);
}

uint64_t round_scale(const Lane& l) {
  if (const Half nan = first_nan({l.a})) return nan;
  if ((l.a & 0x7fff) == kInfinity) return l.a;
  return with_sign(nearest(std::fabs(multiple(l))), is_negative(Half(l.a)));
}

uint64_t reduce(const Lane& l) {
  if (const Half nan = first_nan({l.a})) return nan;
  if ((l.a & 0x7fff) == kInfinity) return 0;
  const double rest = number(Half(l.a)) - multiple(l);
  const Rounding mode = immediate_mode(l);
  return rest == 0 ? with_sign(0, mode == rd) : round_half(rest, mode);
}

uint64_t to_float(const Lane& l) { return widen<float, uint32_t>(l); }
uint64_t to_double(const Lane& l) { return widen<double, uint64_t>(l); }
uint64_t from_float(const Lane& l) { return narrow<float, uint32_t>(l); }
uint64_t from_double(const Lane& l) { return narrow<double, uint64_t>(l); }

template <class I>
uint64_t to_integer(const Lane& l) {
  constexpr bool is_signed = std::is_signed_v<I>;
  constexpr I invalid = is_signed ? std::numeric_limits<I>::min() : std::numeric_limits<I>::max();
  const double x = round_to_integer(number(Half(l.a)), l.mode);
  const double end = std::ldexp(1.0, std::numeric_limits<I>::digits);
  const bool valid = x >= (is_signed ? -end : 0) && x < end;
  return std::make_unsigned_t<I>(valid ? I(x) : invalid);
}

template <class I>
uint64_t from_integer(const Lane& l) {
  return rounded({}, l.mode, [x = I(l.a)](mpfr_ptr r, mpfr_t*, mpfr_rnd_t rnd) {
    return std::is_signed_v<I> ? mpfr_set_sj(r, intmax_t(x), rnd)
                               : mpfr_set_uj(r, uintmax_t(x), rnd);
  });
}

template uint64_t to_integer<int16_t>(const Lane&);
template uint64_t to_integer<uint16_t>(const Lane&);
template uint64_t to_integer<int32_t>(const Lane&);
template uint64_t to_integer<uint32_t>(const Lane&);
template uint64_t to_integer<int64_t>(const Lane&);
template uint64_t to_integer<uint64_t>(const Lane&);
template uint64_t from_integer<int16_t>(const Lane&);
template uint64_t from_integer<uint16_t>(const Lane&);
template uint64_t from_integer<int32_t>(const Lane&);
template uint64_t from_integer<uint32_t>(const Lane&);
template uint64_t from_integer<int64_t>(const Lane&);
template uint64_t from_integer<uint64_t>(const Lane&);

}  // namespace zorp::test::half_model
