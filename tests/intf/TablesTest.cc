#include <gtest/gtest.h>

#include "tests/intf/TrackerFixture.h"

namespace IntfTest {
namespace {

// What the tracker programs besides the interfaces: ifIndex mappings in the VRF's receive
// paths and VLAN entries in the demultiplexer.
using TablesTest = TrackerFixture;

constexpr const char* metaData = "Mdata_McastHwFwd_red";

TEST_F(TablesTest, IfIndexMappingsWaitForTheReceivePathsAndFollowTheDevice) {
  device(red, "Ethernet2", "et2", 7);
  mcast(AddressFamily::ipv4, red, "Ethernet2");
  scheduler->settle();
  const McastIntfModuleSm::VrfNameAndIntfId key{{red, Lanx::IntfId("Ethernet2")}};
  EXPECT_EQ(tracker->ifIndexByVrfNameAndIntfId(key), 7u) << "kept without receive paths";

  manager->createMcastAnyRxSet(red, Vrf::VrfIdMap::VrfId(2), group);
  EXPECT_FALSE(table(metaData)["ifIndexToIntfId"].contains("7"));
  tracker->updateIfIndexAll(red);
  EXPECT_EQ(table(metaData)["ifIndexToIntfId"]["7"], id("Ethernet2"));

  device(red, "Ethernet2", "et2", 9);
  EXPECT_EQ(table(metaData)["ifIndexToIntfId"],
            (Json{{"7", "4294967295"}, {"9", id("Ethernet2")}}));
  EXPECT_EQ(tracker->ifIndexByVrfNameAndIntfId(key), 9u);

  mcast(AddressFamily::ipv4, red, "Ethernet2", false);
  scheduler->settle();
  EXPECT_EQ(table(metaData)["ifIndexToIntfId"]["9"], "4294967295");
  EXPECT_FALSE(tracker->ifIndexByVrfNameAndIntfIdHas(key));
}

TEST_F(TablesTest, VlanEntriesFollowTheTableAndRefuseVlan4095) {
  device(red, "Vlan10", "vlan10", 20);
  mcast(AddressFamily::ipv4, red, "Vlan10");
  vlanTable->intfIdToVlanIdIs(Lanx::IntfId("Vlan10"), Bridging::VlanIdOrNone(10));
  scheduler->settle();
  EXPECT_EQ(table("TxDemuxer")["intfToOutGate"][id("Vlan10")], (Json{{"gate", 0}, {"vlan", 10}}))
      << "restored after the interface was made";

  vlanTable->intfIdToVlanIdIs(Lanx::IntfId("Vlan10"), Bridging::VlanIdOrNone(11));
  EXPECT_EQ(table("TxDemuxer")["intfToOutGate"][id("Vlan10")]["vlan"], 11);

  const auto mark = Trace::mark();
  const auto before = table("TxDemuxer");
  vlanTable->intfIdToVlanIdIs(Lanx::IntfId("Vlan4095"), Bridging::VlanIdOrNone(20));
  EXPECT_TRUE(Trace::contains("vlanId for intfId Vlan4095 is too large (4095), ignoring", mark));
  EXPECT_EQ(table("TxDemuxer"), before);

  mcast(AddressFamily::ipv4, red, "Vlan10", false);
  scheduler->settle();
  EXPECT_FALSE(table("TxDemuxer")["intfToOutGate"].contains(id("Vlan10")));
}

}  // namespace
}  // namespace IntfTest
