zorp_kernels(HEADER arith/fma.h GROUPS fma)
