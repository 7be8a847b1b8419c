zorp_kernels(HEADER pow/cbrt.h GROUPS cbrt rcbrt)
zorp_kernels(HEADER pow/hypot.h GROUPS hypot)
zorp_sources(pow/cbrt_blocks.cpp pow/cbrt_rare.cpp pow/hypot_blocks.cpp pow/hypot_rare.cpp)
