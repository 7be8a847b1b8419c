// What operations on halves give, a lane at a time: by MPFR, by exact arithmetic on doubles. The
// tests of the emulated half and of the emulator of half instructions share it.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/rounding.h"

namespace zorp::test::half_model {

using Half = uint16_t;

constexpr Half kInfinity = 0x7c00;

/// The operands as bits, and what else decides the result.
struct Lane {
  uint64_t a, b = 0, c = 0;
  Rounding mode = rn;    // of the result, or MXCSR's, which some immediates ask for
  bool flushes = false;  // MXCSR takes subnormal floats and doubles for zeros
  int immediate = 0;
};

/// The result's bits, zero-extended; of tests 0 or 1.
using Operation = uint64_t (*)(const Lane&);

uint64_t add(const Lane&);
uint64_t sub(const Lane&);
uint64_t mul(const Lane&);
uint64_t div(const Lane&);
uint64_t fma(const Lane&);   // a*b + c
uint64_t fms(const Lane&);   // a*b - c
uint64_t fnma(const Lane&);  // c - a*b
uint64_t fnms(const Lane&);  // -a*b - c
uint64_t sqrt(const Lane&);
uint64_t narrowed_estimate(const Lane&, float estimate);  // of 1/a or 1/sqrt(a), from its 14 bits
uint64_t scale(const Lane&);
uint64_t min(const Lane&);
uint64_t max(const Lane&);
uint64_t exponent(const Lane&);

// By an immediate.
uint64_t compare(const Lane&);
uint64_t classify(const Lane&);
uint64_t significand(const Lane&);
uint64_t round_scale(const Lane&);
uint64_t reduce(const Lane&);

// Conversions.
uint64_t to_float(const Lane&);
uint64_t to_double(const Lane&);
uint64_t from_float(const Lane&);
uint64_t from_double(const Lane&);
template <class I>
uint64_t to_integer(const Lane&);
template <class I>
uint64_t from_integer(const Lane&);

/// The number that a half stands for, and the half next to a number.
double number(Half h);
Half nearest(double x);

}  // namespace zorp::test::half_model
