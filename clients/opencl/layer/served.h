// What the kernels serve by default: the table clients/opencl/layer/served.txt, which
// tools/opencl_performance.py writes from measurements.
#pragma once

#include <map>
#include <set>
#include <string>

#include "clients/opencl/builtins.h"

namespace zorp::opencl {

/// A built-in in the table, apart from its width: "sin double", "convert_int_sat double". Forms
/// with scalar operands go with those without.
std::string signature(const Builtin& builtin);

class Served {
 public:
  /// Throws if the file can't be read or names what isn't a built-in.
  explicit Served(const std::string& file);
  bool operator()(const Builtin& builtin, int width) const;

 private:
  std::map<std::string, std::set<int>> widths_;
};

}  // namespace zorp::opencl
