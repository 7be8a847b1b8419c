// div, inv, sqrt, rsqrt: zeros, infinities and NaNs, exact results, the ends of the range.
#include <cmath>
#include <limits>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// ---- div ---------------------------------------------------------------------------------------

const Tiers kEstimateTiers = {Tier::native, Tier::half};  // of float: a product with an estimate
const Tiers kRefinedTiers = {Tier::standard, Tier::rm};

void add_quotient(ValueTable& table, Element element, const Tiers& tiers, Bits a, Bits b,
                  Expected result) {
  table.entries.push_back({element, tiers, {a, b}, {result}});
}

ValueTable div_values() {
  ValueTable table{"div", {}};
  const double infinite_or_zero[] = {0.0, -0.0, kInfinity, -kInfinity};
  for (Element element : kElements) {
    const Format& f = format(element);
    const auto expect = [&](const Tiers& tiers, double a, double b) {
      const double quotient = a / b;
      add_quotient(table, element, tiers, encode(element, a), encode(element, b),
                   std::isnan(quotient) ? kQuietNan : exactly(encode(element, quotient)));
    };
    for (double a : infinite_or_zero) {
      for (double b : infinite_or_zero) expect(kAllTiers, a, b);
      for (double finite :
           {1.0, -3.0, value(element, f.min_subnormal()), value(element, f.max_finite())}) {
        expect(kAllTiers, a, finite);
        expect(kAllTiers, finite, a);
      }
    }
    // Exact quotients; by powers of two they are so in all tiers.
    for (double b : {2.0, -0.25, 1.0, 512.0})
      for (double a : {1.0, 6.0, -7.5, 1023.0}) expect(kAllTiers, a, b);
    for (double b : {3.0, -5.0, 1.75, 63.0})
      for (double quotient : {1.0, 6.0, -7.5, 31.0})
        expect(element == Element::f32 ? kRefinedTiers : kAllTiers, quotient * b, b);
    // Subnormal by subnormal, and the ends of the range by each other.
    add_quotient(table, element, kAllTiers, 21 * f.min_subnormal(), 3 * f.min_subnormal(),
                 exactly(encode(element, 7.0)));
    add_quotient(table, element, kAllTiers, f.max_finite(), f.min_subnormal(),
                 exactly(f.infinity()));
    add_quotient(table, element, kAllTiers, f.sign() | 1, f.max_finite(), exactly(f.sign()));
    // 1 over the largest number: a quarter of the smallest normal number and a little.
    add_quotient(table, element, kAllTiers, f.one(), f.max_finite(), exactly(f.min_normal() / 4));
    // NaNs. Of two the dividend's survives, but not in the refined quotient of double.
    const Bits first = f.sign() | f.infinity() | 5, second = f.infinity() | 9;
    const Bits kept_first = first | f.quiet_bit(), kept_second = second | f.quiet_bit();
    for (Bits number : {Bits{0}, f.one(), f.infinity()}) {
      add_quotient(table, element, kAllTiers, first, number, exactly(kept_first));
      add_quotient(table, element, kAllTiers, number, second, exactly(kept_second));
    }
    const bool divisor_survives = element == Element::f64;
    add_quotient(table, element, kStandardTier, first, second, exactly(kept_first));
    add_quotient(table, element, kReducedTiers, first, second,
                 exactly(divisor_survives ? kept_second : kept_first));
  }
  // Divisors on both sides of those that the estimate serves: beyond, the quotient is exact.
  const Bits one = format(Element::f32).one();
  add_quotient(table, Element::f32, kEstimateTiers, one, 0x7E800001, exactly(0x007FFFFF));
  add_quotient(table, Element::f32, kEstimateTiers, one, 0x7E7FFFFF, kFinite);
  add_quotient(table, Element::f32, kEstimateTiers, one, 0x00800000, exactly(0x7E800000));
  add_quotient(table, Element::f32, kEstimateTiers, one, 0x007FFFFF, exactly(0x7E800001));
  return table;
}

