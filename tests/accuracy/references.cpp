// The exact functions, a line a family.
#include <algorithm>

#include "tests/accuracy/accuracy.h"

namespace zorp::test {
namespace {

const Reference kReferences[] = {
    {"cosh", {mpfr_cosh}, {{{-712, 712}, {-91, 91}}}},
    {"exp", {mpfr_exp}, {{{-746, 711}, {-105, 90}}}},
    {"exp10", {mpfr_exp10}, {{{-325, 309}, {-46, 39}}}},
    {"exp2", {mpfr_exp2}, {{{-1076, 1025}, {-151, 129}}}},
    {"log", {mpfr_log}, {{{0, 4}, {0, 4}}}},
    {"log10", {mpfr_log10}, {{{0, 4}, {0, 4}}}},
    {"log2", {mpfr_log2}, {{{0, 4}, {0, 4}}}},
    {"pow", {mpfr_pow}, {{{0, 8}, {0, 8}}}, Reference::Ranges{{{-360, 360}, {-44, 44}}}},
    {"pown", {mpfr_pow_si}, {{{-8, 8}, {-8, 8}}}, Reference::Ranges{{{-360, 360}, {-44, 44}}}},
    {"powr", {mpfr_powr}, {{{0, 8}, {0, 8}}}, Reference::Ranges{{{-360, 360}, {-44, 44}}}},
    {"rootn", {mpfr_rootn_si}, {{{0, 1024}, {0, 1024}}}, Reference::Ranges{{{-40, 40}, {-40, 40}}}},
    {"sinh", {mpfr_sinh}, {{{-712, 712}, {-91, 91}}}},
};

}  // namespace

Reference::Range Reference::range(Element element, std::size_t operand) const {
  const int index = std::min(int(element), 1);  // half like float
  return operand == 1 && second ? (*second)[index] : first[index];
}

const Reference* reference(const std::string& family) {
  for (const Reference& reference : kReferences)
    if (family == reference.family) return &reference;
  return nullptr;
}

}  // namespace zorp::test
