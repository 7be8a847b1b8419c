// The conversions: telling values of rounding, saturation and range.
#include <cmath>

#include "tests/values/values.h"

namespace zorp::test {
namespace {

/// Tables of the families of a stem, by rounding.
class Stem {
 public:
  Stem(const std::string& stem, const std::string& suffix = "") {
    for (const char* rounding : {"rte", "rtn", "rtp", "rtz"})
      tables_.push_back({stem + rounding + suffix, {}});
  }

  /// An operand's results under rte, rtn, rtp, rtz.
  void add(Element element, Bits operand, std::array<Bits, 4> results) {
    for (int i = 0; i < 4; ++i)
      tables_[i].add(element, kStandardTier, operand, exactly(results[i]));
  }
  void add(Element element, double operand, std::array<Bits, 4> results) {
    add(element, encode(element, operand), results);
  }
  void at(Bits operand, Element element, double nearest, double down, double up, double zero) {
    add(element, operand,
        {encode(element, nearest), encode(element, down), encode(element, up),
         encode(element, zero)});
  }
  void all(Element element, double operand, Bits result) {
    add(element, operand, {result, result, result, result});
  }
  /// For both element types.
  void both(double operand, std::array<Bits, 4> results) {
    for (Element element : {Element::f64, Element::f32}) add(element, operand, results);
  }
  void both(double operand, Bits result) { both(operand, {result, result, result, result}); }
  void nans(Bits result) {
    for (Element element : {Element::f64, Element::f32}) {
      const Format& f = format(element);
      for (Bits sign : {Bits{0}, f.sign()})
        for (Bits nan : {f.quiet_nan(), f.signalling_nan(), f.sign() - 1})
          add(element, sign | nan, {result, result, result, result});
    }
  }

  const std::vector<ValueTable>& tables() const { return tables_; }

