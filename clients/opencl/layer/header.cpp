// Writes the OpenCL C that turns built-ins into calls of kernels, as a table of overloads for the
// layer (layer/overloads.h):
//
//   header SERVED    SERVED lists what the kernels serve by default, one line for each signature:
//                    sin double: 1 2 3 4 8 16
//
// Each overload is a gnu_inline definition over inline assembly. Such a definition yields to one of
// the program's own, as that of a library's header does in C. All other names are reserved ones,
// and parts of vectors are taken by builtins of the compiler, since a program's options may define
// any plain name as a macro.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "clients/opencl/builtins.h"
#include "clients/opencl/layer/served.h"

namespace zorp::opencl {
namespace {

using grammar::Kernel;
using grammar::Lane;

bool is_integer(Lane lane) { return int(lane) > int(Lane::f16); }

std::string joined(const std::vector<std::string>& list) {
  std::string out;
  for (const std::string& item : list) out += (out.empty() ? "" : ", ") + item;
  return out;
}

/// The lanes of a vector that make up another; "-1" stands for any value.
std::string shuffled(const std::string& a, const std::string& b,
                     const std::vector<std::string>& lanes) {
  return "__builtin_shufflevector(" + a + ", " + b + ", " + joined(lanes) + ")";
}

std::vector<std::string> lane_numbers(int first, int count) {
  std::vector<std::string> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back(std::to_string(first + i));
  return numbers;
}

/// How a vector of a lane type travels: in one register, two, or a general one.
struct Shape {
  Lane lane;
  int width;

  bool is_general() const { return width == 1 && is_integer(lane); }
  int registers() const { return grammar::registers(lane, width); }
  /// Lanes in one register, as the compiler is told of it: never less than 128 bits.
  int register_width() const {
    return std::max(grammar::lanes_in_memory(width) / registers(), 16 / grammar::lane_bytes(lane));
  }
  std::string register_name(int number) const {
    const int bytes = register_width() * grammar::lane_bytes(lane);
    return (bytes == 64 ? "zmm" : bytes == 32 ? "ymm" : "xmm") + std::to_string(number);
  }
  /// The registers' values, lower half first. `vector` may be a scalar that stands for all lanes.
  std::vector<std::string> parts(const std::string& vector) const {
    if (registers() == 2)
      return {shuffled(vector, vector, lane_numbers(0, width / 2)),
              shuffled(vector, vector, lane_numbers(width / 2, width / 2))};
    if (register_width() == width) return {vector};
    std::vector<std::string> lanes = lane_numbers(0, width);
    lanes.resize(std::size_t(register_width()), "-1");
    return {shuffled(vector, vector, lanes)};
  }
  /// The vector again.
  std::string whole(const std::vector<std::string>& parts) const {
    if (is_general()) return parts[0];
    if (width == 1) return parts[0] + "[0]";
    if (registers() == 1 && register_width() == width) return parts[0];
    return shuffled(parts[0], parts.back(), lane_numbers(0, width));
  }
};

/// One built-in at one width as a function definition.
class Overload {
 public:
  Overload(const Builtin& builtin, int width)
      : builtin_(builtin),
        width_(width),
        kernel_(builtin.kernel(width)),
        result_{kernel_.results()[0], width} {}

  std::string text() const {
    if (builtin_.pointer.empty()) return definition("");
    std::string named;
    for (const char* space : {"__private ", "__local ", "__global "}) named += definition(space);
    return "#ifdef __opencl_c_generic_address_space\n" + definition("") + "#else\n" + named +
           "#endif\n";
  }

 private:
  static std::string operand_name(size_t i) { return std::string("__") + char('x' + i); }

  std::string definition(const std::string& space) const {
    std::vector<std::string> parameters;
    for (size_t i = 0; i < builtin_.operands.size(); ++i) {
      const Operand& operand = builtin_.operands[i];
      parameters.push_back(type_name(operand.element, operand.scalar ? 1 : width_) + " " +
                           operand_name(i));
    }
    const std::string pointee = type_name(builtin_.pointer, width_);
    if (!builtin_.pointer.empty()) parameters.push_back(space + pointee + " *__p");
    const std::string body = kernel_.operands_on_stack() ? halves() : call();
    return "__zorp_inline " + type_name(builtin_.result, width_) + " " + builtin_.name(width_) +
           "(" + joined(parameters) + ") {\n" + body + "}\n";
  }

  /// Operands that would travel on the stack: the lower half of the lanes, then the upper.
  std::string halves() const {
    std::vector<std::string> arguments[2];
    for (size_t i = 0; i < builtin_.operands.size(); ++i) {
      const Shape shape{kernel_.operands()[i], width_};
      for (int half : {0, 1}) arguments[half].push_back(shape.parts(operand_name(i))[size_t(half)]);
    }
    const std::string name = builtin_.name(width_ / 2);
    return "  return " +
           result_.whole(
               {name + "(" + joined(arguments[0]) + ")", name + "(" + joined(arguments[1]) + ")"}) +
           ";\n";
  }