// ---- inv ---------------------------------------------------------------------------------------

ValueTable inv_values() {
  ValueTable table{"inv", {}};
  for (double sign : {1.0, -1.0}) {
    table.everywhere(sign * 0.0, sign * kInfinity);
    table.everywhere(sign * kInfinity, sign * 0.0);
    for (double power : {1.0, 2.0, 0.125, 4096.0}) table.everywhere(sign * power, sign / power);
  }
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits sign : {Bits{0}, f.sign()}) {
      table.add(element, kAllTiers, sign | f.min_subnormal(), exactly(sign | f.infinity()));
      // The largest power of two has a subnormal reciprocal.
      const Bits power = f.infinity() - f.min_normal();
      table.add(element, kAllTiers, sign | power, exactly(sign | f.min_normal() / 2));
      table.add(element, kAllTiers, sign | (power - f.min_normal()),
                exactly(sign | f.min_normal()));
    }
  }
  table.nans_are_kept();
  return table;
}

// ---- sqrt, rsqrt -------------------------------------------------------------------------------

ValueTable without_roots(const std::string& family) {
  ValueTable table{family, {}};
  for (Element element : kElements) {
    const Format& f = format(element);
    for (Bits negative : {f.min_subnormal(), f.min_normal() - 1, f.min_normal(), f.one(),
                          f.max_finite(), f.infinity()})
      table.add(element, kAllTiers, f.sign() | negative, kQuietNan);
  }
  table.nans_are_kept();
  return table;
}

ValueTable sqrt_values() {
  ValueTable table = without_roots("sqrt");
  table.everywhere(0.0, 0.0);
  table.everywhere(-0.0, -0.0);
  table.everywhere(kInfinity, kInfinity);
  // The estimate is exact for even powers of two; other squares need a correction.
  for (double root : {1.0, 2.0, 0.25, 64.0}) table.everywhere(root * root, root);
  for (double root : {3.0, 1.5, 25.0, 0.4375})
    for (Element element : kElements)
      table.at(element, element == Element::f16 ? kAllTiers : kStandardTier, root * root,
               exactly(encode(element, root)));
  // Of float, squares on both sides of those that take the second path, down to the subnormals.
  for (int exponent : {-40, -38, -37, -42, -60, -72})
    for (double root : {1.0, 3.0, 1.25})
      table.at(Element::f32, kStandardTier, std::ldexp(root * root, 2 * exponent),
               exactly(encode(Element::f32, std::ldexp(root, exponent))));
  table.add(Element::f32, kStandardTier, 0x00000001, exactly(0x1A3504F3));
  table.add(Element::f32, kStandardTier, 0x007FFFFF, exactly(0x1FFFFFFF));
  table.at(Element::f64, kAllTiers, 0x1p-1074, exactly(encode(Element::f64, 0x1p-537)));
  table.at(Element::f16, kAllTiers, 0x1p-24, exactly(encode(Element::f16, 0x1p-12)));
  return table;
}

ValueTable rsqrt_values() {
  ValueTable table = without_roots("rsqrt");
  table.everywhere(0.0, kInfinity);
  table.everywhere(-0.0, -kInfinity);
  table.everywhere(kInfinity, 0.0);
  for (double root : {1.0, 2.0, 0.25, 64.0}) table.everywhere(root * root, 1 / root);
  table.at(Element::f64, kAllTiers, 0x1p-1074, exactly(encode(Element::f64, 0x1p537)));
  table.add(Element::f64, kStandardTier, format(Element::f64).max_finite(),
            exactly(encode(Element::f64, 0x1p-512)));
  table.at(Element::f32, kAllTiers, 0x1p-148, exactly(encode(Element::f32, 0x1p74)));
  table.at(Element::f16, kAllTiers, 0x1p-24, exactly(encode(Element::f16, 0x1p12)));
  return table;
}

}  // namespace

std::vector<ValueTable> arithmetic_values() {
  return {div_values(), inv_values(), sqrt_values(), rsqrt_values()};
}

}  // namespace zorp::test
