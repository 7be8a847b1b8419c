// What the processor of this machine can do.
#pragma once

namespace zorp::test {

/// The instructions that every kernel needs.
bool has_avx512();
/// AVX512-FP16, which the native flavour's half kernels need besides.
bool has_half_arithmetic();
/// xgetbv tells which state components are in use.
bool has_xinuse();

}  // namespace zorp::test
