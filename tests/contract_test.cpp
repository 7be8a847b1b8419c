// The boundary contract of every kernel: what it preserves, what it ignores, what it writes, which
// lanes it hands to the rare routine.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <map>
#include <memory>

#include "tests/support/caller.h"
#include "tests/support/callout_tracker.h"

namespace zorp::test {
namespace {

using grammar::Class;

constexpr std::uint32_t kRoundingModes[] = {0x0000, 0x2000, 0x4000, 0x6000};  // of MXCSR

CalloutTracker& tracker(const LibraryFile& file) {
  static std::map<std::string, std::unique_ptr<CalloutTracker>> trackers;
  auto& tracker = trackers[file.path];
  if (!tracker) tracker = std::make_unique<CalloutTracker>(file.path);
  return *tracker;
}

/// As many operand tuples as the kernel has lanes, from a place in the list on, around its end.
std::vector<Tuple> cycle(const std::vector<Tuple>& list, int width, std::size_t start) {
  std::vector<Tuple> lanes(width);
  for (int i = 0; i < width; ++i) lanes[i] = list[(start + i) % list.size()];
  return lanes;
}

/// Operands by whether a lane that holds them goes to the rare routine.
struct Operands {
  std::vector<Tuple> ordinary, calling;
};

Operands sort_operands(const LibraryFile& library, const Kernel& kernel, int pool_size) {
  std::vector<Tuple> pool = operand_pool(kernel.operands(), pool_size);
  if (!kernel.calls_out()) return {std::move(pool), {}};
  CalloutTracker& watcher = tracker(library);
  Caller caller(kernel, watcher.library());
  watcher.watch({kernel.wrapper_symbol()});
  Operands sorted;
  for (const Tuple& tuple : pool) {
    watcher.forget_entries();
    caller(std::vector<Tuple>(kernel.width, tuple));
    (watcher.entries().empty() ? sorted.ordinary : sorted.calling).push_back(tuple);
  }
  // Beside a lane that needs the second path, lanes can be called out that aren't among their like.
  if (kernel.width > 1 && !sorted.calling.empty()) {
    watcher.watch({kernel.rare_symbol()});
    std::erase_if(sorted.ordinary, [&](const Tuple& tuple) {
      std::vector<Tuple> lanes(kernel.width, tuple);
      lanes[0] = sorted.calling[0];
      watcher.forget_entries();
      caller(lanes);
      return watcher.entries_into(kernel.rare_symbol()) != 1;
    });
  }
  watcher.watch({});
  return sorted;
}

class Contract : public testing::TestWithParam<Variant> {
 protected:
  /// Calls `check` for every width, until a check fails.
  template <class Check>
  void for_each_kernel(Check check) {
    for (const Kernel& kernel : GetParam().kernels()) {
      SCOPED_TRACE(kernel.name());
      check(kernel);
      if (HasFailure()) return;
    }
  }

  const Operands& operands(const Kernel& kernel) {
    static std::map<std::pair<std::string, std::string>, Operands> known;
    Operands& sorted = known[{GetParam().library->path, kernel.symbol()}];
    if (sorted.ordinary.empty() && sorted.calling.empty())
      sorted = sort_operands(*GetParam().library, kernel, GetParam().trapped() ? 32 : 128);
    return sorted;
  }

  /// Vectors of ordinary lanes, vectors of special lanes, vectors of both.
  std::vector<std::vector<Tuple>> vectors(const Kernel& kernel, int of_each_kind) {
    const auto& [ordinary, calling] = operands(kernel);
    std::vector<std::vector<Tuple>> list;
    for (int i = 0; i < (GetParam().trapped() ? 1 : of_each_kind); ++i) {
      const std::size_t start = i * 37;
      if (!ordinary.empty()) list.push_back(cycle(ordinary, kernel.width, start));
      if (!calling.empty()) list.push_back(cycle(calling, kernel.width, start));
      if (ordinary.empty() || calling.empty()) continue;
      list.push_back(cycle(ordinary, kernel.width, start));
      list.back()[i % kernel.width] = calling[i % calling.size()];
    }
    return list;
  }

