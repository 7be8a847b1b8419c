// Writes the assembly of libzorp_z1_vecabi.so:
//
//   generate GROUP...
//
// The kernels' contract is stricter than the platform's, so most names are a kernel itself: an
// indirect function, which the loader asks for the address that it stands for. The others are stubs
// that use what the contract gives beyond the platform's: zmm16 to zmm31, k4 to k7, rsi and rdi
// live across the call, and the stack need not be aligned.
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "clients/vecabi/names.h"

namespace zorp::vecabi {
namespace {

using grammar::Element;
using grammar::Kernel;

class Stub {
 public:
  explicit Stub(const Name& name) : name_(name), kernels_(name.kernels()) {
    line("endbr64");
    switch (name_.function->results) {
      case Results::returned:
        returned();
        break;
      case Results::stored_one:
        stored_one();
        break;
      case Results::stored_two:
        stored_two();
        break;
      case Results::scattered_two:
        scattered_two();
        break;
      case Results::returned_second:
        returned_second();
        break;
      case Results::dropped_second:
        dropped_second();
        break;
    }
  }

  const std::string& code() const { return code_; }
  const std::string& type() const { return type_; }

 private:
  void returned() {
    if (!integers_are_split()) return stand_for_kernel();
    if (kernels_[0].operands().size() == 2) {
      line("vinsertf128 $1, %xmm2, %ymm1, %ymm1");
      line("jmp *" + address(0));
    } else {
      // They come back in memory, whose address the caller gives.
      call(0);
      line("vmovups %ymm0, (%rdi)");
      line("mov %rdi, %rax");
      end_without_result();
    }
  }

  void stored_one() {
    if (!name_.masked) return stand_for_kernel();
    line("kmovw %esi, %k4");
    line("mov %rdi, %rsi");
    reserve(64);
    line("mov %rsp, %rdi");
    call(0);
    line(move() + " (%rsp), %zmm1");
    line(move() + " %zmm1, (%rsi){%k4}");
    release(64);
    line("ret");
  }

  void stored_two() {
    const std::string mask = name_.masked ? "{%k4}" : "";
    if (name_.masked) line("kmovw %edx, %k4");
    if (kernels_.size() == 1) {
      call(0);
      line(move() + ' ' + vector(0) + ", (%rdi)" + mask);
      line(move() + ' ' + vector(1) + ", (%rsi)" + mask);
    } else {
      line(move() + ' ' + vector(0) + ", " + vector(16));
      call(0);
      line(move() + ' ' + vector(0) + ", (%rdi)" + mask);
      line(move() + ' ' + vector(16) + ", " + vector(0));
      call(1);
      line(move() + ' ' + vector(0) + ", (%rsi)" + mask);
    }
    end_without_result();
  }

  /// Pointers and results become arrays on the stack.
  void scattered_two() {
    const int element_bytes = name_.element == Element::f64 ? 8 : 4;
    const int pointers = 2 * 8 * name_.lanes(), bytes = pointers + 2 * name_.letter.bytes;
    reserve(bytes);
    for (int i = 0, number = 1; i < pointers; i += name_.letter.integer_bytes, ++number) {
      std::string from = vector(number, name_.letter.integer_bytes);
      if (number > 7) {
        // The eighth and last register of arguments is used up.
        line("vmovups " + std::to_string(bytes + 8) + "(%rsp), %xmm1");
        from = "%xmm1";
      }
      line("vmovups " + from + ", " + std::to_string(i) + "(%rsp)");
    }
    call(0);
    line(move() + ' ' + vector(0) + ", " + std::to_string(pointers) + "(%rsp)");
    line(move() + ' ' + vector(1) + ", " + std::to_string(pointers + name_.letter.bytes) +
         "(%rsp)");
    const std::string general = element_bytes == 8 ? "%rax" : "%eax";
    for (int lane = 0; lane < 2 * name_.lanes(); ++lane) {
      line("mov " + std::to_string(pointers + element_bytes * lane) + "(%rsp), " + general);
      line("mov " + std::to_string(8 * lane) + "(%rsp), %rcx");
      line("mov " + general + ", (%rcx)");
    }
    release(bytes);
    end_without_result();
  }

