#pragma once

#include <functional>
#include <string>

namespace VekHost {

// Turns a failed assertion of the agent into one line that says where the run was, instead
// of a dump of the trace ring on the terminal. The runner says where the run is; whoever
// runs a scenario says what becomes of the line. The process ends after `report`.
class AgentAssertion {
 public:
  using Report = std::function<void(const std::string& line)>;

  // Installs `report` for the life of the guard.
  explicit AgentAssertion(Report report);
  ~AgentAssertion();
  AgentAssertion(const AgentAssertion&) = delete;
  AgentAssertion& operator=(const AgentAssertion&) = delete;

  // "<scenario>: step 3 (line 12): start", or what the run is doing between steps.
  static void positionIs(std::string position);

  // The line for an assertion of `text` at `file`:`line` at the current position.
  static std::string line(const char* text, const char* file, int line);
};

}  // namespace VekHost
