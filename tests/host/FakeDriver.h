#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "host/IntfIdEncoder.h"
#include "host/MarkedLog.h"
#include "host/ScenarioDriver.h"

namespace VekHost {

// A stand-in for the agent and the data plane that keeps real state: central state as
// written, a FIB module per started VRF and family whose table follows the routes on each
// settle, a command log and trace lines. Enough to run scenarios end to end; time and
// refusals of the daemon are left to the real agent's scenarios.
class FakeDriver : public ScenarioDriver {
 public:
  void configure(const AgentSettings&) override {}
  void applyState(const StateChange& change, StateOp op) override;
  void createAgent() override;
  void start(const VrfAf& vrfAf) override;
  void stop(const VrfAf& vrfAf) override;
  void settle() override;
  void advance(double) override {}
  void restart() override;
  void failNext(const FailNextStep&) override {}

  nlohmann::json dump() override { return dataPlane_; }
  std::string dot() override;
  std::size_t commandCount() override { return commands_.count(); }
  std::vector<nlohmann::json> commandsSince(std::size_t mark) override {
    return commands_.since(mark);
  }
  std::size_t traceCount() override { return trace_.count(); }
  std::vector<TraceLine> traceSince(std::size_t mark) override { return trace_.since(mark); }

  // A deterministic id for names of the usual forms.
  static IntfIdEncoder intfIdEncoder();

 private:
  using RouteId = std::tuple<std::string, Af, std::string, std::string>;  // vrf, af, app, key
  void command(nlohmann::json record);
  void moduleCmd(const std::string& module, const std::string& cmd, const nlohmann::json& arg);
  void syncRoutes(const VrfAf& vrfAf);

  std::map<RouteId, Mroute> routes_;
  std::set<std::pair<std::string, Af>> started_;
  nlohmann::json dataPlane_ = {{"modules", nlohmann::json::object()},
                               {"ports", nlohmann::json::object()},
                               {"errors", nlohmann::json::array()}};
  MarkedLog<nlohmann::json> commands_;
  MarkedLog<TraceLine> trace_;
};

}  // namespace VekHost
