// The exact functions, a line a family.
#include <algorithm>

#include "tests/accuracy/accuracy.h"

namespace zorp::test {
namespace {

const Reference kReferences[] = {
    {"acos", {mpfr_acos}, {{{-1, 1}, {-1, 1}}}},
    {"acospi", {mpfr_acospi}, {{{-1, 1}, {-1, 1}}}},
    {"asin", {mpfr_asin}, {{{-1, 1}, {-1, 1}}}},
    {"asinpi", {mpfr_asinpi}, {{{-1, 1}, {-1, 1}}}},
    {"atan", {mpfr_atan}, {{{-10, 10}, {-10, 10}}}},
    {"atan2", {mpfr_atan2}, {{{-10, 10}, {-10, 10}}}},
    {"atan2pi", {mpfr_atan2pi}, {{{-10, 10}, {-10, 10}}}},
    {"atanpi", {mpfr_atanpi}, {{{-10, 10}, {-10, 10}}}},
    {"cosh", {mpfr_cosh}, {{{-712, 712}, {-91, 91}}}},
    {"exp", {mpfr_exp}, {{{-746, 711}, {-105, 90}}}},
    {"exp10", {mpfr_exp10}, {{{-325, 309}, {-46, 39}}}},
    {"exp2", {mpfr_exp2}, {{{-1076, 1025}, {-151, 129}}}},
    {"log", {mpfr_log}, {{{0, 4}, {0, 4}}}},
    {"log10", {mpfr_log10}, {{{0, 4}, {0, 4}}}},
    {"log2", {mpfr_log2}, {{{0, 4}, {0, 4}}}},
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
