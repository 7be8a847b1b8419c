// The vector layer: one type for N lanes of T, whatever registers hold them, and one vocabulary of
// functions for all of them. An algorithm is a template over N and reads like its formula.
//
// N = 1 is a scalar in the low lane of a 128-bit register. N = 2 to a full register is held in a
// 512-bit register whose further lanes hold values that nobody looks at (embedded rounding exists
// at 512 bits only). Twice a full register is a pair. Masks have one bit a lane, lane 0 lowest,
// also for pairs, so one decision serves both halves.
#pragma once

#include "frame/double.h"
#include "frame/float.h"
#include "frame/half.h"
#include "frame/integer.h"
#include "frame/row.h"

namespace zorp {

template <class T, int N, bool is_pair = (N * sizeof(T) > 64)>
struct Vec {
  using Element = T;
  using Ops = Instructions<T, N>;
  using Register = typename Ops::Register;
  static constexpr int lanes = N;
  static constexpr bool paired = false;

  Vec() = default;
  explicit Vec(Register r) : reg(r) {}
  Vec(const Row<T>& row) : reg(Ops::load_row(row.lane)) {}

  Register reg;
};

template <class T, int N>
struct Vec<T, N, true> {
  using Element = T;
  using Part = Vec<T, N / 2>;
  using Ops = typename Part::Ops;
  static constexpr int lanes = N;
  static constexpr bool paired = true;

  Vec() = default;
  Vec(Part low, Part high) : lo(low), hi(high) {}
  Vec(const Row<T>& row) : lo(row), hi(lo) {}

  Part lo, hi;
};

namespace detail {
/// Lets a row stand where a vector is wanted, once another argument has told the vector's type.
template <class V>
struct Same {
  using type = V;
};
template <class V>
using same_as = typename Same<V>::type;

/// f on the registers of V: once, or on each half of a pair.
template <class V, class F, class... A>
[[gnu::always_inline]] inline V map(F f, const A&... a) {
  if constexpr (V::paired)
    return V(map<typename V::Part>(f, a.lo...), map<typename V::Part>(f, a.hi...));
  else
    return V(f(a.reg...));
}
}  // namespace detail

/// One bit for each of N lanes. Where a register holds more than N lanes, bits beyond N may be
/// set: lane_bits() and any() cut them off. The integer is as wide as the mask of any register, so
/// that a mask which comes from one operation and goes to another stays in a mask register.
template <int N>
struct Mask {
  static constexpr int lanes = N;
  uint32_t bits;

  friend Mask operator&(Mask a, Mask b) {
    if constexpr (N <= 8) return {_kand_mask8(a.bits, b.bits)};
    if constexpr (N == 16) return {_kand_mask16(a.bits, b.bits)};
    return {_kand_mask32(a.bits, b.bits)};
  }
  friend Mask operator|(Mask a, Mask b) {
    if constexpr (N <= 8) return {_kor_mask8(a.bits, b.bits)};
    if constexpr (N == 16) return {_kor_mask16(a.bits, b.bits)};
    return {_kor_mask32(a.bits, b.bits)};
  }
  friend Mask operator^(Mask a, Mask b) {
    if constexpr (N <= 8) return {_kxor_mask8(a.bits, b.bits)};
    if constexpr (N == 16) return {_kxor_mask16(a.bits, b.bits)};
    return {_kxor_mask32(a.bits, b.bits)};
  }
  friend Mask operator~(Mask a) {
    if constexpr (N <= 8) return {_knot_mask8(a.bits)};
    if constexpr (N == 16) return {_knot_mask16(a.bits)};
    return {_knot_mask32(a.bits)};
  }

