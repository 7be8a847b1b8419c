// idiv, udiv, irem, urem, idivrem, udivrem: quotient and remainder of 32-bit integers.
// Kernels: __zorp_z1_{idiv,udiv,irem,urem,idivrem,udivrem}{1,2,3,4,8,16}.
//
// Quotients truncate; remainders have the dividend's sign. Division by zero gives a quotient of
// 0x80000000 (unsigned: all ones) and the dividend as remainder; 0x80000000 / -1 gives 0x80000000
// and 0. Nothing traps.
#pragma once

#include "frame/conversions.h"
#include "frame/kernel.h"

namespace zorp {

#pragma GCC visibility push(hidden)
extern "C" {
extern const Row<double> __vdtwo, __vdalpha;
}
#pragma GCC visibility pop

// ---- Steps that the algorithms share -----------------------------------------------------------

template <class T, int N>
inline Vec<T, N> truncate_to(Vec<double, N> v) {
  if constexpr (same<T, int32_t>)
    return truncate_to_int32(v);
  else
    return truncate_to_uint32(v);
}

/// a / b, truncated.
///
/// Any estimate of 1/b within 2^-14 will do: one Newton step takes its relative error to some e
/// within about 2^-28. The last factor, 1 - e + 2^-42, takes e itself away and leaves the quotient
/// too large in magnitude, by a factor between 1 + 2^-43 and 1 + 2^-41.
/// - A multiple of b, a = k b, lands just beyond k and truncates to k.
/// - Else a = k b + r is at least 1/|b| short of k + 1, and the excess stays below 1/|b|, since
///   (k + 1) |b| <= |a| + |b| < 2^33.
/// b = 0 makes a NaN of infinity x 0, which the conversion turns into its out-of-range value.
template <class T, int N>
inline Vec<T, N> quotient(Vec<T, N> a, Vec<T, N> b) {
  const auto x = to_double(a), y = to_double(b);
  auto r = reciprocal14(y);
  r = r * fnma(r, y, __vdtwo);
  return truncate_to<T>(x * r * fnma(r, y, __vdalpha));
}

// ---- Quotient, remainder, both -----------------------------------------------------------------

struct IntegerQuotient {
  template <Tier, class V>
  static V apply(V a, V b) {
    return quotient(a, b);
  }
};
using Idiv = IntegerQuotient;
using Udiv = IntegerQuotient;

struct IntegerRemainder {
  template <Tier, class V>
  static V apply(V a, V b) {
    return a - quotient(a, b) * b;
  }
};
using Irem = IntegerRemainder;
using Urem = IntegerRemainder;

struct IntegerDivision {
  template <Tier, class V>
  static Results<V, V> apply(V a, V b) {
    const V q = quotient(a, b);
    return {q, a - q * b};
  }
};
using Idivrem = IntegerDivision;
using Udivrem = IntegerDivision;

}  // namespace zorp
