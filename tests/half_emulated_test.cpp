// Half arithmetic on float operations against MPFR and exact arithmetic: all modes of rounding, all
// encodings, and an MXCSR that a caller may have changed.
#include "frame/half_emulated.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace zorp {
namespace {

using zorp::rd;
using zorp::rn;
using zorp::Rounding;
using zorp::ru;
using zorp::rz;
using Half = uint16_t;

constexpr Rounding current = Rounding::current;
constexpr Half default_nan = 0xfe00;
constexpr Half infinity = 0x7c00;

// ---- Halves as numbers

bool is_nan(Half h) { return (h & 0x7fff) > infinity; }
bool is_signalling(Half h) { return is_nan(h) && !(h & 0x0200); }
bool is_negative(Half h) { return h >> 15; }
Half quiet(Half nan) { return nan | 0x0200; }
Half with_sign(Half magnitude, bool negative) { return magnitude | (negative ? 0x8000 : 0); }

double to_double(Half h) {
  const int exponent = h >> 10 & 31, fraction = h & 0x3ff;
  double magnitude;
  if (exponent == 31) {
    magnitude = fraction ? NAN : INFINITY;
  } else if (exponent == 0) {
    magnitude = std::ldexp(fraction, -24);
  } else {
    magnitude = std::ldexp(1024 + fraction, exponent - 25);
  }
  return is_negative(h) ? -magnitude : magnitude;
}

/// An integer in the given mode; exact arithmetic on doubles.
double round_to_integer(double x, Rounding mode) {
  switch (mode) {
    case rd:
      return std::floor(x);
    case ru:
      return std::ceil(x);
    case rz:
      return std::trunc(x);
    default: {
      const double below = std::floor(x), rest = x - below;
      const bool up = rest > 0.5 || (rest == 0.5 && std::fmod(below, 2) != 0);
      return std::copysign(up ? below + 1 : below, x);
    }
  }
}

mpfr_rnd_t mpfr_mode(Rounding mode) {
  switch (mode) {
    case rd:
      return MPFR_RNDD;
    case ru:
      return MPFR_RNDU;
    case rz:
      return MPFR_RNDZ;
    default:
      return MPFR_RNDN;
  }
}

/// MPFR numbers of half's precision and range, so that MPFR's rounding is half's.
class Reference {
 public:
  Reference() {
    mpfr_set_emin(-23);
    mpfr_set_emax(16);
    for (auto& x : operand_) mpfr_init2(x, 11);
    mpfr_init2(result_, 11);
  }
  ~Reference() {
    for (auto& x : operand_) mpfr_clear(x);
    mpfr_clear(result_);
  }

  /// `operation(result, operands, mode)` is an MPFR function on non-NaN halves.
  template <class Operation>
  Half operator()(std::initializer_list<Half> operands, Rounding mode, Operation operation) {
    int i = 0;
    for (Half h : operands) mpfr_set_d(operand_[i++], to_double(h), MPFR_RNDN);
    const int ternary = operation(result_, operand_, mpfr_mode(mode));
    mpfr_subnormalize(result_, ternary, mpfr_mode(mode));
    return encode();
  }

 private:
  Half encode() const {
    if (mpfr_nan_p(result_)) return default_nan;
    const bool negative = mpfr_signbit(result_);
    if (mpfr_inf_p(result_)) return with_sign(infinity, negative);
    const double magnitude = std::fabs(mpfr_get_d(result_, MPFR_RNDN));
    if (magnitude < 0x1p-14) {
      return with_sign(static_cast<Half>(std::ldexp(magnitude, 24)), negative);
    }
    const int exponent = std::ilogb(magnitude);
    const int fraction = static_cast<int>(std::ldexp(magnitude, 10 - exponent)) - 1024;
    return with_sign(static_cast<Half>((exponent + 15) << 10 | fraction), negative);
  }

  mpfr_t operand_[3];
  mpfr_t result_;
};

Reference& reference() {
  static Reference r;
  return r;
}

/// Rounds a double to half.
Half round_half(double x, Rounding mode) {
  return reference()({}, mode,
                     [x](mpfr_ptr r, mpfr_t*, mpfr_rnd_t rnd) { return mpfr_set_d(r, x, rnd); });
}

/// The first NaN, quiet; 0 without one.
Half first_nan(std::initializer_list<Half> operands) {
  for (Half h : operands) {
    if (is_nan(h)) return quiet(h);
  }
  return 0;
}

// ---- MXCSR

constexpr unsigned default_mxcsr = 0x1f80;
/// All exceptions unmasked, rounding up, subnormals flushed: static modes must not notice.
constexpr unsigned hostile_mxcsr = 0x8040 | 2 << 13;

class ScopedMxcsr {
 public:
  explicit ScopedMxcsr(unsigned value) : saved_(_mm_getcsr()) { _mm_setcsr(value); }
  ~ScopedMxcsr() { _mm_setcsr(saved_); }

