// Nothing is forgotten: the names that others have of this ABI.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

#include "tests/support/elf_file.h"

namespace zorp::vecabi::test {
namespace {

using zorp::test::ElfFile;
using Strings = std::set<std::string>;

Strings exported_by(const std::string& path) {
  const ElfFile file(path);
  Strings names;
  for (const ElfFile::Symbol& symbol : file.symbols(SHT_DYNSYM))
    if (symbol.defined()) names.emplace(symbol.name);
  return names;
}

TEST(VectorAbiNames, AllOfTheCLibrarysHeader) {
  const Strings exported = exported_by(ZORP_VECABI_FILE);
  std::ifstream header(ZORP_MATH_VECTOR_HEADER);
  const std::regex line("#\\s*define __DECL_SIMD_(\\w+) __DECL_SIMD_x86_64");
  int functions = 0;
  std::smatch match;
  for (std::string text; std::getline(header, text);) {
    if (!std::regex_match(text, match, line)) continue;
    ++functions;
    // The compilers take each vector parameter of the prototype for a vector: pointers, too.
    const std::regex name("_ZGV([bcde])N\\d+v+_" + match[1].str());
    Strings letters;
    for (const std::string& symbol : exported)
      if (std::smatch found; std::regex_match(symbol, found, name)) letters.insert(found[1]);
    EXPECT_EQ(letters, (Strings{"b", "c", "d", "e"})) << match[1];
  }
  EXPECT_GT(functions, 8);
}

TEST(VectorAbiNames, AllOfSleefsLibraryAndFormsWithVectorsOfPointers) {
  Strings expected;
  // _finite, _u35 and fast forms are its own.
  const std::regex name("_ZGV[^_]+_(?!fast)[a-z0-9]+");
  for (const std::string& symbol : exported_by(ZORP_SLEEF_FILE))
    if (std::regex_match(symbol, name)) expected.insert(symbol);
  EXPECT_GT(expected.size(), 500u);
  Strings exported;
  for (const std::string& symbol : exported_by(ZORP_VECABI_FILE))
    if (symbol.find("vvv_sincos") == symbol.npos) exported.insert(symbol);
  EXPECT_EQ(exported, expected);
}

}  // namespace
}  // namespace zorp::vecabi::test
