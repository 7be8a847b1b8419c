// Compares the integer division kernels of a library with the processor's integer division:
//
//   check_integer_division LIBRARY [PAIRS]
//
// runs PAIRS operand pairs (default 10^9) through idiv, irem, udiv and urem at width 16, half of
// them uniformly random, half of them at and beside multiples of the divisor, for divisors of all
// sizes. Prints the first deviation and fails, or prints the count.
#include <dlfcn.h>
#include <immintrin.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace {

using Kernel = __m512i (*)(__m512i, __m512i);

struct alignas(64) Lanes {
  uint32_t lane[16];
};

/// xorshift64*
class Random {
 public:
  uint32_t operator()() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return uint32_t((state_ * 0x2545F4914F6CDD1D) >> 32);
  }

 private:
  uint64_t state_ = 0x9E3779B97F4A7C15;
};

/// The defined quotient, also where the processor's division would trap.
uint32_t quotient(uint32_t a, uint32_t b, bool is_signed) {
  if (!is_signed) return b ? a / b : 0xFFFFFFFF;
  if (b == 0) return 0x80000000;
  return uint32_t(int64_t(int32_t(a)) / int32_t(b));
}

/// A divisor of any size, and a dividend at a multiple of it or one beside.
void near_multiple(Random& random, bool is_signed, uint32_t& a, uint32_t& b) {
  const uint32_t word = random();
  b = random() >> (word & 31);
  const uint32_t limit = is_signed ? 0x80000000 : 0xFFFFFFFF;
  const uint32_t size = is_signed && int32_t(b) < 0 ? 0 - b : b;
  const uint32_t most = size ? limit / size : limit;
  // The largest multiple, one of the largest, or any.
  uint32_t k = random();
  k = word & 0x20 ? most - k % 16 : word & 0x40 ? most >> k % 32 : uint32_t(k % (most + 1ull));
  a = k * b + (word >> 8) % 3 - 1;
  if (is_signed && (word & 0x80)) a = 0 - a;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: check_integer_division LIBRARY [PAIRS]\n");
    return 2;
  }
  const uint64_t pairs = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1000000000;
  void* library = dlopen(argv[1], RTLD_NOW);
  if (!library) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  for (const bool is_signed : {true, false}) {
    const auto find = [&](const char* symbol) {
      return reinterpret_cast<Kernel>(dlsym(library, symbol));
    };
    const Kernel div = find(is_signed ? "__zorp_z1_idiv16" : "__zorp_z1_udiv16");
    const Kernel rem = find(is_signed ? "__zorp_z1_irem16" : "__zorp_z1_urem16");
    if (!div || !rem) {
      std::fprintf(stderr, "the library has no integer division\n");
      return 2;
    }
    Random random;
    Lanes a, b, q, r;
    for (uint64_t done = 0; done < pairs; done += 16) {
      for (int i = 0; i < 16; ++i) {
        if (i % 2)
          near_multiple(random, is_signed, a.lane[i], b.lane[i]);
        else
          a.lane[i] = random(), b.lane[i] = random();
      }
      const __m512i x = _mm512_load_si512(&a), y = _mm512_load_si512(&b);
      _mm512_store_si512(&q, div(x, y));
      _mm512_store_si512(&r, rem(x, y));
      for (int i = 0; i < 16; ++i) {
        const uint32_t expected = quotient(a.lane[i], b.lane[i], is_signed);
        const uint32_t rest = a.lane[i] - expected * b.lane[i];
        if (q.lane[i] == expected && r.lane[i] == rest) continue;
        std::printf("%s: %08x / %08x gives %08x, remainder %08x instead of %08x, %08x\n",
                    is_signed ? "signed" : "unsigned", a.lane[i], b.lane[i], q.lane[i], r.lane[i],
                    expected, rest);
        return 1;
      }
    }
    std::printf("%s: %llu pairs exact\n", is_signed ? "signed" : "unsigned",
                static_cast<unsigned long long>(pairs));
  }
}