  const Library& library() const { return loaded(*GetParam().library); }
};

TEST_P(Contract, PreservesState) {
  for_each_kernel([&](const Kernel& kernel) {
    Caller caller(kernel, library());
    std::vector<Conditions> surroundings;
    for (std::uint64_t offset : {0, 8}) surroundings.push_back({.stack_offset = offset});
    for (std::uint32_t mode : kRoundingModes)
      surroundings.push_back({.mxcsr = kDefaultMxcsr | mode});
    surroundings.push_back({.x87_control = 0x027f});  // 53 bits
    surroundings.push_back({.x87_control = 0x007f});  // 24 bits
    surroundings.push_back({.x87_control = 0x0f7f});  // toward zero
    surroundings.push_back({.x87_control = 0x0340});  // exceptions trap
    for (const auto& lanes : vectors(kernel, 6))
      for (const Conditions& conditions : surroundings) {
        caller(lanes, conditions);
        ASSERT_EQ(caller.violations(), "");
      }
  });
}

/// Bait for the lanes that a kernel must not look at.
std::vector<Tuple> baits(const std::vector<Lane>& lanes, const std::vector<Tuple>& calling) {
  std::vector<Tuple> list(calling.begin(), calling.begin() + std::min<int>(calling.size(), 2));
  for (int i = 0; i < 4; ++i) {
    Tuple tuple{};
    for (std::size_t operand = 0; operand < lanes.size(); ++operand) {
      if (is_float(lanes[operand])) {
        const Format& f = format(lanes[operand]);
        const Bits bits[] = {f.signalling_nan(), f.infinity(), f.sign() | f.max_finite(),
                             f.min_subnormal()};
        tuple[operand] = bits[i];
      } else {
        const Bits sign = Bits{1} << (8 * grammar::lane_bytes(lanes[operand]) - 1);
        const Bits bits[] = {sign, 0, ~Bits{0}, sign - 1};
        tuple[operand] = bits[i];
      }
    }
    list.push_back(tuple);
  }
  return list;
}

TEST_P(Contract, IgnoresLanesBeyondTheWidth) {
  for_each_kernel([&](const Kernel& kernel) {
    Caller caller(kernel, library());
    for (const auto& lanes : vectors(kernel, 4)) {
      const Results expected = caller(lanes);
      for (const Tuple& fill : baits(caller.operands(), operands(kernel).calling)) {
        const Results& actual = caller(lanes, {.fill = fill});
        ASSERT_TRUE(caller.agree(expected, actual))
            << caller.difference(expected, actual, lanes) << " beside "
            << hex(fill, caller.operands().size());
      }
    }
  });
}

TEST_P(Contract, RoundsStatically) {
  for_each_kernel([&](const Kernel& kernel) {
    if (kernel.follows_mxcsr()) return;
    const std::vector<Tuple>& ordinary = operands(kernel).ordinary;  // rare routines may follow
    Caller caller(kernel, library());
    for (std::size_t start = 0; start < ordinary.size(); start += kernel.width) {
      if (GetParam().trapped() && start > 0) break;
      const auto lanes = cycle(ordinary, kernel.width, start);
      const Results expected = caller(lanes);
      for (std::uint32_t mode : kRoundingModes) {
        const Results& actual = caller(lanes, {.mxcsr = kDefaultMxcsr | mode});
        ASSERT_TRUE(caller.agree(expected, actual))
            << caller.difference(expected, actual, lanes) << " under rounding mode " << mode;
      }
    }
  });
}

TEST_P(Contract, LeavesUpperHalvesCleanBehindNarrowResults) {
  for_each_kernel([&](const Kernel& kernel) {
    Caller caller(kernel, library());
    if (caller.result_bytes() > 16) return;
    for (const auto& lanes : vectors(kernel, 3)) {
      caller(lanes, {.clean_upper = true});
      ASSERT_EQ(caller.dirty_upper(), "");
    }
  });
}

/// A page between two that cannot be touched.
class GuardedPage {
 public:
  static constexpr std::size_t kBytes = 4096;

