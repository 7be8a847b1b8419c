// The loops of make_loops.py.
#include <stddef.h>
#include <stdint.h>

enum { kElements = 256 };

#define PARAMETERS                                                                         \
  (void* restrict r_, void* restrict s_, const void* restrict x_, const void* restrict y_, \
   const void* restrict z_)

typedef struct {
  const char* name;
  void(*run) PARAMETERS;  // results at r_ and s_
  const char* operands;   // d, f, h: floating point; i: integers
  size_t result_bytes[2];
} Loop;

extern const Loop loop_table[], reference_table[];
