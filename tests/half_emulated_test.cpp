// Half arithmetic on float operations against the model of halves: all modes of rounding, all
// encodings, and an MXCSR that a caller may have changed.
#include "frame/half_emulated.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/half_model.h"

namespace zorp {
namespace {

namespace model = test::half_model;
using model::Half;
using model::Lane;

constexpr Rounding current = Rounding::current;
constexpr Rounding modes[] = {rn, rd, ru, rz};

// ---- MXCSR

constexpr unsigned default_mxcsr = 0x1f80;
constexpr unsigned flushing = 0x8040;

class ScopedMxcsr {
 public:
  explicit ScopedMxcsr(unsigned value) : saved_(_mm_getcsr()) { _mm_setcsr(value); }
  ~ScopedMxcsr() { _mm_setcsr(saved_); }

 private:
  unsigned saved_;
};

/// `instance` is the mode that the operation is compiled for, `mode` the one that must come out.
struct Setting {
  Rounding instance, mode;
  unsigned mxcsr;
  bool flushes() const { return mxcsr & flushing; }
};

/// Static modes must not notice an MXCSR with all exceptions unmasked, rounding up, subnormals
/// flushed.
std::vector<Setting> static_settings(Rounding mode) {
  return {{mode, mode, default_mxcsr}, {mode, mode, flushing | 2 << 13}};
}
std::vector<Setting> dynamic_settings() {
  std::vector<Setting> all;
  for (Rounding mode : modes)
    for (unsigned others : {default_mxcsr, default_mxcsr | flushing})
      all.push_back({current, mode, others | unsigned(mode) << 13});
  return all;
}
std::vector<Setting> all_settings() {
  std::vector<Setting> all;
  for (const Setting& setting : dynamic_settings()) {
    all.push_back(setting);
    all.push_back(static_settings(setting.mode)[setting.flushes()]);
  }
  return all;
}

// ---- Running an operation

/// The lanes of a result. A lane's bytes are those of the element.
template <class V>
void unpack(const V& v, int bytes, uint64_t* lanes, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    lanes[i] = 0;
    std::memcpy(lanes + i, reinterpret_cast<const char*>(&v) + i * bytes, bytes);
  }
}
void unpack(__mmask16 mask, int, uint64_t* lanes, size_t count) {
  for (size_t i = 0; i < count; ++i) lanes[i] = mask >> i & 1;
}

/// An operation on as many lanes as its vectors have, compiled for each mode.
struct Instances {
  int lanes;
  bool rounds;
  void (*run[5])(const Lane* in, uint64_t* out);
};

/// The type of an operation's vectors, the bytes of a lane of its operands and of its result.
template <class V, int from, int to>
struct Shape {
  static constexpr int lanes = sizeof(V) / from;

  template <uint64_t Lane::*operand>
  static V load(const Lane* in) {
    V v;
    for (int i = 0; i < lanes; ++i)
      std::memcpy(reinterpret_cast<char*>(&v) + i * from, &(in[i].*operand), from);
    return v;
  }

  template <Rounding mode, class Operation>
  static void run(const Lane* in, uint64_t* out) {
    constexpr Operation operation;
    const auto x = [in] { return load<&Lane::a>(in); };
    const auto y = [in] { return load<&Lane::b>(in); };
    const auto z = [in] { return load<&Lane::c>(in); };
    if constexpr (requires { operation(x()); })
      unpack(operation(x()), to, out, lanes);
    else if constexpr (requires { operation(x(), y()); })
      unpack(operation(x(), y()), to, out, lanes);
    else if constexpr (requires { operation.template operator()<mode>(x()); })
      unpack(operation.template operator()<mode>(x()), to, out, lanes);
    else if constexpr (requires { operation.template operator()<mode>(x(), y()); })
      unpack(operation.template operator()<mode>(x(), y()), to, out, lanes);
    else
      unpack(operation.template operator()<mode>(x(), y(), z()), to, out, lanes);
  }

