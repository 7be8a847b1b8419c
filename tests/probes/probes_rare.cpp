// The probes' rare routines: results that no fast path gives.
#include "frame/kernel.h"

namespace zorp {
namespace {

constexpr double eight(double*) { return 8; }
constexpr float eight(float*) { return 8; }
constexpr half eight(half*) { return {0x4800}; }

template <class T>
T negated(T v) {
  return -v;
}
template <>
half negated(half v) {
  return {static_cast<uint16_t>(v.bits ^ 0x8000)};
}
bool negative(double v) { return __builtin_signbit(v); }
bool negative(half v) { return v.bits >> 15; }

}  // namespace

extern "C" {

void __zorp_dsincosreg_cout_rare(const double*, double* first, double* second) {
  *first = 8;
  *second = 9;
}

#define PROBE_RARE_ROUTINES(letter, T)                                                    \
  void __zorp_##letter##remquo_cout_rare(const T*, const T*, T* first, int32_t* second) { \
    *first = eight(first);                                                                \
    *second = 9;                                                                          \
  }                                                                                       \
  void __zorp_##letter##lgamma_cout_rare(const T* x, T* first) { *first = negated(*x); }  \
  void __zorp_##letter##lgammar_cout_rare(const T* x, T* first, int32_t* second) {        \
    *first = negated(*x);                                                                 \
    *second = negative(*x) ? -1 : 1;                                                      \
  }
PROBE_RARE_ROUTINES(d, double)
PROBE_RARE_ROUTINES(s, float)
PROBE_RARE_ROUTINES(h, half)

}  // extern "C"
}  // namespace zorp
