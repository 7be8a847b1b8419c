// Writes tests/digests.txt: digests of all algorithms' results over fixed operands.
//
//   digests [FAMILY...]     rows of these families; of all without them
//
// The portable build computes them. It tells by estimates of another width which algorithms depend
// on the processor's own estimates: their rows say so, and hold no digest.
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>

#include "tests/portable/portable.h"
#include "tests/support/digest.h"

namespace zorp::test {
namespace {

void print_row(const Variant& variant) {
  const Library& library = loaded(*variant.library);
  const auto set_estimate_bits = reinterpret_cast<decltype(&zorp_portable_set_estimate_bits)>(
      const_cast<void*>(library.find("zorp_portable_set_estimate_bits")));
  const Digest beginning = digest(library, variant, kDigestBeginning);
  set_estimate_bits(15);
  const Digest with_other_estimates = digest(library, variant, kDigestBeginning);
  set_estimate_bits(14);
  std::printf("%s", digest_key(variant).c_str());
  if (with_other_estimates.value != beginning.value) {
    std::printf(" estimates\n");
  } else {
    const Digest all = digest(library, variant, digest_operands(variant));
    std::printf(" %zu %016llx %zu %016llx\n", beginning.operands,
                static_cast<unsigned long long>(beginning.value), all.operands,
                static_cast<unsigned long long>(all.value));
  }
  std::fflush(stdout);
}

int run(const std::set<std::string>& families) {
  for (const Variant& variant : portable_variants())
    if (!variant.kernel(1).is_alias() && (families.empty() || families.count(variant.family->name)))
      print_row(variant);
  return 0;
}

}  // namespace
}  // namespace zorp::test

int main(int argc, char** argv) {
  return zorp::test::run(std::set<std::string>(argv + 1, argv + argc));
}
