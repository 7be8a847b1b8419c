// sinh, cosh, tanh: special values, tiny operands, the ends of the range.
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

ValueTable sinh_values() {
  ValueTable table{"sinh", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  table.everywhere(kInfinity, kInfinity);
  table.everywhere(-kInfinity, -kInfinity);
  table.nans_stay_nans();
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()}) {
      table.add(element, kAllTiers, sign | f.max_finite(), exactly(sign | f.infinity()));
      if (element == Element::f16) continue;
      // The result of tiny and subnormal operands is the operand.
      for (Bits tiny : {f.min_subnormal(), f.min_subnormal() + 1, f.min_normal() - 1,
                        f.min_normal(), f.min_normal() + 1})
        table.add(element, element == Element::f32 ? kStandardTier : kAllTiers, sign | tiny,
                  exactly(sign | tiny));
    }
  }
  const Bits limit = encode(Element::f64, 710.475860073944);
  table.add(Element::f64, kAllTiers, limit, exactly(format(Element::f64).infinity()));
  table.add(Element::f64, kAllTiers, next_down(Element::f64, limit), kFinite);
  // The last operand of the fast path and the first of the rare routine.
  const Bits last_fast = encode(Element::f32, 87.33653259277344);
  table.add(Element::f32, kAllTiers, last_fast, kFinite);
  table.add(Element::f32, kAllTiers, next_up(Element::f32, last_fast), kFinite);
  for (double x : {12.0, 16.0, 1024.0}) {
    table.at(Element::f16, kAllTiers, x, exactly(encode(Element::f16, kInfinity)));
    table.at(Element::f16, kAllTiers, -x, exactly(encode(Element::f16, -kInfinity)));
  }
  return table;
}

ValueTable cosh_values() {
  ValueTable table{"cosh", {}};
  table.everywhere(0.0, 1.0);
  table.everywhere(-0.0, 1.0);
  table.everywhere(kInfinity, kInfinity);
  table.everywhere(-kInfinity, kInfinity);
  table.nans_stay_nans();
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()}) {
      table.add(element, kAllTiers, sign | f.max_finite(), exactly(f.infinity()));
      for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal()})
        table.add(element, kAllTiers, sign | tiny, exactly(f.one()));
    }
  }
  const Bits limit = encode(Element::f64, 710.475860073944);
  table.add(Element::f64, kAllTiers, limit, exactly(format(Element::f64).infinity()));
  table.add(Element::f64, kAllTiers, next_down(Element::f64, limit), kFinite);
  const Bits last_fast = encode(Element::f32, 87.33653259277344);
  table.add(Element::f32, kAllTiers, last_fast, kFinite);
  table.add(Element::f32, kAllTiers, next_down(Element::f32, last_fast), kFinite);
  return table;
}

ValueTable tanh_values() {
  ValueTable table{"tanh", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  table.nans_are_kept();
  const Tiers native = {Tier::native};
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()}) {
      // The result of large operands is 1, or what half _native has at the end of its range. The
      // last of the fast path lies between the largest finite ones.
      constexpr double large[] = {24.0, 10.0, 16.0};
      const Bits limit = f.infinity() - (element == Element::f32 ? 3 : 2) * f.min_normal() / 4;
      for (Bits x :
           {encode(element, large[int(element)]), limit - 1, limit, f.max_finite(), f.infinity()}) {
        table.add(element, kStandardTier, sign | x, exactly(sign | f.one()));
        table.add(element, native, sign | x,
                  exactly(sign | (element == Element::f16 ? 0x3bfd : f.one())));
      }
      for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal(), f.min_normal() + 1})
        table.add(element, element == Element::f32 ? kStandardTier : kAllTiers, sign | tiny,
                  exactly(sign | tiny));
    }
  }
  // tanh x = x - x^3/3: the least power of two whose result is below it, and a float that is its
  // own.
  table.add(Element::f64, kAllTiers, 0x3e50000000000000, exactly(0x3e4fffffffffffff));
  table.add(Element::f32, kStandardTier, 0x39000000, exactly(0x39000000));
  table.add(Element::f32, kStandardTier, 0x41100000, exactly(0x3f7fffff));
  // The float _native form ends at 5.
  const Bits five = encode(Element::f32, 5.0);
  table.add(Element::f32, native, five, exactly(format(Element::f32).one()));
  table.add(Element::f32, native, next_down(Element::f32, five), kFinite);
  table.add(Element::f16, kAllTiers, 0x1000, exactly(0x1000));
  return table;
}

}  // namespace

std::vector<ValueTable> hyperbolic_values() {
  return {sinh_values(), cosh_values(), tanh_values()};
}

}  // namespace zorp::test