 private:
  unsigned saved_;
};

/// A mode under test: `mode` is what the result must be rounded in.
struct Setting {
  Rounding mode;
  bool dynamic;
  unsigned mxcsr;
};

std::vector<Setting> settings() {
  std::vector<Setting> all;
  for (Rounding mode : {rn, rd, ru, rz}) {
    all.push_back({mode, false, default_mxcsr});
    all.push_back({mode, false, hostile_mxcsr});
    const unsigned rounding = static_cast<unsigned>(mode) << 13;
    all.push_back({mode, true, default_mxcsr | rounding});
    all.push_back({mode, true, default_mxcsr | 0x8040 | rounding});
  }
  return all;
}

// ---- Vectors of halves

__m256i load(const Half* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
void store(Half* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

/// Columns of operands, a multiple of 16 of them.
struct Operands {
  std::vector<Half> a, b, c;
  void add(Half x, Half y = 0, Half z = 0) {
    a.push_back(x);
    b.push_back(y);
    c.push_back(z);
  }
  void fill_up() {
    while (a.size() % 16) add(0);
  }
};

/// `operation` takes three vectors, of which it may ignore some.
template <class Operation>
[[gnu::noinline]] std::vector<Half> evaluate(Operation operation, const Operands& o,
                                             unsigned mxcsr) {
  std::vector<Half> results(o.a.size());
  ScopedMxcsr scoped(mxcsr);
  for (size_t i = 0; i < results.size(); i += 16) {
    store(&results[i], operation(load(&o.a[i]), load(&o.b[i]), load(&o.c[i])));
  }
  return results;
}

template <class Operation>
std::vector<Half> evaluate(Operation operation, const Operands& o, const Setting& s) {
  const auto run = [&]<Rounding mode>(std::integral_constant<Rounding, mode>) {
    const auto instance = [operation](__m256i a, __m256i b, __m256i c) {
      return operation.template operator()<mode>(a, b, c);
    };
    return evaluate(instance, o, s.mxcsr);
  };
  if (s.dynamic) return run(std::integral_constant<Rounding, current>());
  switch (s.mode) {
    case rd:
      return run(std::integral_constant<Rounding, rd>());
    case ru:
      return run(std::integral_constant<Rounding, ru>());
    case rz:
      return run(std::integral_constant<Rounding, rz>());
    default:
      return run(std::integral_constant<Rounding, rn>());
  }
}

std::string hex(unsigned long long x) {
  char text[32];
  std::snprintf(text, sizeof text, "%04llx", x);
  return text;
}

/// Shows the first few differences only.
void expect_equal(const std::vector<Half>& want, const std::vector<Half>& got, const Operands& o,
                  const std::string& what) {
  ASSERT_EQ(want.size(), got.size());
  int shown = 0;
  for (size_t i = 0; i < want.size() && shown < 5; ++i) {
    if (want[i] == got[i]) continue;
    ++shown;
    ADD_FAILURE() << what << "(" << hex(o.a[i]) << ", " << hex(o.b[i]) << ", " << hex(o.c[i])
                  << ") = " << hex(got[i]) << ", want " << hex(want[i]);
  }
}

/// Checks an operation, a template over the mode, in all modes.
template <class Operation, class Expected>
void check_rounded(const std::string& name, Operation operation, const Operands& o,
                   Expected expected) {
  std::array<std::vector<Half>, 4> want;
  for (Rounding mode : {rn, rd, ru, rz}) {
    auto& column = want[static_cast<int>(mode)];
    column.reserve(o.a.size());
    for (size_t i = 0; i < o.a.size(); ++i) {
      column.push_back(expected(o.a[i], o.b[i], o.c[i], mode));
    }
  }
  for (const Setting& s : settings()) {
    expect_equal(
        want[static_cast<int>(s.mode)], evaluate(operation, o, s), o,
        name + " mode " + std::to_string(static_cast<int>(s.mode)) + " mxcsr " + hex(s.mxcsr));
  }
}

/// Checks an operation that doesn't round.
template <class Operation, class Expected>
void check_exact(const std::string& name, Operation operation, const Operands& o,
                 Expected expected) {
  std::vector<Half> want;
  for (size_t i = 0; i < o.a.size(); ++i) want.push_back(expected(o.a[i], o.b[i]));
  for (unsigned mxcsr : {default_mxcsr, hostile_mxcsr}) {
    expect_equal(want, evaluate(operation, o, mxcsr), o, name + " mxcsr " + hex(mxcsr));
  }
}

Operands all_halves() {
  Operands o;
  for (unsigned h = 0; h < 0x10000; ++h) o.add(static_cast<Half>(h));
  return o;
}

/// Every exponent with telling fractions, both signs; with exponent 31 that is infinities and NaNs
/// of both kinds.
std::vector<Half> structured_halves(std::initializer_list<unsigned> fractions) {
  std::vector<Half> halves;
  for (unsigned exponent = 0; exponent < 32; ++exponent) {
    for (unsigned fraction : fractions) {
      halves.push_back(static_cast<Half>(exponent << 10 | fraction));
      halves.push_back(static_cast<Half>(0x8000 | exponent << 10 | fraction));
    }
  }
  return halves;
}

Operands pairs() {
  Operands o;
  const auto structured = structured_halves({0, 1, 2, 0x155, 0x200, 0x2aa, 0x3ff});
  for (Half x : structured) {
    for (Half y : structured) o.add(x, y);
  }
  std::mt19937 random(1);
  for (int i = 0; i < 300000; ++i) {
    const unsigned bits = random();
    o.add(static_cast<Half>(bits), static_cast<Half>(bits >> 16));
  }
  o.fill_up();
  return o;
}

Half half_from_exact(double x) { return round_half(x, rn); }

Operands triples() {
  Operands o;
  const Half special[] = {0x0000, 0x8000, 0x0001, 0x8001, 0x03ff, 0x0400, 0x8400, 0x3bff,
                          0x3c00, 0xbc00, 0x3c01, 0x7bff, 0xfbff, 0x7c00, 0xfc00, 0x7c01,
                          0xfd55, 0x7e02, 0xfe00, 0x7fff, 0x1400, 0x9401, 0x6800, 0xe801};
  for (Half x : special) {
    for (Half y : special) {
      for (Half z : special) o.add(x, y, z);
    }
  }
  std::mt19937 random(2);
  for (int i = 0; i < 100000; ++i) {
    o.add(static_cast<Half>(random()), static_cast<Half>(random()), static_cast<Half>(random()));
  }
  // A product close to half a unit in the last place of the addend, at times by less than float
  // resolves: what rounding twice gets wrong.
  for (int i = 0; i < 200000; ++i) {
    const Half c = random() & 0xfbff;
    const int exponent = std::max<int>(c >> 10 & 31, 1) - 15;
    const int product = exponent - 11 + static_cast<int>(random() % 3) - 1;
    const int first = std::min(15, std::max(-14, product / 2 + static_cast<int>(random() % 9) - 4));
    const int second = product - first;
    const auto factor = [&random](int e) {
      const double offset = std::array{0.0, 0x1p-10, 0x1p-9, -0x1p-11, -0x1p-10}[random() % 5];
      return half_from_exact(std::ldexp(random() % 2 ? 1 + offset : -1 - offset, e));
    };
    o.add(factor(first), factor(second), c);
  }
  // Cancellation down to an exact zero.
  for (int i = 0; i < 50000; ++i) {
    const Half a = static_cast<Half>(random()), b = static_cast<Half>(random());
    const double product = to_double(a) * to_double(b);
    if (!std::isfinite(product)) continue;
    o.add(a, b,
          static_cast<Half>(half_from_exact(random() % 2 ? product : -product) + random() % 3 - 1));
  }
  o.fill_up();
  return o;
}

// ---- Arithmetic

template <class Operation>
auto binary_reference(Operation operation) {
  return [operation](Half a, Half b, Half, Rounding mode) {
    if (const Half nan = first_nan({a, b})) return nan;
    return reference()({a, b}, mode, [operation](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
      return operation(r, x[0], x[1], rnd);
    });
  };
}

TEST(HalfEmulated, BinaryOperations) {
  const Operands o = pairs();
  check_rounded(
      "add", []<Rounding mode>(__m256i a, __m256i b, __m256i) { return emulated::add<mode>(a, b); },
      o, binary_reference(mpfr_add));
  check_rounded(
      "sub", []<Rounding mode>(__m256i a, __m256i b, __m256i) { return emulated::sub<mode>(a, b); },
      o, binary_reference(mpfr_sub));
  check_rounded(
      "mul", []<Rounding mode>(__m256i a, __m256i b, __m256i) { return emulated::mul<mode>(a, b); },
      o, binary_reference(mpfr_mul));
  check_rounded(
      "div", []<Rounding mode>(__m256i a, __m256i b, __m256i) { return emulated::div<mode>(a, b); },
      o, binary_reference(mpfr_div));
}

TEST(HalfEmulated, FusedOperations) {
  const Operands o = triples();
  // A zero or infinite factor with a NaN addend is no invalid operation here: the NaN goes on.
  const auto fused = [](bool negate_product, bool negate_addend) {
    return [=](Half a, Half b, Half c, Rounding mode) {
      if (const Half nan = first_nan({a, b, c})) return nan;
      const Half x = a ^ (negate_product ? 0x8000 : 0), z = c ^ (negate_addend ? 0x8000 : 0);
      return reference()({x, b, z}, mode, [](mpfr_ptr r, mpfr_t* v, mpfr_rnd_t rnd) {
        return mpfr_fma(r, v[0], v[1], v[2], rnd);
      });
    };
  };
  check_rounded(
      "fma",
      []<Rounding mode>(__m256i a, __m256i b, __m256i c) { return emulated::fma<mode>(a, b, c); },
      o, fused(false, false));
  check_rounded(
      "fms",
      []<Rounding mode>(__m256i a, __m256i b, __m256i c) { return emulated::fms<mode>(a, b, c); },
      o, fused(false, true));
  check_rounded(
      "fnma",
      []<Rounding mode>(__m256i a, __m256i b, __m256i c) { return emulated::fnma<mode>(a, b, c); },
      o, fused(true, false));
  check_rounded(
      "fnms",
      []<Rounding mode>(__m256i a, __m256i b, __m256i c) { return emulated::fnms<mode>(a, b, c); },
      o, fused(true, true));
}

TEST(HalfEmulated, RootsAndReciprocals) {
  const Operands o = all_halves();
  check_rounded(
      "sqrt", []<Rounding mode>(__m256i a, __m256i, __m256i) { return emulated::sqrt<mode>(a); }, o,
      [](Half a, Half, Half, Rounding mode) {
        if (const Half nan = first_nan({a})) return nan;
        return reference()({a}, mode, [](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
          return mpfr_sqrt(r, x[0], rnd);
        });
      });
  check_exact(
      "reciprocal", [](__m256i a, __m256i, __m256i) { return emulated::reciprocal(a); }, o,
      [](Half a, Half) {
        if (const Half nan = first_nan({a})) return nan;
        return reference()({a}, rn, [](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
          return mpfr_ui_div(r, 1, x[0], rnd);
        });
      });
  check_exact(
      "reciprocal_root", [](__m256i a, __m256i, __m256i) { return emulated::reciprocal_root(a); },
      o,
      [](Half a, Half) {
        if (const Half nan = first_nan({a})) return nan;
        if (a == 0x8000) return with_sign(infinity, true);
        return reference()({a}, rn, [](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
          return mpfr_rec_sqrt(r, x[0], rnd);
        });
      });
}

TEST(HalfEmulated, Scale) {
  check_rounded(
      "scale",
      []<Rounding mode>(__m256i a, __m256i b, __m256i) { return emulated::scale<mode>(a, b); },
      pairs(),
      [](Half v, Half s, Half, Rounding mode) -> Half {
        if (is_signalling(v)) return quiet(v);
        if (is_nan(v) && (s & 0x7fff) == infinity) return is_negative(s) ? 0 : infinity;
        if (const Half nan = first_nan({v, s})) return nan;
        const Half magnitude = v & 0x7fff;
        if (s == infinity) {
          return magnitude ? with_sign(infinity, is_negative(v)) : default_nan;
        }
        if (s == with_sign(infinity, true)) {
          return magnitude != infinity ? with_sign(0, is_negative(v)) : default_nan;
        }
        const long power = static_cast<long>(std::floor(to_double(s)));
        return reference()({v}, mode, [power](mpfr_ptr r, mpfr_t* x, mpfr_rnd_t rnd) {
          return mpfr_mul_2si(r, x[0], power, rnd);
        });
      });
}

// ---- Comparison and classes

template <int predicate>
void check_predicate(const Operands& o) {
  // Which of "equal, less, greater, unordered" the predicate accepts; the upper half of the
  // predicates differs from the lower in signalling only.
  constexpr const char* accepts[] = {"e",  "l",  "le",  "u", "lgu", "egu", "gu", "leg",
                                     "eu", "lu", "leu", "",  "lg",  "eg",  "g",  "legu"};
  const std::string accepted = accepts[predicate % 16];
  for (unsigned mxcsr : {default_mxcsr, hostile_mxcsr}) {
    int shown = 0;
    for (size_t i = 0; i < o.a.size() && shown < 5; i += 16) {
      __mmask16 got;
      {
        ScopedMxcsr scoped(mxcsr);
        got = emulated::compare<predicate>(load(&o.a[i]), load(&o.b[i]));
        asm volatile("" : "+r"(got));
      }
      __mmask16 want = 0;
      for (size_t j = 0; j < 16; ++j) {
        const double x = to_double(o.a[i + j]), y = to_double(o.b[i + j]);
        const char relation = x == y ? 'e' : x < y ? 'l' : x > y ? 'g' : 'u';
        if (accepted.find(relation) != std::string::npos) want |= 1 << j;
      }
      if (got != want) {
        ++shown;
        ADD_FAILURE() << "predicate " << predicate << " at " << hex(o.a[i]) << ", " << hex(o.b[i])
                      << "...: " << hex(got) << ", want " << hex(want);
      }
    }
  }
}

TEST(HalfEmulated, Comparisons) {
  Operands o;
  const auto structured = structured_halves({0, 1, 0x200, 0x3ff});
  for (Half x : structured) {
    for (Half y : structured) o.add(x, y);
  }
  [&]<int... predicate>(std::integer_sequence<int, predicate...>) {
    (check_predicate<predicate>(o), ...);
  }
  (std::make_integer_sequence<int, 32>());
}

TEST(HalfEmulated, MinimumAndMaximum) {
  const Operands o = pairs();
  check_exact(
      "min", [](__m256i a, __m256i b, __m256i) { return emulated::min(a, b); }, o,
      [](Half a, Half b) { return to_double(a) < to_double(b) ? a : b; });
  check_exact(
      "max", [](__m256i a, __m256i b, __m256i) { return emulated::max(a, b); }, o,
      [](Half a, Half b) { return to_double(a) > to_double(b) ? a : b; });
}

template <int imm>
void check_classes() {
  for (unsigned base = 0; base < 0x10000; base += 16) {
    Half block[16];
    __mmask16 want = 0;
    for (unsigned j = 0; j < 16; ++j) {
      const Half h = block[j] = static_cast<Half>(base + j);
      const double x = to_double(h);
      const bool classes[] = {is_nan(h) && !is_signalling(h),
                              h == 0,
                              h == 0x8000,
                              x == INFINITY,
                              x == -INFINITY,
                              x != 0 && std::fabs(x) < 0x1p-14,
                              x < 0 && !std::isinf(x),
                              is_signalling(h)};
      for (int bit = 0; bit < 8; ++bit) {
        if ((imm >> bit & 1) && classes[bit]) want |= 1 << j;
      }
    }
    ASSERT_EQ(emulated::classify<imm>(load(block)), want) << "classes " << imm << " at " << base;
  }
}

TEST(HalfEmulated, Classes) {
  [&]<int... imm>(std::integer_sequence<int, imm...>) { (check_classes<imm>(), ...); }
  (std::make_integer_sequence<int, 256>());
}

// ---- Exponent, significand, rounding to a multiple

TEST(HalfEmulated, Exponent) {
  check_exact(
      "exponent", [](__m256i a, __m256i, __m256i) { return emulated::exponent(a); }, all_halves(),
      [](Half a, Half) -> Half {
        if (is_nan(a)) return quiet(a);
        const double x = to_double(a);
        if (x == 0) return with_sign(infinity, true);
        if (std::isinf(x)) return infinity;
        return half_from_exact(std::ilogb(x));
      });
}

Half expected_significand(int imm, Half a) {
  const int interval = imm & 3;
  const bool keep_sign = !(imm & 4), refuse_negative = imm & 8;
  if (is_nan(a)) return quiet(a);
  const double x = to_double(a);
  const bool negative = is_negative(a);
  if (x < 0 && refuse_negative) return default_nan;
  double m = 1;
  if (x != 0 && std::isfinite(x)) {
    const int exponent = std::ilogb(x);
    m = std::ldexp(std::fabs(x), -exponent);
    const bool halve =
        interval == 2 || (interval == 1 && exponent % 2 != 0) || (interval == 3 && m >= 1.5);
    if (halve) m /= 2;
  }
  return half_from_exact(keep_sign && negative ? -m : m);
}

TEST(HalfEmulated, Significand) {
  const Operands o = all_halves();
  [&]<int... imm>(std::integer_sequence<int, imm...>) {
    (check_exact(
         "significand " + std::to_string(imm),
         [](__m256i a, __m256i, __m256i) { return emulated::significand<imm>(a); }, o,
         [](Half a, Half) { return expected_significand(imm, a); }),
     ...);
  }
  (std::make_integer_sequence<int, 16>());
}

/// The immediate's rounding mode, where the MXCSR holds `dynamic`.
Rounding immediate_mode(int imm, Rounding dynamic) {
  return imm & 4 ? dynamic : static_cast<Rounding>(imm & 3);
}

template <int imm>
void check_round_scale_and_reduce(const Operands& o) {
  const Rounding dynamic = ru;
  const Rounding mode = immediate_mode(imm, dynamic);
  const int fraction_bits = imm >> 4;
  const auto rounded = [=](double x) {
    return std::ldexp(round_to_integer(std::ldexp(x, fraction_bits), mode), -fraction_bits);
  };
  for (unsigned mxcsr : {default_mxcsr | 2 << 13, hostile_mxcsr}) {
    // A dynamic mode may raise exceptions, so they must be masked.
    if (imm & 4) mxcsr |= default_mxcsr;
    std::vector<Half> want_scaled, want_reduced;
    for (Half a : o.a) {
      const double x = to_double(a);
      if (is_nan(a)) {
        want_scaled.push_back(quiet(a));
        want_reduced.push_back(quiet(a));
      } else if (std::isinf(x)) {
        want_scaled.push_back(a);
        want_reduced.push_back(0);
      } else {
        const double multiple = rounded(x), rest = x - multiple;
        want_scaled.push_back(with_sign(half_from_exact(std::fabs(multiple)), is_negative(a)));
        want_reduced.push_back(rest == 0 ? with_sign(0, mode == rd) : round_half(rest, mode));
      }
    }
    expect_equal(want_scaled,
                 evaluate([](__m256i a, __m256i, __m256i) { return emulated::round_scale<imm>(a); },
                          o, mxcsr),
                 o, "round_scale " + std::to_string(imm));
    expect_equal(
        want_reduced,
        evaluate([](__m256i a, __m256i, __m256i) { return emulated::reduce<imm>(a); }, o, mxcsr), o,
        "reduce " + std::to_string(imm));
  }
}

TEST(HalfEmulated, RoundScaleAndReduce) {
  const Operands o = all_halves();
  [&]<int... index>(std::integer_sequence<int, index...>) {
    // Fraction bits 0, 1, 5, 10, 15 with every rounding control.
    constexpr int fraction_bits[] = {0, 1, 5, 10, 15};
    (check_round_scale_and_reduce<fraction_bits[index / 5] << 4 | index % 5>(o), ...);
    check_round_scale_and_reduce<0x2c>(o);
  }
  (std::make_integer_sequence<int, 25>());
}

// ---- Conversions

Half expected_narrow(double x, uint64_t bits, int fraction_bits, Rounding mode) {
  if (!std::isnan(x)) return round_half(x, mode);
  return with_sign(quiet(infinity | (bits >> (fraction_bits - 10) & 0x3ff)), std::signbit(x));
}

/// Every half, every midpoint of halves, their neighbours, and the whole range, in F.
template <class F>
std::vector<F> wide_values() {
  std::vector<F> values;
  for (unsigned h = 0; h < 0x7c00; ++h) {
    const F low = static_cast<F>(to_double(static_cast<Half>(h)));
    const F next = h == 0x7bff ? F(65536) : static_cast<F>(to_double(static_cast<Half>(h + 1)));
    const F middle = low + (next - low) / 2;
    for (F x : {low, middle}) {
      for (F y : {std::nextafter(x, F(0)), x, std::nextafter(x, F(INFINITY))}) {
        values.push_back(y);
        values.push_back(-y);
      }
    }
  }
  std::mt19937_64 random(3);
  for (int i = 0; i < 50000; ++i) {
    if constexpr (sizeof(F) == 4) {
      values.push_back(std::bit_cast<float>(static_cast<uint32_t>(random())));
    } else {
      values.push_back(std::bit_cast<double>(random()));
    }
  }
  for (F x : {std::numeric_limits<F>::denorm_min(), std::numeric_limits<F>::min(),
              std::numeric_limits<F>::max(), std::numeric_limits<F>::infinity(),
              std::numeric_limits<F>::quiet_NaN(), F(0), F(0x1p-149), F(0x1p-126), F(0x1p-25)}) {
    for (int i = 0; i < 8; ++i) values.push_back(i % 2 ? x : -x);
  }
  while (values.size() % 16) values.push_back(0);
  return values;
}

/// Narrowing treats subnormal input as zero where MXCSR says so, as the instructions do.
template <class F>
void check_narrow(const std::array<void (*)(const F*, Half*), 5>& instances) {
  using Bits = std::conditional_t<sizeof(F) == 4, uint32_t, uint64_t>;
  const auto values = wide_values<F>();
  for (const Setting& s : settings()) {
    const auto instance = instances[static_cast<int>(s.dynamic ? current : s.mode)];
    std::vector<Half> got(values.size());
    {
      ScopedMxcsr scoped(s.mxcsr);
      for (size_t i = 0; i < values.size(); i += 16) instance(&values[i], &got[i]);
    }
    int shown = 0;
    for (size_t i = 0; i < values.size() && shown < 5; ++i) {
      F x = values[i];
      if ((s.mxcsr & 0x40) && std::fpclassify(x) == FP_SUBNORMAL) x = std::copysign(F(0), x);
      const Half want =
          expected_narrow(x, std::bit_cast<Bits>(x), std::numeric_limits<F>::digits - 1, s.mode);
      if (got[i] == want) continue;
      ++shown;
      ADD_FAILURE() << "narrow(" << hex(std::bit_cast<Bits>(values[i])) << ") = " << hex(got[i])
                    << ", want " << hex(want) << ", mode " << static_cast<int>(s.mode) << " mxcsr "
                    << hex(s.mxcsr);
    }
  }
}

template <Rounding mode>
void narrow_floats(const float* from, Half* to) {
  store(to, emulated::narrow<mode>(_mm512_loadu_ps(from)));
}

template <Rounding mode>
void narrow_doubles(const double* from, Half* to) {
  for (int i = 0; i < 16; i += 8) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i),
                     emulated::narrow<mode>(_mm512_loadu_pd(from + i)));
  }
}

