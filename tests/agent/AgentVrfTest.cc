#include <gmock/gmock.h>

#include "tests/agent/AgentFixture.h"

namespace AgentTest {
namespace {

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;
using Vrf::VrfIdMap::VrfId;

// Tests around one VRF, red, known by its software and hardware ids.
class AgentVrfTest : public AgentFixture {
 protected:
  AgentVrfTest() {
    state->vrfNameToId().vrfIdIs("red", VrfId(2));
    state->hwVrfIdMap().vrfEntryIs(VrfId(12), {"red"});
  }

  const L3::VrfName red{"red"};
  const Lanx::IntfId et2{"Ethernet2"};
};

// The software ids follow the name status both ways, without touching the pipeline, and
// follow a replaced map too: names gone from it lose their ids.
TEST_F(AgentVrfTest, SoftwareIdsFollowTheNameStatusAndItsReplacement) {
  makeAgent(true);
  EXPECT_EQ(vrfIds->vrfNameToId("red"), VrfId(2));
  state->vrfNameToId().vrfIdIs("blue", VrfId(3));
  state->vrfNameToId().vrfIdIs("red", VrfId(4));
  EXPECT_EQ(vrfIds->vrfNameToId("blue"), VrfId(3));
  EXPECT_EQ(vrfIds->vrfNameToId("red"), VrfId(4));
  state->vrfNameToId().vrfIdDel("red");
  EXPECT_TRUE(vrfIds->vrfNameToId("red").isNone());

  auto wrapper = Lumo::ptrCast<Vrf::VrfIdMap::NameToIdMapWrapper>(
      state->entityManager()->getEntity(Vrf::VrfIdMap::NameToIdMapWrapper::path));
  auto map = Lumo::makePtr<Vrf::VrfIdMap::NameToIdMap>();
  map->vrfIdIs("green", VrfId(5));
  wrapper->nameToIdMapIs(map);
  EXPECT_TRUE(vrfIds->vrfNameToId("blue").isNone());
  EXPECT_EQ(vrfIds->vrfNameToId("green"), VrfId(5));
  map->vrfIdIs("pink", VrfId(6));
  EXPECT_EQ(vrfIds->vrfNameToId("pink"), VrfId(6));
}

TEST_F(AgentVrfTest, ReducedAgentTakesHardwareIdsAndDropsNamesTheirIdNoLongerNames) {
  state->hwVrfIdMap().vrfEntryIs(VrfId(13), {std::string(101, 'x')});
  makeAgent(false);
  EXPECT_EQ(vrfIds->hwVrfNameToId("red"), VrfId(12));
  EXPECT_EQ(vrfIds->hwVrfNameToIds().size(), 1u);
  state->hwVrfIdMap().vrfEntryIs(VrfId(12), {"blue"});
  EXPECT_TRUE(vrfIds->hwVrfNameToId("red").isNone());
  EXPECT_EQ(vrfIds->hwVrfNameToId("blue"), VrfId(12));
  state->hwVrfIdMap().vrfEntryDel(VrfId(12));
  EXPECT_TRUE(vrfIds->hwVrfNameToIds().empty());
}

// IGMPv2 maps packets back to their VRF by the id the VRF's modules carry: the software id
// in the full agent, the hardware id in the reduced one. A change of the other id, or the
// loss of the id, leaves the entry as it is.
TEST_F(AgentVrfTest, IgmpV2FollowsTheIdTheModulesCarry) {
  auto igmpV2Id = [this] { return dump()["modules"]["IgmpV2"]["table"]["vrfs"]["red"]; };
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  EXPECT_EQ(igmpV2Id(), 2);
  state->vrfNameToId().vrfIdIs("red", VrfId(4));
  EXPECT_EQ(igmpV2Id(), 4);
  state->hwVrfIdMap().vrfEntryDel(VrfId(12));
  state->hwVrfIdMap().vrfEntryIs(VrfId(13), {"red"});
  state->vrfNameToId().vrfIdDel("red");
  EXPECT_EQ(igmpV2Id(), 4);

  agent = nullptr;
  makeAgent(false);
  agent->startMfibSm(red, AddressFamily::ipv4);
  EXPECT_EQ(igmpV2Id(), 13);
  state->hwVrfIdMap().vrfEntryDel(VrfId(13));
  EXPECT_EQ(igmpV2Id(), 13);
  state->hwVrfIdMap().vrfEntryIs(VrfId(14), {"red"});
  EXPECT_EQ(igmpV2Id(), 14);
  state->vrfNameToId().vrfIdIs("red", VrfId(5));
  state->hwVrfIdMap().vrfEntryIs(VrfId(14), {"blue"});
  EXPECT_EQ(igmpV2Id(), 14);
}

TEST_F(AgentVrfTest, StartMountsTheVrfNamespaceOnceAndTheLastStopUnmountsIt) {
  state->kernelDevices(red.nsName()).interfaceByDeviceNameIs("et2", {7, 1, et2});
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  agent->startMfibSm(red, AddressFamily::ipv6);
  EXPECT_THAT(mountLog(), Contains("mount kni/ns/ns-red/status KernelNetInfo::Status").Times(1));
  auto devices = agent->vrfNamespaces()->vrfDeviceIntfStatusDir()
                     ->deviceVrfIntfStatusDir(red.nsName())
                     ->deviceIntfStatusDir("KernelIntfs");
  ASSERT_NE(devices, nullptr);
  EXPECT_EQ(devices->deviceIntfStatus(et2).ifIndex, 7u);
  EXPECT_TRUE(state->kernelMfibStatus(AddressFamily::ipv4).vrfStatusHas(red));
  EXPECT_TRUE(state->kernelMfibStatus(AddressFamily::ipv6).vrfStatusHas(red));

  agent->stopMfibSm(red, AddressFamily::ipv4);
  agent->stopMfibSm(red, AddressFamily::ipv6);
  EXPECT_EQ(mountLog().back(), "unmount kni/ns/ns-red/status");
  EXPECT_FALSE(agent->vrfNamespaces()->vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirHas(red.nsName()));
}

TEST_F(AgentVrfTest, ModuleGoneDropsTheVrfsInterfaceFollowerAndKernelStatus) {
  state->multicastIntfs(AddressFamily::ipv4).vrfIs(red)->multicastIntfIs(et2);
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  EXPECT_TRUE(agent->vrfPipelineControl()->appRootSmHas(red, AddressFamily::ipv4));
  agent->stopMfibSm(red, AddressFamily::ipv4);
  EXPECT_EQ(agent->vrfPipelineControl()->mcastIntfRoot(AddressFamily::ipv4)->vrfSm(red), nullptr);
  EXPECT_FALSE(agent->vrfPipelineControl()->appRootSmHas(red, AddressFamily::ipv4));
  EXPECT_FALSE(state->kernelMfibStatus(AddressFamily::ipv4).vrfStatusHas(red));
  EXPECT_EQ(agent->getMfibModule(red, AddressFamily::ipv4), nullptr);
}

TEST_F(AgentVrfTest, RouteTablesReachTheAdapterOfTheirVrfOnceMountedAndLeaveWhenUnlisted) {
  using Routing::Multicast::Fib::MfibAppType;
  state->routeTable(red, AddressFamily::ipv4, MfibAppType::pim);
  makeAgent(true);
  auto adapter = agent->mfibVrfDir(AddressFamily::ipv4)->vrfAdapter(red);
  ASSERT_NE(adapter, nullptr);
  EXPECT_TRUE(adapter->mfibVashHas(MfibAppType::pim));

  // A table whose writer is not ready joins when its mount finishes.
  const std::string staticPath = "routing/multicast/fib/red/static";
  state->sharedMem()->mountHoldIs(staticPath, true);
  state->routeTable(red, AddressFamily::ipv4, MfibAppType::static_);
  EXPECT_FALSE(adapter->mfibVashHas(MfibAppType::static_));
  state->sharedMem()->mountRelease(staticPath);
  EXPECT_TRUE(adapter->mfibVashHas(MfibAppType::static_));

  // A table unlisted before its mount finished never reaches the adapter.
  const std::string mvpnPath = "routing/multicast/fib/red/mvpn";
  state->sharedMem()->mountHoldIs(mvpnPath, true);
  state->routeTable(red, AddressFamily::ipv4, MfibAppType::mvpn);
  state->routeTableDel(red, AddressFamily::ipv4, MfibAppType::mvpn);
  state->sharedMem()->mountRelease(mvpnPath);
  EXPECT_FALSE(adapter->mfibVashHas(MfibAppType::mvpn));

  state->routeTableDel(red, AddressFamily::ipv4, MfibAppType::pim);
  EXPECT_FALSE(adapter->mfibVashHas(MfibAppType::pim));
  state->routeTableDel(red, AddressFamily::ipv4, MfibAppType::static_);
  EXPECT_EQ(adapter->mfibVashCount(), 0u);
  EXPECT_EQ(agent->mfibVrfDir(AddressFamily::ipv4)->vrfAdapter(red), adapter);
  EXPECT_EQ(mountLog().back(), "unmount " + staticPath);
}

TEST_F(AgentVrfTest, CallsBeforeTheAgentIsUpAndOfOtherFamiliesChangeNothing) {
  makeAgent(true);
  agent->initializedIsForTest(false);
  agent->startMfibSm(red, AddressFamily::ipv4);
  EXPECT_EQ(agent->vrfPipelineControl()->mcastIntfRoot(AddressFamily::ipv4)->vrfSm(red), nullptr);
  agent->initializedIsForTest(true);
  agent->startMfibSm(red, AddressFamily::none);
  EXPECT_THAT(mountLog(), Not(Contains("mount kni/ns/ns-red/status KernelNetInfo::Status")));
  EXPECT_FALSE(startMfibSm(agent.get(), std::string(101, 'x').c_str(), 1));
}

// Classes, links and rate-limited tasks are checked by the scenarios; here what they do not
// see: the software id, the four ports and the receive modules under the workers' classes.
TEST_F(AgentVrfTest, FullStartPutsTheReceiveModulesUnderTheWorkersClasses) {
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  const Json data = dump();
  EXPECT_EQ(data["modules"]["MfibIpv4red"]["init"]["vrfId"], 2);  // the software id
  EXPECT_EQ(data["ports"].size(), 4u);  // three any-device paths and the PIM register port
  const Json& classes = data["trafficClasses"];
  std::vector<std::string> attached;
  for (const char* worker : {"worker0", "worker1"}) {
    EXPECT_FALSE(classes[worker]["tasks"].empty()) << worker;
    for (const Json& task : classes[worker]["tasks"]) attached.push_back(task.get<std::string>());
  }
  EXPECT_THAT(attached,
              UnorderedElementsAre("Rx_McastHwFwd_red", "Rx_McastSwFwd_red",
                                   "Rx_McastSwFwd_PeerLinkOrCore_red", "Rx_PimRegIpv4_red"));
}

TEST_F(AgentVrfTest, GoingDownStopsEveryVrfAndFamilyOnceAndTakesEverythingAway) {
  makeAgent(true);
  agent->startMfibSm(red, AddressFamily::ipv4);
  agent->startMfibSm(red, AddressFamily::ipv6);
  agent->startMfibSm(L3::VrfName("blue"), AddressFamily::ipv4);
  const std::uint64_t mark = Trace::mark();
  agent = nullptr;
  int stops = 0;
  for (const std::string& text : tracesSince(mark)) stops += text.starts_with("stopMfibSm");
  EXPECT_EQ(stops, 3);
  const Json data = dump();
  EXPECT_THAT(data["modules"], IsEmpty());
  EXPECT_THAT(data["ports"], IsEmpty());
  EXPECT_EQ(mountLog().back(), "unmount kni/ns/default/status");
}

}  // namespace
}  // namespace AgentTest
