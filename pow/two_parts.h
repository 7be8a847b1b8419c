// Numbers of more precision than a lane holds.
#pragma once

namespace zorp {

/// high + low, low being small beside high.
template <class V>
struct TwoParts {
  V high, low;
};

}  // namespace zorp
