// The two passes. Before the vectorisers, each scalar call that a kernel can serve is given vector
// forms: functions of any vectors, named "zorp_z1." and the kernel. After them, what they took is
// replaced by calls of kernels, and so are vector intrinsics. In between, nobody needs to know how
// vectors travel in registers.
#pragma once

#include <llvm/IR/PassManager.h>

#include "clients/llvm/kernels.h"

namespace zorp::passes {

struct OfferVectorForms : llvm::PassInfoMixin<OfferVectorForms> {
  Tier tier;
  explicit OfferVectorForms(Tier wanted) : tier(wanted) {}
  llvm::PreservedAnalyses run(llvm::Function& function, llvm::FunctionAnalysisManager& analyses);
};

struct CallKernels : llvm::PassInfoMixin<CallKernels> {
  Tier tier;
  explicit CallKernels(Tier wanted) : tier(wanted) {}
  llvm::PreservedAnalyses run(llvm::Module& module, llvm::ModuleAnalysisManager& analyses);
  /// Also without optimisation: vector forms must not stay.
  static bool isRequired() { return true; }
};

inline constexpr llvm::StringLiteral kFormPrefix = "zorp_z1.";
inline constexpr llvm::StringLiteral kMaskedSuffix = ".masked";

}  // namespace zorp::passes
