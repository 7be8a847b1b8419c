#include "tests/values/values.h"

namespace zorp::test {

bool Expected::holds(Lane lane, Bits actual) const {
  switch (kind) {
    case Kind::quiet_nan:
      return is_float(lane) && format(lane).is_quiet_nan(actual);
    case Kind::finite:
      return is_float(lane) && format(lane).is_finite(actual);
    default:
      return actual == bits;
  }
}

std::string Expected::describe() const {
  switch (kind) {
    case Kind::quiet_nan:
      return "a quiet NaN";
    case Kind::finite:
      return "a finite number";
    default:
      return hex(bits);
  }
}

void ValueTable::add(Element element, const Tiers& tiers, Bits operand, Expected result) {
  entries.push_back({element, tiers, {operand}, {result}});
}

void ValueTable::at(Element element, const Tiers& tiers, double operand, Expected result) {
  add(element, tiers, encode(element, operand), result);
}

void ValueTable::everywhere(double operand, double result) {
  for (Element element : kElements)
    at(element, kAllTiers, operand, exactly(encode(element, result)));
}

namespace {
/// Quiet and signalling NaNs of both signs.
std::vector<Bits> nans(const Format& f) {
  std::vector<Bits> list;
  for (Bits nan :
       {f.quiet_nan(), f.quiet_nan() | 5, f.signalling_nan(), f.quiet_nan() - 1, f.sign() - 1})
    for (Bits sign : {Bits{0}, f.sign()}) list.push_back(sign | nan);
  return list;
}
}  // namespace

void ValueTable::nans_stay_nans() {
  for (Element element : kElements)
    for (Bits nan : nans(format(element))) add(element, kAllTiers, nan, kQuietNan);
}

void ValueTable::nans_are_kept() {
  for (Element element : kElements)
    for (Bits nan : nans(format(element)))
      add(element, kAllTiers, nan, exactly(nan | format(element).quiet_nan()));
}

}  // namespace zorp::test
