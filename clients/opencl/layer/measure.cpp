// Times built-ins under PoCL, with the layer and without it, for tools/opencl_performance.py:
//
//   measure LAYER [REGEX]
//
// prints, for each signature that the expression is found in and each width, tabs between columns:
// signature, element type, width, ns an element of the runtime's own, of the layer. ZORP_Z1_OPENCL
// holds for the layer as ever. A kernel calls the built-in once in each work-item, on arrays in
// cache. Launches of both are interleaved; a time is the least of all.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <regex>
#include <vector>

#include "bench/operands.h"
#include "clients/opencl/builtins.h"
#include "clients/opencl/layer/runtime.h"
#include "clients/opencl/layer/served.h"

namespace zorp::opencl {
namespace {

constexpr int kElements = 4096;
constexpr int kLaunches = 15;
constexpr double kLeastSeconds = 4e-4;  // of a launch
// The runtime takes a tenth of a second for a program, whatever is in it.
constexpr std::size_t kBuiltinsInProgram = 10;

std::string kernel_name(std::size_t builtin, int width) {
  return "k" + std::to_string(builtin) + "_" + std::to_string(width);
}

/// A kernel that calls the built-in on each work-item's vector. Of width 3, vectors have the room
/// of four lanes.
std::string kernel_source(const Builtin& builtin, int width, const std::string& name) {
  std::string parameters, arguments;
  for (std::size_t i = 0; i < builtin.operands.size(); ++i) {
    const std::string number = std::to_string(i);
    parameters +=
        "global const " + type_name(builtin.operands[i].element, width) + " *x" + number + ", ";
    arguments += (i ? ", x" : "x") + number + "[i]";
  }
  parameters += "global " + type_name(builtin.result, width) + " *r";
  std::string body = "  r[i] = " + builtin.name(width);
  if (builtin.pointer.empty()) {
    body += "(" + arguments + ");\n";
  } else {
    const std::string pointee = type_name(builtin.pointer, width);
    parameters += ", global " + pointee + " *p";
    body =
        "  " + pointee + " second;\n" + body + "(" + arguments + ", &second);\n  p[i] = second;\n";
  }
  return "kernel void " + name + "(" + parameters + ") {\n  const size_t i = get_local_id(0);\n" +
         body + "}\n";
}

/// The least processor time of some launches, which nothing else on the machine adds to.
double seconds(const Launch& launch, std::size_t groups, std::size_t group_size, int launches) {
  const auto now = [] {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + 1e-9 * double(time.tv_nsec);
  };
  double least = 1;
  for (int i = 0; i < launches; ++i) {
    const double start = now();
    launch(groups, group_size);
    least = std::min(least, now() - start);
  }
  return least;
}

/// The operands of the benchmark, as often as they fit.
std::vector<std::vector<std::byte>> operands(const grammar::Kernel& kernel) {
  const bench::Buffers once(kernel);
  std::vector<std::vector<std::byte>> all;
  for (std::size_t i = 0; i < kernel.operands().size(); ++i) {
    const std::size_t bytes = bench::kOperands * grammar::lane_bytes(kernel.operands()[i]);
    std::vector<std::byte>& copies = all.emplace_back();
    while (copies.size() < kElements / bench::kOperands * bytes)
      copies.insert(copies.end(), once.operand[i], once.operand[i] + bytes);
  }
  return all;
}

void measure(const Runtime& runtime, const Program& plain, const Program& layered,
             const Builtin& builtin, std::size_t index, int width) {
  std::vector<std::vector<std::byte>> data = operands(builtin.kernel(width));
  data.resize(data.size() + (builtin.pointer.empty() ? 1 : 2),
              std::vector<std::byte>(8 * kElements));
  std::vector<Launch::Buffer> buffers;
  for (auto& bytes : data) buffers.push_back({bytes.data(), bytes.size()});
  const std::string name = kernel_name(index, width);
  const Launch own(runtime, plain, name, buffers), kernel(runtime, layered, name, buffers);

  const std::size_t group_size = kElements / std::size_t(grammar::lanes_in_memory(width));
  std::size_t groups = 1;
  while (std::min(seconds(own, groups, group_size, 3), seconds(kernel, groups, group_size, 3)) <
         kLeastSeconds)
    groups *= 2;
  double least_own = 1, least_kernel = 1;
  for (int i = 0; i < kLaunches; ++i) {
    least_own = std::min(least_own, seconds(own, groups, group_size, 1));
    least_kernel = std::min(least_kernel, seconds(kernel, groups, group_size, 1));
  }
  const double elements = double(groups * group_size) * width;
  std::printf("%s\t%s\t%d\t%.4f\t%.4f\n", signature(builtin).c_str(),
              builtin.element == grammar::Element::f64 ? "double" : "float", width,
              1e9 * least_own / elements, 1e9 * least_kernel / elements);
  std::fflush(stdout);
}

int run(const std::string& layer, const std::regex& pattern) {
  const Runtime runtime(layer);
  std::vector<const Builtin*> chosen;
  for (const Builtin& builtin : builtins()) {
    // Forms with a scalar operand go with those without; the runtime has no half arithmetic.
    if (builtin.element == grammar::Element::f16 || builtin.operands.back().scalar) continue;
    if (std::regex_search(signature(builtin), pattern)) chosen.push_back(&builtin);
  }
  for (std::size_t first = 0; first < chosen.size(); first += kBuiltinsInProgram) {
    const std::size_t last = std::min(first + kBuiltinsInProgram, chosen.size());
    std::string source;
    for (std::size_t i = first; i < last; ++i)
      for (int width : chosen[i]->widths)
        source += kernel_source(*chosen[i], width, kernel_name(i, width));
    const Program plain(runtime, runtime.without_layer(), source);
    const Program layered(runtime, runtime.with_layer(), source);
    for (std::size_t i = first; i < last; ++i)
      for (int width : chosen[i]->widths) measure(runtime, plain, layered, *chosen[i], i, width);
  }
  return 0;
}

}  // namespace
}  // namespace zorp::opencl

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fprintf(stderr, "usage: measure LAYER [REGEX]\n");
    return 2;
  }
  return zorp::opencl::run(argv[1], std::regex(argc == 3 ? argv[2] : "."));
}
