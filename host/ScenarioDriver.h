#pragma once

#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/AgentSettings.h"
#include "host/StateChange.h"
#include "host/Step.h"
#include "runtime/trace/Trace.h"

namespace VekHost {

// What a scenario run needs of the agent, its central state and the data plane. The driver
// only applies; ScenarioRunner owns the order of steps, the windows of the expectations and
// the reports. The runner calls, in this order: configure, applyState (the initial state),
// createAgent, then one call per step. Every value it passes has been checked when loading.
// A call that cannot be carried out throws an exception derived from std::exception; the
// runner reports it with the step and stops.
class ScenarioDriver {
 public:
  virtual ~ScenarioDriver() = default;

  // Settings fixed for the life of the agent, given once before the agent exists.
  virtual void configure(const AgentSettings& settings) = 0;
  // Writes (StateOp::set, an upsert) or removes central state.
  virtual void applyState(const StateChange& change, StateOp op) = 0;
  // Constructs the agent over the state written so far.
  virtual void createAgent() = 0;
  virtual void start(const VrfAf& vrfAf) = 0;
  virtual void stop(const VrfAf& vrfAf) = 0;
  // Runs tasks and timers until nothing is pending.
  virtual void settle() = 0;
  // Moves the simulated clock on, running what falls due.
  virtual void advance(double seconds) = 0;
  // Destroys the agent and makes a new one with the same settings; the data plane stays.
  virtual void restart() = 0;
  // The data plane refuses the next command `cmd` to `module` with `code` and `msg`.
  virtual void failNext(const FailNextStep& failure) = 0;
  // Marks in the trace where a step begins; `step` says which ("step 3 (line 12): start").
  virtual void stepBegins(const std::string& step) { (void)step; }
  // Kills or starts the daemon process of the run; a driver without one refuses.
  virtual void daemon(DaemonStep::Kind kind);
  // The failures of failNext whose command has not come yet, as module and command, in the
  // order they were asked for. A driver whose data plane never refuses has none.
  virtual std::vector<std::pair<std::string, std::string>> failuresWaiting() { return {}; }

  // The model dump: modules, ports, traffic classes, errors.
  virtual nlohmann::json dump() = 0;

  // What a route expectation looks at: a FIB module and one of its routes.
  struct FibRoute {
    bool moduleExists = false;
    std::size_t routeCount = 0;
    std::optional<nlohmann::json> route;  // as the dump shows it
  };
  // What the run's summary tells of the data plane.
  struct Counts {
    std::size_t modules = 0;
    std::size_t ports = 0;
    std::size_t links = 0;
    std::size_t trafficClasses = 0;
    std::size_t errors = 0;
    std::optional<bool> workersResumed;
    std::vector<std::pair<std::string, std::size_t>> fibRoutes;  // FIB module, route count
    std::map<std::string, std::size_t> commandsByKind;
    std::size_t commands = 0;
  };
  // Both come from the dump and the command log unless a driver can answer them at a cost
  // that does not grow with the size of the data plane.
  virtual FibRoute fibRoute(const std::string& module, const RouteKey& key);
  virtual Counts counts();
  // The data plane as DOT text.
  virtual std::string dot() = 0;
  // Command-log records are numbered from 0 in channel order; a mark is a count of them.
  virtual std::size_t commandCount() = 0;
  virtual std::vector<nlohmann::json> commandsSince(std::size_t mark) = 0;
  // The same for trace records, each one line of text with its level. The marks of
  // stepBegins are among them, told apart: they are the host's, not the agent's.
  struct TraceLine {
    Trace::Level level = Trace::Level::info;
    std::string text;
    bool stepMark = false;
  };
  virtual std::size_t traceCount() = 0;
  virtual std::vector<TraceLine> traceSince(std::size_t mark) = 0;
};

}  // namespace VekHost
