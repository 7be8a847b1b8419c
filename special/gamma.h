// lgamma, lgammar, tgamma: the logarithm of |gamma(x)|, with the sign of gamma(x) beside it, and
// gamma(x).
// Kernels: __zorp_z1_{lgamma,lgammar,tgamma}{,f,s}{1,2,3,4,8,16,32}.
//
// None has a fast path: every lane is served by a scalar routine (lgamma_rare.cpp,
// tgamma_rare.cpp).
#pragma once

#include "frame/kernel.h"

namespace zorp {

struct Lgamma {};
struct Lgammar {};
struct Tgamma {};

}  // namespace zorp
