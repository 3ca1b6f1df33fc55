#include "mfib/OifSet.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleStatus.h"
#include "tests/mfib/FibFixture.h"

namespace MfibTest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using VekL3Mcast::OifSet;

const Lanx::IpGenPrefix source("10.1.1.1");
const Lanx::IpGenPrefix group("239.1.1.1");

OifSet oifs(std::initializer_list<const char*> names) {
  OifSet set;
  for (const char* name : names) set.oifIs(Lanx::IntfId(name), true);
  return set;
}

class MfibAfTest : public FibFixture {
 protected:
  void add(const OifSet& set, std::uint32_t rpaId = 0) {
    fib->addMroute(source, group, intf("Ethernet9").value(), 0, 0, 0, rpaId, true, false, true,
                   set);
  }
};

TEST(OifSetTest, MembershipCountsNotTheFlagAndOrderIsById) {
  OifSet set;
  set.oifIs(Lanx::IntfId("Vlan10"), false);
  set.oifIs(Lanx::IntfId("Ethernet2"), true);
  set.oifIs(Lanx::IntfId("Ethernet1"), true);
  set.oifIs(Lanx::IntfId("Ethernet2"), false);  // overwrites, stays one member
  EXPECT_EQ(set.oifCount(), 3u);
  EXPECT_TRUE(set.oifHas(Lanx::IntfId("Vlan10")));
  EXPECT_FALSE(set.oif(Lanx::IntfId("Ethernet2")));
  std::vector<std::string> order;
  for (const auto& [id, flag] : set) order.push_back(id.shortName());
  EXPECT_THAT(order, ElementsAre("Et1", "Et2", "Vl10"));

  OifSet other;
  other.oifIs(Lanx::IntfId("Ethernet1"), true);
  EXPECT_FALSE(set.isEq(other));
  EXPECT_TRUE(other < set);  // a prefix orders first
  set.oifDel(Lanx::IntfId("Ethernet2"));
  set.oifDel(Lanx::IntfId("Vlan10"));
  set.oifDel(Lanx::IntfId("Vlan99"));  // absent: nothing
  EXPECT_TRUE(set.isEq(other));
  set.oifDelAll();
  EXPECT_TRUE(set.empty());
}

TEST(OifSetDeathTest, HasNoTextForm) {
  EXPECT_DEATH(OifSet("Ethernet1"), "No String constructor for OifSet - has collection");
}

TEST_F(MfibAfTest, EachInterfaceLeavesByItsGateSbdByAFixedOneAndTheRestByTheDemux) {
  fib->intfIdToOutGateIs(intf("Ethernet1"), Vek::GateId(7));
  fib->intfIdToOutGateIs(intf("Vlan20"), Vek::GateId(9));  // SBD wins over the table
  fib->sbdVlanIntfIdIs(intf("Vlan20"));
  fib->txDemuxerGateIdIs(Vek::GateId(4));
  const auto mark = Trace::mark();

  add(oifs({"Ethernet1", "Vlan20", "Ethernet3"}));

  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Et1:7", "Et3:4", "Vl20:1"));
  EXPECT_TRUE(Trace::contains("Leaked OIF intfId: Et3, TxDemuxer gate: 4", mark));
  const Json route = routes()["10.1.1.1,239.1.1.1"];
  EXPECT_EQ(route["iif"], std::to_string(intf("Ethernet9").value()));
  EXPECT_EQ(route["fastdrop"], true);
  EXPECT_EQ(route["iifRegister"], false);
  EXPECT_EQ(route["oifRegister"], true);
  // The rendezvous point id is not sent.
  channel->pump();
  const auto sent = channel->commandLog().entries().back()["arg"];
  add(oifs({"Ethernet1", "Vlan20", "Ethernet3"}), 12345);
  channel->pump();
  EXPECT_EQ(channel->commandLog().entries().back()["arg"], sent);

  // The next route sees every change of the gate table, a gate that went and one that came.
  fib->intfIdToOutGateDel(intf("Ethernet1"));
  fib->intfIdToOutGateIs(intf("Ethernet3"), Vek::GateId(5));
  add(oifs({"Ethernet1", "Vlan20", "Ethernet3"}));
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Et1:4", "Et3:5", "Vl20:1"));

  // On the default VRF the SBD gate is 2.
  fib = makeFib("default");
  fib->sbdVlanIntfIdIs(intf("Vlan20"));
  add(oifs({"Vlan20"}));
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Vl20:2"));
}

