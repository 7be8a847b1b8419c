zorp_kernels(HEADER convert/float_to_integer.h GROUPS cvtfptoi32 cvtfptou32 cvtfptoi64 cvtfptou64
             ELEMENTS double float)
zorp_kernels(HEADER convert/integer_to_float.h GROUPS cvti32tofp cvtu32tofp cvti64tofp cvtu64tofp
             ELEMENTS double float)
zorp_kernels(HEADER convert/double_to_float.h GROUPS cvtfp64tofp32 ELEMENTS double)
zorp_sources(convert/float_to_integer_blocks.cpp convert/integer_to_float_blocks.cpp
             convert/double_to_float_blocks.cpp)
