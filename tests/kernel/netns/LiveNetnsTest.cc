// The agent fed from a live kernel: a namespace with veth pairs and a static multicast
// routing daemon, whose routes the data plane must follow. Needs root and smcroute; skips
// with the reason elsewhere. Every wait is bounded.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "host/DaemonChoice.h"
#include "host/DumpLayout.h"
#include "host/LiveRun.h"
#include "host/PluginDriver.h"
#include "kernel/KernelReader.h"
#include "kernel/NetnsScope.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/IntfId.h"
#include "tests/kernel/netns/NetnsLab.h"

namespace VekHost {
namespace {

using KernelLab::NetnsLab;

// What the kernel does in milliseconds may take a loaded CI machine a while.
constexpr double kPatience = 10;

std::string intfOfDevice(const std::string& device) {
  auto id = Lanx::IntfId::fromName(device);
  return id ? id->name() : "(" + device + ")";
}

// Whether a device of a lab's namespace shows IFF_ALLMULTI as set by a program.
bool allMulti(const NetnsLab& lab, const std::string& device) {
  const std::string shown = NetnsLab::run("ip -n " + lab.name() + " -o link show " + device);
  const auto open = shown.find('<');
  return shown.substr(open, shown.find('>') - open).find("ALLMULTI") != std::string::npos;
}

class LiveNetnsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (auto why = NetnsLab::whyNot()) GTEST_SKIP() << "kernel tests skipped: " << *why;
    // Shared memory outlives a driver in this process: the route tables an earlier case
    // filled would be followed by this case's agent as if the daemon held them.
    QelSharedMem::EntityManager::managersDelAllForTest();
    Qel::Entity::singletonDelAllForTest();
    lab_ = std::make_unique<NetnsLab>();
  }
  void TearDown() override { DaemonChoice::is(""); }

  void follow(std::size_t receiveBytes = Kernel::NetlinkSocket::kDefaultReceiveBytes) {
    reader_ = std::make_unique<Kernel::KernelReader>(lab_->name(), receiveBytes);
    live_ = std::make_unique<LiveRun>(driver_, *reader_, "pim");
    live_->begin();
  }

  // Runs the live loop until `done` holds or the patience runs out; gives whether it held.
  bool until(const std::function<bool()>& done) {
    const auto limit = std::chrono::steady_clock::now() +
                       std::chrono::duration<double>(kPatience);
    while (!done()) {
      if (std::chrono::steady_clock::now() > limit) return false;
      live_->waitAndApply(LiveRun::kTick);
    }
    return true;
  }

  // The routes of the FIB modules, in the kernel's terms, with interfaces by name.
  std::set<NetnsLab::Route> dataPlaneRoutes() {
    std::set<NetnsLab::Route> routes;
    const nlohmann::json dump = driver_.dump();
    for (const auto& [module, body] : dump.at("modules").items()) {
      const bool v4 = module.starts_with("MfibIpv4");
      if (!v4 && !module.starts_with("MfibIpv6")) continue;
      for (const auto& [key, route] : body["table"]["routes"].items()) {
        const auto comma = key.find(',');
        std::vector<std::string> oifs;
        for (std::uint64_t oif : DumpLayout::routeOifs(route)) {
          oifs.push_back(Lanx::IntfId(oif).name());
        }
        std::sort(oifs.begin(), oifs.end());
        routes.emplace(v4 ? "ipv4" : "ipv6", key.substr(0, comma), key.substr(comma + 1),
                       Lanx::IntfId(DumpLayout::routeIif(route).value_or(0)).name(),
                       std::move(oifs));
      }
    }
    return routes;
  }

  std::set<NetnsLab::Route> kernelRoutes() const {
    std::set<NetnsLab::Route> routes;
    for (auto [family, source, group, iif, oifs] : lab_->kernelRoutes()) {
      for (std::string& oif : oifs) oif = intfOfDevice(oif);
      std::sort(oifs.begin(), oifs.end());
      routes.emplace(family, source, group, intfOfDevice(iif), oifs);
    }
    return routes;
  }

  // The data plane holds exactly the kernel's `count` routes, within the patience.
  void expectSameRoutes(std::size_t count) {
    std::set<NetnsLab::Route> kernel;
    const bool same = until([&] {
      kernel = kernelRoutes();
      return kernel.size() == count && dataPlaneRoutes() == kernel;
    });
    EXPECT_TRUE(same) << "the kernel holds " << kernel.size() << " routes (" << count
                      << " expected), the data plane " << dataPlaneRoutes().size();
  }

  std::unique_ptr<NetnsLab> lab_;
  PluginDriver driver_;
  std::unique_ptr<Kernel::KernelReader> reader_;
  std::unique_ptr<LiveRun> live_;
};

