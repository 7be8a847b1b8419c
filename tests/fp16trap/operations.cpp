#include "operations.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <utility>

#include "frame/half_emulated.h"

namespace fp16trap {
namespace {

namespace emulated = zorp::emulated;
using zorp::rd;
using zorp::rn;
using zorp::Rounding;
using zorp::ru;
using zorp::rz;

/// Calls f<mode>() for a mode known at run time only.
template <class Function>
void with_rounding(Rounding mode, Function f) {
  switch (mode) {
    case rd:
      return f.template operator()<rd>();
    case ru:
      return f.template operator()<ru>();
    case rz:
      return f.template operator()<rz>();
    default:
      return f.template operator()<rn>();
  }
}

/// Calls f<imm>() for an immediate below `count` known at run time only.
template <int count, class Function>
void with_immediate(int immediate, Function f) {
  [&]<int... imm>(std::integer_sequence<int, imm...>) {
    using Call = void (*)(Function&);
    static constexpr Call calls[] = {[](Function& g) { g.template operator()<imm>(); }...};
    calls[immediate](f);
  }
  (std::make_integer_sequence<int, count>());
}

// Registers as vectors.

__m256i part(const Register& r, int i) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(r.bytes) + i);
}
void set_part(Register& r, int i, __m256i v) {
  _mm256_store_si256(reinterpret_cast<__m256i*>(r.bytes) + i, v);
}
__m512i whole(const Register& r) { return _mm512_load_si512(r.bytes); }
__m256i low256(const Register& r) { return part(r, 0); }
__m128i low128(const Register& r) { return _mm256_castsi256_si128(part(r, 0)); }

/// A register whose low part is `v`; operations leave the rest at zero.
template <class Vector>
Register extended(Vector v) {
  Register r;
  std::memcpy(r.bytes, &v, sizeof v);
  return r;
}

// Adapters from operations on 16 halves to instructions. An operation is a lambda template over
// the rounding mode or the immediate.

template <auto operation>
void unary(Work& w) {
  with_rounding(w.rounding, [&w]<Rounding mode>() {
    for (int i : {0, 1}) {
      set_part(w.result, i, operation.template operator()<mode>(part(w.second, i)));
    }
  });
}

template <auto operation>
void binary(Work& w) {
  with_rounding(w.rounding, [&w]<Rounding mode>() {
    for (int i : {0, 1}) {
      set_part(w.result, i,
               operation.template operator()<mode>(part(w.first, i), part(w.second, i)));
    }
  });
}

template <auto operation>
void ternary(Work& w) {
  with_rounding(w.rounding, [&w]<Rounding mode>() {
    for (int i : {0, 1}) {
      set_part(
          w.result, i,
          operation.template operator()<mode>(part(w.old, i), part(w.first, i), part(w.second, i)));
    }
  });
}

/// a*b + c with the factors and the addend in the places that the instruction's digits say.
template <int digits, auto operation>
void fused(Work& w) {
  ternary<[]<Rounding mode>(__m256i old, __m256i first, __m256i second) {
    if constexpr (digits == 132) {
      return operation.template operator()<mode>(old, second, first);
    } else if constexpr (digits == 213) {
      return operation.template operator()<mode>(first, old, second);
    } else {
      return operation.template operator()<mode>(first, second, old);
    }
  }>(w);
}

template <auto operation>
void unary_immediate(Work& w) {
  with_immediate<16>(w.immediate & 15, [&w]<int imm>() {
    for (int i : {0, 1}) {
      set_part(w.result, i, operation.template operator()<imm>(part(w.second, i)));
    }
  });
}

/// Rounding to a multiple; here an immediate that asks for MXCSR's mode is resolved.
template <auto operation>
void round_immediate(Work& w) {
  constexpr int dynamic = 4, mode = 3;
  int immediate = w.immediate;
  if (immediate & dynamic) {
    immediate = (immediate & ~(dynamic | mode)) | static_cast<int>(w.dynamic);
  }
  with_immediate<256>(immediate, [&w]<int imm>() {
    for (int i : {0, 1}) {
      set_part(w.result, i, operation.template operator()<imm>(part(w.second, i)));
    }
  });
}

/// Between widths: `operation` takes and gives whole registers.
template <auto operation>
void convert(Work& w) {
  with_rounding(w.rounding, [&w]<Rounding mode>() {
    w.result = extended(operation.template operator()<mode>(w.second));
  });
}

// The operations.

