// Calls of kernels as the register contract wants them.
#pragma once

#include <llvm/IR/IRBuilder.h>

#include "clients/llvm/kernels.h"

namespace zorp::passes {

/// Writes the calls of a kernel, in whatever widths fit, that compute vectors of any number of
/// lanes (or a scalar).
class Emitter {
 public:
  using Values = llvm::SmallVector<llvm::Value*, 3>;

  Emitter(llvm::Instruction& before, const Kernel& kernel, int register_bytes)
      : builder_(&before), kernel_(kernel), register_bytes_(register_bytes) {}

  /// The results, in as many lanes as the operands have.
  Values compute(llvm::ArrayRef<llvm::Value*> operands);

 private:
  const Kernel& fitting(unsigned lanes) const;
  Values call(const Kernel& kernel, llvm::ArrayRef<llvm::Value*> operands);
  llvm::Value* padded(llvm::Value* operand, llvm::Type* type, const Kernel& kernel);
  llvm::Value* unpadded(llvm::Value* result, const llvm::Value* operand);
  llvm::Value* part(llvm::Value* vector, unsigned begin, unsigned count);
  llvm::Value* joined(llvm::Value* first, llvm::Value* second);
  llvm::Value* extended(llvm::Value* vector, unsigned lanes);
  llvm::Value* shuffled(llvm::Value* vector, llvm::ArrayRef<int> mask);

  llvm::IRBuilder<> builder_;
  const Kernel& kernel_;
  int register_bytes_;
};

}  // namespace zorp::passes
