// What the functions behind the names are to give: the results of kernels of width 1.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/caller.h"

namespace zorp::vecabi::test {

using zorp::test::Bits;
using zorp::test::Caller;
using zorp::test::Kernel;
using zorp::test::Lane;
using zorp::test::Tuple;

class Reference {
 public:
  /// Of the C library's function of that name: expf, sincos.
  explicit Reference(const std::string& function);

  const std::vector<Lane>& operands() const { return results_[0].caller.operands(); }
  int results() const { return int(results_.size()); }
  Lane result(int i) const { return results_[i].caller.outputs()[results_[i].output]; }

  /// All results.
  std::vector<Bits> operator()(const Tuple& operands);

 private:
  struct Result {
    Caller caller;
    std::size_t output;  // of that kernel
  };
  std::vector<Result> results_;
};

}  // namespace zorp::vecabi::test