 private:
  std::vector<ValueTable> tables_;
};

constexpr Bits kTop32 = 0x80000000, kTop64 = 0x8000000000000000;
constexpr Bits kAll32 = 0xffffffff, kAll64 = ~Bits{0};

Stem to_signed(int size, bool saturates) {
  Stem stem("cvtfptoi" + std::to_string(size), saturates ? "sat" : "nosat");
  const Bits top = size == 32 ? kTop32 : kTop64, all = size == 32 ? kAll32 : kAll64;
  const Bits too_large = saturates ? top - 1 : top;
  stem.both(2.5, {2, 2, 3, 2});
  stem.both(-2.5, {all - 1, all - 2, all - 1, all - 1});
  stem.both(-0.3, {0, all, 0, 0});
  for (double tiny : {0.5, -0.5, 0.0, -0.0}) {
    const Bits up = tiny > 0, down = tiny < 0 ? all : 0;
    stem.both(tiny, {0, down, up, 0});
  }
  stem.add(Element::f32, Bits{1}, {0, 0, 1, 0});
  stem.add(Element::f64, kTop64 | 1, {0, all, 0, 0});
  const double limit = std::ldexp(1.0, size - 1);
  stem.both(limit, too_large);
  stem.both(-limit, top);
  stem.both(-2 * limit, top);
  stem.both(INFINITY, too_large);
  stem.both(-INFINITY, top);
  stem.nans(saturates ? 0 : top);
  if (size == 32) {
    stem.add(Element::f64, 2147483647.5, {too_large, top - 1, too_large, top - 1});
    stem.all(Element::f64, -2147483648.6, top);
  }
  return stem;
}

Stem to_unsigned(int size, bool saturates) {
  Stem stem("cvtfptou" + std::to_string(size), saturates ? "sat" : "nosat");
  const Bits top = size == 32 ? kTop32 : kTop64, all = size == 32 ? kAll32 : kAll64;
  const Bits too_large = saturates ? all : top, minus_one = saturates ? 0 : 1;
  stem.both(-0.3, {0, minus_one, 0, 0});
  stem.both(-2.5, saturates ? std::array<Bits, 4>{} : std::array<Bits, 4>{2, 3, 2, 2});
  stem.add(Element::f32, Bits{1}, {0, 0, 1, 0});
  stem.add(Element::f64, kTop64 | 1, {0, minus_one, 0, 0});
  const double limit = std::ldexp(1.0, size);
  stem.both(limit / 2, top);
  stem.both(-limit / 2, saturates ? 0 : top);
  stem.both(limit, too_large);
  stem.both(-limit, saturates ? 0 : top);
  stem.both(INFINITY, too_large);
  stem.both(-INFINITY, saturates ? 0 : top);
  stem.nans(saturates ? 0 : top);
  if (size == 32) {
    stem.all(Element::f32, -2147483904.0, saturates ? 0 : 0x80000100);
    stem.add(Element::f64, 2147483647.5, {top, top - 1, top, top - 1});
    stem.add(Element::f64, 4294967295.5, {too_large, all, too_large, all});
  } else {
    stem.all(Element::f64, std::nextafter(limit, 0), 0xfffffffffffff800);
  }
  return stem;
}

Stem from_32(bool is_signed) {
  Stem stem(is_signed ? "cvti32tofp" : "cvtu32tofp");
  for (Element element : {Element::f64, Element::f32}) stem.at(0, element, 0, 0, 0, 0);
  stem.at(16777217, Element::f32, 16777216, 16777216, 16777218, 16777216);
  stem.at(16777219, Element::f32, 16777220, 16777218, 16777220, 16777218);
  stem.at(16777217, Element::f64, 16777217, 16777217, 16777217, 16777217);
  if (is_signed) {
    stem.at(Bits(-16777217) & kAll32, Element::f32, -16777216, -16777218, -16777216, -16777216);
    for (Element element : {Element::f64, Element::f32})
      stem.at(kTop32, element, -0x1p31, -0x1p31, -0x1p31, -0x1p31);
    stem.at(kAll32, Element::f64, -1, -1, -1, -1);
  } else {
    stem.at(kAll32, Element::f32, 0x1p32, 0xffffff00, 0x1p32, 0xffffff00);
    stem.at(kAll32, Element::f64, 4294967295.0, 4294967295.0, 4294967295.0, 4294967295.0);
  }
  return stem;
}

Stem from_64(bool is_signed) {
  Stem stem(is_signed ? "cvti64tofp" : "cvtu64tofp");
  for (Element element : {Element::f64, Element::f32}) stem.at(0, element, 0, 0, 0, 0);
  stem.at((Bits{1} << 53) + 1, Element::f64, 0x1p53, 0x1p53, 0x1p53 + 2, 0x1p53);
  // A tie, a tie lifted by the lowest bit, a tie to an odd neighbour.
  const Bits tie = (Bits{1} << 47) + (Bits{1} << 23);
  const double next = 0x1p47 + 0x1p24;
  stem.at(tie, Element::f32, 0x1p47, 0x1p47, next, 0x1p47);
  stem.at(tie + 1, Element::f32, next, 0x1p47, next, 0x1p47);
  stem.at(tie + (Bits{2} << 23), Element::f32, 0x1p47 + 0x1p25, next, 0x1p47 + 0x1p25, next);
  if (is_signed) {
    stem.at(0 - ((Bits{1} << 53) + 1), Element::f64, -0x1p53, -0x1p53 - 2, -0x1p53, -0x1p53);
    for (Element element : {Element::f64, Element::f32})
      stem.at(kTop64, element, -0x1p63, -0x1p63, -0x1p63, -0x1p63);
  } else {
    stem.at(kAll64, Element::f32, 0x1p64, 0x1p64 - 0x1p40, 0x1p64, 0x1p64 - 0x1p40);
    stem.at(kAll64, Element::f64, 0x1p64, 0x1p64 - 0x1p11, 0x1p64, 0x1p64 - 0x1p11);
  }
  return stem;
}

Stem to_float() {
  Stem stem("cvtfp64tofp32");
  auto at = [&](double operand, std::array<Bits, 4> results) {
    stem.add(Element::f64, operand, results);
  };
  const Format& f = format(Lane::f32);
  const Bits one = f.one(), sign = f.sign(), infinity = f.infinity(), largest = f.max_finite();
  at(1.5, {0x3fc00000, 0x3fc00000, 0x3fc00000, 0x3fc00000});
  at(1 + 0x1p-24, {one, one, one + 1, one});
  at(-1 - 0x1p-24, {sign | one, sign | (one + 1), sign | one, sign | one});
  at(0x1.fffffffffffffp1023, {infinity, largest, infinity, largest});
  at(-0x1.fffffffffffffp1023, {sign | infinity, sign | infinity, sign | largest, sign | largest});
  at(0x1p-1074, {0, 0, 1, 0});
  at(-0x1p-1074, {sign, sign | 1, sign, sign});
  at(0.0, {0, 0, 0, 0});
  at(-0.0, {sign, sign, sign, sign});
  at(INFINITY, {infinity, infinity, infinity, infinity});
  at(-INFINITY, {sign | infinity, sign | infinity, sign | infinity, sign | infinity});
  return stem;
}

}  // namespace

std::vector<ValueTable> conversion_values() {
  std::vector<Stem> stems = {from_32(true), from_32(false), from_64(true), from_64(false),
                             to_float()};
  for (int size : {32, 64})
    for (bool saturates : {true, false}) {
      stems.push_back(to_signed(size, saturates));
      stems.push_back(to_unsigned(size, saturates));
    }
  std::vector<ValueTable> tables;
  for (const Stem& stem : stems)
    tables.insert(tables.end(), stem.tables().begin(), stem.tables().end());
  return tables;
}

}  // namespace zorp::test
