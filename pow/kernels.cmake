zorp_kernels(HEADER pow/cbrt.h GROUPS cbrt rcbrt)
zorp_kernels(HEADER pow/hypot.h GROUPS hypot)
zorp_sources(pow/cbrt_blocks.cpp pow/cbrt_rare.cpp pow/hypot_blocks.cpp pow/hypot_rare.cpp)
zorp_kernels(HEADER pow/pow.h GROUPS pow powr)
zorp_kernels(HEADER pow/pown.h GROUPS pown rootn)
zorp_sources(pow/pow_blocks.cpp pow/pow_rare.cpp pow/pown_blocks.cpp pow/pown_rare.cpp
             pow/scalar_power.cpp)
