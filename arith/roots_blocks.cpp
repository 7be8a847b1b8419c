// The constants of sqrt and rsqrt.
#include "arith/roots.h"

namespace zorp {
extern "C" {

const SqrtDoubleShortBlock __zorp_dsqrt_native_data_avx512 = {.half = 0x3FE0000000000000};
ZORP_SAME_BLOCK(SqrtDoubleShortBlock, __zorp_dsqrt_half_data_avx512,
                __zorp_dsqrt_native_data_avx512);

const SqrtFloatBlock __zorp_ssqrt_data_avx512 = {
    .half = 0x3F000000,
    .thresh = 0x53000000,  // 2^39
    .big = 0x66800000,     // 2^78
    .small = 0x18800000,   // 2^-78
};

const SqrtHalfBlock __zorp_hsqrt_data = {.half = 0x3F000000};
ZORP_SAME_BLOCK(SqrtHalfBlock, __zorp_hsqrt_native_data, __zorp_hsqrt_data);
ZORP_SAME_BLOCK(SqrtHalfBlock, __zorp_hsqrt_half_data, __zorp_hsqrt_data);

const RsqrtDoubleBlock __zorp_dinvsqrt_data = {
    // 1 / sqrt(1 - d) = 1 + c1 d + ... + c3 d^3 on |d| <= 2^-13: relative error 2^-55.8
    .c3 = 0x3FD4000005E80001,
    .c2 = 0x3FD8000004600001,
    .c1 = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
};

const RsqrtDoubleShortBlock __zorp_dinvsqrt_native_data = {.half = 0x3FE0000000000000};
ZORP_SAME_BLOCK(RsqrtDoubleShortBlock, __zorp_dinvsqrt_half_data, __zorp_dinvsqrt_native_data);

const RsqrtFloatBlock __zorp_sinvsqrt_data = {.nhalf = 0xBF000000};
ZORP_SAME_BLOCK(RsqrtFloatBlock, __zorp_hinvsqrt_data, __zorp_sinvsqrt_data);
ZORP_SAME_BLOCK(RsqrtFloatBlock, __zorp_hinvsqrt_native_data, __zorp_sinvsqrt_data);
ZORP_SAME_BLOCK(RsqrtFloatBlock, __zorp_hinvsqrt_half_data, __zorp_sinvsqrt_data);

}  // extern "C"
}  // namespace zorp
