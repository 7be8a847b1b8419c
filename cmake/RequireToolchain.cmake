# The register contract of the kernels rests on options that keep the compiler off some registers
# (-ffixed-REG for vector and mask registers, -fcall-saved-REG). Refuse what can't give it.

if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  message(FATAL_ERROR
    "zorp_z1 is built for x86-64 processors with AVX-512; the target here is "
    "${CMAKE_SYSTEM_PROCESSOR}. Configure with an x86-64 toolchain.")
endif()
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
  message(FATAL_ERROR
    "zorp_z1 needs g++ 12 or newer: its kernels keep zmm16 to zmm31, k4 to k7, rsi and rdi alive "
    "across a call, which only g++'s -ffixed-REG and -fcall-saved-REG options give. Found "
    "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}; set CMAKE_CXX_COMPILER or CXX to g++.")
endif()

include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_FLAGS
    "-mavx512fp16 -ffixed-xmm16 -ffixed-k4 -fcall-saved-rsi -fcall-saved-rdi")
check_cxx_source_compiles(
  "#include <immintrin.h>
   __m512h f(__m512h a) { return _mm512_add_ph(a, a); }
   int main() {}"
  ZORP_COMPILER_GIVES_CONTRACT)
unset(CMAKE_REQUIRED_FLAGS)
if(NOT ZORP_COMPILER_GIVES_CONTRACT)
  message(FATAL_ERROR
    "zorp_z1 needs a 64-bit x86 g++ that accepts -mavx512fp16, -ffixed-xmm16, -ffixed-k4, "
    "-fcall-saved-rsi and -fcall-saved-rdi; ${CMAKE_CXX_COMPILER} does not.")
endif()
