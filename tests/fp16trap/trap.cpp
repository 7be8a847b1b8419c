// A library for tests, to be preloaded or linked: on a processor without AVX512-FP16, half
// instructions trap here and are emulated, so that a program made for such instructions runs
// anywhere that has AVX-512. This file must not need AVX-512 itself.
#include <signal.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

#include "emulator.h"

namespace fp16trap {
namespace {

/// Says which instruction it was. Reads no further than the page that it begins in.
void report(const uint8_t* code) {
  constexpr char digits[] = "0123456789abcdef";
  constexpr uintptr_t page = 4096;
  constexpr size_t longest_instruction = 15;
  char text[80] = "fp16trap: not a half instruction:";
  size_t length = __builtin_strlen(text);
  size_t count = page - reinterpret_cast<uintptr_t>(code) % page;
  if (count > longest_instruction) count = longest_instruction;
  for (size_t i = 0; i < count; ++i) {
    text[length++] = ' ';
    text[length++] = digits[code[i] >> 4];
    text[length++] = digits[code[i] & 15];
  }
  text[length++] = '\n';
  if (write(STDERR_FILENO, text, length) < 0) return;
}

void handle(int, siginfo_t*, void* context) {
  const auto machine = static_cast<ucontext_t*>(context);
  if (emulate(machine)) return;
  report(reinterpret_cast<const uint8_t*>(machine->uc_mcontext.gregs[REG_RIP]));
  // On return the instruction traps again, and ends the program.
  signal(SIGILL, SIG_DFL);
}

[[gnu::constructor]] void install() {
  if (!__builtin_cpu_supports("avx512vl") || !__builtin_cpu_supports("avx512bw") ||
      !__builtin_cpu_supports("avx512dq") || !__builtin_cpu_supports("avx512vbmi2")) {
    return;
  }
  struct sigaction action = {};
  action.sa_sigaction = handle;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigemptyset(&action.sa_mask);
  sigaction(SIGILL, &action, nullptr);
}

}  // namespace
}  // namespace fp16trap
