// idiv, udiv, irem, urem, idivrem, udivrem: zero divisors, overflow, multiples and their
// neighbours.
#include <cstdint>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

using Word = std::uint32_t;

struct Quotient {
  Word quotient, remainder;
};

/// The processor's division where it doesn't trap, the defined values elsewhere.
Quotient divide(Word a, Word b, bool is_signed) {
  if (b == 0) return {is_signed ? 0x80000000 : 0xffffffff, a};
  if (!is_signed) return {a / b, a % b};
  if (a == 0x80000000 && b == 0xffffffff) return {0x80000000, 0};
  const auto x = std::int32_t(a), y = std::int32_t(b);
  return {Word(x / y), Word(x % y)};
}

/// The largest multiples of divisors of every size, the smallest ones, and all their neighbours.
std::vector<Tuple> operand_pairs(bool is_signed) {
  std::vector<Tuple> pairs;
  const std::vector<Bits> words = specials(Lane::u32);
  for (std::size_t i = 0; i < words.size(); ++i)
    for (std::size_t j = i % 3; j < words.size(); j += 3) pairs.push_back({words[i], words[j]});
  const Word most = is_signed ? 0x7fffffff : 0xffffffff;
  for (Word b : {Word(1), Word(2), Word(3), Word(7), Word(641), Word(46341), Word(65535),
                 Word(65536), Word(65537), Word(8388607), Word(16777217), most / 3, most / 2, most})
    for (Word k : {Word(1), Word(2), most / b / 2, most / b - 1, most / b})
      for (Word offset : {Word(-1), Word(0), Word(1)}) {
        pairs.push_back({Word(k * b + offset), b});
        if (is_signed) {
          pairs.push_back({Word(-(k * b + offset)), b});
          pairs.push_back({Word(k * b + offset), Word(-b)});
        }
      }
  return pairs;
}

ValueTable division(const std::string& family, bool quotient, bool remainder) {
  const bool is_signed = family[0] == 'i';
  ValueTable table{family, {}};
  for (const Tuple& pair : operand_pairs(is_signed)) {
    const Quotient q = divide(Word(pair[0]), Word(pair[1]), is_signed);
    std::vector<Expected> results;
    if (quotient) results.push_back(exactly(q.quotient));
    if (remainder) results.push_back(exactly(q.remainder));
    table.entries.push_back({Element::f64, kAllTiers, pair, results});
  }
  return table;
}

}  // namespace

std::vector<ValueTable> integer_division_values() {
  std::vector<ValueTable> tables;
  for (const char* sign : {"i", "u"}) {
    tables.push_back(division(std::string(sign) + "div", true, false));
    tables.push_back(division(std::string(sign) + "rem", false, true));
    tables.push_back(division(std::string(sign) + "divrem", true, true));
  }
  return tables;
}

}  // namespace zorp::test