TEST_F(MfibAfTest, AnInterfaceWithNoGateAtAllIsSkippedAndTheRouteStillGoesOut) {
  fib->intfIdToOutGateIs(intf("Ethernet1"), Vek::GateId(7));
  fib->intfIdToOutGateIs(intf("Ethernet2"), Vek::GateId());  // present but invalid
  const auto mark = Trace::mark();

  add(oifs({"Ethernet1", "Ethernet2"}));

  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), ElementsAre("Et1:7"));
  EXPECT_TRUE(Trace::contains("Skipping oif Et2 because oGate ID invalid is invalid", mark));

  add(OifSet());  // an empty set is a route with no gates, and replaces the old one
  EXPECT_THAT(gatesOf("10.1.1.1,239.1.1.1"), IsEmpty());
}

TEST_F(MfibAfTest, TheTestMirrorHoldsTheGatesOfTheLastRouteOnlyWhileEnabled) {
  fib->intfIdToOutGateIs(intf("Ethernet1"), Vek::GateId(7));
  add(oifs({"Ethernet1"}));
  EXPECT_EQ(fib->intfIdToOutGateIdForTestCount(), 0u);

  fib->testingEnabledIs(true);
  add(oifs({"Ethernet1", "Ethernet2"}));
  EXPECT_EQ(fib->intfIdToOutGateIdForTest(intf("Ethernet1")), Vek::GateId(7));
  // A skipped interface is mirrored with its invalid gate.
  EXPECT_TRUE(fib->intfIdToOutGateIdForTestHas(intf("Ethernet2")));
  EXPECT_FALSE(fib->intfIdToOutGateIdForTest(intf("Ethernet2")).isValid());

  fib->deleteMroute(source, group);
  EXPECT_EQ(fib->intfIdToOutGateIdForTestCount(), 0u);
  EXPECT_FALSE(routes().contains("10.1.1.1,239.1.1.1"));
}

// Route messages go back to the module once delivered and are built again in place: a
// reused message must carry nothing of the route it carried before.
TEST_F(MfibAfTest, AReusedRouteMessageCarriesNothingOfTheRouteBefore) {
  fib->intfIdToOutGateIs(intf("Ethernet1"), Vek::GateId(7));
  fib->intfIdToOutGateIs(intf("Ethernet2"), Vek::GateId(8));
  add(oifs({"Ethernet1", "Ethernet2"}));
  channel->pump();
  const Lanx::IpGenPrefix other("10.1.1.2");
  fib->deleteMroute(other, group);
  fib->addMroute(other, group, 0, 0, 0, 0, 0, false, false, false, oifs({"Ethernet2"}));
  channel->pump();
  const auto& log = channel->commandLog().entries();
  const Json deleted = log[log.size() - 2]["arg"];
  EXPECT_FALSE(deleted.contains("gates"));
  EXPECT_FALSE(deleted.contains("iif"));
  EXPECT_FALSE(deleted.contains("fastdrop"));
  EXPECT_THAT(gatesOf("10.1.1.2,239.1.1.1"), ElementsAre("Et2:8"));
  EXPECT_EQ(routes()["10.1.1.2,239.1.1.1"]["fastdrop"], false);

  // Commands still queued when their module goes are delivered all the same.
  add(oifs({"Ethernet1"}));
  fib = makeFib("blue");
  EXPECT_THAT(commandsSinceLast(), ::testing::Contains("addMroute"));
}

