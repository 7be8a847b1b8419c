// The declarations of the public header, and the calls of the test that goes through it.
#pragma once

#include <string>
#include <vector>

#include "export/grammar.h"

namespace zorp::grammar {

/// The kernel as a C function of the public header, without the closing semicolon.
std::string prototype(const Kernel& kernel);

/// Prints include/zorp_z1_kernels.h for these families. `accuracy_table` is the file of measured
/// errors; families that have no row there go without.
void print_header(const std::string& accuracy_table, const std::vector<std::string>& groups);

/// Prints, for the kernels of an element type, checks of their lanes against the kernel of width 1.
void print_header_checks(const std::string& element, const std::vector<std::string>& groups);

}  // namespace zorp::grammar
