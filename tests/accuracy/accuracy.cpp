#include "tests/accuracy/accuracy.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <span>
#include <thread>

#include "tests/support/caller.h"

namespace zorp::test {
namespace {

/// The neighbourhoods of special values, of the ends of the range, of small multiples of 1/2.
std::vector<Bits> structured_operands(const Reference& reference, Element element) {
  constexpr int kNeighbours = 32;
  const auto [low, high] = reference.range(element, 0);
  std::vector<Bits> centres = specials(lane_of(element));
  for (double x = -64; x <= 64; x += 0.5) centres.push_back(encode(element, x));
  for (int step = 0; step <= 1024; ++step)
    centres.push_back(encode(element, low + (high - low) * step / 1024));
  std::vector<Bits> list;
  for (Bits centre : centres)
    for (int i = -kNeighbours; i <= kNeighbours; ++i)
      list.push_back((centre + i) & (2 * format(element).sign() - 1));
  return list;
}

/// Operand number i of the random part: half of them even over the range, the rest even over the
/// exponents around 1, or any bits.
Bits random_operand(const Reference::Range& range, Element element, std::uint64_t i,
                    std::uint64_t seed) {
  const Format& f = format(element);
  const std::uint64_t random = scramble(scramble(seed) + i);
  switch (i % 8) {
    case 0:
      return random & (2 * f.sign() - 1);
    case 1:
    case 2:
    case 3: {
      const Bits reach = std::min(24, 1 << (f.exponent_bits - 2)) * f.min_normal();
      return (random & f.sign()) | (f.one() - reach + scramble(random) % (2 * reach));
    }
    default:
      return encode(element,
                    range.low + (range.high - range.low) * std::ldexp(double(random), -64));
  }
}

Bits random_integer(const Reference::Range& range, std::uint64_t i) {
  const std::uint64_t random = scramble(i);
  if (i % 8 == 0) return std::uint32_t(random);
  return std::uint32_t(
      std::int32_t(range.low + (range.high - range.low) * std::ldexp(double(random), -64)));
}

std::vector<Tuple> operand_sequence(const Reference& reference, const std::vector<Lane>& lanes,
                                    Element element, std::size_t count) {
  std::vector<Tuple> list;
  if (lanes.size() == 1) {
    if (element == Element::f16) {
      for (Bits bits = 0; bits < 1 << 16; ++bits) list.push_back({bits});
      return list;
    }
    for (Bits bits : structured_operands(reference, element)) list.push_back({bits});
  } else {
    list = operand_pool(lanes, 1 << 14);
  }
  for (std::uint64_t i = 0; list.size() < count; ++i) {
    Tuple& tuple = list.emplace_back();
    for (std::size_t operand = 0; operand < lanes.size(); ++operand) {
      const Reference::Range range = reference.range(element, operand);
      tuple[operand] = is_float(lanes[operand]) ? random_operand(range, element, i, operand)
                                                : random_integer(range, i);
    }
  }
  return list;
}

/// An exact result, and the error of a computed one.
class Judge {
 public:
  explicit Judge(Element element) : element_(element), f_(format(element)) {
    mpfr_init2(x_, 53);
    mpfr_init2(y_, 53);
    mpfr_init2(exact_, 120);
    mpfr_init2(difference_, 120);
  }
  ~Judge() { mpfr_clears(x_, y_, exact_, difference_, mpfr_ptr(nullptr)); }
  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  void compute(const Reference::Function& function, const Tuple& operands) {
    mpfr_set_d(x_, value(element_, operands[0]), MPFR_RNDN);
    if (const auto* unary = std::get_if<Reference::Unary>(&function)) {
      (*unary)(exact_, x_, MPFR_RNDN);
    } else if (const auto* binary = std::get_if<Reference::Binary>(&function)) {
      mpfr_set_d(y_, value(element_, operands[1]), MPFR_RNDN);
      (*binary)(exact_, x_, y_, MPFR_RNDN);
    } else {
      std::get<Reference::WithInteger>(function)(exact_, x_, std::int32_t(operands[1]), MPFR_RNDN);
    }
    rounded_ = encode(element_, mpfr_get_d(exact_, MPFR_RNDN));
    const Bits exponent = f_.magnitude(rounded_) >> f_.mantissa_bits;
    const Bits largest = (f_.max_finite() >> f_.mantissa_bits);
    // The encoding's exponent of 1.0 is the bias; subnormals share the exponent 1.
    ulp_ = int(std::clamp<Bits>(exponent, 1, largest)) - int(f_.one() >> f_.mantissa_bits) -
           f_.mantissa_bits;
  }

  /// In ulp; nothing if one side is a NaN or an exact infinity and the other isn't, or if the
  /// result is a zero of the wrong sign.
  std::optional<double> error(Bits result) {
    const bool zero = f_.magnitude(result) == 0, negative = result & f_.sign();
    if (zero && !mpfr_nan_p(exact_) && negative != bool(mpfr_signbit(exact_))) return std::nullopt;
    if (mpfr_nan_p(exact_) || f_.is_nan(result)) {
      if (!mpfr_nan_p(exact_) || !f_.is_nan(result)) return std::nullopt;
      return 0;
    }
    if (result == rounded_ && !f_.is_finite(result)) return 0;
    if (mpfr_inf_p(exact_)) return std::nullopt;
    if (f_.is_finite(result)) {
      mpfr_set_d(difference_, value(element_, result), MPFR_RNDN);
    } else {
      // Infinity instead of a number counts as the power of two above the largest number.
      mpfr_set_si_2exp(difference_, result & f_.sign() ? -1 : 1, 1 << (f_.exponent_bits - 1),
                       MPFR_RNDN);
    }
    mpfr_sub(difference_, difference_, exact_, MPFR_RNDN);
    mpfr_mul_2si(difference_, difference_, -ulp_, MPFR_RNDN);
    return std::fabs(mpfr_get_d(difference_, MPFR_RNDU));
  }

