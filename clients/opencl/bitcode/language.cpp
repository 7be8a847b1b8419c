#include "clients/opencl/bitcode/language.h"

#include <mpfr.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <map>

#include "tests/accuracy/accuracy.h"
#include "tests/support/caller.h"

namespace zorp::opencl {
namespace {

using grammar::Element;
using grammar::Lane;
using test::Bits;
using test::Tuple;

struct Limits {
  double full, half;  // of double and float; of half
};

const std::map<std::string, Limits> kLimits = {
    {"acos", {4, 2}},    {"acosh", {4, 2}},  {"acospi", {5, 2}}, {"asin", {4, 2}},
    {"asinh", {4, 2}},   {"asinpi", {5, 2}}, {"atan", {5, 2}},   {"atan2", {6, 2}},
    {"atan2pi", {6, 2}}, {"atanh", {5, 2}},  {"atanpi", {5, 2}}, {"cbrt", {2, 2}},
    {"cos", {4, 2}},     {"cosh", {4, 2}},   {"cospi", {4, 2}},  {"erf", {16, 4}},
    {"erfc", {16, 4}},   {"exp", {3, 2}},    {"exp10", {3, 2}},  {"exp2", {3, 2}},
    {"expm1", {3, 2}},   {"hypot", {4, 2}},  {"log", {3, 2}},    {"log10", {3, 2}},
    {"log1p", {2, 2}},   {"log2", {3, 2}},   {"pow", {16, 4}},   {"pown", {16, 4}},
    {"powr", {16, 4}},   {"rootn", {16, 4}}, {"rsqrt", {2, 1}},  {"sin", {4, 2}},
    {"sincos", {4, 2}},  {"sinh", {4, 2}},   {"sinpi", {4, 2}},  {"tan", {5, 2}},
    {"tanh", {5, 2}},    {"tanpi", {6, 2}},  {"tgamma", {16, 4}}};

/// One for each output, in double, which holds those of all types; nothing where the language
/// leaves the result open. Any NaN stands for every NaN.
using Outputs = std::vector<std::optional<double>>;

/// The larger or the smaller magnitude; `otherwise` decides between equal ones.
double by_magnitude(double x, double y, bool larger, double (*otherwise)(double, double)) {
  const bool decided = std::fabs(x) > std::fabs(y) || std::fabs(x) < std::fabs(y);
  return decided ? (std::fabs(x) > std::fabs(y)) == larger ? x : y : otherwise(x, y);
}

Outputs fraction(double x) {
  if (std::isinf(x)) return {std::copysign(0, x), x};
  if (x == 0) return {x, x};
  const double rest = x - std::floor(x);
  // Above, the result must stay below 1, whatever the type.
  return {rest > 0.75 ? std::nullopt : std::optional(rest), std::floor(x)};
}

Outputs significand(double x) {
  int exponent = 0;
  const double m = std::frexp(x, &exponent);
  return {m, std::isfinite(x) ? exponent : 0};
}

Outputs parts(double x) {
  double integral;
  const double rest = std::modf(x, &integral);
  return {rest, integral};
}

Outputs remainder_and_quotient(double x, double y) {
  const double rest = std::remainder(x, y), quotient = std::nearbyint(x / y);
  if (std::isnan(rest)) return {rest, 0};
  if (std::fabs(quotient) > 127) return {rest, std::nullopt};
  return {rest, quotient};
}

Outputs log_gamma_and_sign(double x) {
  int sign;
  const double result = lgamma_r(x, &sign);
  if (!std::isfinite(x)) return {result, std::nullopt};
  if (x <= 0 && x == std::floor(x)) sign = 0;
  const bool is_exact = result == 0 || std::isinf(result);
  return {is_exact ? std::optional(result) : std::nullopt, sign};
}

double exponent(double x) {
  if (x == 0) return INT_MIN;
  return std::isfinite(x) ? std::ilogb(x) : INT_MAX;
}

/// The functions whose results are exact or rounded once.
const std::map<std::string, Outputs (*)(double, double, double)> kExact = {
    {"ceil", [](double x, double, double) { return Outputs{std::ceil(x)}; }},
    {"copysign", [](double x, double y, double) { return Outputs{std::copysign(x, y)}; }},
    {"fabs", [](double x, double, double) { return Outputs{std::fabs(x)}; }},
    {"fdim", [](double x, double y, double) { return Outputs{std::fdim(x, y)}; }},
    {"floor", [](double x, double, double) { return Outputs{std::floor(x)}; }},
    {"fma", [](double x, double y, double z) { return Outputs{std::fma(x, y, z)}; }},
    {"fmax", [](double x, double y, double) { return Outputs{std::fmax(x, y)}; }},
    {"fmin", [](double x, double y, double) { return Outputs{std::fmin(x, y)}; }},
    {"fmod", [](double x, double y, double) { return Outputs{std::fmod(x, y)}; }},
    {"fract", [](double x, double, double) { return fraction(x); }},
    {"frexp", [](double x, double, double) { return significand(x); }},
    {"ilogb", [](double x, double, double) { return Outputs{exponent(x)}; }},
    {"ldexp", [](double x, double n, double) { return Outputs{std::ldexp(x, int(n))}; }},
    {"lgammar", [](double x, double, double) { return log_gamma_and_sign(x); }},
    {"logb", [](double x, double, double) { return Outputs{std::logb(x)}; }},
    {"maxmag",
     [](double x, double y, double) { return Outputs{by_magnitude(x, y, true, std::fmax)}; }},
    {"minmag",
     [](double x, double y, double) { return Outputs{by_magnitude(x, y, false, std::fmin)}; }},
    {"modf", [](double x, double, double) { return parts(x); }},
    {"remainder", [](double x, double y, double) { return Outputs{std::remainder(x, y)}; }},
    {"remquo", [](double x, double y, double) { return remainder_and_quotient(x, y); }},
    {"rint", [](double x, double, double) { return Outputs{std::rint(x)}; }},
    {"round", [](double x, double, double) { return Outputs{std::round(x)}; }},
    {"trunc", [](double x, double, double) { return Outputs{std::trunc(x)}; }},
};

bool is_simple(double x) { return std::fabs(x) <= 4 && 2 * x == std::nearbyint(2 * x); }
bool is_special(double x) { return x == 0 || !std::isfinite(x); }
bool is_one(double x) { return std::fabs(x) == 1; }

/// What the language requires of a function that is only bounded elsewhere: NaNs, infinities and
/// zeros at special operands and at multiples of 1/2, ones at special operands and at ones,
/// quarters at special operands.
std::optional<double> required(const test::Reference::Function& function,
                               const std::vector<double>& operands) {
  const bool special = std::any_of(operands.begin(), operands.end(), is_special);
  if (!special && !std::all_of(operands.begin(), operands.end(), is_simple)) return std::nullopt;
  mpfr_t x, y, exact;
  mpfr_inits2(120, x, y, exact, mpfr_ptr(nullptr));
  mpfr_set_d(x, operands[0], MPFR_RNDN);
  if (operands.size() > 1) mpfr_set_d(y, operands[1], MPFR_RNDN);
  if (const auto* unary = std::get_if<test::Reference::Unary>(&function))
    (*unary)(exact, x, MPFR_RNDN);
  else if (const auto* binary = std::get_if<test::Reference::Binary>(&function))
    (*binary)(exact, x, y, MPFR_RNDN);
  else
    std::get<test::Reference::WithInteger>(function)(exact, x, long(operands[1]), MPFR_RNDN);
  const double result = mpfr_get_d(exact, MPFR_RNDN);
  const bool is_exact = !std::isfinite(result) || mpfr_cmp_d(exact, result) == 0;
  mpfr_clears(x, y, exact, mpfr_ptr(nullptr));
  const bool is_quarter = std::fabs(result) < 1 && 4 * result == std::nearbyint(4 * result);
  const bool has_one = std::any_of(operands.begin(), operands.end(), is_one);
  const bool is_asked = !std::isfinite(result) || result == 0 || (special && is_quarter) ||
                        ((special || has_one) && is_one(result));
  return is_exact && is_asked ? std::optional(result) : std::nullopt;
}

Outputs required(const grammar::Kernel& kernel, const std::vector<double>& operands) {
  const std::string& family = kernel.family->name;
  if (const auto exact = kExact.find(family); exact != kExact.end()) {
    std::vector<double> three = operands;
    three.resize(3);
    return exact->second(three[0], three[1], three[2]);
  }
  Outputs outputs;
  if (const test::Reference* reference = test::reference(family))
    for (const auto& function : reference->results) outputs.push_back(required(function, operands));
  return outputs;
}

std::vector<Bits> grid(Lane lane) {
  std::vector<Bits> list;
  if (!test::is_float(lane)) {
    for (long n : {0, 1, 2, 3, 10, 2000, INT_MAX})
      for (long sign : {1, -1}) list.push_back(std::uint32_t(sign * n));
    list.push_back(std::uint32_t(INT_MIN));
    return list;
  }
  const test::Format& f = test::format(lane);
  for (Bits bits : {Bits{0}, f.min_subnormal(), f.min_normal(), f.max_finite(), f.infinity()})
    list.insert(list.end(), {bits, bits | f.sign()});
  for (double x = 0.5; x <= 4; x += 0.5)
    for (double sign : {1, -1}) list.push_back(test::encode(Element(int(lane)), sign * x));
  list.push_back(f.quiet_nan());
  return list;
}

double number(Lane lane, Bits bits) {
  return test::is_float(lane) ? test::value(Element(int(lane)), bits) : std::int32_t(bits);
}

bool same(const grammar::Kernel& kernel, Lane lane, double required, Bits actual) {
  const double returned = number(lane, actual);
  if (std::isnan(required)) return std::isnan(returned);
  if (!test::is_float(lane)) return required == returned;
  // Which zero these return is left open.
  const std::string& family = kernel.family->name;
  if (required == 0 && returned == 0 && (family.starts_with("fm") || family.ends_with("mag")))
    return family != "fmod" || std::signbit(required) == std::signbit(returned);
  return test::encode(Element(int(lane)), required) == actual;
}

std::string text(double x) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.9g", x);
  return buffer;
}

}  // namespace