TEST(HalfEmulated, NarrowsFloatAndDouble) {
  check_narrow<float>({narrow_floats<rn>, narrow_floats<rd>, narrow_floats<ru>, narrow_floats<rz>,
                       narrow_floats<current>});
  check_narrow<double>({narrow_doubles<rn>, narrow_doubles<rd>, narrow_doubles<ru>,
                        narrow_doubles<rz>, narrow_doubles<current>});
}

TEST(HalfEmulated, Widens) {
  for (unsigned mxcsr : {default_mxcsr, hostile_mxcsr}) {
    for (unsigned base = 0; base < 0x10000; base += 16) {
      Half block[16];
      for (unsigned j = 0; j < 16; ++j) block[j] = static_cast<Half>(base + j);
      float floats[16];
      double doubles[16];
      {
        ScopedMxcsr scoped(mxcsr);
        const __m256i v = load(block);
        _mm512_storeu_ps(floats, emulated::widen(v));
        _mm512_storeu_pd(doubles, emulated::widen_double(_mm256_castsi256_si128(v)));
        _mm512_storeu_pd(doubles + 8, emulated::widen_double(_mm256_extracti128_si256(v, 1)));
      }
      for (unsigned j = 0; j < 16; ++j) {
        const Half h = block[j];
        uint64_t want = std::bit_cast<uint64_t>(to_double(h));
        if (is_nan(h)) {
          want = uint64_t{is_negative(h)} << 63 | 0x7ffull << 52 | uint64_t{quiet(h)} << 54 >> 12;
        }
        ASSERT_EQ(std::bit_cast<uint64_t>(doubles[j]), want) << hex(h);
        const uint32_t want32 =
            is_nan(h) ? static_cast<uint32_t>(uint32_t{is_negative(h)} << 31 | 0x7f800000 |
                                              (uint32_t{quiet(h)} & 0x3ff) << 13)
                      : std::bit_cast<uint32_t>(static_cast<float>(to_double(h)));
        ASSERT_EQ(std::bit_cast<uint32_t>(floats[j]), want32) << hex(h);
      }
    }
  }
}

