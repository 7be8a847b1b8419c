// Every exported name, called by the platform's convention as the name itself tells it, gives the
// bits of the kernel of width 1 in each lane, and breaks nothing that the platform keeps.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <regex>

#include "clients/vecabi/tests/reference.h"
#include "tests/support/elf_file.h"
#include "tests/support/processor.h"

namespace zorp::vecabi::test {
namespace {

using namespace zorp::test;

constexpr int kMaxLanes = 16;
constexpr int kVectorArguments = 8;
constexpr General kGeneralArguments[] = {rdi, rsi, rdx, rcx};
constexpr General kKept[] = {rbx, rbp, r12, r13, r14, r15};
constexpr std::uint32_t kMxcsrControl = 0xffc0;
constexpr std::uint64_t kDirectionFlag = 0x400;
constexpr std::byte kUntouched{0xa5};

/// What a name says: _ZGV <letter> <mask> <lanes> <parameters> _ <function>.
struct Signature {
  char letter;
  bool masked;
  int lanes;
  std::vector<std::string> parameters;  // "v", "l8"
  std::string function;

  explicit Signature(const std::string& symbol) {
    static const std::regex form("_ZGV([bcde])([MN])(\\d+)((?:v|l\\d)+)_(\\w+)");
    std::smatch match;
    if (!std::regex_match(symbol, match, form)) throw std::runtime_error(symbol);
    letter = match[1].str()[0];
    masked = match[2] == "M";
    lanes = std::stoi(match[3]);
    static const std::regex parameter("v|l\\d");
    const std::string all = match[4];
    for (std::sregex_iterator i(all.begin(), all.end(), parameter), end; i != end; ++i)
      parameters.push_back(i->str());
    function = match[5];
  }

  int register_bytes(bool of_integers) const {
    switch (letter) {
      case 'b':
        return 16;
      case 'c':
        return of_integers ? 16 : 32;
      case 'd':
        return 32;
      default:
        return 64;
    }
  }
};

/// One call after the other of one name.
class Invocation {
 public:
  Invocation(const Library& library, const std::string& symbol)
      : signature_(symbol), reference_(signature_.function), frame_{} {
    frame_.target = library.find(symbol);
    frame_.mxcsr_in = kDefaultMxcsr;
    frame_.x87_control_in = kDefaultX87Control;
    // Programs of the narrowest registers know nothing of the upper halves, which would slow them.
    frame_.clear_upper = signature_.letter == 'b';
    frame_.has_xinuse = has_xinuse();
  }

  const Signature& signature() const { return signature_; }
  Reference& reference() { return reference_; }

  /// Faults in words; empty if all is well.
  std::string operator()(const std::vector<Tuple>& lanes, std::uint32_t mask) {
    fill();
    place(lanes, mask);
    zorp_test_trampoline(&frame_);
    return wrong_results(lanes, mask) + violations();
  }

 private:
  /// Where a lane of a result that goes through pointers is written: side by side, or all over.
  std::byte* slot(int result, int lane) {
    const bool scattered = pointers() > 0 && signature_.parameters.back() == "v";
    return &memory_[result][8 * (scattered ? (5 * lane + 3) % kMaxLanes : 0) +
                            (scattered ? 0 : lane * lane_bytes(reference_.result(result)))];
  }
  bool is_pointer(std::size_t parameter) const { return parameter >= reference_.operands().size(); }
  int pointers() const { return int(signature_.parameters.size() - reference_.operands().size()); }
  bool returned_in_memory() const {
    const Lane lane = reference_.result(0);
    return !is_float(lane) && signature_.lanes * lane_bytes(lane) > signature_.register_bytes(true);
  }

  void fill() {
    std::uint64_t canary = 0x9e3779b97f4a7c15;
    const auto next = [&canary] {
      return canary = canary * 6364136223846793005 + 1442695040888963407;
    };
    for (VectorRegister& vector : frame_.in.zmm)
      for (std::uint64_t& part : vector) part = next();
    for (std::uint64_t& general : frame_.in.general) general = next();
    for (std::byte& byte : frame_.stack_in) byte = std::byte(next() >> 56);
    for (auto& memory : memory_) memory.fill(kUntouched);
  }

