#include "export/header.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "export/descriptions.h"
#include "export/grammar.h"

namespace zorp::grammar {
namespace {

/// Vector registers are told apart by what C calls them: double, float, anything else.
std::string register_type(Lane lane, int bytes) {
  return "__m" + std::to_string(8 * bytes) +
         (lane == Lane::f64   ? "d"
          : lane == Lane::f32 ? ""
                              : "i");
}

std::string scalar_type(Lane lane) {
  constexpr const char* names[] = {"double",  "float",   "uint16_t", "int16_t",
                                   "int32_t", "int64_t", "uint32_t", "uint64_t"};
  return names[int(lane)];
}

std::string lane_name(Lane lane) {
  constexpr const char* names[] = {"f64", "f32", "f16", "i16", "i32", "i64", "u32", "u64"};
  return names[int(lane)];
}

/// f64x16 and so on.
std::string shape(Lane lane, int width) { return lane_name(lane) + "x" + std::to_string(width); }

/// The C type of a register pair; unsigned lanes share the pairs of signed ones.
std::string pair_type(Lane lane, int width) {
  if (lane == Lane::u32) lane = Lane::i32;
  if (lane == Lane::u64) lane = Lane::i64;
  return "zorp_" + shape(lane, width);
}

/// The C type of one register of a vector.
std::string part_type(Lane lane, int width) {
  if (width == 1 && lane != Lane::f16) return scalar_type(lane);
  const int bytes = lane_bytes(lane) * lanes_in_memory(width);
  return register_type(lane, bytes <= 16 ? 16 : bytes <= 32 ? 32 : 64);
}

/// The registers that hold a part: clang wants the name that fits the type.
std::string register_class(const std::string& part) {
  return part.starts_with("__m512") ? "zmm" : part.starts_with("__m256") ? "ymm" : "xmm";
}

/// The C type of a vector.
std::string vector_type(Lane lane, int width) {
  return registers(lane, width) == 2 ? pair_type(lane, width) : part_type(lane, width);
}

/// The value as another type of 512-bit register.
std::string cast_512(const std::string& from, const std::string& to, const std::string& value) {
  const std::map<std::string, std::string> names = {
      {"__m512", "ps"}, {"__m512d", "pd"}, {"__m512i", "si512"}};
  return from == to ? value
                    : "_mm512_cast" + names.at(from) + "_" + names.at(to) + "(" + value + ")";
}

/// One kernel as a C function.
class Function {
 public:
  explicit Function(const Kernel& kernel) : kernel_(kernel) {
    const std::vector<Lane> lanes = kernel.operands();
    const std::string names = is_integer_family()                         ? "ab"
                              : kernel.family->form == Form::with_integer ? "xn"
                              : kernel.family->name.starts_with("atan2")  ? "yx"
                                                                          : "xyz";
    for (size_t i = 0; i < lanes.size(); ++i) operands_.push_back({lanes[i], names.substr(i, 1)});
  }

  std::string name() const { return "zorp_z1_" + kernel_.name(); }

  bool two_results() const { return kernel_.results().size() == 2; }

  std::string result_type() const {
    const Lane lane = kernel_.results()[0];
    if (!two_results()) return vector_type(lane, kernel_.width);
    return std::string(is_integer_family() ? "zorp_divrem_" : "zorp_sincos_") +
           shape(lane, kernel_.width);
  }

  /// The definition of the type of two results.
  std::string result_definition() const {
    const std::string members = is_integer_family() ? "quot, rem" : "sin, cos";
    return "typedef struct {\n  " + vector_type(kernel_.results()[0], kernel_.width) + " " +
           members + ";\n} " + result_type() + ";\n";
  }

  std::string prototype() const {
    std::string text = result_type() + " " + name() + "(";
    std::string separator;
    for (const auto& [lane, operand] : operands_) {
      text += separator + vector_type(lane, kernel_.width) + " " + operand;
      separator = ", ";
    }
    if (kernel_.pointer()) text += separator + scalar_type(*kernel_.pointer()) + "* second";
    return text + ")";
  }

  /// Whether the platform's calling convention can't express the kernel.
  bool is_inline() const {
    if (kernel_.operands_on_stack()) return false;
    bool pairs = two_results();
    for (Lane lane : kernel_.results()) pairs |= registers(lane, kernel_.width) == 2;
    for (const auto& operand : operands_) pairs |= registers(operand.lane, kernel_.width) == 2;
    return pairs;
  }

