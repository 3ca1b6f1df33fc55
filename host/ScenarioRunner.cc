#include "host/ScenarioRunner.h"

#include <fmt/format.h>

#include "host/ExpectationChecker.h"

namespace VekHost {

namespace {

std::string where(const Scenario& scenario, const Step& step) {
  return fmt::format("{}: step {} (line {}): {}", scenario.file, step.index, step.line,
                     stepVerb(step.action));
}

}  // namespace

void ScenarioRunner::apply(const StepAction& action) {
  struct Apply {
    ScenarioDriver& driver;
    void operator()(const StartStep& step) const { driver.start(step.vrfAf); }
    void operator()(const StopStep& step) const { driver.stop(step.vrfAf); }
    void operator()(const SettleStep&) const { driver.settle(); }
    void operator()(const StateStep& step) const { driver.applyState(step.change, step.op); }
    void operator()(const AdvanceStep& step) const { driver.advance(step.seconds); }
    void operator()(const FailNextStep& step) const { driver.failNext(step); }
    void operator()(const RestartStep&) const { driver.restart(); }
    void operator()(const DaemonStep& step) const { driver.daemon(step.kind); }
    void operator()(const ExpectStep&) const {}
  };
  std::visit(Apply{driver_}, action);
}

RunResult ScenarioRunner::run(const Scenario& scenario) {
  RunResult result;
  try {
    driver_.configure(scenario.agent);
    driver_.applyState(scenario.state, StateOp::set);
    driver_.createAgent();
  } catch (const std::exception& error) {
    result.status = RunResult::Status::badInput;
    result.messages.push_back(
        fmt::format("{}: the agent could not be set up: {}", scenario.file, error.what()));
    return result;
  }
  ExpectationChecker::Window window;
  bool afterExpect = false;
  for (const Step& step : scenario.steps) {
    const auto* expect = std::get_if<ExpectStep>(&step.action);
    try {
      if (!expect) {
        if (afterExpect) window = {driver_.commandCount(), driver_.traceCount()};
        afterExpect = false;
        apply(step.action);
      } else {
        afterExpect = true;
        ExpectationChecker checker(driver_, intfId_, window);
        if (auto difference = checker.check(expect->expectation)) {
          result.status = RunResult::Status::failed;
          result.messages.push_back(where(scenario, step) + " " + *difference);
          return result;
        }
        ++result.expectationsPassed;
      }
    } catch (const CannotCheck& error) {
      result.status = RunResult::Status::badInput;
      result.messages.push_back(where(scenario, step) + ": " + error.what());
      return result;
    } catch (const std::exception& error) {
      result.status = RunResult::Status::badInput;
      result.messages.push_back(where(scenario, step) + " could not be applied: " + error.what());
      return result;
    }
    ++result.stepsRun;
  }
  return result;
}

}  // namespace VekHost
