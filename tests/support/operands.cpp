#include "tests/support/operands.h"

#include <algorithm>
#include <cstdio>
#include <random>

namespace zorp::test {
namespace {

using Engine = std::mt19937_64;

Bits lane_mask(Lane lane) { return ~Bits{0} >> (64 - 8 * grammar::lane_bytes(lane)); }

std::vector<Bits> float_specials(const Format& f) {
  const Bits one = f.one();
  const Bits half_step = f.min_normal() / 2;  // 1.5 - 1.0 as integers
  std::vector<Bits> list = {
      0,
      f.min_subnormal(),
      f.min_subnormal() + 1,
      f.min_normal() / 2,
      f.min_normal() - 1,
      f.min_normal(),
      f.min_normal() + 1,
      one - f.min_normal(),      // 0.5
      one - f.min_normal() / 2,  // 0.75
      one - 1,
      one,
      one + 1,
      one + half_step,                                   // 1.5
      one + f.min_normal(),                              // 2
      one + f.min_normal() + half_step,                  // 3
      one + (Bits(f.mantissa_bits) << f.mantissa_bits),  // integers only from here
      one + (Bits(f.mantissa_bits) << f.mantissa_bits) - 1,
      one + (Bits(f.mantissa_bits) << f.mantissa_bits) + 1,
      f.max_finite() - f.min_normal(),
      f.max_finite() - 1,
      f.max_finite(),
      f.infinity(),
      f.quiet_nan(),
      f.quiet_nan() | 5,
      f.signalling_nan(),
      f.quiet_nan() - 1,
  };
  const std::size_t count = list.size();
  for (std::size_t i = 0; i < count; ++i) list.push_back(list[i] | f.sign());
  return list;
}

std::vector<Bits> integer_specials(Lane lane) {
  std::vector<Bits> list = {0, 1, 2, 3, 7, 10, 33, 1023, 1024, 2047};
  for (int bit : {15, 16, 23, 24, 25, 31, 32, 52, 53, 54, 62, 63})
    for (Bits offset : {-1, 0, 1})
      if (bit < 8 * grammar::lane_bytes(lane)) list.push_back((Bits{1} << bit) + offset);
  const std::size_t count = list.size();
  for (std::size_t i = 0; i < count; ++i) list.push_back(-list[i] & lane_mask(lane));
  std::sort(list.begin(), list.end());
  list.erase(std::unique(list.begin(), list.end()), list.end());
  return list;
}

// Every n-th element of the list, so that about `size` stay.
template <class T>
std::vector<T> thin_out(const std::vector<T>& list, std::size_t size) {
  if (list.size() <= size) return list;
  std::vector<T> thin;
  for (std::size_t i = 0; i < size; ++i) thin.push_back(list[i * list.size() / size]);
  return thin;
}

std::vector<Tuple> special_tuples(const std::vector<Lane>& lanes, std::size_t size) {
  std::vector<Tuple> tuples{{}};
  for (std::size_t operand = 0; operand < lanes.size(); ++operand) {
    std::vector<Tuple> longer;
    for (const Tuple& tuple : tuples)
      for (Bits bits : specials(lanes[operand])) {
        longer.push_back(tuple);
        longer.back()[operand] = bits;
      }
    tuples = std::move(longer);
  }
  // A stride that shares factors with the lists' lengths would repeat the same pairs.
  std::shuffle(tuples.begin(), tuples.end(), Engine(1));
  if (tuples.size() > size) tuples.resize(size);
  return tuples;
}

}  // namespace

std::uint64_t scramble(std::uint64_t x) {
  x += 0x9e3779b97f4a7c15;
  x = (x ^ x >> 30) * 0xbf58476d1ce4e5b9;
  x = (x ^ x >> 27) * 0x94d049bb133111eb;
  return x ^ x >> 31;
}

std::vector<Bits> specials(Lane lane) {
  return is_float(lane) ? float_specials(format(lane)) : integer_specials(lane);
}

std::vector<Bits> every_exponent(Lane lane, std::uint64_t seed) {
  const Format& f = format(lane);
  Engine engine(seed);
  std::vector<Bits> list;
  for (Bits exponent = 0; exponent < f.infinity(); exponent += f.min_normal())
    for (Bits sign : {Bits{0}, f.sign()})
      list.push_back(sign | exponent | (engine() & (f.min_normal() - 1)));
  return list;
}

std::vector<Bits> moderate(Lane lane, int count, std::uint64_t seed) {
  Engine engine(seed);
  std::vector<Bits> list(count);
  for (Bits& bits : list) {
    if (is_float(lane)) {
      const Format& f = format(lane);
      const Bits lowest = f.one() - 8 * f.min_normal();
      bits = (lowest + engine() % (16 * f.min_normal())) | (engine() & f.sign());
    } else {
      bits = (engine() % 129 - 64) & lane_mask(lane);
    }
  }
  return list;
}

std::vector<Bits> random_bits(Lane lane, int count, std::uint64_t seed) {
  Engine engine(seed);
  std::vector<Bits> list(count);
  for (Bits& bits : list) bits = engine() & lane_mask(lane);
  return list;
}

std::vector<Tuple> operand_pool(const std::vector<Lane>& lanes, int size) {
  std::vector<Tuple> pool = special_tuples(lanes, size / 2);
  const int quarter = size / 4;
  std::vector<Tuple> numbers(3 * quarter);
  for (std::size_t operand = 0; operand < lanes.size(); ++operand) {
    const Lane lane = lanes[operand];
    std::vector<Bits> list = moderate(lane, quarter, operand);
    const std::vector<Bits> wide = is_float(lane) ? thin_out(every_exponent(lane, operand), quarter)
                                                  : random_bits(lane, quarter, operand + 16);
    list.insert(list.end(), wide.begin(), wide.end());
    const std::vector<Bits> any = random_bits(lane, 3 * quarter - int(list.size()), operand + 32);
    list.insert(list.end(), any.begin(), any.end());
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i][operand] = list[i];
  }
  pool.insert(pool.end(), numbers.begin(), numbers.end());
  pool.resize(std::min(pool.size(), std::size_t(size)));
  return pool;
}

std::string hex(Bits bits) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(bits));
  return text;
}

std::string hex(const Tuple& tuple, std::size_t operands) {
  std::string text = "(";
  for (std::size_t i = 0; i < operands; ++i) text += (i ? ", " : "") + hex(tuple[i]);
  return text + ")";
}

}  // namespace zorp::test
