zorp_kernels(HEADER special/gamma.h GROUPS lgamma lgammar tgamma)
zorp_sources(special/gamma_blocks.cpp special/lgamma_rare.cpp special/tgamma_rare.cpp)
zorp_kernels(HEADER special/erf.h GROUPS erf erfc)
zorp_sources(special/erf_blocks.cpp special/erfc_rare.cpp)
