// The constants of the conversions from integer to floating point.
#include "convert/integer_to_float.h"

/// The further names of a block that serves all roundings.
#define ZORP_SAME_BLOCK_ROUNDINGS(Block, stem)            \
  ZORP_SAME_BLOCK(Block, stem##rtn_data, stem##rte_data); \
  ZORP_SAME_BLOCK(Block, stem##rtp_data, stem##rte_data); \
  ZORP_SAME_BLOCK(Block, stem##rtz_data, stem##rte_data)

namespace zorp {
extern "C" {

const Uint32ToDoubleBlock __zorp_dcvtu32tofprte_data = {
    .low_adder = 0x4330000000000000,  // 2^52
};
ZORP_SAME_BLOCK_ROUNDINGS(Uint32ToDoubleBlock, __zorp_dcvtu32tofp);

const SignedToSameBlock<double> __zorp_dcvti64tofprte_data = {
    .fraction_mask = 0x000FFFFFFFFFFFFF,
    .sign_mask = 0x8000000000000000,
    .low_adder = 0x4330000000000000,   // 2^52: unit 1
    .high_adder = 0x4670000000000000,  // 2^104: unit 2^52
    .plus_one = 0x0000000000000001,
    .minus_one = 0xFFFFFFFFFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(SignedToSameBlock<double>, __zorp_dcvti64tofp);

const UnsignedToSameBlock<double> __zorp_dcvtu64tofprte_data = {
    .fraction_mask = 0x000FFFFFFFFFFFFF,
    .low_adder = 0x4330000000000000,
    .high_adder = 0x4670000000000000,
    .plus_one = 0x0000000000000001,
};
ZORP_SAME_BLOCK_ROUNDINGS(UnsignedToSameBlock<double>, __zorp_dcvtu64tofp);

const SignedToSameBlock<float> __zorp_scvti32tofprte_data = {
    .fraction_mask = 0x007FFFFF,
    .sign_mask = 0x80000000,
    .low_adder = 0x4B000000,   // 2^23: unit 1
    .high_adder = 0x56800000,  // 2^46: unit 2^23
    .plus_one = 0x00000001,
    .minus_one = 0xFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(SignedToSameBlock<float>, __zorp_scvti32tofp);

const UnsignedToSameBlock<float> __zorp_scvtu32tofprte_data = {
    .fraction_mask = 0x007FFFFF,
    .low_adder = 0x4B000000,
    .high_adder = 0x56800000,
    .plus_one = 0x00000001,
};
ZORP_SAME_BLOCK_ROUNDINGS(UnsignedToSameBlock<float>, __zorp_scvtu32tofp);

const Int64ToFloatBlock __zorp_scvti64tofprte_data = {
    .fraction_mask = 0x007FFFFF,
    .half_ulp_offset = 0x0C000000,  // 24, in the exponent field
    .sign_mask = 0x80000000,
    .low_adder = 0x4B000000,     // 2^23: unit 1
    .middle_adder = 0x56800000,  // 2^46: unit 2^23
    .high_adder = 0x62000000,    // 2^69: unit 2^46
    .plus_one = 0x00000001,
    .minus_one = 0xFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(Int64ToFloatBlock, __zorp_scvti64tofp);

const Uint64ToFloatBlock __zorp_scvtu64tofprte_data = {
    .fraction_mask = 0x007FFFFF,
    .half_ulp_offset = 0x0C000000,
    .low_adder = 0x4B000000,
    .middle_adder = 0x56800000,
    .high_adder = 0x62000000,
    .plus_one = 0x00000001,
};
ZORP_SAME_BLOCK_ROUNDINGS(Uint64ToFloatBlock, __zorp_scvtu64tofp);

}  // extern "C"
}  // namespace zorp