/// Conversions of all halves to integers of type I, 16 at a time.
template <class I>
void check_to_integer(const std::array<void (*)(const Half*, I*), 5>& instances) {
  constexpr I invalid =
      std::is_signed_v<I> ? std::numeric_limits<I>::min() : std::numeric_limits<I>::max();
  for (const Setting& s : settings()) {
    int shown = 0;
    for (unsigned base = 0; base < 0x10000 && shown < 5; base += 16) {
      Half block[16];
      I got[16];
      for (unsigned j = 0; j < 16; ++j) block[j] = static_cast<Half>(base + j);
      {
        ScopedMxcsr scoped(s.mxcsr);
        instances[static_cast<int>(s.dynamic ? current : s.mode)](block, got);
      }
      for (unsigned j = 0; j < 16; ++j) {
        const double x = round_to_integer(to_double(block[j]), s.mode);
        const double end = std::ldexp(1.0, std::numeric_limits<I>::digits);
        const bool valid = x >= (std::is_signed_v<I> ? -end : 0) && x < end;
        const I want = valid ? static_cast<I>(x) : invalid;
        if (got[j] == want) continue;
        ++shown;
        ADD_FAILURE() << "to integer of " << sizeof(I) << " bytes, signed "
                      << std::is_signed_v<I> << ": " << hex(block[j]) << " gives " << +got[j]
                      << ", want " << +want << " mode " << static_cast<int>(s.mode) << " mxcsr "
                      << hex(s.mxcsr);
      }
    }
  }
}

