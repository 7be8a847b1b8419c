// expm1 of single operands near overflow and above it, where e^x itself is the result, and of NaNs.
// Double arithmetic in which every operation rounds by itself.
#include "exp/exp_rare.h"
#include "exp/expm1.h"

namespace zorp {
namespace {

double expm1(double x, double last_finite, const RelativePowerTable& powers) {
  if (!is_finite(x)) return x * x;
  if (!(last_finite >= x)) return infinity;
  const ScalarExpReduction reduced(x);
  const double power = from_bits(powers.entry[2 * reduced.j]),
               power_low = from_bits(powers.entry[2 * reduced.j + 1]);
  const double p = reduced.p + power_low;
  return times_power_of_two(power + p * power, reduced.k);
}

// The last operands with a finite result in double and in float.
constexpr double double_last = from_bits(uint64_t{0x40862E42FEFA39EF});
constexpr double float_last = from_bits(uint32_t{0x42B17217});

}  // namespace

extern "C" {

void __zorp_dexpm1_cout_rare(const double* x, double* result) {
  *result = expm1(*x, double_last, _zixdExpHATab);
}
void __zorp_sexpm1_cout_rare(const float* x, float* result) {
  *result = static_cast<float>(expm1(double{*x}, float_last, _qaxdExpHATab));
}

}  // extern "C"
}  // namespace zorp
