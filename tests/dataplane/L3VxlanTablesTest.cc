#include <cerrno>

#include "dataplane/L3MVxlanIn.h"
#include "dataplane/L3MVxlanOut.h"
#include "tests/dataplane/ModelFixture.h"

namespace DataplaneTest {
namespace {

using Json = nlohmann::ordered_json;

const std::string underlayGroup("\xef\x00\x00\x01", 4);

vek::pb::VrfOverlayToUnderlayGroupArg groupArg(std::uint32_t vrfId, std::string overlay,
                                               std::string underlay = underlayGroup) {
  vek::pb::VrfOverlayToUnderlayGroupArg arg;
  arg.set_vrfid(vrfId);
  arg.set_overlaygroup(std::move(overlay));
  arg.set_underlaygroup(std::move(underlay));
  return arg;
}

TEST(L3MVxlanInTable, MalformedArgumentsAreRefusedAndChangeNothing) {
  Dataplane::L3MVxlanIn table;
  const Json before = table.dump();
  EXPECT_EQ(table.addVrfOverlayToUnderlayGroup(groupArg(2, v4Group, std::string(4, '\0'))).code,
            EINVAL)
      << "zero underlay group";
  EXPECT_EQ(table.addVrfOverlayToUnderlayGroup(groupArg(2, "\xef\x01")).code, EINVAL);
  EXPECT_EQ(table.addVrfOverlayToUnderlayGroup(groupArg(0xffffff, v4Group)).code, EINVAL);
  vek::pb::IpGenAddrArg addr;
  addr.set_addr(v4Source);
  EXPECT_EQ(table.setVtepAddr6(addr).code, EINVAL) << "an IPv4 address as the IPv6 VTEP";
  vek::pb::IntfIdVniArg vni;
  vni.set_srcintfid(7);
  vni.set_vni(0x1000000);
  EXPECT_EQ(table.addSrcIntfIdToVni(vni).code, EINVAL);
  vek::pb::TtlArg ttl;
  ttl.set_ttl(256);
  EXPECT_EQ(table.setVxlanTTL(ttl).code, EINVAL);
  EXPECT_EQ(table.dump(), before);
}

class L3MVxlanOutTable : public ::testing::Test {
 protected:
  Dataplane::L3MVxlanOut table{Dataplane::ModuleContext{"L3MVxlanOut", 16, 1, nullptr}};
};

TEST_F(L3MVxlanOutTable, MalformedArgumentsAreRefused) {
  vek::pb::UdpPortArg port;
  EXPECT_EQ(table.setUdpPort(port).code, EINVAL) << "port 0";
  vek::pb::AfVrfOGateArg gate;
  gate.set_af(3);
  EXPECT_EQ(table.addOGateEntry(gate).code, EINVAL);
  gate.set_af(1);
  gate.set_ogate(16);
  EXPECT_EQ(table.addOGateEntry(gate).code, ERANGE);
  vek::pb::VrfVlanArg sbd;
  sbd.set_vrfid(2);
  EXPECT_EQ(table.addVrfSBDVlan(sbd).code, EINVAL) << "VLAN 0";
  vek::pb::VlanVniArg vlan;
  vlan.set_vlanid(10);
  vlan.set_vni(0x1000000);
  EXPECT_EQ(table.addVniVlan(vlan).code, EINVAL);
  EXPECT_EQ(table.dump()["vniVlan"], Json::object());
}

// Through the channel, a refusal comes back as an error record and the module stays.
class L3VxlanModelTest : public ModelFixture {};

TEST_F(L3VxlanModelTest, ARefusedCommandBecomesAnErrorRecord) {
  auto out = module("L3MVxlanOut", Vek::VekModule::l3MVxlanOut);
  send("L3MVxlanOut", "setUdpPort", new vek::pb::UdpPortArg);
  channel->pump();
  const auto errors = takeErrors();
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_THAT(errors[0], ::testing::StartsWith("L3MVxlanOut"));
  EXPECT_TRUE(model.dump()["modules"].contains("L3MVxlanOut"));
}

}  // namespace
}  // namespace DataplaneTest
