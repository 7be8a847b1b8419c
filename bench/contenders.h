// Functions that compute the same thing with the same registers: a kernel, SLEEF's vector function,
// the C library's scalar function.
#pragma once

#include <string>
#include <vector>

#include "bench/loops.h"
#include "export/grammar.h"

namespace zorp::bench {

struct Contender {
  std::string name;  // zorp_z1, else the symbol
  Function function;
  Results results;
};

/// Opens the library under test and, where they are installed, its rivals. False with a message
/// if the library can't be opened.
bool open_libraries(const char* library);

/// The kernel first, if the library has it; else nothing.
std::vector<Contender> contenders(const grammar::Kernel& kernel);

/// The C library's fabs: one instruction and a return.
Function shortest_function();

}  // namespace zorp::bench
