#include "tests/support/lanes.h"

#include <bit>

namespace zorp::test {

static_assert(lane_of(Element::f64) == Lane::f64 && lane_of(Element::f32) == Lane::f32 &&
              lane_of(Element::f16) == Lane::f16);
static_assert(format(Element::f64).one() == 0x3ff0000000000000);
static_assert(format(Element::f16).one() == 0x3c00);

double value(Element element, Bits bits) {
  switch (element) {
    case Element::f64:
      return std::bit_cast<double>(bits);
    case Element::f32:
      return std::bit_cast<float>(std::uint32_t(bits));
    default:
      return std::bit_cast<_Float16>(std::uint16_t(bits));
  }
}

Bits encode(Element element, double value) {
  switch (element) {
    case Element::f64:
      return std::bit_cast<std::uint64_t>(value);
    case Element::f32:
      return std::bit_cast<std::uint32_t>(float(value));
    default:
      return std::bit_cast<std::uint16_t>(_Float16(value));
  }
}

Bits next_up(Element element, Bits bits) {
  const Bits sign = format(element).sign();
  if (bits == sign) return 1;
  return bits & sign ? bits - 1 : bits + 1;
}

Bits next_down(Element element, Bits bits) {
  const Bits sign = format(element).sign();
  return next_up(element, bits ^ sign) ^ sign;
}

}  // namespace zorp::test
