#include <llvm/Analysis/LoopInfo.h>
#include <llvm/IR/Dominators.h>
#include <llvm/IR/IRBuilder.h>
#include <llvm/IR/InstIterator.h>
#include <llvm/IR/Module.h>
#include <llvm/IR/VFABIDemangler.h>
#include <llvm/Transforms/Utils/LoopUtils.h>
#include <llvm/Transforms/Utils/PromoteMemToReg.h>

#include <array>

#include "clients/llvm/forms.h"
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

/// Says of a call that it has no side effects. A kernel may have been declared without that, and in
/// OpenCL C a function is convergent until somebody knows better.
void describe(llvm::CallInst& call) {
  llvm::LLVMContext& context = call.getContext();
  const llvm::AttrBuilder attributes(context, kernel_attributes(context).getFnAttrs());
  call.setAttributes(call.getAttributes().addFnAttributes(context, attributes));
  call.setNotConvergent();
  call.getCalledFunction()->setNotConvergent();
}

/// Offers the vectorisers all widths that a register, or two neighbours, can hold.
void offer(llvm::CallInst& call, const Kernel& kernel, size_t result, int register_bytes) {
  llvm::SmallVector<std::string, 8> variants;
  llvm::VFABI::getVectorVariantNames(call, variants);
  for (int width : kernel.family->widths(kernel.element)) {
    if (width == 1 || width == 3 || width * widest_lane(kernel) > 2 * register_bytes) continue;
    for (bool masked : {false, true}) {
      const Form form{at_width(kernel, width), result, masked};
      form.declare(*call.getModule());
      // The vector function ABI's name of a variant, in the compiler's own dialect.
      variants.push_back(std::string("_ZGV_LLVM_") + (masked ? "M" : "N") + std::to_string(width) +
                         std::string(call.arg_size(), 'v') + "_" +
                         call.getCalledFunction()->getName().str() + "(" + form.name() + ")");
    }
  }
  llvm::VFABI::setVectorVariantNames(&call, variants);
}

/// A call of a kernel that stores its second result, as two calls that return one each, and a
/// store: what stores has no vector forms.
std::array<llvm::CallInst*, 2> split(llvm::CallInst& call, const Kernel& kernel) {
  llvm::IRBuilder<> builder(&call);
  const llvm::SmallVector<llvm::Value*, 3> operands(llvm::drop_end(call.args()));
  std::array<llvm::CallInst*, 2> calls;
  for (size_t result : {0, 1})
    calls[result] = builder.CreateCall(Form{&kernel, result}.declare(*call.getModule()), operands);
  builder.CreateAlignedStore(calls[1], call.getArgOperand(call.arg_size() - 1),
                             llvm::Align(uint64_t(grammar::lane_bytes(*kernel.pointer()))));
  call.replaceAllUsesWith(calls[0]);
  call.eraseFromParent();
  return calls;
}

/// Keeps the vectoriser from doing several steps of the loop at once, unless the program asks for
/// it: what one call computes would be saved on the stack during the next.
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
  llvm::SmallSetVector<llvm::AllocaInst*, 4> stored;
  for (llvm::Instruction& instruction : llvm::make_early_inc_range(llvm::instructions(function))) {
    const Kernel* kernel = kernel_for(instruction, tier);
    if (!kernel || instruction.getType()->isVectorTy()) continue;
    llvm::Loop* loop = loops.getLoopFor(instruction.getParent());
    auto* call = llvm::dyn_cast<llvm::CallInst>(&instruction);
    if (kernel->pointer()) {
      if (!loop) continue;
      llvm::Value* pointer = call->getArgOperand(call->arg_size() - 1);
      if (auto* variable = llvm::dyn_cast<llvm::AllocaInst>(pointer)) stored.insert(variable);
      for (auto [result, part] : llvm::enumerate(split(*call, *kernel)))
        offer(*part, *kernel, result, bytes);
    } else {
      if (!call) call = as_call(instruction);
      if (!call) continue;
      describe(*call);
      offer(*call, *kernel, 0, bytes);
    }
    do_single_steps(loop);
    changed = true;
  }
  if (!changed) return llvm::PreservedAnalyses::all();
  // Variables that no call takes the address of any more need no memory.
  stored.remove_if([](llvm::AllocaInst* variable) { return !llvm::isAllocaPromotable(variable); });
  if (!stored.empty())
    llvm::PromoteMemToReg(stored.getArrayRef(),
                          analyses.getResult<llvm::DominatorTreeAnalysis>(function));
  llvm::PreservedAnalyses preserved;
  preserved.preserveSet<llvm::CFGAnalyses>();
  return preserved;
}

}  // namespace zorp::passes
