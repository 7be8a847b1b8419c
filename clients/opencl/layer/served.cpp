#include "clients/opencl/layer/served.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zorp::opencl {

std::string signature(const Builtin& builtin) {
  return builtin.name(1) + " " + builtin.operands[0].element;
}

Served::Served(const std::string& file) {
  std::ifstream table(file);
  if (!table) throw std::runtime_error(file + " can't be read");
  for (const Builtin& builtin : builtins()) widths_[signature(builtin)];
  for (std::string line; std::getline(table, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t colon = line.find(':');
    const auto entry = widths_.find(line.substr(0, colon));
    if (entry == widths_.end()) throw std::runtime_error(file + ": no built-in is: " + line);
    std::istringstream widths(line.substr(colon + 1));
    for (int width; widths >> width;) entry->second.insert(width);
  }
}

bool Served::operator()(const Builtin& builtin, int width) const {
  return widths_.at(signature(builtin)).count(width) > 0;
}

}  // namespace zorp::opencl
