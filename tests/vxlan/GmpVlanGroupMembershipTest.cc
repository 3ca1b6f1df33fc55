#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/state/EthAddr.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "tests/vxlan/VxlanFixture.h"
#include "vxlan/VekGmpVlanGroupMembershipSm.h"

namespace VxlanTest {
namespace {

using Bridging::IgmpSnooping::Status;
using Strings = std::vector<std::string>;

const std::string v4Internal = "00:00:00:00:00:00";
const std::string groupA = "01:00:5e:01:01:01";
const std::string groupB = "01:00:5e:02:02:02";

class GmpMembershipTest : public VxlanFixture {
 protected:
  void start(Lanx::AddressFamily af = Lanx::AddressFamily::ipv4) {
    sm = Lumo::makePtr<VekL3Mcast::VekGmpVlanGroupMembershipSm>(af, status, module, scheduler);
    sm->hasNotificationActiveIs(true);
    settle();
  }
  Bridging::IgmpSnooping::VlanStatus& vlanStatus(std::uint16_t id) {
    return *status->vlanStatusIs(vlan(id));
  }
  Bridging::IgmpSnooping::EthGroup& group(std::uint16_t id, const std::string& mac) {
    return *vlanStatus(id).ethGroupIs(Lanx::EthAddr(mac));
  }

  Lumo::Ptr<Status> status = Lumo::makePtr<Status>();
  Lumo::Ptr<VekL3Mcast::VekGmpVlanGroupMembershipSm> sm;
};

// The first walk, with every group's tunnels and the router ports in address order, is
// driven end to end by the snooping scenario and the bridged example; here the cases they
// do not reach.
TEST_F(GmpMembershipTest, Ipv6RouterPortsGoUnderTheAllOnesKey) {
  vlanStatus(10).routerIntfIs(tunnel(1, "10.0.0.9"));
  start(Lanx::AddressFamily::ipv6);
  EXPECT_EQ(tables.list(10, "ff:ff:ff:ff:ff:ff"), Strings({"10.0.0.9"}));
  EXPECT_EQ(tables.list(10, v4Internal), Strings({"absent"}));
}

// Many changes to one group between two runs cost one command, with the final list.
TEST_F(GmpMembershipTest, BurstOnOneGroupSendsOneCommandWithTheFinalList) {
  group(10, groupA).memberIntfIs(tunnel(1, "10.0.0.1"));
  start();
  tables.countsClear();

  auto& g = group(10, groupA);
  g.memberIntfIs(tunnel(1, "10.0.0.3"));
  g.memberIntfIs(tunnel(1, "10.0.0.2"));
  g.memberIntfDel(tunnel(1, "10.0.0.1"));
  g.memberIntfIs(Lanx::IntfId::ethernet(7));
  g.memberIntfIs(tunnel(1, "10.0.0.4"));
  g.memberIntfDel(tunnel(1, "10.0.0.4"));
  settle();

  EXPECT_EQ(tables.commands, 1u);
  EXPECT_EQ(tables.list(10, groupA), Strings({"10.0.0.2", "10.0.0.3"}));
}

// A group whose last tunnel member left stays programmed, with an empty list; a group
// that goes is deleted. A VLAN that goes is driven by the snooping scenario.
TEST_F(GmpMembershipTest, AnEmptiedGroupStaysAndAGroupThatGoesIsDeleted) {
  vlanStatus(10).routerIntfIs(tunnel(1, "10.0.0.9"));
  group(10, groupA).memberIntfIs(tunnel(1, "10.0.0.1"));
  group(10, groupB).memberIntfIs(tunnel(1, "10.0.0.2"));
  start();

  vlanStatus(10).routerIntfDel(tunnel(1, "10.0.0.9"));
  group(10, groupA).memberIntfDel(tunnel(1, "10.0.0.1"));
  settle();
  EXPECT_EQ(tables.list(10, v4Internal), Strings({"absent"}));
  EXPECT_EQ(tables.list(10, groupA), Strings());
  EXPECT_EQ(tables.list(10, groupB), Strings({"10.0.0.2"}));

  vlanStatus(10).ethGroupDel(Lanx::EthAddr(groupA));
  settle();
  EXPECT_EQ(tables.list(10, groupA), Strings({"absent"}));
}

// Tunnels of type 2 make a VLAN a tunnel VLAN without naming a VTEP.
TEST_F(GmpMembershipTest, TypeTwoRouterPortGivesTheInternalMemberAnEmptyList) {
  vlanStatus(10).routerIntfIs(tunnel(2, "10.0.0.9"));
  group(10, groupA).memberIntfIs(Lanx::IntfId::ethernet(3));
  start();
  EXPECT_EQ(tables.list(10, v4Internal), Strings());
  EXPECT_EQ(tables.list(10, groupA), Strings());

  // A second router port that is a VTEP joins every list.
  vlanStatus(10).routerIntfIs(tunnel(1, "10.0.0.5"));
  settle();
  EXPECT_EQ(tables.list(10, v4Internal), Strings({"10.0.0.5"}));
  EXPECT_EQ(tables.list(10, groupA), Strings({"10.0.0.5"}));
}

// A VLAN and its groups that come after the start are programmed as they come, also when
// the writer fills them before inserting them.
TEST_F(GmpMembershipTest, VlanThatComesLaterIsProgrammed) {
  start();
  auto& added = vlanStatus(30);
  added.routerIntfIs(tunnel(1, "10.0.0.9"));
  added.ethGroupIs(Lanx::EthAddr(groupA))->memberIntfIs(tunnel(1, "10.0.0.1"));
  settle();
  EXPECT_EQ(tables.list(30, v4Internal), Strings({"10.0.0.9"}));
  EXPECT_EQ(tables.list(30, groupA), Strings({"10.0.0.1", "10.0.0.9"}));
}

// With a scheduler that yields after every key, the backlogs drain over many runs and
// every group is still sent once.
TEST_F(GmpMembershipTest, BacklogsDrainInSlicesAndSendEachGroupOnce) {
  for (std::uint16_t id = 1; id <= 20; ++id) {
    group(id, groupA).memberIntfIs(tunnel(1, "10.0.0.1"));
    group(id, groupB).memberIntfIs(tunnel(1, "10.0.0.2"));
  }
  yieldEveryIs(1);
  start();
  EXPECT_EQ(tables.commandCount["addGmpVlanGroupMember"], 40u);
  EXPECT_GT(sm->vlanEthGroupTask()->taskStats().runs, 40u);
  EXPECT_EQ(sm->vlanEthGroupBacklogCount(), 0u);
  EXPECT_EQ(sm->vlanBacklogCount(), 0u);
}

}  // namespace
}  // namespace VxlanTest
