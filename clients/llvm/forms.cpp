#include "clients/llvm/forms.h"

#include <llvm/IR/Instructions.h>
#include <llvm/IR/Module.h>

namespace zorp::passes {
namespace {

constexpr llvm::StringRef kPrefix = "zorp_z1.";
constexpr llvm::StringRef kResults[] = {".first", ".second"};
constexpr llvm::StringRef kMasked = ".masked";

}  // namespace

std::string Form::name() const {
  return (kPrefix + kernel->name() + (kernel->pointer() ? kResults[result] : "") +
          (masked ? kMasked : ""))
      .str();
}

llvm::FunctionCallee Form::declare(llvm::Module& module) const {
  llvm::LLVMContext& context = module.getContext();
  const auto widened = [&](llvm::Type* lane) -> llvm::Type* {
    return kernel->width == 1 ? lane : llvm::FixedVectorType::get(lane, unsigned(kernel->width));
  };
  llvm::SmallVector<llvm::Type*, 4> operands;
  for (Lane lane : kernel->operands()) operands.push_back(widened(lane_type(lane, context)));
  if (masked) operands.push_back(widened(llvm::Type::getInt1Ty(context)));
  llvm::Type* type = widened(lane_type(lanes_of_results(*kernel)[result], context));
  return module.getOrInsertFunction(name(), llvm::FunctionType::get(type, operands, false),
                                    kernel_attributes(context));
}

std::optional<Form> Form::called_by(const llvm::Instruction& instruction) {
  const auto* call = llvm::dyn_cast<llvm::CallInst>(&instruction);
  const llvm::Function* callee = call ? call->getCalledFunction() : nullptr;
  llvm::StringRef name = callee ? callee->getName() : "";
  if (!name.consume_front(kPrefix)) return std::nullopt;
  Form form{};
  form.masked = name.consume_back(kMasked);
  for (size_t result = 0; result < std::size(kResults); ++result)
    if (name.consume_back(kResults[result])) form.result = result;
  form.kernel = grammar::find(std::string_view(name));
  return form;
}

bool Form::is_name(llvm::StringRef name) { return name.starts_with(kPrefix); }

}  // namespace zorp::passes
