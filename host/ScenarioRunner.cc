#include "host/ScenarioRunner.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <map>

#include "host/AgentAssertion.h"
#include "host/ExpectationChecker.h"
#include "host/RunFailure.h"

namespace VekHost {

namespace {

std::string stepName(const Step& step) {
  return fmt::format("step {} (line {}): {}", step.index, step.line, stepVerb(step.action));
}

std::string where(const Scenario& scenario, const Step& step) {
  return scenario.file + ": " + stepName(step);
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
  AgentAssertion::positionIs(scenario.file + ": setting up the agent");
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
    AgentAssertion::positionIs(where(scenario, step));
    try {
      if (!expect) {
        if (afterExpect) window = {driver_.commandCount(), driver_.traceCount()};
        afterExpect = false;
        driver_.stepBegins(stepName(step));
        apply(step.action);
      } else {
        afterExpect = true;
        driver_.stepBegins(stepName(step));
        ExpectationChecker checker(driver_, intfId_, window);
        if (auto difference = checker.check(expect->expectation)) {
          result.status = RunResult::Status::failed;
          result.messages.push_back(where(scenario, step) + " " + *difference);
          return result;
        }
        ++result.expectationsPassed;
      }
    } catch (const RunFailure& error) {
      result.status = RunResult::Status::failed;
      result.messages.push_back(where(scenario, step) + " stopped: " + error.what());
      return result;
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
  AgentAssertion::positionIs(scenario.file + ": after the last step");
  if (auto never = failuresNeverFired(scenario)) {
    result.status = RunResult::Status::failed;
    result.messages.push_back(*never);
  }
  return result;
}

std::optional<std::string> ScenarioRunner::failuresNeverFired(const Scenario& scenario) {
  // The data plane takes the oldest waiting failure of a module and command first, so the
  // ones left are the latest steps that named them.
  std::map<std::pair<std::string, std::string>, int> left;
  for (auto& waiting : driver_.failuresWaiting()) ++left[waiting];
  std::vector<std::string> steps;
  for (auto step = scenario.steps.rbegin(); step != scenario.steps.rend(); ++step) {
    const auto* failure = std::get_if<FailNextStep>(&step->action);
    if (!failure) continue;
    auto it = left.find({failure->module, failure->cmd});
    if (it == left.end() || it->second == 0) continue;
    --it->second;
    steps.insert(steps.begin(), fmt::format("step {} (line {}): {} {}", step->index, step->line,
                                            failure->module, failure->cmd));
  }
  if (steps.empty()) return std::nullopt;
  return fmt::format(
      "{}: a failNext never fired, as no such command came by the end of the "
      "run: {}",
      scenario.file, fmt::join(steps, "; "));
}

}  // namespace VekHost
