// Every built-in that the layer serves, at every width, through PoCL, against the kernel bit for
// bit: special values, every exponent, random bits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "clients/opencl/builtins.h"
#include "clients/opencl/layer/runtime.h"
#include "tests/support/caller.h"
#include "tests/support/library.h"
#include "tests/support/processor.h"

namespace zorp::opencl {
namespace {

using test::Bits;
using test::Tuple;

constexpr int kLanes = 960;  // a multiple of all widths
// The runtime takes a tenth of a second for a program, whatever is in it.
constexpr std::size_t kBuiltinsInProgram = 12;

// What the second result may point to; each is a function of its own.
const std::vector<std::string> kSpaces = {"private", "local", "global"};

/// How a program is compiled; the last as for a processor that the runtime doesn't know.
enum class Mode { standard, relaxed, through_memory };
constexpr const char* kOptions[] = {"", "-cl-fast-relaxed-math", "-D__zorp_through_memory"};

/// Built-ins that share a program.
struct Group {
  std::vector<const Builtin*> builtins;
  Mode mode;
};

void PrintTo(const Group& group, std::ostream* out) {
  *out << group.builtins.front()->name(1) << " to " << group.builtins.back()->name(1);
  *out << " " << kOptions[int(group.mode)];
}

/// What a built-in takes and returns.
std::string shape(const Builtin& builtin) {
  std::string text = builtin.result + " " + builtin.pointer;
  for (const Operand& operand : builtin.operands)
    text += " " + operand.element + (operand.scalar ? " scalar" : "");
  return text;
}

std::vector<Group> groups() {
  std::vector<Group> all;
  for (Mode mode : {Mode::standard, Mode::relaxed, Mode::through_memory}) {
    all.push_back({{}, mode});
    std::set<std::string> shapes;
    for (const Builtin& builtin : builtins()) {
      if (builtin.element == grammar::Element::f16) continue;  // unknown to the runtime
      if (mode == Mode::relaxed && builtin.relaxed_tier == builtin.tier) continue;
      // One of each shape tells whether operands and results find their places.
      if (mode == Mode::through_memory && !shapes.insert(shape(builtin)).second) continue;
      if (all.back().builtins.size() == kBuiltinsInProgram) all.push_back({{}, mode});
      all.back().builtins.push_back(&builtin);
    }
  }
  return all;
}

std::string load(const std::string& array, int width) {
  return width == 1 ? array + "[i]" : "vload" + std::to_string(width) + "(i, " + array + ")";
}

std::string store(const std::string& value, const std::string& array, int width) {
  const std::string w = std::to_string(width);
  return width == 1 ? array + "[i] = " + value + ";\n"
                    : "vstore" + w + "(" + value + ", i, " + array + ");\n";
}

/// A kernel that fills kLanes results for each width, and as many for each space of a pointer.
std::string kernel_source(const Builtin& builtin, const std::string& name) {
  std::string parameters, variables, loops;
  for (std::size_t i = 0; i < builtin.operands.size(); ++i)
    parameters += "global const " + builtin.operands[i].element + " *x" + std::to_string(i) + ", ";
  parameters += "global " + builtin.result + " *r";
  const bool has_pointer = !builtin.pointer.empty();
  if (has_pointer)
    parameters += ", global " + builtin.pointer + " *p, global " + builtin.pointer + "16 *g";
  int filled = 0;
  for (int width : builtin.widths) {
    std::string call = builtin.name(width) + "(";
    for (std::size_t i = 0; i < builtin.operands.size(); ++i) {
      const std::string array = "x" + std::to_string(i);
      call += i ? ", " : "";
      call += builtin.operands[i].scalar ? array + "[i * " + std::to_string(width) + "]"
                                         : load(array, width);
    }
    for (const std::string& space : has_pointer ? kSpaces : std::vector<std::string>{""}) {
      const std::string offset = " + " + std::to_string(kLanes * filled++);
      std::string arguments = call;
      if (has_pointer) {
        const std::string pointee = type_name(builtin.pointer, width);
        const std::string second = space + std::to_string(width);
        if (space == "global")
          variables += "  global " + pointee + " *" + second + " = (global " + pointee + " *)g;\n";
        else
          variables += "  " + space + " " + pointee + " " + second + "_room, *" + second + " = &" +
                       second + "_room;\n";
        arguments += ", " + second;
      }
      std::string results = "(r" + offset + ")";
      loops += "  for (int i = 0; i < " + std::to_string(kLanes / width) + "; ++i) {\n    " +
               store(arguments + ")", results, width);
      if (has_pointer)
        loops += "    " + store("*" + space + std::to_string(width), "(p" + offset + ")", width);
      loops += "  }\n";
    }
  }
  return "kernel void " + name + "(" + parameters + ") {\n" + variables + loops + "}\n";
}

const Runtime& runtime() {
  static const Runtime only = [] {
    setenv("ZORP_Z1_OPENCL", "all", 1);
    return Runtime(ZORP_OPENCL_LAYER);
  }();
  return only;
}

int bytes_of(const std::string& element) {
  return element == "double" || element.ends_with("long") ? 8 : 4;
}

void compare(const Builtin& builtin, const Program& program, const std::string& name,
             bool relaxed) {
  static const test::Library library(ZORP_LIBRARY);
  const std::vector<grammar::Lane> lanes = builtin.kernel(builtin.widths[0]).operands();
  std::vector<Tuple> pool = test::operand_pool(lanes, kLanes);
  for (std::size_t i = 0; pool.size() < kLanes; ++i) pool.push_back(pool[i]);

  std::vector<std::vector<std::byte>> data;
  for (std::size_t i = 0; i < lanes.size(); ++i) {
    const int bytes = grammar::lane_bytes(lanes[i]);
    data.emplace_back(std::size_t(kLanes * bytes));
    for (int j = 0; j < kLanes; ++j)
      std::memcpy(&data[i][std::size_t(j * bytes)], &pool[std::size_t(j)][i], std::size_t(bytes));
  }
  const std::size_t spaces = builtin.pointer.empty() ? 1 : kSpaces.size();
  const std::size_t results = spaces * builtin.widths.size() * kLanes;
  const std::size_t first_result = data.size();
  data.emplace_back(results * std::size_t(bytes_of(builtin.result)));
  if (!builtin.pointer.empty()) {
    data.emplace_back(results * std::size_t(bytes_of(builtin.pointer)));
    data.emplace_back(128);
  }
  std::vector<Launch::Buffer> buffers;
  for (auto& bytes : data) buffers.push_back({bytes.data(), bytes.size()});
  const Launch launch(runtime(), program, name, buffers);
  launch(1, 1);
  launch.read();

  std::size_t filled = 0;
  for (int width : builtin.widths) {
    const grammar::Kernel& kernel = builtin.kernel(width, relaxed);
    test::Caller caller(kernel, library);
    for (std::size_t space = 0; space < spaces; ++space, filled += kLanes)
      for (int first = 0; first < kLanes; first += width) {
        std::vector<Tuple> chunk(pool.begin() + first, pool.begin() + first + width);
        for (std::size_t i = 0; i < lanes.size(); ++i)
          if (builtin.operands[i].scalar)
            for (Tuple& tuple : chunk) tuple[i] = chunk[0][i];
        const test::Results& expected = caller(chunk);
        for (std::size_t output = 0; output < caller.outputs().size(); ++output)
          for (int lane = 0; lane < width; ++lane) {
            const int bytes = bytes_of(output == 0 ? builtin.result : builtin.pointer);
            Bits actual = 0;
            std::memcpy(&actual,
                        &data[first_result + output]
                             [(filled + std::size_t(first + lane)) * std::size_t(bytes)],
                        std::size_t(bytes));
            ASSERT_EQ(test::hex(actual), test::hex(caller.output(expected, int(output), lane)))
                << kernel.name() << test::hex(chunk[std::size_t(lane)], lanes.size()) << ", output "
                << output << ", lane " << lane
                << (spaces > 1 ? ", pointer to " + kSpaces[space] : "");
          }
      }
  }
}

class OpenclLayerValues : public testing::TestWithParam<Group> {};

TEST_P(OpenclLayerValues, AreTheKernels) {
  if (!test::has_avx512()) GTEST_SKIP() << "this processor has no AVX-512";
  const Group& group = GetParam();
  std::string source;
  for (std::size_t i = 0; i < group.builtins.size(); ++i)
    source += kernel_source(*group.builtins[i], "k" + std::to_string(i));
  const Program program(runtime(), runtime().with_layer(), source, kOptions[int(group.mode)]);
  ASSERT_EQ(program.status(), CL_SUCCESS) << program.log();
  for (std::size_t i = 0; i < group.builtins.size(); ++i)
    compare(*group.builtins[i], program, "k" + std::to_string(i), group.mode == Mode::relaxed);
}

INSTANTIATE_TEST_SUITE_P(All, OpenclLayerValues, testing::ValuesIn(groups()),
                         [](const auto& info) { return std::to_string(info.index); });

}  // namespace
}  // namespace zorp::opencl