  /// An operation that rounds is a template over the mode.
  template <class Operation>
  static Instances instances() {
    if constexpr (std::is_invocable_v<Operation, V> || std::is_invocable_v<Operation, V, V>)
      return {lanes, false, {run<rn, Operation>}};
    else
      return {lanes,
              true,
              {run<rn, Operation>, run<rd, Operation>, run<ru, Operation>, run<rz, Operation>,
               run<current, Operation>}};
  }
};
using Halves = Shape<__m256i, 2, 2>;

using Operands = std::vector<Lane>;

/// Compares an operation with its model; shows the first few differences only. Operands beyond the
/// last full vector are left out.
void check(const std::string& name, Operands operands, const Instances& operation,
           model::Operation expected, const std::vector<Setting>& settings, int immediate) {
  std::vector<uint64_t> want(operands.size());
  const Setting* last = nullptr;
  for (const Setting& setting : settings) {
    if (!last || setting.mode != last->mode || setting.flushes() != last->flushes())
      for (size_t i = 0; i < operands.size(); ++i) {
        operands[i].mode = setting.mode;
        operands[i].flushes = setting.flushes();
        operands[i].immediate = immediate;
        want[i] = expected(operands[i]);
      }
    last = &setting;
    const auto run = operation.run[operation.rounds ? int(setting.instance) : 0];
    int shown = 0;
    for (size_t i = 0; i + operation.lanes <= operands.size() && shown < 5; i += operation.lanes) {
      uint64_t got[16];
      {
        const ScopedMxcsr scoped(setting.mxcsr);
        run(&operands[i], got);
      }
      for (int j = 0; j < operation.lanes; ++j) {
        if (got[j] == want[i + j]) continue;
        ++shown;
        const Lane& l = operands[i + j];
        ADD_FAILURE() << name << std::hex << "(" << l.a << ", " << l.b << ", " << l.c << ") by "
                      << immediate << " = " << got[j] << ", want " << want[i + j] << ", mode "
                      << int(setting.mode) << " mxcsr " << setting.mxcsr;
      }
    }
  }
}
template <class Shape = Halves, class Operation>
void check(const std::string& name, const Operands& operands, Operation, model::Operation expected,
           const std::vector<Setting>& settings, int immediate = 0) {
  check(name, operands, Shape::template instances<Operation>(), expected, settings, immediate);
}
template <class Shape = Halves, class Operation>
void check(const std::string& name, const Operands& operands, Operation operation,
           model::Operation expected) {
  const bool rounds = Shape::template instances<Operation>().rounds;
  check<Shape>(name, operands, operation, expected, rounds ? all_settings() : static_settings(rn));
}

// ---- Operands

Operands all_halves() {
  Operands o;
  for (unsigned h = 0; h < 0x10000; ++h) o.push_back({.a = h});
  return o;
}

/// All pairs of halves of every exponent with telling fractions, both signs; with exponent 31 that
/// is infinities and NaNs of both kinds.
Operands structured_pairs(std::initializer_list<unsigned> fractions) {
  std::vector<Half> halves;
  for (unsigned exponent = 0; exponent < 64; ++exponent)
    for (unsigned fraction : fractions) halves.push_back(Half(exponent << 10 | fraction));
  Operands o;
  for (Half x : halves)
    for (Half y : halves) o.push_back({x, y});
  return o;
}

Operands pairs() {
  Operands o = structured_pairs({0, 1, 2, 0x155, 0x200, 0x2aa, 0x3ff});
  std::mt19937 random(1);
  for (int i = 0; i < 300000; ++i) {
    const unsigned bits = random();
    o.push_back({bits & 0xffff, bits >> 16});
  }
  return o;
}

Operands triples() {
  Operands o;
  const Half special[] = {0x0000, 0x8000, 0x0001, 0x8001, 0x03ff, 0x0400, 0x8400, 0x3bff,
                          0x3c00, 0xbc00, 0x3c01, 0x7bff, 0xfbff, 0x7c00, 0xfc00, 0x7c01,
                          0xfd55, 0x7e02, 0xfe00, 0x7fff, 0x1400, 0x9401, 0x6800, 0xe801};
  for (Half x : special)
    for (Half y : special)
      for (Half z : special) o.push_back({x, y, z});
  std::mt19937 random(2);
  for (int i = 0; i < 100000; ++i) o.push_back({Half(random()), Half(random()), Half(random())});
  // A product close to half a unit in the last place of the addend, at times by less than float
  // resolves: what rounding twice gets wrong.
  for (int i = 0; i < 200000; ++i) {
    const Half c = random() & 0xfbff;
    const int exponent = std::max<int>(c >> 10 & 31, 1) - 15;
    const int product = exponent - 11 + int(random() % 3) - 1;
    const int first = std::min(15, std::max(-14, product / 2 + int(random() % 9) - 4));
    const auto factor = [&random](int e) {
      const double offset = std::array{0.0, 0x1p-10, 0x1p-9, -0x1p-11, -0x1p-10}[random() % 5];
      return model::nearest(std::ldexp(random() % 2 ? 1 + offset : -1 - offset, e));
    };
    o.push_back({factor(first), factor(product - first), c});
  }
  // Cancellation down to an exact zero.
  for (int i = 0; i < 50000; ++i) {
    const Half a = Half(random()), b = Half(random());
    const double product = model::number(a) * model::number(b);
    if (std::isfinite(product))
      o.push_back(
          {a, b, Half(model::nearest(random() % 2 ? product : -product) + random() % 3 - 1)});
  }
  return o;
}

/// Every half, every midpoint of halves, their neighbours, and the whole range, in F.
template <class F, class Bits>
Operands wide_values() {
  Operands o;
  const auto add = [&o](F x) {
    for (F y : {x, -x}) o.push_back({std::bit_cast<Bits>(y)});
  };
  for (unsigned h = 0; h < model::kInfinity; ++h) {
    const F low = F(model::number(Half(h)));
    const F next = h == 0x7bff ? F(65536) : F(model::number(Half(h + 1)));
    for (F x : {low, low + (next - low) / 2})
      for (F y : {std::nextafter(x, F(0)), x, std::nextafter(x, F(INFINITY))}) add(y);
  }
  using Limits = std::numeric_limits<F>;
  for (F x : {Limits::denorm_min(), Limits::min(), Limits::max(), Limits::infinity(),
              Limits::quiet_NaN(), F(0), F(0x1p-149), F(0x1p-126), F(0x1p-25)})
    add(x);
  std::mt19937_64 random(3);
  while (o.size() % 16 || o.size() < 430000) o.push_back({Bits(random())});
  return o;
}

template <class I>
Operands integers() {
  using Bits = std::make_unsigned_t<I>;
  if constexpr (sizeof(I) == 2) return all_halves();
  Operands o;
  for (uint64_t centre : {uint64_t{0}, uint64_t{2048}, uint64_t{65536}, uint64_t{1} << 24,
                          uint64_t{1} << 31, uint64_t{1} << 32, uint64_t{1} << 63})
    for (int64_t i = -4096; i < 4096; ++i) {
      const uint64_t value = centre + uint64_t(i);
      o.push_back({Bits(value)});
      o.push_back({Bits(-value)});
    }
  std::mt19937_64 random(4);
  for (int i = 0; i < 65536; ++i) {
    const I value = I(random());
    o.push_back({Bits(value >> random() % std::numeric_limits<I>::digits)});
  }
  return o;
}

// ---- Tests

using V = __m256i;

float lane_0(__m512 v) {
  float lane[16];
  std::memcpy(lane, &v, sizeof lane);
  return lane[0];
}

TEST(HalfEmulated, BinaryOperations) {
  const Operands o = pairs();
  check(
      "add", o, []<Rounding m>(V a, V b) { return emulated::add<m>(a, b); }, model::add);
  check(
      "sub", o, []<Rounding m>(V a, V b) { return emulated::sub<m>(a, b); }, model::sub);
  check(
      "mul", o, []<Rounding m>(V a, V b) { return emulated::mul<m>(a, b); }, model::mul);
  check(
      "div", o, []<Rounding m>(V a, V b) { return emulated::div<m>(a, b); }, model::div);
  check(
      "scale", o, []<Rounding m>(V a, V b) { return emulated::scale<m>(a, b); }, model::scale);
}

TEST(HalfEmulated, FusedOperations) {
  const Operands o = triples();
  check(
      "fma", o, []<Rounding m>(V a, V b, V c) { return emulated::fma<m>(a, b, c); }, model::fma);
  check(
      "fms", o, []<Rounding m>(V a, V b, V c) { return emulated::fms<m>(a, b, c); }, model::fms);
  check(
      "fnma", o, []<Rounding m>(V a, V b, V c) { return emulated::fnma<m>(a, b, c); }, model::fnma);
  check(
      "fnms", o, []<Rounding m>(V a, V b, V c) { return emulated::fnms<m>(a, b, c); }, model::fnms);
}

TEST(HalfEmulated, RootsExponentsExtrema) {
  const std::vector<Setting> nearest = static_settings(rn);
  check(
      "sqrt", all_halves(), []<Rounding m>(V a) { return emulated::sqrt<m>(a); }, model::sqrt);
  check(
      "reciprocal", all_halves(), [](V a) { return emulated::reciprocal(a); },
      [](const Lane& l) {
        const __m512 x = _mm512_set1_ps(float(model::number(Half(l.a))));
        return model::narrowed_estimate(l, lane_0(_mm512_rcp14_ps(x)));
      });
  check(
      "reciprocal_root", all_halves(), [](V a) { return emulated::reciprocal_root(a); },
      [](const Lane& l) {
        const __m512 x = _mm512_set1_ps(float(model::number(Half(l.a))));
        return model::narrowed_estimate(l, lane_0(_mm512_rsqrt14_ps(x)));
      });
  check(
      "exponent", all_halves(), [](V a) { return emulated::exponent(a); }, model::exponent);
  const Operands o = pairs();
  check(
      "min", o, [](V a, V b) { return emulated::min(a, b); }, model::min);
  check(
      "max", o, [](V a, V b) { return emulated::max(a, b); }, model::max);
}

/// f<0>(), f<1>(), ...
template <int count, class Function>
void for_immediates(Function f) {
  [&]<int... imm>(std::integer_sequence<int, imm...>) { (f.template operator()<imm>(), ...); }
  (std::make_integer_sequence<int, count>());
}

TEST(HalfEmulated, OperationsByAnImmediate) {
  const std::vector<Setting> nearest = static_settings(rn);
  const Operands halves = all_halves(), pairs = structured_pairs({0, 1, 0x200, 0x3ff});
  for_immediates<32>([&]<int imm>() {
    check(
        "compare", pairs, [](V a, V b) { return emulated::compare<imm>(a, b); }, model::compare,
        nearest, imm);
  });
  for_immediates<256>([&]<int imm>() {
    check(
        "classify", halves, [](V a) { return emulated::classify<imm>(a); }, model::classify,
        {nearest[0]}, imm);
  });
  for_immediates<16>([&]<int imm>() {
    check(
        "significand", halves, [](V a) { return emulated::significand<imm>(a); },
        model::significand, nearest, imm);
  });
  // Fraction bits 0, 1, 2, 5, 10, 15 with every rounding control.
  for_immediates<30>([&]<int index>() {
    constexpr int fraction_bits[] = {0, 1, 2, 5, 10, 15};
    constexpr int imm = fraction_bits[index / 5] << 4 | index % 5 | (index % 10 > 5 ? 8 : 0);
    const std::vector<Setting> settings = imm & 4 ? dynamic_settings() : nearest;
    check(
        "round_scale", halves, [](V a) { return emulated::round_scale<imm>(a); },
        model::round_scale, settings, imm);
    check(
        "reduce", halves, [](V a) { return emulated::reduce<imm>(a); }, model::reduce, settings,
        imm);
  });
}

TEST(HalfEmulated, FloatAndDouble) {
  const Operands floats = wide_values<float, uint32_t>(), doubles = wide_values<double, uint64_t>();
  check<Shape<__m512, 4, 2>>(
      "narrow", floats, []<Rounding m>(__m512 v) { return emulated::narrow<m>(v); },
      model::from_float);
  check<Shape<__m512d, 8, 2>>(
      "narrow", doubles, []<Rounding m>(__m512d v) { return emulated::narrow<m>(v); },
      model::from_double);
  check<Shape<V, 2, 4>>(
      "widen", all_halves(), [](V v) { return emulated::widen(v); }, model::to_float);
  check<Shape<__m128i, 2, 8>>(
      "widen_double", all_halves(), [](__m128i v) { return emulated::widen_double(v); },
      model::to_double, static_settings(rn));
}

/// To integers of type I, and from them.
template <class I, class Narrow, class Wide, class To, class From>
void check_integer(To to, From from) {
  check<Shape<Narrow, 2, sizeof(I)>>("to integer", all_halves(), to, model::to_integer<I>);
  check<Shape<Wide, sizeof(I), 2>>("from integer", integers<I>(), from, model::from_integer<I>);
}

TEST(HalfEmulated, Integers) {
  using N = __m128i;
  using W = __m512i;
  check_integer<int16_t, V, V>([]<Rounding m>(V v) { return emulated::to_int16<m>(v); },
                               []<Rounding m>(V v) { return emulated::from_int16<m>(v); });
  check_integer<uint16_t, V, V>([]<Rounding m>(V v) { return emulated::to_uint16<m>(v); },
                                []<Rounding m>(V v) { return emulated::from_uint16<m>(v); });
  check_integer<int32_t, V, W>([]<Rounding m>(V v) { return emulated::to_int32<m>(v); },
                               []<Rounding m>(W v) { return emulated::from_int32<m>(v); });
  check_integer<uint32_t, V, W>([]<Rounding m>(V v) { return emulated::to_uint32<m>(v); },
                                []<Rounding m>(W v) { return emulated::from_uint32<m>(v); });
  check_integer<int64_t, N, W>([]<Rounding m>(N v) { return emulated::to_int64<m>(v); },
                               []<Rounding m>(W v) { return emulated::from_int64<m>(v); });
  check_integer<uint64_t, N, W>([]<Rounding m>(N v) { return emulated::to_uint64<m>(v); },
                                []<Rounding m>(W v) { return emulated::from_uint64<m>(v); });
}

}  // namespace
}  // namespace zorp
