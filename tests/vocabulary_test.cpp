// The operations of the vector layer that no kernel uses yet, against plain C++.
#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <tuple>

#include "frame/conversions.h"

namespace zorp {
namespace {

template <class V, class T>
V from_lanes(const T* lane) {
  V v;
  std::memcpy(&v, lane, sizeof v);
  return v;
}
template <class T, class V>
T lane_of(const V& v, int i) {
  T lane;
  std::memcpy(&lane, reinterpret_cast<const char*>(&v) + i * sizeof lane, sizeof lane);
  return lane;
}

TEST(Vocabulary, TernaryLogicFollowsItsTruthTable) {
  uint64_t a[16], b[16], c[16];
  for (int i = 0; i < 16; ++i)
    a[i] = 0x9E3779B97F4A7C15 * (i + 1), b[i] = a[i] * a[i], c[i] = ~a[i] * 3;
  const auto check = [&]<int truth>(std::integral_constant<int, truth>) {
    using V = Vec<double, 16>;
    const V r = ternary_logic<truth>(from_lanes<V>(a), from_lanes<V>(b), from_lanes<V>(c));
    for (int i = 0; i < 16; ++i)
      for (int bit = 0; bit < 64; ++bit) {
        const int row = (a[i] >> bit & 1) << 2 | (b[i] >> bit & 1) << 1 | (c[i] >> bit & 1);
        ASSERT_EQ(lane_of<uint64_t>(r, i) >> bit & 1, uint64_t(truth >> row & 1)) << truth;
      }
  };
  check(std::integral_constant<int, 0xCA>());
  check(std::integral_constant<int, 0x96>());
  check(std::integral_constant<int, 0x2D>());
}

TEST(Vocabulary, FixUpReplacesTheClassesOfItsTable) {
  // Classes from the lowest four bits up: quiet NaN, signalling NaN, zero, 1, -infinity,
  // +infinity, negative, positive. Asked for: a zero becomes +infinity (5), -infinity becomes 0
  // (8).
  constexpr uint64_t table = 0x00080500;
  const double infinity = std::numeric_limits<double>::infinity();
  const double v[8] = {0.0, -0.0, 1.0, -infinity, infinity, -3.5, 2.5, 0.0};
  const double otherwise[8] = {10, 11, 12, 13, 14, 15, 16, 17};
  const double expected[8] = {infinity, infinity, 12, 0, 14, 15, 16, infinity};
  using V = Vec<double, 8>;
  const V r = fix_up(from_lanes<V>(otherwise), from_lanes<V>(v), constant<Vec<int64_t, 8>>(table));
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(lane_of<double>(r, i), expected[i]) << i;
    using S = Vec<double, 1>;
    const S one =
        fix_up(S(_mm_set_sd(otherwise[i])), S(_mm_set_sd(v[i])), constant<Vec<int64_t, 1>>(table));
    EXPECT_EQ(lane_of<double>(one, 0), expected[i]) << i;
  }
}

template <int N>
void check_gather() {
  float entries[64];
  for (int i = 0; i < 64; ++i) entries[i] = 0.5f + i;
  int32_t offset[32];
  for (int i = 0; i < 32; ++i) offset[i] = 4 * (i * 29 % 64);
  const auto v = gather(entries, from_lanes<Vec<int32_t, N>>(offset));
  for (int i = 0; i < N; ++i) ASSERT_EQ(lane_of<float>(v, i), entries[offset[i] / 4]) << N;
}
TEST(Vocabulary, FloatsAreGathered) {
  check_gather<1>();
  check_gather<2>();
  check_gather<4>();
  check_gather<8>();
  check_gather<16>();
  check_gather<32>();
}

TEST(Vocabulary, SquareRootsOfHalves) {
  for (int first = 0; first < 0x7C00; first += 32) {
    uint16_t x[32];
    for (int i = 0; i < 32; ++i) x[i] = uint16_t(first + i);
    const auto r = sqrt<rn>(from_lanes<Vec<half, 32>>(x));
    const auto up = sqrt<ru>(from_lanes<Vec<half, 32>>(x));
    for (int i = 0; i < 32; ++i) {
      const double root = std::sqrt(double{_cvtsh_ss(x[i])});  // correct to 53 bits
      const double nearest = _cvtsh_ss(lane_of<uint16_t>(r, i));
      const double below = _cvtsh_ss(uint16_t(lane_of<uint16_t>(r, i) - 1));
      const double above = _cvtsh_ss(uint16_t(lane_of<uint16_t>(r, i) + 1));
      if (x[i] == 0) continue;
      EXPECT_LE(std::abs(nearest - root), std::abs(below - root)) << x[i];
      EXPECT_LE(std::abs(nearest - root), std::abs(above - root)) << x[i];
      const double upper = _cvtsh_ss(lane_of<uint16_t>(up, i));
      EXPECT_TRUE(upper >= root && upper - root < above - below) << x[i];
    }
  }
}

/// Of several NaNs the first operand survives, quieted.
template <class T, int N>
void check_in_order(Pattern<T> first, Pattern<T> second) {
  using V = Vec<T, N>;
  const Pattern<T> quiet = Pattern<T>{1} << (sizeof(T) == 8 ? 51 : sizeof(T) == 4 ? 22 : 9);
  const V a = constant<V>(first), b = constant<V>(second);
  const auto lane = [](V v) { return lane_of<Pattern<T>>(v, 0); };
  for (const auto& [x, y, nan] : {std::tuple(a, b, first), std::tuple(b, a, second)}) {
    EXPECT_EQ(lane(add_in_order(x, y)), nan | quiet);
    EXPECT_EQ(lane(mul_in_order(x, y)), nan | quiet);
    EXPECT_EQ(lane(fma_in_order(x, y, y)), nan | quiet);
    EXPECT_EQ(lane(fnma_in_order(x, y, y)), nan | quiet);
  }
  const Pattern<T> one = sizeof(T) == 8   ? 0x3FF0000000000000
                         : sizeof(T) == 4 ? Pattern<T>(0x3F800000)
                                          : Pattern<T>(0x3C00);
  const V x = constant<V>(one), two = x + x, three = two + x;
  EXPECT_EQ(lane(add_in_order(two, x)), lane(three));
  EXPECT_EQ(lane(mul_in_order(two, three)), lane(three + three));
  EXPECT_EQ(lane(fma_in_order(two, three, x)), lane(three + two + two));
  EXPECT_EQ(lane(fnma_in_order(two, x, three)), one);
}
TEST(Vocabulary, OperationsInOrderKeepTheFirstNaN) {
  check_in_order<double, 1>(0xFFF0000000000123, 0x7FF8000000000456);
  check_in_order<double, 16>(0xFFF0000000000123, 0x7FF8000000000456);
  check_in_order<float, 1>(0xFF800123, 0x7FC00456);
  check_in_order<float, 16>(0xFF800123, 0x7FC00456);
  check_in_order<half, 16>(0xFC12, 0x7E45);
  check_in_order<half, 32>(0xFC12, 0x7E45);
}

template <Rounding mode, int N>
[[gnu::noinline]] void to_16_bits(const uint16_t* x, int16_t* whole, uint16_t* natural) {
  const auto v = from_lanes<Vec<half, N>>(x);
  const auto i = to_int16<mode>(v);
  const auto u = to_uint16<mode>(v);
  std::memcpy(whole, &i, 2 * N);
  std::memcpy(natural, &u, 2 * N);
}
/// Of all halves, under each mode of MXCSR; `fixed` is the C library's name of a static mode.
template <Rounding mode, int N>
void check_to_16_bits(std::optional<int> fixed = {}) {
  for (const int caller : {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO})
    for (int first = 0; first < 0x10000; first += N) {
      uint16_t x[32], natural[32];
      int16_t whole[32];
      for (int i = 0; i < N; ++i) x[i] = uint16_t(first + i);
      std::fesetround(caller);
      to_16_bits<mode, N>(x, whole, natural);
      std::fesetround(fixed.value_or(caller));
      for (int i = 0; i < N; ++i) {
        const volatile double value = _cvtsh_ss(x[i]);
        const double rounded = std::nearbyint(value);
        const bool fits = rounded >= -32768 && rounded < 32768;
        const bool fits_unsigned = rounded >= 0 && rounded < 65536;
        ASSERT_EQ(whole[i], fits ? int(rounded) : -32768) << value << " in mode " << caller;
        ASSERT_EQ(natural[i], fits_unsigned ? int(rounded) : 65535) << value << ' ' << caller;
      }
      std::fesetround(FE_TONEAREST);
    }
}
TEST(Vocabulary, HalvesAreRoundedTo16Bits) {
  check_to_16_bits<Rounding::current, 16>();
  check_to_16_bits<Rounding::current, 32>();
  check_to_16_bits<rn, 16>(FE_TONEAREST);
  check_to_16_bits<rd, 32>(FE_DOWNWARD);
  check_to_16_bits<ru, 16>(FE_UPWARD);
  check_to_16_bits<rz, 32>(FE_TOWARDZERO);
}

TEST(Vocabulary, EstimatesOfReciprocalsAndRoots) {
  for (double x : {1.0, 1.9999, 3.7, 1e-200, 6.02e123}) {
    const auto v = constant<Vec<double, 8>>(std::bit_cast<uint64_t>(x));
    EXPECT_LT(std::abs(lane_of<double>(reciprocal14(v), 7) * x - 1), 0x1p-14);
    const double root = lane_of<double>(reciprocal_root14(v), 7);
    EXPECT_LT(std::abs(root * std::sqrt(x) - 1), 0x1p-14);
  }
  for (float x : {1.0f, 1.9999f, 3.7f}) {
    const auto check = [x]<int N>(Vec<int64_t, N> floats) {
      const auto r = reciprocal14_of_lower_floats(floats);
      EXPECT_LT(std::abs(double{lane_of<float>(r, 0)} * x - 1), 0x1p-14);
      EXPECT_LT(std::abs(double{lane_of<float>(r, 2 * (N - 1))} * x - 1), 0x1p-14);
    };
    check(constant<Vec<int64_t, 1>>(std::bit_cast<uint32_t>(x)));
    check(constant<Vec<int64_t, 16>>(std::bit_cast<uint32_t>(x)));
  }
  for (uint16_t x : {0x3C00, 0x4123, 0x0155, 0x7BFF}) {
    const auto v = constant<Vec<half, 32>>(x);
    const double root = _cvtsh_ss(lane_of<uint16_t>(reciprocal_root11(v), 31));
    EXPECT_LT(std::abs(root * std::sqrt(double{_cvtsh_ss(x)}) - 1), 0x1p-10);
  }
}

}  // namespace
}  // namespace zorp
