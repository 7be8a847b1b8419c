#include "clients/llvm/emitter.h"

#include <llvm/IR/Module.h>

#include <algorithm>
#include <numeric>

namespace zorp::passes {
namespace {

using llvm::Value;
using Mask = llvm::SmallVector<int, 64>;

unsigned lanes_in(const llvm::Type* type) {
  const auto* vector = llvm::dyn_cast<llvm::FixedVectorType>(type);
  return vector ? vector->getNumElements() : 1;
}

unsigned lanes_of(const Value* value) { return lanes_in(value->getType()); }

/// The vector that the kernel reads or writes: all lanes of its registers, or those in memory.
llvm::Type* vector_type(Lane lane, int lanes, llvm::LLVMContext& context) {
  return llvm::FixedVectorType::get(lane_type(lane, context), unsigned(lanes));
}

/// What one register of an operand or result holds: all of it, or the half of a pair.
llvm::Type* register_type(Lane lane, const Kernel& kernel, llvm::LLVMContext& context) {
  if (kernel.width == 1) return lane_type(lane, context);
  const int bytes = grammar::lane_bytes(lane) * grammar::lanes_in_memory(kernel.width);
  return vector_type(lane, std::clamp(bytes, 16, 64) / grammar::lane_bytes(lane), context);
}

}  // namespace

Emitter::Values Emitter::compute(llvm::ArrayRef<Value*> operands) {
  const unsigned lanes = lanes_of(operands[0]);
  const Kernel& kernel = fitting(lanes);
  const unsigned width = unsigned(kernel.width);
  if (width >= lanes) return call(kernel, operands);
  Values lower, upper;
  for (Value* operand : operands) {
    lower.push_back(part(operand, 0, width));
    upper.push_back(part(operand, width, lanes - width));
  }
  Values results = call(kernel, lower);
  for (auto [result, rest] : llvm::zip(results, compute(upper))) result = joined(result, rest);
  return results;
}

/// The least width that has all lanes; where none has, the greatest.
const Kernel& Emitter::fitting(unsigned lanes) const {
  const Kernel* best = nullptr;
  for (int width : kernel_.family->widths(kernel_.element)) {
    const Kernel* kernel = at_width(kernel_, width);
    const bool pairs = register_bytes_ == 64 && !kernel->operands_on_stack();
    if (width * widest_lane(*kernel) > (pairs ? 2 : 1) * register_bytes_) break;
    best = kernel;
    if (unsigned(width) >= lanes) break;
  }
  return *best;
}

/// A call of one kernel, which is at least as wide as the operands.
Emitter::Values Emitter::call(const Kernel& kernel, llvm::ArrayRef<Value*> operands) {
  llvm::LLVMContext& context = builder_.getContext();
  llvm::SmallVector<Value*, 6> arguments;
  for (auto [lane, operand] : llvm::zip(kernel.operands(), operands)) {
    llvm::Type* type = register_type(lane, kernel, context);
    Value* value = padded(operand, type, kernel);
    for (int i = 0; i < grammar::registers(lane, kernel.width); ++i)
      arguments.push_back(part(value, unsigned(i) * lanes_in(type), lanes_in(type)));
  }
  llvm::AllocaInst* second = nullptr;
  if (const auto lane = kernel.pointer()) {
    llvm::BasicBlock& entry = builder_.GetInsertBlock()->getParent()->getEntryBlock();
    second = llvm::IRBuilder<>(&entry, entry.begin())
                 .CreateAlloca(vector_type(*lane, grammar::lanes_in_memory(kernel.width), context));
    arguments.push_back(second);
  }

  llvm::Type* type = register_type(kernel.results()[0], kernel, context);
  const bool is_pair = grammar::registers(kernel.results()[0], kernel.width) == 2;
  llvm::SmallVector<llvm::Type*, 6> types;
  for (const Value* argument : arguments) types.push_back(argument->getType());
  llvm::CallInst* result = builder_.CreateCall(
      builder_.GetInsertBlock()->getModule()->getOrInsertFunction(
          kernel.symbol(), llvm::FunctionType::get(
                               is_pair ? llvm::StructType::get(type, type) : type, types, false)),
      arguments);
  result->setAttributes(
      kernel_attributes(context, second ? llvm::MemoryEffects::argMemOnly(llvm::ModRefInfo::Mod)
                                        : llvm::MemoryEffects::none()));
  if (!second) result->setTailCallKind(llvm::CallInst::TCK_Tail);

  Values results = {result};
  if (is_pair)
    results[0] =
        joined(builder_.CreateExtractValue(result, 0), builder_.CreateExtractValue(result, 1));
  if (second) {
    llvm::Type* lane = second->getAllocatedType();
    results.push_back(
        builder_.CreateLoad(kernel.width == 1 ? lane->getScalarType() : lane, second));
  }
  for (Value*& value : results) value = unpadded(value, operands[0]);
  return results;
}

/// The operand in the registers of the kernel. Lanes of the kernel that the operand lacks repeat
/// its first one, which costs no rare lane; lanes beyond the kernel may hold anything.
Value* Emitter::padded(Value* operand, llvm::Type* type, const Kernel& kernel) {
  const bool is_vector = operand->getType()->isVectorTy();
  if (kernel.width == 1)
    return is_vector ? builder_.CreateExtractElement(operand, uint64_t(0)) : operand;
  const unsigned lanes = lanes_of(operand), width = unsigned(kernel.width);
  Mask mask(std::max(width, lanes_in(type)), llvm::PoisonMaskElem);
  for (unsigned i = 0; i < width; ++i) mask[i] = i < lanes ? int(i) : 0;
  return shuffled(operand, mask);
}

/// The first lanes of a result, as many as the operand has.
Value* Emitter::unpadded(Value* result, const Value* operand) {
  if (result->getType()->isVectorTy()) return part(result, 0, lanes_of(operand));
  if (!operand->getType()->isVectorTy()) return result;
  auto* vector = llvm::FixedVectorType::get(result->getType(), 1);
  return builder_.CreateInsertElement(vector, result, uint64_t(0));
}

Value* Emitter::part(Value* vector, unsigned begin, unsigned count) {
  Mask mask(count);
  std::iota(mask.begin(), mask.end(), int(begin));
  return shuffled(vector, mask);
}

/// Both one after the other.
Value* Emitter::joined(Value* first, Value* second) {
  const unsigned lanes = lanes_of(first), more = lanes_of(second), longer = std::max(lanes, more);
  Mask mask(lanes + more);
  std::iota(mask.begin(), mask.begin() + lanes, 0);
  std::iota(mask.begin() + lanes, mask.end(), int(longer));
  return builder_.CreateShuffleVector(extended(first, longer), extended(second, longer), mask);
}

Value* Emitter::extended(Value* vector, unsigned lanes) {
  Mask mask(lanes, llvm::PoisonMaskElem);
  std::iota(mask.begin(), mask.begin() + lanes_of(vector), 0);
  return shuffled(vector, mask);
}

Value* Emitter::shuffled(Value* vector, llvm::ArrayRef<int> mask) {
  const bool same = mask.size() == lanes_of(vector) &&
                    llvm::ShuffleVectorInst::isIdentityMask(mask, int(mask.size()));
  return same ? vector : builder_.CreateShuffleVector(vector, mask);
}

}  // namespace zorp::passes
