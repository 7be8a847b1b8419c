// asin, acos, atan, atan2 and their forms in half turns: axes and diagonals, the ends of the
// domain, tiny operands, both sides of a change of algorithm.
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kPi = std::numbers::pi;

Expected nearest(Element element, double value) { return exactly(encode(element, value)); }

// ---- Arc sine and arc cosine -------------------------------------------------------------------

ValueTable with_unit_domain(const std::string& family) {
  ValueTable table{family, {}};
  table.nans_stay_nans();
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()})
      for (Bits beyond : {f.one() + 1, f.one() << 1 & f.infinity(), f.max_finite(), f.infinity()})
        table.add(element, kAllTiers, sign | beyond, kQuietNan);
  }
  return table;
}

/// The result of tiny operands is the operand.
void keep_tiny_operands(ValueTable& table, Element element, const Tiers& tiers) {
  const Format& f = format(element);
  for (Bits sign : {Bits{0}, f.sign()})
    for (Bits tiny : {f.min_subnormal(), f.min_subnormal() + 1, f.min_normal() - 1, f.min_normal()})
      table.add(element, tiers, sign | tiny, exactly(sign | tiny));
}

ValueTable asin_values() {
  ValueTable table = with_unit_domain("asin");
  for (double x : {-1.0, -0.0, 0.0, 1.0}) table.everywhere(x, std::asin(x));
  keep_tiny_operands(table, Element::f64, kStandardTier);
  keep_tiny_operands(table, Element::f32, kStandardTier);
  keep_tiny_operands(table, Element::f16, kAllTiers);
  // Where the square root takes over.
  for (double x : {0x1.fffffep-2, 0.5})
    table.at(Element::f32, kStandardTier, x, nearest(Element::f32, std::asin(x)));
  return table;
}

ValueTable acos_values() {
  ValueTable table = with_unit_domain("acos");
  // Also that 1 gives +0.
  for (double x : {-1.0, -0.0, 0.0, 1.0}) table.everywhere(x, std::acos(x));
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()})
      for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal()})
        table.add(element, element == Element::f16 ? kStandardTier : kAllTiers, sign | tiny,
                  nearest(element, kPi / 2 - value(element, sign | tiny)));
  }
  return table;
}

ValueTable asinpi_values() {
  ValueTable table = with_unit_domain("asinpi");
  for (double x : {-1.0, -0.0, 0.0, 1.0}) table.everywhere(x, x / 2);
  // Next to 1, where operands begin to call out.
  for (Element element : {Element::f64, Element::f32})
    for (Bits sign : {Bits{0}, format(element).sign()})
      table.add(element, kAllTiers, sign | (format(element).one() - 1), kFinite);
  return table;
}

ValueTable acospi_values() {
  ValueTable table = with_unit_domain("acospi");
  table.everywhere(1.0, 0.0);
  table.everywhere(-1.0, 1.0);
  for (Element element : {Element::f64, Element::f32})
    for (double zero : {0.0, -0.0}) table.at(element, kAllTiers, zero, nearest(element, 0.5));
  return table;
}

// ---- Arc tangent -------------------------------------------------------------------------------

ValueTable atan_values() {
  ValueTable table{"atan", {}};
  table.nans_stay_nans();
  for (double x : {-kInfinity, -0.0, 0.0, kInfinity}) table.everywhere(x, std::atan(x));
  keep_tiny_operands(table, Element::f64, kStandardTier);
  keep_tiny_operands(table, Element::f32, kStandardTier);
  keep_tiny_operands(table, Element::f16, kAllTiers);
  for (Element element : {Element::f64, Element::f32}) {
    // The table's arguments.
    for (int j = 1; j <= (element == Element::f64 ? 31 : 30); ++j)
      for (double sign : {1.0, -1.0})
        table.at(element, kStandardTier, sign * j / 4, nearest(element, std::atan(sign * j / 4)));
    // Results next to pi/2, from operands whose reciprocal is subnormal, too.
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()})
      table.add(element, kAllTiers, sign | f.max_finite(),
                exactly(sign | encode(element, kPi / 2)));
  }
  return table;
}

/// The smallest integers in units of the smallest subnormal: their quotients by pi round once.
template <class Add>
void for_quotients_by_pi(Element element, Add add) {
  for (int units : {1, 2, 3, 4, 5, 22, 355, 710, 1000, 4096})
    for (Bits sign : {Bits{0}, format(element).sign()})
      add(sign | Bits(units), exactly(sign | Bits(std::lround(units / kPi))));
}

ValueTable atanpi_values() {
  ValueTable table{"atanpi", {}};
  table.nans_stay_nans();
  for (double x : {-0.0, 0.0}) table.everywhere(x, x);
  for (double sign : {1.0, -1.0}) table.everywhere(sign * kInfinity, sign * 0.5);
  for (auto [element, largest] : {std::pair{Element::f64, 993}, {Element::f32, 123}}) {
    // Around the first magnitude that calls out.
    const Bits limit = encode(element, std::ldexp(1.0, largest));
    for (Bits x : {limit - 1, limit, format(element).max_finite()})
      for (Bits sign : {Bits{0}, format(element).sign()})
        table.add(element, kAllTiers, sign | x, exactly(sign | encode(element, 0.5)));
    for_quotients_by_pi(
        element, [&](Bits x, Expected quotient) { table.add(element, kAllTiers, x, quotient); });
  }
  return table;
}

