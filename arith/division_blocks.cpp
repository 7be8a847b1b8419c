// The constants of div and inv.
#include "arith/division.h"

namespace zorp {
extern "C" {

const DivFloatShortBlock __zorp_sdiv_native_data = {
    .absmask = 0x7FFFFFFF,
    .minnorm = 0x00800000,
    .limit = 0x7DFFFFFF,  // 2^126 less 2^-126, as encodings, less one
};
ZORP_SAME_BLOCK(DivFloatShortBlock, __zorp_sdiv_half_data, __zorp_sdiv_native_data);

const InvBlock<double> __zorp_dinv_data_avx512 = {.one = 0x3FF0000000000000};
ZORP_SAME_BLOCK(InvBlock<double>, __zorp_dinv_native_data_avx512, __zorp_dinv_data_avx512);
ZORP_SAME_BLOCK(InvBlock<double>, __zorp_dinv_half_data_avx512, __zorp_dinv_data_avx512);
ZORP_SAME_BLOCK(InvBlock<double>, __zorp_dinv_rm_data_avx512, __zorp_dinv_data_avx512);

const InvBlock<float> __zorp_sinv_data_avx512 = {.one = 0x3F800000};
ZORP_SAME_BLOCK(InvBlock<float>, __zorp_sinv_rm_data_avx512, __zorp_sinv_data_avx512);

}  // extern "C"
}  // namespace zorp