  Mask<N / 2> low() const { return {bits}; }
  Mask<N / 2> high() const {
    if constexpr (N <= 16)
      return {_kshiftri_mask16(bits, N / 2)};
    else
      return {_kshiftri_mask32(bits, N / 2)};
  }
};

/// The mask of a pair: the low half's lanes first.
inline Mask<16> join(Mask<8> low, Mask<8> high) {
  return {_mm512_kunpackb(static_cast<__mmask16>(high.bits), static_cast<__mmask16>(low.bits))};
}
inline Mask<32> join(Mask<16> low, Mask<16> high) { return {_mm512_kunpackw(high.bits, low.bits)}; }

/// The bits of the first `width` lanes.
template <int width, int N>
inline uint32_t lane_bits(Mask<N> mask) {
  if constexpr (width == 8)
    return static_cast<uint8_t>(mask.bits);
  else if constexpr (width == 16)
    return static_cast<uint16_t>(mask.bits);
  else if constexpr (width == 32)
    return mask.bits;
  else
    return mask.bits & ((1u << width) - 1);
}

/// Tested in a mask register: a general one might be one that the caller keeps.
template <int N>
inline bool any(Mask<N> mask) {
  if constexpr (N < 8) {
    const __mmask8 lanes = _kshiftli_mask8(mask.bits, 8 - N);
    return !_kortestz_mask8_u8(lanes, lanes);
  } else {
    return lane_bits<N>(mask) != 0;
  }
}

namespace detail {
/// A test of the registers of V, as a mask of V's lanes.
template <class V, class F, class... A>
[[gnu::always_inline]] inline Mask<V::lanes> test(F f, const A&... a) {
  if constexpr (V::paired)
    return join(test<typename V::Part>(f, a.lo...), test<typename V::Part>(f, a.hi...));
  else
    return {f(a.reg...)};
}
}  // namespace detail

// ---- Arithmetic, rounded once in the mode of the template argument. ---------------------------

template <Rounding mode = rn, class V>
inline V add(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::template add<mode>(r...); }, a, b);
}
template <Rounding mode = rn, class V>
inline V sub(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::template sub<mode>(r...); }, a, b);
}
template <Rounding mode = rn, class V>
inline V mul(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::template mul<mode>(r...); }, a, b);
}
template <Rounding mode = rn, class V>
inline V div(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::template div<mode>(r...); }, a, b);
}
template <Rounding mode = rn, class V>
inline V sqrt(V a) {
  return detail::map<V>([](auto r) { return V::Ops::template sqrt<mode>(r); }, a);
}
/// a x b + c
template <Rounding mode = rn, class V>
inline V fma(V a, detail::same_as<V> b, detail::same_as<V> c) {
  return detail::map<V>([](auto... r) { return V::Ops::template fma<mode>(r...); }, a, b, c);
}
/// a x b - c
template <Rounding mode = rn, class V>
inline V fms(V a, detail::same_as<V> b, detail::same_as<V> c) {
  return detail::map<V>([](auto... r) { return V::Ops::template fms<mode>(r...); }, a, b, c);
}
/// c - a x b
template <Rounding mode = rn, class V>
inline V fnma(V a, detail::same_as<V> b, detail::same_as<V> c) {
  return detail::map<V>([](auto... r) { return V::Ops::template fnma<mode>(r...); }, a, b, c);
}
/// v x 2^floor(s). An infinite or NaN s, and overflow and underflow, are served as the processor's
/// scale operation serves them: +infinity gives infinity, -infinity gives zero.
template <Rounding mode = rn, class V>
inline V scale(V v, detail::same_as<V> s) {
  return detail::map<V>([](auto... r) { return V::Ops::template scale<mode>(r...); }, v, s);
}
/// Integers wrap around; floating-point lanes round to nearest.
template <class T, int N>
inline Vec<T, N> operator+(Vec<T, N> a, detail::same_as<Vec<T, N>> b) {
  if constexpr (is_integer<T>)
    return detail::map<Vec<T, N>>([](auto... r) { return Vec<T, N>::Ops::add(r...); }, a, b);
  else
    return add<rn>(a, b);
}
template <class T, int N>
inline Vec<T, N> operator-(Vec<T, N> a, detail::same_as<Vec<T, N>> b) {
  if constexpr (is_integer<T>)
    return detail::map<Vec<T, N>>([](auto... r) { return Vec<T, N>::Ops::sub(r...); }, a, b);
  else
    return sub<rn>(a, b);
}
template <class T, int N>
inline Vec<T, N> operator*(Vec<T, N> a, detail::same_as<Vec<T, N>> b) {
  if constexpr (is_integer<T>)
    return detail::map<Vec<T, N>>([](auto... r) { return Vec<T, N>::Ops::mul(r...); }, a, b);
  else
    return mul<rn>(a, b);
}
/// The product of the low 32 bits of a and of b, read as unsigned.
template <int N>
inline Vec<int64_t, N> mul_low_words(Vec<int64_t, N> a, Vec<int64_t, N> b) {
  return detail::map<Vec<int64_t, N>>(
      [](auto... r) { return Instructions<int64_t, N>::mul_low_words(r...); }, a, b);
}
/// a + b for operands that may both be NaNs: the result is then a, quieted. The compiler is free to
/// swap the operands of an ordinary addition.
template <class V>
inline V add_in_order(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::add_in_order(r...); }, a, b);
}
/// The same of a x b.
template <class V>
inline V mul_in_order(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::mul_in_order(r...); }, a, b);
}
/// a x b + c for operands of which several may be NaNs: the result is then the first of them,
/// quieted.
template <class V>
inline V fma_in_order(V a, detail::same_as<V> b, detail::same_as<V> c) {
  return detail::map<V>([](auto... r) { return V::Ops::fma_in_order(r...); }, a, b, c);
}
/// The same of c - a x b.
template <class V>
inline V fnma_in_order(V a, detail::same_as<V> b, detail::same_as<V> c) {
  return detail::map<V>([](auto... r) { return V::Ops::fnma_in_order(r...); }, a, b, c);
}
/// a + b in the lanes of the mask, a in the others.
template <class V>
inline V add_where(Mask<V::lanes> mask, V a, detail::same_as<V> b) {
  if constexpr (V::paired)
    return V(add_where(mask.low(), a.lo, b.lo), add_where(mask.high(), a.hi, b.hi));
  else
    return V(V::Ops::template add_where<rn>(mask.bits, a.reg, b.reg));
}
/// a - b in the lanes of the mask, a in the others.
template <class V>
inline V sub_where(Mask<V::lanes> mask, V a, detail::same_as<V> b) {
  if constexpr (V::paired)
    return V(sub_where(mask.low(), a.lo, b.lo), sub_where(mask.high(), a.hi, b.hi));
  else
    return V(V::Ops::template sub_where<rn>(mask.bits, a.reg, b.reg));
}
/// a x b in the lanes of the mask, a in the others.
template <class V>
inline V mul_where(Mask<V::lanes> mask, V a, detail::same_as<V> b) {
  if constexpr (V::paired)
    return V(mul_where(mask.low(), a.lo, b.lo), mul_where(mask.high(), a.hi, b.hi));
  else
    return V(V::Ops::template mul_where<rn>(mask.bits, a.reg, b.reg));
}

