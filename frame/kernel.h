// The chief header of the frame: from a family's algorithm to a kernel.
//
// A family is a struct. Its static member template apply<tier>(operands...) computes all lanes and
// returns either a vector (straight code, or special lanes served inside), or an Outcome: one or
// two vectors and the mask of lanes that a rare routine must serve. A family may name the value
// that stands in unused lanes (`filler`, a function of the element type). A family without apply
// has no fast path: its rare routine serves every lane.
//
// The entry points themselves come from the grammar of the exported names (export/generate.cpp).
#pragma once

#include "frame/boundary.h"

namespace zorp {

/// What a fast path returns when it can't serve every lane, or has two results.
template <class First, class Second = void>
struct Outcome {
  First first;
  Second second;
  Mask<First::lanes> special;
};
template <class First>
struct Outcome<First, void> {
  First first;
  Mask<First::lanes> special;
};

/// Two results, every lane served.
template <class First, class Second>
struct Results {
  First first;
  Second second;
};

/// 0.75 lies inside the domain of every fast path but a few; 1 serves as an integer.
template <class T>
constexpr uint64_t default_filler() {
  if constexpr (same<T, double>) return 0x3FE8000000000000;
  if constexpr (same<T, float>) return 0x3F400000;
  if constexpr (same<T, half>) return 0x3A00;
  return 1;
}

namespace detail {
template <class Family, class T>
constexpr uint64_t filler() {
  if constexpr (requires { Family::template filler<T>(); })
    return Family::template filler<T>();
  else
    return default_filler<T>();
}

/// Emulated half arithmetic is long code: all widths up to 16 lanes share one copy of it.
template <class Family, Tier tier, class... V>
[[gnu::noinline, gnu::flatten]] auto apply_shared(V... operands) {
  return Family::template apply<tier>(operands...);
}

template <class Family, Tier tier, class... V>
[[gnu::always_inline]] inline auto apply(V... operands) {
  if constexpr (half_is_emulated && ((sizeof(typename V::Element) == 2) || ...))
    return apply_shared<Family, tier>(operands...);
  else
    return Family::template apply<tier>(operands...);
}

template <class T>
inline constexpr bool is_vector = requires {
  T::lanes;
};
template <class T>
inline constexpr bool has_second = requires(T t) {
  t.second;
};
template <class T>
inline constexpr bool has_special = requires(T t) {
  t.special;
};

/// A vector in memory for a callout, lane 0 at the lowest address. Left uninitialised.
template <class T, int width>
struct alignas(64) Image {
  Image() {}
  T lane[width == 3 ? 4 : width];
};

/// Calls the wrapper with pointers to lane 0 of the images and, unless it serves a single lane or
/// all lanes, with the mask of special lanes.
template <auto wrapper, class... Images>
[[gnu::always_inline]] inline void call_wrapper(uint32_t special, Images&... images) {
  if constexpr (requires { wrapper(images.lane..., special); })
    wrapper(images.lane..., special);
  else
    wrapper(images.lane...);
}

/// The two ways in which a kernel hands over its results. What a callout needs afterwards is kept
/// in a value of its own, so that the path without a callout needs no preserved register.
template <int width, class... Operands>
struct InRegisters {
  InRegisters across_call() const { return *this; }
  template <class... V>
  [[gnu::always_inline]] auto operator()(const V&... results) const {
    auto delivered = deliver<width>(results...);
    // g++ leaves upper halves to the caller where operands came in them.
    if constexpr (sizeof(delivered) <= 16 && ((sizeof(Operands) > 16) || ...))
      clean_upper_halves(delivered);
    return delivered;
  }
};
template <int width, class P>
struct SecondThroughPointer {
  P* pointer;
  SecondThroughPointer across_call() const {
    P* kept = pointer;
    asm volatile("" : "+r"(kept));
    return {kept};
  }
  template <class First, class Second>
  [[gnu::always_inline]] auto operator()(const First& first, const Second& second) const {
    store<width>(pointer, second);
    return deliver<width>(first);
  }
};

/// Has the special lanes served: operands and results go to images, the wrapper serves the lanes,
/// and what stands in the result images then is handed to `finish`.
template <auto wrapper, int width, class Finish, class First, class... V>
[[gnu::always_inline]] inline auto call_out(Finish finish, uint32_t special,
                                            const Outcome<First>& outcome, const V&... operands) {
  const Finish kept = finish.across_call();
  return [&](Image<typename V::Element, width>... images) __attribute__((always_inline)) {
    Image<typename First::Element, width> first;
    (store<width>(images.lane, operands), ...);
    store<width>(first.lane, outcome.first);
    call_wrapper<wrapper>(special, images..., first);
    return kept(load<width, First>(first.lane));
  }
  (Image<typename V::Element, width>()...);
}
template <auto wrapper, int width, class Finish, class First, class Second, class... V>
[[gnu::always_inline]] inline auto call_out(Finish finish, uint32_t special,
                                            const Outcome<First, Second>& outcome,
                                            const V&... operands) {
  const Finish kept = finish.across_call();
  return [&](Image<typename V::Element, width>... images) __attribute__((always_inline)) {
    Image<typename First::Element, width> first;
    Image<typename Second::Element, width> second;
    (store<width>(images.lane, operands), ...);
    store<width>(first.lane, outcome.first);
    store<width>(second.lane, outcome.second);
    call_wrapper<wrapper>(special, images..., first, second);
    return kept(load<width, First>(first.lane), load<width, Second>(second.lane));
  }
  (Image<typename V::Element, width>()...);
}

/// Computes all lanes, has special ones served, and hands the results to `finish`. The two ways out
/// stay apart, so that the frame of the callout stands behind its branch.
template <class Family, Tier tier, int width, auto wrapper, class Finish, class... V>
[[gnu::always_inline]] inline auto evaluate(Finish finish, const V&... x) {
  // Not const: g++ keeps read-only aggregates in memory.
  auto outcome = apply<Family, tier>(x...);
  if constexpr (has_special<decltype(outcome)>) {
    const uint32_t special = lane_bits<width>(outcome.special);
    if (special != 0) [[unlikely]]
      return call_out<wrapper, width>(finish, special, outcome, x...);
  }
  if constexpr (is_vector<decltype(outcome)>)
    return finish(outcome);
  else if constexpr (has_second<decltype(outcome)>)
    return finish(outcome.first, outcome.second);
  else
    return finish(outcome.first);
}
}  // namespace detail

/// A kernel with its results in registers.
template <class Family, Tier tier, int width, auto wrapper = nullptr, class... T>
[[gnu::always_inline]] inline auto kernel(Operand<T, width>... operands) {
  constexpr int N = lanes_held<width, T...>;
  return detail::evaluate<Family, tier, width, wrapper>(
      detail::InRegisters<width, Operand<T, width>...>{},
      receive<N>(operands, detail::filler<Family, T>())...);
}

/// A kernel that writes its second result through a pointer, once, on every path.
template <class Family, Tier tier, int width, auto wrapper = nullptr, class P, class... T>
[[gnu::always_inline]] inline auto kernel_storing(P* pointer, Operand<T, width>... operands) {
  constexpr int N = lanes_held<width, T...>;
  return detail::evaluate<Family, tier, width, wrapper>(
      detail::SecondThroughPointer<width, P>{pointer},
      receive<N>(operands, detail::filler<Family, T>())...);
}

/// A kernel without a fast path: the rare routine serves every lane. The result image starts as the
/// operand, a second one as zeros.
template <class Family, int width, auto wrapper, class T>
[[gnu::always_inline]] inline auto kernel_by_rare(Operand<T, width> operand) {
  constexpr int N = lanes_held<width, T>;
  const Vec<T, N> x = receive<N>(operand, detail::filler<Family, T>());
  return detail::call_out<wrapper, width>(detail::InRegisters<width>{}, 0,
                                          Outcome<Vec<T, N>>{x, {}}, x);
}
template <class Family, int width, auto wrapper, class P, class T>
[[gnu::always_inline]] inline auto kernel_by_rare_storing(P* pointer, Operand<T, width> operand) {
  constexpr int N = lanes_held<width, T>;
  const Vec<T, N> x = receive<N>(operand, detail::filler<Family, T>());
  return detail::call_out<wrapper, width>(
      detail::SecondThroughPointer<width, P>{pointer}, 0,
      Outcome<Vec<T, N>, Vec<P, N>>{x, constant<Vec<P, N>>(0), {}}, x);
}

/// The body of a callout wrapper: one call of the rare routine for each lane of the mask, in
/// ascending order. Every object of the library keeps off the preserved registers, so nothing is
/// saved.
template <auto rare, class... T>
[[gnu::always_inline]] inline void serve_lanes(uint32_t special, T*... lane) {
  for (int i = 0; i < 32; ++i)
    if (special >> i & 1) rare(lane + i...);
}

template <auto rare, int width, class... T>
[[gnu::always_inline]] inline void serve_all_lanes(T*... lane) {
  for (int i = 0; i < (width == 3 ? 4 : width); ++i) rare(lane + i...);
}

/// The kernel of three operands in memory on the stack. Its result goes to memory; the address
/// comes as the hidden argument of a function that returns a structure, and is returned like it.
struct StackVector {
  double lane[16];
};
template <class Family, Tier tier>
[[gnu::always_inline]] inline StackVector* kernel_on_stack(StackVector* result,
                                                           const StackVector& x,
                                                           const StackVector& y,
                                                           const StackVector& z) {
  using V = Vec<double, 16>;
  store<16>(result->lane, Family::template apply<tier>(load<16, V>(x.lane), load<16, V>(y.lane),
                                                       load<16, V>(z.lane)));
  return result;
}

}  // namespace zorp
