#include "tests/accuracy/accuracy.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "tests/support/caller.h"

namespace zorp::test {
namespace {

/// A scrambled function of its argument (splitmix64).
std::uint64_t scramble(std::uint64_t x) {
  x += 0x9e3779b97f4a7c15;
  x = (x ^ x >> 30) * 0xbf58476d1ce4e5b9;
  x = (x ^ x >> 27) * 0x94d049bb133111eb;
  return x ^ x >> 31;
}

/// The neighbourhoods of special values, of the ends of the range, of small multiples of 1/2.
std::vector<Bits> structured_operands(const Reference& reference, Element element) {
  constexpr int kNeighbours = 32;
  const auto [low, high] = reference.ranges[int(element)];
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
Bits random_operand(const Reference& reference, Element element, std::uint64_t i) {
  const Format& f = format(element);
  const Bits bits = scramble(i) & (2 * f.sign() - 1);
  switch (i % 8) {
    case 0:
      return bits;
    case 1:
    case 2:
    case 3: {
      const Bits lowest = f.one() - 24 * f.min_normal();
      return (bits & f.sign()) | (lowest + scramble(~i) % (34 * f.min_normal()));
    }
    default: {
      const auto [low, high] = reference.ranges[int(element)];
      return encode(element, low + (high - low) * std::ldexp(double(scramble(i)), -64));
    }
  }
}

std::vector<Bits> operand_sequence(const Reference& reference, Element element, std::size_t count) {
  std::vector<Bits> list;
  if (element == Element::f16) {
    for (Bits bits = 0; bits < 1 << 16; ++bits) list.push_back(bits);
    return list;
  }
  list = structured_operands(reference, element);
  for (std::uint64_t i = 0; list.size() < count; ++i)
    list.push_back(random_operand(reference, element, i));
  return list;
}

/// An exact result, and the error of a computed one.
class Judge {
 public:
  explicit Judge(Element element) : element_(element), f_(format(element)) {
    mpfr_init2(operand_, 53);
    mpfr_init2(exact_, 120);
    mpfr_init2(difference_, 120);
  }
  ~Judge() { mpfr_clears(operand_, exact_, difference_, mpfr_ptr(nullptr)); }
  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  void compute(const Reference& reference, Bits operand) {
    mpfr_set_d(operand_, value(element_, operand), MPFR_RNDN);
    reference.function(exact_, operand_, MPFR_RNDN);
    rounded_ = encode(element_, mpfr_get_d(exact_, MPFR_RNDN));
    const Bits exponent = f_.magnitude(rounded_) >> f_.mantissa_bits;
    const Bits largest = (f_.max_finite() >> f_.mantissa_bits);
    // The encoding's exponent of 1.0 is the bias; subnormals share the exponent 1.
    ulp_ = int(std::clamp<Bits>(exponent, 1, largest)) - int(f_.one() >> f_.mantissa_bits) -
           f_.mantissa_bits;
  }

  /// In ulp; nothing if one side is a NaN or an exact infinity and the other isn't.
  std::optional<double> error(Bits result) {
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
  mpfr_t operand_, exact_, difference_;
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

void measure_part(const Library& library, const Reference& reference, const grammar::Family& family,
                  Element element, std::span<const Bits> operands,
                  std::vector<Measurement>& measurements) {
  const int width = family.widths(element).back();
  std::vector<Caller> callers;
  for (const Measurement& measurement : measurements)
    callers.emplace_back(Kernel{&family, element, width, measurement.tiers[0]}, library);
  Judge judge(element);
  std::vector<Tuple> lanes(width);
  std::vector<Results> results(callers.size());
  for (std::size_t start = 0; start < operands.size(); start += width) {
    for (int i = 0; i < width; ++i) lanes[i] = {operands[(start + i) % operands.size()]};
    for (std::size_t k = 0; k < callers.size(); ++k) results[k] = callers[k](lanes);
    for (int i = 0; i < width && start + i < operands.size(); ++i) {
      judge.compute(reference, lanes[i][0]);
      for (std::size_t k = 0; k < callers.size(); ++k) {
        const Bits result = callers[k].output(results[k], 0, i);
        Measurement& measurement = measurements[k];
        ++measurement.operands;
        const std::optional<double> error = judge.error(result);
        if (!error) {
          ++measurement.wrong_specials;
          measurement.wrong_special_operand = lanes[i][0];
        } else if (*error > measurement.worst_error) {
          measurement.worst_error = *error;
          measurement.worst_operand = lanes[i][0];
          measurement.worst_result = result;
        }
      }
    }
  }
  mpfr_free_cache();
}

void merge(Measurement& all, const Measurement& part) {
  all.operands += part.operands;
  all.wrong_specials += part.wrong_specials;
  if (part.wrong_special_operand) all.wrong_special_operand = part.wrong_special_operand;
  if (part.worst_error > all.worst_error) {
    all.worst_error = part.worst_error;
    all.worst_operand = part.worst_operand;
    all.worst_result = part.worst_result;
  }
}

}  // namespace

std::vector<Measurement> measure(const Library& library, const Reference& reference,
                                 const grammar::Family& family, Element element,
                                 std::size_t operands, int threads) {
  const std::vector<Bits> sequence = operand_sequence(reference, element, operands);
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

std::string tier_names(const std::vector<Tier>& tiers) {
  std::string names;
  for (Tier tier : tiers) names += (names.empty() ? "" : ", ") + std::string(name(tier));
  return names;
}

}  // namespace zorp::test
