#pragma once

#include <google/protobuf/any.pb.h>
#include <google/protobuf/util/json_util.h>

#include <map>
#include <string>
#include <vector>

#include "mfib/VekL3MfibSm.h"
#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/state/MfibRoute.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/MfibVrfAdapter.h"
#include "runtime/toggle/ToggleState.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "tests/mfib/FibFixture.h"

namespace MfibTest {

using Routing::Multicast::Fib::IpGenRouteKey;
using Routing::Multicast::Fib::MfibAppType;
using Vash::Multicast::Fib::Route;
using Vash::Multicast::Fib::RouteIntf;
using Vash::Multicast::Fib::Status;

// A route machine over real tables, a simulated scheduler and the daemon model. The tests
// write tables as a routing agent would, run the task and look at what the daemon holds
// and at the commands that reached it.
class RouteSyncFixture : public FibFixture {
 protected:
  RouteSyncFixture() { fib->txDemuxerGateIdIs(Vek::GateId(4)); }
  ~RouteSyncFixture() override {
    Toggle::overrideDelAll();
    VekL3Mcast::VekL3MfibSm::wcFwdEnabledReloadForTest();
  }

  Lumo::Ptr<VekL3Mcast::VekL3MfibSm> makeSm(bool oru = true) {
    auto made = VekL3Mcast::vekL3MfibSmFactory(L3::VrfName("red"), Lanx::AddressFamily::ipv4, oru,
                                               fib, pair, group, vekcsd, scheduler);
    made->hasNotificationActiveIs(true);
    return made;
  }
  // The table of an application, made and added to the adapter on first use.
  Lumo::Ptr<Status> table(MfibAppType app) {
    auto& t = tables_[app];
    if (!t) {
      t = Lumo::makePtr<Status>(app, L3::VrfName("red"), Lanx::AddressFamily::ipv4);
      adapter->mfibVashIs(app, t);
    }
    return t;
  }

  static IpGenRouteKey key(const char* source, const char* group = "239.1.1.1") {
    return IpGenRouteKey(Lanx::IpGenPrefix(source), Lanx::IpGenPrefix(group));
  }
  static IpGenRouteKey key(int n) {
    return IpGenRouteKey(Lanx::IpGenAddr::ipv4(0x0a000000u + static_cast<std::uint32_t>(n)),
                         Lanx::IpGenPrefix("239.1.1.1"));
  }
  static Route route(const IpGenRouteKey& k, const char* iif, std::initializer_list<const char*> oifs,
                     std::uint8_t flags = 0) {
    Route r(k, Lanx::IntfId(iif), flags);
    r.intfIs(Lanx::IntfId(iif), RouteIntf::incomingFlag);
    for (const char* oif : oifs) r.intfIs(Lanx::IntfId(oif), RouteIntf::outgoingFlag);
    return r;
  }

  // Runs the task until nothing is armed, then lets the channel carry what was queued.
  void settle() {
    scheduler->runUntilIdle();
    channel->pump();
  }
  void runOnce() {
    scheduler->runOne();
    channel->pump();
  }

  // Route commands that reached the daemon since the last call, as "cmd key".
  std::vector<std::string> routeCommands() {
    channel->pump();
    std::vector<std::string> out;
    for (const auto& e : channel->commandLog().entriesSince(routeSeq_)) {
      if (e["kind"] != "moduleCmd") continue;
      const std::string cmd = e["cmd"];
      if (cmd != "addMroute" && cmd != "deleteMroute") continue;
      google::protobuf::Any packed;  // the log keeps the argument as it travels
      vek::pb::MfibRouteArg arg;
      EXPECT_TRUE(google::protobuf::util::JsonStringToMessage(e["arg"].dump(), &packed).ok() &&
                  packed.UnpackTo(&arg));
      out.push_back(cmd + " " + address(arg.source()) + "," + address(arg.group()));
    }
    routeSeq_ = channel->commandLog().lastSeq();
    return out;
  }
  // How many trace records since `mark` hold `text`.
  static std::size_t traced(const std::string& text, std::uint64_t mark) {
    std::size_t n = 0;
    for (const auto& record : Trace::recordsSince(mark)) {
      if (record.text.find(text) != std::string::npos) ++n;
    }
    return n;
  }
  static std::string text(const IpGenRouteKey& k) { return k.toString(); }

  Lumo::Ptr<Dov::TaskScheduler> scheduler = Dov::TaskScheduler::makeSimulation(1000);
  Lumo::Ptr<Vek::CmdConfigGroup> group = Lumo::makePtr<Vek::CmdConfigGroup>("mfaAgent");
  Lumo::Ptr<Routing::Multicast::Fib::MfibVrfAdapter> adapter =
      Lumo::makePtr<Routing::Multicast::Fib::MfibVrfAdapter>(L3::VrfName("red"),
                                                             Lanx::AddressFamily::ipv4);

 private:
  // A raw address of a route argument as text; empty for a *,G source.
  static std::string address(const std::string& raw) {
    if (raw.empty()) return "*";
    auto addr = Lanx::IpGenAddr::fromRawBytes(
        {reinterpret_cast<const std::uint8_t*>(raw.data()), raw.size()});
    return addr ? addr->toString() : "?";
  }

  std::map<MfibAppType, Lumo::Ptr<Status>> tables_;
  std::uint64_t routeSeq_ = 0;
};

}  // namespace MfibTest
