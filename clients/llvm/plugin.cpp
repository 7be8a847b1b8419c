// The plugin, as clang and opt load it. README.md tells how to use it.
#include <llvm/Passes/PassBuilder.h>
#include <llvm/Passes/PassPlugin.h>
#include <llvm/Support/CommandLine.h>

#include "clients/llvm/passes.h"

namespace zorp::passes {
namespace {

llvm::cl::opt<Tier> wanted_tier(
    "zorp-z1-tier", llvm::cl::desc("Tier of the kernels that vectorised mathematics calls"),
    llvm::cl::init(Tier::standard),
    llvm::cl::values(clEnumValN(Tier::standard, "standard", "the most precise form"),
                     clEnumValN(Tier::native, "native", "the looser, faster form"),
                     clEnumValN(Tier::half, "half", "where it differs, between the two"),
                     clEnumValN(Tier::rm, "rm", "relaxed mathematics")));

void register_passes(llvm::PassBuilder& builder) {
  // After inlining, so that calls are seen where they end up.
  builder.registerVectorizerStartEPCallback(
      [](llvm::FunctionPassManager& passes, llvm::OptimizationLevel) {
        passes.addPass(OfferVectorForms(wanted_tier));
      });
  builder.registerOptimizerLastEPCallback(
      [](llvm::ModulePassManager& passes, llvm::OptimizationLevel) {
        passes.addPass(CallKernels(wanted_tier));
      });
  // By name, for opt.
  builder.registerPipelineParsingCallback([](llvm::StringRef name,
                                             llvm::FunctionPassManager& passes,
                                             llvm::ArrayRef<llvm::PassBuilder::PipelineElement>) {
    if (name != "zorp-z1-offer") return false;
    passes.addPass(OfferVectorForms(wanted_tier));
    return true;
  });
  builder.registerPipelineParsingCallback([](llvm::StringRef name, llvm::ModulePassManager& passes,
                                             llvm::ArrayRef<llvm::PassBuilder::PipelineElement>) {
    if (name != "zorp-z1-call") return false;
    passes.addPass(CallKernels(wanted_tier));
    return true;
  });
}

}  // namespace
}  // namespace zorp::passes

extern "C" [[gnu::visibility("default")]] llvm::PassPluginLibraryInfo llvmGetPassPluginInfo() {
  return {LLVM_PLUGIN_API_VERSION, "zorp_z1", ZORP_VERSION, zorp::passes::register_passes};
}
