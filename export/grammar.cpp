#include "export/grammar.h"

#include <algorithm>
#include <map>

namespace zorp::grammar {
namespace {

constexpr int kWidths[] = {1, 2, 3, 4, 8, 16, 32};

// One line a family. The three strings say, for double, float and half, which tiers run one
// algorithm: D the standard tier, N _native, H _half, R _rm; joined letters run the same code. The
// last string gives the classes for double standard, double reduced, float standard, float
// reduced, half.
struct Row {
  const char* name;
  Form form;
  const char* algorithms[3];
  const char* classes;
};

constexpr Row kRows[] = {
    {"acos", Form::unary, {"D N", "D N", "D N"}, "V V V V V"},
    {"acosh", Form::unary, {"D N", "D N", "D N"}, "C C C C V"},
    {"acospi", Form::unary, {"D N", "D N", "D N"}, "C C C C V"},
    {"asin", Form::unary, {"D N", "D N", "D N"}, "V V V V V"},
    {"asinh", Form::unary, {"D N", "D N", "DN"}, "C C C C V"},
    {"asinpi", Form::unary, {"D N", "D N", "D N"}, "C C C C V"},
    {"atan", Form::unary, {"D N", "D N", "D N"}, "V C V C V"},
    {"atan2", Form::binary, {"D N", "D N", "D N"}, "SC SC SC SC C"},
    {"atan2pi", Form::binary, {"D N", "D N", "D N"}, "C C C C C"},
    {"atanh", Form::unary, {"D N", "D N", "DN"}, "C C C C V"},
    {"atanpi", Form::unary, {"D N", "D N", "D N"}, "C C C C V"},
    {"cbrt", Form::unary, {"D N", "D N", "DN"}, "V V V V V"},
    {"ceil", Form::unary, {"D", "D", "D"}, "V V V V V"},
    {"copysign", Form::binary, {"D", "D", "D"}, "V V V V V"},
    {"cos", Form::unary, {"D NHR", "D NHR", "DNHR"}, "SC SC SC SC S"},
    {"cosh", Form::unary, {"D N", "D N", "DN"}, "C C C C V"},
    {"cospi", Form::unary, {"D N", "DN", "DN"}, "V V V V V"},
    {"div", Form::binary, {"D NHR", "DR NH", "DNHR"}, "V V S C V"},
    {"erf", Form::unary, {"D N", "D N", "DN"}, "V V V V V"},
    {"erfc", Form::unary, {"D N", "D N", "DN"}, "C C C C C"},
    {"exp", Form::unary, {"D NHR", "DR NH", "DNHR"}, "V V V V V"},
    {"exp10", Form::unary, {"D NHR", "D NHR", "DNHR"}, "V V V V V"},
    {"exp2", Form::unary, {"D NHR", "DR NH", "DNHR"}, "V V V V V"},
    {"expm1", Form::unary, {"D N", "D N", "DN"}, "C C C C V"},
    {"fabs", Form::unary, {"D", "D", "D"}, "V V V V V"},
    {"fdim", Form::binary, {"D", "D", "D"}, "C C C C C"},
    {"floor", Form::unary, {"D", "D", "D"}, "V V V V V"},
    {"fma", Form::ternary, {"DR", "DR", "DR"}, "V V V V V"},
    {"fmax", Form::binary, {"D", "D", "D"}, "C C C C C"},
    {"fmin", Form::binary, {"D", "D", "D"}, "C C C C C"},
    {"fmod", Form::binary, {"D", "D", "D"}, "C C C C C"},
    {"fract", Form::element_pointer, {"D", "D", "D"}, "C C C C C"},
    {"frexp", Form::integer_pointer, {"D", "D", "D"}, "C C C C C"},
    {"hypot", Form::binary, {"D N", "D N", "DN"}, "C C C C V"},
    {"idiv", Form::integer_binary, {"D", "", ""}, "V V V V V"},
    {"idivrem", Form::integer_divrem, {"D", "", ""}, "V V V V V"},
    {"ilogb", Form::integer_result, {"D", "D", "D"}, "C C C C C"},
    {"inv", Form::unary, {"D NHR", "DR NH", "D NHR"}, "V V V V V"},
    {"irem", Form::integer_binary, {"D", "", ""}, "V V V V V"},
    {"ldexp", Form::with_integer, {"D", "D", "D"}, "V V V V V"},
    {"lgamma", Form::unary, {"D", "D", "D"}, "SC SC C C C"},
    {"lgammar", Form::integer_pointer, {"D", "D", "D"}, "SC SC C C C"},
    {"log", Form::unary, {"D NHR", "DR N H", "DNHR"}, "V V S V V"},
    {"log10", Form::unary, {"D NH", "D NH", "DNH"}, "V V V V V"},
    {"log1p", Form::unary, {"D N", "D N", "DN"}, "C C C C V"},
    {"log2", Form::unary, {"D NHR", "DR NH", "DNHR"}, "V V V V V"},
    {"logb", Form::unary, {"D", "D", "D"}, "C C C C C"},
    {"maxmag", Form::binary, {"D", "D", "D"}, "C C C C C"},
    {"minmag", Form::binary, {"D", "D", "D"}, "C C C C C"},
    {"modf", Form::element_pointer, {"D", "D", "D"}, "C C C C C"},
    {"nan", Form::from_payload, {"D", "D", "D"}, "V V V V V"},
    {"nearbyint", Form::unary, {"D", "D", "D"}, "V V V V V"},
    {"nextafter", Form::binary, {"D", "D", "D"}, "C C C C C"},
    {"pow", Form::binary, {"D NR", "D NR", "DNR"}, "C C C C C"},
    {"pown", Form::with_integer, {"D N", "D N", "D N"}, "SC SC SC SC SC"},
    {"powr", Form::binary, {"D NH", "D NH", "DNH"}, "C C C C C"},
    {"rcbrt", Form::unary, {"D N", "D N", "DN"}, "V V V V C"},
    {"remainder", Form::binary, {"D", "D", "D"}, "C C C C S"},
    {"remquo", Form::quotient_pointer, {"D", "D", "D"}, "C C C C C"},
    {"rint", Form::unary, {"D", "D", "D"}, "V V V V V"},
    {"rootn", Form::with_integer, {"D N", "D N", "DN"}, "C C C C C"},
    {"round", Form::unary, {"D", "D", "D"}, "V V V V V"},
    {"rsqrt", Form::unary, {"D NH", "D NH", "DNH"}, "V V V V C"},
    {"sin", Form::unary, {"D NHR", "D NHR", "DNHR"}, "SC SC SC SC S"},
    {"sincos", Form::element_pointer, {"D NR", "DNR", "DNR"}, "SC SC S S V"},
    {"sincosreg", Form::two_results, {"D N", "DN", "DN"}, "SC SC S S V"},
    {"sinh", Form::unary, {"D N", "D N", "D N"}, "C C C C V"},
    {"sinpi", Form::unary, {"D N", "DN", "DN"}, "V V V V V"},
    {"sqrt", Form::unary, {"D NH", "D NH", "DNH"}, "V V S V C"},
    {"tan", Form::unary, {"D NHR", "D NHR", "D NHR"}, "SC SC SC SC V"},
    {"tanh", Form::unary, {"D N", "D N", "D N"}, "C C C V V"},
    {"tanpi", Form::unary, {"D N", "D N", "D N"}, "V V V V V"},
    {"tgamma", Form::unary, {"D", "D", "D"}, "A A A A A"},
    {"trunc", Form::unary, {"D", "D", "D"}, "V V V V V"},
    {"udiv", Form::integer_binary, {"D", "", ""}, "V V V V V"},
    {"udivrem", Form::integer_divrem, {"D", "", ""}, "V V V V V"},
    {"urem", Form::integer_binary, {"D", "", ""}, "V V V V V"},
};

// Families whose name inside the library differs from the exported one.
const std::map<std::string, std::string> kInternalNames = {
    {"log", "ln"}, {"rsqrt", "invsqrt"}, {"rcbrt", "invcbrt"}};

// Half kernels with a step that follows MXCSR: the narrowing of a float result, the division, or
// the conversion to a 16-bit integer.
const std::vector<std::string> kHalfFollowsMxcsr = {
    "cos",   "sin",    "tanpi",  "div",       "inv",       "sinpi",  "cospi",   "erfc",   "expm1",
    "fmod",  "hypot",  "ldexp",  "pow",       "pown",      "powr",   "rcbrt",   "remquo", "rootn",
    "round", "rsqrt",  "sincos", "sincosreg", "sqrt",      "tan",    "logb",    "fdim",   "fmax",
    "fmin",  "maxmag", "minmag", "frexp",     "remainder", "lgamma", "lgammar", "tgamma"};
// The same, in the standard tier alone.
const std::vector<std::string> kHalfStandardFollowsMxcsr = {"acos",   "acosh", "acospi", "asin",
                                                            "asinpi", "atan",  "atan2",  "atan2pi",
                                                            "atanpi", "sinh",  "tanh"};

bool contains(const std::vector<std::string>& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

Tier tier_of(char letter) {
  switch (letter) {
    case 'N':
      return Tier::native;
    case 'H':
      return Tier::half;
    case 'R':
      return Tier::rm;
    default:
      return Tier::standard;
  }
}

std::string camel_case(std::string name) {
  name[0] = char(name[0] - 'a' + 'A');
  return name;
}

Family from_row(const Row& row) {
  Family family;
  family.name = family.group = row.name;
  family.algorithm = camel_case(row.name);
  family.form = row.form;
  for (Element element : {Element::f64, Element::f32, Element::f16}) {
    std::string_view algorithms = row.algorithms[int(element)];
    if (algorithms.empty()) continue;
    family.elements.push_back(element);
    char leader = 0;  // first letter of a joined group: the tier whose code the group runs
    for (char letter : algorithms) {
      if (letter == ' ') {
        leader = 0;
        continue;
      }
      if (!leader) leader = letter;
      family.algorithm_tier[int(element)][int(tier_of(letter))] = tier_of(leader);
      if (element == Element::f64) family.tiers.push_back(tier_of(letter));
    }
  }
  std::sort(family.tiers.begin(), family.tiers.end());
  std::string_view classes = row.classes;
  for (Class& c : family.classes) {
    std::string_view word = classes.substr(0, classes.find(' '));
    classes.remove_prefix(std::min(word.size() + 1, classes.size()));
    c = word == "V"   ? Class::V
        : word == "S" ? Class::S
        : word == "C" ? Class::C
        : word == "A" ? Class::A
                      : Class::SC;
  }
  return family;
}

Family conversion(const std::string& stem, const std::string& fields,
                  const std::string& algorithm) {
  Family family{};
  family.name = stem + fields;
  family.group = stem;
  family.algorithm = algorithm;
  family.form = Form::conversion;
  family.elements = {Element::f64, Element::f32};
  family.tiers = {Tier::standard};
  return family;
}

std::vector<Family> all_families() {
  std::vector<Family> all;
  for (const Row& row : kRows) all.push_back(from_row(row));
  struct Integer {
    const char *name, *type;
    Lane lane;
  };
  constexpr Integer integers[] = {{"i32", "int32_t", Lane::i32},
                                  {"u32", "uint32_t", Lane::u32},
                                  {"i64", "int64_t", Lane::i64},
                                  {"u64", "uint64_t", Lane::u64}};
  // The rounding fields and the modes they stand for.
  constexpr const char* roundings[][2] = {
      {"rte", "rn"}, {"rtn", "rd"}, {"rtp", "ru"}, {"rtz", "rz"}};
  for (const auto& [field, mode] : roundings) {
    const std::string rounding = mode;
    for (const Integer& integer : integers) {
      const int float_widths = lane_bytes(integer.lane) == 8 ? 6 : 7;
      const std::string type = integer.type;
      for (const char* saturation : {"sat", "nosat"}) {
        Family& family = all.emplace_back(conversion(
            "cvtfpto" + std::string(integer.name), std::string(field) + saturation,
            "FloatToInteger<" + type + ", " + rounding + ", Saturation::" + saturation + ">"));
        family.to = integer.lane;
        family.float_widths = float_widths;
      }
      Family& family =
          all.emplace_back(conversion("cvt" + std::string(integer.name) + "tofp", field,
                                      "IntegerToFloat<" + type + ", {}, " + rounding + ">"));
      family.from = integer.lane;
      family.float_widths = float_widths;
    }
    Family& family =
        all.emplace_back(conversion("cvtfp64tofp32", field, "DoubleToFloat<" + rounding + ">"));
    family.elements = {Element::f64};
    family.from = Lane::f64;
    family.to = Lane::f32;
  }
  std::sort(all.begin(), all.end(),
            [](const Family& a, const Family& b) { return a.name < b.name; });
  return all;
}

Lane lane_of(Element element) {
  return element == Element::f64 ? Lane::f64 : element == Element::f32 ? Lane::f32 : Lane::f16;
}

}  // namespace

std::vector<int> Family::widths(Element element) const {
  const int count = element == Element::f64 ? 6 : element == Element::f32 ? float_widths : 7;
  return {kWidths, kWidths + count};
}

std::string Kernel::name() const {
  return family->name + std::string(letter(element)) + std::to_string(width) +
         std::string(suffix(tier));
}

std::string Kernel::symbol() const { return "__zorp_z1_" + name(); }

std::string Kernel::wrapper_symbol() const {
  // fmodf8 alone keeps the wrapper name of an older instruction set.
  if (name() == "fmodf8") return "__zorp_z0_fmodf8_cout_wrapper";
  return symbol() + "_cout_wrapper";
}

std::string Kernel::rare_symbol() const {
  const auto internal = kInternalNames.find(family->name);
  return "__zorp_" + std::string(internal_letter(element)) +
         (internal == kInternalNames.end() ? family->name : internal->second) + "_cout_rare";
}

Class Kernel::special_lanes() const {
  if (element == Element::f16) return family->classes[4];
  return family->classes[2 * int(element) + (algorithm_tier() == Tier::standard ? 0 : 1)];
}

bool Kernel::calls_out() const {
  const Class c = special_lanes();
  return c == Class::C || c == Class::SC || c == Class::A;
}

std::vector<Lane> Kernel::operands() const {
  const Lane own = lane_of(element);
  switch (family->form) {
    case Form::binary:
    case Form::quotient_pointer:
      return {own, own};
    case Form::ternary:
      return {own, own, own};
    case Form::with_integer:
      return {own, Lane::i32};
    case Form::from_payload:
      return {element == Element::f64   ? Lane::i64
              : element == Element::f32 ? Lane::i32
                                        : Lane::i16};
    case Form::integer_binary:
    case Form::integer_divrem: {
      const Lane lane = family->name[0] == 'u' ? Lane::u32 : Lane::i32;
      return {lane, lane};
    }
    case Form::conversion:
      return {family->from.value_or(own)};
    default:
      return {own};
  }
}

std::vector<Lane> Kernel::results() const {
  const Lane own = lane_of(element);
  switch (family->form) {
    case Form::integer_result:
      return {Lane::i32};
    case Form::two_results:
      return {own, own};
    case Form::integer_binary:
      return {operands()[0]};
    case Form::integer_divrem:
      return operands();
    case Form::conversion:
      return {family->to.value_or(own)};
    default:
      return {own};
  }
}

std::optional<Lane> Kernel::pointer() const {
  switch (family->form) {
    case Form::element_pointer:
      return lane_of(element);
    case Form::integer_pointer:
    case Form::quotient_pointer:
      return Lane::i32;
    default:
      return std::nullopt;
  }
}

bool Kernel::follows_mxcsr() const {
  if (contains({"rint", "nearbyint", "remainder", "remquo"}, family->name)) return true;
  if (element != Element::f16) return false;
  return contains(kHalfFollowsMxcsr, family->name) ||
         (tier == Tier::standard && contains(kHalfStandardFollowsMxcsr, family->name));
}

bool Kernel::operands_on_stack() const {
  return family->form == Form::ternary && element == Element::f64 && width == 16;
}

const std::vector<Family>& families() {
  static const std::vector<Family> all = all_families();
  return all;
}

const std::vector<Kernel>& kernels() {
  static const std::vector<Kernel> all = [] {
    std::vector<Kernel> list;
    for (const Family& family : families())
      for (Element element : family.elements)
        for (Tier tier : family.tiers)
          for (int width : family.widths(element)) list.push_back({&family, element, width, tier});
    return list;
  }();
  return all;
}

std::vector<Kernel> kernels_of(const std::vector<std::string>& groups) {
  std::vector<Kernel> list;
  for (const Kernel& kernel : kernels())
    if (contains(groups, kernel.family->group)) list.push_back(kernel);
  return list;
}

const Kernel* find(std::string_view name) {
  static const std::map<std::string, const Kernel*> by_name = [] {
    std::map<std::string, const Kernel*> index;
    for (const Kernel& kernel : kernels()) index[kernel.symbol()] = &kernel;
    return index;
  }();
  constexpr std::string_view prefix = "__zorp_z1_";
  if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
  const auto found = by_name.find(std::string(prefix) + std::string(name));
  return found == by_name.end() ? nullptr : found->second;
}

int lane_bytes(Lane lane) {
  switch (lane) {
    case Lane::f64:
    case Lane::i64:
    case Lane::u64:
      return 8;
    case Lane::f16:
    case Lane::i16:
      return 2;
    default:
      return 4;
  }
}

int registers(Lane lane, int width) { return lane_bytes(lane) * width > 64 ? 2 : 1; }

int lanes_in_memory(int width) { return width == 3 ? 4 : width; }

std::string_view suffix(Tier tier) {
  constexpr std::string_view suffixes[] = {"", "_native", "_half", "_rm"};
  return suffixes[int(tier)];
}

std::string_view letter(Element element) {
  constexpr std::string_view letters[] = {"", "f", "s"};
  return letters[int(element)];
}

std::string_view internal_letter(Element element) {
  constexpr std::string_view letters[] = {"d", "s", "h"};
  return letters[int(element)];
}

}  // namespace zorp::grammar
