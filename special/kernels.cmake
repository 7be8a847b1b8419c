zorp_kernels(HEADER special/erf.h GROUPS erf erfc)
zorp_sources(special/erf_blocks.cpp special/erfc_rare.cpp)
