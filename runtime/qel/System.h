#pragma once

namespace Qel {

class System {
 public:
  // Seconds on the process scheduler's clock: simulated under the simulation policy, the
  // monotonic clock otherwise.
  static double currentTime();
};

}  // namespace Qel
