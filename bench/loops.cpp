#include "bench/loops.h"

#include <immintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace zorp::bench {
namespace {

using grammar::Element;
using grammar::Form;
using grammar::Kernel;
using grammar::Lane;

/// A half lane: its encoding, in a vector register even at width 1.
struct Half {
  uint16_t encoding;
};

// ---- Registers ---------------------------------------------------------------------------------

template <int bytes>
struct VectorRegister {
  using type = __m128i;
};
template <>
struct VectorRegister<32> {
  using type = __m256i;
};
template <>
struct VectorRegister<64> {
  using type = __m512i;
};

template <class T, int width>
inline constexpr bool kInGeneralRegister = width == 1 && std::is_integral_v<T>;

/// The register that holds `width` lanes of T. The convention tells vectors apart by size alone.
template <class T, int width>
using Register = std::conditional_t<kInGeneralRegister<T, width>, T,
                                    typename VectorRegister<sizeof(T) * width>::type>;

template <class T, int width>
inline Register<T, width> load(const void* from) {
  Register<T, width> r{};
  if constexpr (kInGeneralRegister<T, width> || sizeof r == sizeof(T) * width)
    std::memcpy(&r, from, sizeof r);
  else if constexpr (sizeof(T) * width == 8)
    r = _mm_loadu_si64(from);
  else if constexpr (sizeof(T) * width == 4)
    r = _mm_loadu_si32(from);
  else
    r = _mm_loadu_si16(from);
  return r;
}

template <class T, int width>
inline void store(void* to, Register<T, width> r) {
  std::memcpy(to, &r, sizeof(T) * width);
}

// ---- Ways to call ------------------------------------------------------------------------------

// `First` and `Second` are the lanes of the results. Each way returns the first result, but for
// InMemory, and puts the second where `second` points.

template <int width, class First, class Second>
struct InRegister {
  static constexpr int second_bytes = sizeof(Second);
  template <class... R>
  static Register<First, width> call(Function function, std::byte*, R... operands) {
    return reinterpret_cast<Register<First, width> (*)(R...)>(function)(operands...);
  }
};

template <int width, class First, class Second>
struct ThroughPointer {
  static constexpr int second_bytes = sizeof(Second);
  template <class... R>
  static Register<First, width> call(Function function, std::byte* second, R... operands) {
    using Called = Register<First, width> (*)(Second*, R...);
    return reinterpret_cast<Called>(function)(reinterpret_cast<Second*>(second), operands...);
  }
};

/// C knows no second result in a register. Operands and results are of one type.
template <int width, class First, class Second>
struct InTwoRegisters {
  static constexpr int second_bytes = sizeof(Second);
  template <class R>
  static R call(Function function, std::byte* second, R x, R y = R{}) {
    register R first asm("xmm0") = x;
    register R other asm("xmm1") = y;
    asm volatile("call *%[function]"
                 : "+v"(first), "+v"(other)
                 : [function] "r"(function)
                 : "rax", "rcx", "rdx", "r8", "r9", "r10", "r11", "xmm2", "xmm3", "xmm4", "xmm5",
                   "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12", "xmm13", "xmm14",
                   "xmm15", "k1", "k2", "k3", "cc", "memory");
    store<Second, width>(second, other);
    return first;
  }
};

template <int width, class First, class Second>
struct InMemory {
  static constexpr int second_bytes = sizeof(First) + sizeof(Second);
  template <class... R>
  static void call(Function function, std::byte* second, R... operands) {
    reinterpret_cast<void (*)(std::byte*, R...)>(function)(second, operands...);
  }
};

// ---- Loops -------------------------------------------------------------------------------------

template <class T, int width>
inline Register<T, width> load_at(const std::byte* array, int i) {
  return load<T, width>(array + sizeof(T) * i);
}

template <class Call, int width, class First, class... Operands, size_t... I>
void throughput(Function function, Buffers& b, std::index_sequence<I...>) {
  for (int i = 0; i < kOperands; i += width) {
    const auto call = [&] {
      return Call::call(function, b.second + Call::second_bytes * i,
                        load_at<Operands, width>(b.operand[I], i)...);
    };
    if constexpr (std::is_void_v<decltype(call())>)
      call();
    else
      store<First, width>(b.result + sizeof(First) * i, call());
  }
}

template <class Call, int width, class X, class... Operands, size_t... I>
void latency(Function function, Buffers& b, std::index_sequence<I...>) {
  // The next operand takes no bit of the result, but the processor can't know.
  Register<X, width> zero{}, result{};
  if constexpr (kInGeneralRegister<X, width>)
    asm volatile("" : "+r"(zero));
  else
    asm volatile("" : "+v"(zero));
  for (int i = 0; i < kOperands; i += width)
    result = Call::call(function, b.second + Call::second_bytes * i,
                        load_at<X, width>(b.operand[0], i) | (result & zero),
                        load_at<Operands, width>(b.operand[I + 1], i)...);
  store<X, width>(b.result, result);
}

template <int width, class First, class Second, class X, class... Operands>
Loop loop(Results results, Measure measure) {
  const auto choose = [&]<class Call>() -> Loop {
    if (measure == Measure::throughput)
      return [](Function function, Buffers& b) {
        throughput<Call, width, First, X, Operands...>(
            function, b, std::make_index_sequence<1 + sizeof...(Operands)>());
      };
    if constexpr (std::is_same_v<Register<First, width>, Register<X, width>> &&
                  !std::is_same_v<Call, InMemory<width, First, Second>>)
      return [](Function function, Buffers& b) {
        latency<Call, width, X, Operands...>(function, b,
                                             std::make_index_sequence<sizeof...(Operands)>());
      };
    return nullptr;
  };
  switch (results) {
    case Results::in_register:
      return choose.template operator()<InRegister<width, First, Second>>();
    case Results::through_pointer:
      return choose.template operator()<ThroughPointer<width, First, Second>>();
    case Results::in_two_registers:
      if constexpr (sizeof...(Operands) < 2 && std::is_same_v<First, X> &&
                    std::is_same_v<Second, X> && (std::is_same_v<Operands, X> && ...) &&
                    !kInGeneralRegister<X, width>)
        return choose.template operator()<InTwoRegisters<width, First, Second>>();
      return nullptr;
    case Results::in_memory:
      return choose.template operator()<InMemory<width, First, Second>>();
  }
  return nullptr;
}

/// Calls f with a value of the lane type; the convention doesn't know signs of integers.
template <class F>
Loop with_lane(Lane lane, F f) {
  switch (lane) {
    case Lane::f64:
      return f(double());
    case Lane::f32:
      return f(float());
    case Lane::f16:
      return f(Half());
    case Lane::i16:
      return f(int16_t());
    case Lane::i32:
    case Lane::u32:
      return f(int32_t());
    case Lane::i64:
    case Lane::u64:
      return f(int64_t());
  }
  return nullptr;
}

template <int width>
Loop of_width(const Kernel& kernel, Results results, Measure measure) {
  return with_lane(kernel.operands()[0], [&]<class X>(X) -> Loop {
    if constexpr (sizeof(X) * width <= 64) {
      const auto with = [&]<class First, class Second, class... Operands>() {
        return loop<width, First, Second, X, Operands...>(results, measure);
      };
      switch (kernel.family->form) {
        case Form::unary:
        case Form::element_pointer:
        case Form::two_results:
          return with.template operator()<X, X>();
        case Form::binary:
        case Form::integer_binary:
          return with.template operator()<X, X, X>();
        case Form::integer_divrem:
          if constexpr (width == 1) return with.template operator()<int64_t, X, X>();
          return with.template operator()<X, X, X>();
        case Form::ternary:
          return with.template operator()<X, X, X, X>();
        case Form::with_integer:
          if constexpr (4 * width <= 64) return with.template operator()<X, X, int32_t>();
          return nullptr;
        case Form::integer_pointer:
          return with.template operator()<X, int32_t>();
        case Form::quotient_pointer:
          return with.template operator()<X, int32_t, X>();
        case Form::integer_result:
        case Form::from_payload:
        case Form::conversion:
          return with_lane(kernel.results()[0], [&]<class First>(First) -> Loop {
            if constexpr (sizeof(First) * width <= 64)
              return with.template operator()<First, First>();
            return nullptr;
          });
      }
    }
    return nullptr;
  });
}

}  // namespace

Results conventional_results(const Kernel& kernel) {
  if (kernel.pointer()) return Results::through_pointer;
  // At width 1, quotient and remainder share a general register.
  if (kernel.family->form == Form::integer_divrem && kernel.width == 1) return Results::in_register;
  return kernel.results().size() > 1 ? Results::in_two_registers : Results::in_register;
}

Loop find_loop(const Kernel& kernel, Results results, Measure measure) {
  switch (kernel.width) {
    case 1:
      return of_width<1>(kernel, results, measure);
    case 8:
      return of_width<8>(kernel, results, measure);
    case 16:
      return of_width<16>(kernel, results, measure);
    case 32:
      return of_width<32>(kernel, results, measure);
    default:
      return nullptr;
  }
}

int full_width(const Kernel& kernel) {
  int bytes = 0;
  for (const Lane lane : kernel.operands()) bytes = std::max(bytes, grammar::lane_bytes(lane));
  for (const Lane lane : kernel.results()) bytes = std::max(bytes, grammar::lane_bytes(lane));
  return 64 / bytes;
}

}  // namespace zorp::bench
