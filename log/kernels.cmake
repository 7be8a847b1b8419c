zorp_kernels(HEADER log/log.h GROUPS log log2 log10)
zorp_sources(log/log_blocks.cpp)
