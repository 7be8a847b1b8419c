// Writes what is derived from the grammar of the exported names:
//
//   generate kernels ELEMENT HEADER GROUP...  the entry points of these families for one element
//                                             type (double, float, half), in terms of HEADER
//   generate portable ELEMENT HEADER GROUP... the same kernels as a table of functions on arrays,
//   in
//                                             width 1 and in the widest, for the portable build
//   generate version-script GROUP...          the linker's version script
//   generate names GROUP...                   the exported names, one a line
//   generate header ACCURACY GROUP...         the public header's declarations, ACCURACY being the
//                                             table of measured errors
//   generate header-checks ELEMENT GROUP...   the calls of the header's test
//   generate summary GROUP...                 how many of all names the groups cover
//   generate signatures                       a table of all kernels, tabs between columns
//   generate descriptions                     a table of all families in words, likewise
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "export/descriptions.h"
#include "export/grammar.h"
#include "export/header.h"

namespace zorp::grammar {
namespace {

std::string lane_type(Lane lane) {
  constexpr const char* names[] = {"double",  "float",   "half",     "int16_t",
                                   "int32_t", "int64_t", "uint32_t", "uint64_t"};
  return names[int(lane)];
}

std::string tier_name(Tier tier) {
  constexpr const char* names[] = {"standard", "native", "half", "rm"};
  return std::string("Tier::") + names[int(tier)];
}

template <class Range, class Text>
std::string joined(const Range& range, const char* separator, Text text) {
  std::string out;
  for (const auto& item : range) {
    if (!out.empty()) out += separator;
    out += text(item);
  }
  return out;
}

std::string typed(const char* text, const std::string& a, int width, const std::string& b = "") {
  char buffer[256];
  std::snprintf(buffer, sizeof buffer, text, a.c_str(), width, b.c_str());
  return buffer;
}

/// The text of one kernel's entry point, and of its callout wrapper.
class EntryPoint {
 public:
  explicit EntryPoint(const Kernel& kernel)
      : kernel_(kernel), operands_(kernel.operands()), results_(kernel.results()) {}

  std::string prototype() const {
    if (kernel_.operands_on_stack())
      return "StackVector* " + kernel_.symbol() +
             "(StackVector* result, StackVector x, StackVector y, StackVector z)";
    std::vector<std::string> parameters;
    if (kernel_.pointer()) parameters.push_back(lane_type(*kernel_.pointer()) + "* second");
    for (size_t i = 0; i < operands_.size(); ++i)
      for (const std::string& name : register_names(i))
        parameters.push_back(
            typed("Register<%s, %d> %s", lane_type(operands_[i]), kernel_.width, name));
    const std::string result =
        kernel_.family->form == Form::integer_divrem && kernel_.width == 1
            ? "uint64_t"
            : typed("Register<%s, %d>", lane_type(results_[0]), kernel_.width);
    return result + " " + kernel_.symbol() + "(" + joined(parameters, ", ", identity) + ")";
  }

  std::string body() const {
    const std::string algorithm = this->algorithm();
    const std::string tier = tier_name(kernel_.tier);
    if (kernel_.operands_on_stack())
      return "return kernel_on_stack<" + algorithm + ", " + tier + ">(result, x, y, z);";
    const bool by_rare = kernel_.special_lanes() == Class::A;
    std::string call = by_rare ? "kernel_by_rare" : "kernel";
    if (kernel_.pointer()) call += "_storing";
    call += "<" + algorithm + (by_rare ? "" : ", " + tier) + ", " + std::to_string(kernel_.width);
    if (kernel_.calls_out()) call += ", " + kernel_.wrapper_symbol();
    call += ">(";
    std::vector<std::string> arguments;
    if (kernel_.pointer()) arguments.push_back("second");
    for (size_t i = 0; i < operands_.size(); ++i)
      arguments.push_back(typed("Operand<%s, %d>{", lane_type(operands_[i]), kernel_.width) +
                          joined(register_names(i), ", ", identity) + "}");
    return "return " + call + joined(arguments, ", ", identity) + ");";
  }

  /// The kernel as a type whose function takes arrays.
  std::string portable_type() const {
    std::vector<Lane> out = results_;
    if (kernel_.pointer()) out.push_back(*kernel_.pointer());
    return "Kernel<" + algorithm() + ", " + tier_name(kernel_.algorithm_tier()) + ", " +
           std::to_string(kernel_.width) +
           (kernel_.special_lanes() == Class::A ? ", true, " : ", false, ") +
           (kernel_.calls_out() ? kernel_.wrapper_symbol() : "nullptr") + ", Types<" +
           joined(out, ", ", lane_type) + ">, Types<" + joined(operands_, ", ", lane_type) + ">>";
  }

  /// The images that a wrapper receives, as parameters: operands, then results.
  std::string wrapper_parameters() const {
    std::vector<std::string> images = rare_parameters();
    if (kernel_.width > 1 && kernel_.special_lanes() != Class::A)
      images.push_back("uint32_t special");
    return joined(images, ", ", identity);
  }