  void returned_second() {
    if (integers_are_split()) {
      line("push %rdi");
      line(".cfi_adjust_cfa_offset 8");
      call(0);
      line("pop %rax");
      line(".cfi_adjust_cfa_offset -8");
      return end_without_result();
    }
    const int bytes = 4 * name_.lanes();
    reserve(64);
    line("mov %rsp, %rdi");
    call(0);
    line(bytes == 8 ? "vmovq (%rsp), %xmm0" : "vmovups (%rsp), " + vector(0, bytes));
    release(64);
    line("ret");
  }

  void dropped_second() {
    reserve(64);
    line("mov %rsp, %rdi");
    call(0);
    release(64);
    line("ret");
  }

  /// A loader that asks before this library is relocated gets a jump instead, which it has in any
  /// case: a program may have been linked to another library of these names.
  void stand_for_kernel() {
    type_ = "@gnu_indirect_function";
    line("mov " + address(0) + ", %rax");
    line("test %rax, %rax");
    line("jne 1f");
    line("lea 2f(%rip), %rax");
    line("1: ret");
    line("2: endbr64");
    line("jmp *" + address(0));
  }

  /// Eight integers take two registers beside eight floats in one.
  bool integers_are_split() const {
    const auto is_integer = [](grammar::Lane lane) { return lane == grammar::Lane::i32; };
    const Kernel& kernel = kernels_[0];
    return 4 * name_.lanes() > name_.letter.integer_bytes &&
           (is_integer(kernel.operands().back()) || is_integer(kernel.results()[0]) ||
            kernel.pointer() == grammar::Lane::i32);
  }

  void line(const std::string& text) { code_ += '\t' + text + '\n'; }
  std::string address(int kernel) const { return kernels_[kernel].symbol() + "@GOTPCREL(%rip)"; }
  void call(int kernel) { line("call *" + address(kernel)); }
  void reserve(int bytes) {
    line("sub $" + std::to_string(bytes) + ", %rsp");
    line(".cfi_adjust_cfa_offset " + std::to_string(bytes));
  }
  void release(int bytes) {
    line("add $" + std::to_string(bytes) + ", %rsp");
    line(".cfi_adjust_cfa_offset -" + std::to_string(bytes));
  }
  void end_without_result() {
    line("vzeroupper");
    line("ret");
  }

  /// Of an element a mask bit: the element's size matters under a mask alone.
  std::string move() const { return name_.element == Element::f64 ? "vmovupd" : "vmovups"; }
  static std::string vector(int number, int bytes) {
    return (bytes == 64 ? "%zmm" : bytes == 32 ? "%ymm" : "%xmm") + std::to_string(number);
  }
  std::string vector(int number) const { return vector(number, name_.letter.bytes); }

  const Name& name_;
  std::vector<Kernel> kernels_;
  std::string code_, type_ = "@function";
};

void print_stubs(const std::vector<Name>& names) {
  // Names that come down to the same code share it.
  std::map<std::string, std::vector<Name>> by_code;
  for (const Name& name : names) by_code[Stub(name).code()].push_back(name);
  std::printf("\t.text\n");
  for (const auto& [code, sharing] : by_code) {
    const std::string type = Stub(sharing[0]).type();
    std::printf("\n\t.p2align 4\n");
    for (const Name& name : sharing)
      std::printf("\t.globl %1$s\n\t.type %1$s, %2$s\n%1$s:\n", name.symbol().c_str(),
                  type.c_str());
    std::printf("\t.cfi_startproc\n%s\t.cfi_endproc\n", code.c_str());
    for (const Name& name : sharing) std::printf("\t.size %1$s, .-%1$s\n", name.symbol().c_str());
  }
  std::printf("\n\t.section .note.GNU-stack, \"\", @progbits\n");
}

}  // namespace
}  // namespace zorp::vecabi

int main(int argc, char** argv) {
  zorp::vecabi::print_stubs(zorp::vecabi::names({argv + 1, argv + argc}));
}
