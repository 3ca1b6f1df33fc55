#include "tests/mfib/RouteSyncFixture.h"

namespace MfibTest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The decision of one key, after the review has ended: what the module gets when the
// tables change.
class RouteDecisionTest : public RouteSyncFixture {
 protected:
  void SetUp() override {
    fib->intfIdToOutGateIs(intf("Ethernet3"), Vek::GateId(10));
    fib->intfIdToOutGateIs(intf("Ethernet4"), Vek::GateId(11));
    sm = makeSm(oru);
    // A review ends only over a table that has routes.
    table(MfibAppType::pim)->routeIs(route(key("10.9.9.9"), "Ethernet1", {}));
    sm->mfibVrfAdapterIs(adapter);
    settle();
    ASSERT_TRUE(sm->reviewedOnce());
    routeCommands();
  }

  bool oru = true;
  Lumo::Ptr<VekL3Mcast::VekL3MfibSm> sm;
};

TEST_F(RouteDecisionTest, OnlyTheBestApplicationsRouteReachesTheModule) {
  const IpGenRouteKey k = key("10.1.1.1");
  table(MfibAppType::igmp)->routeIs(route(k, "Ethernet1", {"Ethernet4"}));
  settle();
  table(MfibAppType::pim)->routeIs(route(k, "Ethernet1", {"Ethernet3"}));
  settle();
  EXPECT_THAT(routeCommands(), ElementsAre("addMroute 10.1.1.1,239.1.1.1",
                                           "addMroute 10.1.1.1,239.1.1.1"));
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Et3:10"));

  // The worse application changes its route: nothing goes out.
  table(MfibAppType::igmp)->routeIs(route(k, "Ethernet2", {"Ethernet3", "Ethernet4"}));
  settle();
  EXPECT_THAT(routeCommands(), IsEmpty());

  // The worse application lets go, and comes back: the module keeps the best route.
  table(MfibAppType::igmp)->routeDel(k);
  settle();
  EXPECT_THAT(routeCommands(), IsEmpty());
  table(MfibAppType::igmp)->routeIs(route(k, "Ethernet2", {"Ethernet3", "Ethernet4"}));
  settle();
  EXPECT_THAT(routeCommands(), IsEmpty());

  // The best one lets go: the other's route takes its place, with no delete between.
  const auto mark = Trace::mark();
  table(MfibAppType::pim)->routeDel(k);
  settle();
  EXPECT_THAT(routeCommands(), ElementsAre("addMroute 10.1.1.1,239.1.1.1"));
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Et3:10", "Et4:11"));
  EXPECT_EQ(traced("Found alternate route 10.1.1.1,239.1.1.1 from vash table igmp", mark), 1u);

  // Gone from every table: one delete.
  table(MfibAppType::igmp)->routeDel(k);
  settle();
  EXPECT_THAT(routeCommands(), ElementsAre("deleteMroute 10.1.1.1,239.1.1.1"));
  EXPECT_FALSE(routes().contains("10.1.1.1,239.1.1.1"));
}

TEST_F(RouteDecisionTest, AnIncomingNull0OrNoIncomingInterfaceRemovesTheRoute) {
  const IpGenRouteKey k = key("10.1.1.1");
  Route noIif = route(k, "Ethernet1", {"Ethernet3"});
  noIif.iifIs(Lanx::IntfId());
  for (const Route& r : {route(k, "Ethernet1", {"Ethernet3"}), route(k, "Null0", {"Ethernet3"}),
                         route(k, "Ethernet1", {"Ethernet3"}), noIif}) {
    table(MfibAppType::pim)->routeIs(r);
    settle();
  }
  EXPECT_THAT(routeCommands(), ElementsAre("addMroute 10.1.1.1,239.1.1.1",
                                           "deleteMroute 10.1.1.1,239.1.1.1",
                                           "addMroute 10.1.1.1,239.1.1.1",
                                           "deleteMroute 10.1.1.1,239.1.1.1"));
  EXPECT_FALSE(routes().contains("10.1.1.1,239.1.1.1"));
}

