#include "tests/support/callout_tracker.h"

#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "tests/support/elf_file.h"

namespace zorp::test {
namespace {

constexpr unsigned char kBreakpoint = 0xcc;  // int3
constexpr greg_t kTrapFlag = 0x100;

struct Watch {
  unsigned char* address;
  unsigned char original;
};

// The signal handler's state: fixed storage, since the handler must not allocate.
struct {
  std::array<Watch, 4> watches;
  int watch_count = 0;
  std::array<CalloutTracker::Entry, 256> entries;
  int entry_count = 0;
  Watch* stepping = nullptr;
} g;

// A breakpoint notes the entry, uncovers the instruction and steps over it; the trap behind that
// instruction plants the breakpoint again.
void on_trap(int, siginfo_t*, void* context) {
  greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  if (g.stepping) {
    *g.stepping->address = kBreakpoint;
    g.stepping = nullptr;
    registers[REG_EFL] &= ~kTrapFlag;
    return;
  }
  unsigned char* const address = reinterpret_cast<unsigned char*>(registers[REG_RIP] - 1);
  for (int i = 0; i < g.watch_count; ++i) {
    Watch& watch = g.watches[i];
    if (watch.address != address) continue;
    if (g.entry_count < int(g.entries.size()))
      g.entries[g.entry_count++] = {address, std::uintptr_t(registers[REG_RDI])};
    *address = watch.original;
    g.stepping = &watch;
    registers[REG_RIP] -= 1;
    registers[REG_EFL] |= kTrapFlag;
    return;
  }
  std::abort();  // a breakpoint of the library's own
}

}  // namespace

CalloutTracker::CalloutTracker(const std::string& library_path)
    : library_(Library::copy_of(library_path)) {
  const ElfFile file(library_path);
  const std::uintptr_t base = library_.base();
  for (const ElfFile::Symbol& symbol : file.symbols(SHT_SYMTAB))
    if (symbol.binding() == STB_LOCAL && symbol.type() == STT_FUNC)
      functions_[std::string(symbol.name)] =
          reinterpret_cast<unsigned char*>(base + symbol.entry.st_value);
  for (const Elf64_Phdr& segment : file.segments()) {
    if (segment.p_type != PT_LOAD || !(segment.p_flags & PF_X)) continue;
    const std::uintptr_t page_mask = 4095;
    const std::uintptr_t begin = (base + segment.p_vaddr) & ~page_mask;
    if (mprotect(reinterpret_cast<void*>(begin), base + segment.p_vaddr + segment.p_memsz - begin,
                 PROT_READ | PROT_WRITE | PROT_EXEC) != 0)
      throw std::runtime_error("cannot make the copy of the library writable");
  }
  struct sigaction action = {};
  action.sa_sigaction = on_trap;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  sigaction(SIGTRAP, &action, nullptr);
}

CalloutTracker::~CalloutTracker() {
  watch({});
  std::signal(SIGTRAP, SIG_DFL);
}

void CalloutTracker::watch(const std::vector<std::string>& symbols) {
  for (int i = 0; i < g.watch_count; ++i) *g.watches[i].address = g.watches[i].original;
  g.watch_count = 0;
  for (const std::string& symbol : symbols) {
    unsigned char* const address = functions_.at(symbol);
    g.watches.at(g.watch_count++) = {address, *address};
    *address = kBreakpoint;
  }
  forget_entries();
}

void CalloutTracker::forget_entries() { g.entry_count = 0; }

std::span<const CalloutTracker::Entry> CalloutTracker::entries() const {
  return {g.entries.data(), std::size_t(g.entry_count)};
}

int CalloutTracker::entries_into(const std::string& symbol) const {
  int count = 0;
  for (const Entry& entry : entries()) count += entry.function == functions_.at(symbol);
  return count;
}

}  // namespace zorp::test