constexpr auto add = []<Rounding mode>(__m256i a, __m256i b) { return emulated::add<mode>(a, b); };
constexpr auto sub = []<Rounding mode>(__m256i a, __m256i b) { return emulated::sub<mode>(a, b); };
constexpr auto mul = []<Rounding mode>(__m256i a, __m256i b) { return emulated::mul<mode>(a, b); };
constexpr auto div = []<Rounding mode>(__m256i a, __m256i b) { return emulated::div<mode>(a, b); };
constexpr auto min = []<Rounding>(__m256i a, __m256i b) { return emulated::min(a, b); };
constexpr auto max = []<Rounding>(__m256i a, __m256i b) { return emulated::max(a, b); };
constexpr auto scale = []<Rounding mode>(__m256i v, __m256i s) {
  return emulated::scale<mode>(v, s);
};
constexpr auto sqrt = []<Rounding mode>(__m256i v) { return emulated::sqrt<mode>(v); };
constexpr auto exponent = []<Rounding>(__m256i v) { return emulated::exponent(v); };
constexpr auto reciprocal = []<Rounding>(__m256i v) { return emulated::reciprocal(v); };
constexpr auto reciprocal_root = []<Rounding>(__m256i v) { return emulated::reciprocal_root(v); };
constexpr auto significand = []<int imm>(__m256i v) { return emulated::significand<imm>(v); };
constexpr auto round_scale = []<int imm>(__m256i v) { return emulated::round_scale<imm>(v); };
constexpr auto reduce = []<int imm>(__m256i v) { return emulated::reduce<imm>(v); };

constexpr auto madd = []<Rounding mode>(__m256i a, __m256i b, __m256i c) {
  return emulated::fma<mode>(a, b, c);
};
constexpr auto msub = []<Rounding mode>(__m256i a, __m256i b, __m256i c) {
  return emulated::fms<mode>(a, b, c);
};
constexpr auto nmadd = []<Rounding mode>(__m256i a, __m256i b, __m256i c) {
  return emulated::fnma<mode>(a, b, c);
};
constexpr auto nmsub = []<Rounding mode>(__m256i a, __m256i b, __m256i c) {
  return emulated::fnms<mode>(a, b, c);
};

constexpr __mmask16 even_lanes = 0x5555;

constexpr auto maddsub = []<Rounding mode>(__m256i a, __m256i b, __m256i c) {
  return _mm256_mask_mov_epi16(emulated::fma<mode>(a, b, c), even_lanes,
                               emulated::fms<mode>(a, b, c));
};
constexpr auto msubadd = []<Rounding mode>(__m256i a, __m256i b, __m256i c) {
  return _mm256_mask_mov_epi16(emulated::fms<mode>(a, b, c), even_lanes,
                               emulated::fma<mode>(a, b, c));
};

// Complex numbers: the real part in the even lane, the imaginary part in the odd one.

__m256i real_parts(__m256i v) {
  return _mm256_mask_mov_epi16(_mm256_slli_epi32(v, 16), even_lanes, v);
}
__m256i imaginary_parts(__m256i v) {
  return _mm256_mask_mov_epi16(v, even_lanes, _mm256_srli_epi32(v, 16));
}
__m256i swap_parts(__m256i v) { return _mm256_rol_epi32(v, 16); }

/// Adds i*a*Im(b), or with `conjugate` -i*a*Im(b), to a*Re(b) (+ c).
template <Rounding mode, bool conjugate>
__m256i add_imaginary(__m256i a, __m256i b, __m256i sum) {
  const __m256i x = swap_parts(a), y = imaginary_parts(b);
  const __m256i plus = emulated::fma<mode>(x, y, sum), minus = emulated::fnma<mode>(x, y, sum);
  return conjugate ? _mm256_mask_mov_epi16(minus, even_lanes, plus)
                   : _mm256_mask_mov_epi16(plus, even_lanes, minus);
}

template <bool conjugate>
constexpr auto complex_mul = []<Rounding mode>(__m256i a, __m256i b) {
  return add_imaginary<mode, conjugate>(a, b, emulated::mul<mode>(a, real_parts(b)));
};
template <bool conjugate>
constexpr auto complex_madd = []<Rounding mode>(__m256i old, __m256i a, __m256i b) {
  return add_imaginary<mode, conjugate>(a, b, emulated::fma<mode>(a, real_parts(b), old));
};

// Tests.

