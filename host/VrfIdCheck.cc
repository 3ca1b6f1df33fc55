#include "host/VrfIdCheck.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <set>

namespace VekHost {

namespace {

const std::map<std::string, uint32_t>& ids(const StateChange& change, bool oru) {
  return oru ? change.vrfs : change.hwVrfs;
}

class Watch {
 public:
  Watch(const Scenario& scenario) : oru_(scenario.agent.oru) {}

  void apply(const StateChange& change, StateOp op) {
    for (const auto& [name, id] : ids(change, oru_)) {
      if (op == StateOp::set) {
        now_.insert(name);
        ever_.insert(name);
      } else {
        now_.erase(name);
      }
    }
    for (const Mroute& route : change.mroutes) use(route.table.vrfAf.vrf, route.table.line);
    for (const RouteTableName& table : change.tables) use(table.vrfAf.vrf, table.line);
  }
  void use(const std::string& vrf, int line) { used_.emplace_back(vrf, line); }
  bool hasId(const std::string& vrf) const { return now_.count(vrf) > 0; }
  std::string known() const {
    return now_.empty() ? std::string("none has one")
                        : fmt::format("those with one: {}", fmt::join(now_, ", "));
  }
  const char* idKey() const { return oru_ ? "vrfs" : "hwVrfs"; }

  std::vector<LoadError> warnings() const {
    std::vector<LoadError> warnings;
    std::set<std::string> warned;
    for (const auto& [vrf, line] : used_) {
      if (ever_.count(vrf) || !warned.insert(vrf).second) continue;
      warnings.emplace_back(line, fmt::format("VRF '{}' is never given an id (under '{}'); "
                                              "nothing of it reaches the data plane",
                                              vrf, idKey()));
    }
    return warnings;
  }

 private:
  bool oru_;
  std::set<std::string> now_;
  std::set<std::string> ever_;
  std::vector<std::pair<std::string, int>> used_;
};

}  // namespace

std::vector<LoadError> VrfIdCheck::check(const Scenario& scenario, std::vector<LoadError>& errors) {
  Watch watch(scenario);
  watch.apply(scenario.state, StateOp::set);
  for (const Step& step : scenario.steps) {
    if (const auto* state = std::get_if<StateStep>(&step.action)) {
      watch.apply(state->change, state->op);
    } else if (const auto* start = std::get_if<StartStep>(&step.action)) {
      if (start->unknownId || watch.hasId(start->vrfAf.vrf)) continue;
      errors.emplace_back(
          step.line,
          fmt::format("start of VRF '{}' before it has an id ({}); give it one under '{}' "
                      "first, or write unknownId: true to start it without",
                      start->vrfAf.vrf, watch.known(), watch.idKey()));
    } else if (const auto* expect = std::get_if<ExpectStep>(&step.action)) {
      if (const auto* route = std::get_if<RouteExpectation>(&expect->expectation)) {
        watch.use(route->vrfAf.vrf, step.line);
      }
    }
  }
  return watch.warnings();
}

}  // namespace VekHost