  std::string wrapper_body() const {
    const std::string images = joined(image_names(), ", ", identity);
    const std::string rare = kernel_.rare_symbol();
    if (kernel_.width == 1) return rare + "(" + images + ");";
    if (kernel_.special_lanes() == Class::A)
      return "serve_all_lanes<" + rare + ", " + std::to_string(kernel_.width) + ">(" + images +
             ");";
    return "serve_lanes<" + rare + ">(special, " + images + ");";
  }

  std::vector<std::string> rare_parameters() const {
    std::vector<std::string> parameters;
    const std::vector<std::string> names = image_names();
    for (Lane lane : operands_)
      parameters.push_back("const " + lane_type(lane) + "* " + names[parameters.size()]);
    std::vector<Lane> out = results_;
    if (kernel_.pointer()) out.push_back(*kernel_.pointer());
    for (Lane lane : out) parameters.push_back(lane_type(lane) + "* " + names[parameters.size()]);
    return parameters;
  }

 private:
  static std::string identity(const std::string& text) { return text; }

  std::string algorithm() const {
    std::string name = kernel_.family->algorithm;
    if (const size_t hole = name.find("{}"); hole != name.npos)
      name.replace(hole, 2, lane_type(results_[0]));
    return name;
  }

  std::vector<std::string> register_names(size_t operand) const {
    const std::string name(1, char('x' + operand));
    if (registers(operands_[operand], kernel_.width) == 1) return {name};
    return {name + "0", name + "1"};
  }

  std::vector<std::string> image_names() const {
    std::vector<std::string> names;
    for (size_t i = 0; i < operands_.size(); ++i) names.push_back(std::string(1, char('x' + i)));
    names.push_back("first");
    if (kernel_.pointer() || results_.size() > 1) names.push_back("second");
    return names;
  }

  const Kernel& kernel_;
  std::vector<Lane> operands_, results_;
};

/// Kernels that call out do, and emulated half arithmetic, which isn't inlined.
bool makes_calls(Element element, const std::vector<std::string>& groups) {
  if (element == Element::f16) return true;
  for (const Kernel& kernel : kernels_of(groups))
    if (kernel.element == element && kernel.calls_out()) return true;
  return false;
}

Element element_of(const std::string& name) {
  return name == "double" ? Element::f64 : name == "float" ? Element::f32 : Element::f16;
}

/// The callout wrappers of kernels, with the declarations of the rare routines. A wrapper depends
/// on the rare routine alone, not on tier or (but for width 1 and the wrappers of all lanes) width:
/// one copy carries the names of all.
class Wrappers {
 public:
  void print(const Kernel& kernel, const char* preparation = "") {
    const EntryPoint entry(kernel);
    const auto parameters = joined(entry.rare_parameters(), ", ", [](auto& p) { return p; });
    if (declared_.insert(kernel.rare_symbol()).second)
      std::printf("\nvoid %s(%s);\n", kernel.rare_symbol().c_str(), parameters.c_str());
    const std::string body = entry.wrapper_body();
    const auto [known, is_new] =
        printed_.emplace(kernel.rare_symbol() + body, kernel.wrapper_symbol());
    if (is_new)
      std::printf("\n[[gnu::noinline, gnu::cold]] void %s(%s) {\n  %s%s\n}\n",
                  kernel.wrapper_symbol().c_str(), entry.wrapper_parameters().c_str(), preparation,
                  body.c_str());
    else
      std::printf("\n[[gnu::alias(\"%s\"), gnu::cold]] void %s(%s);\n", known->second.c_str(),
                  kernel.wrapper_symbol().c_str(), entry.wrapper_parameters().c_str());
  }

