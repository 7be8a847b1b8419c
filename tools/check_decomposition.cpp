// Compares the decomposition kernels of a library with the C library on all 2^32 floats:
//
//   check_decomposition LIBRARY
//
// for frexp, ilogb, logb, modf, fract and nextafter (upward) at width 16. Prints the number of
// deviations for each and fails if there are any.
#include <dlfcn.h>
#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

/// A lane's result and what it writes through a pointer, as bits.
struct Results {
  uint32_t first, second = 0;
  bool operator==(const Results&) const = default;
};

uint32_t bits(float v) { return std::bit_cast<uint32_t>(v); }
float number(uint32_t v) { return std::bit_cast<float>(v); }
uint32_t quieted(float v) { return bits(v) | 0x00400000; }

Results frexp(float x) {
  if (!std::isfinite(x) || x == 0) return {bits(x), 0};
  int exponent;
  const float significand = std::frexp(x, &exponent);
  return {bits(significand), uint32_t(exponent)};
}
Results ilogb(float x) {
  if (!std::isfinite(x)) return {INT_MAX};
  return {x == 0 ? uint32_t(INT_MIN) : uint32_t(std::ilogb(x))};
}
Results logb(float x) { return {std::isnan(x) ? quieted(x) & 0x7FFFFFFF : bits(std::logb(x))}; }
Results modf(float x) {
  if (std::isnan(x)) return {quieted(x), quieted(x)};
  float integral;
  const float fraction = std::modf(x, &integral);
  return {bits(fraction), bits(integral)};
}
Results fract(float x) {
  if (std::isnan(x) || x == 0) return {bits(x), bits(x)};
  if (std::isinf(x)) return {bits(x) & 0x80000000, bits(x)};
  const float floor = std::floor(x);
  return {bits(std::min(x - floor, number(0x3F7FFFFF))), bits(floor)};
}
Results nextafter(float x) {
  return {std::isnan(x) ? quieted(x) : bits(std::nextafter(x, INFINITY))};
}

/// The kernels by their forms.
using Unary = __m512 (*)(__m512);
using Binary = __m512 (*)(__m512, __m512);
using Storing = __m512 (*)(uint32_t*, __m512);

struct Family {
  const char* name;
  enum { unary, storing, toward_infinity } form;
  Results (*exact)(float);
};
constexpr Family kFamilies[] = {
    {"frexp", Family::storing, frexp}, {"ilogb", Family::unary, ilogb},
    {"logb", Family::unary, logb},     {"modf", Family::storing, modf},
    {"fract", Family::storing, fract}, {"nextafter", Family::toward_infinity, nextafter}};

uint64_t deviations(const Family& family, void* kernel) {
  uint64_t count = 0;
  alignas(64) uint32_t x[16], first[16], second[16] = {};
  for (uint64_t start = 0; start < uint64_t{1} << 32; start += 16) {
    for (int i = 0; i < 16; ++i) x[i] = uint32_t(start + i);
    const __m512 operand = _mm512_load_ps(x);
    _mm512_store_ps(first, family.form == Family::unary ? Unary(kernel)(operand)
                           : family.form == Family::storing
                               ? Storing(kernel)(second, operand)
                               : Binary(kernel)(operand, _mm512_set1_ps(INFINITY)));
    for (int i = 0; i < 16; ++i)
      count += Results{first[i], second[i]} != family.exact(number(x[i]));
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  void* library = argc < 2 ? nullptr : dlopen(argv[1], RTLD_NOW);
  if (!library) {
    std::fprintf(stderr, "usage: check_decomposition LIBRARY\n");
    return 2;
  }
  bool failed = false;
  for (const Family& family : kFamilies) {
    const std::string symbol = "__zorp_z1_" + std::string(family.name) + "f16";
    void* const kernel = dlsym(library, symbol.c_str());
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
