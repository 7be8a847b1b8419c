// Checks against references: functions that compute on single lanes what a kernel must return, bit
// for bit, by means that have nothing in common with the kernel.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tests/support/caller.h"

namespace zorp::test {

/// The results of one lane: in registers, then through the pointer.
using LaneResults = std::vector<Bits>;
using Reference = LaneResults (*)(Element element, const Tuple& operands);

/// Every width of the variant gives the reference's results in every lane.
void expect_reference(const Variant& variant, Reference reference, std::span<const Tuple> operands);

/// Every operand of 16-bit lanes; of others special values, all exponents and random bits.
std::vector<Tuple> telling_operands(Lane lane);
/// All pairs of special values, pairs of close neighbours, and random bits.
std::vector<Tuple> telling_pairs(Lane first, Lane second);

/// The variants of these families.
std::vector<Variant> variants_of(const std::vector<std::string>& families);

}  // namespace zorp::test
