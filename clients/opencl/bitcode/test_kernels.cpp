#include "clients/opencl/bitcode/test_kernels.h"

#include <cstdio>

namespace zorp::opencl {
namespace {

std::string operand_type(const Operand& operand, int width) {
  return type_name(operand.element, operand.scalar ? 1 : width);
}

void print_kernel(const Use& use) {
  const Builtin& builtin = *use.builtin;
  const std::string result = type_name(builtin.result, use.width);
  const std::string second = type_name(builtin.pointer, use.width);
  std::string parameters, arguments, name = "x";
  for (const Operand& operand : builtin.operands) {
    parameters += "global const " + operand_type(operand, use.width) + "* " + name + ", ";
    arguments += (arguments.empty() ? "*" : ", *") + name;
    ++name[0];
  }
  const bool is_private = use.space == "private";
  parameters += "global " + result + "* result";
  if (!use.space.empty())
    parameters += ", " + (is_private ? "global" : use.space) + " " + second + "* second";
  std::printf("kernel void %s(%s) {\n", use.symbol().c_str(), parameters.c_str());
  if (is_private) std::printf("  %s own;\n", second.c_str());
  if (!use.space.empty()) arguments += is_private ? ", &own" : ", second";
  std::printf("  *result = %s(%s);\n", builtin.name(use.width).c_str(), arguments.c_str());
  if (is_private) std::printf("  *second = own;\n");
  std::printf("}\n");
}

}  // namespace

std::string Use::symbol() const {
  std::string name = builtin->name(width);
  for (const Operand& operand : builtin->operands) name += "_" + operand_type(operand, width);
  return space.empty() ? name : name + "_" + space;
}

std::vector<Use> all_uses() {
  std::vector<Use> uses;
  for (const Builtin& builtin : builtins())
    for (int width : builtin.widths)
      if (builtin.pointer.empty())
        uses.push_back({&builtin, width, ""});
      else
        for (const char* space : {"private", "local", "global"})
          uses.push_back({&builtin, width, space});
  return uses;
}

void print_test_kernels() {
  std::puts(
      "#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n"
      "#pragma OPENCL EXTENSION cl_khr_fp16 : enable");
  for (const Use& use : all_uses()) print_kernel(use);
}

}  // namespace zorp::opencl
