// What the passes know of kernels: which instruction a kernel can serve, and in which functions.
#pragma once

#include <llvm/Analysis/TargetTransformInfo.h>
#include <llvm/IR/Function.h>
#include <llvm/IR/Instruction.h>
#include <llvm/Support/ModRef.h>

#include "export/grammar.h"

namespace zorp::passes {

using grammar::Kernel;
using grammar::Lane;
using grammar::Tier;

/// The kernel of width 1 that computes a lane of the instruction: of a call of the C library that
/// can't set errno, an intrinsic, a remainder (frem), or a call of such a kernel itself. Scalars
/// and vectors; null where there is none. Only calls of kernels bring a tier of their own, or have
/// a pointer to a second result.
const Kernel* kernel_for(const llvm::Instruction& instruction, Tier tier);

/// The same function and tier in another width, or null.
const Kernel* at_width(const Kernel& kernel, int width);

/// Whether the function may call kernels: it is compiled for a processor that has all features that
/// they need, and for the default floating-point environment.
bool may_call_kernels(const llvm::Function& function);

/// The widest register that the target lets the function pass a vector in.
int register_bytes(const llvm::Function& function, const llvm::TargetTransformInfo& target);

llvm::Type* lane_type(Lane lane, llvm::LLVMContext& context);

/// The lanes of all results, in registers or behind the pointer.
std::vector<Lane> lanes_of_results(const Kernel& kernel);

/// The bytes of the widest lane among operands and results.
int widest_lane(const Kernel& kernel);

/// Kernels have no side effects beyond the given one.
llvm::AttributeList kernel_attributes(llvm::LLVMContext& context,
                                      llvm::MemoryEffects memory = llvm::MemoryEffects::none());

}  // namespace zorp::passes
