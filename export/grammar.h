// The grammar of the exported names: every kernel of the library, by family, element type, width
// and tier, with its operands, its results and the way it serves special lanes. Written down here
// once; the version script, the kernels' entry points, the public header, the tests, the benchmark
// and the reports are all derived from it. Host code: never part of the library itself.
//
//   __zorp_z1_ <family> <type letter> <width> <tier suffix>
//
// type letter: nothing for double, f for float, s for half;  tier suffix: nothing, _native, _half,
// _rm. A name is read from its end: __zorp_z1_exp2 is exp of two doubles, __zorp_z1_exp21 is exp2
// of one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zorp::grammar {

enum class Element { f64, f32, f16 };
enum class Tier { standard, native, half, rm };

/// What a lane of an operand or result holds.
enum class Lane { f64, f32, f16, i16, i32, i64, u32, u64 };

/// How special lanes are served: straight code, second path, callout, second path then callout,
/// every lane by the rare routine.
enum class Class { V, S, C, SC, A };

/// The operands and results of a family.
enum class Form {
  unary,             // x
  binary,            // x, y
  ternary,           // x, y, z
  with_integer,      // x, 32-bit n
  integer_result,    // x; 32-bit integers out
  from_payload,      // integers of the element's size; elements out
  element_pointer,   // x; second result, of the element type, through a pointer
  integer_pointer,   // x; second result, 32-bit integers, through a pointer
  quotient_pointer,  // x, y; second result, 32-bit integers, through a pointer
  two_results,       // x; two results in registers
  integer_binary,    // two 32-bit integers; one out
  integer_divrem,    // two 32-bit integers; two out
  conversion,        // one lane type in, another out
};

struct Family {
  std::string name;
  std::string group;  // families that share one source: the stem of a conversion, else the name
  /// The C++ name of the algorithm: Exp, FloatToInteger<...>. {} stands for the type of the
  /// result's lanes, where the operands don't tell it.
  std::string algorithm;
  Form form;
  std::vector<Element> elements;
  std::vector<Tier> tiers;
  /// For each element type and tier, the tier whose algorithm it runs (equal tiers share code).
  Tier algorithm_tier[3][4];
  /// By double standard, double reduced, float standard, float reduced, half.
  Class classes[5];
  // Conversions only: the lane types; `real` stands for the element type itself.
  std::optional<Lane> from, to;
  int float_widths = 7;  // how many of 1, 2, 3, 4, 8, 16, 32 exist for float

  std::vector<int> widths(Element element) const;
};

struct Kernel {
  const Family* family;
  Element element;
  int width;
  Tier tier;

  std::string name() const;            // exp2f16_native
  std::string symbol() const;          // __zorp_z1_exp2f16_native
  std::string wrapper_symbol() const;  // __zorp_z1_exp2f16_native_cout_wrapper
  std::string rare_symbol() const;     // __zorp_sexp2_cout_rare
  Tier algorithm_tier() const { return family->algorithm_tier[int(element)][int(tier)]; }
  bool is_alias() const { return algorithm_tier() != tier; }
  Class special_lanes() const;
  bool calls_out() const;
  std::vector<Lane> operands() const;
  std::vector<Lane> results() const;    // in registers
  std::optional<Lane> pointer() const;  // the lanes written through the pointer
  /// The result may follow the caller's rounding mode (MXCSR) instead of a static one.
  bool follows_mxcsr() const;
  /// The three operands travel on the stack and the result through the address in rdi.
  bool operands_on_stack() const;
};

/// All 129 families, in alphabetical order.
const std::vector<Family>& families();

/// All 3,480 kernels, by family, element type, tier and width.
const std::vector<Kernel>& kernels();

/// The kernels of the families whose group is listed.
std::vector<Kernel> kernels_of(const std::vector<std::string>& groups);

/// The kernel of that exported name (with or without prefix), or nullptr.
const Kernel* find(std::string_view name);

int lane_bytes(Lane lane);
/// Vector or general registers that one vector of that many lanes takes.
int registers(Lane lane, int width);
/// Lanes that a vector takes in memory behind a pointer: width 3 takes four.
int lanes_in_memory(int width);
std::string_view suffix(Tier tier);
std::string_view letter(Element element);           // "", "f", "s"
std::string_view internal_letter(Element element);  // "d", "s", "h"

}  // namespace zorp::grammar
