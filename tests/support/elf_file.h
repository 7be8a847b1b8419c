// A shared library as a file: its sections, segments, symbols and notes.
#pragma once

#include <elf.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zorp::test {

class ElfFile {
 public:
  struct Symbol {
    std::string_view name;
    Elf64_Sym entry;
    int binding() const { return ELF64_ST_BIND(entry.st_info); }
    int type() const { return ELF64_ST_TYPE(entry.st_info); }
    bool defined() const { return entry.st_shndx != SHN_UNDEF; }
  };

  explicit ElfFile(const std::string& path);

  std::span<const Elf64_Shdr> sections() const { return table<Elf64_Shdr>(header().e_shoff); }
  std::span<const Elf64_Phdr> segments() const;
  std::string_view name(const Elf64_Shdr& section) const;
  std::vector<Elf64_Dyn> dynamic() const;
  /// The strings of the dynamic entries with that tag.
  std::vector<std::string_view> dynamic_strings(Elf64_Sxword tag) const;
  /// The symbols of .dynsym or .symtab, by section type.
  std::vector<Symbol> symbols(Elf64_Word section_type) const;
  /// The bytes from a virtual address to the end of its section; empty if none holds them.
  std::span<const unsigned char> at(Elf64_Addr address) const;
  /// GNU_PROPERTY_X86_FEATURE_1_AND, or 0.
  unsigned feature_bits() const;

 private:
  const Elf64_Ehdr& header() const { return *reinterpret_cast<const Elf64_Ehdr*>(bytes_.data()); }
  template <class T>
  std::span<const T> table(Elf64_Off offset, std::size_t count) const {
    return {reinterpret_cast<const T*>(&bytes_.at(offset)), count};
  }
  template <class T>
  std::span<const T> table(Elf64_Off offset) const {
    return table<T>(offset, header().e_shnum);
  }
  template <class T>
  std::span<const T> contents(const Elf64_Shdr& section) const {
    return table<T>(section.sh_offset, section.sh_size / sizeof(T));
  }
  const Elf64_Shdr* section_of_type(Elf64_Word type) const;

  std::vector<unsigned char> bytes_;
};

}  // namespace zorp::test
