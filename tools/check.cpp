// Checks kernels of 32-bit lanes on all operands, where the tests take samples:
//
//   zorp_check LIBRARY [--every N] [NAME...]
//
// LIBRARY is libzorp_z1.so or, on a processor without AVX-512, the portable build. NAME is a
// family, with its tier where that isn't the standard one: ceil, cvtfptou64rtzsat, sin_native.
// Without names all families are checked that the tables below know. A family of one operand gets
// all 2^32, or every N-th; one of two as many pairs.
//
// Families with one right result are compared with it: by the C library, by integer arithmetic. Of
// the others the largest error against the C library's double function is found, and computed once
// more by MPFR. A wrong result fails, and so does a NaN that should be a number or the other way
// round.
#include <dlfcn.h>
#include <immintrin.h>
#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "export/grammar.h"
#include "tests/portable/portable.h"
#include "tests/support/operands.h"
#include "tests/values/conversions.h"

namespace zorp::test {
namespace {

struct Operands {
  uint32_t x, y = 0;
};
struct Results {
  Bits first, second = 0;
  bool operator==(const Results&) const = default;
};

uint32_t bits(float v) { return std::bit_cast<uint32_t>(v); }
float number(uint32_t v) { return std::bit_cast<float>(v); }
uint32_t quieted(float v) { return bits(v) | 0x00400000; }

// ---- Families with one right result

template <float (*exact)(float)>
Results rounding(Operands o) {
  const float x = number(o.x);
  return {std::isnan(x) ? quieted(x) : bits(exact(x))};
}

Results frexp(Operands o) {
  const float x = number(o.x);
  if (!std::isfinite(x) || x == 0) return {o.x, 0};
  int exponent;
  const float significand = std::frexp(x, &exponent);
  return {bits(significand), uint32_t(exponent)};
}
Results ilogb(Operands o) {
  const float x = number(o.x);
  if (!std::isfinite(x)) return {INT_MAX};
  return {x == 0 ? uint32_t(INT_MIN) : uint32_t(std::ilogb(x))};
}
Results logb(Operands o) {
  const float x = number(o.x);
  return {std::isnan(x) ? quieted(x) & 0x7FFFFFFF : bits(std::logb(x))};
}
Results modf(Operands o) {
  const float x = number(o.x);
  if (std::isnan(x)) return {quieted(x), quieted(x)};
  float integral;
  const float fraction = std::modf(x, &integral);
  return {bits(fraction), bits(integral)};
}
Results fract(Operands o) {
  const float x = number(o.x);
  if (std::isnan(x) || x == 0) return {o.x, o.x};
  if (std::isinf(x)) return {o.x & 0x80000000, o.x};
  const float floor = std::floor(x);
  return {bits(std::min(x - floor, number(0x3F7FFFFF))), bits(floor)};
}
Results nextafter(Operands o) {
  const float x = number(o.x);
  return {std::isnan(x) ? quieted(x) : bits(std::nextafter(x, number(o.y)))};
}

/// The defined quotient, also where the processor's division would trap.
template <bool is_signed>
Results quotient(Operands o) {
  if (!is_signed) return {o.y ? o.x / o.y : 0xFFFFFFFF};
  if (o.y == 0) return {0x80000000};
  return {uint32_t(int64_t(int32_t(o.x)) / int32_t(o.y))};
}
template <bool is_signed>
Results remainder(Operands o) {
  return {uint32_t(o.x - quotient<is_signed>(o).first * o.y)};
}

// ---- Operands by their number

Operands one(uint64_t index) { return {uint32_t(index)}; }
Operands one_and_infinity(uint64_t index) { return {uint32_t(index), bits(INFINITY)}; }

/// Any two numbers, or a divisor of any size and a dividend at a multiple of it or one beside.
template <bool is_signed>
Operands division(uint64_t index) {
  auto random = [state = 4 * index]() mutable { return uint32_t(scramble(state++)); };
  if (index % 2) return {random(), random()};
  const uint32_t word = random(), b = random() >> (word & 31);
  const uint32_t limit = is_signed ? 0x80000000 : 0xFFFFFFFF;
  const uint32_t size = is_signed && int32_t(b) < 0 ? 0 - b : b;
  const uint32_t most = size ? limit / size : limit;
  // The largest multiple, one of the largest, or any.
  uint32_t k = random();
  k = word & 0x20 ? most - k % 16 : word & 0x40 ? most >> k % 32 : uint32_t(k % (most + 1ull));
  const uint32_t a = k * b + (word >> 8) % 3 - 1;
  return {is_signed && (word & 0x80) ? 0 - a : a, b};
}

struct Exact {
  std::function<Results(Operands)> expected;
  Operands (*operands)(uint64_t index) = one;
};

const std::map<std::string, Exact> kExact = {{"ceil", {rounding<ceilf>}},
                                             {"floor", {rounding<floorf>}},
                                             {"trunc", {rounding<truncf>}},
                                             {"rint", {rounding<rintf>}},
                                             {"nearbyint", {rounding<nearbyintf>}},
                                             {"round", {rounding<roundf>}},
                                             {"frexp", {frexp}},
                                             {"ilogb", {ilogb}},
                                             {"logb", {logb}},
                                             {"modf", {modf}},
                                             {"fract", {fract}},
                                             {"nextafter", {nextafter, one_and_infinity}},
                                             {"idiv", {quotient<true>, division<true>}},
                                             {"irem", {remainder<true>, division<true>}},
                                             {"udiv", {quotient<false>, division<false>}},
                                             {"urem", {remainder<false>, division<false>}}};

/// The family in the table, or a conversion; nothing for others.
std::optional<Exact> find_exact(const grammar::Kernel& kernel) {
  if (kernel.family->form == grammar::Form::conversion)
    return Exact{
        [conversion = Conversion(kernel)](Operands o) { return Results{conversion(o.x)}; }};
  const auto found = kExact.find(kernel.family->name);
  return found == kExact.end() ? std::nullopt : std::optional(found->second);
}

// ---- Families that round

// Of multiples of pi: the reduction is exact, and so is the operand of sin up to one rounding.
double sinpi(double x) {
  const double r = std::remainder(x, 2);
  return std::sin(M_PI * (std::fabs(r) > 0.5 ? std::copysign(1, r) - r : r));
}
double cospi(double x) { return sinpi(0.5 - std::fabs(std::remainder(x, 2))); }
double tanpi(double x) { return sinpi(x) / cospi(x); }

double asinpi(double x) { return std::asin(x) / M_PI; }
double acospi(double x) { return std::acos(x) / M_PI; }
double atanpi(double x) { return std::atan(x) / M_PI; }
double rcbrt(double x) { return 1 / std::cbrt(x); }
double rsqrt(double x) { return 1 / std::sqrt(x); }

int mpfr_rcbrt(mpfr_ptr result, mpfr_srcptr x, mpfr_rnd_t mode) {
  return mpfr_rootn_si(result, x, -3, mode);
}

struct Rounded {
  double (*reference)(double);
  int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
};
const std::map<std::string, Rounded> kRounded = {
    {"sin", {std::sin, mpfr_sin}},       {"cos", {std::cos, mpfr_cos}},
    {"tan", {std::tan, mpfr_tan}},       {"sinpi", {sinpi, mpfr_sinpi}},
    {"cospi", {cospi, mpfr_cospi}},      {"tanpi", {tanpi, mpfr_tanpi}},
    {"asin", {std::asin, mpfr_asin}},    {"acos", {std::acos, mpfr_acos}},
    {"atan", {std::atan, mpfr_atan}},    {"asinpi", {asinpi, mpfr_asinpi}},
    {"acospi", {acospi, mpfr_acospi}},   {"atanpi", {atanpi, mpfr_atanpi}},
    {"cbrt", {std::cbrt, mpfr_cbrt}},    {"rcbrt", {rcbrt, mpfr_rcbrt}},
    {"sqrt", {std::sqrt, mpfr_sqrt}},    {"rsqrt", {rsqrt, mpfr_rec_sqrt}},
    {"expm1", {std::expm1, mpfr_expm1}}, {"tanh", {std::tanh, mpfr_tanh}},
    {"log1p", {std::log1p, mpfr_log1p}}, {"asinh", {std::asinh, mpfr_asinh}},
    {"acosh", {std::acosh, mpfr_acosh}}, {"atanh", {std::atanh, mpfr_atanh}}};

/// What a float of that size would be: beyond the largest, the power of two above it.
double limited(double y) { return std::isinf(float(y)) ? std::copysign(0x1p128, y) : y; }

/// The exponent of the unit in the last place of a float near y.
int unit(double y) { return y == 0 ? -149 : std::clamp(std::ilogb(y), -126, 127) - 23; }

double error_by_mpfr(const Rounded& function, float x, Bits result) {
  mpfr_t operand, exact;
  mpfr_init2(operand, 24);
  mpfr_init2(exact, 120);
  mpfr_set_flt(operand, x, MPFR_RNDN);
  function.exact(exact, operand, MPFR_RNDN);
  const double near = mpfr_get_d(exact, MPFR_RNDN);
  if (near != limited(near)) mpfr_set_d(exact, limited(near), MPFR_RNDN);
  const int scale = -unit(near);
  mpfr_sub_d(exact, exact, limited(number(uint32_t(result))), MPFR_RNDN);
  mpfr_mul_2si(exact, exact, scale, MPFR_RNDN);
  const double error = std::fabs(mpfr_get_d(exact, MPFR_RNDU));
  mpfr_clears(operand, exact, mpfr_ptr(nullptr));
  return error;
}

// ---- Running a kernel

constexpr int kBatch = 1024;

/// Operands, results in registers, results through a pointer. A register is loaded whole.
struct Batch {
  uint32_t x[kBatch + 8], y[kBatch + 8];
  std::byte first[8 * kBatch];
  uint32_t second[kBatch];
};

/// A kernel whose widest vector fills one register, or its algorithm in the portable build.
class Evaluation {
 public:
  Evaluation(void* library, const grammar::Kernel& kernel) : kernel_(kernel) {
    grammar::Kernel widest = kernel;
    widest.width = kernel.family->widths(kernel.element).back();
    if (void* find = dlsym(library, "zorp_portable_find"))
      portable_ = reinterpret_cast<decltype(&zorp_portable_find)>(find)(widest.name().c_str());
    else
      entry_ = dlsym(library, kernel.symbol().c_str());
  }

