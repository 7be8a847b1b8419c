// Each library as a file: what it exports, needs and holds.
#include <gtest/gtest.h>

#include <set>

#include "tests/support/elf_file.h"
#include "tests/support/library.h"

namespace zorp::test {
namespace {

class Exports : public testing::TestWithParam<LibraryFile> {
 protected:
  const ElfFile elf_{GetParam().path};
};

std::set<std::string> symbols_of(const std::vector<Kernel>& kernels) {
  std::set<std::string> names;
  for (const Kernel& kernel : kernels) names.insert(kernel.symbol());
  return names;
}

TEST_P(Exports, ExactlyTheKernels) {
  std::set<std::string> exported, undefined;
  for (const ElfFile::Symbol& symbol : elf_.symbols(SHT_DYNSYM))
    (symbol.defined() ? exported : undefined).emplace(symbol.name);
  EXPECT_EQ(exported, symbols_of(GetParam().kernels()));
  EXPECT_EQ(undefined, std::set<std::string>());
}

TEST_P(Exports, NeedsNothingAndIsNeverRelocated) {
  for (const Elf64_Dyn& entry : elf_.dynamic())
    for (Elf64_Sxword tag : {DT_NEEDED, DT_RELA, DT_REL, DT_RELR, DT_JMPREL, DT_TEXTREL, DT_INIT,
                             DT_FINI, DT_INIT_ARRAY, DT_FINI_ARRAY, DT_RPATH, DT_RUNPATH})
      EXPECT_NE(entry.d_tag, tag);
  for (const Elf64_Shdr& section : elf_.sections())
    if (section.sh_type == SHT_RELA || section.sh_type == SHT_REL || section.sh_type == SHT_RELR) {
      EXPECT_EQ(section.sh_size, 0u) << elf_.name(section);
    }
}

TEST_P(Exports, HasNoWritableData) {
  for (const Elf64_Shdr& section : elf_.sections()) {
    // The dynamic section is the loader's and read-only once the library is loaded.
    if (section.sh_flags & SHF_WRITE && section.sh_type != SHT_DYNAMIC) {
      EXPECT_EQ(section.sh_size, 0u) << elf_.name(section);
    }
    EXPECT_FALSE(section.sh_flags & SHF_WRITE && section.sh_flags & SHF_EXECINSTR);
  }
  bool has_stack_note = false;
  for (const Elf64_Phdr& segment : elf_.segments()) {
    if (segment.p_type == PT_GNU_STACK) {
      has_stack_note = true;
      EXPECT_FALSE(segment.p_flags & PF_X) << "the stack would be executable";
    }
    EXPECT_NE(segment.p_type, Elf64_Word(PT_TLS));
    EXPECT_FALSE(segment.p_flags & PF_W && segment.p_flags & PF_X);
  }
  EXPECT_TRUE(has_stack_note);
}

TEST_P(Exports, IsMarkedForBranchTrackingAndShadowStacks) {
  const unsigned wanted = GNU_PROPERTY_X86_FEATURE_1_IBT | GNU_PROPERTY_X86_FEATURE_1_SHSTK;
  EXPECT_EQ(elf_.feature_bits() & wanted, wanted);
  const std::vector<unsigned char> endbr64 = {0xf3, 0x0f, 0x1e, 0xfa};
  for (const ElfFile::Symbol& symbol : elf_.symbols(SHT_DYNSYM)) {
    EXPECT_EQ(symbol.type(), STT_FUNC) << symbol.name;
    const auto code = elf_.at(symbol.entry.st_value);
    ASSERT_GE(code.size(), endbr64.size()) << symbol.name;
    EXPECT_TRUE(std::equal(endbr64.begin(), endbr64.end(), code.begin())) << symbol.name;
  }
}

TEST_P(Exports, CarriesItsName) {
  EXPECT_EQ(elf_.dynamic_strings(DT_SONAME), std::vector<std::string_view>{"libzorp_z1.so"});
}

TEST_P(Exports, KeepsWrappersAndRareRoutinesLocal) {
  std::set<std::string> local;
  for (const ElfFile::Symbol& symbol : elf_.symbols(SHT_SYMTAB))
    if (symbol.binding() == STB_LOCAL && symbol.type() == STT_FUNC) local.emplace(symbol.name);
  std::set<std::string> wrappers, expected_wrappers;
  for (const std::string& name : local)
    if (name.ends_with("_cout_wrapper")) wrappers.insert(name);
  for (const Kernel& kernel : GetParam().kernels())
    if (kernel.calls_out()) {
      expected_wrappers.insert(kernel.wrapper_symbol());
      EXPECT_TRUE(local.count(kernel.rare_symbol())) << kernel.rare_symbol();
    }
  EXPECT_EQ(wrappers, expected_wrappers);
}

INSTANTIATE_TEST_SUITE_P(, Exports, testing::ValuesIn(library_files()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zorp::test
