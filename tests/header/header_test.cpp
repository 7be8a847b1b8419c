// Calls the kernels of one element type through the public header. Each line of the generated list
// is a check of one kernel: its lanes have the bits that the kernel of width 1 gives.
#include <zorp_z1.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <tuple>
#include <type_traits>

namespace {

constexpr int kMaxLanes = 32;

int faults = 0;

/// Vectors of width 1 that travel in a whole register hold a half.
template <class T>
inline constexpr std::size_t lane_bytes = sizeof(T) == 16 ? 2 : sizeof(T);

/// The parts of a kernel's result: one vector or two.
template <class R>
auto parts(const R& result) {
  struct Parts {
    const void *first, *second;
    std::size_t bytes;
  };
  if constexpr (requires { result.sin; })
    return Parts{&result.sin, &result.cos, lane_bytes<decltype(result.sin)>};
  else if constexpr (requires { result.quot; })
    return Parts{&result.quot, &result.rem, lane_bytes<decltype(result.quot)>};
  else
    return Parts{&result, nullptr, lane_bytes<R>};
}

std::uint64_t random_bits() {
  static std::uint64_t state = 0x9E3779B97F4A7C15;
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return state;
}

/// Vectors in memory, one lane after the other: operands, and what goes through a pointer.
struct Images {
  alignas(64) unsigned char operand[3][kMaxLanes * 8];
  alignas(64) unsigned char second[kMaxLanes * 8];
};

/// Lanes that are ordinary for most functions, with some that are not; also beyond the width.
template <class Lane>
void fill(unsigned char* image) {
  for (int i = 0; i < kMaxLanes; ++i, image += lane_bytes<Lane>) {
    const std::uint64_t bits = random_bits();
    const bool special = bits % 61 == 0;
    const double value = (double(bits % 4096) - 2000) / 256;
    if constexpr (std::is_floating_point_v<Lane>) {
      const Lane lane = special ? Lane(__builtin_inf()) : Lane(value);
      std::memcpy(image, &lane, sizeof lane);
    } else if constexpr (std::is_integral_v<Lane>) {
      const Lane lane = special ? Lane(bits) : Lane(std::int64_t(value));
      std::memcpy(image, &lane, sizeof lane);
    } else {
      // A half of magnitude 2^-7 to 2^8, or an infinity.
      const std::uint16_t magnitude = special ? 0x7C00 : 0x2000 + bits % 0x3C00;
      const std::uint16_t lane = magnitude | (bits >> 32 & 0x8000);
      std::memcpy(image, &lane, sizeof lane);
    }
  }
}

/// A kernel's operands, from images.
template <auto kernel>
struct Call;
template <class R, class... A, R (*kernel)(A...)>
struct Call<kernel> {
  using Arguments = std::tuple<A...>;
  /// Of a lane behind the pointer, if there is one.
  static constexpr std::size_t pointer_bytes =
      ((std::is_pointer_v<A> ? sizeof(std::remove_pointer_t<A>) : 0) + ... + 0);

  static void fill_operands(Images& images) {
    int index = 0;
    ((std::is_pointer_v<A> ? void() : fill<A>(images.operand[index++])), ...);
  }

  /// The vectors whose lane 0 is lane `first` of the images.
  static Arguments arguments(Images& images, int first) {
    int index = 0;
    return {argument<A>(images, index, first)...};
  }

  [[gnu::always_inline]] static R run(const Arguments& arguments) {
    return std::apply(kernel, arguments);
  }

 private:
  template <class T>
  static T argument(Images& images, int& index, int first) {
    if constexpr (std::is_pointer_v<T>) {
      return reinterpret_cast<T>(images.second) + first;
    } else {
      T vector;
      const std::size_t skipped = std::size_t(first) * lane_bytes<T>;
      const std::size_t size = std::min(sizeof vector, sizeof images.operand[0] - skipped);
      std::memcpy(&vector, images.operand[index++] + skipped, size);
      return vector;
    }
  }
};

void compare(const char* name, const char* what, int lane, const void* wide, const void* single,
             std::size_t bytes) {
  if (std::memcmp(static_cast<const char*>(wide) + std::size_t(lane) * bytes, single, bytes) == 0)
    return;
  ++faults;
  std::printf("%s: the %s of lane %d differs from that of width 1\n", name, what, lane);
}

template <int width, auto wide, auto single>
void check(const char* name) {
  static Images images, single_images;
  Call<single>::fill_operands(images);
  single_images = images;
  const auto result = Call<wide>::run(Call<wide>::arguments(images, 0));
  const auto all = parts(result);
  for (int lane = 0; lane < width; ++lane) {
    const auto one = Call<single>::run(Call<single>::arguments(single_images, lane));
    const auto expected = parts(one);
    compare(name, "first result", lane, all.first, expected.first, expected.bytes);
    if (expected.second)
      compare(name, "second result", lane, all.second, expected.second, expected.bytes);
  }
  if (std::memcmp(images.second, single_images.second, width * Call<single>::pointer_bytes) != 0) {
    ++faults;
    std::printf("%s: what went through the pointer differs from width 1\n", name);
  }
}

}  // namespace

int RUN_CHECKS();
int RUN_CHECKS() {
#include CHECKS
  if (faults) std::printf("%d faults\n", faults);
  return faults;
}
