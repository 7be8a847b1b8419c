// A kernel's algorithm on arrays, for the tables that zorp_generate writes of them.
#pragma once

#include <utility>

#include "frame/kernel.h"
#include "tests/portable/portable.h"

namespace zorp::portable {

template <class... T>
struct Types {};

/// Where a kernel's results go: to memory, lane 0 first.
template <int width, class... T>
struct IntoMemory {
  void* const* to;
  const IntoMemory& across_call() const { return *this; }
  template <class... V>
  [[gnu::always_inline]] int operator()(const V&... results) const {
    int i = 0;
    (store<width>(static_cast<T*>(to[i++]), results), ...);
    return i;
  }
};

/// What a lane's callout computes follows the caller's MXCSR.
struct CallersControl {
  CallersControl() { asm volatile("vldmxcsr %0" : : "m"(controls[4]) : "memory"); }
  ~CallersControl() { asm volatile("vldmxcsr %0" : : "m"(controls[0]) : "memory"); }
};

template <int N, int width, class Family, class T>
inline Vec<T, N> operand(const void* from) {
  Operand<T, width> arrived;
  __builtin_memcpy(&arrived, from, sizeof arrived);
  return receive<N>(arrived, zorp::detail::filler<Family, T>());
}

/// Every lane by its rare routine: the first result starts as the operand, a second one as zeros.
template <auto wrapper, int width, class First, class... Second, class Finish, class T, int N>
inline void by_rare_routine(const Finish& finish, Vec<T, N> x) {
  zorp::detail::call_out<wrapper, width>(
      finish, 0, Outcome<Vec<First, N>, Vec<Second, N>...>{x, constant<Vec<Second, N>>(0)..., {}},
      x);
}

/// One vector, from and to memory with room for full registers.
template <class Family, Tier tier, int width, bool by_rare, auto wrapper, class... Out, class... In,
          size_t... i>
[[gnu::flatten, gnu::noinline]] void evaluate_vector(Types<Out...>, Types<In...>,
                                                     std::index_sequence<i...>,
                                                     const void* const* from, void* const* to) {
  constexpr int N = lanes_held<width, In...>;
  const IntoMemory<width, Out...> finish{to};
  if constexpr (by_rare)
    by_rare_routine<wrapper, width, Out...>(finish, operand<N, width, Family, In>(from[i])...);
  else
    zorp::detail::evaluate<Family, tier, width, wrapper>(finish,
                                                         operand<N, width, Family, In>(from[i])...);
}

/// Room for a vector's registers.
struct alignas(64) Room {
  char bytes[128];
};

template <class Family, Tier tier, int width, bool by_rare, auto wrapper, class Out, class In>
struct Kernel;
template <class Family, Tier tier, int width, bool by_rare, auto wrapper, class... Out, class... In>
struct Kernel<Family, tier, width, by_rare, wrapper, Types<Out...>, Types<In...>> {
  static void evaluate(const void* const* operands, void* const* results, size_t count,
                       uint32_t mxcsr) {
    constexpr size_t operand_sizes[] = {sizeof(In)...}, result_sizes[] = {sizeof(Out)...};
    Room in[sizeof...(In)] = {}, out[sizeof...(Out)];
    const void* from[sizeof...(In)];
    void* to[sizeof...(Out)];
    for (size_t i = 0; i < sizeof...(In); ++i) from[i] = in[i].bytes;
    for (size_t i = 0; i < sizeof...(Out); ++i) to[i] = out[i].bytes;
    uint32_t saved;
    asm volatile("vstmxcsr %0" : "=m"(saved));
    set_caller_control(mxcsr);
    asm volatile("vldmxcsr %0" : : "m"(controls[0]) : "memory");
    for (size_t lane = 0; lane < count; lane += width) {
      const size_t now = count - lane < width ? count - lane : width;
      for (size_t i = 0; i < sizeof...(In); ++i)
        __builtin_memcpy(in[i].bytes,
                         static_cast<const char*>(operands[i]) + lane * operand_sizes[i],
                         now * operand_sizes[i]);
      evaluate_vector<Family, tier, width, by_rare, wrapper>(
          Types<Out...>{}, Types<In...>{}, std::index_sequence_for<In...>{}, from, to);
      for (size_t i = 0; i < sizeof...(Out); ++i)
        __builtin_memcpy(static_cast<char*>(results[i]) + lane * result_sizes[i], out[i].bytes,
                         now * result_sizes[i]);
    }
    asm volatile("vldmxcsr %0" : : "m"(saved) : "memory");
  }
};

}  // namespace zorp::portable
