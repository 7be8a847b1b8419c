// Calls one kernel on lanes of bit patterns, with every register watched.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tests/support/library.h"
#include "tests/support/machine_state.h"
#include "tests/support/operands.h"

namespace zorp::test {

constexpr std::uint32_t kDefaultMxcsr = 0x1f80;
constexpr std::uint16_t kDefaultX87Control = 0x37f;

/// What surrounds a call, apart from the operands.
struct Conditions {
  /// What the lanes beyond the width hold, for each operand.
  Tuple fill{};
  std::uint64_t stack_offset = 0;  // 0 or 8: the stack pointer at the call, modulo 16
  std::uint32_t mxcsr = kDefaultMxcsr;
  std::uint16_t x87_control = kDefaultX87Control;
  /// Enter with the upper halves of all vector registers clean but those of operands.
  bool clean_upper = false;
  /// Where a pointer kernel writes; nullptr stands for room of the caller's own.
  void* destination = nullptr;
};

/// The results in registers, then what was written through the pointer.
struct Results {
  std::array<Vector, 3> outputs;
};

class Caller {
 public:
  Caller(const Kernel& kernel, const Library& library);

  /// `lanes` holds the operands of as many lanes as the kernel is wide.
  const Results& operator()(std::span<const Tuple> lanes, const Conditions& conditions = {});

  /// What the last call broke of the boundary contract, one line each; empty if nothing.
  std::string violations() const;
  /// The exception flags of MXCSR that the last call raised.
  std::uint32_t raised() const;
  /// What the last call left dirty in the upper halves of the vector registers.
  std::string dirty_upper() const;

  const std::vector<Lane>& operands() const { return operands_; }
  const std::vector<Lane>& outputs() const { return outputs_; }
  Bits output(const Results& results, std::size_t output, int lane) const;
  /// All outputs below the width are the same.
  bool agree(const Results& a, const Results& b) const;
  /// The first difference, in words.
  std::string difference(const Results& expected, const Results& actual,
                         std::span<const Tuple> lanes) const;
  /// Bytes of the results that travel through one register, at most.
  int result_bytes() const;

 private:
  enum class Place { vector, general, stack };
  struct Argument {
    Place place;
    int index;  // register, or byte offset on the stack
  };

  void fill_frame();
  void evaluate_portably(std::span<const Tuple> lanes, std::uint32_t mxcsr);
  void place_operands(std::span<const Tuple> lanes, const Tuple& fill);
  void read_results(const void* destination);

  Kernel kernel_;
  std::vector<Lane> operands_, outputs_;
  std::vector<Argument> arguments_;
  bool writes_memory_;  // through rdi
  bool is_portable_;    // a function on arrays: nothing but results to be watched
  Frame frame_;
  Results results_;
  Vector room_;
};

}  // namespace zorp::test
