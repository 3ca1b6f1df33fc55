#include "runtime/dov/SimulationPolicy.h"

#include "runtime/lumo/Exceptions.h"

namespace Dov {

SimulationPolicy::SimulationPolicy(unsigned yieldEvery, double startTime)
    : yieldEvery_(kDefaultYieldEvery), now_(startTime) {
  yieldEveryIs(yieldEvery);
}

void SimulationPolicy::yieldEveryIs(unsigned asks) {
  if (asks == 0) Qel::throwRangeException("Dov::SimulationPolicy::yieldEvery must be >= 1");
  yieldEvery_ = asks;
}

void SimulationPolicy::readCostIs(double seconds) {
  if (seconds < 0) Qel::throwRangeException("Dov::SimulationPolicy::readCost must be >= 0");
  readCost_ = seconds;
}

void SimulationPolicy::timeIs(double time) noexcept {
  if (time > now_) now_ = time;
}

double SimulationPolicy::currentTime() {
  if (run_.depth > 0) now_ += readCost_;
  return now_;
}

SchedulingPolicy::RunMark SimulationPolicy::runBegin() {
  const RunMark outer = run_;
  run_ = RunMark{now_, 0, outer.depth + 1};
  return outer;
}

}  // namespace Dov
