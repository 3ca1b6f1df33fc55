#include "runtime/dov/RealTimePolicy.h"

#include <algorithm>
#include <chrono>

#include "runtime/lumo/Exceptions.h"

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

// A step of a busy task (a route, say) costs a few hundred nanoseconds, and so does
// reading the clock. The clock is therefore read again only after as many asks as fit,
// at the pace of the run so far, into a hundredth of the share, and after 64 at most: a
// run overshoots its share by about a hundredth, never by more than 64 steps.
bool RealTimePolicy::shouldYield() {
  ++run_.asks;
  if (run_.asks < run_.nextClockRead) return false;
  const double used = monotonicTime() - run_.start;
  if (used >= quantum_) return true;
  constexpr double kShareBetweenReads = 0.01;
  constexpr double kMostAsksBetweenReads = 64;
  const double perAsk = used / static_cast<double>(run_.asks);
  const double asks =
      perAsk > 0 ? quantum_ * kShareBetweenReads / perAsk : kMostAsksBetweenReads;
  run_.nextClockRead =
      run_.asks + static_cast<std::uint64_t>(std::clamp(asks, 1.0, kMostAsksBetweenReads));
  return false;
}

}  // namespace Dov