// ---- Parts of a number, estimates, minimum and maximum. ----------------------------------------

/// floor(log2 |v|) as a floating-point number, also for subnormals; -infinity for zeros.
template <class V>
inline V exponent(V v) {
  return detail::map<V>([](auto r) { return V::Ops::exponent(r); }, v);
}
/// The normalised significand; the immediate gives interval and sign control.
template <int imm, class V>
inline V significand(V v) {
  return detail::map<V>([](auto r) { return V::Ops::template significand<imm>(r); }, v);
}
/// v rounded to a multiple of 2^-M, M in the upper four bits of the immediate, mode in the lower.
template <int imm, class V>
inline V round_scale(V v) {
  return detail::map<V>([](auto r) { return V::Ops::template round_scale<imm>(r); }, v);
}
/// What round_scale takes away, exactly.
template <int imm, class V>
inline V reduce(V v) {
  return detail::map<V>([](auto r) { return V::Ops::template reduce<imm>(r); }, v);
}
/// The processor's estimates, relative error below 2^-14.
template <class V>
inline V reciprocal14(V v) {
  return detail::map<V>([](auto r) { return V::Ops::reciprocal14(r); }, v);
}
/// The estimate of the float in the lower half of each lane of 64 bits. If the upper half holds
/// zero, that of the result holds zero or an infinity.
template <int N>
inline Vec<int64_t, N> reciprocal14_of_lower_floats(Vec<int64_t, N> v) {
  using V = Vec<int64_t, N>;
  return detail::map<V>([](auto r) { return V::Ops::reciprocal14_of_lower_floats(r); }, v);
}
template <class V>
inline V reciprocal_root14(V v) {
  return detail::map<V>([](auto r) { return V::Ops::reciprocal_root14(r); }, v);
}
/// The estimates of half, relative error about 2^-11.
template <int N>
inline Vec<half, N> reciprocal11(Vec<half, N> v) {
  return Vec<half, N>(Instructions<half, N>::reciprocal(v.reg));
}
template <int N>
inline Vec<half, N> reciprocal_root11(Vec<half, N> v) {
  return Vec<half, N>(Instructions<half, N>::reciprocal_root(v.reg));
}
/// Of floating-point lanes the second operand where either is a NaN or both are zeros.
template <class V>
inline V min(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::min(r...); }, a, b);
}
template <class V>
inline V max(V a, detail::same_as<V> b) {
  return detail::map<V>([](auto... r) { return V::Ops::max(r...); }, a, b);
}

