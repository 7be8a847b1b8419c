zorp_kernels(HEADER exp/exp.h GROUPS exp exp2 exp10)
zorp_kernels(HEADER exp/expm1.h GROUPS expm1)
zorp_kernels(HEADER exp/hyperbolic.h GROUPS sinh cosh)
zorp_kernels(HEADER exp/tanh.h GROUPS tanh)
zorp_sources(exp/exp_blocks.cpp exp/expm1_blocks.cpp exp/expm1_rare.cpp exp/hyperbolic_blocks.cpp
             exp/hyperbolic_rare.cpp exp/tanh_blocks.cpp exp/tanh_rare.cpp)
