#include <gtest/gtest.h>

#include "tests/intf/TrackerFixture.h"

namespace IntfTest {
namespace {

// What the tracker programs besides the interfaces: ifIndex mappings in the VRF's receive
// paths and VLAN entries in the demultiplexer. The intf-tracker scenario follows both
// through their changes; here the edges it does not reach.
using TablesTest = TrackerFixture;

constexpr const char* metaData = "Mdata_McastHwFwd_red";

TEST_F(TablesTest, IfIndexMappingsAreKeptUntilTheReceivePathsCome) {
  device(red, "Ethernet2", "et2", 7);
  mcast(AddressFamily::ipv4, red, "Ethernet2");
  scheduler->settle();
  const McastIntfModuleSm::VrfNameAndIntfId key{{red, Lanx::IntfId("Ethernet2")}};
  EXPECT_EQ(tracker->ifIndexByVrfNameAndIntfId(key), 7u) << "kept without receive paths";

  manager->createMcastAnyRxSet(red, Vrf::VrfIdMap::VrfId(2), group);
  EXPECT_FALSE(table(metaData)["ifIndexToIntfId"].contains("7"));
  tracker->updateIfIndexAll(red);
  EXPECT_EQ(table(metaData)["ifIndexToIntfId"]["7"], id("Ethernet2"));

  mcast(AddressFamily::ipv4, red, "Ethernet2", false);
  scheduler->settle();
  EXPECT_FALSE(tracker->ifIndexByVrfNameAndIntfIdHas(key));
}

TEST_F(TablesTest, AVlanPastTheLastIsRefusedAndChangesNothing) {
  device(red, "Vlan10", "vlan10", 20);
  mcast(AddressFamily::ipv4, red, "Vlan10");
  vlanTable->intfIdToVlanIdIs(Lanx::IntfId("Vlan10"), Bridging::VlanIdOrNone(10));
  // Tracked, so that only the refusal keeps its entry out of the demultiplexer.
  device(red, "Vlan4095", "vlan4095", 21);
  mcast(AddressFamily::ipv4, red, "Vlan4095");
  scheduler->settle();
  ASSERT_TRUE(tracked("Vlan4095"));
  const auto mark = Trace::mark();
  const auto before = table("TxDemuxer");
  vlanTable->intfIdToVlanIdIs(Lanx::IntfId("Vlan4095"), Bridging::VlanIdOrNone(20));
  EXPECT_TRUE(Trace::contains("vlanId for intfId Vlan4095 is too large (4095), ignoring", mark));
  EXPECT_EQ(table("TxDemuxer"), before);
}

}  // namespace
}  // namespace IntfTest
