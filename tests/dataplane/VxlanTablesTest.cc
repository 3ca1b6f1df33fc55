#include <string>

#include "dataplane/L2MVxlanIn.h"
#include "dataplane/L2MVxlanOut.h"
#include "tests/dataplane/ModelFixture.h"

namespace DataplaneTest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string v4Vtep("\x0a\x00\x00\x01", 4);
const std::string v6Vtep(16, '\x20');

// A daemon refuses a malformed argument and keeps its table as it was; these are the
// mistakes a sender can make with the L2 VXLAN messages.
TEST(L2MVxlanInTable, RefusesVlanZeroWideVnisAndAddressesOfTheWrongLength) {
  Dataplane::L2MVxlanIn in;
  vek::pb::VlanVniArg vlanVni;
  vlanVni.set_vni(10010);
  EXPECT_EQ(in.addVlan(vlanVni).code, EINVAL) << "VLAN 0";
  vlanVni.set_vlanid(4095);
  EXPECT_EQ(in.addVlan(vlanVni).code, EINVAL);
  vlanVni.set_vlanid(10);
  vlanVni.set_vni(0x1000000);
  EXPECT_EQ(in.addVlan(vlanVni).code, EINVAL) << "VNI over 24 bits";

  vek::pb::IpGenAddrArg vtep;
  vtep.set_addr(v6Vtep);
  EXPECT_EQ(in.setVtepAddr(vtep).code, EINVAL) << "an IPv6 address for the IPv4 VTEP";
  vtep.set_addr(v4Vtep);
  EXPECT_EQ(in.setVtepAddr6(vtep).code, EINVAL);

  vek::pb::L2MVxlanOverlayVlanGroupArg group;
  group.set_vlanid(10);
  group.set_overlaygroup("\xef\x01\x01\x01");
  EXPECT_EQ(in.addOverlayVlanGroup(group).code, EINVAL) << "no underlay group";
  group.set_underlaygroup("\xef\x00\x00\x01");
  group.set_underlaysource("\x0a\x00");
  EXPECT_EQ(in.addOverlayVlanGroup(group).code, EINVAL) << "a 2-byte source";

  vek::pb::GmpVlanGroupMemberArg member;
  member.set_vlanid(10);
  member.set_groupmember("\x01\x00\x5e\x01\x01\x01");
  member.add_vtepaddr(v4Vtep);
  member.add_vtepaddr("\x0a\x00\x00");
  EXPECT_EQ(in.addGmpVlanGroupMember(member).code, EINVAL) << "one bad VTEP spoils the list";

  vek::pb::VlanToSBDVlanArg sbd;
  sbd.set_vlanid(10);
  EXPECT_EQ(in.addVlanToSBDVlan(sbd).code, EINVAL) << "SBD VLAN 0";

  const auto table = in.dump();
  EXPECT_TRUE(table["vlanToVni"].empty());
  EXPECT_TRUE(table["overlayGroups"].empty());
  EXPECT_TRUE(table["groupMembers"].empty());
  EXPECT_TRUE(table["vlanToSbdVlan"].empty());
}

TEST(L2MVxlanOutTable, RefusesBadVnisAndRouteAddressesButTakesAnyForEither) {
  Dataplane::L2MVxlanOut out;
  vek::pb::VlanVniArg vlanVni;
  vlanVni.set_vni(10010);
  EXPECT_EQ(out.addVni(vlanVni).code, EINVAL) << "VLAN 0";
  vek::pb::L2MVxlanDecapRouteArg route;
  route.set_underlaygroup("\xef\x00");
  EXPECT_EQ(out.addDecapRoute(route).code, EINVAL);
  route.clear_underlaygroup();
  EXPECT_EQ(out.addDecapRoute(route).code, 0);
  EXPECT_EQ(out.dump()["decapRoutes"], nlohmann::ordered_json({"*,*"}));
  EXPECT_TRUE(out.dump()["vniToVlan"].empty());
}

class FabricDrawingTest : public ModelFixture {};

TEST_F(FabricDrawingTest, TheFabricPathsHaveTheirOwnCluster) {
  auto* pcap = new bess::pb::PCAPPortArg;
  pcap->set_dev("fabric");
  GroupPort port("fabric_McastHwFwd", "PCAPPort", pcap, group);
  port.handleInit();
  auto* incArg = new bess::pb::PortIncArg;
  incArg->set_port("fabric_McastHwFwd");
  auto rx = module("Rx_McastHwFwd_fabric", Vek::VekModule::portInc, incArg);
  auto vlanMdata = module("VlanMdata_McastHwFwd", Vek::VekModule::vlanMetadata);
  auto in = module("L2MVxlanIn", Vek::VekModule::l2MVxlanIn, nullptr, 2);
  auto fib = mfib("MfibIpv4default");
  rx->connectModule(vlanMdata);
  vlanMdata->connectModule(in);
  in->connectViaReservedGate(fib, 0);
  channel->pump();

  const std::string dot = model.dot();
  const auto cluster = dot.find("subgraph \"cluster_fabric\"");
  ASSERT_NE(cluster, std::string::npos) << dot;
  const std::string fabric = dot.substr(cluster, dot.find("  }\n", cluster) - cluster);
  for (const char* node : {"\"fabric_McastHwFwd\"", "\"Rx_McastHwFwd_fabric\"",
                           "\"VlanMdata_McastHwFwd\"", "\"L2MVxlanIn\""}) {
    EXPECT_THAT(fabric, HasSubstr(node));
  }
  EXPECT_THAT(fabric, Not(HasSubstr("\"MfibIpv4default\""))) << "the FIB stays with its VRF";
}

}  // namespace
}  // namespace DataplaneTest
