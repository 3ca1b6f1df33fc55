#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "runtime/state/VlanIntfId.h"
#include "tests/vxlan/PipelineFixture.h"

namespace VxlanTest {
namespace {

using ::testing::ElementsAre;
using Bridging::VlanId;
using Lanx::IpGenAddr;
using Routing::Multicast::IpTunnelMapping;
using Routing::Multicast::OverlayRoute;
using Routing::Multicast::UnderlayRoute;

const char* const fabricPorts[] = {"fabric_McastHwFwd", "fabric_McastSwFwd",
                                   "fabric_McastSwFwd_PeerLinkOrCore"};

class VxlanPipelineTest : public VxlanPipelineFixture {
 protected:
  Json portVlans(const char* port) { return this->port(port)["state"]["vlans"]; }
  // The moduleCmd and groupCmd log lines since `seq`, as "<module or port> <cmd>".
  std::vector<std::string> commandsSince(std::uint64_t seq) {
    channel->pump();
    std::vector<std::string> out;
    for (const Json& e : channel->commandLog().entriesSince(seq)) {
      if (e["kind"] == "moduleCmd") out.push_back(e["module"].get<std::string>() + " " +
                                                  e["cmd"].get<std::string>());
      if (e["kind"] == "destroyModule") out.push_back("destroy " + e["name"].get<std::string>());
      if (e["kind"] == "groupCmd" && e["arg"].contains("cmd")) {
        out.push_back(e["arg"]["name"].get<std::string>() + " " + e["arg"]["cmd"].get<std::string>());
      }
    }
    return out;
  }
  Vek::GateId vlanGate(AddressFamily af, std::uint16_t vlan) {
    return owner.mfibModule(L3::VrfName::defaultVrf(), af)
        ->intfIdToOutGate(Lanx::VlanIntfId::vlanIdToIntfId(vlan));
  }
  void addMapping(std::uint16_t vlan, const char* overlayGroup, const char* underlayGroup) {
    inputs.tunnels4->vlanStatusIs(VlanId(vlan))
        ->mappingIs(OverlayRoute(IpGenAddr(), IpGenAddr(overlayGroup)),
                    IpTunnelMapping(UnderlayRoute(IpGenAddr("10.0.0.1"), IpGenAddr(underlayGroup))));
  }
};

TEST_F(VxlanPipelineTest, FirstProxyVlanWithTheFabricUpBuildsTheWholeL2Pipeline) {
  startDefault();
  inputs.igmp->vlanIs(VlanId(10));

  const Json d = dump();
  for (const char* module : {"L2MVxlanIn", "L2MVxlanOut", "Tx_fabric", "VlanMdata_McastHwFwd",
                             "VlanMdata_McastSwFwd", "VlanMdata_McastSwFwd_PeerLinkOrCore"}) {
    EXPECT_TRUE(d["modules"].contains(module)) << module;
  }
  const Json& in = d["modules"]["L2MVxlanIn"];
  EXPECT_EQ(in["out"]["0"]["to"], "MfibIpv4default");
  EXPECT_EQ(in["out"]["1"]["to"], "MfibIpv6default");
  EXPECT_EQ(in["counters"].size(), 12u);
  EXPECT_EQ(d["modules"]["L2MVxlanOut"]["out"]["0"]["to"], "Tx_fabric");
  for (const char* port : fabricPorts) EXPECT_EQ(portVlans(port), Json({10})) << port;
  // The VLAN's interface leaves the default FIBs by their gate towards the decap module.
  for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    const auto mfib = owner.mfibModule(L3::VrfName::defaultVrf(), af);
    EXPECT_TRUE(vlanGate(af, 10).isValid());
    EXPECT_EQ(vlanGate(af, 10), mfib->findGateByName("L2MVxlanOut", false));
  }
  EXPECT_THAT(owner.steps, ElementsAre("attachMcastVxlanRxSetTasks", "handleFwdDevStateSm",
                                       "attachMcastL2VxlanTxTasks"));
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(VxlanPipelineTest, AProxyVlanWithTheFabricDownWaitsForTheFabric) {
  startDefault();
  owner.fabricUp = false;
  const std::uint64_t before = logSeq();
  inputs.mld->vlanIs(VlanId(20));
  EXPECT_TRUE(commandsSince(before).empty());
  EXPECT_FALSE(hasModule("L2MVxlanIn"));
  EXPECT_FALSE(vlanGate(AddressFamily::ipv4, 20).isValid());

  fabricUp();
  EXPECT_TRUE(hasModule("L2MVxlanIn"));
  EXPECT_EQ(portVlans("fabric_McastSwFwd"), Json({20}));
  EXPECT_TRUE(vlanGate(AddressFamily::ipv6, 20).isValid());
}

TEST_F(VxlanPipelineTest, TheLastProxyVlanTakesItsFilterThenItsGatesThenThePipeline) {
  startDefault();
  inputs.igmp->vlanIs(VlanId(10));
  const std::uint64_t before = logSeq();
  inputs.igmp->vlanDel(VlanId(10));

  const std::vector<std::string> commands = commandsSince(before);
  ASSERT_GE(commands.size(), 4u);
  EXPECT_THAT(std::vector<std::string>(commands.begin(), commands.begin() + 3),
              ElementsAre("fabric_McastHwFwd removeVlan", "fabric_McastSwFwd removeVlan",
                          "fabric_McastSwFwd_PeerLinkOrCore removeVlan"));
  EXPECT_FALSE(vlanGate(AddressFamily::ipv4, 10).isValid());
  EXPECT_FALSE(hasModule("L2MVxlanIn"));
  EXPECT_FALSE(hasModule("L2MVxlanOut"));
  EXPECT_FALSE(hasModule("VlanMdata_McastHwFwd"));
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(VxlanPipelineTest, AVlanLeavingOneProxyTableIsDeletedThoughTheOtherStillHasIt) {
  startDefault();
  inputs.igmp->vlanIs(VlanId(10));
  inputs.mld->vlanIs(VlanId(10));
  inputs.igmp->vlanDel(VlanId(10));
  // Each table speaks for itself: the filter and the entries go, the pipeline stays.
  EXPECT_EQ(portVlans("fabric_McastHwFwd"), Json::array());
  EXPECT_FALSE(vlanGate(AddressFamily::ipv4, 10).isValid());
  EXPECT_TRUE(hasModule("L2MVxlanIn"));
  // They come back with the other table's next event for the VLAN.
  pipeline->handleMldProxyVlan(VlanId(10));
  EXPECT_EQ(portVlans("fabric_McastHwFwd"), Json({10}));
  EXPECT_TRUE(vlanGate(AddressFamily::ipv4, 10).isValid());
}

TEST_F(VxlanPipelineTest, WithoutANamespaceDeviceThereIsNoDecapSideAndNoGateEntry) {
  Vek::namespaceDutIs(false);
  startDefault();
  inputs.igmp->vlanIs(VlanId(10));
  inputs.decap4->routeIs(UnderlayRoute(IpGenAddr("10.0.0.9"), IpGenAddr("239.0.0.1")));
  EXPECT_TRUE(hasModule("L2MVxlanIn"));
  EXPECT_FALSE(hasModule("L2MVxlanOut"));
  EXPECT_FALSE(hasModule("Tx_fabric"));
  EXPECT_EQ(portVlans("fabric_McastHwFwd"), Json({10}));
  EXPECT_FALSE(vlanGate(AddressFamily::ipv4, 10).isValid());
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(VxlanPipelineTest, TheLastOverlayGroupOfAVlanGoesAndItsDeleteIsStillSent) {
  inputs.igmp->vlanIs(VlanId(30));
  fabricUp();
  addMapping(10, "239.1.1.1", "239.0.0.1");
  addMapping(10, "239.1.1.2", "239.0.0.2");
  EXPECT_EQ(table("L2MVxlanIn")["overlayGroups"].size(), 2u);
  inputs.tunnels4->vlanStatusIs(VlanId(10))
      ->mappingDel(OverlayRoute(IpGenAddr(), IpGenAddr("239.1.1.1")));
  EXPECT_TRUE(pipeline->vlanToOverlayGroup(VlanId(10)));
  const std::uint64_t before = logSeq();
  inputs.tunnels4->vlanStatusIs(VlanId(10))
      ->mappingDel(OverlayRoute(IpGenAddr(), IpGenAddr("239.1.1.2")));
  EXPECT_FALSE(pipeline->vlanToOverlayGroup(VlanId(10)));
  EXPECT_THAT(commandsSince(before), ElementsAre("L2MVxlanIn deleteOverlayVlanGroup"));
  EXPECT_TRUE(table("L2MVxlanIn")["overlayGroups"].empty());
}

// Everything the L2 modules hold, once built, is the same whether the state came before
// the pipeline or after it.
class VxlanReplayTest : public VxlanPipelineTest {
 protected:
  void writeState() {
    auto vti = inputs.vtis->vtiStatusIs(Lanx::IntfId::fromNameOrThrow("Vxlan1"));
    vti->srcIpIntfIs(Lanx::IntfId::fromNameOrThrow("Loopback1"));
    vti->vtepAddrIs(IpGenAddr("10.0.0.1"));
    vti->vtepAddr6Is(IpGenAddr("2001:db8::1"));
    vti->vlanToVniMapIs(VlanId(10), Vxlan::VniExtOrNone(10010));
    vti->vlanToVniMapIs(VlanId(20), Vxlan::VniExtOrNone(10020));
    inputs.decap4->routeIs(UnderlayRoute(IpGenAddr("10.0.0.9"), IpGenAddr("239.0.0.1")));
    inputs.decap6->routeIs(UnderlayRoute(IpGenAddr(), IpGenAddr("ff0e::9")));
    inputs.irb4->sbdVlanIs(VlanId(10), VlanId(3001));
    addMapping(10, "239.1.1.1", "239.0.0.1");
    inputs.hw->vxlanSwitchPktToMcastTunnelInSwIs(true);
    inputs.bridging->bridgeMacAddrIs(Lanx::EthAddr("00:1c:73:aa:bb:cc"));
    inputs.mld->vlanIs(VlanId(20));
  }
  Json tables() {
    return Json{{"in", table("L2MVxlanIn")}, {"out", table("L2MVxlanOut")}};
  }
};

TEST_F(VxlanReplayTest, StateBeforeThePipelineIsReplayedWhenItComes) {
  startDefault();
  owner.fabricUp = false;
  writeState();
  EXPECT_FALSE(hasModule("L2MVxlanIn"));
  fabricUp();
  const Json t = tables();
  EXPECT_EQ(t["in"]["vlanToVni"], Json({{"10", 10010}, {"20", 10020}}));
  EXPECT_EQ(t["in"]["vtepAddr"], "10.0.0.1");
  EXPECT_EQ(t["in"]["vtepAddr6"], "2001:db8::1");
  EXPECT_EQ(t["in"]["vlanToSbdVlan"], Json({{"10", 3001}}));
  EXPECT_EQ(t["in"]["overlayGroups"].size(), 1u);
  EXPECT_EQ(t["in"]["switching"], true);
  EXPECT_EQ(t["in"]["bridgeMacAddr"], "00:1c:73:aa:bb:cc");
  EXPECT_EQ(t["out"]["vniToVlan"], Json({{"10010", 10}, {"10020", 20}}));
  EXPECT_EQ(t["out"]["decapRoutes"], Json({"*,ff0e::9", "10.0.0.9,239.0.0.1"}));
  EXPECT_EQ(errorCount(), 0u);

  // And the same once it stands: a change reaches the modules at once.
  inputs.vtis->vtiStatusIs(Lanx::IntfId::fromNameOrThrow("Vxlan1"))->vlanToVniMapDel(VlanId(20));
  inputs.decap4->routeDel(UnderlayRoute(IpGenAddr("10.0.0.9"), IpGenAddr("239.0.0.1")));
  inputs.irb4->sbdVlanDel(VlanId(10));
  EXPECT_EQ(table("L2MVxlanIn")["vlanToVni"], Json({{"10", 10010}}));
  EXPECT_EQ(table("L2MVxlanOut")["vniToVlan"], Json({{"10010", 10}}));
  EXPECT_EQ(table("L2MVxlanOut")["decapRoutes"], Json({"*,ff0e::9"}));
  EXPECT_TRUE(table("L2MVxlanIn")["vlanToSbdVlan"].empty());
}

TEST_F(VxlanReplayTest, FabricDownThenUpRebuildsTheSameModulesAndTables) {
  startDefault();
  writeState();
  const Json first = tables();
  fabricDown();
  EXPECT_FALSE(hasModule("L2MVxlanIn"));
  EXPECT_FALSE(hasModule("Tx_fabric"));
  fabricUp();
  Json again = tables();
  // Counter ids are handed out afresh; everything else is the same.
  Json firstNoCounters = first;
  for (Json* t : {&firstNoCounters, &again}) {
    (*t)["in"].erase("counterIds");
    (*t)["out"].erase("counterIds");
  }
  EXPECT_EQ(again, firstNoCounters);
}

}  // namespace
}  // namespace VxlanTest
