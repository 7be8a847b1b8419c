// Measures float kernels of one operand on all 2^32 floats:
//
//   check_floats LIBRARY EVERY [KERNEL...]
//
// for the families below, or those named (sin_native, ...), on every EVERY-th float. LIBRARY is
// libzorp_z1.so, called at width 16, or the portable build. The reference is the C library's double
// function; the operand of the largest error is computed once more by MPFR. Prints that error in
// ulp and where it is. Fails if an operand that has a result gives a NaN, or the other way round.
#include <dlfcn.h>
#include <immintrin.h>
#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/portable/portable.h"

namespace {

using Kernel = __m512 (*)(__m512);

/// A kernel of the library, or its algorithm in the portable build.
struct Evaluation {
  Kernel kernel = nullptr;
  zorp::portable::Evaluate portable = nullptr;

  explicit operator bool() const { return kernel || portable; }
  [[gnu::target("avx512f")]] void by_kernel(const uint32_t* x, float* y, int count) const {
    for (int i = 0; i < count; i += 16) _mm512_storeu_ps(y + i, kernel(_mm512_loadu_ps(x + i)));
  }
  void operator()(const uint32_t* x, float* y, int count) const {
    if (kernel) return by_kernel(x, y, count);
    const void* const operands[] = {x};
    void* const results[] = {y};
    portable(operands, results, count, 0x1f80);
  }
};

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

struct Function {
  const char* name;
  double (*reference)(double);
  int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
};
const Function kFunctions[] = {
    {"sin", std::sin, mpfr_sin},       {"cos", std::cos, mpfr_cos},
    {"tan", std::tan, mpfr_tan},       {"sinpi", sinpi, mpfr_sinpi},
    {"cospi", cospi, mpfr_cospi},      {"tanpi", tanpi, mpfr_tanpi},
    {"asin", std::asin, mpfr_asin},    {"acos", std::acos, mpfr_acos},
    {"atan", std::atan, mpfr_atan},    {"asinpi", asinpi, mpfr_asinpi},
    {"acospi", acospi, mpfr_acospi},   {"atanpi", atanpi, mpfr_atanpi},
    {"cbrt", std::cbrt, mpfr_cbrt},    {"rcbrt", rcbrt, mpfr_rcbrt},
    {"sqrt", std::sqrt, mpfr_sqrt},    {"rsqrt", rsqrt, mpfr_rec_sqrt},
    {"expm1", std::expm1, mpfr_expm1}, {"tanh", std::tanh, mpfr_tanh},
    {"log1p", std::log1p, mpfr_log1p}, {"asinh", std::asinh, mpfr_asinh},
    {"acosh", std::acosh, mpfr_acosh}, {"atanh", std::atanh, mpfr_atanh}};

/// The exponent of the unit in the last place of a float near y.
int unit(double y) { return std::max(y == 0 ? -126 : std::ilogb(y), -126) - 23; }

struct Worst {
  double error = 0;
  uint32_t operand = 0;
  float result = 0;
  uint64_t wrong_nans = 0;

  void see(const Function& function, uint32_t bits, float y) {
    const double reference = function.reference(std::bit_cast<float>(bits));
    if (std::isnan(reference) != std::isnan(y)) ++wrong_nans;
    const double off = std::ldexp(std::fabs(y - reference), -unit(reference));
    if (off > error && std::isfinite(reference)) *this = {off, bits, y, wrong_nans};
  }
};

Worst measure(const Function& function, const Evaluation& evaluate, uint64_t first, uint64_t last,
              uint64_t every) {
  constexpr int batch = 1024;
  Worst worst;
  uint32_t x[batch];
  float y[batch];
  for (uint64_t i = first; i < last; i += batch * every) {
    for (int lane = 0; lane < batch; ++lane) x[lane] = uint32_t(i + lane * every);
    evaluate(x, y, batch);
    for (int lane = 0; lane < batch; ++lane) worst.see(function, x[lane], y[lane]);
  }
  return worst;
}

double exact_error(const Function& function, const Worst& worst) {
  mpfr_t x, exact;
  mpfr_init2(x, 24);
  mpfr_init2(exact, 120);
  mpfr_set_flt(x, std::bit_cast<float>(worst.operand), MPFR_RNDN);
  function.exact(exact, x, MPFR_RNDN);
  const int scale = -unit(mpfr_get_d(exact, MPFR_RNDN));
  mpfr_sub_d(exact, exact, worst.result, MPFR_RNDN);
  mpfr_mul_2si(exact, exact, scale, MPFR_RNDN);
  const double error = std::fabs(mpfr_get_d(exact, MPFR_RNDU));
  mpfr_clears(x, exact, mpfr_ptr(nullptr));
  return error;
}

/// Whether the kernel is without wrong NaNs.
bool check(const Function& function, const std::string& name, const Evaluation& evaluate,
           uint64_t every) {
  const unsigned count = std::max(1u, std::thread::hardware_concurrency());
  const uint64_t share = ((uint64_t{1} << 32) / (count * every) + 1) * every;
  std::vector<Worst> parts(count);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < count; ++t)
    threads.emplace_back([&, t] {
      parts[t] = measure(function, evaluate, t * share,
                         std::min((t + 1) * share, uint64_t{1} << 32), every);
    });
  for (std::thread& thread : threads) thread.join();
  Worst worst;
  for (const Worst& part : parts) {
    const uint64_t wrong = worst.wrong_nans + part.wrong_nans;
    if (part.error > worst.error) worst = part;
    worst.wrong_nans = wrong;
  }
  std::printf("%s: %.4f ulp at %08X (%.9g), %llu wrong NaNs\n", name.c_str(),
              exact_error(function, worst), unsigned(worst.operand),
              std::bit_cast<float>(worst.operand),
              static_cast<unsigned long long>(worst.wrong_nans));
  return worst.wrong_nans == 0;
}

/// Of libzorp_z1.so the kernel of width 16, of the portable build the widest.
Evaluation find(void* library, const std::string& family, const std::string& tier) {
  Evaluation found;
  if (void* portable = dlsym(library, "zorp_portable_find"))
    found.portable =
        reinterpret_cast<decltype(&zorp_portable_find)>(portable)((family + "32" + tier).c_str());
  else
    found.kernel =
        reinterpret_cast<Kernel>(dlsym(library, ("__zorp_z1_" + family + "16" + tier).c_str()));
  return found;
}

}  // namespace

int main(int argc, char** argv) {
  void* library = argc < 3 ? nullptr : dlopen(argv[1], RTLD_NOW);
  const uint64_t every = library ? std::strtoull(argv[2], nullptr, 10) : 0;
  if (every == 0) {
    std::fprintf(stderr, "usage: check_floats LIBRARY EVERY [KERNEL...]\n");
    return 2;
  }
  std::vector<std::string> names(argv + 3, argv + argc);
  if (names.empty())
    for (const Function& function : kFunctions) names.push_back(function.name);
  bool good = true;
  for (const std::string& name : names) {
    const std::size_t stem = name.find('_');
    const std::string family = name.substr(0, stem);
    const std::string tier = stem == std::string::npos ? "" : name.substr(stem);
    const Evaluation evaluate = find(library, family + "f", tier);
    const auto* function =
        std::find_if(std::begin(kFunctions), std::end(kFunctions),
                     [&](const Function& candidate) { return candidate.name == family; });
    if (!evaluate || function == std::end(kFunctions)) {
      std::fprintf(stderr, "the library has no %s, or it is not one of these\n", name.c_str());
      return 2;
    }
    good = check(*function, name, evaluate, every) && good;
  }
  return good ? 0 : 1;
}
