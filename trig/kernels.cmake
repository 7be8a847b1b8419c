zorp_kernels(HEADER trig/sinpi.h GROUPS sinpi cospi)
zorp_kernels(HEADER trig/tanpi.h GROUPS tanpi)
zorp_sources(trig/sinpi_blocks.cpp trig/tanpi_blocks.cpp)
zorp_kernels(HEADER trig/sin_cos.h GROUPS sin cos)
zorp_kernels(HEADER trig/sincos.h GROUPS sincos sincosreg)
zorp_kernels(HEADER trig/tan.h GROUPS tan)
zorp_sources(trig/reduction_blocks.cpp trig/sin_cos_blocks.cpp trig/sincos_blocks.cpp
             trig/tan_blocks.cpp trig/rare.cpp)
