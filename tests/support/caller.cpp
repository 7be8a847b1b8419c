#include "tests/support/caller.h"

#include <algorithm>

#include "tests/portable/portable.h"
#include "tests/support/processor.h"

namespace zorp::test {
namespace {

constexpr int kFirstPreservedVector = 16, kFirstPreservedMask = 4;
constexpr General kPreserved[] = {rbx, rbp, rsi, rdi, r12, r13, r14, r15};
constexpr const char* kGeneralNames[] = {"rax", "rcx", "rdx", "rbx", "rsp", "rbp", "rsi", "rdi",
                                         "r8",  "r9",  "r10", "r11", "r12", "r13", "r14", "r15"};
constexpr General kIntegerArguments[] = {rdi, rsi};

constexpr std::uint32_t kMxcsrStatus = 0x3f;
constexpr std::uint16_t kX87AllEmpty = 0xffff;
constexpr std::uint64_t kDirectionFlag = 0x400;
constexpr std::uint64_t kUpperStateInUse = 1 << 2 | 1 << 6;  // ymm0-15 and zmm0-15, upper halves

}  // namespace

Caller::Caller(const Kernel& kernel, const Library& library)
    : kernel_(kernel),
      operands_(kernel.operands()),
      outputs_(kernel.results()),
      writes_memory_(kernel.pointer() || kernel.operands_on_stack()),
      is_portable_(library.is_portable()),
      frame_{} {
  if (kernel.pointer()) outputs_.push_back(*kernel.pointer());
  int vectors = 0, integers = 0, stack_bytes = 0;
  for (Lane lane : operands_) {
    if (kernel.operands_on_stack()) {
      arguments_.push_back({Place::stack, stack_bytes});
      stack_bytes += sizeof(Vector);
    } else if (kernel.width == 1 && !is_float(lane)) {
      arguments_.push_back({Place::general, kIntegerArguments[integers++]});
    } else {
      arguments_.push_back({Place::vector, vectors});
      vectors += grammar::registers(lane, kernel.width);
    }
  }
  frame_.target = library.entry(kernel);
  frame_.has_xinuse = has_xinuse();
  fill_frame();
}

// Canaries everywhere; each register gets another one, and no byte of them is zero.
void Caller::fill_frame() {
  std::uint64_t canary = 0x9e3779b97f4a7c15;
  auto next = [&canary] {
    return (canary = canary * 6364136223846793005 + 1442695040888963407) | 0x0101010101010101;
  };
  for (VectorRegister& vector : frame_.in.zmm)
    for (std::uint64_t& part : vector) part = next();
  for (std::uint64_t& mask : frame_.in.k) mask = next();
  for (std::uint64_t& general : frame_.in.general) general = next();
  for (std::byte& byte : frame_.stack_in) byte = std::byte(next() >> 56);
}

void Caller::evaluate_portably(std::span<const Tuple> lanes, std::uint32_t mxcsr) {
  std::array<Vector, 3> arrays;
  const void* from[3];
  void* to[3];
  for (std::size_t operand = 0; operand < operands_.size(); ++operand) {
    for (int lane = 0; lane < kernel_.width; ++lane)
      arrays[operand].set(grammar::lane_bytes(operands_[operand]), lane, lanes[lane][operand]);
    from[operand] = arrays[operand].bytes.data();
  }
  for (std::size_t output = 0; output < outputs_.size(); ++output)
    to[output] = results_.outputs[output].bytes.data();
  const auto evaluate = reinterpret_cast<portable::Evaluate>(const_cast<void*>(frame_.target));
  evaluate(from, to, std::size_t(kernel_.width), mxcsr);
}

const Results& Caller::operator()(std::span<const Tuple> lanes, const Conditions& conditions) {
  if (is_portable_) {
    evaluate_portably(lanes, conditions.mxcsr);
    return results_;
  }
  if (conditions.clean_upper)
    for (int i = 0; i < kFirstPreservedVector; ++i)
      std::fill(frame_.in.zmm[i].begin() + 2, frame_.in.zmm[i].end(), 0);
  place_operands(lanes, conditions.fill);
  void* destination = conditions.destination ? conditions.destination : room_.bytes.data();
  if (writes_memory_) frame_.in.general[rdi] = reinterpret_cast<std::uint64_t>(destination);
  frame_.stack_offset = conditions.stack_offset;
  frame_.clear_upper =
      conditions.clean_upper && std::all_of(operands_.begin(), operands_.end(), [this](Lane lane) {
        return grammar::lane_bytes(lane) * grammar::lanes_in_memory(kernel_.width) <= 16;
      });
  frame_.mxcsr_in = conditions.mxcsr;
  frame_.x87_control_in = conditions.x87_control;
  zorp_test_trampoline(&frame_);
  read_results(destination);
  if (conditions.clean_upper) fill_frame();
  return results_;
}

void Caller::place_operands(std::span<const Tuple> lanes, const Tuple& fill) {
  for (std::size_t operand = 0; operand < operands_.size(); ++operand) {
    const int bytes = grammar::lane_bytes(operands_[operand]);
    const auto [place, index] = arguments_[operand];
    if (place == Place::general) {
      // A 32-bit argument leaves the upper half of its register undefined.
      std::memcpy(&frame_.in.general[index], &lanes[0][operand], bytes);
      continue;
    }
    const int registers = grammar::registers(operands_[operand], kernel_.width);
    Vector vector;
    for (int lane = 0; lane < 64 * registers / bytes; ++lane)
      vector.set(bytes, lane, lane < kernel_.width ? lanes[lane][operand] : fill[operand]);
    void* target = place == Place::stack ? static_cast<void*>(&frame_.stack_in[index])
                                         : static_cast<void*>(&frame_.in.zmm[index]);
    std::memcpy(target, vector.bytes.data(), 64 * registers);
  }
}

void Caller::read_results(const void* destination) {
  const std::size_t in_registers = kernel_.results().size();
  int vectors = 0, general_bytes = 0;
  for (std::size_t output = 0; output < outputs_.size(); ++output) {
    const Lane lane = outputs_[output];
    Vector& result = results_.outputs[output];
    const int bytes = grammar::lane_bytes(lane);
    if (output >= in_registers || kernel_.operands_on_stack()) {
      std::memcpy(result.bytes.data(), destination,
                  bytes * grammar::lanes_in_memory(kernel_.width));
    } else if (kernel_.width == 1 && !is_float(lane)) {
      const auto* from = reinterpret_cast<const std::byte*>(&frame_.out.general[rax]);
      std::memcpy(result.bytes.data(), from + general_bytes, bytes);
      general_bytes += bytes;
    } else {
      const int registers = grammar::registers(lane, kernel_.width);
      std::memcpy(result.bytes.data(), &frame_.out.zmm[vectors], 64 * registers);
      vectors += registers;
    }
  }
}

std::string Caller::violations() const {
  std::string text;
  auto changed = [&text](const std::string& what) { text += what + " changed\n"; };
  for (int i = kFirstPreservedVector; i < 32; ++i)
    if (frame_.in.zmm[i] != frame_.out.zmm[i]) changed("zmm" + std::to_string(i));
  for (int i = kFirstPreservedMask; i < 8; ++i)
    if (frame_.in.k[i] != frame_.out.k[i]) changed("k" + std::to_string(i));
  for (General i : kPreserved) {
    const bool carries_argument =
        (i == rdi && writes_memory_) ||
        std::any_of(arguments_.begin(), arguments_.end(), [i](const Argument& argument) {
          return argument.place == Place::general && argument.index == i;
        });
    if (!carries_argument && frame_.in.general[i] != frame_.out.general[i])
      changed(kGeneralNames[i]);
  }
  if (kernel_.operands_on_stack() && frame_.out.general[rax] != frame_.in.general[rdi])
    text += "rax doesn't return the result's address\n";
  if (frame_.stack_in != frame_.stack_out) changed("the stack above the return address");
  if ((frame_.mxcsr_in ^ frame_.mxcsr_out) & ~kMxcsrStatus) changed("MXCSR");
  if (frame_.x87_control_in != frame_.x87_out.control) changed("the x87 control word");
  if (frame_.x87_out.tags != kX87AllEmpty) text += "the x87 stack isn't empty\n";
  if (frame_.flags_out & kDirectionFlag) text += "the direction flag is set\n";
  return text;
}

std::uint32_t Caller::raised() const { return frame_.mxcsr_out & ~frame_.mxcsr_in & kMxcsrStatus; }

std::string Caller::dirty_upper() const {
  std::string text;
  for (int i = 0; i < kFirstPreservedVector; ++i)
    if (std::any_of(frame_.out.zmm[i].begin() + 2, frame_.out.zmm[i].end(),
                    [](std::uint64_t part) { return part != 0; }))
      text += "zmm" + std::to_string(i) + " ";
  if (frame_.has_xinuse && frame_.xinuse_out & kUpperStateInUse) text += "in use";
  return text;
}

Bits Caller::output(const Results& results, std::size_t output, int lane) const {
  return results.outputs[output].get(grammar::lane_bytes(outputs_[output]), lane);
}

bool Caller::agree(const Results& a, const Results& b) const {
  for (std::size_t output = 0; output < outputs_.size(); ++output)
    if (std::memcmp(a.outputs[output].bytes.data(), b.outputs[output].bytes.data(),
                    kernel_.width * grammar::lane_bytes(outputs_[output])) != 0)
      return false;
  return true;
}

std::string Caller::difference(const Results& expected, const Results& actual,
                               std::span<const Tuple> lanes) const {
  for (std::size_t output = 0; output < outputs_.size(); ++output)
    for (int lane = 0; lane < kernel_.width; ++lane) {
      const Bits want = this->output(expected, output, lane);
      const Bits got = this->output(actual, output, lane);
      if (want != got)
        return kernel_.name() + hex(lanes[lane], operands_.size()) + " in lane " +
               std::to_string(lane) + ", result " + std::to_string(output) + ": " + hex(got) +
               " instead of " + hex(want);
    }
  return {};
}

int Caller::result_bytes() const {
  int bytes = 0;
  for (Lane lane : kernel_.results())
    bytes = std::max(bytes, grammar::lane_bytes(lane) * grammar::lanes_in_memory(kernel_.width));
  return bytes;
}

}  // namespace zorp::test
