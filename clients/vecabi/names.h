// The names of the x86-64 vector function ABI that this client answers, and the kernels behind
// them.
//
//   _ZGV <letter> <N or M> <lanes> <parameters> _ <function of the C library>     _ZGVeM16v_expf
//
// letter: the registers, b 128 bits, c 256 bits (integers 128), d 256 bits, e 512 bits;  N: all
// lanes count, M: a mask says which do;  parameters: v a vector, l8 a pointer that moves on by 8
// bytes from lane to lane. Host code.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "export/grammar.h"

namespace zorp::vecabi {

/// What a function does with the results of its kernel.
enum class Results {
  returned,         // returns the first, as the kernel does
  stored_one,       // and stores the second from a pointer on, as the kernel does (modf)
  stored_two,       // stores both, each from a pointer on (sincos)
  scattered_two,    // stores both, each lane through a pointer of its own
  returned_second,  // returns what the kernel stores from a pointer on (expfrexp)
  dropped_second,   // returns the first alone (frfrexp)
};

struct Function {
  std::string_view name;                   // of double; float's ends in f
  std::vector<std::string_view> families;  // one that has all results, or one for each
  Results results;
};

/// All functions that the C library's header or SLEEF's library of this ABI offers.
const std::vector<Function>& functions();

struct Letter {
  char letter;
  int bytes;          // of a vector register
  int integer_bytes;  // of one that holds integers or pointers
};
inline constexpr Letter kLetters[] = {{'b', 16, 16}, {'c', 32, 16}, {'d', 32, 32}, {'e', 64, 64}};

struct Name {
  const Function* function;
  grammar::Element element;
  Letter letter;
  bool masked;

  int lanes() const { return letter.bytes / (element == grammar::Element::f64 ? 8 : 4); }
  std::string scalar() const;  // expf
  std::string symbol() const;  // _ZGVeM16v_expf
  std::string parameters() const;
  /// One that has all results, or one for each.
  std::vector<grammar::Kernel> kernels() const;
};

/// The names whose kernels are in these groups.
std::vector<Name> names(const std::vector<std::string>& groups);

}  // namespace zorp::vecabi