  explicit operator bool() const { return entry_ || portable_; }

  void operator()(Batch& batch) const {
    if (entry_) return call(batch);
    const void* const operands[] = {batch.x, batch.y};
    void* const results[] = {batch.first, batch.second};
    portable_(operands, results, kBatch, 0x1f80);
  }

 private:
  /// To the registers it is no matter what the lanes of their vectors are, nor whether a kernel
  /// uses all of the first and the second at all.
  [[gnu::target("avx512f")]] void call(Batch& batch) const {
    using Returning = __m512i (*)(__m512i, __m512i);
    using Storing = __m512i (*)(uint32_t*, __m512i);
    std::byte* first = batch.first;
    for (int i = 0; i < kBatch; i += kernel_.width, first += 64) {
      const __m512i x = _mm512_loadu_si512(batch.x + i), y = _mm512_loadu_si512(batch.y + i);
      _mm512_storeu_si512(first, kernel_.pointer() ? Storing(entry_)(batch.second + i, x)
                                                   : Returning(entry_)(x, y));
    }
  }

  const grammar::Kernel& kernel_;
  void* entry_ = nullptr;
  zorp::portable::Evaluate portable_ = nullptr;
};

struct Finding {
  uint64_t wrong = 0;
  Operands at{};  // the first wrong result, or the largest error
  Results got{};
  double error = 0;  // of families that round
};

void compare(const Exact& family, Operands o, const Results& got, Finding& finding) {
  if (got == family.expected(o)) return;
  if (finding.wrong++ == 0) finding.at = o, finding.got = got;
}

void compare(const Rounded& family, Operands o, const Results& got, Finding& finding) {
  const double want = limited(family.reference(number(o.x)));
  const double y = limited(number(uint32_t(got.first)));
  if (std::isnan(want) != std::isnan(y)) ++finding.wrong;
  const double off = std::ldexp(std::fabs(y - want), -unit(want));
  if (off > finding.error) finding.error = off, finding.at = o, finding.got = got;
}

/// Compares the operands with numbers first, first + every ... below last.
template <class Family>
Finding compare_part(const Family& family, Operands (*operands)(uint64_t),
                     const grammar::Kernel& kernel, const Evaluation& evaluate, uint64_t first,
                     uint64_t last, uint64_t every) {
  const int bytes = grammar::lane_bytes(kernel.results()[0]);
  const auto batch = std::make_unique<Batch>();
  Finding finding;
  for (uint64_t start = first; start < last; start += kBatch * every) {
    for (int i = 0; i < kBatch; ++i) {
      const Operands o = operands(start + i * every);
      batch->x[i] = o.x, batch->y[i] = o.y;
    }
    evaluate(*batch);
    for (int i = 0; i < kBatch; ++i) {
      Results got{};
      std::memcpy(&got.first, batch->first + i * bytes, bytes);
      if (kernel.pointer()) got.second = batch->second[i];
      compare(family, {batch->x[i], batch->y[i]}, got, finding);
    }
  }
  return finding;
}

template <class Family>
Finding compare_all(const Family& family, Operands (*operands)(uint64_t),
                    const grammar::Kernel& kernel, const Evaluation& evaluate, uint64_t every) {
  const unsigned count = std::max(1u, std::thread::hardware_concurrency());
  const uint64_t all = uint64_t{1} << 32, share = (all / (count * every) + 1) * every;
  std::vector<Finding> parts(count);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < count; ++t)
    threads.emplace_back([&, t] {
      parts[t] = compare_part(family, operands, kernel, evaluate, t * share,
                              std::min((t + 1) * share, all), every);
    });
  for (std::thread& thread : threads) thread.join();
  Finding total;
  for (const Finding& part : parts) {
    const uint64_t wrong = total.wrong + part.wrong;
    if (part.error > total.error || (total.wrong == 0 && part.wrong != 0)) total = part;
    total.wrong = wrong;
  }
  return total;
}

/// Whether the kernel gives what it must.
bool check(const grammar::Kernel& kernel, const Evaluation& evaluate, uint64_t every) {
  const std::string name = kernel.name();
  Finding finding;
  if (const auto rounded = kRounded.find(kernel.family->name); rounded != kRounded.end()) {
    finding = compare_all(rounded->second, one, kernel, evaluate, every);
    const float x = number(finding.at.x);
    std::printf("%s: %.4f ulp at %08X (%.9g), %llu wrong NaNs\n", name.c_str(),
                error_by_mpfr(rounded->second, x, finding.got.first), finding.at.x, x,
                static_cast<unsigned long long>(finding.wrong));
  } else {
    const Exact family = *find_exact(kernel);
    finding = compare_all(family, family.operands, kernel, evaluate, every);
    std::printf("%s: %llu wrong\n", name.c_str(), static_cast<unsigned long long>(finding.wrong));
    if (finding.wrong) {
      const Results want = family.expected(finding.at);
      std::printf("  %08X, %08X: %llX, %llX instead of %llX, %llX\n", finding.at.x, finding.at.y,
                  static_cast<unsigned long long>(finding.got.first),
                  static_cast<unsigned long long>(finding.got.second),
                  static_cast<unsigned long long>(want.first),
                  static_cast<unsigned long long>(want.second));
    }
  }
  std::fflush(stdout);
  return finding.wrong == 0;
}

/// Whether a kernel takes 32-bit lanes, fills one register and is in a table.
bool is_checkable(const grammar::Kernel& kernel) {
  for (const Lane lane : kernel.operands())
    if (grammar::lane_bytes(lane) != 4) return false;
  return kernel.width == 64 / std::max(4, grammar::lane_bytes(kernel.results()[0])) &&
         (kRounded.count(kernel.family->name) || find_exact(kernel));
}

int usage() {
  std::fputs("usage: zorp_check LIBRARY [--every N] [NAME...]\n", stderr);
  return 2;
}

int run(int argc, char** argv) {
  std::vector<std::string> names(argv + 1, argv + argc);
  uint64_t every = 1;
  if (const auto option = std::find(names.begin(), names.end(), "--every");
      option != names.end() && option + 1 != names.end()) {
    every = std::strtoull(option[1].c_str(), nullptr, 10);
    names.erase(option, option + 2);
  }
  if (names.empty() || every == 0) return usage();
  void* const library = dlopen(names[0].c_str(), RTLD_NOW);
  if (!library) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  names.erase(names.begin());

  bool good = true;
  std::vector<std::string> unknown = names;
  for (const grammar::Kernel& kernel : grammar::kernels()) {
    if (!is_checkable(kernel)) continue;
    const std::string name = kernel.family->name + std::string(suffix(kernel.tier));
    const bool named = std::find(names.begin(), names.end(), name) != names.end();
    if (names.empty() ? kernel.tier != grammar::Tier::standard : !named) continue;
    std::erase(unknown, name);
    const Evaluation evaluate(library, kernel);
    if (!evaluate) std::printf("%s: missing\n", kernel.name().c_str());
    good = evaluate && check(kernel, evaluate, every) && good;
  }
  for (const std::string& name : unknown)
    std::fprintf(stderr, "%s: no family that this program can check\n", name.c_str());
  return good && unknown.empty() ? 0 : 1;
}

}  // namespace
}  // namespace zorp::test

int main(int argc, char** argv) { return zorp::test::run(argc, argv); }
