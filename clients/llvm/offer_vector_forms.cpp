#include <llvm/Analysis/LoopInfo.h>
#include <llvm/IR/IRBuilder.h>
#include <llvm/IR/InstIterator.h>
#include <llvm/IR/Module.h>
#include <llvm/IR/VFABIDemangler.h>
#include <llvm/Transforms/Utils/LoopUtils.h>

#include "clients/llvm/passes.h"

namespace zorp::passes {
namespace {

/// A remainder as a call of what computes it, as only calls can have vector forms; null if the
/// program gives that name to something else.
llvm::CallInst* as_call(llvm::Instruction& frem) {
  llvm::Type* type = frem.getType();
  if (type->isHalfTy()) return nullptr;
  llvm::Module& module = *frem.getModule();
  llvm::FunctionType* function_type = llvm::FunctionType::get(type, {type, type}, false);
  llvm::FunctionCallee fmod =
      module.getOrInsertFunction(type->isDoubleTy() ? "fmod" : "fmodf", function_type);
  const auto* callee = llvm::dyn_cast<llvm::Function>(fmod.getCallee());
  if (!callee || !callee->isDeclaration() || callee->getFunctionType() != function_type)
    return nullptr;
  llvm::CallInst* call =
      llvm::IRBuilder<>(&frem).CreateCall(fmod, {frem.getOperand(0), frem.getOperand(1)});
  call->takeName(&frem);
  frem.replaceAllUsesWith(call);
  frem.eraseFromParent();
  return call;
}

/// The vector function ABI's name of a variant, in the compiler's own dialect.
std::string variant(const llvm::CallInst& call, const Kernel& kernel, bool masked,
                    const std::string& form) {
  return std::string("_ZGV_LLVM_") + (masked ? "M" : "N") + std::to_string(kernel.width) +
         std::string(call.arg_size(), 'v') + "_" + call.getCalledFunction()->getName().str() + "(" +
         form + ")";
}

/// Declares the form that computes that many lanes, and returns its name.
std::string declare_form(llvm::CallInst& call, const Kernel& kernel, bool masked) {
  llvm::LLVMContext& context = call.getContext();
  const auto vector = [&](llvm::Type* element) {
    return llvm::FixedVectorType::get(element, unsigned(kernel.width));
  };
  llvm::SmallVector<llvm::Type*, 4> operands;
  for (const llvm::Value* operand : call.args()) operands.push_back(vector(operand->getType()));
  if (masked) operands.push_back(vector(llvm::Type::getInt1Ty(context)));
  std::string name = kFormPrefix.str() + kernel.name() + (masked ? kMaskedSuffix.str() : "");
  call.getModule()->getOrInsertFunction(
      name, llvm::FunctionType::get(vector(call.getType()), operands, false),
      kernel_attributes(context));
  return name;
}

/// Whether one call or two neighbouring registers serve all operands and results.
bool in_reach(const Kernel& kernel, int register_bytes) {
  std::vector<Lane> lanes = kernel.operands();
  for (Lane result : kernel.results()) lanes.push_back(result);
  for (Lane lane : lanes)
    if (grammar::lane_bytes(lane) * kernel.width > 2 * register_bytes) return false;
  return true;
}

void offer(llvm::CallInst& call, const Kernel& scalar, int register_bytes) {
  llvm::SmallVector<std::string, 8> variants;
  llvm::VFABI::getVectorVariantNames(call, variants);
  for (int width : scalar.family->widths(scalar.element)) {
    const Kernel& kernel = *at_width(scalar, width);
    if (width == 1 || width == 3 || !in_reach(kernel, register_bytes)) continue;
    for (bool masked : {false, true})
      variants.push_back(variant(call, kernel, masked, declare_form(call, kernel, masked)));
  }
  llvm::VFABI::setVectorVariantNames(&call, variants);
  // A call of a kernel may have been declared without saying so.
  call.setAttributes(call.getAttributes().addFnAttributes(
      call.getContext(),
      llvm::AttrBuilder(call.getContext(), kernel_attributes(call.getContext()).getFnAttrs())));
}

/// Keeps the vectoriser from doing several steps of the loop at once, unless the program asks for it:
/// what one call computes would be saved on the stack during the next.
void do_single_steps(llvm::Loop* loop) {
  constexpr const char* count = "llvm.loop.interleave.count";
  if (loop && !llvm::findStringMetadataForLoop(loop, count))
    llvm::addStringMetadataToLoop(loop, count, 1);
}

}  // namespace

llvm::PreservedAnalyses OfferVectorForms::run(llvm::Function& function,
                                              llvm::FunctionAnalysisManager& analyses) {
  if (!may_call_kernels(function)) return llvm::PreservedAnalyses::all();
  const int bytes = register_bytes(function, analyses.getResult<llvm::TargetIRAnalysis>(function));
  const auto& loops = analyses.getResult<llvm::LoopAnalysis>(function);
  bool changed = false;
  for (llvm::Instruction& instruction : llvm::make_early_inc_range(llvm::instructions(function))) {
    const Kernel* kernel = kernel_for(instruction, tier);
    if (!kernel || instruction.getType()->isVectorTy()) continue;
    llvm::CallInst* call = llvm::dyn_cast<llvm::CallInst>(&instruction);
    if (!call) call = as_call(instruction);
    if (!call) continue;
    offer(*call, *kernel, bytes);
    do_single_steps(loops.getLoopFor(call->getParent()));
    changed = true;
  }
  if (!changed) return llvm::PreservedAnalyses::all();
  llvm::PreservedAnalyses preserved;
  preserved.preserveSet<llvm::CFGAnalyses>();
  return preserved;
}

}  // namespace zorp::passes
