// Stands before the compiler's header of the same name and lets the library's algorithms run on a
// processor that has AVX2, FMA and F16C but no AVX-512: every AVX-512 intrinsic that the frame uses
// is declared once more inside namespace zorp, where the frame's code finds it first. Each does
// what the processor's manual says of its instruction: rounding modes, NaN operands, special
// values, subnormals and MXCSR's treatment of them. Exception flags are not kept.
//
// On loan from the processor: additions, multiplications and fused operations run as the AVX2 or
// FMA instructions of 256 bits; where the manual describes an operation by cases, lane by lane.
#pragma once

#include_next <immintrin.h>

#include "instructions/arithmetic.h"
#include "instructions/conversions.h"
#include "instructions/integers.h"
#include "instructions/registers.h"
#include "instructions/special.h"
