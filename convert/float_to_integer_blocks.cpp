// The constants of the conversions from floating point to integer.
#include "convert/float_to_integer.h"

/// The further names of a block that serves all roundings, with or without saturation.
#define ZORP_SAME_BLOCK_ROUNDINGS(Block, stem, saturation)                 \
  ZORP_SAME_BLOCK(Block, stem##rtn##saturation##_data, stem##rtesat_data); \
  ZORP_SAME_BLOCK(Block, stem##rtp##saturation##_data, stem##rtesat_data); \
  ZORP_SAME_BLOCK(Block, stem##rtz##saturation##_data, stem##rtesat_data)
#define ZORP_SAME_BLOCK_NOSAT(Block, stem)                        \
  ZORP_SAME_BLOCK(Block, stem##rtenosat_data, stem##rtesat_data); \
  ZORP_SAME_BLOCK_ROUNDINGS(Block, stem, nosat)

namespace zorp {
extern "C" {

const ToInt32Block __zorp_dcvtfptoi32rtesat_data = {
    .magnitude_mask = 0x7FFFFFFF,
    .range_limit = 0x41E00000,  // 2^31
    .negative_clamp = 0x80000000,
    .positive_clamp = 0x7FFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(ToInt32Block, __zorp_dcvtfptoi32, sat);

const ToInt32Block __zorp_scvtfptoi32rtesat_data = {
    .magnitude_mask = 0x7FFFFFFF,
    .range_limit = 0x4F000000,  // 2^31
    .negative_clamp = 0x80000000,
    .positive_clamp = 0x7FFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(ToInt32Block, __zorp_scvtfptoi32, sat);

const ToUint32Block<double> __zorp_dcvtfptou32rtesat_data = {
    .exponent_mask = 0x7FF0000000000000,
    .top_bit_exponent = 0x41E0000000000000,  // 2^31
    .range_limit = 0x41F00000,               // 2^32
    .clamp = 0xFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(ToUint32Block<double>, __zorp_dcvtfptou32, sat);
ZORP_SAME_BLOCK_NOSAT(ToUint32Block<double>, __zorp_dcvtfptou32);

const ToUint32Block<float> __zorp_scvtfptou32rtesat_data = {
    .exponent_mask = 0x7F800000,
    .top_bit_exponent = 0x4F000000,  // 2^31
    .range_limit = 0x4F800000,       // 2^32
    .clamp = 0xFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(ToUint32Block<float>, __zorp_scvtfptou32, sat);
ZORP_SAME_BLOCK_NOSAT(ToUint32Block<float>, __zorp_scvtfptou32);

const To64Block<double> __zorp_dcvtfptoi64rtesat_data = {
    .fraction_mask = 0x000FFFFFFFFFFFFF,
    .implied_bit = 0x0010000000000000,
    .shift_bias = 0x0000000000000433,   // 1075, the biased exponent of 2^52
    .adder = 0x4330000000000000,        // 2^52
    .range_limit = 0x43E0000000000000,  // 2^63
    .out_of_range = 0x8000000000000000,
    .positive_clamp = 0x7FFFFFFFFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(To64Block<double>, __zorp_dcvtfptoi64, sat);
ZORP_SAME_BLOCK_NOSAT(To64Block<double>, __zorp_dcvtfptoi64);

const To64Block<double> __zorp_dcvtfptou64rtesat_data = {
    .fraction_mask = 0x000FFFFFFFFFFFFF,
    .implied_bit = 0x0010000000000000,
    .shift_bias = 0x0000000000000433,
    .adder = 0x4330000000000000,        // 2^52
    .range_limit = 0x43F0000000000000,  // 2^64
    .out_of_range = 0x8000000000000000,
    .positive_clamp = 0xFFFFFFFFFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(To64Block<double>, __zorp_dcvtfptou64, sat);
ZORP_SAME_BLOCK_NOSAT(To64Block<double>, __zorp_dcvtfptou64);

const To64Block<float> __zorp_scvtfptoi64rtesat_data = {
    .fraction_mask = 0x007FFFFF,
    .implied_bit = 0x00800000,
    .shift_bias = 0x00000096,   // 150, the biased exponent of 2^23
    .adder = 0x4B000000,        // 2^23
    .range_limit = 0x5F000000,  // 2^63
    .out_of_range = 0x8000000000000000,
    .positive_clamp = 0x7FFFFFFFFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(To64Block<float>, __zorp_scvtfptoi64, sat);
ZORP_SAME_BLOCK_NOSAT(To64Block<float>, __zorp_scvtfptoi64);

const To64Block<float> __zorp_scvtfptou64rtesat_data = {
    .fraction_mask = 0x007FFFFF,
    .implied_bit = 0x00800000,
    .shift_bias = 0x00000096,
    .adder = 0x4B000000,        // 2^23
    .range_limit = 0x5F800000,  // 2^64
    .out_of_range = 0x8000000000000000,
    .positive_clamp = 0xFFFFFFFFFFFFFFFF,
};
ZORP_SAME_BLOCK_ROUNDINGS(To64Block<float>, __zorp_scvtfptou64, sat);
ZORP_SAME_BLOCK_NOSAT(To64Block<float>, __zorp_scvtfptou64);

}  // extern "C"
}  // namespace zorp
