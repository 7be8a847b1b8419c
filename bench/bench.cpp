// Times every kernel of the library at width 1 and at the width that fills one register, beside
// SLEEF's vector functions and the C library's scalar functions. All in one process, on the same
// operands. A benchmark is called KERNEL/CONTENDER/MEASURE and reports the time for kOperands
// lanes; `clock` tells the processor's clock in the same unit, `call` the cost of kOperands calls
// of a function of one instruction, which every time holds.
//
// Tiers that run another tier's code are left out. ZORP_LIBRARY in the environment names another
// library than the one built here; ZORP_ANGLES=large or mixed gives the trigonometric functions
// large operands in all lanes, or in one of each vector.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "bench/contenders.h"

namespace zorp::bench {
namespace {

/// kOperands dependent multiplications of three cycles each.
void time_clock(benchmark::State& state) {
  for (auto _ : state) {
    uint64_t x = 3;
    for (int i = 0; i < kOperands; ++i) asm volatile("imul %0, %0" : "+r"(x));
  }
}

void time_call(benchmark::State& state) {
  const grammar::Kernel& kernel = *grammar::find("fabs1");
  const Loop loop = find_loop(kernel, Results::in_register, Measure::throughput);
  Buffers buffers(kernel);
  for (auto _ : state) loop(shortest_function(), buffers);
}

double least(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

void enroll(const grammar::Kernel& kernel) {
  for (const Contender& contender : contenders(kernel)) {
    for (const Measure measure : {Measure::throughput, Measure::latency}) {
      const Loop loop = find_loop(kernel, contender.results, measure);
      if (!loop) continue;
      const std::string name = kernel.name() + "/" + contender.name +
                               (measure == Measure::throughput ? "/throughput" : "/latency");
      benchmark::RegisterBenchmark(name.c_str(), [kernel, contender,
                                                  loop](benchmark::State& state) {
        Buffers buffers(kernel);
        for (auto _ : state) {
          loop(contender.function, buffers);
          benchmark::ClobberMemory();
        }
      })->ComputeStatistics("min", least);
    }
  }
}

}  // namespace

int run(int argc, char** argv) {
  __builtin_cpu_init();
  if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512vbmi2")) {
    std::fprintf(stderr, "this processor lacks AVX-512\n");
    return 1;
  }
  const char* library = std::getenv("ZORP_LIBRARY");
  if (!open_libraries(library ? library : ZORP_LIBRARY)) return 1;
  benchmark::RegisterBenchmark("clock", time_clock)->ComputeStatistics("min", least);
  benchmark::RegisterBenchmark("call", time_call)->ComputeStatistics("min", least);
  for (const grammar::Kernel& kernel : grammar::kernels())
    if (!kernel.is_alias() && (kernel.width == 1 || kernel.width == full_width(kernel)))
      enroll(kernel);
  benchmark::AddCustomContext("compiler", "g++ " __VERSION__);
  benchmark::AddCustomContext("operands", std::to_string(kOperands));
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace zorp::bench

int main(int argc, char** argv) { return zorp::bench::run(argc, argv); }
