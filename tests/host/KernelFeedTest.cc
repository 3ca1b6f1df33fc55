#include "host/KernelFeed.h"

#include <gtest/gtest.h>

namespace VekHost {
namespace {

using Kernel::Family;
using Kernel::Link;
using Kernel::LinkAdded;
using Kernel::LinkRemoved;
using Kernel::McastRoute;
using Kernel::RouteAdded;
using Kernel::RouteRemoved;

Link device(int index, const char* name, int master = 0) {
  return Link{index, name, true, true, master, {}};
}

McastRoute route(std::uint32_t table, const char* group, int iif, std::vector<int> oifs) {
  return McastRoute{{Family::ipv4, table, "10.1.0.5", group}, iif, std::move(oifs)};
}

// Central state as the feed's updates leave it: routes by VRF and group, with interfaces.
struct Written {
  std::map<std::pair<std::string, std::string>, std::pair<std::string, std::vector<std::string>>>
      routes;
  std::map<std::string, uint32_t> vrfs;
  std::set<std::string> started;

  void apply(const KernelFeed::Update& update) {
    for (const VrfAf& vrfAf : update.stops) started.erase(vrfAf.vrf);
    for (const auto& [change, op] : update.changes) {
      for (const Mroute& mroute : change.mroutes) {
        const auto key = std::pair{mroute.table.vrfAf.vrf, mroute.key.group};
        if (op == StateOp::set) {
          EXPECT_TRUE(vrfs.contains(mroute.table.vrfAf.vrf)) << "a route before its VRF";
          routes[key] = {mroute.iif, mroute.oifs};
        } else {
          EXPECT_EQ(routes.erase(key), 1u) << "removed a route never written";
        }
      }
      for (const auto& [vrf, id] : change.vrfs) {
        if (op == StateOp::set) {
          vrfs[vrf] = id;
        } else {
          vrfs.erase(vrf);
        }
      }
    }
    for (const VrfAf& vrfAf : update.starts) started.insert(vrfAf.vrf);
  }
};

class KernelFeedTest : public ::testing::Test {
 protected:
  void feed(const Kernel::RtMessage& message) {
    tables_.apply(message);
    written_.apply(feed_.update(tables_, tables_.takeChanges()));
  }

  Kernel::KernelTables tables_;
  KernelFeed feed_{"pim", {Family::ipv4}};
  Written written_;
};

TEST_F(KernelFeedTest, RoutesWaitForTheirInterfacesAndLeaveWithThem) {
  feed(LinkAdded{device(3, "et1")});
  feed(LinkAdded{device(1, "lo")});
  EXPECT_EQ(written_.started, std::set<std::string>{"default"});
  EXPECT_EQ(written_.vrfs.at("default"), KernelFeed::kMainTable);

  feed(RouteAdded{route(253, "239.1.1.1", 3, {5})});  // et3 not there yet
  EXPECT_TRUE(written_.routes.empty());
  EXPECT_EQ(feed_.routesWaiting(), 1u);
  feed(LinkAdded{device(5, "et3")});
  const auto key = std::pair<std::string, std::string>{"default", "239.1.1.1"};
  EXPECT_EQ(written_.routes.at(key),
            (std::pair<std::string, std::vector<std::string>>{"Ethernet1", {"Ethernet3"}}));
  // A device that is no interface ("lo") keeps a route out, as an unknown one does.
  feed(RouteAdded{route(253, "239.1.1.2", 3, {1})});
  EXPECT_EQ(written_.routes.size(), 1u);

  feed(LinkRemoved{5});
  EXPECT_TRUE(written_.routes.empty());
  EXPECT_EQ(feed_.routesWaiting(), 2u);
  feed(RouteRemoved{route(253, "239.1.1.1", 0, {}).key});
  feed(RouteRemoved{route(253, "239.1.1.2", 0, {}).key});
  EXPECT_EQ(feed_.routesWaiting(), 0u);
}

TEST_F(KernelFeedTest, VrfDevicesAreVrfsWithTheirTablesRoutesAndPorts) {
  feed(LinkAdded{device(3, "et1")});
  feed(LinkAdded{device(4, "et2")});
  feed(RouteAdded{route(10, "239.2.2.2", 4, {3})});  // table 10 belongs to no VRF yet
  EXPECT_TRUE(written_.routes.empty());

  Link red{9, "red", true, false, 0, 10u};
  feed(LinkAdded{red});
  feed(LinkAdded{device(4, "et2", 9)});
  feed(LinkAdded{device(3, "et1", 9)});
  EXPECT_EQ(written_.vrfs.at("red"), 10u);
  EXPECT_EQ(written_.started, (std::set<std::string>{"default", "red"}));
  EXPECT_EQ(written_.routes.count({"red", "239.2.2.2"}), 1u);

  // A change of outgoing interfaces is one new write of the same route.
  feed(RouteAdded{route(10, "239.2.2.2", 4, {})});
  EXPECT_TRUE(written_.routes.at({"red", "239.2.2.2"}).second.empty());

  feed(LinkRemoved{9});
  EXPECT_FALSE(written_.vrfs.contains("red"));
  EXPECT_EQ(written_.started, std::set<std::string>{"default"});
  EXPECT_TRUE(written_.routes.empty());
}

}  // namespace
}  // namespace VekHost
