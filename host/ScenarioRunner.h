#pragma once

#include <optional>
#include <string>

#include "host/IntfIdEncoder.h"
#include "host/RunResult.h"
#include "host/Scenario.h"
#include "host/ScenarioDriver.h"

namespace VekHost {

// Runs the steps of a scenario through a driver and judges its expect steps. The window of
// an expect (for commands and trace) starts where the previous run of expect steps ended:
// consecutive expect steps share one window, so several of them can look at what one step
// did. The run stops at the first expectation that fails.
class ScenarioRunner {
 public:
  ScenarioRunner(ScenarioDriver& driver, IntfIdEncoder intfId)
      : driver_(driver), intfId_(std::move(intfId)) {}

  RunResult run(const Scenario& scenario);

 private:
  void apply(const StepAction& action);
  // What a run that passed must still say: the failNext steps whose command never came.
  std::optional<std::string> failuresNeverFired(const Scenario& scenario);

  ScenarioDriver& driver_;
  IntfIdEncoder intfId_;
};

}  // namespace VekHost
