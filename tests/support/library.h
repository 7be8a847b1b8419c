// The libraries under test.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "export/grammar.h"
#include "tests/support/lanes.h"

namespace zorp::test {

using grammar::Kernel;
using grammar::Tier;

/// A library as the build describes it: a line `name "path" group...` of ZORP_LIBRARIES_FILE.
struct LibraryFile {
  std::string name, path;
  std::vector<std::string> groups;

  std::vector<Kernel> kernels() const { return grammar::kernels_of(groups); }
};

const std::vector<LibraryFile>& library_files();
/// The same algorithms on arrays, for processors without AVX-512 (tests/portable). It has width 1
/// and the widest of each kernel.
const LibraryFile& portable_file();
/// The library of that name, or nullptr.
const LibraryFile* library_file(const std::string& name);

/// A loaded library. Several may be loaded side by side, also copies of the same file.
class Library {
 public:
  explicit Library(const std::string& path);
  /// A second copy of the same file, at addresses of its own.
  static Library copy_of(const std::string& path);

  /// The address of an exported symbol, or nullptr.
  const void* find(const std::string& symbol) const;
  const void* entry(const Kernel& kernel) const;  // throws if there is none
  /// Whether entries are functions on arrays (portable::Evaluate) instead of kernels.
  bool is_portable() const { return find("zorp_portable_find"); }
  /// Where the file's virtual address 0 is.
  std::uintptr_t base() const;

 private:
  struct Close {
    void operator()(void* handle) const;
  };
  std::unique_ptr<void, Close> handle_;
};

/// The library of that file, loaded once.
const Library& loaded(const LibraryFile& file);

/// All widths of one family, element type and tier in one library.
struct Variant {
  const LibraryFile* library;
  const grammar::Family* family;
  Element element;
  Tier tier;

  std::vector<Kernel> kernels() const;
  Kernel kernel(int width) const { return {family, element, width, tier}; }
  int widest() const { return family->widths(element).back(); }
  std::string name() const;  // native_exp_f16_half
  /// Of the one library whose results stand for all where flavours don't matter.
  bool is_representative() const;
  /// Evaluated by the portable build: there are no registers to look at.
  bool is_portable() const;
  /// Each half instruction traps and is emulated: the test should be content with fewer calls.
  bool trapped() const;
};

std::string_view name(Element element);
std::string_view name(Tier tier);

// The parameters of parameterised tests, as GoogleTest prints them.
void PrintTo(const LibraryFile& file, std::ostream* out);
void PrintTo(const Variant& variant, std::ostream* out);

/// Of every library that runs on this processor, for parameterised tests: without AVX-512 that is
/// the portable build.
std::vector<Variant> variants();
/// Those of them that are called as kernels.
std::vector<Variant> kernel_variants();
/// Of the portable build.
std::vector<Variant> portable_variants();

}  // namespace zorp::test
