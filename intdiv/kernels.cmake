zorp_kernels(HEADER intdiv/intdiv.h GROUPS idiv udiv irem urem idivrem udivrem ELEMENTS double)
zorp_sources(intdiv/intdiv_blocks.cpp)