 private:
  Element element_;
  const Format& f_;
  mpfr_t x_, y_, exact_, difference_;
  Bits rounded_ = 0;
  int ulp_ = 0;  // exponent of the unit in the last place of the rounded result
};

std::vector<Measurement> algorithms(const grammar::Family& family, Element element) {
  std::vector<Measurement> list;
  for (Tier tier : family.tiers) {
    const Tier leader = family.algorithm_tier[int(element)][int(tier)];
    auto found = std::find_if(list.begin(), list.end(), [leader](const Measurement& measurement) {
      return measurement.tiers[0] == leader;
    });
    if (leader == tier)
      list.push_back({.tiers = {tier}});
    else
      found->tiers.push_back(tier);
  }
  return list;
}

void count(Measurement& measurement, const Tuple& operands, Bits result,
           std::optional<double> error) {
  if (!error) {
    ++measurement.wrong_specials;
    measurement.wrong_special_operands = operands;
  } else if (*error > measurement.worst_error) {
    measurement.worst_error = *error;
    measurement.worst_operands = operands;
    measurement.worst_result = result;
  }
}

void measure_part(const Library& library, const Reference& reference, const grammar::Family& family,
                  Element element, std::span<const Tuple> operands,
                  std::vector<Measurement>& measurements) {
  const int width = family.widths(element).back();
  std::vector<Caller> callers;
  for (const Measurement& measurement : measurements)
    callers.emplace_back(Kernel{&family, element, width, measurement.tiers[0]}, library);
  Judge judge(element);
  std::vector<Tuple> lanes(width);
  std::vector<Results> results(callers.size());
  for (std::size_t start = 0; start < operands.size(); start += width) {
    for (int i = 0; i < width; ++i) lanes[i] = operands[(start + i) % operands.size()];
    const int fresh = int(std::min<std::size_t>(width, operands.size() - start));
    for (std::size_t k = 0; k < callers.size(); ++k) {
      results[k] = callers[k](lanes);
      measurements[k].operands += fresh;
    }
    for (int i = 0; i < fresh; ++i)
      for (std::size_t output = 0; output < reference.results.size(); ++output) {
        judge.compute(reference.results[output], lanes[i]);
        for (std::size_t k = 0; k < callers.size(); ++k) {
          const Bits result = callers[k].output(results[k], output, i);
          count(measurements[k], lanes[i], result, judge.error(result));
        }
      }
  }
  mpfr_free_cache();
}

void merge(Measurement& all, const Measurement& part) {
  all.operands += part.operands;
  all.wrong_specials += part.wrong_specials;
  if (part.wrong_special_operands) all.wrong_special_operands = part.wrong_special_operands;
  if (part.worst_error > all.worst_error) {
    all.worst_error = part.worst_error;
    all.worst_operands = part.worst_operands;
    all.worst_result = part.worst_result;
  }
}

}  // namespace

std::vector<Measurement> measure(const Library& library, const Reference& reference,
                                 const grammar::Family& family, Element element,
                                 std::size_t operands, int threads) {
  const Kernel scalar{&family, element, 1, Tier::standard};
  const std::vector<Tuple> sequence =
      operand_sequence(reference, scalar.operands(), element, operands);
  const std::vector<Measurement> empty = algorithms(family, element);
  std::vector<std::vector<Measurement>> parts(threads, empty);
  std::vector<std::thread> workers;
  for (int i = 0; i < threads; ++i) {
    const std::size_t begin = sequence.size() * i / threads;
    const std::size_t end = sequence.size() * (i + 1) / threads;
    workers.emplace_back([&, i, begin, end] {
      measure_part(library, reference, family, element,
                   std::span(sequence).subspan(begin, end - begin), parts[i]);
    });
  }
  for (std::thread& worker : workers) worker.join();
  std::vector<Measurement> total = empty;
  for (const auto& part : parts)
    for (std::size_t k = 0; k < total.size(); ++k) merge(total[k], part[k]);
  return total;
}

std::string describe(const Tuple& operands, const grammar::Family& family, Element element) {
  const std::vector<Lane> lanes = Kernel{&family, element, 1, Tier::standard}.operands();
  std::string text;
  for (std::size_t i = 0; i < lanes.size(); ++i) {
    char number[32];
    const double x = is_float(lanes[i]) ? value(element, operands[i]) : std::int32_t(operands[i]);
    std::snprintf(number, sizeof number, "%.17g", x);
    text += (i ? ", " : "") + std::string(number) + " (" + hex(operands[i]) + ")";
  }
  return text;
}

std::string tier_names(const std::vector<Tier>& tiers) {
  std::string names;
  for (Tier tier : tiers) names += (names.empty() ? "" : ", ") + std::string(name(tier));
  return names;
}

}  // namespace zorp::test
