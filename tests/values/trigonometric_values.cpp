// sin, cos, sincos, sincosreg, tan: special values, tiny operands, values beyond the fast paths.
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kLargestFloat = std::numeric_limits<float>::max();
// The double that comes closest to a multiple of pi/2, an odd one.
constexpr double kHardest = 0x1.6ac5b262ca1ffp+849;

/// What a NaN gives: in double and float it is kept.
std::vector<Expected> nan_results(Element element, Bits nan, std::size_t results) {
  const Expected kept = exactly(nan | format(element).quiet_bit());
  return std::vector(results, element == Element::f16 ? kQuietNan : kept);
}
/// Infinities give the default NaN, in half some NaN.
std::vector<Expected> infinity_results(Element element, std::size_t results) {
  const Format& f = format(element);
  const Expected nan = exactly(f.sign() | f.quiet_nan());
  return std::vector(results, element == Element::f16 ? kQuietNan : nan);
}

/// NaNs and infinities. The float kernels that compute both results call nothing out: their NaNs
/// have no sign to speak of.
void add_invalid_operands(ValueTable& table, std::size_t results) {
  for (Element element : kElements) {
    const Format& f = format(element);
    const bool by_arithmetic = results == 2 && element == Element::f32;
    for (Bits sign : {Bits{0}, f.sign()}) {
      for (Bits nan : {f.quiet_nan(), f.quiet_nan() | 5, f.signalling_nan(), f.sign() - 1})
        table.entries.push_back({element,
                                 kAllTiers,
                                 {sign | nan},
                                 by_arithmetic ? std::vector(results, kQuietNan)
                                               : nan_results(element, sign | nan, results)});
      table.entries.push_back(
          {element,
           kAllTiers,
           {sign | f.infinity()},
           by_arithmetic ? std::vector(results, kQuietNan) : infinity_results(element, results)});
    }
  }
}

/// Operands so small that the result is the operand.
void add_tiny_operands(ValueTable& table, Element element, const Tiers& tiers) {
  const Format& f = format(element);
  for (Bits sign : {Bits{0}, f.sign()})
    for (Bits tiny : {f.min_subnormal(), f.min_subnormal() + 1, f.min_normal() - 1, f.min_normal(),
                      f.min_normal() + 1})
      table.add(element, tiers, sign | tiny, exactly(sign | tiny));
}

/// An odd function's value, known to be the nearest number to the exact one.
void add_odd(ValueTable& table, Element element, const Tiers& tiers, double x, double y) {
  table.at(element, tiers, x, exactly(encode(element, y)));
  table.at(element, tiers, -x, exactly(encode(element, -y)));
}

ValueTable sin_values() {
  ValueTable table{"sin", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  add_invalid_operands(table, 1);
  add_tiny_operands(table, Element::f64, kAllTiers);
  add_tiny_operands(table, Element::f32, kStandardTier);
  add_odd(table, Element::f64, kStandardTier, kLargest, 0.004961954789184062);
  add_odd(table, Element::f64, kStandardTier, 1e22, -0.8522008497671888);
  add_odd(table, Element::f64, kAllTiers, kHardest, 1.0);
  add_odd(table, Element::f32, kAllTiers, kLargestFloat, -0.52187651);
  return table;
}

ValueTable cos_values() {
  ValueTable table{"cos", {}};
  table.everywhere(0.0, 1.0);
  table.everywhere(-0.0, 1.0);
  add_invalid_operands(table, 1);
  const auto add = [&](Element element, const Tiers& tiers, double x, double y) {
    for (double sign : {1.0, -1.0}) table.at(element, tiers, sign * x, exactly(encode(element, y)));
  };
  // Below these limits the result is set to 1.
  add(Element::f64, kStandardTier, 0x1.fffffffffffffp-28, 1.0);
  add(Element::f64, kReducedTiers, 0x1p-53, 1.0);
  add(Element::f32, kAllTiers, 0x1.fffffep-25, 1.0);
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal()})
      table.add(element, kAllTiers, tiny, exactly(f.one()));
  }
  add(Element::f64, kStandardTier, kLargest, -0.9999876894265599);
  add(Element::f64, kStandardTier, 1e22, 0.523214785395139);
  add(Element::f64, kStandardTier, kHardest, -4.687165924254628e-19);
  return table;
}

ValueTable sincos_values(const char* family) {
  ValueTable table{family, {}};
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits zero : {Bits{0}, f.sign()})
      table.entries.push_back({element, kAllTiers, {zero}, {exactly(zero), exactly(f.one())}});
  }
  add_invalid_operands(table, 2);
  const auto add = [&](const Tiers& tiers, double x, double sine, double cosine) {
    for (double sign : {1.0, -1.0})
      table.entries.push_back(
          {Element::f64,
           tiers,
           {encode(Element::f64, sign * x)},
           {exactly(encode(Element::f64, sign * sine)), exactly(encode(Element::f64, cosine))}});
  };
  add(kStandardTier, kLargest, 0.004961954789184062, -0.9999876894265599);
  add(kStandardTier, 1e22, -0.8522008497671888, 0.523214785395139);
  add(kStandardTier, kHardest, 1.0, -4.687165924254628e-19);
  return table;
}

ValueTable tan_values() {
  ValueTable table{"tan", {}};
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  add_invalid_operands(table, 1);
  add_tiny_operands(table, Element::f64, kAllTiers);
  add_tiny_operands(table, Element::f32, kAllTiers);
  // The float nearest to pi/2 lies beyond it: the pole's row of the table, and no overflow. The
  // algorithm's value, one unit from the exact one.
  add_odd(table, Element::f32, kStandardTier, 1.5707964, -22877334.0);
  return table;
}

}  // namespace

std::vector<ValueTable> trigonometric_values() {
  return {sin_values(), cos_values(), sincos_values("sincos"), sincos_values("sincosreg"),
          tan_values()};
}

}  // namespace zorp::test