TEST_F(MfibAfTest, StarGRoutesAndIpv6AddressesTravelAsRawBytes) {
  fib->addMroute(Lanx::IpGenPrefix(), group, 0, 0, 0, 0, 0, false, false, false, OifSet());
  fib->addMroute(Lanx::IpGenPrefix("2001:db8::1"), Lanx::IpGenPrefix("ff0e::1"), 0, 0, 0, 0, 0,
                 false, false, false, OifSet());
  EXPECT_TRUE(routes().contains("*,239.1.1.1"));
  EXPECT_TRUE(routes().contains("2001:db8::1,ff0e::1"));
  fib->deleteMroute(Lanx::IpGenPrefix(), group);
  EXPECT_FALSE(routes().contains("*,239.1.1.1"));
}

TEST_F(MfibAfTest, LimitsInterfacesAndTheBridgeMacReachTheTableButAZeroMacIsNotSent) {
  fib->setMaxUnresolvedCacheEntries(4000);
  fib->setMaxUnresolvedPktBuffers(3);
  fib->addMulticastIntfs(intf("Ethernet1"));
  fib->addMulticastIntfs(intf("Ethernet2"));
  fib->deleteMulticastIntfs(intf("Ethernet1"));
  fib->setBridgeMacAddr(Lanx::EthAddr("00:1c:73:aa:bb:cc"));
  fib->setBridgeMacAddr(Lanx::EthAddr());

  const Json t = fibTable();
  EXPECT_EQ(t["maxUnresolvedCacheEntries"], 4000);
  EXPECT_EQ(t["maxUnresolvedPktBuffers"], 3);
  EXPECT_EQ(t["multicastIntfs"], Json::array({std::to_string(intf("Ethernet2").value())}));
  EXPECT_EQ(t["bridgeMacAddr"], "00:1c:73:aa:bb:cc");
}

TEST_F(MfibAfTest, TheTenCountersAreAllocatedAndSentInTheirFixedOrder) {
  VekL3Mcast::addMfibModuleCounters(fib, vekcsd);
  channel->pump();
  const Json module = model.dump()["modules"]["MfibIpv4red"];
  const Json& counters = module["counters"];
  const Json& ids = module["table"]["counterIds"];
  const std::vector<std::pair<std::string, const char*>> order = {
      {"Non_Mcast_Iif", "nonMcastIifCounter"},       {"Wrong_Vif", "wrongVifCounter"},
      {"Whole_Pkt", "wholePktCounter"},              {"No_Cache", "noCacheCounter"},
      {"No_Cache_Resolved", "noCacheResolvedCounter"}, {"No_Cache_Expired", "noCacheExpiredCounter"},
      {"Register_Pkt", "registerPktCounter"},        {"Non_Mcast_Pkt", "nonMcastPktCounter"},
      {"Invalid_Ttl_Pkt", "invalidTtlPktCounter"},   {"No_Route_Pkt", "noRoutePktCounter"}};
  ASSERT_EQ(counters.size(), order.size());
  std::size_t next = 0;  // allocations in channel order
  for (const auto& e : channel->commandLog().entries()) {
    if (e["kind"] == "allocateCounter") {
      EXPECT_EQ(e["name"], order.at(next++).first);
    }
  }
  for (const auto& [name, field] : order) EXPECT_EQ(ids[field], counters[name]) << field;
}

TEST_F(MfibAfTest, TaskRegistrationsAskForTheirReplyAndTheDaemonAnswers) {
  fib->regMfibTasks(L3::VrfName("red"));
  fib->regCleanupTaskForAllWorkers(L3::VrfName("red"), 2);
  fib->regMfibTasksForAllWorkers(L3::VrfName("red"), 0);
  channel->pump();

  std::vector<std::string> actions;
  while (auto response = pair->status()->responseQueueDeq()) {
    actions.push_back(response->action());
    vek::pb::MfibTaskIdsArg reply;
    if (actions.size() == 2 && response->payload().UnpackTo(&reply)) {
      EXPECT_THAT(reply.wid(), ElementsAre(0u, 1u));
    }
  }
  EXPECT_THAT(actions, ElementsAre("regMfibTasks", "regCleanupTaskForAllWorkers",
                                   "regMfibTasksForAllWorkers"));
  EXPECT_EQ(fibTable()["tasks"].size(), 3u);
}

}  // namespace
}  // namespace MfibTest
