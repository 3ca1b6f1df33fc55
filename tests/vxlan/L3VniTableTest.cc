#include <gtest/gtest.h>

#include "runtime/lumo/Ptr.h"
#include "vxlan/L3VniTable.h"

namespace VxlanTest {
namespace {

using VekMVxlan::L3VniTable;
using Action = L3VniTable::Action;
using Bridging::VlanId;
using Vrf::VrfIdMap::VrfId;
using Vxlan::VniExtOrNone;

class L3VniTableTest : public ::testing::Test {
 protected:
  L3VniTable::RemoteVniCommands commandsFor(std::uint32_t vni, bool localVlan = false,
                                            bool localVrf = false) {
    const VlanId vlan = table.remoteVniIs(VniExtOrNone(vni), statik.get(), irb.get());
    return table.remoteVniCommands(VniExtOrNone(vni), vlan, localVlan, localVrf,
                                   [this](const L3::VrfName& vrf) {
                                     return vrf.str() == "red" ? redId : VrfId();
                                   });
  }

  L3VniTable table;
  Lumo::Ptr<Vxlan::RemoteVniToVlanStatus> statik = Lumo::makePtr<Vxlan::RemoteVniToVlanStatus>();
  Lumo::Ptr<Vxlan::RemoteVniToVlanStatus> irb = Lumo::makePtr<Vxlan::RemoteVniToVlanStatus>();
  VrfId redId{2};
};

TEST_F(L3VniTableTest, TheStaticTableWinsAndTheIrbOneStandsInWhenItGoes) {
  irb->vniToVlanIs(VniExtOrNone(10030), VlanId(40));
  statik->vniToVlanIs(VniExtOrNone(10030), VlanId(30));
  auto commands = commandsFor(10030);
  EXPECT_EQ(commands.vniVlan, Action::add);
  EXPECT_EQ(commands.vlan, VlanId(30));

  statik->vniToVlanDel(VniExtOrNone(10030));
  commands = commandsFor(10030);
  EXPECT_EQ(commands.vniVlan, Action::add);
  EXPECT_EQ(commands.vlan, VlanId(40));

  irb->vniToVlanDel(VniExtOrNone(10030));
  commands = commandsFor(10030);
  EXPECT_EQ(commands.vniVlan, Action::del);
  EXPECT_EQ(commands.vlan, VlanId(40)) << "a removal still names the VLAN it had";
  EXPECT_EQ(commandsFor(10099).vlan, VlanId(1)) << "never seen: VLAN 1";
}

TEST_F(L3VniTableTest, ALocalMappingOfAKindKeepsTheRemoteOneOfThatKindOut) {
  table.vrfToSBDVlanIs(L3::VrfName("red"), VlanId(3001));
  statik->vniToVlanIs(VniExtOrNone(50001), VlanId(3001));
  EXPECT_EQ(commandsFor(50001),
            (L3VniTable::RemoteVniCommands{Action::add, VlanId(3001), Action::add, redId}));
  EXPECT_EQ(commandsFor(50001, true, false).vniVlan, Action::none);
  EXPECT_EQ(commandsFor(50001, true, false).vniVrf, Action::add);
  EXPECT_EQ(commandsFor(50001, false, true).vniVrf, Action::none);
  EXPECT_EQ(commandsFor(50001, false, true).vniVlan, Action::add);
}

TEST_F(L3VniTableTest, ARemoteVniReachesAVrfOnlyThroughAnSbdVlanWithAnId) {
  statik->vniToVlanIs(VniExtOrNone(50001), VlanId(3001));
  EXPECT_EQ(commandsFor(50001).vniVrf, Action::del) << "no VRF has the VLAN";
  table.vrfToSBDVlanIs(L3::VrfName("red"), VlanId(3001));
  redId = VrfId();
  EXPECT_EQ(commandsFor(50001).vniVrf, Action::del) << "the VRF has no id";
  redId = VrfId(7);
  EXPECT_EQ(commandsFor(50001).vrfId, VrfId(7));
}

TEST_F(L3VniTableTest, AnSbdVlanFollowsItsVrf) {
  table.vrfToSBDVlanIs(L3::VrfName("red"), VlanId(3001));
  table.vrfToSBDVlanIs(L3::VrfName("red"), VlanId(3002));
  EXPECT_FALSE(table.sbdVlanToVrf(VlanId(3001)));
  EXPECT_EQ(table.sbdVlanToVrf(VlanId(3002))->str(), "red");
  // The VLAN moves to another VRF; the first one's removal must not take it away.
  table.vrfToSBDVlanIs(L3::VrfName("blue"), VlanId(3002));
  EXPECT_EQ(table.vrfToSBDVlanDel(L3::VrfName("red")), Bridging::VlanIdOrNone(VlanId(3002)));
  EXPECT_EQ(table.sbdVlanToVrf(VlanId(3002))->str(), "blue");
  EXPECT_TRUE(table.vrfToSBDVlanDel(L3::VrfName("red")).isNone());
}

}  // namespace
}  // namespace VxlanTest