std::optional<double> error_limit(const std::string& family, Element element) {
  // The root of float alone needn't be rounded correctly.
  if (family == "sqrt") return element == Element::f32 ? 3 : 0.5;
  const auto found = kLimits.find(family);
  if (found == kLimits.end()) return std::nullopt;
  return element == Element::f16 ? found->second.half : found->second.full;
}

std::vector<Deviation> deviations(const test::Library& library, const grammar::Kernel& kernel) {
  std::vector<Tuple> tuples = {{}};
  const std::vector<Lane> lanes = kernel.operands();
  for (std::size_t i = 0; i < lanes.size(); ++i) {
    std::vector<Tuple> longer;
    for (Tuple tuple : tuples)
      for (Bits bits : grid(lanes[i])) {
        tuple[i] = bits;
        longer.push_back(tuple);
      }
    tuples = longer;
  }
  std::vector<Deviation> list;
  test::Caller caller(kernel, library);
  for (const Tuple& tuple : tuples) {
    std::vector<double> operands;
    for (std::size_t i = 0; i < lanes.size(); ++i) operands.push_back(number(lanes[i], tuple[i]));
    const Outputs outputs = required(kernel, operands);
    const test::Results& results = caller({&tuple, 1});
    for (std::size_t output = 0; output < outputs.size(); ++output) {
      const Bits actual = caller.output(results, output, 0);
      const Lane lane = caller.outputs()[output];
      if (!outputs[output] || same(kernel, lane, *outputs[output], actual)) continue;
      std::string words;
      for (double operand : operands) words += (words.empty() ? "" : ", ") + text(operand);
      list.push_back({words, text(*outputs[output]), text(number(lane, actual))});
    }
  }
  return list;
}

}  // namespace zorp::opencl
