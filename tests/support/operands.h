// Operands for tests: special values, every exponent, moderate numbers, random bits.
#pragma once

#include <string>
#include <vector>

#include "tests/support/lanes.h"

namespace zorp::test {

/// The operands of one lane; unused places are zero.
using Tuple = std::array<Bits, 3>;

/// A scrambled function of its argument (splitmix64).
std::uint64_t scramble(std::uint64_t x);

/// Every kind of special value and the numbers around it, of both signs.
std::vector<Bits> specials(Lane lane);
/// Random mantissas under every exponent, of both signs. Floating-point lanes only.
std::vector<Bits> every_exponent(Lane lane, std::uint64_t seed);
/// Numbers of everyday size: floating-point between 2^-8 and 2^8, integers up to 64, both signs.
std::vector<Bits> moderate(Lane lane, int count, std::uint64_t seed);
std::vector<Bits> random_bits(Lane lane, int count, std::uint64_t seed);

/// About `size` operand tuples for lanes of these types: pairings of special values (a cross
/// section of them where all would be too many), every exponent, moderate numbers, random bits.
std::vector<Tuple> operand_pool(const std::vector<Lane>& lanes, int size);

std::string hex(Bits bits);
std::string hex(const Tuple& tuple, std::size_t operands);

}  // namespace zorp::test
