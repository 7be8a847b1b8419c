// Measures the error of kernels against MPFR, in units in the last place of the correctly rounded
// result (subnormal results included).
#pragma once

#include <mpfr.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/library.h"
#include "tests/support/operands.h"

namespace zorp::test {

/// A family's exact function, and where its operands are dense: between `low` and `high` in double
/// and in float. Half is measured on all operands.
struct Reference {
  using Unary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  struct Range {
    double low, high;
  };

  const char* family;
  Unary function;
  Range ranges[2];  // by Element
};

/// The reference of a family, or nullptr where none is written down.
const Reference* reference(const std::string& family);

/// What was found for one algorithm: the tiers that run it share one measurement.
struct Measurement {
  std::vector<Tier> tiers = {};
  std::size_t operands = 0;
  double worst_error = 0;  // in ulp
  Bits worst_operand = 0, worst_result = 0;
  /// A NaN or an infinity on one side and something else on the other.
  std::size_t wrong_specials = 0;
  std::optional<Bits> wrong_special_operand = {};
};

/// Measures all algorithms of a family and element type at full width. The operands are a fixed
/// sequence: a smaller count measures a beginning of it; half takes all 65,536.
std::vector<Measurement> measure(const Library& library, const Reference& reference,
                                 const grammar::Family& family, Element element,
                                 std::size_t operands, int threads);

/// "default, rm".
std::string tier_names(const std::vector<Tier>& tiers);

}  // namespace zorp::test
