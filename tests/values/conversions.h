// The conversions by integer arithmetic alone: numbers as sign, integer and power of two, rounded
// where the name says so.
#pragma once

#include "export/grammar.h"
#include "tests/support/lanes.h"

namespace zorp::test {

/// What a conversion does, read from the name of its family.
struct Conversion {
  explicit Conversion(const grammar::Kernel& kernel);

  /// The result for an operand, both as bit patterns.
  Bits operator()(Bits operand) const;

  enum class Rounding { nearest, down, up, zero };

  Lane from, to;
  Rounding rounding;
  bool saturates;  // to integers only
};

}  // namespace zorp::test
