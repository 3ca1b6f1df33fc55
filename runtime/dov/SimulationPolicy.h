#pragma once

#include <cstdint>

#include "runtime/dov/SchedulingPolicy.h"

namespace Dov {

// Deterministic time for tests and scenarios. The clock stands still unless the scheduler
// moves it (advance) or a run reads it while readCost is set; a run is told to yield once
// it has asked yieldEvery times.
class SimulationPolicy final : public SchedulingPolicy {
 public:
  static constexpr unsigned kDefaultYieldEvery = 64;

  explicit SimulationPolicy(unsigned yieldEvery = kDefaultYieldEvery, double startTime = 0);

  unsigned yieldEvery() const noexcept { return yieldEvery_; }
  void yieldEveryIs(unsigned asks);
  // Simulated seconds that each read of the clock costs while a run is under way, so that
  // loops bounded by a time budget can be made to run out of it. 0 by default.
  double readCost() const noexcept { return readCost_; }
  void readCostIs(double seconds);

  // Moves the clock to `time`; the clock never goes back.
  void timeIs(double time) noexcept;
  double time() const noexcept { return now_; }

  bool simulated() const noexcept override { return true; }
  double currentTime() override;
  RunMark runBegin() override;
  void runEnd(const RunMark& outer) override { run_ = outer; }
  bool shouldYield() override { return ++run_.asks >= yieldEvery_; }

 private:
  unsigned yieldEvery_;
  double readCost_ = 0;
  double now_;
  RunMark run_;
};

}  // namespace Dov
