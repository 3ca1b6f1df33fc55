#include <gmock/gmock.h>

#include <string>
#include <utility>

#include "runtime/state/EthAddr.h"
#include "runtime/state/IntfId.h"
#include "tests/pipeline/PipelineFixture.h"
#include "vxlan/VekL2MVxlanInModule.h"
#include "vxlan/VekL2MVxlanOutModule.h"

namespace VxlanTest {
namespace {

using Json = nlohmann::ordered_json;
using Lanx::IpGenAddr;
using Routing::Multicast::OverlayVlanGroup;
using Routing::Multicast::UnderlayRoute;

Bridging::VlanId vlan(std::uint16_t id) { return Bridging::VlanId(id); }
Vxlan::VniExtOrNone vni(std::uint32_t id) { return Vxlan::VniExtOrNone(id); }
IpGenAddr ip(const char* text) { return IpGenAddr(text); }

// The proxies against the data-plane model: every command has to arrive well-formed (the
// model refuses what a daemon would) and leave the table the daemon would hold.
class L2MVxlanModulesTest : public PipelineTest::PipelineFixture {
 protected:
  Lumo::Ptr<VekMVxlan::L2MVxlanIn> in = VekMVxlan::l2MVxlanInFactory(
      "L2MVxlanIn", VekMVxlan::L2MVxlanIn::defaultInGates,
      VekMVxlan::L2MVxlanIn::defaultOutGates, pair);
  Lumo::Ptr<VekMVxlan::L2MVxlanOut> out = VekMVxlan::l2MVxlanOutFactory(
      "L2MVxlanOut", VekMVxlan::L2MVxlanOut::defaultInGates,
      VekMVxlan::L2MVxlanOut::defaultOutGates, pair);

