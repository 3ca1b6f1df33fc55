#include "runtime/dov/RealTimePolicy.h"

#include <chrono>

#include "runtime/qel/Exceptions.h"

namespace Dov {

RealTimePolicy::RealTimePolicy(double quantum) : quantum_(kDefaultQuantum) { quantumIs(quantum); }

void RealTimePolicy::quantumIs(double seconds) {
  if (!(seconds > 0)) Qel::throwRangeException("Dov::RealTimePolicy::quantum must be > 0");
  quantum_ = seconds;
}

double RealTimePolicy::monotonicTime() noexcept {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

SchedulingPolicy::RunMark RealTimePolicy::runBegin() {
  const RunMark outer = run_;
  run_ = RunMark{monotonicTime(), 0, outer.depth + 1};
  return outer;
}

bool RealTimePolicy::shouldYield() {
  ++run_.asks;
  return monotonicTime() >= run_.start + quantum_;
}

}  // namespace Dov
