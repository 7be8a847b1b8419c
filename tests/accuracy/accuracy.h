// Measures the error of kernels against MPFR, in units in the last place of the correctly rounded
// result (subnormal results included).
#pragma once

#include <mpfr.h>

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tests/support/library.h"
#include "tests/support/operands.h"

namespace zorp::test {

/// A family's exact functions, one for each result, and where the operands are dense: between `low`
/// and `high` in double and in float. Half is measured on all operands where there is one.
struct Reference {
  using Unary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  using Binary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
  using WithInteger = int (*)(mpfr_ptr, mpfr_srcptr, long, mpfr_rnd_t);
  using Function = std::variant<Unary, Binary, WithInteger>;
  struct Range {
    double low, high;
  };
  using Ranges = std::array<Range, 2>;  // by Element

  const char* family;
  std::vector<Function> results;
  Ranges first;
  std::optional<Ranges> second = {};  // the second operand's, if it isn't that of the first

  Range range(Element element, std::size_t operand) const;
};

/// The reference of a family, or nullptr where none is written down.
const Reference* reference(const std::string& family);

/// What was found for one algorithm: the tiers that run it share one measurement.
struct Measurement {
  std::vector<Tier> tiers = {};
  std::size_t operands = 0;
  double worst_error = 0;  // in ulp
  Tuple worst_operands{};
  Bits worst_result = 0;
  /// A NaN or an infinity on one side and something else on the other, or a zero of the wrong sign.
  std::size_t wrong_specials = 0;
  std::optional<Tuple> wrong_special_operands = {};
};

/// Measures all algorithms of a family and element type at full width. The operands are a fixed
/// sequence: a smaller count measures a beginning of it; half with one operand takes all 65,536.
std::vector<Measurement> measure(const Library& library, const Reference& reference,
                                 const grammar::Family& family, Element element,
                                 std::size_t operands, int threads);

/// "-1.5 (0xbff8000000000000)" for each operand.
std::string describe(const Tuple& operands, const grammar::Family& family, Element element);
/// "default, rm".
std::string tier_names(const std::vector<Tier>& tiers);

}  // namespace zorp::test
