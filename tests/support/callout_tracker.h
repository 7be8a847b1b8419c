// Watches which callout wrappers and rare routines run, in a private copy of a library.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "tests/support/library.h"

namespace zorp::test {

/// Breakpoints on local functions of a copy of the library. Each stop is noted and the function's
/// first instruction stepped over; nothing else of the library's behaviour changes.
class CalloutTracker {
 public:
  /// One entry into a watched function, with its first argument.
  struct Entry {
    const unsigned char* function;
    std::uintptr_t first_argument;
  };

  explicit CalloutTracker(const std::string& library_path);
  ~CalloutTracker();
  CalloutTracker(const CalloutTracker&) = delete;
  CalloutTracker& operator=(const CalloutTracker&) = delete;

  const Library& library() const { return library_; }
  /// Watches these functions from now on, and no others.
  void watch(const std::vector<std::string>& symbols);
  void forget_entries();
  /// The entries since, in order.
  std::span<const Entry> entries() const;
  int entries_into(const std::string& symbol) const;

 private:
  Library library_;
  std::map<std::string, unsigned char*> functions_;  // the local ones
};

}  // namespace zorp::test