TEST_F(RouteDecisionTest, TheInterfaceListGivesTheIncomingIdAndTheOutgoingSet) {
  const IpGenRouteKey k = key("10.1.1.1");
  // The last incoming member wins; a member with both flags is incoming only; Null0 and
  // members with no flag are left out.
  Route r(k, intf("Ethernet1"), Route::fastdropFlag | Route::oifRegisterFlag);
  r.intfIs(intf("Ethernet1"), RouteIntf::incomingFlag);
  r.intfIs(intf("Ethernet2"), RouteIntf::incomingFlag | RouteIntf::outgoingFlag);
  r.intfIs(intf("Ethernet3"), RouteIntf::outgoingFlag);
  r.intfIs(intf("Null0"), RouteIntf::outgoingFlag);
  r.intfIs(intf("Ethernet4"), 0);
  table(MfibAppType::pim)->routeIs(r);
  settle();
  const Json got = routes()["10.1.1.1,239.1.1.1"];
  EXPECT_EQ(got["iif"], std::to_string(intf("Ethernet2").value()));
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Et3:10"));
  EXPECT_EQ(got["fastdrop"], true);
  EXPECT_EQ(got["iifRegister"], false);
  EXPECT_EQ(got["oifRegister"], true);

  // Only Null0 going out: the route is programmed with no gates.
  table(MfibAppType::pim)->routeIs(route(k, "Ethernet1", {"Null0"}));
  settle();
  EXPECT_TRUE(routes().contains("10.1.1.1,239.1.1.1"));
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), IsEmpty());
}

TEST_F(RouteDecisionTest, ASwitchingRouteLeavesTheModuleUnlessItsIncomingIsRegister) {
  auto pim = table(MfibAppType::pim);
  pim->routeIs(route(key("10.1.1.1"), "Ethernet1", {"Ethernet3"}));
  pim->routeIs(route(key("10.1.1.2"), "Ethernet1", {"Ethernet3"}));
  settle();
  routeCommands();

  const auto mark = Trace::mark();
  pim->routeIs(route(key("10.1.1.1"), "Ethernet1", {"Ethernet3"}, Route::switchingFlag));
  pim->routeIs(route(key("10.1.1.2"), "Register0", {"Ethernet3"},
                     Route::switchingFlag | Route::iifRegisterFlag));
  settle();
  EXPECT_FALSE(routes().contains("10.1.1.1,239.1.1.1"));
  EXPECT_EQ(routes()["10.1.1.2,239.1.1.1"]["iifRegister"], true);
  EXPECT_EQ(traced("Route in switching state, remove the route from bess: 10.1.1.1,239.1.1.1",
                   mark),
            1u);
}

class RouteDecisionWithoutOruTest : public RouteDecisionTest {
 protected:
  RouteDecisionWithoutOruTest() { oru = false; }
};

TEST_F(RouteDecisionWithoutOruTest, TheSwitchingStateIsNotLookedAt) {
  table(MfibAppType::pim)->routeIs(route(key("10.1.1.1"), "Ethernet1", {"Ethernet3"},
                                         Route::switchingFlag));
  settle();
  EXPECT_THAT(routeCommands(), ElementsAre("addMroute 10.1.1.1,239.1.1.1"));
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Et3:10"));
}

TEST_F(RouteDecisionTest, WithTheWildcardToggleOffStarGRoutesAreLeftAsTheyAre) {
  auto pim = table(MfibAppType::pim);
  pim->routeIs(route(key("*"), "Ethernet1", {"Ethernet3"}));
  settle();
  ASSERT_THAT(gatesOf("*,239.1.1.1"), ElementsAre("Et3:10"));
  routeCommands();

  Toggle::overrideIs("MfaWcFwd", false);
  VekL3Mcast::VekL3MfibSm::wcFwdEnabledReloadForTest();
  pim->routeIs(route(key("*"), "Ethernet1", {"Ethernet4"}));
  pim->routeIs(route(key("*", "239.2.2.2"), "Ethernet1", {"Ethernet4"}));
  pim->routeIs(route(key("10.1.1.1"), "Ethernet1", {"Ethernet4"}));
  settle();
  pim->routeDel(key("*"));
  settle();
  // Neither add nor delete for a *,G route; S,G routes go on as before.
  EXPECT_THAT(routeCommands(), ElementsAre("addMroute 10.1.1.1,239.1.1.1"));
  EXPECT_THAT(gatesOf("*,239.1.1.1"), ElementsAre("Et3:10"));
  EXPECT_FALSE(routes().contains("*,239.2.2.2"));
}

}  // namespace
}  // namespace MfibTest
