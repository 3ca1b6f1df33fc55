#pragma once

#include "runtime/dov/SchedulingPolicy.h"

namespace Dov {

// Each run gets a share of wall time (the quantum); time is the monotonic clock.
class RealTimePolicy final : public SchedulingPolicy {
 public:
  static constexpr double kDefaultQuantum = 0.001;

  explicit RealTimePolicy(double quantum = kDefaultQuantum);

  double quantum() const noexcept { return quantum_; }
  void quantumIs(double seconds);

  bool simulated() const noexcept override { return false; }
  double currentTime() override { return monotonicTime(); }
  RunMark runBegin() override;
  void runEnd(const RunMark& outer) override { run_ = outer; }
  bool shouldYield() override;

  static double monotonicTime() noexcept;

 private:
  double quantum_;
  RunMark run_;
};

}  // namespace Dov
