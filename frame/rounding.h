// Static rounding: every rounded operation of the library names its mode at compile time.
#pragma once

#include <immintrin.h>

namespace zorp {

/// Rounding modes in the encoding that the processor's immediates use. `current` takes the mode
/// from MXCSR; only the few operations that are defined to follow the caller's mode use it.
enum class Rounding : int { nearest = 0, down = 1, up = 2, zero = 3, current = 4 };

inline constexpr Rounding rn = Rounding::nearest;
inline constexpr Rounding rd = Rounding::down;
inline constexpr Rounding ru = Rounding::up;
inline constexpr Rounding rz = Rounding::zero;

/// The rounding argument of an intrinsic: static modes suppress all exceptions.
template <Rounding mode>
inline constexpr int embedded = mode == Rounding::current
                                    ? _MM_FROUND_CUR_DIRECTION
                                    : static_cast<int>(mode) | _MM_FROUND_NO_EXC;

/// Suppressed exceptions for operations that never round.
inline constexpr int sae = _MM_FROUND_NO_EXC;

}  // namespace zorp
