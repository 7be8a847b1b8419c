// Compares the rounding kernels of a library with the C library on all 2^32 floats:
//
//   check_rounding LIBRARY [FAMILY...]
//
// for ceil, floor, trunc, rint, nearbyint, round at width 16, or those named. Prints the number of
// deviations for each and fails if there are any. A NaN must keep its payload and turn quiet.
#include <dlfcn.h>
#include <immintrin.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

using Kernel = __m512 (*)(__m512);

struct Family {
  const char* name;
  float (*exact)(float);
};
constexpr Family kFamilies[] = {{"ceil", ceilf}, {"floor", floorf},         {"trunc", truncf},
                                {"rint", rintf}, {"nearbyint", nearbyintf}, {"round", roundf}};

uint32_t expected(const Family& family, uint32_t bits) {
  if ((bits & 0x7FFFFFFF) > 0x7F800000) return bits | 0x00400000;
  return std::bit_cast<uint32_t>(family.exact(std::bit_cast<float>(bits)));
}

uint64_t deviations(const Family& family, Kernel kernel) {
  uint64_t count = 0;
  alignas(64) uint32_t x[16], y[16];
  for (uint64_t first = 0; first < uint64_t{1} << 32; first += 16) {
    for (int i = 0; i < 16; ++i) x[i] = uint32_t(first + i);
    _mm512_store_ps(y, kernel(_mm512_load_ps(x)));
    for (int i = 0; i < 16; ++i) count += y[i] != expected(family, x[i]);
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  void* library = argc < 2 ? nullptr : dlopen(argv[1], RTLD_NOW);
  if (!library) {
    std::fprintf(stderr, "usage: check_rounding LIBRARY [FAMILY...]\n");
    return 2;
  }
  bool failed = false;
  for (const Family& family : kFamilies) {
    bool wanted = argc == 2;
    for (int i = 2; i < argc; ++i) wanted = wanted || family.name == std::string(argv[i]);
    if (!wanted) continue;
    const std::string symbol = "__zorp_z1_" + std::string(family.name) + "f16";
    const auto kernel = reinterpret_cast<Kernel>(dlsym(library, symbol.c_str()));
    if (!kernel) {
      std::fprintf(stderr, "the library has no %s\n", symbol.c_str());
      return 2;
    }
    const uint64_t count = deviations(family, kernel);
    std::printf("%s: %llu of 2^32 deviate\n", family.name, static_cast<unsigned long long>(count));
    failed = failed || count != 0;
  }
  return failed;
}