void compare(Work& w) {
  with_immediate<32>(w.immediate & 31, [&w]<int predicate>() {
    const auto lanes = [&w](int i) {
      return uint64_t{emulated::compare<predicate>(part(w.first, i), part(w.second, i))};
    };
    w.mask_result = lanes(0) | lanes(1) << 16;
  });
}

void classify(Work& w) {
  with_immediate<256>(w.immediate, [&w]<int imm>() {
    const auto lanes = [&w](int i) { return uint64_t{emulated::classify<imm>(part(w.second, i))}; };
    w.mask_result = lanes(0) | lanes(1) << 16;
  });
}

/// The flags that vcomish and vucomish set: zero, parity and carry.
void order(Work& w) {
  constexpr uint64_t carry = 1, parity = 4, zero = 64;
  const __m256i a = low256(w.old), b = low256(w.second);
  if (emulated::compare<_CMP_UNORD_Q>(a, b) & 1) {
    w.flags_result = zero | parity | carry;
  } else if (emulated::compare<_CMP_LT_OQ>(a, b) & 1) {
    w.flags_result = carry;
  } else {
    w.flags_result = emulated::compare<_CMP_EQ_OQ>(a, b) & 1 ? zero : 0;
  }
}

// Conversions.

__m512i bits(__m512 v) { return _mm512_castps_si512(v); }
__m512i bits(__m512d v) { return _mm512_castpd_si512(v); }

constexpr auto to_float = []<Rounding>(const Register& v) {
  return bits(emulated::widen(low256(v)));
};
constexpr auto to_double = []<Rounding>(const Register& v) {
  return bits(emulated::widen_double(low128(v)));
};
constexpr auto from_float = []<Rounding mode>(const Register& v) {
  return emulated::narrow<mode>(_mm512_castsi512_ps(whole(v)));
};
constexpr auto from_double = []<Rounding mode>(const Register& v) {
  return emulated::narrow<mode>(_mm512_castsi512_pd(whole(v)));
};
constexpr auto to_int32 = []<Rounding mode>(const Register& v) {
  return emulated::to_int32<mode>(low256(v));
};
constexpr auto to_uint32 = []<Rounding mode>(const Register& v) {
  return emulated::to_uint32<mode>(low256(v));
};
constexpr auto to_int64 = []<Rounding mode>(const Register& v) {
  return emulated::to_int64<mode>(low128(v));
};
constexpr auto to_uint64 = []<Rounding mode>(const Register& v) {
  return emulated::to_uint64<mode>(low128(v));
};
constexpr auto from_int32 = []<Rounding mode>(const Register& v) {
  return emulated::from_int32<mode>(whole(v));
};
constexpr auto from_uint32 = []<Rounding mode>(const Register& v) {
  return emulated::from_uint32<mode>(whole(v));
};
constexpr auto from_int64 = []<Rounding mode>(const Register& v) {
  return emulated::from_int64<mode>(whole(v));
};
constexpr auto from_uint64 = []<Rounding mode>(const Register& v) {
  return emulated::from_uint64<mode>(whole(v));
};
constexpr auto to_int16 = []<Rounding mode>(__m256i v) { return emulated::to_int16<mode>(v); };
constexpr auto to_uint16 = []<Rounding mode>(__m256i v) { return emulated::to_uint16<mode>(v); };
constexpr auto from_int16 = []<Rounding mode>(__m256i v) { return emulated::from_int16<mode>(v); };
constexpr auto from_uint16 = []<Rounding mode>(__m256i v) {
  return emulated::from_uint16<mode>(v);
};

/// The same operation towards zero, whatever the mode.
template <auto operation>
constexpr auto truncating =
    []<Rounding>(const auto& v) { return operation.template operator()<rz>(v); };

// The encodings.

using enum Form;
constexpr int8_t either = -1;

/// The fused operations in one order of operands: their opcodes follow `opcode`.
template <int digits>
constexpr std::array<Instruction, 10> fused_instructions(uint8_t opcode) {
  const auto at = [opcode](Form form, int offset, void (*compute)(Work&)) {
    return Instruction{form, map_6, p66, 0, uint8_t(opcode + offset), 2, 2, compute};
  };
  return {at(packed, 6, fused<digits, maddsub>), at(packed, 7, fused<digits, msubadd>),
          at(packed, 8, fused<digits, madd>),    at(scalar_fused, 9, fused<digits, madd>),
          at(packed, 10, fused<digits, msub>),   at(scalar_fused, 11, fused<digits, msub>),
          at(packed, 12, fused<digits, nmadd>),  at(scalar_fused, 13, fused<digits, nmadd>),
          at(packed, 14, fused<digits, nmsub>),  at(scalar_fused, 15, fused<digits, nmsub>)};
}
constexpr std::array fused_orders = {fused_instructions<132>(0x90), fused_instructions<213>(0xa0),
                                     fused_instructions<231>(0xb0)};

