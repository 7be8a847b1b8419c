// Tables of telling values: what a family returns for an operand, bit for bit.
//
// A table lists operands with their results for an element type and some tiers; values_test.cpp
// runs it at all widths and in every lane position. Results are exact mathematics or defined
// values.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/library.h"
#include "tests/support/operands.h"

namespace zorp::test {

/// What a result must be: certain bits, or any value of a kind.
struct Expected {
  enum class Kind { exactly, quiet_nan, finite };
  Kind kind = Kind::exactly;
  Bits bits = 0;

  bool holds(Lane lane, Bits actual) const;
  std::string describe() const;
};

constexpr Expected exactly(Bits bits) { return {Expected::Kind::exactly, bits}; }
constexpr Expected kQuietNan = {Expected::Kind::quiet_nan};
constexpr Expected kFinite = {Expected::Kind::finite};

/// The tiers an entry holds for; those that the family lacks don't matter.
using Tiers = std::vector<Tier>;
const Tiers kAllTiers = {Tier::standard, Tier::native, Tier::half, Tier::rm};
const Tiers kStandardTier = {Tier::standard};
const Tiers kReducedTiers = {Tier::native, Tier::half, Tier::rm};
constexpr Element kElements[] = {Element::f64, Element::f32, Element::f16};

struct ValueEntry {
  Element element;
  Tiers tiers;
  Tuple operands;
  std::vector<Expected> results;  // in registers, then through the pointer
};

struct ValueTable {
  std::string family;
  std::vector<ValueEntry> entries;

  /// A unary family's result for the operand with those bits.
  void add(Element element, const Tiers& tiers, Bits operand, Expected result);
  /// The same for the operand of that value, rounded to the element type.
  void at(Element element, const Tiers& tiers, double operand, Expected result);
  /// The same in all element types and tiers.
  void everywhere(double operand, double result);
  /// NaNs of both signs, quiet and signalling, give a quiet NaN.
  void nans_stay_nans();
  /// They give that NaN, quieted, with its payload and sign.
  void nans_are_kept();
};

// One function a file; values_test.cpp lists them.
std::vector<ValueTable> arithmetic_values();
std::vector<ValueTable> conversion_values();
std::vector<ValueTable> error_function_values();
std::vector<ValueTable> exponential_values();
std::vector<ValueTable> gamma_values();
std::vector<ValueTable> half_turn_values();
std::vector<ValueTable> hyperbolic_values();
std::vector<ValueTable> integer_division_values();
std::vector<ValueTable> inverse_hyperbolic_values();
std::vector<ValueTable> inverse_trigonometric_values();
std::vector<ValueTable> logarithm_values();
std::vector<ValueTable> power_values();
std::vector<ValueTable> root_values();
std::vector<ValueTable> rounding_values();
std::vector<ValueTable> trigonometric_values();

}  // namespace zorp::test
