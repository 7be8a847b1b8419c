# Rounding to integral values.
zorp_kernels(HEADER exact/rounding.h GROUPS ceil floor trunc rint nearbyint round)
zorp_sources(exact/rounding_blocks.cpp)