  std::string text() const {
    if (!is_inline()) return declaration();
    const bool packed = is_integer_family() && kernel_.width == 1;
    return packed ? packed_call() : register_call();
  }

 private:
  struct Operand {
    Lane lane;
    std::string name;
  };
  struct Part {
    std::string type, value;
  };

  bool is_integer_family() const {
    const Form form = kernel_.family->form;
    return form == Form::integer_binary || form == Form::integer_divrem;
  }

  /// A kernel's results depend on its operands alone, unless a step follows MXCSR.
  std::string attributes() const {
    return kernel_.follows_mxcsr() || kernel_.pointer() ? "ZORP_Z1_NOTHROW" : "ZORP_Z1_PURE";
  }

  std::string label() const { return "__asm__(\"" + kernel_.symbol() + "\")"; }

  /// The platform's calling convention is the kernel's. (A pointer comes last for the caller and in
  /// the first general register for the kernel: no other operand beside it is in one.)
  std::string declaration() const {
    return prototype() + " " + label() + " " + attributes() + ";\n";
  }

  std::string inline_head() const { return "ZORP_Z1_INLINE " + prototype() + " {\n"; }
  std::string entry() const { return name() + "_entry"; }

  /// Two 32-bit results in one general register.
  std::string packed_call() const {
    const std::string lane = scalar_type(operands_[0].lane);
    return inline_head() + "  uint64_t " + entry() + "(" + lane + ", " + lane + ") " + label() +
           " ZORP_Z1_PURE;\n  const uint64_t both = " + entry() + "(a, b);\n  " + result_type() +
           " result = {(" + lane + ")both, (" + lane + ")(both >> 32)};\n  return result;\n}\n";
  }

  /// Register pairs and second results, which the platform's convention can't return: the
  /// registers are pinned around a call.
  std::string register_call() const {
    std::vector<Part> in;
    for (const auto& [lane, operand] : operands_) {
      const std::string type = part_type(lane, kernel_.width);
      if (registers(lane, kernel_.width) == 2) {
        in.push_back({type, operand + ".lo"});
        in.push_back({type, operand + ".hi"});
      } else {
        in.push_back({type, operand});
      }
    }
    const Lane result_lane = kernel_.results()[0];
    const std::string type = part_type(result_lane, kernel_.width);
    const size_t parts = size_t(registers(result_lane, kernel_.width));
    const size_t out = parts * kernel_.results().size();
    const size_t pinned = std::max(in.size(), out);

    std::string text = inline_head() + "  void " + entry() + "(void) " + label() + ";\n";
    std::string constraints;
    for (size_t i = 0; i < pinned; ++i) {
      const std::string number = std::to_string(i);
      const bool is_operand = i < in.size();
      const std::string part = is_operand ? in[i].type : type;
      text += "  register " + part + " r" + number + " __asm__(\"" + register_class(part) + number +
              "\")" + (is_operand ? " = " + in[i].value : "") + ";\n";
      constraints +=
          std::string(i ? ", " : "") + (is_operand ? "\"+v\"" : "\"=v\"") + "(r" + number + ")";
    }
    const bool stores = kernel_.pointer().has_value();
    if (stores) constraints += ", \"+D\"(second)";
    text += std::string("  __asm__") + (stores || kernel_.follows_mxcsr() ? " volatile" : "") +
            "(ZORP_Z1_CALL\n          : " + constraints + "\n          : [kernel] \"r\"(" +
            entry() + ")\n          : " + (stores ? "\"memory\", " : "") + "ZORP_Z1_CLOBBERS_" +
            std::to_string(pinned) + ");\n";

    std::vector<std::string> values;
    for (size_t i = 0; i < out; ++i) {
      const std::string number = "r" + std::to_string(i);
      values.push_back(i < in.size() ? cast_512(in[i].type, type, number) : number);
    }
    if (out == 1) return text + "  return " + values[0] + ";\n}\n";
    std::string list;
    for (size_t i = 0; i < out; ++i) {
      const bool grouped = parts == 2 && out == 4;
      list += std::string(i ? ", " : "") + (grouped && i % 2 == 0 ? "{" : "") + values[i] +
              (grouped && i % 2 == 1 ? "}" : "");
    }
    return text + "  " + result_type() + " result = {" + list + "};\n  return result;\n}\n";
  }

