#pragma once

#include <string>
#include <vector>

namespace VekHost {

// How a scenario ended and why.
struct RunResult {
  enum class Status { passed, failed, badInput, agentAssertion };

  Status status = Status::passed;
  // For all but passed: what went wrong, each naming the scenario and where.
  std::vector<std::string> messages;
  int stepsRun = 0;
  int expectationsPassed = 0;

  // 0 passed, 1 an expectation failed (or the run could not end as it must), 2 bad input,
  // 3 the agent failed one of its assertions.
  int exitCode() const { return static_cast<int>(status); }
};

}  // namespace VekHost
