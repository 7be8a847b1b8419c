zorp_kernels(HEADER arith/division.h GROUPS div inv)
zorp_kernels(HEADER arith/fma.h GROUPS fma)
zorp_kernels(HEADER arith/roots.h GROUPS sqrt rsqrt)
zorp_sources(arith/division_blocks.cpp arith/division_rare.cpp arith/roots_blocks.cpp
             arith/roots_rare.cpp)