  const Kernel& kernel_;
  std::vector<Operand> operands_;
};

std::string tier_text(Tier tier) {
  return tier == Tier::standard ? "standard" : std::string(suffix(tier));
}

std::string element_text(Element element) {
  constexpr const char* names[] = {"double", "float", "half"};
  return names[int(element)];
}

/// "_native = _half = _rm; standard": the tiers of an element type, joined where they are one code.
std::string tiers_text(const Family& family, Element element) {
  std::map<Tier, std::string> groups;
  for (Tier tier : family.tiers) {
    std::string& group = groups[family.algorithm_tier[int(element)][int(tier)]];
    group += (group.empty() ? "" : " = ") + tier_text(tier);
  }
  std::string text;
  for (const auto& [leader, group] : groups) text += (text.empty() ? "" : ", ") + group;
  return text;
}

std::string widths_text(const Family& family, Element element) {
  std::string text;
  for (int width : family.widths(element)) text += " " + std::to_string(width);
  return text;
}

/// Rows "family | type | tiers | largest error" of the table of measured errors.
using Accuracy = std::map<std::string, std::vector<std::string>>;

Accuracy read_accuracy(const std::string& file) {
  Accuracy accuracy;
  std::ifstream table(file);
  for (std::string line; std::getline(table, line);) {
    std::istringstream row(line);
    std::vector<std::string> cells;
    for (std::string cell; std::getline(row, cell, '|');) {
      const size_t begin = cell.find_first_not_of(' ');
      if (begin == std::string::npos) continue;
      cells.push_back(cell.substr(begin, cell.find_last_not_of(' ') + 1 - begin));
    }
    if (cells.size() >= 4 && cells[3].find_first_not_of("0123456789.") == std::string::npos)
      accuracy[cells[0]].push_back(cells[1] + ", " + cells[2] + ": " + cells[3]);
  }
  return accuracy;
}

/// Prints a paragraph of a comment, in lines of up to 100 characters.
void print_paragraph(const std::string& text) {
  std::istringstream words(text);
  std::string line = " *";
  for (std::string word; words >> word;) {
    if (line.size() + 1 + word.size() > 100) {
      std::printf("%s\n", line.c_str());
      line = " *  ";
    }
    line += " " + word;
  }
  std::printf("%s\n", line.c_str());
}

void print_comment(const Family& family, const Accuracy& accuracy) {
  const Description text = description(family);
  std::printf("\n/**\n");
  print_paragraph(family.name + ": " + text.value);
  if (!text.special.empty()) print_paragraph("Special operands: " + text.special);
  print_paragraph("Method: " + text.method);
  for (Element element : family.elements)
    std::printf(" * %s: widths%s; tiers: %s\n", element_text(element).c_str(),
                widths_text(family, element).c_str(), tiers_text(family, element).c_str());
  const auto measured = accuracy.find(family.name);
  if (measured != accuracy.end()) {
    std::printf(" * Largest error found, in units in the last place:\n");
    for (const std::string& row : measured->second) std::printf(" *   %s\n", row.c_str());
  }
  std::printf(" */\n");
}

}  // namespace

std::string prototype(const Kernel& kernel) { return Function(kernel).prototype(); }

void print_header(const std::string& accuracy_table, const std::vector<std::string>& groups) {
  const Accuracy accuracy = read_accuracy(accuracy_table);
  std::printf(
      "/* Written by export/generate from the grammar of the exported names.\n"
      " * Include zorp_z1.h, which tells the conventions. */\n");
  const Family* family = nullptr;
  std::set<std::string> defined;
  for (const Kernel& kernel : kernels_of(groups)) {
    if (kernel.family != family) print_comment(*kernel.family, accuracy);
    family = kernel.family;
    const Function function(kernel);
    if (function.two_results() && defined.insert(function.result_type()).second)
      std::printf("%s", function.result_definition().c_str());
    std::printf("%s", function.text().c_str());
  }
}

void print_header_checks(const std::string& element, const std::vector<std::string>& groups) {
  for (const Kernel& kernel : kernels_of(groups)) {
    // Tiers differ in their names alone, but for the functions around register pairs.
    const Function function(kernel);
    if (element_text(kernel.element) != element ||
        (kernel.tier != Tier::standard && !function.is_inline()))
      continue;
    Kernel single = kernel;
    single.width = 1;
    std::printf("check<%d, %s, %s>(\"%s\");\n", kernel.width, function.name().c_str(),
                Function(single).name().c_str(), kernel.name().c_str());
  }
}

}  // namespace zorp::grammar
