#include "tests/values/conversions.h"

#include <algorithm>
#include <bit>

namespace zorp::test {
namespace {

using Rounding = Conversion::Rounding;

bool is_signed(Lane lane) { return lane == Lane::i32 || lane == Lane::i64; }

/// (-1)^negative m 2^exponent
struct Dyadic {
  bool negative;
  std::uint64_t m;
  int exponent;
};

/// The magnitude as a multiple of 2^unit, rounded. It must fit into 64 bits.
std::uint64_t rounded(const Dyadic& x, int unit, Rounding rounding) {
  std::uint64_t m = x.m;
  int shift = unit - x.exponent;
  if (shift <= 0) return m << -shift;
  // Far below the unit it counts only that there are bits.
  for (; shift > 40; shift -= 32) m = m >> 32 | (std::uint32_t(m) != 0);
  const std::uint64_t kept = m >> shift, rest = m - (kept << shift);
  const std::uint64_t half = std::uint64_t{1} << (shift - 1);
  switch (rounding) {
    case Rounding::nearest:
      return kept + (rest > half || (rest == half && (kept & 1)));
    case Rounding::down:
      return kept + (x.negative && rest != 0);
    case Rounding::up:
      return kept + (!x.negative && rest != 0);
    default:
      return kept;
  }
}

/// A finite number of a format.
Dyadic dyadic(const Format& f, Bits bits) {
  const int bias = (1 << (f.exponent_bits - 1)) - 1;
  const Bits magnitude = f.magnitude(bits);
  const int biased = int(magnitude >> f.mantissa_bits);
  const Bits fraction = magnitude & (f.min_normal() - 1);
  return {(bits & f.sign()) != 0, biased ? fraction | f.min_normal() : fraction,
          (biased ? biased : 1) - bias - f.mantissa_bits};
}

Bits to_format(const Format& f, const Dyadic& x, Rounding rounding) {
  const Bits sign = x.negative ? f.sign() : 0;
  if (x.m == 0) return sign;
  const int bias = (1 << (f.exponent_bits - 1)) - 1;
  const int lowest = 1 - bias - f.mantissa_bits;  // exponent of the last place of subnormals
  const int unit = std::max(int(std::bit_width(x.m)) + x.exponent - f.mantissa_bits - 1, lowest);
  const Bits digits = rounded(x, unit, rounding);
  // Digits that rounding made too long, or normal, carry into the exponent.
  if (unit - lowest >= 1 << f.exponent_bits ||
      (Bits(unit - lowest) << f.mantissa_bits) + digits >= f.infinity()) {
    const bool to_infinity =
        rounding == Rounding::nearest || rounding == (x.negative ? Rounding::down : Rounding::up);
    return sign | (to_infinity ? f.infinity() : f.max_finite());
  }
  return sign | ((Bits(unit - lowest) << f.mantissa_bits) + digits);
}

/// A NaN keeps its sign and as much of its payload as there is room for, and turns quiet.
Bits quieted(const Format& from, const Format& to, Bits nan) {
  const Bits payload = (nan & (from.min_normal() - 1)) >> (from.mantissa_bits - to.mantissa_bits);
  return (nan & from.sign() ? to.sign() : 0) | to.quiet_nan() | payload;
}

Bits to_integer(const Conversion& c, Bits bits) {
  const Format& f = format(c.from);
  const int size = 8 * grammar::lane_bytes(c.to);
  const Bits top = Bits{1} << (size - 1), all = top | (top - 1);
  if (f.is_nan(bits)) return c.saturates ? 0 : top;

  const bool negative = (bits & f.sign()) != 0;
  bool fits = false;  // as a magnitude of that many bits
  Bits r = 0;
  if (f.is_finite(bits)) {
    const Dyadic x = dyadic(f, bits);
    if (int(std::bit_width(x.m)) + x.exponent <= 64) {
      r = rounded(x, 0, c.rounding);
      fits = r <= all;
    }
  }
  const Bits value = negative ? (0 - r) & all : r;
  if (is_signed(c.to)) {
    if (fits && r <= top - !negative) return value;
    return c.saturates ? top - !negative : top;
  }
  if (c.saturates) return negative ? 0 : fits ? r : all;
  return fits ? r : top;
}

}  // namespace

Conversion::Conversion(const grammar::Kernel& kernel)
    : from(kernel.operands()[0]), to(kernel.results()[0]) {
  std::string_view fields = kernel.family->name;
  fields.remove_prefix(kernel.family->group.size());
  constexpr std::string_view names[] = {"rte", "rtn", "rtp", "rtz"};
  for (int i = 0; i < 4; ++i)
    if (fields.starts_with(names[i])) rounding = Rounding(i);
  saturates = fields.substr(3) == "sat";
}

Bits Conversion::operator()(Bits operand) const {
  if (!is_float(to)) return to_integer(*this, operand);
  if (!is_float(from)) {
    const int size = 8 * grammar::lane_bytes(from);
    const bool negative = is_signed(from) && operand >> (size - 1);
    const Bits mask = size == 64 ? ~Bits{0} : (Bits{1} << size) - 1;
    return to_format(format(to), {negative, (negative ? 0 - operand : operand) & mask, 0},
                     rounding);
  }
  const Format& f = format(from);
  if (f.is_nan(operand)) return quieted(f, format(to), operand);
  if (!f.is_finite(operand))
    return format(to).infinity() | (operand & f.sign() ? format(to).sign() : 0);
  return to_format(format(to), dyadic(f, operand), rounding);
}

}  // namespace zorp::test
