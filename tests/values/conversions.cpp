#include "tests/values/conversions.h"

#include <bit>

namespace zorp::test {
namespace {

using Wide = unsigned __int128;
using Rounding = Conversion::Rounding;

bool is_signed(Lane lane) { return lane == Lane::i32 || lane == Lane::i64; }

int width_of(Wide m) {
  const auto high = std::uint64_t(m >> 64);
  return high ? 64 + std::bit_width(high) : int(std::bit_width(std::uint64_t(m)));
}

/// (-1)^negative m 2^exponent
struct Dyadic {
  bool negative;
  Wide m;
  int exponent;
};

/// The magnitude as a multiple of 2^unit, rounded. It must fit into 128 bits.
Wide rounded(const Dyadic& x, int unit, Rounding rounding) {
  const int shift = unit - x.exponent;
  if (shift <= 0) return x.m << -shift;
  // Everything below a quarter of the unit is alike.
  const bool far = shift > width_of(x.m) + 2;
  const Wide m = far ? Wide(x.m != 0) : x.m;
  const int s = far ? 3 : shift;
  const Wide kept = m >> s, rest = m - (kept << s), half = Wide{1} << (s - 1);
  bool away = false;
  switch (rounding) {
    case Rounding::nearest:
      away = rest > half || (rest == half && (kept & 1));
      break;
    case Rounding::down:
      away = x.negative && rest != 0;
      break;
    case Rounding::up:
      away = !x.negative && rest != 0;
      break;
    case Rounding::zero:
      break;
  }
  return kept + away;
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
  const int unit = std::max(width_of(x.m) + x.exponent - f.mantissa_bits - 1, lowest);
  const auto digits = Bits(rounded(x, unit, rounding));
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
  Wide r = 0;
  if (f.is_finite(bits)) {
    const Dyadic x = dyadic(f, bits);
    if (width_of(x.m) + x.exponent <= 64) {
      r = rounded(x, 0, c.rounding);
      fits = r <= all;
    }
  }
  const Bits value = negative ? (0 - Bits(r)) & all : Bits(r);
  if (is_signed(c.to)) {
    if (fits && r <= top - !negative) return value;
    return c.saturates ? top - !negative : top;
  }
  if (c.saturates) return negative ? 0 : fits ? Bits(r) : all;
  return fits ? Bits(r) : top;
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
