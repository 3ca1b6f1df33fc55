#pragma once

#include <cstdint>

namespace Dov {

// What tells a scheduler the time and when a run has had its share. The scheduler opens a
// run with runBegin and closes it with runEnd; runs nest when a task runs directly from
// inside another one, so runBegin hands back the state of the outer run to restore.
class SchedulingPolicy {
 public:
  struct RunMark {
    double start = 0;
    std::uint64_t asks = 0;
    unsigned depth = 0;
    // The ask at which a policy that reads a clock reads it next.
    std::uint64_t nextClockRead = 0;
  };

  virtual ~SchedulingPolicy() = default;

  virtual bool simulated() const noexcept = 0;
  // Seconds on the policy's clock.
  virtual double currentTime() = 0;
  virtual RunMark runBegin() = 0;
  virtual void runEnd(const RunMark& outer) = 0;
  // True once the current run has used its share.
  virtual bool shouldYield() = 0;
};

}  // namespace Dov
