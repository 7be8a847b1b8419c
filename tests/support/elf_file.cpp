#include "tests/support/elf_file.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace zorp::test {

ElfFile::ElfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  bytes_.assign(std::istreambuf_iterator<char>(file), {});
  if (bytes_.size() < sizeof(Elf64_Ehdr) || std::memcmp(bytes_.data(), ELFMAG, SELFMAG) != 0)
    throw std::runtime_error(path + " is not an ELF file");
}

std::span<const Elf64_Phdr> ElfFile::segments() const {
  return table<Elf64_Phdr>(header().e_phoff, header().e_phnum);
}

std::string_view ElfFile::name(const Elf64_Shdr& section) const {
  return contents<char>(sections()[header().e_shstrndx]).data() + section.sh_name;
}

const Elf64_Shdr* ElfFile::section_of_type(Elf64_Word type) const {
  for (const Elf64_Shdr& section : sections())
    if (section.sh_type == type) return &section;
  return nullptr;
}

std::vector<Elf64_Dyn> ElfFile::dynamic() const {
  std::vector<Elf64_Dyn> list;
  if (const Elf64_Shdr* section = section_of_type(SHT_DYNAMIC))
    for (const Elf64_Dyn& entry : contents<Elf64_Dyn>(*section))
      if (entry.d_tag != DT_NULL) list.push_back(entry);
  return list;
}

std::vector<std::string_view> ElfFile::dynamic_strings(Elf64_Sxword tag) const {
  std::vector<std::string_view> list;
  for (const Elf64_Dyn& entry : dynamic())
    if (entry.d_tag == tag) {
      const Elf64_Shdr& strings = sections()[section_of_type(SHT_DYNAMIC)->sh_link];
      list.push_back(contents<char>(strings).data() + entry.d_un.d_val);
    }
  return list;
}

std::vector<ElfFile::Symbol> ElfFile::symbols(Elf64_Word section_type) const {
  std::vector<Symbol> list;
  if (const Elf64_Shdr* section = section_of_type(section_type)) {
    const char* strings = contents<char>(sections()[section->sh_link]).data();
    for (const Elf64_Sym& entry : contents<Elf64_Sym>(*section).subspan(1))
      list.push_back({strings + entry.st_name, entry});
  }
  return list;
}

std::span<const unsigned char> ElfFile::at(Elf64_Addr address) const {
  for (const Elf64_Shdr& section : sections())
    if (section.sh_flags & SHF_ALLOC && section.sh_type != SHT_NOBITS &&
        address >= section.sh_addr && address < section.sh_addr + section.sh_size)
      return contents<unsigned char>(section).subspan(address - section.sh_addr);
  return {};
}

unsigned ElfFile::feature_bits() const {
  for (const Elf64_Shdr& section : sections()) {
    if (name(section) != ".note.gnu.property") continue;
    const auto note = contents<unsigned char>(section);
    // The note's header and name take 16 bytes; the properties are 8-byte aligned.
    for (std::size_t at = 16; at + 12 <= note.size();) {
      Elf64_Word property[3];
      std::memcpy(property, &note[at], sizeof property);
      const auto [type, size, data] = property;
      if (type == GNU_PROPERTY_X86_FEATURE_1_AND) return data;
      at += 8 + (size + 7) / 8 * 8;
    }
  }
  return 0;
}

}  // namespace zorp::test
