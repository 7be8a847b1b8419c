#include "clients/vecabi/tests/reference.h"

namespace zorp::vecabi::test {
namespace {

/// The kernels of width 1 and the outputs of theirs that a function's results are.
std::vector<std::pair<std::string, std::size_t>> sources(const std::string& function) {
  const auto is = [&](const std::string& name) {
    return function == name || function == name + 'f';
  };
  const std::string width = function.ends_with('f') ? "f1" : "1";
  if (is("sincospi")) return {{"sinpi" + width, 0}, {"cospi" + width, 0}};
  if (is("frfrexp")) return {{"frexp" + width, 0}};
  if (is("expfrexp")) return {{"frexp" + width, 1}};
  const std::string kernel = function + '1';
  if (grammar::find(kernel)->pointer()) return {{kernel, 0}, {kernel, 1}};
  return {{kernel, 0}};
}

}  // namespace

Reference::Reference(const std::string& function) {
  const zorp::test::Library& library = zorp::test::loaded(zorp::test::library_files()[0]);
  for (const auto& [kernel, output] : sources(function))
    results_.push_back({Caller(*grammar::find(kernel), library), output});
}

std::vector<Bits> Reference::operator()(const Tuple& operands) {
  std::vector<Bits> bits;
  for (Result& result : results_)
    bits.push_back(result.caller.output(result.caller({&operands, 1}), result.output, 0));
  return bits;
}

}  // namespace zorp::vecabi::test