  void place(const std::vector<Tuple>& lanes, std::uint32_t mask) {
    int vectors = 0, generals = 0;
    std::size_t stack = 0;
    const auto place_general = [&](std::uint64_t value) {
      frame_.in.general[kGeneralArguments[generals++]] = value;
    };
    const auto place_vector = [&](const Vector& image, int bytes, int register_bytes) {
      for (int at = 0; at < bytes; at += register_bytes) {
        void* to = vectors < kVectorArguments ? static_cast<void*>(&frame_.in.zmm[vectors++])
                                              : &frame_.stack_in[stack];
        if (to == &frame_.stack_in[stack]) stack += register_bytes;
        std::memcpy(to, &image.bytes[at], std::min(bytes, register_bytes));
      }
    };
    if (returned_in_memory()) place_general(std::uint64_t(slot(0, 0)));
    for (std::size_t i = 0; i < signature_.parameters.size(); ++i) {
      const int result = reference_.results() - pointers() + int(i - reference_.operands().size());
      Vector image;
      if (!is_pointer(i)) {
        const Lane lane = reference_.operands()[i];
        for (int j = 0; j < signature_.lanes; ++j) image.set(lane_bytes(lane), j, lanes[j][i]);
        place_vector(image, signature_.lanes * lane_bytes(lane),
                     signature_.register_bytes(!is_float(lane)));
      } else if (signature_.parameters[i] == "v") {
        for (int j = 0; j < signature_.lanes; ++j) image.set(8, j, std::uint64_t(slot(result, j)));
        place_vector(image, signature_.lanes * 8, signature_.register_bytes(true));
      } else {
        EXPECT_EQ(signature_.parameters[i],
                  "l" + std::to_string(lane_bytes(reference_.result(result))));
        place_general(std::uint64_t(slot(result, 0)));
      }
    }
    // What is above the mask's lanes means nothing.
    if (signature_.masked) place_general(0xdead'0000'0000'0000 | mask);
  }

  std::string wrong_results(const std::vector<Tuple>& lanes, std::uint32_t mask) {
    std::string text;
    // memory_ becomes what it should be: slot() points into it.
    const auto written = memory_;
    for (auto& memory : memory_) memory.fill(kUntouched);
    const int in_memory = returned_in_memory() ? 1 : pointers();
    const int first_in_memory = reference_.results() - in_memory;
    for (int lane = 0; lane < signature_.lanes; ++lane) {
      const std::vector<Bits> results = reference_(lanes[lane]);
      if (!(mask >> lane & 1)) continue;
      for (int i = 0; i < reference_.results(); ++i) {
        const int bytes = lane_bytes(reference_.result(i));
        if (i >= first_in_memory) {
          std::memcpy(slot(i, lane), &results[i], bytes);
          continue;
        }
        Bits actual = 0;
        std::memcpy(&actual, reinterpret_cast<const std::byte*>(&frame_.out.zmm[0]) + lane * bytes,
                    bytes);
        if (actual != results[i])
          text += hex(lanes[lane], reference_.operands().size()) + " in lane " +
                  std::to_string(lane) + ": " + hex(actual) + " instead of " + hex(results[i]) +
                  '\n';
      }
    }
    if (written != memory_) text += "wrong results or other changes in memory\n";
    return text;
  }

  std::string violations() const {
    std::string text;
    for (General kept : kKept)
      if (frame_.in.general[kept] != frame_.out.general[kept]) text += "a kept register changed\n";
    if (returned_in_memory() && frame_.out.general[rax] != frame_.in.general[rdi])
      text += "rax doesn't return the result's address\n";
    if ((frame_.mxcsr_in ^ frame_.mxcsr_out) & kMxcsrControl) text += "MXCSR changed\n";
    if (frame_.x87_control_in != frame_.x87_out.control) text += "the x87 control word changed\n";
    if (frame_.flags_out & kDirectionFlag) text += "the direction flag is set\n";
    const bool returns_wide_vector =
        !returned_in_memory() && pointers() < reference_.results() && signature_.letter != 'b';
    for (int i = 0; i < 16 && !returns_wide_vector; ++i)
      if (std::any_of(frame_.out.zmm[i].begin() + 2, frame_.out.zmm[i].end(),
                      [](std::uint64_t part) { return part != 0; }))
        text += "the upper half of a vector register is dirty\n";
    return text;
  }

  Signature signature_;
  Reference reference_;
  Frame frame_;
  std::array<std::array<std::byte, 8 * kMaxLanes>, 2> memory_;
};

TEST(VectorAbiCalls, EveryNameGivesItsKernelsBits) {
  if (!has_avx512()) GTEST_SKIP() << "this processor has no AVX-512";
  const Library library(ZORP_VECABI_FILE);
  const ElfFile file(ZORP_VECABI_FILE);
  std::mt19937 random(1);
  for (const ElfFile::Symbol& symbol : file.symbols(SHT_DYNSYM)) {
    if (!symbol.defined()) continue;
    SCOPED_TRACE(symbol.name);
    Invocation invocation(library, std::string(symbol.name));
    const int lanes = invocation.signature().lanes;
    const std::vector<Tuple> pool = operand_pool(invocation.reference().operands(), 400);
    std::vector<Tuple> operands(lanes);
    for (std::size_t start = 0; start < pool.size(); start += lanes) {
      for (int i = 0; i < lanes; ++i) operands[i] = pool[(start + i) % pool.size()];
      const std::uint32_t all = (1u << lanes) - 1;
      const std::uint32_t mask = invocation.signature().masked ? random() & all : all;
      ASSERT_EQ(invocation(operands, mask), "") << "mask " << hex(mask);
    }
  }
}

}  // namespace
}  // namespace zorp::vecabi::test