/// `otherwise`, but in lanes where v is of a special class what that class's four bits of `table`
/// ask for (the processor's fix-up operation).
template <int N>
inline Vec<double, N> fix_up(Vec<double, N> otherwise, Vec<double, N> v, Vec<int64_t, N> table) {
  using V = Vec<double, N>;
  if constexpr (V::paired)
    return {fix_up(otherwise.lo, v.lo, table.lo), fix_up(otherwise.hi, v.hi, table.hi)};
  else
    return V(V::Ops::fix_up(otherwise.reg, v.reg, table.reg));
}

// ---- Encodings and bits. -----------------------------------------------------------------------

/// The encodings of v as signed integers.
template <class T, int N>
inline Vec<Encoding<T>, N> bits(Vec<T, N> v) {
  return detail::map<Vec<Encoding<T>, N>>([](auto r) { return Vec<T, N>::Ops::bits(r); }, v);
}
/// The numbers with these encodings.
template <class T, int N>
inline Vec<T, N> from_bits(Vec<Encoding<T>, N> v) {
  return detail::map<Vec<T, N>>([](auto r) { return Vec<T, N>::Ops::from_bits(r); }, v);
}
template <class T, int N>
inline Vec<T, N> operator&(Vec<T, N> a, detail::same_as<Vec<T, N>> b) {
  return detail::map<Vec<T, N>>([](auto... r) { return Vec<T, N>::Ops::bit_and(r...); }, a, b);
}
template <class T, int N>
inline Vec<T, N> operator|(Vec<T, N> a, detail::same_as<Vec<T, N>> b) {
  return detail::map<Vec<T, N>>([](auto... r) { return Vec<T, N>::Ops::bit_or(r...); }, a, b);
}
template <class T, int N>
inline Vec<T, N> operator^(Vec<T, N> a, detail::same_as<Vec<T, N>> b) {
  return detail::map<Vec<T, N>>([](auto... r) { return Vec<T, N>::Ops::bit_xor(r...); }, a, b);
}
/// Bitwise logic of three operands by the truth table in `truth` (bit 4 a + 2 b + c of it).
template <int truth, class T, int N>
inline Vec<T, N> ternary_logic(Vec<T, N> a, detail::same_as<Vec<T, N>> b,
                               detail::same_as<Vec<T, N>> c) {
  if constexpr (Vec<T, N>::paired)
    return {ternary_logic<truth>(a.lo, b.lo, c.lo), ternary_logic<truth>(a.hi, b.hi, c.hi)};
  else
    return from_bits<T>(
        Vec<Encoding<T>, N>(Instructions<Encoding<T>, N>::template ternary_logic<truth>(
            bits(a).reg, bits(b).reg, bits(c).reg)));
}
/// The bits of `set` where the mask has ones, those of `clear` where it has zeros.
template <class T, int N>
inline Vec<T, N> merge_bits(Vec<T, N> mask, detail::same_as<Vec<T, N>> set,
                            detail::same_as<Vec<T, N>> clear) {
  return ternary_logic<0xCA>(mask, set, clear);
}
template <int n, class V>
inline V shift_left(V v) {
  return detail::map<V>([](auto r) { return V::Ops::template shift_left<n>(r); }, v);
}
/// Zeros come in from above.
template <int n, class V>
inline V shift_right(V v) {
  return detail::map<V>([](auto r) { return V::Ops::template shift_right<n>(r); }, v);
}
/// The sign comes in from above.
template <int n, class V>
inline V shift_right_signed(V v) {
  return detail::map<V>([](auto r) { return V::Ops::template shift_right_signed<n>(r); }, v);
}
/// Each lane by its own count; counts outside the lane's size give zero.
template <class V>
inline V shift_left_by(V v, detail::same_as<V> n) {
  return detail::map<V>([](auto... r) { return V::Ops::shift_left_by(r...); }, v, n);
}
/// The upper word of each pair of words high:low, shifted left by n.
template <int n, class V>
inline V shift_left_joined(V high, V low) {
  return detail::map<V>([](auto... r) { return V::Ops::template shift_left_joined<n>(r...); }, high,
                        low);
}
/// |v| of integers, to be read as unsigned.
template <class V>
inline V absolute(V v) {
  return detail::map<V>([](auto r) { return V::Ops::absolute(r); }, v);
}

