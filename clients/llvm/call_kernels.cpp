#include <llvm/ADT/STLExtras.h>
#include <llvm/IR/IRBuilder.h>
#include <llvm/IR/InstIterator.h>
#include <llvm/IR/Module.h>
#include <llvm/IR/VFABIDemangler.h>

#include <numeric>

#include "clients/llvm/passes.h"

namespace zorp::passes {
namespace {

using llvm::Value;

unsigned lanes_of(const Value* value) {
  const auto* type = llvm::dyn_cast<llvm::FixedVectorType>(value->getType());
  return type ? type->getNumElements() : 1;
}

/// Writes the calls of kernels that compute vectors of any number of lanes.
class Emitter {
 public:
  Emitter(llvm::Instruction& before, const Kernel& kernel, int register_bytes)
      : builder_(&before), module_(*before.getModule()), kernel_(kernel),
        register_bytes_(register_bytes) {}

  /// The result, in as many lanes as the operands have.
  Value* compute(llvm::ArrayRef<Value*> operands) {
    const unsigned lanes = lanes_of(operands[0]);
    const Kernel& kernel = fitting(lanes);
    const unsigned width = unsigned(kernel.width);
    if (width >= lanes) return call(kernel, operands);
    llvm::SmallVector<Value*, 3> lower, upper;
    for (Value* operand : operands) {
      lower.push_back(part(operand, 0, width));
      upper.push_back(part(operand, width, lanes - width));
    }
    Value* first = compute(lower);
    return joined(first, compute(upper));
  }

 private:
  /// The least width that has all lanes; where none has, the greatest.
  const Kernel& fitting(unsigned lanes) const {
    const Kernel* best = nullptr;
    for (int width : kernel_.family->widths(kernel_.element)) {
      const Kernel* kernel = at_width(kernel_, width);
      if (!fits_registers(*kernel)) break;
      best = kernel;
      if (unsigned(width) >= lanes) break;
    }
    return *best;
  }

  bool fits_registers(const Kernel& kernel) const {
    if (kernel.operands_on_stack()) return false;
    std::vector<Lane> lanes = kernel.operands();
    for (Lane result : kernel.results()) lanes.push_back(result);
    return register_bytes_ == 64 || llvm::all_of(lanes, [&](Lane lane) {
             return grammar::lane_bytes(lane) * kernel.width <= register_bytes_;
           });
  }

  /// A call of one kernel, which is at least as wide as the operands.
  Value* call(const Kernel& kernel, llvm::ArrayRef<Value*> operands) {
    const std::vector<Lane> operand_lanes = kernel.operands();
    llvm::SmallVector<Value*, 6> arguments;
    for (size_t i = 0; i < operands.size(); ++i) {
      llvm::Type* type = register_type(operand_lanes[i], kernel);
      Value* padded = this->padded(operands[i], type, kernel);
      if (grammar::registers(operand_lanes[i], kernel.width) == 1) {
        arguments.push_back(padded);
      } else {
        arguments.push_back(part(padded, 0, lanes_in(type)));
        arguments.push_back(part(padded, lanes_in(type), lanes_in(type)));
      }
    }
    const Lane result_lane = kernel.results()[0];
    llvm::Type* part_type = register_type(result_lane, kernel);
    const bool pair = grammar::registers(result_lane, kernel.width) == 2;
    llvm::Type* result_type =
        pair ? llvm::StructType::get(part_type, part_type) : part_type;
    llvm::SmallVector<llvm::Type*, 6> types;
    for (const Value* argument : arguments) types.push_back(argument->getType());
    llvm::CallInst* result = builder_.CreateCall(
        module_.getOrInsertFunction(kernel.symbol(),
                                    llvm::FunctionType::get(result_type, types, false)),
        arguments);
    result->setAttributes(kernel_attributes(module_.getContext()));
    result->setTailCallKind(llvm::CallInst::TCK_Tail);
    Value* vector = pair ? joined(builder_.CreateExtractValue(result, 0),
                                  builder_.CreateExtractValue(result, 1))
                         : result;
    return like(vector, operands[0]);
  }

  static unsigned lanes_in(const llvm::Type* type) {
    const auto* vector = llvm::dyn_cast<llvm::FixedVectorType>(type);
    return vector ? vector->getNumElements() : 1;
  }

  /// What one register of a vector holds: all of it, or the half of a pair.
  llvm::Type* register_type(Lane lane, const Kernel& kernel) const {
    llvm::Type* element = lane_type(lane, module_.getContext());
    if (kernel.width == 1) return element;
    const int bytes = grammar::lane_bytes(lane) * grammar::lanes_in_memory(kernel.width);
    const int in_register = std::clamp(bytes, 16, 64);
    return llvm::FixedVectorType::get(element, unsigned(in_register / grammar::lane_bytes(lane)));
  }

