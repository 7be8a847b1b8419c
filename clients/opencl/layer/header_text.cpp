#include "clients/opencl/layer/header_text.h"

#include "clients/opencl/layer/overloads.h"

namespace zorp::opencl {
namespace {

// The line marker makes this a system header, of which no warnings are given. Before
// version 1.2 the language had no external functions. A runtime that doesn't know the processor
// compiles for an older one: its compiler has no registers that a kernel keeps, and operands and
// results go through memory.
constexpr const char* kBegin = R"(# 1 "zorp_z1_opencl.h" 1 3
#if defined(__x86_64__) && defined(cl_khr_fp64) && __OPENCL_C_VERSION__ >= 120
#define __zorp_inline \
  extern __inline__ __attribute__((__gnu_inline__, __always_inline__, __overloadable__))
/* Below the stack pointer may be the caller's red zone. */
#define __zorp_call(kernel) \
  "leaq -128(%%rsp), %%rsp\n\tcall __zorp_z1_" kernel "@PLT\n\tleaq 128(%%rsp), %%rsp"
#define __zorp_clobbers_but_first \
  "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", \
  "xmm12", "xmm13", "xmm14", "xmm15", "k0", "k1", "k2", "k3", "rcx", "rdx", "r8", "r9", "r10", \
  "r11", "cc"
#if defined(__AVX512F__) && defined(__AVX512VL__) && !defined(__zorp_through_memory)
#define __zorp_first "Yz"
#define __zorp_next "v"
#define __zorp_first_result "=Yz"
#define __zorp_next_result "=v"
#define __zorp_load_first(register)
#define __zorp_store_first(register)
#define __zorp_clobbers __zorp_clobbers_but_first
#else
#define __zorp_first "m"
#define __zorp_next "m"
#define __zorp_first_result "=m"
#define __zorp_next_result "=m"
#define __zorp_load_first(register) "vmovups %[i0], %%" register "\n\t"
#define __zorp_store_first(register) "\n\tvmovups %%" register ", %[o0]"
#define __zorp_clobbers "xmm0", __zorp_clobbers_but_first
#endif
#ifdef __FAST_RELAXED_MATH__
#define __zorp_relaxed "_rm"
#else
#define __zorp_relaxed
#endif
)";

// The empty name stands for that of the program's file.
constexpr const char* kEnd = R"(#endif
# 1 "" 2
)";

}  // namespace

std::string header_text(bool all) {
  std::string text = kBegin;
  for (const Overload& overload : kOverloads)
    if (all || overload.by_default) text += overload.text;
  return text + kEnd;
}

}  // namespace zorp::opencl
