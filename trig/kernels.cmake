zorp_kernels(HEADER trig/sinpi.h GROUPS sinpi cospi)
zorp_kernels(HEADER trig/tanpi.h GROUPS tanpi)
zorp_sources(trig/sinpi_blocks.cpp trig/tanpi_blocks.cpp)
