zorp_kernels(HEADER invtrig/asin.h GROUPS asin acos asinpi acospi)
zorp_kernels(HEADER invtrig/atan.h GROUPS atan atanpi)
zorp_kernels(HEADER invtrig/atan2.h GROUPS atan2 atan2pi)
zorp_sources(invtrig/asin_blocks.cpp invtrig/asin_rare.cpp invtrig/atan_blocks.cpp
             invtrig/atan_rare.cpp invtrig/atan2_rare.cpp)
