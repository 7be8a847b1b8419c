// The constants of the reduction of large angles. All families of an element type share them.
#include "trig/pieces.h"
#include "trig/reduction.h"
#include "trig/reduction_tables.h"

namespace zorp {
namespace {

/// floor(2^p / (2 pi)) modulo 2^64
constexpr uint64_t inverse_two_pi_digits(int p) {
  if (p <= 0) return 0;
  const auto& words = inverse_two_pi.entry;
  const int last = p / 64, part = p % 64;  // `part` bits of the word `last` count
  const uint64_t above = last > 0 ? words[last - 1] : 0;
  return part == 0 ? above : above << part | words[last] >> (64 - part);
}

/// For the exponent e of T's encodings, the three words of floor(2^(e-offset) / (2 pi)): x/(2 pi)
/// in units of 2^-(bits of three words), less whole turns.
template <class T>
constexpr auto reduction_words() {
  constexpr int word_bits = 8 * sizeof(T);
  constexpr int offset = Format<T>::bias + Format<T>::fraction_bits - 3 * word_bits;
  Table<Encoding<T>, 3 << Format<T>::exponent_bits> table{};
  for (int e = 0; e < 1 << Format<T>::exponent_bits; ++e)
    for (int i = 0; i < 3; ++i)
      table.entry[3 * e + i] =
          static_cast<Pattern<T>>(inverse_two_pi_digits(e - offset - word_bits * (2 - i)));
  return table;
}

/// The circle, and its first quarter again.
template <class T, int n>
constexpr auto and_a_quarter(const Table<T, n>& circle) {
  Table<T, n + n / 4> longer{};
  for (int i = 0; i < n + n / 4; ++i) longer.entry[i] = circle.entry[i % n];
  return longer;
}

constexpr SlicesTable slices_from_each() {
  SlicesTable table{};
  for (int first = 0; first < 9; ++first)
    for (int i = 0; i < 48 && first + i < 50; ++i)
      table.from[first].entry[i] = four_over_pi_pieces.entry[first + i];
  return table;
}

/// One field of half a circle of 64 steps.
constexpr Table<double, 32> coarse_field(int field) {
  Table<double, 32> values{};
  for (int j = 0; j < 32; ++j) values.entry[j] = circle_double_64.entry[4 * j + field];
  return values;
}

}  // namespace

extern "C" {

const ReductionBlock<double> __zorp_dsin_reduction_data = {
    .words = reduction_words<double>(),
    .exponent = 0x7FF0000000000000,
    .fraction = 0x000FFFFFFFFFFFFF,
    .leading_bit = 0x0010000000000000,
    .one = 0x3FF0000000000000,
    .step_shift = 0x42A8000000000000,  // 1.5 x 2^43: unit 1/512
    .middle = 0x3CB0000000000000,      // 2^-52
    .low = 0x3970000000000000,         // 2^-104
    .two_pi1 = 0x401921FB54442D18,
    .two_pi2 = 0x3CB1A62633145C07,
};
ZORP_SAME_BLOCK(ReductionBlock<double>, __zorp_dcos_reduction_data, __zorp_dsin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<double>, __zorp_dsincos_reduction_data, __zorp_dsin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<double>, __zorp_dsincosreg_reduction_data,
                __zorp_dsin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<double>, __zorp_dtan_reduction_data, __zorp_dsin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<double>, __zorp_dtan_native_reduction_data,
                __zorp_dsin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<double>, __zorp_dtan_half_reduction_data,
                __zorp_dsin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<double>, __zorp_dtan_rm_reduction_data, __zorp_dsin_reduction_data);

const ReductionBlock<float> __zorp_ssin_reduction_data = {
    .words = reduction_words<float>(),
    .exponent = 0x7F800000,
    .fraction = 0x007FFFFF,
    .leading_bit = 0x00800000,
    .one = 0x3F800000,
    .step_shift = 0x47400000,  // 1.5 x 2^15: unit 1/256
    .middle = 0x34000000,      // 2^-23
    .low = 0x28800000,         // 2^-46
    .two_pi1 = 0x40C90FDB,
    .two_pi2 = 0xB43BBD2E,
};
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_ssin_native_reduction_data,
                __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_ssin_half_reduction_data, __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_ssin_rm_reduction_data, __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_scos_reduction_data, __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_scos_native_reduction_data,
                __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_scos_half_reduction_data, __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_scos_rm_reduction_data, __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_stan_reduction_data, __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_stan_native_reduction_data,
                __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_stan_half_reduction_data, __zorp_ssin_reduction_data);
ZORP_SAME_BLOCK(ReductionBlock<float>, __zorp_stan_rm_reduction_data, __zorp_ssin_reduction_data);

// On |r| <= pi/512: p for (sin r - r)/r^3, q for (cos r - 1)/r^2, in r^2.
const CircleBlock<double> __zorp_dsin_data_ha = {
    .circle = and_a_quarter(circle_double_512),
    .p1 = 0xBFC5555555554448,
    .p2 = 0x3F81110FABB3551C,
    .q1 = 0xBFE0000000000000,
    .q2 = 0x3FA5555555554CCF,
    .q3 = 0xBF56C16AB163B2D7,
};
ZORP_SAME_BLOCK(CircleBlock<double>, __zorp_dcos_data_ha, __zorp_dsin_data_ha);
ZORP_SAME_BLOCK(CircleBlock<double>, __zorp_dsincos_data_ha, __zorp_dsin_data_ha);
ZORP_SAME_BLOCK(CircleBlock<double>, __zorp_dsincosreg_data_ha, __zorp_dsin_data_ha);

// The same on |r| <= pi/256.
const CircleBlock<float> __zorp_scircle_data = {
    .circle = and_a_quarter(circle_float_256),
    .p1 = 0xBE2AAAAB,
    .p2 = 0x3C08885C,
    .q1 = 0xBF000000,
    .q2 = 0x3D2AAA7C,
};

const PiecesBlock __zorp_dsin_pieces_data = {
    .four_over_pi = 0x3FF45F306DC9C883,
    .integer_shift = 0x4330000000000000,
    .q0 = 0x3FE921FA00000000,
    .q1 = 0x3EA5444300000000,
    .q2 = 0xBD373DCA00000000,
    .q3 = 0xBBF3B39A00000000,
    .q4 = 0x3A845C06E0E68948,
    .least_parts = 0x4160000000000000,   // 2^23
    .least_slices = 0x41D0000000000000,  // 2^30
    .one = 0x3FF0000000000000,
    .minus_one = 0xBFF0000000000000,
    .scale = 0x0C80000000000000,
    .upper_half = 0xFFFFFFFFF8000000,
    .per_exponent = 83886,
    .exponent_origin = 88248072,
    .slice_bits = 25,
    .turn_origin = 1090,
    .integer_exponent = 1075,
    .split = 0x4198000000000000,  // 1.5 x 2^26
    .pi_4_high = 0x3FE921FB40000000,
    .pi_4_low = 0x3E64442D18469899,
    .inverse_step = 0x40245F306DC9C883,
    .shift = 0x4338000000000000,
    .step1 = 0x3FB921FB54400000,
    .step2 = 0x3D90B4611A600000,
    .step3 = 0x3B63198A2E037073,
    .s1 = 0xBFC5555555555555,  // -1/3!
    .s2 = 0x3F81111111111111,
    .s3 = 0xBF2A01A01A01A01A,
    .s4 = 0x3EC71DE3A556C734,
    .k1 = 0xBFE0000000000000,  // -1/2!
    .k2 = 0x3FA5555555555555,
    .k3 = 0xBF56C16C16C16C17,
    .k4 = 0x3EFA01A01A01A01A,
};
const SlicesTable __dsin_g_ReductionTab = slices_from_each();
const HalfCircle __dsin_g_CoutTab = {
    .c_rest = coarse_field(0),
    .s_high = coarse_field(1),
    .s_low = coarse_field(2),
    .c_power = coarse_field(3),
};

}  // extern "C"
}  // namespace zorp