  GuardedPage() {
    void* pages = mmap(nullptr, 3 * kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    begin_ = static_cast<unsigned char*>(pages) + kBytes;
    mprotect(begin_, kBytes, PROT_READ | PROT_WRITE);
  }
  ~GuardedPage() { munmap(begin_ - kBytes, 3 * kBytes); }
  GuardedPage(const GuardedPage&) = delete;
  GuardedPage& operator=(const GuardedPage&) = delete;

  unsigned char* begin() { return begin_; }
  unsigned char* end() { return begin_ + kBytes; }

 private:
  unsigned char* begin_;
};

TEST_P(Contract, WritesExactlyTheAreaBehindThePointer) {
  GuardedPage page;
  for_each_kernel([&](const Kernel& kernel) {
    const bool writes = kernel.pointer() || kernel.operands_on_stack();
    if (!writes) return;
    Caller caller(kernel, library());
    const int bytes = grammar::lane_bytes(caller.outputs().back());
    const int area = bytes * grammar::lanes_in_memory(kernel.width);
    // At both ends of the page, and at an address with no more than the element's alignment.
    unsigned char* const places[] = {page.begin(), page.end() - area, page.begin() + 1024 + bytes};
    for (const auto& lanes : vectors(kernel, 2)) {
      const Results expected = caller(lanes);
      for (unsigned char* place : places) {
        std::vector<bool> written(area);
        for (unsigned char canary : {0x5a, 0xa5}) {
          std::fill(page.begin(), page.end(), canary);
          const Results& actual = caller(lanes, {.destination = place});
          ASSERT_EQ(caller.violations(), "");
          ASSERT_TRUE(caller.agree(expected, actual)) << caller.difference(expected, actual, lanes);
          for (int i = 0; i < area; ++i)
            if (place[i] != canary) written[i] = true;
          std::fill(place, place + area, canary);
          ASSERT_EQ(std::count(page.begin(), page.end(), canary), GuardedPage::kBytes)
              << "something beside the area was written";
        }
        ASSERT_EQ(std::count(written.begin(), written.end(), true), area)
            << "a part of the area was left out";
      }
    }
  });
}

TEST_P(Contract, CallsOutForSpecialLanesAlone) {
  CalloutTracker& watcher = tracker(*GetParam().library);
  for_each_kernel([&](const Kernel& kernel) {
    if (!kernel.calls_out()) return;
    const auto& [ordinary, calling] = operands(kernel);
    ASSERT_FALSE(calling.empty()) << "no operand reaches the callout";
    const bool every_lane = kernel.special_lanes() == Class::A;
    ASSERT_EQ(ordinary.empty(), every_lane);

    Caller caller(kernel, watcher.library());
    const std::string wrapper = kernel.wrapper_symbol(), rare = kernel.rare_symbol();
    watcher.watch({wrapper, rare});
    const int lane_bytes = grammar::lane_bytes(caller.operands()[0]);
    auto call = [&](const std::vector<Tuple>& lanes, const Conditions& conditions = {}) {
      watcher.forget_entries();
      return caller(lanes, conditions);
    };

    // All lanes special: one call of the wrapper, the lanes in ascending order.
    const Results served = call(cycle(calling, kernel.width, 0));
    EXPECT_EQ(watcher.entries_into(wrapper), 1);
    EXPECT_EQ(watcher.entries_into(rare),
              every_lane ? grammar::lanes_in_memory(kernel.width) : kernel.width);
    const auto entries = watcher.entries();
    for (std::size_t i = 2; i < entries.size(); ++i)
      EXPECT_EQ(entries[i].first_argument, entries[i - 1].first_argument + lane_bytes);
    if (every_lane) return;

    // None special: no call, whatever stands beyond the width.
    const auto lanes = cycle(ordinary, kernel.width, 0);
    const Results unserved = call(lanes, {.fill = calling[0]});
    EXPECT_TRUE(watcher.entries().empty());

    // One lane special: the others keep their results.
    for (int special = 0; special < kernel.width; ++special) {
      auto mixed = lanes;
      mixed[special] = calling[special % calling.size()];
      const Results results = call(mixed, {.fill = calling[0]});
      EXPECT_EQ(watcher.entries_into(wrapper), 1);
      EXPECT_EQ(watcher.entries_into(rare), 1);
      for (std::size_t output = 0; output < caller.outputs().size(); ++output)
        for (int lane = 0; lane < kernel.width; ++lane)
          ASSERT_EQ(hex(caller.output(results, output, lane)),
                    hex(caller.output(lane == special ? served : unserved, output, lane)))
              << hex(mixed[lane], caller.operands().size()) << " in lane " << lane << " where lane "
              << special << " is special";
    }
  });
  watcher.watch({});
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Contract);
INSTANTIATE_TEST_SUITE_P(, Contract, testing::ValuesIn(kernel_variants()),
                         [](const auto& info) { return info.param.name(); });

}  // namespace
}  // namespace zorp::test
