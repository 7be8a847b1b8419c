// ceil, floor, trunc, rint, nearbyint, round: numbers between integers, ties, the last fractions.
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// What a rounding gives for a number and for its negative.
struct Sample {
  double x, down, up, even, away;
};
constexpr Sample kSamples[] = {
    {0.0, 0, 0, 0, 0},
    {0.25, 0, 1, 0, 0},
    {0.5, 0, 1, 0, 1},
    {0.75, 0, 1, 1, 1},
    {1.0, 1, 1, 1, 1},
    {1.5, 1, 2, 2, 2},
    {2.5, 2, 3, 2, 3},
    {3.5, 3, 4, 4, 4},
    {1022.5, 1022, 1023, 1022, 1023},
    {1023.5, 1023, 1024, 1024, 1024},
    {1025.0, 1025, 1025, 1025, 1025},
    {65504.0, 65504, 65504, 65504, 65504},
    {kInfinity, kInfinity, kInfinity, kInfinity, kInfinity},
};

/// A family's roundings of a magnitude under a plus sign and under a minus sign.
struct Column {
  const char* family;
  double Sample::*positive;
  double Sample::*negative;
};
constexpr Column kColumns[] = {
    {"ceil", &Sample::up, &Sample::down},        {"floor", &Sample::down, &Sample::up},
    {"trunc", &Sample::down, &Sample::down},     {"rint", &Sample::even, &Sample::even},
    {"nearbyint", &Sample::even, &Sample::even}, {"round", &Sample::away, &Sample::away},
};

ValueTable rounding(const Column& column) {
  ValueTable table{column.family, {}};
  for (const Sample& sample : kSamples) {
    table.everywhere(sample.x, sample.*column.positive);
    table.everywhere(-sample.x, -(sample.*column.negative));
  }
  for (Element element : kElements) {
    const Format& f = format(element);
    // Next to zero and to one half, the last tie below the numbers that are all integers, and
    // these.
    const Bits half = encode(element, 0.5);
    const Bits first_integer = encode(element, double(1ull << f.mantissa_bits));
    const double last_tie = value(element, first_integer - 1);
    const Sample edges[] = {
        {value(element, f.min_subnormal()), 0, 1, 0, 0},
        {value(element, f.min_normal() - 1), 0, 1, 0, 0},
        {value(element, f.min_normal()), 0, 1, 0, 0},
        {value(element, half - 1), 0, 1, 0, 0},
        {value(element, half + 1), 0, 1, 1, 1},
        {last_tie, last_tie - 0.5, last_tie + 0.5, last_tie + 0.5, last_tie + 0.5},
        {last_tie - 1, last_tie - 1.5, last_tie - 0.5, last_tie - 1.5, last_tie - 0.5},
    };
    for (const Sample& edge : edges) {
      table.at(element, kAllTiers, edge.x, exactly(encode(element, edge.*column.positive)));
      table.at(element, kAllTiers, -edge.x, exactly(encode(element, -(edge.*column.negative))));
    }
    for (Bits integer : {first_integer, first_integer + 1, f.max_finite()})
      for (Bits sign : {Bits{0}, f.sign()})
        table.add(element, kAllTiers, sign | integer, exactly(sign | integer));
    // A NaN keeps sign and payload and turns quiet.
    for (Bits nan : {f.quiet_nan(), f.quiet_nan() | 5, f.signalling_nan(), f.quiet_nan() - 1})
      for (Bits sign : {Bits{0}, f.sign()})
        table.add(element, kAllTiers, sign | nan, exactly(sign | nan | f.quiet_bit()));
  }
  return table;
}

}  // namespace

std::vector<ValueTable> rounding_values() {
  std::vector<ValueTable> tables;
  for (const Column& column : kColumns) tables.push_back(rounding(column));
  return tables;
}

}  // namespace zorp::test
