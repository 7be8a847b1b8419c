#include "clients/opencl/builtins.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace zorp::opencl {
namespace {

using grammar::Element;
using grammar::Family;
using grammar::Form;
using grammar::Tier;

const std::vector<int> kWidths = {1, 2, 3, 4, 8, 16};
const std::vector<int> kVectorWidths = {2, 3, 4, 8, 16};

// Families that no built-in reaches: functions of C, and what OpenCL C has operators for.
const std::vector<std::string> kUnreached = {"div",  "idiv",      "idivrem", "inv",
                                             "irem", "nearbyint", "rcbrt",   "sincosreg",
                                             "udiv", "udivrem",   "urem"};

// Where the built-in's name isn't the family's.
const std::map<std::string, std::string> kNames = {{"lgammar", "lgamma_r"}};

// The functions with half_ and native_ forms (of float), and their families.
constexpr const char* kLooser[][2] = {
    {"cos", "cos"},     {"divide", "div"}, {"exp", "exp"},     {"exp2", "exp2"}, {"exp10", "exp10"},
    {"log", "log"},     {"log2", "log2"},  {"log10", "log10"}, {"powr", "powr"}, {"recip", "inv"},
    {"rsqrt", "rsqrt"}, {"sin", "sin"},    {"sqrt", "sqrt"},   {"tan", "tan"}};

bool contains(const std::vector<std::string>& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

const Family& family_of(const std::string& name) {
  const auto& all = grammar::families();
  return *std::find_if(all.begin(), all.end(), [&](const Family& f) { return f.name == name; });
}

bool has(const Family& family, Tier tier) {
  return std::find(family.tiers.begin(), family.tiers.end(), tier) != family.tiers.end();
}

std::string element_name(Element element) {
  constexpr const char* names[] = {"double", "float", "half"};
  return names[int(element)];
}

/// The unsigned integer of the element's size.
std::string payload_name(Element element) {
  constexpr const char* names[] = {"ulong", "uint", "ushort"};
  return names[int(element)];
}

Builtin function(const std::string& name, const Family& family, Element element, Tier tier) {
  const std::string own = element_name(element);
  Builtin builtin{.stem = name,
                  .element = element,
                  .family = family.name,
                  .tier = tier,
                  .relaxed_tier = tier,
                  .operands = {{own}},
                  .result = own,
                  .widths = kWidths};
  if (tier == Tier::standard && has(family, Tier::rm)) builtin.relaxed_tier = Tier::rm;
  switch (family.form) {
    case Form::binary:
      builtin.operands = {{own}, {own}};
      break;
    case Form::ternary:
      builtin.operands = {{own}, {own}, {own}};
      break;
    case Form::with_integer:
      builtin.operands = {{own}, {"int"}};
      break;
    case Form::integer_result:
      builtin.result = "int";
      break;
    case Form::from_payload:
      builtin.operands = {{payload_name(element)}};
      break;
    case Form::element_pointer:
      builtin.pointer = own;
      break;
    case Form::integer_pointer:
      builtin.pointer = "int";
      break;
    case Form::quotient_pointer:
      builtin.operands = {{own}, {own}};
      builtin.pointer = "int";
      break;
    default:
      break;
  }
  return builtin;
}

void add_functions(std::vector<Builtin>& all) {
  for (const Family& family : grammar::families()) {
    if (family.form == Form::conversion || contains(kUnreached, family.name)) continue;
    const auto renamed = kNames.find(family.name);
    const std::string name = renamed == kNames.end() ? family.name : renamed->second;
    for (Element element : family.elements) {
      all.push_back(function(name, family, element, Tier::standard));
      if (!contains({"fmax", "fmin", "ldexp"}, name)) continue;
      Builtin by_scalar = all.back();
      by_scalar.operands[1].scalar = true;
      by_scalar.widths = kVectorWidths;
      all.push_back(by_scalar);
    }
  }
  for (const auto& [name, family] : kLooser)
    for (const auto& [prefix, tier] : {std::pair("half_", Tier::half), {"native_", Tier::native}})
      all.push_back(function(prefix + std::string(name), family_of(family), Element::f32, tier));
}

void add_conversions(std::vector<Builtin>& all) {
  const auto add = [&](const std::string& family, Element element, const std::string& from,
                       const std::string& to, const std::string& ending) {
    all.push_back({.stem = "convert_" + to,
                   .ending = ending,
                   .is_conversion = true,
                   .element = element,
                   .family = family,
                   .tier = Tier::standard,
                   .relaxed_tier = Tier::standard,
                   .operands = {{from}},
                   .result = to,
                   .widths = kWidths});
  };
  constexpr const char* integers[][2] = {
      {"int", "i32"}, {"uint", "u32"}, {"long", "i64"}, {"ulong", "u64"}};
  for (const std::string mode : {"", "rte", "rtn", "rtp", "rtz"}) {
    const std::string ending = mode.empty() ? "" : "_" + mode;
    const std::string to_integer = mode.empty() ? "rtz" : mode;
    const std::string to_float = mode.empty() ? "rte" : mode;
    for (Element element : {Element::f64, Element::f32})
      for (const auto& [integer, lane] : integers) {
        const std::string own = element_name(element), stem = "cvtfpto" + std::string(lane);
        add(stem + to_integer + "nosat", element, own, integer, ending);
        add(stem + to_integer + "sat", element, own, integer, "_sat" + ending);
        add("cvt" + std::string(lane) + "tofp" + to_float, element, integer, own, ending);
      }
    add("cvtfp64tofp32" + to_float, Element::f64, "double", "float", ending);
  }
}

}  // namespace

std::string Builtin::name(int width) const {
  return (is_conversion ? type_name(stem, width) : stem) + ending;
}

const grammar::Kernel& Builtin::kernel(int width, bool relaxed) const {
  const std::string name = family + std::string(grammar::letter(element)) + std::to_string(width) +
                           std::string(grammar::suffix(relaxed ? relaxed_tier : tier));
  const auto& all = grammar::kernels();
  const auto found = std::find_if(all.begin(), all.end(), [&](const grammar::Kernel& k) {
    return k.width == width && k.element == element && k.name() == name;
  });
  if (found == all.end()) throw std::logic_error("no kernel is named " + name);
  return *found;
}

const std::vector<Builtin>& builtins() {
  static const std::vector<Builtin> all = [] {
    std::vector<Builtin> list;
    add_functions(list);
    add_conversions(list);
    return list;
  }();
  return all;
}

std::string type_name(const std::string& element, int width) {
  return width == 1 ? element : element + std::to_string(width);
}

}  // namespace zorp::opencl
