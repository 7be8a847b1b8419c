// The library as a file: its names, what it needs, how it is marked.
#include "clients/vecabi/names.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/support/elf_file.h"
#include "tests/support/library.h"

namespace zorp::vecabi::test {
namespace {

using zorp::test::ElfFile;
using Strings = std::set<std::string>;

TEST(VectorAbiNames, ExactlyThoseOfTheRule) {
  Strings expected;
  for (const Name& name : names(zorp::test::library_files()[0].groups))
    expected.insert(name.symbol());
  const ElfFile file(ZORP_VECABI_FILE);
  Strings exported;
  for (const ElfFile::Symbol& symbol : file.symbols(SHT_DYNSYM))
    if (symbol.defined()) exported.emplace(symbol.name);
  EXPECT_EQ(exported, expected);
}

TEST(VectorAbiNames, NeedsTheKernelsAlone) {
  const ElfFile elf(ZORP_VECABI_FILE);
  using List = std::vector<std::string_view>;
  EXPECT_EQ(elf.dynamic_strings(DT_NEEDED), List{"libzorp_z1.so"});
  EXPECT_EQ(elf.dynamic_strings(DT_SONAME), List{"libzorp_z1_vecabi.so"});
  // Unversioned names serve programs that were linked to versioned ones.
  for (const Elf64_Dyn& entry : elf.dynamic())
    for (Elf64_Sxword tag : {DT_VERSYM, DT_TEXTREL, DT_INIT, DT_FINI, DT_INIT_ARRAY})
      EXPECT_NE(entry.d_tag, tag);
  for (const Elf64_Phdr& segment : elf.segments())
    EXPECT_FALSE(segment.p_flags & PF_W && segment.p_flags & PF_X);
}

TEST(VectorAbiNames, StandForTheKernelsWhereTheConventionsAgree) {
  const zorp::test::Library library(ZORP_VECABI_FILE);
  for (const Name& name : names(zorp::test::library_files()[0].groups)) {
    const std::string symbol = name.symbol();
    const bool splits_integers = symbol == "_ZGVcN8vv_ldexpf" || symbol == "_ZGVcN8v_ilogbf";
    if (name.function->results == Results::returned && !splits_integers) {
      EXPECT_EQ(library.find(symbol), library.find(name.kernels()[0].symbol())) << symbol;
    }
  }
}

TEST(VectorAbiNames, AreMarkedForBranchTracking) {
  const ElfFile elf(ZORP_VECABI_FILE);
  const unsigned wanted = GNU_PROPERTY_X86_FEATURE_1_IBT | GNU_PROPERTY_X86_FEATURE_1_SHSTK;
  EXPECT_EQ(elf.feature_bits() & wanted, wanted);
  const std::vector<unsigned char> endbr64 = {0xf3, 0x0f, 0x1e, 0xfa};
  for (const ElfFile::Symbol& symbol : elf.symbols(SHT_DYNSYM)) {
    if (!symbol.defined()) continue;
    EXPECT_TRUE(symbol.type() == STT_FUNC || symbol.type() == STT_GNU_IFUNC) << symbol.name;
    const auto code = elf.at(symbol.entry.st_value);
    ASSERT_GE(code.size(), endbr64.size()) << symbol.name;
    EXPECT_TRUE(std::equal(endbr64.begin(), endbr64.end(), code.begin())) << symbol.name;
  }
}

}  // namespace
}  // namespace zorp::vecabi::test
