// sinpi, cospi, tanpi: integers, halves and quarters, tiny operands, the ends of the range.
#include <cmath>
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// What stands for both signs of an operand: `odd` functions change the result's sign with it.
void on_both_sides(ValueTable& table, Element element, double x, double result, bool odd) {
  table.at(element, kAllTiers, x, exactly(encode(element, result)));
  table.at(element, kAllTiers, -x, exactly(encode(element, odd ? -result : result)));
}

/// Integers of every size with their parity: small ones, odd ones up to the largest odd number,
/// even ones from where they exceed the integers of a lane up to the largest number.
struct Integer {
  double value;
  bool odd;
};
std::vector<Integer> integers(Element element) {
  const Format& f = format(element);
  const double first_whole = std::ldexp(1.0, f.mantissa_bits);  // from there on all are integers
  const double last_odd = 2 * first_whole - 1;
  const double largest = value(element, f.max_finite());
  std::vector<Integer> list = {{0, false},           {1, true},
                               {2, false},           {3, true},
                               {first_whole, false}, {first_whole + 1, true},
                               {last_odd, true},     {last_odd + 1, false},
                               {largest, false}};
  for (int exponent : {14, 15, 31, 32, 63, 64})
    if (const double power = std::ldexp(1.0, exponent); power < largest)
      list.push_back({power, false});
  return list;
}

void infinities_give_nans(ValueTable& table) {
  for (Element element : kElements)
    for (double x : {kInfinity, -kInfinity}) table.at(element, kAllTiers, x, kQuietNan);
}

ValueTable sinpi_values() {
  ValueTable table{"sinpi", {}};
  for (Element element : kElements) {
    const Format& f = format(element);
    for (const Integer& n : integers(element)) on_both_sides(table, element, n.value, 0, true);
    for (double n : {0.0, 1.0, 2.0, 3.0, 100.0, 511.0})
      on_both_sides(table, element, n + 0.5, std::fmod(n, 2) == 0 ? 1 : -1, true);
    // pi x, rounded once.
    for (Bits tiny : {f.min_subnormal(), 2 * f.min_subnormal(), f.min_normal(), 4 * f.min_normal()})
      on_both_sides(table, element, value(element, tiny), M_PI * value(element, tiny), true);
  }
  infinities_give_nans(table);
  table.nans_are_kept();
  return table;
}

ValueTable cospi_values() {
  ValueTable table{"cospi", {}};
  for (Element element : kElements) {
    const Format& f = format(element);
    for (const Integer& n : integers(element))
      on_both_sides(table, element, n.value, n.odd ? -1 : 1, false);
    for (double n : {0.0, 1.0, 2.0, 3.0, 100.0, 511.0})
      on_both_sides(table, element, n + 0.5, 0, false);
    for (Bits tiny : {f.min_subnormal(), f.min_normal() - 1, f.min_normal()})
      on_both_sides(table, element, value(element, tiny), 1, false);
  }
  infinities_give_nans(table);
  table.nans_stay_nans();
  return table;
}

ValueTable tanpi_values() {
  ValueTable table{"tanpi", {}};
  for (Element element : kElements) {
    // The sign of zeros and of poles changes with every period.
    for (const Integer& n : integers(element))
      on_both_sides(table, element, n.value, n.odd ? -0.0 : 0.0, true);
    for (double n : {0.0, 1.0, 2.0, 3.0, 100.0, 511.0})
      on_both_sides(table, element, n + 0.5, std::fmod(n, 2) == 0 ? kInfinity : -kInfinity, true);
    for (double n : {0.0, 1.0, 2.0, 101.0})
      for (double x : {n + 0.25, -(n + 0.75)})
        for (Tier tier : kAllTiers) {
          // The estimate of the reciprocal is off in the last place but one of half.
          const bool estimated = element == Element::f16 && tier == Tier::native;
          const double one = estimated ? 0.9990234375 : 1;
          table.at(element, {tier}, x, exactly(encode(element, one)));
          table.at(element, {tier}, -x, exactly(encode(element, -one)));
        }
  }
  infinities_give_nans(table);
  table.nans_are_kept();
  return table;
}

}  // namespace

std::vector<ValueTable> half_turn_values() {
  return {sinpi_values(), cospi_values(), tanpi_values()};
}

}  // namespace zorp::test
