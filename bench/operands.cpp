#include "bench/operands.h"

#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <random>
#include <string_view>
#include <vector>

namespace zorp::bench {
namespace {

using grammar::Element;
using grammar::Form;
using grammar::Kernel;
using grammar::Lane;

struct Range {
  double low, high;
};

struct Domain {
  std::string_view family;
  Range first, second = first;
};

constexpr Range kDefault = {-10, 10};

// Where the default doesn't suit.
constexpr Domain kDomains[] = {
    {"acos", {-0.99, 0.99}},
    {"acosh", {1.5, 100}},
    {"acospi", {-0.99, 0.99}},
    {"asin", {-0.99, 0.99}},
    {"asinpi", {-0.99, 0.99}},
    {"atanh", {-0.9, 0.9}},
    {"div", {1, 10}},
    {"erf", {-3, 3}},
    {"erfc", {-2, 3}},
    {"exp10", {-4, 4}},
    {"fmod", {10, 1000}, {1, 10}},
    {"idiv", {-1e9, 1e9}, {1, 1e4}},
    {"idivrem", {-1e9, 1e9}, {1, 1e4}},
    {"inv", {0.1, 10}},
    {"irem", {-1e9, 1e9}, {1, 1e4}},
    {"lgamma", {0.5, 20}},
    {"lgammar", {0.5, 20}},
    {"log", {0.01, 1000}},
    {"log10", {0.01, 1000}},
    {"log1p", {-0.9, 100}},
    {"log2", {0.01, 1000}},
    {"nan", {0, 500}},
    {"pow", {0.1, 10}, {-4, 4}},
    {"pown", {0.5, 2}, {-10, 10}},
    {"powr", {0.1, 10}, {-4, 4}},
    {"rcbrt", {0.1, 100}},
    {"remainder", {10, 1000}, {1, 10}},
    {"remquo", {10, 1000}, {1, 10}},
    {"rootn", {0.1, 100}, {2, 10}},
    {"rsqrt", {0.1, 100}},
    {"sinh", {-8, 8}},
    {"cosh", {-8, 8}},
    {"sqrt", {0.1, 100}},
    {"tgamma", {0.5, 7}},
    {"udiv", {0, 4e9}, {1, 1e4}},
    {"udivrem", {0, 4e9}, {1, 1e4}},
    {"urem", {0, 4e9}, {1, 1e4}},
};

Range range_of(const Kernel& kernel, size_t operand) {
  const std::string& family = kernel.family->name;
  const auto domain = std::find_if(std::begin(kDomains), std::end(kDomains),
                                   [&](const Domain& d) { return d.family == family; });
  if (domain != std::end(kDomains)) return operand == 0 ? domain->first : domain->second;
  if (kernel.family->form == Form::conversion) {
    // Unsigned lanes, on either side, know no negative value.
    const Lane lane = kernel.family->from ? kernel.operands()[0] : kernel.results()[0];
    return {lane == Lane::u32 || lane == Lane::u64 ? 0.0 : -1000.0, 1000};
  }
  return kDefault;
}

/// What the trigonometric functions are measured on: ZORP_ANGLES in the environment asks for large
/// ones, which take a second path: in all lanes ("large") or in the first of every vector
/// ("mixed").
bool is_large_angle(const Kernel& kernel, int index) {
  constexpr std::string_view families[] = {"sin", "cos", "tan", "sincos", "sincosreg"};
  const char* angles = std::getenv("ZORP_ANGLES");
  if (!angles || std::count(std::begin(families), std::end(families), kernel.family->name) == 0)
    return false;
  return std::string_view(angles) == "large" || index % kernel.width == 0;
}
/// A number from 10^8 to 10^30 (half: to 6 x 10^4), even over the exponents.
double large_angle(const Kernel& kernel, double zero_to_one) {
  const bool is_half = kernel.element == Element::f16;
  return std::pow(10, is_half ? 3 + 1.8 * zero_to_one : 8 + 22 * zero_to_one);
}

template <class T>
void put(std::byte* to, T value) {
  std::memcpy(to, &value, sizeof value);
}

void put_lane(std::byte* to, Lane lane, double value) {
  switch (lane) {
    case Lane::f64:
      return put(to, value);
    case Lane::f32:
      return put(to, float(value));
    case Lane::f16:
      return put(to, uint16_t(_cvtss_sh(float(value), _MM_FROUND_TO_NEAREST_INT)));
    case Lane::i16:
      return put(to, int16_t(std::lround(value)));
    case Lane::i32:
      return put(to, int32_t(std::lround(value)));
    case Lane::u32:
      return put(to, uint32_t(std::llround(value)));
    case Lane::i64:
    case Lane::u64:
      return put(to, int64_t(std::llround(value)));
  }
}

}  // namespace

Buffers::Buffers(const Kernel& kernel) {
  std::mt19937_64 random(1);
  const std::vector<Lane> lanes = kernel.operands();
  for (size_t i = 0; i < lanes.size(); ++i) {
    const Range range = range_of(kernel, i);
    std::uniform_real_distribution<double> uniform(range.low, range.high);
    const int bytes = grammar::lane_bytes(lanes[i]);
    for (int j = 0; j < kOperands; ++j) {
      double value = uniform(random);
      if (is_large_angle(kernel, j))
        value = large_angle(kernel, (value - range.low) / (range.high - range.low));
      put_lane(operand[i] + j * bytes, lanes[i], value);
    }
  }
}

}  // namespace zorp::bench
