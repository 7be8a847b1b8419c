// Vector forms: functions of plain vectors that stand for kernels, between the two passes. Nobody
// there needs to know how vectors travel in registers.
#pragma once

#include <llvm/IR/DerivedTypes.h>

#include <optional>
#include <string>

#include "clients/llvm/kernels.h"

namespace zorp::passes {

/// A form is named "zorp_z1." and the kernel; one of the two forms of a kernel with two results has
/// ".first" or ".second" after that. A form for calls under a condition ends in ".masked" and has
/// the mask as its last operand.
struct Form {
  const Kernel* kernel;
  size_t result = 0;
  bool masked = false;

  std::string name() const;
  llvm::FunctionCallee declare(llvm::Module& module) const;

  /// The form that the instruction calls, if it does.
  static std::optional<Form> called_by(const llvm::Instruction& instruction);
  static bool is_name(llvm::StringRef name);
};

}  // namespace zorp::passes
