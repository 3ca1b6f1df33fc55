#pragma once

#include <string>
#include <vector>

namespace VekHost {

// How a scenario ended and why.
struct RunResult {
  enum class Status { passed, failed, badInput };

  Status status = Status::passed;
  // For failed and badInput: what went wrong, each naming the scenario and where.
  std::vector<std::string> messages;
  int stepsRun = 0;
  int expectationsPassed = 0;

  // 0 passed, 1 an expectation failed, 2 bad input.
  int exitCode() const { return static_cast<int>(status); }
};

}  // namespace VekHost
