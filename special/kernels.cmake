zorp_kernels(HEADER special/gamma.h GROUPS lgamma lgammar tgamma)
zorp_sources(special/lgamma_rare.cpp special/tgamma_rare.cpp)
