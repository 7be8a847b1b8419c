#include <llvm/ADT/STLExtras.h>
#include <llvm/ADT/SmallPtrSet.h>
#include <llvm/IR/IRBuilder.h>
#include <llvm/IR/InstIterator.h>
#include <llvm/IR/Module.h>
#include <llvm/IR/VFABIDemangler.h>

#include "clients/llvm/emitter.h"
#include "clients/llvm/forms.h"
#include "clients/llvm/passes.h"

namespace zorp::passes {
namespace {

using llvm::Instruction;
using llvm::Value;

/// An instruction that kernels replace: the call of a form, or one on vectors.
struct Work {
  Instruction* instruction;
  Form form;
};

/// The operands, all of them vectors if the result is one; a mask is left out, as kernels compute
/// all lanes.
Emitter::Values operands_of(Instruction& instruction, const Kernel& kernel) {
  Emitter::Values operands;
  for (size_t i = 0; i < kernel.operands().size(); ++i) {
    Value* operand = instruction.getOperand(unsigned(i));
    const auto* result = llvm::dyn_cast<llvm::FixedVectorType>(instruction.getType());
    if (result && !operand->getType()->isVectorTy())
      operand =
          llvm::IRBuilder<>(&instruction).CreateVectorSplat(result->getNumElements(), operand);
    operands.push_back(operand);
  }
  return operands;
}

/// Whether both are results of one call of a kernel.
bool belong_together(const Work& one, const Work& other) {
  const size_t operands = one.form.kernel->operands().size();
  return one.form.kernel == other.form.kernel && one.form.result != other.form.result &&
         one.instruction->getParent() == other.instruction->getParent() &&
         std::equal(one.instruction->op_begin(), one.instruction->op_begin() + operands,
                    other.instruction->op_begin());
}

void replace(Instruction& instruction, Value* value) {
  value->takeName(&instruction);
  instruction.replaceAllUsesWith(value);
  instruction.eraseFromParent();
}

/// Replaces each instruction, in order; the two results of a kernel come from one call.
void replace_all(llvm::ArrayRef<Work> work, int register_bytes) {
  llvm::SmallPtrSet<Instruction*, 8> done;
  for (size_t i = 0; i < work.size(); ++i) {
    const Work& one = work[i];
    if (done.contains(one.instruction)) continue;
    const Work* other = nullptr;
    if (one.form.kernel->pointer()) {
      other = llvm::find_if(work.drop_front(i + 1), [&](const Work& candidate) {
        return !done.contains(candidate.instruction) && belong_together(one, candidate);
      });
      if (other == work.end()) other = nullptr;
    }
    const Emitter::Values results = Emitter(*one.instruction, *one.form.kernel, register_bytes)
                                        .compute(operands_of(*one.instruction, *one.form.kernel));
    if (other) {
      done.insert(other->instruction);
      replace(*other->instruction, results[other->form.result]);
    }
    replace(*one.instruction, results[one.form.result]);
  }
}

/// Forgets the forms that the call was offered.
void forget_forms(llvm::CallInst& call) {
  llvm::SmallVector<std::string, 8> variants;
  llvm::VFABI::getVectorVariantNames(call, variants);
  const size_t before = variants.size();
  llvm::erase_if(variants, [](llvm::StringRef variant) {
    return Form::is_name(variant.substr(variant.find('(') + 1));
  });
  if (variants.size() == before) return;
  call.removeFnAttr(llvm::VFABI::MappingsAttrName);
  llvm::VFABI::setVectorVariantNames(&call, variants);
}

}  // namespace

llvm::PreservedAnalyses CallKernels::run(llvm::Module& module,
                                         llvm::ModuleAnalysisManager& analyses) {
  auto& functions =
      analyses.getResult<llvm::FunctionAnalysisManagerModuleProxy>(module).getManager();
  for (llvm::Function& function : module) {
    if (function.isDeclaration() || !may_call_kernels(function)) continue;
    llvm::SmallVector<Work, 0> work;
    for (Instruction& instruction : llvm::instructions(function)) {
      if (auto* call = llvm::dyn_cast<llvm::CallInst>(&instruction)) forget_forms(*call);
      if (const auto form = Form::called_by(instruction))
        work.push_back({&instruction, *form});
      else if (!instruction.getType()->isVectorTy())
        continue;
      else if (const Kernel* kernel = kernel_for(instruction, tier))
        work.push_back({&instruction, {kernel}});
    }
    replace_all(work,
                register_bytes(function, functions.getResult<llvm::TargetIRAnalysis>(function)));
  }
  for (llvm::Function& function : llvm::make_early_inc_range(module))
    if (Form::is_name(function.getName()) && function.use_empty()) function.eraseFromParent();
  return llvm::PreservedAnalyses::none();
}

}  // namespace zorp::passes
