// Writes what derives from the table of built-ins:
//
//   generate library    the bitcode library's source
//   generate relaxed    the same for -cl-fast-relaxed-math
//   generate test       a program that uses each built-in
#include <cstdio>
#include <string>

#include "clients/opencl/bitcode/library.h"
#include "clients/opencl/bitcode/test_kernels.h"

int main(int argc, char** argv) {
  const std::string what = argc == 2 ? argv[1] : "";
  if (what == "library" || what == "relaxed") {
    zorp::opencl::print_library(what == "relaxed");
  } else if (what == "test") {
    zorp::opencl::print_test_kernels();
  } else {
    std::fputs("usage: generate library|relaxed|test\n", stderr);
    return 2;
  }
  return 0;
}
