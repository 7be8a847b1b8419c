// The value of a vector register.
#pragma once

#include <cstdint>

namespace fp16trap {

struct alignas(64) Register {
  uint8_t bytes[64] = {};
};

}  // namespace fp16trap
