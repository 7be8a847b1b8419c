// erf, erfc: special values, tiny operands, where results become 1, 2 and 0.
#include <cmath>
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const Tiers kNativeTier = {Tier::native};

ValueTable erf_values() {
  ValueTable table{"erf", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  table.nans_are_kept();
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()}) {
      // Half keeps what its rational function has at the end of its range.
      const Bits one = sign | (element == Element::f16 ? 0x3bfe : f.one());
      for (Bits large : {encode(element, 5.9921875), f.max_finite(), f.infinity()})
        table.add(element, kAllTiers, sign | large, exactly(one));
    }
  }
  // Float takes 1 from a square of 13.3467655 on, _native from 6.72832012.
  const Bits last = encode(Element::f32, 3.65332);
  const Bits one = format(Element::f32).one();
  table.at(Element::f32, kStandardTier, 3.6534, exactly(one));
  table.at(Element::f32, kNativeTier, 2.594, exactly(one));
  table.add(Element::f32, kStandardTier, last, kFinite);
  // 2/sqrt(pi) x, also where the square of x underflows; subnormal results are rounded once.
  for (int n : {-200, -256, -257, -600, -1000, -1070, -1073, -1074})
    for (double sign : {1.0, -1.0})
      table.at(Element::f64, kAllTiers, sign * std::ldexp(1.0, n),
               exactly(encode(Element::f64, sign * std::ldexp(1.1283791670955126, n))));
  return table;
}

ValueTable erfc_values() {
  ValueTable table{"erfc", {}};
  table.everywhere(0.0, 1.0);
  table.everywhere(-0.0, 1.0);
  table.everywhere(kInfinity, 0.0);
  table.everywhere(-kInfinity, 2.0);
  table.everywhere(-30.0, 2.0);
  table.nans_are_kept();
  for (Element element : kElements) {
    const Format& f = format(element);
    table.add(element, kAllTiers, f.max_finite(), exactly(0));
    for (Bits sign : {Bits{0}, f.sign()})
      for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal()})
        table.add(element, kAllTiers, sign | tiny, exactly(f.one()));
  }
  // The result is the smallest subnormal, then zero.
  const Bits limit = encode(Element::f64, 27.226017111108366);
  table.add(Element::f64, kStandardTier, next_down(Element::f64, limit), exactly(1));
  table.add(Element::f64, kAllTiers, limit, exactly(0));
  // The last operand of the fast path, the only one with a result by the rare routine, the first
  // with zero. The coarser grid of _native ends before the first.
  table.add(Element::f32, kStandardTier, 0x4120ddfa, exactly(1));
  table.add(Element::f32, kNativeTier, 0x4120ddfa, exactly(0));
  table.add(Element::f32, kAllTiers, 0x4120ddfb, exactly(1));
  table.add(Element::f32, kAllTiers, 0x4120ddfc, exactly(0));
  return table;
}

}  // namespace

std::vector<ValueTable> error_function_values() { return {erf_values(), erfc_values()}; }

}  // namespace zorp::test
