// The constants of round. Those of half are float values: half computes in float.
#include "exact/rounding.h"

namespace zorp {
extern "C" {

const RoundBlock<double> __zorp_dround_data = {
    .sign = 0x8000000000000000,
    .half = 0x3FE0000000000000,
    .one = 0x3FF0000000000000,
};

const RoundBlock<float> __zorp_sround_data = {
    .sign = 0x80000000,
    .half = 0x3F000000,
    .one = 0x3F800000,
};

const RoundBlock<float> __zorp_hround_data = {
    .sign = 0x80000000,
    .half = 0x3F000000,
    .one = 0x3F800000,
};

}  // extern "C"
}  // namespace zorp