TEST_F(LiveNetnsTest, TheDataPlaneFollowsRoutesTheDaemonAddsChangesAndRemoves) {
  lab_->ctl("add et1 10.1.0.5 239.1.1.1 et3");
  follow();
  EXPECT_EQ(live_->feed().routesWritten(), 1u) << "the route there before the start";
  lab_->ctl("add et1 10.1.0.6 239.1.1.2 et3");
  lab_->ctl("add et1 2001:db8::5 ff3e::1 et3");
  expectSameRoutes(3);
  lab_->ctl("add et1 10.1.0.6 239.1.1.2 et4");  // one more outgoing interface
  expectSameRoutes(3);
  lab_->ctl("remove et1 10.1.0.5 239.1.1.1");
  lab_->ctl("remove et1 2001:db8::5 ff3e::1");
  expectSameRoutes(1);
  // A device the routes use goes: its routes wait, out of the data plane.
  lab_->ip("link del et3");
  EXPECT_TRUE(until([&] { return dataPlaneRoutes().empty(); }));
}

TEST_F(LiveNetnsTest, ADaemonStoppedAndStartedAgainLeavesNoStaleRoute) {
  lab_->ctl("add et1 10.1.0.5 239.1.1.1 et3");
  lab_->ctl("add et1 10.1.0.6 239.1.1.2 et3 et4");
  follow();
  expectSameRoutes(2);
  lab_->stopDaemon();  // the kernel drops the routes of a daemon that goes
  expectSameRoutes(0);
  lab_->startDaemon();
  lab_->ctl("add et1 10.1.0.6 239.1.1.2 et4");
  expectSameRoutes(1);
}

TEST_F(LiveNetnsTest, ADaemonProcessFollowsAsTheModelDoes) {
  DaemonChoice::is("spawn");
  lab_->ctl("add et1 10.1.0.5 239.1.1.1 et3");
  follow();
  lab_->ctl("add et1 2001:db8::5 ff3e::1 et3 et4");
  expectSameRoutes(2);
}

TEST_F(LiveNetnsTest, AVrfDeviceIsAVrfOfItsOwn) {
  try {
    lab_->ip("link add red type vrf table 10");
  } catch (const std::exception& error) {
    GTEST_SKIP() << "this kernel makes no VRF devices: " << error.what();
  }
  lab_->ip("link set red up");
  lab_->ip("link set et3 master red");
  follow();
  EXPECT_TRUE(driver_.fibRoute("MfibIpv4red", RouteKey{"*", "239.1.1.1"}).moduleExists);
}

TEST_F(LiveNetnsTest, DeviceFlagsAreSetInTheFollowedNamespaceNotWhereTheHostRuns) {
  // The host stands in a namespace with devices of the same names, as mfa-host does when
  // it follows another one.
  NetnsLab hostSide;
  Kernel::NetnsScope there(hostSide.name());
  follow();
  EXPECT_TRUE(until([&] { return allMulti(*lab_, "et3"); }));
  EXPECT_FALSE(allMulti(hostSide, "et3"));
}

TEST_F(LiveNetnsTest, LostNotificationsAreMadeGoodByAResync) {
  // Room for a few notifications only: a burst overruns it.
  follow(2048);
  std::vector<std::string> adds;
  for (int i = 0; i < 300; ++i) {
    adds.push_back("add et1 10.1.0.5 239.2." + std::to_string(i / 200) + "." +
                   std::to_string(i % 200 + 1) + " et3");
  }
  lab_->ctlBatch(adds);
  expectSameRoutes(300);
  EXPECT_GT(reader_->resyncs(), 0u);
}

TEST_F(LiveNetnsTest, ABurstOfChangesCostsOneRouteCommandPerKey) {
  follow();
  const std::size_t mark = driver_.commandCount();
  std::vector<std::string> burst;
  for (int i = 1; i <= 50; ++i) {
    const std::string route = "add et1 10.1.0.5 239.3.0." + std::to_string(i);
    burst.push_back(route + " et3");
    burst.push_back(route + " et4");
  }
  lab_->ctlBatch(burst);
  // The whole burst is in the kernel before the host reads any of it.
  const auto limit = std::chrono::steady_clock::now() + std::chrono::duration<double>(kPatience);
  const auto wholeBurst = [this] {
    const auto routes = lab_->kernelRoutes();
    return routes.size() == 50 && std::all_of(routes.begin(), routes.end(), [](const auto& route) {
             return std::get<4>(route).size() == 2;
           });
  };
  while (!wholeBurst() && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  expectSameRoutes(50);
  std::size_t routeCommands = 0;
  for (const nlohmann::json& record : driver_.commandsSince(mark)) {
    if (record.value("kind", "") == "moduleCmd" && record.value("cmd", "") == "addMroute") {
      ++routeCommands;
    }
  }
  EXPECT_EQ(routeCommands, 50u);
}

}  // namespace
}  // namespace VekHost