  /// A statement of inline assembly in the making.
  struct Assembly {
    std::string declarations, moves_in, moves_out;
    std::vector<std::string> outputs, inputs;
  };

  std::string call() const {
    Assembly assembly;
    add_operands(assembly);
    const std::string result = add_results(assembly);
    if (!builtin_.pointer.empty()) add_pointer(assembly);
    std::string kernel = "\"" + kernel_.name() + "\"";
    if (builtin_.relaxed_tier != builtin_.tier) kernel += " __zorp_relaxed";
    return assembly.declarations + "  __asm__(" + assembly.moves_in + "__zorp_call(" + kernel +
           ")" + assembly.moves_out + " : " + joined(assembly.outputs) + " : " +
           joined(assembly.inputs) + " : __zorp_clobbers" +
           (result_.is_general() ? "" : ", \"rax\"") + ");\n" +
           (builtin_.pointer.empty() ? "" : "  *__p = __second;\n") + "  return " + result + ";\n";
  }

  /// The first vector register has a constraint of its own. The compiler puts the other operands
  /// where the kernel writes nothing, and they are moved to their registers.
  void add_operands(Assembly& to) const {
    int next = 0;
    for (size_t i = 0; i < builtin_.operands.size(); ++i) {
      const Shape shape{kernel_.operands()[i], width_};
      const Operand& operand = builtin_.operands[i];
      std::string value = operand_name(i);
      if (shape.is_general()) {
        to.outputs.push_back("\"+D\"(" + value + ")");
        continue;
      }
      const int held = shape.register_width();
      if (operand.scalar || width_ == 1)
        value = "(" + type_name(operand.element, std::max(width_, held)) + ")(" + value + ")";
      for (const std::string& part : shape.parts(value)) {
        const std::string number = std::to_string(next), variable = "__i" + number;
        to.declarations +=
            "  " + type_name(operand.element, held) + " " + variable + " = " + part + ";\n";
        to.inputs.push_back("[i" + number + "] __zorp_" + (next == 0 ? "first" : "next") + "(" +
                            variable + ")");
        to.moves_in += next == 0 ? "__zorp_load_first(\"" + shape.register_name(0) + "\") "
                                 : "\"vmovups %[i" + number + "], %%" + shape.register_name(next) +
                                       "\\n\\t\" ";
        ++next;
      }
    }
  }

  /// Returns the expression of the built-in's result.
  std::string add_results(Assembly& to) const {
    if (result_.is_general()) {
      // The kernel may change the register of its operand.
      const Shape operand{kernel_.operands()[0], width_};
      add_first_result(to, type_name(builtin_.operands[0].element, operand.register_width()),
                       operand.register_name(0));
      to.declarations += "  " + builtin_.result + " __r;\n";
      to.outputs.push_back("\"=a\"(__r)");
      return "__r";
    }
    const std::string type = type_name(builtin_.result, result_.register_width());
    add_first_result(to, type, result_.register_name(0));
    if (result_.registers() == 1) return result_.whole({"__r0"});
    to.declarations += "  " + type + " __r1;\n";
    to.outputs.push_back("[o1] __zorp_next_result(__r1)");
    to.moves_out += " \"\\n\\tvmovups %%" + result_.register_name(1) + ", %[o1]\"";
    return result_.whole({"__r0", "__r1"});
  }

  static void add_first_result(Assembly& to, const std::string& type, const std::string& name) {
    to.declarations += "  " + type + " __r0;\n";
    to.outputs.push_back("[o0] __zorp_first_result(__r0)");
    to.moves_out += " __zorp_store_first(\"" + name + "\")";
  }

  /// The kernel writes to a variable, whatever the pointer points to.
  void add_pointer(Assembly& to) const {
    const std::string pointee = type_name(builtin_.pointer, width_);
    to.declarations +=
        "  " + pointee + " __second;\n  __private " + pointee + " *__to = &__second;\n";
    to.outputs.push_back("\"=m\"(__second)");
    to.outputs.push_back("\"+D\"(__to)");
  }

  const Builtin& builtin_;
  int width_;
  const Kernel& kernel_;
  Shape result_;
};

int run(const std::string& served_file) {
  const Served served(served_file);
  std::printf(
      "// Written by clients/opencl/layer/header from the table of built-ins.\n"
      "#include \"clients/opencl/layer/overloads.h\"\n\n"
      "namespace zorp::opencl {\n\nconst std::vector<Overload> kOverloads = {\n");
  for (const Builtin& builtin : builtins()) {
    // The runtime has no half arithmetic.
    if (builtin.element == grammar::Element::f16) continue;
    for (int width : builtin.widths)
      std::printf("{%s, R\"(%s)\"},\n", served(builtin, width) ? "true" : "false",
                  Overload(builtin, width).text().c_str());
  }
  std::printf("};\n\n}  // namespace zorp::opencl\n");
  return 0;
}

}  // namespace
}  // namespace zorp::opencl

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: header SERVED\n");
    return 2;
  }
  return zorp::opencl::run(argv[1]);
}
