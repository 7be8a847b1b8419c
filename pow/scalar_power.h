// |x|^y of a single operand in double-word arithmetic, for the rare routines of pow, pown and
// rootn.
#pragma once

#include "frame/scalar.h"

namespace zorp {

/// The tables of the scalar power function: short reciprocals of three stages with their logarithms
/// to base 2, and 2^(j/128). Logarithms and powers stand in two parts, entry by entry.
struct DoublePowerTables {
  Table<double, 33> r1;
  Table<double, 66> l1;
  Table<double, 33> r2;
  Table<double, 66> l2;
  Table<double, 129> r3;
  Table<double, 258> l3;
  Table<double, 256> powers;
};
struct FloatPowerTables {
  Table<float, 9> r1;
  Table<float, 18> l1;
  Table<float, 9> r2;
  Table<float, 18> l2;
  Table<float, 17> r3;
  Table<float, 34> l3;
  Table<float, 256> powers;
};

#pragma GCC visibility push(hidden)
extern "C" {
extern const DoublePowerTables __dpow_g_CoutTab, __dpown_g_CoutTab, __drootn_g_CoutTab;
extern const FloatPowerTables __spow_g_CoutTab, __spown_g_CoutTab, __srootn_g_CoutTab;
extern const FloatPowerTables __hpow_g_CoutTab, __hpown_g_CoutTab, __hrootn_g_CoutTab;
}

/// The part of v whose products with parts of its like are exact.
double upper_part(double v);
float upper_part(float v);

/// The exponent of a power: y, and the same or more precisely as high + low, high being an upper
/// part.
template <class T>
struct Exponent {
  T y, high, low;

  explicit Exponent(T v) : y(v), high(upper_part(v)), low(v - high) {}
  Exponent(T v, T h, T l) : y(v), high(h), low(l) {}
};

/// sign |x|^y for finite x and y, neither zero, |x| not 1; `sign` is 1 or -1.
double scalar_power(double x, const Exponent<double>& y, double sign);
/// The same for an exponent that is a float.
float scalar_power(float x, float y, float sign);
/// The same for an exponent that a float alone doesn't hold.
float scalar_power(float x, const Exponent<float>& y, float sign);
#pragma GCC visibility pop

}  // namespace zorp
