#include "clients/opencl/bitcode/library.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "clients/opencl/builtins.h"

namespace zorp::opencl {
namespace {

constexpr const char* kHead =
    R"(// Written from the grammar of the exported names.
#pragma OPENCL EXTENSION cl_khr_fp64 : enable
#pragma OPENCL EXTENSION cl_khr_fp16 : enable
#define KERNEL __attribute__((const))
#define STORING_KERNEL __attribute__((nothrow))
#define BUILTIN __attribute__((overloadable, always_inline))
)";

int element_bytes(const std::string& element) {
  if (element == "double" || element == "long" || element == "ulong") return 8;
  return element == "half" || element == "ushort" ? 2 : 4;
}

/// A vector as kernels take it: whole registers, whose lanes beyond the width don't matter.
struct Vector {
  std::string element;
  int width;

  int bytes() const { return element_bytes(element) * grammar::lanes_in_memory(width); }
  bool is_pair() const { return bytes() > 64; }
  /// Lanes of the register.
  int lanes() const {
    return width == 1 ? 1 : std::max(grammar::lanes_in_memory(width), 16 / element_bytes(element));
  }
  std::string type() const { return type_name(element, width); }
  std::string register_type() const { return type_name(element, lanes()); }

  std::string parameters() const {
    const std::string half = type_name(element, width / 2);
    return is_pair() ? half + ", " + half : register_type();
  }

  std::string arguments(const std::string& name) const {
    if (is_pair()) return name + ".lo, " + name + ".hi";
    if (lanes() == width) return name;
    std::string indices;
    for (int lane = 0; lane < lanes(); ++lane)
      indices += ", " + std::to_string(lane < width ? lane : -1);
    return "__builtin_shufflevector(" + name + ", " + name + indices + ")";
  }

  std::string from_register(const std::string& call) const {
    return lanes() == width ? call : call + "." + std::string("s0123").substr(0, 1 + size_t(width));
  }
};

/// A built-in at one width: the kernel's declaration and the definitions.
std::string definitions(const Builtin& builtin, int width, bool relaxed) {
  const grammar::Kernel& kernel = builtin.kernel(width, relaxed);
  const Vector result{builtin.result, width};
  const std::string head = "BUILTIN " + result.type() + " " + builtin.name(width) + "(";
  // Rather than copying operands to the stack.
  if (kernel.operands_on_stack())
    return head + "double16 x, double16 y, double16 z) {\n  return (double16)(" + builtin.stem +
           "(x.lo, y.lo, z.lo), " + builtin.stem + "(x.hi, y.hi, z.hi));\n}\n";

  std::string parameters, arguments, registers, separator, name = "x";
  for (const Operand& operand : builtin.operands) {
    const Vector vector{operand.element, width};
    parameters += separator + type_name(operand.element, operand.scalar ? 1 : width) + " " + name;
    registers += separator + vector.parameters();
    arguments += separator +
                 vector.arguments(operand.scalar ? "((" + vector.type() + ")" + name + ")" : name);
    separator = ", ";
    ++name[0];
  }
  // A result in two registers is returned as one vector: LLVM splits it.
  const auto declaration = [&](const std::string& attribute, const std::string& pointer) {
    return attribute + " " + result.register_type() + " " + kernel.symbol() + "(" + registers +
           pointer + ");\n";
  };
  const auto definition = [&](const std::string& pointer, const std::string& argument) {
    return head + parameters + pointer + ") {\n  return " +
           result.from_register(kernel.symbol() + "(" + arguments + argument + ")") + ";\n}\n";
  };
  if (builtin.pointer.empty()) return declaration("KERNEL", "") + definition("", "");
  const std::string pointer = " " + type_name(builtin.pointer, width) + "*";
  std::string text = declaration("STORING_KERNEL", "," + pointer);
  for (const std::string space : {"private", "local", "global", "generic"})
    text += definition(", " + space + pointer + " second", ", second");
  return text;
}

}  // namespace

void print_library(bool relaxed) {
  std::fputs(kHead, stdout);
  for (const Builtin& builtin : builtins())
    for (int width : builtin.widths)
      std::printf("\n%s", definitions(builtin, width, relaxed).c_str());
}

}  // namespace zorp::opencl
