#pragma once

#include <string>
#include <variant>

#include "host/Expectation.h"
#include "host/ScenarioValues.h"
#include "host/StateChange.h"

namespace VekHost {

struct StartStep {
  VrfAf vrfAf;
  // The start is meant to come before the VRF has an id (the agent then builds with the
  // unknown id); without it such a start is refused when loading.
  bool unknownId = false;
};
struct StopStep {
  VrfAf vrfAf;
};
struct SettleStep {};
struct StateStep {
  StateOp op = StateOp::set;
  StateChange change;
};
struct AdvanceStep {
  double seconds = 0;
};
// The next command of that name to that module is refused by the data plane.
struct FailNextStep {
  std::string module;
  std::string cmd;
  int code = 0;
  std::string msg;
};
struct RestartStep {};
// The daemon process is killed, started, or both: only in a run with its own daemon.
struct DaemonStep {
  enum class Kind { restart, stop, start } kind = Kind::restart;
};
struct ExpectStep {
  Expectation expectation;
};

using StepAction = std::variant<StartStep, StopStep, SettleStep, StateStep, AdvanceStep,
                                FailNextStep, RestartStep, DaemonStep, ExpectStep>;

struct Step {
  int index = 0;  // 1-based position in `steps:`
  int line = 0;   // line of the step in the scenario file
  StepAction action;
};

// The verb of a step as the file writes it ("start", "delete", ...).
std::string_view stepVerb(const StepAction& action);

}  // namespace VekHost