constexpr Instruction instructions[] = {
    // Arithmetic.
    {packed, map_5, np, 0, 0x51, 2, 2, unary<sqrt>},
    {scalar, map_5, pf3, 0, 0x51, 2, 2, unary<sqrt>},
    {packed, map_5, np, 0, 0x58, 2, 2, binary<add>},
    {scalar, map_5, pf3, 0, 0x58, 2, 2, binary<add>},
    {packed, map_5, np, 0, 0x59, 2, 2, binary<mul>},
    {scalar, map_5, pf3, 0, 0x59, 2, 2, binary<mul>},
    {packed, map_5, np, 0, 0x5c, 2, 2, binary<sub>},
    {scalar, map_5, pf3, 0, 0x5c, 2, 2, binary<sub>},
    {packed, map_5, np, 0, 0x5d, 2, 2, binary<min>},
    {scalar, map_5, pf3, 0, 0x5d, 2, 2, binary<min>},
    {packed, map_5, np, 0, 0x5e, 2, 2, binary<div>},
    {scalar, map_5, pf3, 0, 0x5e, 2, 2, binary<div>},
    {packed, map_5, np, 0, 0x5f, 2, 2, binary<max>},
    {scalar, map_5, pf3, 0, 0x5f, 2, 2, binary<max>},
    {packed, map_6, p66, 0, 0x2c, 2, 2, binary<scale>},
    {scalar, map_6, p66, 0, 0x2d, 2, 2, binary<scale>},
    {packed, map_6, p66, 0, 0x42, 2, 2, unary<exponent>},
    {scalar, map_6, p66, 0, 0x43, 2, 2, unary<exponent>},
    {packed, map_6, p66, 0, 0x4c, 2, 2, unary<reciprocal>},
    {scalar, map_6, p66, 0, 0x4d, 2, 2, unary<reciprocal>},
    {packed, map_6, p66, 0, 0x4e, 2, 2, unary<reciprocal_root>},
    {scalar, map_6, p66, 0, 0x4f, 2, 2, unary<reciprocal_root>},
    {packed, map_3a, np, 0, 0x08, 2, 2, round_immediate<round_scale>},
    {scalar, map_3a, np, 0, 0x0a, 2, 2, round_immediate<round_scale>},
    {packed, map_3a, np, 0, 0x26, 2, 2, unary_immediate<significand>},
    {scalar, map_3a, np, 0, 0x27, 2, 2, unary_immediate<significand>},
    {packed, map_3a, np, 0, 0x56, 2, 2, round_immediate<reduce>},
    {scalar, map_3a, np, 0, 0x57, 2, 2, round_immediate<reduce>},
    // Complex numbers.
    {packed, map_6, pf3, 0, 0x56, 4, 4, ternary<complex_madd<false>>},
    {scalar, map_6, pf3, 0, 0x57, 4, 4, ternary<complex_madd<false>>},
    {packed, map_6, pf2, 0, 0x56, 4, 4, ternary<complex_madd<true>>},
    {scalar, map_6, pf2, 0, 0x57, 4, 4, ternary<complex_madd<true>>},
    {packed, map_6, pf3, 0, 0xd6, 4, 4, binary<complex_mul<false>>},
    {scalar, map_6, pf3, 0, 0xd7, 4, 4, binary<complex_mul<false>>},
    {packed, map_6, pf2, 0, 0xd6, 4, 4, binary<complex_mul<true>>},
    {scalar, map_6, pf2, 0, 0xd7, 4, 4, binary<complex_mul<true>>},
    // Tests.
    {packed_test, map_3a, np, 0, 0xc2, 2, 2, compare},
    {scalar_test, map_3a, pf3, 0, 0xc2, 2, 2, compare},
    {packed_test, map_3a, np, 0, 0x66, 2, 2, classify},
    {scalar_test, map_3a, np, 0, 0x67, 2, 2, classify},
    {flags, map_5, np, 0, 0x2e, 2, 2, order},
    {flags, map_5, np, 0, 0x2f, 2, 2, order},
    // Floating-point conversions.
    {packed, map_6, p66, 0, 0x13, 2, 4, convert<to_float>},
    {scalar, map_6, np, 0, 0x13, 2, 4, convert<to_float>},
    {packed, map_5, p66, 0, 0x1d, 4, 2, convert<from_float>},
    {scalar, map_5, np, 0, 0x1d, 4, 2, convert<from_float>},
    {packed, map_5, np, 0, 0x5a, 2, 8, convert<to_double>},
    {scalar, map_5, pf3, 0, 0x5a, 2, 8, convert<to_double>},
    {packed, map_5, p66, 1, 0x5a, 8, 2, convert<from_double>},
    {scalar, map_5, pf2, 1, 0x5a, 8, 2, convert<from_double>},
    // Integer conversions.
    {packed, map_5, p66, 0, 0x7d, 2, 2, unary<to_int16>},
    {packed, map_5, np, 0, 0x7d, 2, 2, unary<to_uint16>},
    {packed, map_5, p66, 0, 0x7c, 2, 2, unary<truncating<to_int16>>},
    {packed, map_5, np, 0, 0x7c, 2, 2, unary<truncating<to_uint16>>},
    {packed, map_5, pf3, 0, 0x7d, 2, 2, unary<from_int16>},
    {packed, map_5, pf2, 0, 0x7d, 2, 2, unary<from_uint16>},
    {packed, map_5, p66, 0, 0x5b, 2, 4, convert<to_int32>},
    {packed, map_5, np, 0, 0x79, 2, 4, convert<to_uint32>},
    {packed, map_5, pf3, 0, 0x5b, 2, 4, convert<truncating<to_int32>>},
    {packed, map_5, np, 0, 0x78, 2, 4, convert<truncating<to_uint32>>},
    {packed, map_5, np, 0, 0x5b, 4, 2, convert<from_int32>},
    {packed, map_5, pf2, 0, 0x7a, 4, 2, convert<from_uint32>},
    {packed, map_5, p66, 0, 0x7b, 2, 8, convert<to_int64>},
    {packed, map_5, p66, 0, 0x79, 2, 8, convert<to_uint64>},
    {packed, map_5, p66, 0, 0x7a, 2, 8, convert<truncating<to_int64>>},
    {packed, map_5, p66, 0, 0x78, 2, 8, convert<truncating<to_uint64>>},
    {packed, map_5, np, 1, 0x5b, 8, 2, convert<from_int64>},
    {packed, map_5, pf2, 1, 0x7a, 8, 2, convert<from_uint64>},
    {to_general, map_5, pf3, 0, 0x2d, 2, 4, convert<to_int32>},
    {to_general, map_5, pf3, 1, 0x2d, 2, 8, convert<to_int64>},
    {to_general, map_5, pf3, 0, 0x79, 2, 4, convert<to_uint32>},
    {to_general, map_5, pf3, 1, 0x79, 2, 8, convert<to_uint64>},
    {to_general, map_5, pf3, 0, 0x2c, 2, 4, convert<truncating<to_int32>>},
    {to_general, map_5, pf3, 1, 0x2c, 2, 8, convert<truncating<to_int64>>},
    {to_general, map_5, pf3, 0, 0x78, 2, 4, convert<truncating<to_uint32>>},
    {to_general, map_5, pf3, 1, 0x78, 2, 8, convert<truncating<to_uint64>>},
    {from_general, map_5, pf3, 0, 0x2a, 4, 2, convert<from_int32>},
    {from_general, map_5, pf3, 1, 0x2a, 8, 2, convert<from_int64>},
    {from_general, map_5, pf3, 0, 0x7b, 4, 2, convert<from_uint32>},
    {from_general, map_5, pf3, 1, 0x7b, 8, 2, convert<from_uint64>},
    // Moves.
    {load, map_5, pf3, 0, 0x10, 2, 2, nullptr},
    {store, map_5, pf3, 0, 0x11, 2, 2, nullptr},
    {word_in, map_5, p66, either, 0x6e, 2, 2, nullptr},
    {word_out, map_5, p66, either, 0x7e, 2, 2, nullptr},
};

}  // namespace

const Instruction* find_instruction(const Evex& code) {
  const auto fits = [&code](const Instruction& i) {
    return i.map == code.map && i.opcode == code.opcode && i.prefix == code.prefix &&
           (i.w == either || i.w == code.w);
  };
  for (const auto& order : fused_orders)
    if (const auto found = std::ranges::find_if(order, fits); found != order.end()) return found;
  const auto found = std::ranges::find_if(instructions, fits);
  return found == std::end(instructions) ? nullptr : found;
}

}  // namespace fp16trap
