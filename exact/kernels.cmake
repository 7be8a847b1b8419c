zorp_kernels(HEADER exact/rounding.h GROUPS ceil floor trunc rint nearbyint round)
zorp_kernels(HEADER exact/decomposition.h GROUPS frexp ldexp ilogb logb modf fract nextafter)
zorp_kernels(HEADER exact/selection.h GROUPS fmax fmin maxmag minmag fdim copysign fabs nan)
zorp_kernels(HEADER exact/remainder.h GROUPS fmod remainder remquo)
zorp_sources(exact/rounding_blocks.cpp exact/decomposition_blocks.cpp exact/decomposition_rare.cpp
             exact/selection_rare.cpp exact/remainder_blocks.cpp exact/remainder_rare.cpp)