template <class I>
std::vector<I> integers() {
  std::vector<I> values;
  if constexpr (sizeof(I) == 2) {
    for (int i = 0; i < 0x10000; ++i) values.push_back(static_cast<I>(i));
  } else {
    for (uint64_t centre : {uint64_t{0}, uint64_t{2048}, uint64_t{65536}, uint64_t{1} << 24,
                            uint64_t{1} << 31, uint64_t{1} << 32, uint64_t{1} << 63}) {
      for (int64_t i = -4096; i < 4096; ++i) {
        const uint64_t value = centre + static_cast<uint64_t>(i);
        values.push_back(static_cast<I>(value));
        values.push_back(static_cast<I>(-value));
      }
    }
    std::mt19937_64 random(4);
    for (int i = 0; i < 65536; ++i) {
      values.push_back(static_cast<I>(random()) >> (random() % std::numeric_limits<I>::digits));
    }
  }
  return values;
}

template <class I>
void check_from_integer(const std::array<void (*)(const I*, Half*), 5>& instances) {
  const auto values = integers<I>();
  for (const Setting& s : settings()) {
    int shown = 0;
    for (size_t i = 0; i < values.size() && shown < 5; i += 16) {
      Half got[16];
      {
        ScopedMxcsr scoped(s.mxcsr);
        instances[static_cast<int>(s.dynamic ? current : s.mode)](&values[i], got);
      }
      for (size_t j = 0; j < 16; ++j) {
        const I x = values[i + j];
        const Half want = reference()({}, s.mode, [x](mpfr_ptr r, mpfr_t*, mpfr_rnd_t rnd) {
          return std::is_signed_v<I> ? mpfr_set_sj(r, static_cast<intmax_t>(x), rnd)
                                     : mpfr_set_uj(r, static_cast<uintmax_t>(x), rnd);
        });
        if (got[j] == want) continue;
        ++shown;
        ADD_FAILURE() << "from integer " << +x << " of " << sizeof(I) << " bytes gives "
                      << hex(got[j]) << ", want " << hex(want) << " mode "
                      << static_cast<int>(s.mode) << " mxcsr " << hex(s.mxcsr);
      }
    }
  }
}