// ---- Comparisons, classes, selection. ----------------------------------------------------------

/// A floating-point comparison by the processor's predicate (_CMP_LT_OQ and so on).
template <int predicate, class V>
inline Mask<V::lanes> compare(V a, detail::same_as<V> b) {
  return detail::test<V>([](auto... r) { return V::Ops::template compare<predicate>(r...); }, a, b);
}
inline constexpr int nans = 0x81, zeros = 0x06, infinities = 0x18;
/// The same of doubles, and no exception flag is raised by signalling NaNs and subnormals.
template <int predicate, int N>
inline Mask<N> compare_silently(Vec<double, N> a, Vec<double, N> b) {
  return detail::test<Vec<double, N>>(
      [](auto... r) { return Vec<double, N>::Ops::template compare_silently<predicate>(r...); }, a,
      b);
}
/// The lanes in one of the classes: bit 0 quiet NaN, 1 +0, 2 -0, 3 +infinity, 4 -infinity,
/// 5 subnormal, 6 negative finite, 7 signalling NaN.
template <int classes, class V>
inline Mask<V::lanes> classify(V v) {
  return detail::test<V>([](auto r) { return V::Ops::template classify<classes>(r); }, v);
}
/// a > b as signed integers.
template <class V>
inline Mask<V::lanes> greater(V a, detail::same_as<V> b) {
  return detail::test<V>([](auto... r) { return V::Ops::template compare<_MM_CMPINT_NLE>(r...); },
                         a, b);
}
/// a >= b as signed integers.
template <class V>
inline Mask<V::lanes> not_less(V a, detail::same_as<V> b) {
  return detail::test<V>([](auto... r) { return V::Ops::template compare<_MM_CMPINT_NLT>(r...); },
                         a, b);
}
/// a == b as integers.
template <class V>
inline Mask<V::lanes> equal(V a, detail::same_as<V> b) {
  return detail::test<V>([](auto... r) { return V::Ops::template compare<_MM_CMPINT_EQ>(r...); }, a,
                         b);
}
/// The lanes in which integers a and b have a bit in common.
template <class V>
inline Mask<V::lanes> any_common_bit(V a, detail::same_as<V> b) {
  return detail::test<V>([](auto... r) { return V::Ops::any_common_bit(r...); }, a, b);
}
/// The lanes whose sign bit is set, of integers.
template <class V>
inline Mask<V::lanes> is_negative(V v) {
  return detail::test<V>([](auto r) { return V::Ops::is_negative(r); }, v);
}
/// `set` in the lanes of the mask, `clear` in the others.
template <class V>
inline V select(Mask<V::lanes> mask, V set, detail::same_as<V> clear) {
  if constexpr (V::paired)
    return V(select(mask.low(), set.lo, clear.lo), select(mask.high(), set.hi, clear.hi));
  else
    return V(V::Ops::blend(mask.bits, set.reg, clear.reg));
}

// ---- Constants and tables. ---------------------------------------------------------------------

/// A constant that needs no row of a block: masks, small integers, infinities.
template <class V>
inline V constant(uint64_t pattern) {
  if constexpr (V::paired) {
    const auto part = constant<typename V::Part>(pattern);
    return V(part, part);
  } else {
    return V(V::Ops::from_bits(Vec<Encoding<typename V::Element>, V::lanes>::Ops::repeat(pattern)));
  }
}

template <class V>
inline V sign_mask() {
  return constant<V>(uint64_t{1} << (8 * sizeof(typename V::Element) - 1));
}
/// v without its sign.
template <class V>
inline V magnitude(V v) {
  return v & constant<V>(~uint64_t{0} >> (65 - 8 * sizeof(typename V::Element)));
}

