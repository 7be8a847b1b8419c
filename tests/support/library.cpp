#include "tests/support/library.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>
#include <stdexcept>

#include "tests/portable/portable.h"
#include "tests/support/processor.h"

namespace zorp::test {
namespace {

std::vector<LibraryFile> read_library_files() {
  std::vector<LibraryFile> files;
  std::ifstream list(ZORP_LIBRARIES_FILE);
  for (std::string line; std::getline(list, line);) {
    std::istringstream words(line);
    LibraryFile& file = files.emplace_back();
    words >> file.name >> std::quoted(file.path);
    for (std::string group; words >> group;) file.groups.push_back(group);
  }
  return files;
}

}  // namespace

const std::vector<LibraryFile>& library_files() {
  static const std::vector<LibraryFile> files = read_library_files();
  return files;
}

const LibraryFile& portable_file() {
  static const LibraryFile file = {"portable", ZORP_PORTABLE_FILE,
                                   library_file("emulated")->groups};
  return file;
}

const LibraryFile* library_file(const std::string& name) {
  for (const LibraryFile& file : library_files())
    if (file.name == name) return &file;
  return nullptr;
}

Library::Library(const std::string& path) : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (!handle_) throw std::runtime_error(dlerror());
}

Library Library::copy_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream contents;
  contents << file.rdbuf();
  const std::string bytes = contents.str();
  const int descriptor = memfd_create("copy", 0);
  if (write(descriptor, bytes.data(), bytes.size()) != ssize_t(bytes.size()))
    throw std::runtime_error("cannot copy " + path);
  // The descriptor stays open: dlopen would take the next copy under its name for this one.
  return Library("/proc/self/fd/" + std::to_string(descriptor));
}

void Library::Close::operator()(void* handle) const { dlclose(handle); }

const void* Library::find(const std::string& symbol) const {
  return dlsym(handle_.get(), symbol.c_str());
}

const void* Library::entry(const Kernel& kernel) const {
  const void* address = find(kernel.symbol());
  if (const void* portable = find("zorp_portable_find")) {
    const auto evaluate = reinterpret_cast<decltype(&zorp_portable_find)>(
        const_cast<void*>(portable))(kernel.name().c_str());
    address = reinterpret_cast<const void*>(evaluate);
  }
  if (!address) throw std::runtime_error("the library has no " + kernel.symbol());
  return address;
}

std::uintptr_t Library::base() const {
  link_map* map = nullptr;
  dlinfo(handle_.get(), RTLD_DI_LINKMAP, &map);
  return map->l_addr;
}

const Library& loaded(const LibraryFile& file) {
  static std::map<std::string, Library> libraries;
  return libraries.try_emplace(file.path, file.path).first->second;
}

std::vector<Kernel> Variant::kernels() const {
  std::vector<Kernel> list;
  for (int width : family->widths(element))
    if (!is_portable() || width == 1 || width == widest()) list.push_back(kernel(width));
  return list;
}

std::string Variant::name() const {
  return library->name + '_' + family->name + '_' + std::string(test::name(element)) + '_' +
         std::string(test::name(tier));
}

bool Variant::is_representative() const { return library->name == "emulated" || is_portable(); }

bool Variant::is_portable() const { return library == &portable_file(); }

bool Variant::trapped() const {
  return library->name == "native" && element == Element::f16 && !has_half_arithmetic();
}

std::string_view name(Element element) {
  constexpr std::string_view names[] = {"double", "float", "half"};
  return names[int(element)];
}

std::string_view name(Tier tier) {
  constexpr std::string_view names[] = {"default", "native", "half", "rm"};
  return names[int(tier)];
}

void PrintTo(const LibraryFile& file, std::ostream* out) { *out << file.name; }
void PrintTo(const Variant& variant, std::ostream* out) { *out << variant.name(); }

namespace {
std::vector<Variant> variants_of(const LibraryFile& file) {
  std::vector<Variant> list;
  for (const Kernel& kernel : file.kernels())
    if (kernel.width == 1) list.push_back({&file, kernel.family, kernel.element, kernel.tier});
  return list;
}
}  // namespace

std::vector<Variant> kernel_variants() {
  std::vector<Variant> list;
  if (!has_avx512()) return list;
  for (const LibraryFile& file : library_files())
    for (const Variant& variant : variants_of(file)) list.push_back(variant);
  return list;
}

std::vector<Variant> portable_variants() { return variants_of(portable_file()); }

std::vector<Variant> variants() { return has_avx512() ? kernel_variants() : portable_variants(); }

}  // namespace zorp::test
