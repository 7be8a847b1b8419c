// The constants of hypot. Tiers share one block, and the rare routines one table.
#include "pow/hypot.h"
#include "pow/hypot_tables.h"

namespace zorp {
extern "C" {

const HypotDoubleBlock __zorp_dhypot_data = {
    .absmask = 0x7FFFFFFFFFFFFFFF,
    .bound = 0x407FF00000000000,  // 511.0: squares from 2^-1020 to below 2^1022
    .half = 0x3FE0000000000000,
};
ZORP_SAME_BLOCK(HypotDoubleBlock, __zorp_dhypot_native_data, __zorp_dhypot_data);

const HypotFloatBlock __zorp_shypot_data = {
    .absmask = 0x7FFFFFFF,
    .half = 0x3F000000,
    .bound = 0x427C0000,  // 63.0: squares from 2^-124 to below 2^126
};
ZORP_SAME_BLOCK(HypotFloatBlock, __zorp_shypot_native_data, __zorp_shypot_data);

const HypotHalfBlock __zorp_hhypot_data = {.infinity = 0x7C00};
ZORP_SAME_BLOCK(HypotHalfBlock, __zorp_hhypot_native_data, __zorp_hhypot_data);

const HypotTable __dhypot_g__qaxdHypotHATab = reciprocal_roots_double_512;
ZORP_SAME_BLOCK(HypotTable, _qaxsHypotHATab, __dhypot_g__qaxdHypotHATab);

}  // extern "C"
}  // namespace zorp
