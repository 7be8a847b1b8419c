// fma: a x b + c, rounded once.
// Kernels: __zorp_z1_fma{,f,s}{1,2,3,4,8,16,32}{,_rm}.
#pragma once

#include "frame/kernel.h"

namespace zorp {

struct Fma {
  /// Half results of up to four lanes have zeros behind them: 0 x 0 + 0.
  template <class T>
  static constexpr uint64_t filler() {
    return same<T, half> ? 0 : default_filler<T>();
  }

  /// One fused operation in all lanes, which serves every operand. Of several NaNs the first
  /// operand survives at every width.
  template <Tier, class V>
  static V apply(V a, V b, V c) {
    return fma_in_order(a, b, c);
  }
};

}  // namespace zorp
