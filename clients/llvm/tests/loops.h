// The loops of make_loops.py.
#include <stddef.h>
#include <stdint.h>

enum { kElements = 256 };

typedef struct {
  const char* name;
  void (*run)(void* restrict result, const void* restrict x, const void* restrict y,
              const void* restrict z);
  size_t result_bytes;
  const char* operands;  // d, f, h: floating point; i: integers
} Loop;

extern const Loop loop_table[], reference_table[];
