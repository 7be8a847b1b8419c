// Writes what derives from the table of built-ins:
//
//   generate library    the bitcode library's source
//   generate relaxed    the same for -cl-fast-relaxed-math
#include <cstdio>
#include <string>

#include "clients/opencl/bitcode/library.h"

int main(int argc, char** argv) {
  const std::string what = argc == 2 ? argv[1] : "";
  if (what == "library" || what == "relaxed") {
    zorp::opencl::print_library(what == "relaxed");
    return 0;
  }
  std::fputs("usage: generate library|relaxed\n", stderr);
  return 2;
}
