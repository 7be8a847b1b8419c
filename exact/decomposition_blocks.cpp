// The constants of fract and nextafter.
#include "exact/decomposition.h"

namespace zorp {
extern "C" {

const FractBlock<double> __zorp_dfract_data = {.below_one = 0x3FEFFFFFFFFFFFFF};
const FractBlock<float> __zorp_sfract_data = {.below_one = 0x3F7FFFFF};
const FractBlock<half> __zorp_hfract_data = {.below_one = 0x3BFF};

const NextafterBlock<int64_t> __zorp_dnextafter_data = {.plus_one = 1, .minus_one = ~uint64_t{0}};
const NextafterBlock<int32_t> __zorp_snextafter_data = {.plus_one = 1, .minus_one = ~uint64_t{0}};
const NextafterBlock<int16_t> __zorp_hnextafter_data = {.plus_one = 1, .minus_one = ~uint64_t{0}};

}  // extern "C"
}  // namespace zorp
