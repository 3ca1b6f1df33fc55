#include <gmock/gmock.h>

#include <string>
#include <utility>

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
IpGenAddr ip(const char* text) { return IpGenAddr(text); }

// The proxies against the data-plane model. What their commands leave in the tables is
// pinned by the VXLAN scenarios and examples; here what those do not read back.
class L2MVxlanModulesTest : public PipelineTest::PipelineFixture {
 protected:
  Lumo::Ptr<VekMVxlan::L2MVxlanIn> in = VekMVxlan::l2MVxlanInFactory(
      "L2MVxlanIn", VekMVxlan::L2MVxlanIn::defaultInGates,
      VekMVxlan::L2MVxlanIn::defaultOutGates, pair);
  Lumo::Ptr<VekMVxlan::L2MVxlanOut> out = VekMVxlan::l2MVxlanOutFactory(
      "L2MVxlanOut", VekMVxlan::L2MVxlanOut::defaultInGates,
      VekMVxlan::L2MVxlanOut::defaultOutGates, pair);
};

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

using L2MVxlanModulesDeathTest = L2MVxlanModulesTest;

TEST_F(L2MVxlanModulesDeathTest, AnOverlayGroupWithoutUnderlayGroupIsAProgrammingError) {
  EXPECT_DEATH(in->addOverlayVlanGroup(OverlayVlanGroup(vlan(10), ip("239.1.1.1")),
                                       UnderlayRoute(ip("10.0.0.1"), ip("0.0.0.0"))),
               "grpUnderlay.isAddrZero");
}

}  // namespace
}  // namespace VxlanTest