// ---- The angle of a point ----------------------------------------------------------------------

/// A family with its unit: the turn through 45 degrees.
struct AngleTable {
  ValueTable table;
  double eighth_turn;

  void add(Element element, const Tiers& tiers, Bits y, Bits x, Expected expected) {
    table.entries.push_back({element, tiers, {y, x}, {expected}});
  }
  void on_ray(Element element, Bits y, Bits x, int eighths, bool negative) {
    const double angle = eighths * eighth_turn;
    add(element, kAllTiers, y, x, nearest(element, negative ? -angle : angle));
  }
};

/// Signed magnitudes of all kinds against one another, where the exact angle is on an axis or a
/// diagonal, or so near that it can't be told apart.
void add_rays(AngleTable& angles, Element element) {
  const Format& f = format(element);
  const Bits magnitudes[] = {0,       f.min_subnormal(), f.min_normal() + 3,
                             f.one(), f.max_finite(),    f.infinity()};
  for (Bits ay : magnitudes)
    for (Bits ax : magnitudes)
      for (Bits sy : {Bits{0}, f.sign()})
        for (Bits sx : {Bits{0}, f.sign()}) {
          const double quotient = value(element, ay) / value(element, ax);
          const bool to_left = sx != 0;
          int eighths = 0;
          if (ay == ax && ay != 0) {
            // The nearest number comes from the rare routines alone.
            if (ay == f.one() || (element == Element::f16 && ay != f.infinity())) continue;
            eighths = to_left ? 3 : 1;
          } else if (ay == 0 || ax == f.infinity() || encode(element, quotient) == 0) {
            if (to_left) eighths = 4;
          } else if (ax == 0 || ay == f.infinity() || quotient > 0x1p60) {
            eighths = 2;
          } else if (to_left && quotient < 0x1p-60) {
            eighths = 4;
          } else {
            continue;
          }
          angles.on_ray(element, sy | ay, sx | ax, eighths, sy != 0);
        }
}

void add_nans(AngleTable& angles, Element element) {
  const Format& f = format(element);
  const Bits first = f.quiet_nan() | 5, second = f.sign() | f.signalling_nan();
  for (Bits other : {Bits{0}, f.sign(), f.one(), f.infinity(), f.sign() | f.infinity()}) {
    angles.add(element, kAllTiers, first, other, exactly(first));
    angles.add(element, kAllTiers, other, first, kQuietNan);
    angles.add(element, kAllTiers, second, other, exactly(second | f.quiet_nan()));
    angles.add(element, kAllTiers, other, second, kQuietNan);
  }
  angles.add(element, kAllTiers, first, second, exactly(first));
  angles.add(element, kAllTiers, second, first, exactly(second | f.quiet_nan()));
}

AngleTable with_rays(const std::string& family, double eighth_turn) {
  AngleTable angles{{family, {}}, eighth_turn};
  for (Element element : kElements) {
    add_rays(angles, element);
    add_nans(angles, element);
  }
  return angles;
}

ValueTable atan2_values() {
  AngleTable angles = with_rays("atan2", kPi / 4);
  // So small a quotient is the angle, subnormal ones included.
  for (int exponent : {-1074, -1060, -1022, -1021, -1000})
    angles.add(Element::f64, kStandardTier, encode(Element::f64, std::ldexp(3, exponent / 2)),
               encode(Element::f64, std::ldexp(1, exponent / 2 - exponent)),
               nearest(Element::f64, std::ldexp(3, exponent)));
  for (int exponent : {-149, -130, -126, -125, -120})
    angles.add(Element::f32, kStandardTier, encode(Element::f32, std::ldexp(3, exponent)),
               encode(Element::f32, 1.0), nearest(Element::f32, std::ldexp(3, exponent)));
  return angles.table;
}

ValueTable atan2pi_values() {
  AngleTable angles = with_rays("atan2pi", 0.25);
  // Subnormal results round once, whether the quotient is small by y or by both.
  for (Element element : {Element::f64, Element::f32})
    for_quotients_by_pi(element, [&](Bits y, Expected quotient) {
      angles.add(element, kAllTiers, y, format(element).one(), quotient);
    });
  for (int units : {3, 22, 355, 4096})
    angles.add(Element::f64, kAllTiers, encode(Element::f64, std::ldexp(units, -537)),
               encode(Element::f64, 0x1p537), exactly(Bits(std::lround(units / kPi))));
  return angles.table;
}

}  // namespace

std::vector<ValueTable> inverse_trigonometric_values() {
  return {asin_values(), acos_values(),   asinpi_values(), acospi_values(),
          atan_values(), atanpi_values(), atan2_values(),  atan2pi_values()};
}

}  // namespace zorp::test