/// Adapters of the conversions to arrays of 16.
template <class I, Rounding mode>
void to_integers(const Half* from, I* to) {
  constexpr bool is_signed = std::is_signed_v<I>;
  if constexpr (sizeof(I) == 2) {
    const __m256i v = load(from);
    store(reinterpret_cast<Half*>(to),
          is_signed ? emulated::to_int16<mode>(v) : emulated::to_uint16<mode>(v));
  } else if constexpr (sizeof(I) == 4) {
    const __m256i v = load(from);
    _mm512_storeu_si512(to, is_signed ? emulated::to_int32<mode>(v) : emulated::to_uint32<mode>(v));
  } else {
    for (int i = 0; i < 16; i += 8) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
      _mm512_storeu_si512(to + i,
                          is_signed ? emulated::to_int64<mode>(v) : emulated::to_uint64<mode>(v));
    }
  }
}

template <class I, Rounding mode>
void from_integers(const I* from, Half* to) {
  constexpr bool is_signed = std::is_signed_v<I>;
  if constexpr (sizeof(I) == 2) {
    const __m256i v = load(reinterpret_cast<const Half*>(from));
    store(to, is_signed ? emulated::from_int16<mode>(v) : emulated::from_uint16<mode>(v));
  } else if constexpr (sizeof(I) == 4) {
    const __m512i v = _mm512_loadu_si512(from);
    store(to, is_signed ? emulated::from_int32<mode>(v) : emulated::from_uint32<mode>(v));
  } else {
    for (int i = 0; i < 16; i += 8) {
      const __m512i v = _mm512_loadu_si512(from + i);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i),
                       is_signed ? emulated::from_int64<mode>(v) : emulated::from_uint64<mode>(v));
    }
  }
}

template <class I>
void check_integer() {
  check_to_integer<I>({to_integers<I, rn>, to_integers<I, rd>, to_integers<I, ru>,
                       to_integers<I, rz>, to_integers<I, current>});
  check_from_integer<I>({from_integers<I, rn>, from_integers<I, rd>, from_integers<I, ru>,
                         from_integers<I, rz>, from_integers<I, current>});
}

TEST(HalfEmulated, Integers) {
  check_integer<int16_t>();
  check_integer<uint16_t>();
  check_integer<int32_t>();
  check_integer<uint32_t>();
  check_integer<int64_t>();
  check_integer<uint64_t>();
}

}  // namespace
}  // namespace zorp
