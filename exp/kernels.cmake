zorp_kernels(HEADER exp/exp.h GROUPS exp exp2 exp10)
zorp_kernels(HEADER exp/hyperbolic.h GROUPS sinh cosh)
zorp_sources(exp/exp_blocks.cpp exp/hyperbolic_blocks.cpp exp/hyperbolic_rare.cpp)