  Json inTable() { return table("L2MVxlanIn"); }
  Json outTable() { return table("L2MVxlanOut"); }
};

TEST_F(L2MVxlanModulesTest, VlanMapsFloodSetsAndSettingsReachTheEncapTable) {
  in->addVlan(vlan(10), vni(10010));
  in->addVlan(vlan(20), vni(20020));
  in->deleteVlan(vlan(20));
  in->addVlanToSBDVlan(vlan(10), vlan(3001));
  in->addVlanToSBDVlan(vlan(30), vlan(3001));
  in->delVlanToSBDVlan(vlan(30));
  in->addVlanFloodSetEntry(vlan(10), ip("10.0.0.8"));
  in->addVlanFloodSetEntry(vlan(10), ip("2001:db8::8"));
  in->addVlanFloodSetEntry(vlan(10), ip("10.0.0.7"));
  in->deleteVlanFloodSetEntry(vlan(10), ip("10.0.0.8"));
  in->setSrcIpIntf(Lanx::IntfId::fromNameOrThrow("Loopback1"));
  in->setLocalBridgeMacAddr(Lanx::EthAddr("00:1c:73:aa:bb:cc"));
  in->setVxlanSwitchPktToMcastTunnelInSw(true);

  const Json t = inTable();
  EXPECT_EQ(errorCount(), 0u);
  EXPECT_EQ(t["vlanToVni"], Json({{"10", 10010}}));
  EXPECT_EQ(t["vlanToSbdVlan"], Json({{"10", 3001}}));
  EXPECT_EQ(t["floodSets"]["10"], Json({"10.0.0.7", "2001:db8::8"}));
  EXPECT_EQ(t["srcIpIntf"],
            std::to_string(Lanx::IntfId::fromNameOrThrow("Loopback1").value()));
  EXPECT_EQ(t["bridgeMacAddr"], "00:1c:73:aa:bb:cc");
  EXPECT_EQ(t["switching"], true);
}

TEST_F(L2MVxlanModulesTest, ZeroAddressesClearTheVtepAndMeanAnyUnderlaySource) {
  in->setVtepAddr(ip("10.0.0.1"));
  in->setVtepAddr6(ip("2001:db8::1"));
  EXPECT_EQ(inTable()["vtepAddr"], "10.0.0.1");
  EXPECT_EQ(inTable()["vtepAddr6"], "2001:db8::1");
  in->setVtepAddr(ip("0.0.0.0"));
  in->setVtepAddr6(ip("::"));
  EXPECT_TRUE(inTable()["vtepAddr"].is_null());
  EXPECT_TRUE(inTable()["vtepAddr6"].is_null());

  in->addOverlayVlanGroup(OverlayVlanGroup(vlan(10), ip("239.1.1.1")),
                          UnderlayRoute(ip("0.0.0.0"), ip("239.0.0.1")));
  in->addOverlayVlanGroup(OverlayVlanGroup(vlan(10), ip("239.1.1.2")),
                          UnderlayRoute(IpGenAddr(), ip("239.0.0.2")));
  in->addOverlayVlanGroup(OverlayVlanGroup(vlan(20), ip("ff0e::1")),
                          UnderlayRoute(ip("10.0.0.1"), ip("239.0.0.3")));
  Json groups = inTable()["overlayGroups"];
  EXPECT_EQ(errorCount(), 0u);
  EXPECT_EQ(groups["10,239.1.1.1"], Json({{"underlaySource", "*"}, {"underlayGroup", "239.0.0.1"}}));
  EXPECT_EQ(groups["10,239.1.1.2"]["underlaySource"], "*");
  EXPECT_EQ(groups["20,ff0e::1"]["underlaySource"], "10.0.0.1");

  // A delete names the group by VLAN and overlay group only, whatever its underlay.
  in->deleteOverlayVlanGroup(OverlayVlanGroup(vlan(10), ip("239.1.1.1")));
  groups = inTable()["overlayGroups"];
  EXPECT_FALSE(groups.contains("10,239.1.1.1"));
  EXPECT_EQ(groups.size(), 2u);
}

TEST_F(L2MVxlanModulesTest, AGroupMemberGetsItsWholeVtepListInAddressOrder) {
  auto vteps = Lumo::makePtr<VekMVxlan::VtepList>();
  vteps->addrIs(ip("2001:db8::1"), true);
  vteps->addrIs(ip("10.0.0.9"), false);
  vteps->addrIs(ip("10.0.0.7"), true);
  vteps->addrIs(ip("10.0.0.9"), true);  // overwrites, no second entry
  const Lanx::EthAddr member("01:00:5e:01:01:01");
  in->addGmpVlanGroupMember(vlan(10), member, vteps);
  EXPECT_EQ(inTable()["groupMembers"]["10,01:00:5e:01:01:01"],
            Json({"10.0.0.7", "10.0.0.9", "2001:db8::1"}));

  // The list replaces what the module had: a VTEP that left is gone.
  vteps->addrDel(ip("10.0.0.9"));
  in->addGmpVlanGroupMember(vlan(10), member, vteps);
  EXPECT_EQ(inTable()["groupMembers"]["10,01:00:5e:01:01:01"],
            Json({"10.0.0.7", "2001:db8::1"}));

  in->addGmpVlanGroupMember(vlan(20), member, Lumo::makePtr<VekMVxlan::VtepList>());
  EXPECT_EQ(inTable()["groupMembers"]["20,01:00:5e:01:01:01"], Json::array());

  in->deleteGmpVlanGroupMember(vlan(10), member);
  EXPECT_FALSE(inTable()["groupMembers"].contains("10,01:00:5e:01:01:01"));
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(L2MVxlanModulesTest, DecapVnisAndRoutesOfBothFamiliesAndAnyAddresses) {
  out->addVni(vni(10010), vlan(10));
  out->addVni(vni(10020), vlan(20));
  out->deleteVni(vni(10020));
  out->addDecapRoute(UnderlayRoute(ip("10.0.0.9"), ip("239.0.0.1")));
  out->addDecapRoute(UnderlayRoute(ip("::"), ip("ff0e::1")));
  out->addDecapRoute(UnderlayRoute(IpGenAddr(), IpGenAddr()));
  out->addDecapRoute(UnderlayRoute(ip("10.0.0.9"), ip("239.0.0.2")));
  out->deleteDecapRoute(UnderlayRoute(ip("10.0.0.9"), ip("239.0.0.2")));

  const Json t = outTable();
  EXPECT_EQ(errorCount(), 0u);
  EXPECT_EQ(t["vniToVlan"], Json({{"10010", 10}}));
  EXPECT_EQ(t["decapRoutes"], Json({"*,*", "*,ff0e::1", "10.0.0.9,239.0.0.1"}));
}

// The counter message is filled by position, so the names allocated and the fields of the
// message have to line up one for one.
TEST_F(L2MVxlanModulesTest, CounterIdsLineUpWithTheCounterNames) {
  VekMVxlan::addL2MVxlanInCounters(in, vekcsd);
  VekMVxlan::addL2MVxlanOutCounters(out, vekcsd);
  const std::pair<const char*, const char*> inPairs[] = {
      {"No_Vlan_Md", "noVlanMdCounter"},
      {"No_Vni", "noVniCounter"},
      {"Unknown_Multicast", "unknownMulticastCounter"},
      {"Link_Local", "linkLocalCounter"},
      {"Non_Ip", "nonIpCounter"},
      {"No_Route", "noRouteCounter"},
      {"Prepend_Fail", "prependFailCounter"},
      {"V6_Underlay", "v6UnderlayCounter"},
      {"No_Underlay_Source", "noUnderlaySourceCounter"},
      {"Non_Linear_Pkt_Her_Fail", "nonLinearPktHerFailCounter"},
      {"No_Flood_Set_Entry", "noFloodSetEntryCounter"},
      {"Rx_Peer_Link_Or_Core", "rxPeerLinkOrCoreCounter"}};
  const std::pair<const char*, const char*> outPairs[] = {
      {"V6_Underlay", "v6UnderlayCounter"},
      {"Non_Ip", "nonIpCounter"},
      {"Non_Udp", "nonUdpCounter"},
      {"Wrong_Dst_Port", "wrongDstPortCounter"},
      {"No_Decap_Route", "noDecapRouteCounter"},
      {"No_Vlan", "noVlanCounter"},
      {"Wrong_Vlan_Md", "wrongVlanMdCounter"},
      {"Link_Local", "linkLocalCounter"},
      {"Q_In_Q", "qInQCounter"},
      {"Prepend_Fail", "prependFailCounter"},
      {"Non_Mcast", "nonMcastCounter"}};
  auto check = [this](const char* module, const auto& pairs) {
    const Json m = moduleDump(module);
    EXPECT_EQ(m["counters"].size(), std::size(pairs)) << module;
    for (const auto& [counter, field] : pairs) {
      EXPECT_EQ(m["table"]["counterIds"][field], m["counters"][counter]) << module << " " << field;
    }
  };
  check("L2MVxlanIn", inPairs);
  check("L2MVxlanOut", outPairs);
}

TEST_F(L2MVxlanModulesTest, TheEncapModuleReservesGatesForTheFibsAndRoutedTraffic) {
  const Json m = moduleDump("L2MVxlanIn");
  EXPECT_EQ(m["class"], 84);
  EXPECT_EQ(m["inGates"], 4);
  EXPECT_EQ(m["outGates"], 3);
  EXPECT_EQ(m["reservedIn"], 1);
  EXPECT_EQ(m["reservedOut"], 2);
  EXPECT_EQ(moduleDump("L2MVxlanOut")["class"], 85);
}

using L2MVxlanModulesDeathTest = L2MVxlanModulesTest;

TEST_F(L2MVxlanModulesDeathTest, AnOverlayGroupWithoutUnderlayGroupIsAProgrammingError) {
  EXPECT_DEATH(in->addOverlayVlanGroup(OverlayVlanGroup(vlan(10), ip("239.1.1.1")),
                                       UnderlayRoute(ip("10.0.0.1"), ip("0.0.0.0"))),
               "grpUnderlay.isAddrZero");
}

}  // namespace
}  // namespace VxlanTest
