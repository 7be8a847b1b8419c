// The constants of the conversions from double to float. Rounding to nearest reads none.
#include "convert/double_to_float.h"

namespace zorp {
extern "C" {

const DoubleToFloatBlock __zorp_dcvtfp64tofp32rtz_data = {
    .double_magnitude_mask = 0x7FFFFFFFFFFFFFFF,
    .float_magnitude_mask = 0x7FFFFFFF,
    .sign_mask = 0x80000000,
    .sign_test_mask = 0x80000000,
    .zero = 0x00000000,
    .plus_one = 0x00000001,
};
ZORP_SAME_BLOCK(DoubleToFloatBlock, __zorp_dcvtfp64tofp32rtn_data, __zorp_dcvtfp64tofp32rtz_data);
ZORP_SAME_BLOCK(DoubleToFloatBlock, __zorp_dcvtfp64tofp32rtp_data, __zorp_dcvtfp64tofp32rtz_data);

}  // extern "C"
}  // namespace zorp
