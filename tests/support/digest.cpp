#include "tests/support/digest.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "tests/support/caller.h"
#include "tests/support/operands.h"

namespace zorp::test {
namespace {

/// Operands that depend on their number alone: any bits, and so every exponent; the exponents
/// around 1; values even between powers of two, where most functions have their thresholds.
Bits operand(Lane lane, std::uint64_t number, std::uint64_t which) {
  const std::uint64_t random = scramble(4 * number + which);
  const int bytes = grammar::lane_bytes(lane);
  const Bits mask = ~Bits{0} >> (64 - 8 * bytes);
  if (!is_float(lane)) return (number % 4 == 0 ? random : random >> 40) & mask;
  const Format& f = format(lane);
  switch (number % 8) {
    case 0:
      return random & mask;
    case 1:
    case 2:
    case 3: {
      const Bits reach = std::min(20, 1 << (f.exponent_bits - 2)) * f.min_normal();
      return (random & f.sign()) | (f.one() - reach + scramble(random) % (2 * reach));
    }
    default: {
      const double scale = std::ldexp(1.0, int(number / 8 % 11));
      return encode(Element(int(lane)), scale * (std::ldexp(double(random >> 11), -52) - 1));
    }
  }
}

/// Lines "exp double default 65536 beginning's-digest 10000000 digest", or "... estimates" for the
/// last two.
std::map<std::string, DigestRow> read_table() {
  std::map<std::string, DigestRow> rows;
  std::ifstream table(ZORP_DIGEST_TABLE);
  for (std::string line; std::getline(table, line);) {
    std::istringstream words(line);
    std::string family, type, tier;
    words >> family >> type >> tier;
    DigestRow& row = rows[family + ' ' + type + ' ' + tier];
    words >> row.beginning.operands >> std::hex >> row.beginning.value >> std::dec;
    Digest all;
    if (words >> all.operands >> std::hex >> all.value) row.all = all;
  }
  return rows;
}

}  // namespace

const DigestRow* digest_row(const Variant& variant) {
  static const std::map<std::string, DigestRow> table = read_table();
  const auto row = table.find(digest_key(variant));
  return row == table.end() ? nullptr : &row->second;
}

std::string digest_key(const Variant& variant) {
  return variant.family->name + ' ' + std::string(name(variant.element)) + ' ' +
         std::string(name(variant.kernel(1).algorithm_tier()));
}

std::size_t digest_operands(const Variant& variant) {
  const Kernel kernel = variant.kernel(1);
  if (variant.element == Element::f16)
    return kernel.operands().size() == 1 ? kDigestBeginning : 1 << 20;
  return kernel.special_lanes() == grammar::Class::A ? 1'000'000 : 10'000'000;
}

Digest digest(const Library& library, const Variant& variant, std::size_t operands) {
  const Kernel kernel = variant.kernel(variant.widest());
  Caller caller(kernel, library);
  const std::vector<Lane>& lanes = caller.operands();
  const bool all_halves = lanes.size() == 1 && lanes[0] == Lane::f16;
  const std::vector<Tuple> first = operand_pool(lanes, 1 << 12);
  std::vector<Tuple> vector(kernel.width);
  std::uint64_t value = 0;
  for (std::size_t start = 0; start < operands; start += kernel.width) {
    for (int i = 0; i < kernel.width; ++i) {
      const std::size_t number = start + i;
      if (all_halves) {
        vector[i] = {number};
      } else if (number < first.size()) {
        vector[i] = first[number];
      } else {
        for (std::size_t which = 0; which < lanes.size(); ++which)
          vector[i][which] = operand(lanes[which], number, which);
      }
    }
    const Results& results = caller(vector);
    for (int i = 0; i < kernel.width; ++i)
      for (std::size_t output = 0; output < caller.outputs().size(); ++output) {
        value = (value ^ caller.output(results, output, i)) * 0x9e3779b97f4a7c15;
        value ^= value >> 29;
      }
  }
  return {operands, value};
}

}  // namespace zorp::test
