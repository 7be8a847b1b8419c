// Times the same loops from several shared objects, one of each compiler and client:
//
//   time_loops REPETITIONS FILE...
//
// A line `file loop ns/element` each: the least of the repetitions. The files take turns, so that
// what else runs on the machine meets all of them. Results must agree with those of the first file.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kElements = 4096;
constexpr int kPasses = 10;  // in one reading of the clock

struct File {
  std::string path;
  void* handle;

  template <class Function>
  Function* find(const std::string& name) const {
    const auto function = reinterpret_cast<Function*>(dlsym(handle, name.c_str()));
    if (!function) throw std::runtime_error(path + " has no " + name);
    return function;
  }
};

template <class T>
std::vector<T> random_numbers(double low, double high) {
  static std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform(low, high);
  std::vector<T> numbers(kElements);
  for (T& number : numbers) number = T(uniform(random));
  return numbers;
}

/// `call` runs a function of that type on the operands and writes the results.
template <class Function, class T, class Call>
void time_loop(const std::vector<File>& files, const std::string& name, int repetitions,
               std::vector<T>& results, Call call) {
  using Clock = std::chrono::steady_clock;
  using Time = std::chrono::duration<double, std::nano>;
  std::vector<Time> least(files.size(), Time(INFINITY));
  std::vector<T> first;
  for (int repetition = 0; repetition < repetitions; ++repetition)
    for (std::size_t i = 0; i < files.size(); ++i) {
      Function* const function = files[i].find<Function>(name);
      const auto start = Clock::now();
      for (int pass = 0; pass < kPasses; ++pass) call(function);
      least[i] = std::min<Time>(least[i], Clock::now() - start);
      if (repetition > 0) continue;
      if (i == 0) first = results;
      const T tolerance = std::is_same_v<T, double> ? T(1e-10) : T(1e-5);
      for (int j = 0; j < kElements; ++j)
        if (!(std::abs(results[j] - first[j]) <= tolerance * std::max(T(1), std::abs(first[j]))))
          throw std::runtime_error(files[i].path + " computes another " + name);
    }
  for (std::size_t i = 0; i < files.size(); ++i)
    std::printf("%s %s %.4f\n", files[i].path.c_str(), name.c_str(),
                least[i].count() / kPasses / kElements);
}

struct Range {
  double low, high;
};

template <class T>
void time_function(const std::vector<File>& files, const std::string& name, int repetitions,
                   Range x_range, Range y_range = {}) {
  const auto x = random_numbers<T>(x_range.low, x_range.high);
  const auto y = random_numbers<T>(y_range.low, y_range.high);
  std::vector<T> results(kElements);
  time_loop<void(int, const T*, const T*, T*)>(files, name, repetitions, results, [&](auto* loop) {
    loop(kElements, x.data(), y.data(), results.data());
  });
}

void time_black_scholes(const std::vector<File>& files, int repetitions) {
  auto sign = random_numbers<double>(-1, 1);
  for (double& s : sign) s = s < 0 ? -1 : 1;
  const auto spot = random_numbers<double>(50, 150), strike = random_numbers<double>(50, 150);
  const auto rate = random_numbers<double>(0.01, 0.05);
  const auto volatility = random_numbers<double>(0.1, 0.6);
  const auto years = random_numbers<double>(0.1, 3);
  std::vector<double> prices(kElements);
  using Array = const double*;
  time_loop<void(int, Array, Array, Array, Array, Array, Array, double*)>(
      files, "black_scholes", repetitions, prices, [&](auto* loop) {
        loop(kElements, sign.data(), spot.data(), strike.data(), rate.data(), volatility.data(),
             years.data(), prices.data());
      });
}

void run(const std::vector<std::string>& arguments) {
  const int repetitions = std::stoi(arguments.at(0));
  std::vector<File> files;
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    files.push_back({arguments[i], dlopen(arguments[i].c_str(), RTLD_NOW | RTLD_LOCAL)});
    if (!files.back().handle) throw std::runtime_error(dlerror());
  }
  time_black_scholes(files, repetitions);
  time_function<double>(files, "exp_loop", repetitions, {-10, 10});
  time_function<float>(files, "expf_loop", repetitions, {-10, 10});
  time_function<double>(files, "log_loop", repetitions, {0.01, 1000});
  time_function<float>(files, "logf_loop", repetitions, {0.01, 1000});
  time_function<double>(files, "sin_loop", repetitions, {-10, 10});
  time_function<float>(files, "sinf_loop", repetitions, {-10, 10});
  time_function<double>(files, "pow_loop", repetitions, {0.1, 10}, {-4, 4});
  time_function<float>(files, "powf_loop", repetitions, {0.1, 10}, {-4, 4});
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: time_loops REPETITIONS FILE...\n");
    return 2;
  }
  if (!__builtin_cpu_supports("avx512vbmi2")) {
    std::puts("This processor lacks AVX-512: skipped.");
    return 77;
  }
  try {
    run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "time_loops: %s\n", error.what());
    return 1;
  }
}
