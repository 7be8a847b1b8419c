// Prices the options of a CSV file with libzorp_z1 and with the C library, and compares.
//
//   price_options FILE [--all]
//
// FILE has the columns type (call or put), spot, strike, rate, volatility, years. Without --all
// only the first prices are printed.
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "black_scholes.h"

namespace {

constexpr std::string_view kColumns = "type,spot,strike,rate,volatility,years";
constexpr std::size_t kShown = 5;

struct Options {
  std::vector<double> sign, spot, strike, rate, volatility, years;

  OptionArrays arrays() const {
    return {sign.data(),       spot.data(),  strike.data(), rate.data(),
            volatility.data(), years.data(), spot.size()};
  }
};

struct BadRow : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The text up to the next comma, which is taken off with it.
std::string_view next_field(std::string_view& row) {
  if (row.data() == nullptr) throw BadRow("6 fields expected");
  const std::size_t comma = row.find(',');
  const std::string_view field = row.substr(0, comma);
  row = comma == row.npos ? std::string_view() : row.substr(comma + 1);
  return field;
}

double number(std::string_view& row, const char* name, bool zero_or_less_allowed = false) {
  const std::string_view field = next_field(row);
  double value;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
  if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(value))
    throw BadRow(std::string(name) + " is not a number: '" + std::string(field) + "'");
  if (!zero_or_less_allowed && value <= 0)
    throw BadRow(std::string(name) + " is not positive: '" + std::string(field) + "'");
  return value;
}

void add_row(std::string_view row, Options& options) {
  const std::string_view type = next_field(row);
  if (type != "call" && type != "put")
    throw BadRow("type is neither call nor put: '" + std::string(type) + "'");
  options.sign.push_back(type == "call" ? 1 : -1);
  options.spot.push_back(number(row, "spot"));
  options.strike.push_back(number(row, "strike"));
  options.rate.push_back(number(row, "rate", true));
  options.volatility.push_back(number(row, "volatility"));
  options.years.push_back(number(row, "years"));
  if (row.data() != nullptr) throw BadRow("6 fields expected");
}

Options read_options(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": cannot be read");
  Options options;
  int line_number = 0;
  for (std::string line; std::getline(file, line);) {
    ++line_number;
    if (line.ends_with('\r')) line.pop_back();
    try {
      if (line_number > 1)
        add_row(line, options);
      else if (line != kColumns)
        throw BadRow("the columns are not " + std::string(kColumns));
    } catch (const BadRow& error) {
      throw std::runtime_error(path + ":" + std::to_string(line_number) + ": " + error.what());
    }
  }
  if (options.spot.empty()) throw std::runtime_error(path + ": no options");
  return options;
}

/// Nanoseconds an option: the best of many passes over the file.
template <class Price>
double time_per_option(Price price, const OptionArrays& options, std::vector<double>& prices) {
  using Clock = std::chrono::steady_clock;
  std::chrono::duration<double, std::nano> best(INFINITY);
  for (const auto end = Clock::now() + std::chrono::milliseconds(300); Clock::now() < end;) {
    const auto start = Clock::now();
    price(options, prices.data());
    best = std::min<std::chrono::duration<double, std::nano>>(best, Clock::now() - start);
  }
  return best.count() / double(options.count);
}

bool processor_has_avx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512vbmi2");
}

void run(const std::string& path, bool all) {
  if (!processor_has_avx512())
    throw std::runtime_error(
        "this processor lacks AVX-512 (F, DQ, BW, VL, VBMI2), which libzorp_z1 needs");
  const Options options = read_options(path);
  const OptionArrays arrays = options.arrays();
  std::vector<double> prices(arrays.count), expected(arrays.count);
  const double zorp = time_per_option(price_with_zorp, arrays, prices);
  const double c_library = time_per_option(price_with_c_library, arrays, expected);

  std::printf("%s: %zu options\n\n", path.c_str(), arrays.count);
  std::printf("type      spot    strike    rate  volatility   years       price\n");
  const std::size_t shown = all ? arrays.count : std::min(arrays.count, kShown);
  double difference = 0;
  for (std::size_t i = 0; i < arrays.count; ++i) {
    if (i < shown)
      std::printf("%-4s  %8.2f  %8.2f  %6.4f  %10.4f  %6.4f  %10.4f\n",
                  options.sign[i] > 0 ? "call" : "put", options.spot[i], options.strike[i],
                  options.rate[i], options.volatility[i], options.years[i], prices[i]);
    difference = std::max(difference, std::fabs(prices[i] - expected[i]));
  }
  if (shown < arrays.count) std::printf("(%zu more with --all)\n", arrays.count - shown);

  std::printf("\nlibzorp_z1, eight at a time:  %7.2f ns an option, %7.2f million a second\n", zorp,
              1e3 / zorp);
  std::printf("C library, one at a time:     %7.2f ns an option, %7.2f million a second\n",
              c_library, 1e3 / c_library);
  std::printf("speed-up: %.2f\nlargest difference of prices: %.1e\n", c_library / zorp, difference);
}

}  // namespace

int main(int argc, char** argv) {
  const bool all = argc == 3 && std::string_view(argv[2]) == "--all";
  if (argc != 2 && !all) {
    std::fprintf(stderr, "usage: price_options FILE [--all]\n");
    return 2;
  }
  try {
    run(argv[1], all);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "price_options: %s\n", error.what());
    return 1;
  }
}
