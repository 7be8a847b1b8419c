// The constants of fmod, remainder and remquo. Half fmod and remquo compute in float.
#include "exact/remainder.h"

namespace zorp {
extern "C" {

// The range is that of |y|. In fmod it keeps the corrections of the quotient, and the reciprocal,
// off the subnormals: float from 2^-124 to below 2^126, double from 2^-1020 to below 2^1022.
const FmodDoubleBlock __zorp_dfmod_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .sign = 0x8000000000000000,
    .limit = 0x4039000000000000,  // 25.0
    .one = 0x3FF0000000000000,
    .range_offset = 0x8030000000000000,
    .range_limit = 0xFF9FFFFFFFFFFFFF,
};

const FmodFloatBlock __zorp_sfmod_data = {
    .absmask = 0x7FFFFFFF,
    .sign = 0x80000000,
    .limit = 0x41300000,  // 11.0
    .range_offset = 0x81800000,
    .range_limit = 0xFCFFFFFF,
};
ZORP_SAME_BLOCK(FmodFloatBlock, __zorp_hfmod_data, __zorp_sfmod_data);

// Here it keeps the products of y's parts normal, too: float from 2^-103 to below 2^116, double
// from 2^-972 to below 2^998.
const RemainderBlock<double> __zorp_dremainder_data = {
    .split = 0xFFFFFFFFF8000000,
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .sign = 0x8000000000000000,
    .half = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
    .limit = 0x19,
    .range_offset = 0x8330000000000000,
    .range_limit = high_word(0xFB1FFFFF),
};
ZORP_SAME_BLOCK(RemainderBlock<double>, __zorp_dremquo_data, __zorp_dremainder_data);

const RemainderBlock<float> __zorp_sremainder_data = {
    .split = 0xFFFFF000,
    .absmask = 0x7FFFFFFF,
    .sign = 0x80000000,
    .half = 0x3F000000,
    .one = 0x3F800000,
    .limit = 0x0B,
    .range_offset = 0x8C000000,
    .range_limit = 0xED7FFFFF,
};
ZORP_SAME_BLOCK(RemainderBlock<float>, __zorp_sremquo_data, __zorp_sremainder_data);
ZORP_SAME_BLOCK(RemainderBlock<float>, __zorp_hremquo_data, __zorp_sremainder_data);

const RemainderHalfBlock __zorp_hremainder_data = {
    .sign = 0x8000,
    .limit8 = 0x4800,
    .limit19 = 0x4CC0,
    .limit29 = 0x4F40,
    .zero = 0x0000,
    .low_bit = 0x0001,
};

}  // extern "C"
}  // namespace zorp
