// Executes one half instruction on the state of an interrupted program.
#pragma once

#include <ucontext.h>

namespace fp16trap {

/// Executes the instruction at the instruction pointer and steps behind it. False, with nothing
/// changed, if that is no half instruction. Exception flags in MXCSR are not updated.
bool emulate(ucontext_t* context);

}  // namespace fp16trap