 private:
  std::set<std::string> declared_;
  std::map<std::string, std::string> printed_;
};

void print_kernels(const std::string& element_name, const std::string& header,
                   const std::vector<std::string>& groups) {
  const Element element = element_of(element_name);
  std::printf(
      "// Written by export/generate from the grammar of the exported names.\n"
      "#include \"%s\"\n\n#include \"frame/kernel.h\"\n\nusing namespace zorp;\n\n",
      header.c_str());
  if (!makes_calls(element, groups))
    std::printf(
        "// No kernel here calls a routine: rsi and rdi stay out of use instead of being saved.\n"
        "register long rsi asm(\"rsi\");\nregister long rdi asm(\"rdi\");\n\n");
  std::printf("extern \"C\" {\n");
  Wrappers wrappers;
  for (const Kernel& kernel : kernels_of(groups)) {
    if (kernel.element != element) continue;
    const EntryPoint entry(kernel);
    if (kernel.calls_out()) wrappers.print(kernel);
    if (kernel.is_alias()) {
      Kernel target = kernel;
      target.tier = kernel.algorithm_tier();
      std::printf("[[gnu::visibility(\"default\"), gnu::alias(\"%s\")]] %s;\n",
                  target.symbol().c_str(), entry.prototype().c_str());
    } else {
      std::printf("[[gnu::visibility(\"default\"), gnu::flatten]] %s {\n  %s\n}\n",
                  entry.prototype().c_str(), entry.body().c_str());
    }
  }
  std::printf("\n}  // extern \"C\"\n");
}

void print_portable(const std::string& element_name, const std::string& header,
                    const std::vector<std::string>& groups) {
  const Element element = element_of(element_name);
  std::vector<Kernel> kernels;
  for (const Kernel& kernel : kernels_of(groups))
    if (kernel.element == element &&
        (kernel.width == 1 || kernel.width == kernel.family->widths(element).back()))
      kernels.push_back(kernel);
  std::printf(
      "// Written by export/generate from the grammar of the exported names.\n"
      "#include \"%s\"\n\n#include \"tests/portable/evaluate.h\"\n\n"
      "using namespace zorp;\nusing namespace zorp::portable;\n\nextern \"C\" {\n",
      header.c_str());
  Wrappers wrappers;
  for (const Kernel& kernel : kernels)
    if (kernel.calls_out()) wrappers.print(kernel, "const CallersControl control;\n  ");
  std::printf(
      "\n}  // extern \"C\"\n\nnamespace {\n[[gnu::used, gnu::section(\"zorp_kernels\")]] "
      "const Entry entries[] = {\n");
  for (const Kernel& kernel : kernels)
    std::printf("    {\"%s\", %s::evaluate},\n", kernel.name().c_str(),
                EntryPoint(kernel).portable_type().c_str());
  std::printf("};\n}  // namespace\n");
}

/// Lanes are joined by commas; columns with nothing in them hold a dash.
void print_signatures() {
  constexpr const char* elements[] = {"double", "float", "half"};
  constexpr const char* tiers[] = {"standard", "native", "half", "rm"};
  constexpr const char* classes[] = {"V", "S", "C", "SC", "A"};
  std::printf(
      "symbol\tfamily\telement\twidth\ttier\truns\tclass\toperands\tresults\tpointer\t"
      "prototype\n");
  for (const Kernel& kernel : kernels())
    std::printf(
        "%s\t%s\t%s\t%d\t%s\t%s\t%s\t%s\t%s\t%s\t%s\n", kernel.symbol().c_str(),
        kernel.family->name.c_str(), elements[int(kernel.element)], kernel.width,
        tiers[int(kernel.tier)], tiers[int(kernel.algorithm_tier())],
        classes[int(kernel.special_lanes())], joined(kernel.operands(), ",", lane_type).c_str(),
        joined(kernel.results(), ",", lane_type).c_str(),
        kernel.pointer() ? lane_type(*kernel.pointer()).c_str() : "-", prototype(kernel).c_str());
}

void print_descriptions() {
  std::printf("family\tgroup\tvalue\tspecial\tmethod\n");
  for (const Family& family : families()) {
    const Description text = description(family);
    std::printf("%s\t%s\t%s\t%s\t%s\n", family.name.c_str(), family.group.c_str(),
                text.value.c_str(), text.special.c_str(), text.method.c_str());
  }
}

int run(const std::vector<std::string>& arguments) {
  const auto rest = [&](size_t from) {
    return std::vector<std::string>(arguments.begin() + long(from), arguments.end());
  };
  const std::string what = arguments.empty() ? "" : arguments[0];
  if (what == "kernels" && arguments.size() > 3) {
    print_kernels(arguments[1], arguments[2], rest(3));
  } else if (what == "portable" && arguments.size() > 3) {
    print_portable(arguments[1], arguments[2], rest(3));
  } else if (what == "version-script") {
    std::printf("{\n  global:\n");
    for (const Kernel& kernel : kernels_of(rest(1)))
      std::printf("    %s;\n", kernel.symbol().c_str());
    std::printf("  local: *;\n};\n");
  } else if (what == "names") {
    for (const Kernel& kernel : kernels_of(rest(1))) std::printf("%s\n", kernel.symbol().c_str());
  } else if (what == "header" && arguments.size() > 1) {
    print_header(arguments[1], rest(2));
  } else if (what == "header-checks" && arguments.size() > 1) {
    print_header_checks(arguments[1], rest(2));
  } else if (what == "summary") {
    std::printf("exports: %zu of %zu\n", kernels_of(rest(1)).size(), kernels().size());
  } else if (what == "signatures") {
    print_signatures();
  } else if (what == "descriptions") {
    print_descriptions();
  } else {
    std::fprintf(
        stderr,
        "usage: generate kernels|portable|version-script|names|header|header-checks|summary|"
        "signatures|descriptions ...\n");
    return 2;
  }
  return 0;
}

}  // namespace
}  // namespace zorp::grammar

int main(int argc, char** argv) { return zorp::grammar::run({argv + 1, argv + argc}); }
