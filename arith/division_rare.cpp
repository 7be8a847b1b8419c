// div of single floats whose divisor is tiny, huge, zero, infinite or a NaN.
#include "arith/division.h"

namespace zorp {
extern "C" {

void __zorp_sdiv_cout_rare(const float* a, const float* b, float* result) { *result = *a / *b; }

}  // extern "C"
}  // namespace zorp
