// The two passes. Before the vectorisers, each scalar call that a kernel can serve is given vector
// forms. After them, the forms that they took are replaced by calls of kernels, and so are vector
// intrinsics.
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

}  // namespace zorp::passes
