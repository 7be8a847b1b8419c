zorp_kernels(HEADER log/inverse_hyperbolic.h GROUPS acosh asinh atanh)
zorp_kernels(HEADER log/log.h GROUPS log log2 log10)
zorp_kernels(HEADER log/log1p.h GROUPS log1p)
zorp_sources(log/inverse_hyperbolic_blocks.cpp log/inverse_hyperbolic_rare.cpp log/log_blocks.cpp
             log/log1p_blocks.cpp log/log1p_rare.cpp)
