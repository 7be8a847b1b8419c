#include "clients/llvm/kernels.h"

#include <llvm/IR/InstrTypes.h>
#include <llvm/IR/IntrinsicInst.h>
#include <llvm/IR/Intrinsics.h>
#include <llvm/IR/Module.h>
#include <llvm/MC/MCSubtargetInfo.h>
#include <llvm/MC/TargetRegistry.h>
#include <llvm/TargetParser/Triple.h>

#include <map>
#include <memory>
#include <set>
#include <string>

namespace zorp::passes {
namespace {

// What the kernels are compiled with.
constexpr const char* kFeatures = "+avx512f,+avx512dq,+avx512bw,+avx512vl,+avx512vbmi2,+fma,+f16c";

// Functions of the C library, and intrinsics of the same name, that are worth a call and have the
// kernels' results for special operands, too. (ilogb of a NaN differs.) Those that the processor
// has an instruction for (sqrt, floor, fma, ...) are left to the compiler.
const std::set<llvm::StringRef> kFunctions = {
    "acos",      "acosh", "asin", "asinh", "atan",  "atan2", "atanh", "cbrt",      "cos",
    "cosh",      "erf",   "erfc", "exp",   "exp10", "exp2",  "expm1", "fdim",      "fmod",
    "hypot",     "ldexp", "log",  "log10", "log1p", "log2",  "logb",  "nextafter", "pow",
    "remainder", "sin",   "sinh", "tan",   "tanh",  "tgamma"};

/// The letter that tells the type, in names of kernels; null for types without kernels.
const char* letter_of(const llvm::Type* type) {
  return type->isDoubleTy() ? "" : type->isFloatTy() ? "f" : type->isHalfTy() ? "s" : nullptr;
}

const Kernel* find(llvm::StringRef family, const char* letter, Tier tier) {
  const std::string name = (family + letter + "1").str();
  const Kernel* of_tier = grammar::find(name + std::string(grammar::suffix(tier)));
  return of_tier ? of_tier : grammar::find(name);
}

/// The kernel for a function of the C library. Compilers mark calls that can't set errno.
const Kernel* c_library_kernel(const llvm::CallInst& call, const char* letter, Tier tier) {
  const llvm::Function& callee = *call.getCalledFunction();
  const llvm::Function& caller = *call.getFunction();
  llvm::StringRef name = callee.getName();
  if (!callee.isDeclaration() || callee.hasLocalLinkage() || !call.doesNotAccessMemory() ||
      call.isNoBuiltin() || caller.hasFnAttribute("no-builtins") ||
      caller.hasFnAttribute(("no-builtin-" + name).str()) || call.getType()->isHalfTy() ||
      !name.consume_back(letter))
    return nullptr;
  if (name == "scalbn") name = "ldexp";
  return kFunctions.contains(name) ? find(name, letter, tier) : nullptr;
}

const Kernel* intrinsic_kernel(llvm::Intrinsic::ID id, const char* letter, Tier tier) {
  llvm::StringRef name = llvm::Intrinsic::getBaseName(id);
  name.consume_front("llvm.");
  if (name == "powi") return find("pown", letter, tier);
  return kFunctions.contains(name) ? find(name, letter, tier) : nullptr;
}

const Kernel* own_kernel(llvm::StringRef name) {
  const Kernel* kernel = grammar::find(std::string_view(name));
  return kernel && kernel->width == 1 && kernel->results().size() == 1 ? kernel : nullptr;
}

const Kernel* called_kernel(const llvm::CallInst& call, Tier tier) {
  const llvm::Function* callee = call.getCalledFunction();
  if (!callee || call.arg_empty() || call.isStrictFP() || call.isMustTailCall() ||
      call.hasOperandBundles())
    return nullptr;
  if (!callee->isIntrinsic() && call.getType()->isVectorTy()) return nullptr;
  if (callee->getName().starts_with("__zorp_z1_")) return own_kernel(callee->getName());
  const char* letter = letter_of(call.getArgOperand(0)->getType()->getScalarType());
  if (!letter) return nullptr;
  return callee->isIntrinsic() ? intrinsic_kernel(callee->getIntrinsicID(), letter, tier)
                               : c_library_kernel(call, letter, tier);
}

/// Whether the call has the operands and the result of the kernel, in any number of lanes.
bool fits(const llvm::CallInst& call, const Kernel& kernel) {
  llvm::LLVMContext& context = call.getContext();
  const std::vector<Lane> operands = kernel.operands();
  if (call.arg_size() != operands.size() + (kernel.pointer() ? 1 : 0) ||
      call.getType()->getScalarType() != lane_type(kernel.results()[0], context))
    return false;
  for (size_t i = 0; i < operands.size(); ++i)
    if (call.getArgOperand(i)->getType()->getScalarType() != lane_type(operands[i], context))
      return false;
  return !kernel.pointer() || call.getArgOperand(unsigned(operands.size()))->getType() ==
                                  llvm::PointerType::getUnqual(context);
}

bool has_features(const llvm::Function& function) {
  const llvm::Triple triple(function.getParent()->getTargetTriple());
  if (triple.getArch() != llvm::Triple::x86_64 || !triple.isOSBinFormatELF()) return false;
  const std::string cpu = function.getFnAttribute("target-cpu").getValueAsString().str();
  const std::string features = function.getFnAttribute("target-features").getValueAsString().str();
  thread_local std::map<std::pair<std::string, std::string>, bool> known;
  const auto [entry, is_new] = known.try_emplace({cpu, features}, false);
  if (is_new) {
    std::string error;
    const llvm::Target* target = llvm::TargetRegistry::lookupTarget(triple.str(), error);
    const std::unique_ptr<llvm::MCSubtargetInfo> subtarget(
        target ? target->createMCSubtargetInfo(triple.str(), cpu, features) : nullptr);
    entry->second = subtarget && subtarget->checkFeatures(kFeatures);
  }
  return entry->second;
}

}  // namespace

const Kernel* kernel_for(const llvm::Instruction& instruction, Tier tier) {
  if (instruction.getType()->isVectorTy() &&
      !llvm::isa<llvm::FixedVectorType>(instruction.getType()))
    return nullptr;
  if (instruction.getOpcode() == llvm::Instruction::FRem) {
    const char* letter = letter_of(instruction.getType()->getScalarType());
    return letter ? find("fmod", letter, tier) : nullptr;
  }
  const auto* call = llvm::dyn_cast<llvm::CallInst>(&instruction);
  const Kernel* kernel = call ? called_kernel(*call, tier) : nullptr;
  return kernel && fits(*call, *kernel) ? kernel : nullptr;
}

std::vector<Lane> lanes_of_results(const Kernel& kernel) {
  std::vector<Lane> lanes = kernel.results();
  if (const auto second = kernel.pointer()) lanes.push_back(*second);
  return lanes;
}

int widest_lane(const Kernel& kernel) {
  int bytes = 0;
  for (Lane lane : kernel.operands()) bytes = std::max(bytes, grammar::lane_bytes(lane));
  for (Lane lane : lanes_of_results(kernel)) bytes = std::max(bytes, grammar::lane_bytes(lane));
  return bytes;
}

const Kernel* at_width(const Kernel& kernel, int width) {
  Kernel other = kernel;
  other.width = width;
  return grammar::find(other.symbol());
}

bool may_call_kernels(const llvm::Function& function) {
  return !function.hasFnAttribute(llvm::Attribute::StrictFP) && has_features(function);
}

int register_bytes(const llvm::Function& function, const llvm::TargetTransformInfo& target) {
  llvm::Type* element = llvm::Type::getDoubleTy(function.getContext());
  return target.isTypeLegal(llvm::FixedVectorType::get(element, 8)) ? 64 : 32;
}

llvm::Type* lane_type(Lane lane, llvm::LLVMContext& context) {
  switch (lane) {
    case Lane::f64:
      return llvm::Type::getDoubleTy(context);
    case Lane::f32:
      return llvm::Type::getFloatTy(context);
    case Lane::f16:
      return llvm::Type::getHalfTy(context);
    default:
      return llvm::Type::getIntNTy(context, unsigned(8 * grammar::lane_bytes(lane)));
  }
}

llvm::AttributeList kernel_attributes(llvm::LLVMContext& context, llvm::MemoryEffects memory) {
  llvm::AttrBuilder attributes(context);
  attributes.addMemoryAttr(memory);
  for (const auto kind :
       {llvm::Attribute::NoUnwind, llvm::Attribute::WillReturn, llvm::Attribute::NoCallback,
        llvm::Attribute::NoFree, llvm::Attribute::NoSync})
    attributes.addAttribute(kind);
  return llvm::AttributeList::get(context, llvm::AttributeList::FunctionIndex, attributes);
}

}  // namespace zorp::passes
