#include <gtest/gtest.h>

#include <set>

#include "runtime/state/multicast/OismFloodSet.h"
#include "tests/vxlan/VxlanFixture.h"
#include "vxlan/VekOismFloodSetSm.h"

namespace VxlanTest {
namespace {

using Routing::Multicast::Evpn::OismFloodSet;
using FloodKeys = std::set<L2MVxlanInTables::FloodKey>;

class OismFloodSetTest : public VxlanFixture {
 protected:
  void start() {
    sm = Lumo::makePtr<VekL3Mcast::VekOismFloodSetSm>(module, floodSets, scheduler);
    sm->hasNotificationActiveIs(true);
    settle();
  }
  Routing::Multicast::Evpn::OismVlanFloodSet& floodSet(std::uint16_t id) {
    return *floodSets->floodSetIs(vlan(id));
  }

  Lumo::Ptr<OismFloodSet> floodSets = Lumo::makePtr<OismFloodSet>();
  Lumo::Ptr<VekL3Mcast::VekOismFloodSetSm> sm;
};

// Each change is one backlog entry worked with the state of its turn.
TEST_F(OismFloodSetTest, VtepAddedAndDeletedInOneBurstGivesOneDeleteAndNoAdd) {
  start();
  floodSet(10).vtepIs(Lanx::IpGenAddr("10.0.0.7"));
  floodSet(10).vtepDel(Lanx::IpGenAddr("10.0.0.7"));
  EXPECT_EQ(sm->vlanVtepBacklogCount(), 1u);
  settle();
  EXPECT_EQ(tables.commandCount["deleteVlanFloodSetEntry"], 1u);
  EXPECT_EQ(tables.commandCount["addVlanFloodSetEntry"], 0u);
}

TEST_F(OismFloodSetTest, VlanWhoseFloodSetGoesLosesEachVtep) {
  floodSet(10).vtepIs(Lanx::IpGenAddr("10.0.0.7"));
  floodSet(10).vtepIs(Lanx::IpGenAddr("10.0.0.8"));
  floodSet(20).vtepIs(Lanx::IpGenAddr("10.0.0.7"));
  start();
  tables.countsClear();
  floodSets->floodSetDel(vlan(10));
  settle();
  EXPECT_EQ(tables.commandCount["deleteVlanFloodSetEntry"], 2u);
  EXPECT_EQ(tables.floodSet, FloodKeys({{20, "10.0.0.7"}}));
  EXPECT_EQ(sm->floodSetCount(), 1u);
}

// With a yield after every key the backlog drains over many runs; none is lost.
TEST_F(OismFloodSetTest, LargeFloodSetDrainsInSlices) {
  for (std::uint16_t id = 1; id <= 30; ++id) floodSet(id).vtepIs(Lanx::IpGenAddr("10.0.0.1"));
  yieldEveryIs(1);
  start();
  EXPECT_EQ(tables.floodSet.size(), 30u);
  EXPECT_EQ(tables.commands, 30u);
  EXPECT_GE(sm->oismFloodSetTask()->taskStats().runs, 30u);
}

}  // namespace
}  // namespace VxlanTest
