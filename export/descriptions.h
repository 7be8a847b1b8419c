// What each family computes, in words: the text of the public header's comments.
#pragma once

#include <string>

#include "export/grammar.h"

namespace zorp::grammar {

struct Description {
  std::string value;    // what the function gives
  std::string special;  // what it gives for special operands
  std::string method;   // how it is computed
};

/// Throws std::out_of_range for a family that isn't described.
Description description(const Family& family);

}  // namespace zorp::grammar
