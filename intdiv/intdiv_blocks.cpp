// The constants of integer division.
#include "intdiv/intdiv.h"

namespace zorp {
extern "C" {

const Row<double> __vdtwo = 0x4000000000000000;
const Row<double> __vdalpha = 0x4000000000000200;  // 2 + 2^-42

}  // extern "C"
}  // namespace zorp
