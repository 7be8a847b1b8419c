// Writes tests/digests.txt: digests of all algorithms' results over fixed operands.
//
//   digests [BEGINNING...]     rows that begin so: "acos", "acos half"; all without arguments
//
// The portable build computes them. It tells by estimates of other widths which algorithms depend
// on the processor's own estimates: their rows say so, and hold the digest of a beginning alone.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/portable/portable.h"
#include "tests/support/digest.h"

namespace zorp::test {
namespace {

void print_row(const Variant& variant) {
  const Library& library = loaded(*variant.library);
  const auto set_estimate_bits = reinterpret_cast<decltype(&zorp_portable_set_estimate_bits)>(
      const_cast<void*>(library.find("zorp_portable_set_estimate_bits")));
  const std::size_t operands = digest_operands(variant);
  const auto depends_on_estimates = [&](std::size_t count, std::uint64_t value) {
    bool differs = false;
    for (int bits : {13, 15, 18}) {
      set_estimate_bits(bits);
      differs = differs || digest(library, variant, count).value != value;
    }
    set_estimate_bits(14);
    return differs;
  };
  const Digest beginning = digest(library, variant, kDigestBeginning);
  std::printf("%s %zu %016llx", digest_key(variant).c_str(), beginning.operands,
              static_cast<unsigned long long>(beginning.value));
  Digest all;
  if (depends_on_estimates(beginning.operands, beginning.value) ||
      (all = digest(library, variant, operands), depends_on_estimates(operands, all.value)))
    std::printf(" estimates\n");
  else
    std::printf(" %zu %016llx\n", all.operands, static_cast<unsigned long long>(all.value));
  std::fflush(stdout);
}

int run(const std::vector<std::string>& beginnings) {
  const auto wanted = [&](const std::string& key) {
    return beginnings.empty() ||
           std::any_of(beginnings.begin(), beginnings.end(), [&](const std::string& beginning) {
             return (key + ' ').starts_with(beginning + ' ');
           });
  };
  for (const Variant& variant : portable_variants())
    if (!variant.kernel(1).is_alias() && wanted(digest_key(variant))) print_row(variant);
  return 0;
}

}  // namespace
}  // namespace zorp::test

int main(int argc, char** argv) { return zorp::test::run({argv + 1, argv + argc}); }