  /// The operand in the registers of the kernel. Lanes of the kernel that the operand lacks repeat
  /// its first one, which costs no rare lane; lanes beyond the kernel may hold anything.
  Value* padded(Value* operand, llvm::Type* type, const Kernel& kernel) {
    if (kernel.width == 1)
      return operand->getType()->isVectorTy() ? builder_.CreateExtractElement(operand, uint64_t(0))
                                              : operand;
    const unsigned lanes = lanes_of(operand);
    const unsigned width = unsigned(kernel.width);
    llvm::SmallVector<int, 64> mask(std::max(width, lanes_in(type)), llvm::PoisonMaskElem);
    for (unsigned i = 0; i < width; ++i) mask[i] = i < lanes ? int(i) : 0;
    return shuffled(operand, mask);
  }

  /// The first lanes of a result, as many as the operand has.
  Value* like(Value* result, const Value* operand) {
    if (result->getType()->isVectorTy()) return part(result, 0, lanes_of(operand));
    if (!operand->getType()->isVectorTy()) return result;
    return builder_.CreateInsertElement(llvm::FixedVectorType::get(result->getType(), 1), result,
                                        uint64_t(0));
  }

  Value* part(Value* vector, unsigned begin, unsigned count) {
    llvm::SmallVector<int, 64> mask(count);
    std::iota(mask.begin(), mask.end(), int(begin));
    return shuffled(vector, mask);
  }

  /// Both one after the other.
  Value* joined(Value* first, Value* second) {
    const unsigned lanes = lanes_of(first), more = lanes_of(second), longer = std::max(lanes, more);
    llvm::SmallVector<int, 64> mask(lanes + more);
    std::iota(mask.begin(), mask.begin() + lanes, 0);
    std::iota(mask.begin() + lanes, mask.end(), int(longer));
    return builder_.CreateShuffleVector(extended(first, longer), extended(second, longer), mask);
  }

  Value* extended(Value* vector, unsigned lanes) {
    llvm::SmallVector<int, 64> mask(lanes, llvm::PoisonMaskElem);
    std::iota(mask.begin(), mask.begin() + lanes_of(vector), 0);
    return shuffled(vector, mask);
  }

  Value* shuffled(Value* vector, llvm::ArrayRef<int> mask) {
    const bool same = mask.size() == lanes_of(vector) &&
                      llvm::ShuffleVectorInst::isIdentityMask(mask, int(mask.size()));
    return same ? vector : builder_.CreateShuffleVector(vector, mask);
  }

  llvm::IRBuilder<> builder_;
  llvm::Module& module_;
  const Kernel& kernel_;
  int register_bytes_;
};

/// The kernel of a vector form that the instruction calls, or null.
const Kernel* kernel_of_form(const llvm::Instruction& instruction) {
  const auto* call = llvm::dyn_cast<llvm::CallInst>(&instruction);
  const llvm::Function* callee = call ? call->getCalledFunction() : nullptr;
  llvm::StringRef name = callee ? callee->getName() : "";
  if (!name.consume_front(kFormPrefix)) return nullptr;
  name.consume_back(kMaskedSuffix);
  return grammar::find(std::string_view(name));
}

/// The operands, all of them vectors if one is; a mask is left out, as kernels compute all lanes.
llvm::SmallVector<Value*, 3> operands_of(llvm::Instruction& instruction, const Kernel& kernel) {
  const unsigned lanes = lanes_of(&instruction);
  llvm::SmallVector<Value*, 3> operands;
  for (size_t i = 0; i < kernel.operands().size(); ++i) {
    Value* operand = instruction.getOperand(unsigned(i));
    if (instruction.getType()->isVectorTy() && !operand->getType()->isVectorTy())
      operand = llvm::IRBuilder<>(&instruction).CreateVectorSplat(lanes, operand);
    operands.push_back(operand);
  }
  return operands;
}

/// Forgets the forms that the call was offered.
void forget_forms(llvm::CallInst& call) {
  llvm::SmallVector<std::string, 8> variants;
  llvm::VFABI::getVectorVariantNames(call, variants);
  const size_t before = variants.size();
  llvm::erase_if(variants, [](const std::string& variant) {
    return llvm::StringRef(variant).contains(("(" + kFormPrefix).str());
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
    const int bytes =
        register_bytes(function, functions.getResult<llvm::TargetIRAnalysis>(function));
    for (llvm::Instruction& instruction :
         llvm::make_early_inc_range(llvm::instructions(function))) {
      if (auto* call = llvm::dyn_cast<llvm::CallInst>(&instruction)) forget_forms(*call);
      const Kernel* kernel = kernel_of_form(instruction);
      if (!kernel && instruction.getType()->isVectorTy()) kernel = kernel_for(instruction, tier);
      if (!kernel) continue;
      Value* result =
          Emitter(instruction, *kernel, bytes).compute(operands_of(instruction, *kernel));
      result->takeName(&instruction);
      instruction.replaceAllUsesWith(result);
      instruction.eraseFromParent();
    }
  }
  for (llvm::Function& function : llvm::make_early_inc_range(module))
    if (function.getName().starts_with(kFormPrefix) && function.use_empty())
      function.eraseFromParent();
  return llvm::PreservedAnalyses::none();
}

}  // namespace zorp::passes