namespace detail {
template <class T, int N>
inline Vec<T, N> lookup_two_rows(const Pattern<T>* table, Vec<Encoding<T>, N> index) {
  return from_bits<T>(
      Vec<Encoding<T>, N>(Instructions<Encoding<T>, N>::template permute<2>(index.reg, table)));
}
}  // namespace detail

/// Entry index mod n of a table of n entries that fills one, two or four rows.
template <class T, int n, int N>
inline Vec<T, N> lookup(const Table<T, n>& table, Vec<Encoding<T>, N> index) {
  using V = Vec<T, N>;
  if constexpr (V::paired)
    return V(lookup(table, index.lo), lookup(table, index.hi));
  else if constexpr (N == 1)
    return V(V::Ops::load_row(&table.entry[_mm_cvtsi128_si32(index.reg) & (n - 1)]));
  else if constexpr (n * sizeof(T) == 256)
    return select(is_negative(shift_left<8 * sizeof(T) - __builtin_ctz(n)>(index)),
                  detail::lookup_two_rows<T>(table.entry + n / 2, index),
                  detail::lookup_two_rows<T>(table.entry, index));
  else
    return V(V::Ops::from_bits(Instructions<Encoding<T>, N>::template permute<n * sizeof(T) / 64>(
        index.reg, table.entry)));
}

/// The double at a byte offset from `base` for each lane.
template <int N>
inline Vec<double, N> gather(const void* base, Vec<int64_t, N> offset) {
  using V = Vec<double, N>;
  if constexpr (V::paired)
    return V(gather(base, offset.lo), gather(base, offset.hi));
  else if constexpr (N == 1)
    return V(_mm_load_sd(reinterpret_cast<const double*>(static_cast<const char*>(base) +
                                                         _mm_cvtsi128_si64(offset.reg))));
  else if constexpr (N == 2)
    return V(_mm512_zextpd128_pd512(
        _mm_i64gather_pd(static_cast<const double*>(base), _mm512_castsi512_si128(offset.reg), 1)));
  else if constexpr (N == 4)
    return V(_mm512_zextpd256_pd512(_mm256_i64gather_pd(static_cast<const double*>(base),
                                                        _mm512_castsi512_si256(offset.reg), 1)));
  else
    return V(_mm512_i64gather_pd(offset.reg, base, 1));
}

/// The float at a byte offset from `base` for each lane.
template <int N>
inline Vec<float, N> gather(const void* base, Vec<int32_t, N> offset) {
  using V = Vec<float, N>;
  if constexpr (V::paired)
    return V(gather(base, offset.lo), gather(base, offset.hi));
  else if constexpr (N == 1)
    return V(_mm_load_ss(reinterpret_cast<const float*>(static_cast<const char*>(base) +
                                                        _mm_cvtsi128_si32(offset.reg))));
  else if constexpr (N <= 4)
    return V(_mm512_zextps128_ps512(
        _mm_i32gather_ps(static_cast<const float*>(base), _mm512_castsi512_si128(offset.reg), 1)));
  else if constexpr (N == 8)
    return V(_mm512_zextps256_ps512(_mm256_i32gather_ps(static_cast<const float*>(base),
                                                        _mm512_castsi512_si256(offset.reg), 1)));
  else
    return V(_mm512_i32gather_ps(offset.reg, base, 1));
}

// ---- Conversions between half and float. -------------------------------------------------------

template <int N>
inline Vec<float, N> widen(Vec<half, N> v) {
  if constexpr (Vec<float, N>::paired)
    return {Vec<float, N / 2>(Instructions<half, N>::widen_low(v.reg)),
            Vec<float, N / 2>(Instructions<half, N>::widen_high(v.reg))};
  else
    return Vec<float, N>(Instructions<half, N>::widen_low(v.reg));
}
/// Rounded in the caller's mode unless told otherwise.
template <Rounding mode = Rounding::current, int N>
inline Vec<half, N> narrow(Vec<float, N> v) {
  if constexpr (Vec<float, N>::paired)
    return Vec<half, N>(Instructions<half, N>::template narrow<mode>(v.lo.reg, v.hi.reg));
  else
    return Vec<half, N>(Instructions<half, N>::template narrow<mode>(v.reg));
}

}  // namespace zorp
