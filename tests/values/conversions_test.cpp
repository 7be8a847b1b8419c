// Conversions are exact: every result is that of integer arithmetic, in every lane, on operands of
// every size, around every limit and around the ties of every magnitude. No operand raises an
// exception flag.
#include "tests/values/conversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>

#include "tests/support/caller.h"

namespace zorp::test {
namespace {

using Pool = std::vector<Bits>;

/// The pattern and its neighbours, under both signs.
void add_around(Pool& pool, const Format& f, Bits pattern) {
  for (int step = -3; step <= 3; ++step) {
    const Bits magnitude = f.magnitude(pattern) + Bits(step);
    if (f.magnitude(magnitude) != magnitude) continue;
    pool.push_back(magnitude);
    pool.push_back(magnitude | f.sign());
  }
}

/// Where rounding to an integer changes: multiples of 1/4 that are small or next to a power of two.
Pool for_integers(Lane from) {
  const Format& f = format(from);
  const Element element = Element(int(from));
  Pool pool = specials(from);
  for (std::uint64_t seed = 0; seed < 2; ++seed)
    for (Bits bits : every_exponent(from, seed)) pool.push_back(bits);
  for (int k = -3; k <= 66; ++k)
    for (int quarters = -10; quarters <= 10; ++quarters)
      add_around(pool, f, encode(element, std::ldexp(1.0, k) + quarters / 4.0));
  std::mt19937_64 random(1);
  for (int i = 0; i < 1000; ++i) {
    const double quarters = double(random() >> (11 + i % 53));
    add_around(pool, f, encode(element, quarters / 4));
  }
  return pool;
}

/// Integers of every length, and those at and beside the ties of each.
Pool from_integers(Lane from, int precision) {
  const int size = 8 * grammar::lane_bytes(from);
  const Bits mask = ~Bits{0} >> (64 - size);
  Pool pool = specials(from);
  std::mt19937_64 random(2);
  for (int length = 1; length <= size; ++length)
    for (int i = 0; i < 60; ++i) {
      Bits m = (random() | Bits{1} << 63) >> (64 - length);
      if (const int dropped = length - precision; dropped > 0 && i % 2) {
        const Bits half = Bits{1} << (dropped - 1);
        m = (m & ~(2 * half - 1)) | half;
        m += i % 3 - 1;
        if (i % 5 == 0) m |= ((Bits{1} << (length - 1)) - 1) & ~(2 * half - 1);  // carries
      }
      pool.push_back(m);
      pool.push_back((0 - m) & mask);
    }
  return pool;
}

/// Doubles at, between and halfway between floats of every exponent.
Pool for_floats() {
  const Format& f = format(Lane::f64);
  Pool pool = specials(Lane::f64);
  for (Bits bits : every_exponent(Lane::f64, 3)) pool.push_back(bits);
  std::mt19937_64 random(4);
  for (int exponent = -152; exponent <= 129; ++exponent)
    for (int i = 0; i < 24; ++i) {
      Bits fraction = random() & (f.min_normal() - 1);
      if (i % 4 == 0) fraction = i % 8 ? f.min_normal() - 1 : 0;
      // Subnormals have fewer digits.
      const int digits = std::max(0, std::min(23, exponent + 149));
      const Bits half = Bits{1} << (51 - digits);
      fraction &= ~(half - 1);
      add_around(pool, f, Bits(exponent + 1023) << 52 | fraction);
      add_around(pool, f, Bits(exponent + 1023) << 52 | (fraction & ~half));
    }
  for (Bits payload : {Bits{1}, Bits{1} << 28, Bits{1} << 29, Bits{1} << 50, Bits{0x5555555555555}})
    for (Bits sign : {Bits{0}, f.sign()})
      for (Bits quiet : {Bits{0}, f.quiet_bit()})
        pool.push_back(sign | quiet | f.infinity() | payload);
  return pool;
}

const Pool& pool_for(const Conversion& conversion) {
  static std::map<std::pair<Lane, Lane>, Pool> pools;
  Pool& pool = pools[{conversion.from, conversion.to}];
  if (pool.empty())
    pool = !is_float(conversion.to) ? for_integers(conversion.from)
           : !is_float(conversion.from)
               ? from_integers(conversion.from, format(conversion.to).mantissa_bits + 1)
               : for_floats();
  return pool;
}

/// Of one library: kernels without half lanes are the same objects in all flavours.
std::vector<Variant> conversions() {
  std::vector<Variant> list;
  for (const Variant& variant : variants())
    if (variant.family->form == grammar::Form::conversion && variant.is_representative())
      list.push_back(variant);
  return list;
}

class Conversions : public testing::TestWithParam<Variant> {};

TEST_P(Conversions, AreExact) {
  const Conversion conversion(GetParam().kernel(1));
  const Pool& pool = pool_for(conversion);
  Pool expected;
  for (Bits operand : pool) expected.push_back(conversion(operand));

  for (const Kernel& kernel : GetParam().kernels()) {
    Caller caller(kernel, loaded(*GetParam().library));
    std::vector<Tuple> lanes(kernel.width);
    for (std::size_t start = 0; start < pool.size(); start += kernel.width) {
      for (int i = 0; i < kernel.width; ++i) lanes[i] = {pool[(start + i) % pool.size()]};
      const Results& results = caller(lanes);
      for (int i = 0; i < kernel.width; ++i)
        ASSERT_EQ(hex(caller.output(results, 0, i)), hex(expected[(start + i) % pool.size()]))
            << kernel.name() << " of " << hex(lanes[i][0]) << " in lane " << i;
      ASSERT_EQ(caller.raised(), 0) << kernel.name() << " of " << hex(lanes[0][0]) << " and others";
    }
  }
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Conversions);
INSTANTIATE_TEST_SUITE_P(, Conversions, testing::ValuesIn(conversions()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
