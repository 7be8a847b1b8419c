#include <string.h>

#include "tests/portable/immintrin.h"
#include "tests/portable/portable.h"

// The linker joins the tables of all sources and marks their ends.
extern "C" const zorp::portable::Entry __start_zorp_kernels[], __stop_zorp_kernels[];

extern "C" zorp::portable::Evaluate zorp_portable_find(const char* kernel) {
  for (const auto* entry = __start_zorp_kernels; entry != __stop_zorp_kernels; ++entry)
    if (strcmp(entry->kernel, kernel) == 0) return entry->evaluate;
  return nullptr;
}

extern "C" void zorp_portable_set_estimate_bits(int bits) { zorp::portable::estimate_bits = bits; }
