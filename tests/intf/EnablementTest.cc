#include <gtest/gtest.h>

#include "tests/intf/TrackerFixture.h"

namespace IntfTest {
namespace {

// Which interfaces get an McastIntf: a kernel device and a multicast interface of either
// family are both needed, and each side can come last.
using EnablementTest = TrackerFixture;

// The intf-tracker scenario enables by either family and by a device that comes later;
// here the kind of interface made and the container that goes with the last one.
TEST_F(EnablementTest, NeedsAKernelDeviceAndTheLastInterfaceTakesTheContainer) {
  mcast(AddressFamily::ipv4, red, "Ethernet2");
  scheduler->settle();
  EXPECT_FALSE(tracked("Ethernet2")) << "no device in the VRF's namespace";
  device(red, "Ethernet2", "et2", 7);  // a device change is checked at once
  EXPECT_EQ(manager->vrf(red)->intf(Lanx::IntfId("Ethernet2"))->intfType(),
            VekL3Mcast::McastIntfType::txOnly);

  mcast(AddressFamily::ipv4, red, "Ethernet2", false);
  scheduler->settle();
  EXPECT_FALSE(tracked("Ethernet2"));
  EXPECT_FALSE(manager->vrfHas(red)) << "the last interface takes the container with it";
}

TEST_F(EnablementTest, ARenamedDeviceHasItsFlagClearedAndSetUnderTheNewName) {
  device(red, "Ethernet2", "et2", 7);
  mcast(AddressFamily::ipv4, red, "Ethernet2");
  scheduler->settle();
  allMulti.clear();

  device(red, "Ethernet2", "et2new", 7);
  EXPECT_EQ(allMulti, (decltype(allMulti){{"et2new", false}, {"et2new", true}}));
}

TEST_F(EnablementTest, ANamespaceThatGoesTakesItsInterfaces) {
  device(red, "Ethernet2", "et2", 7);
  mcast(AddressFamily::ipv4, red, "Ethernet2");
  scheduler->settle();
  deviceDir->deviceVrfIntfStatusDirDel(red.nsName());
  scheduler->settle();
  EXPECT_FALSE(tracked("Ethernet2"));
}

TEST_F(EnablementTest, AStartBringsEarlierInterfacesInLine) {
  device(red, "Ethernet2", "et2", 7);
  mcast(AddressFamily::ipv4, red, "Ethernet2");
  scheduler->settle();
  // A new tracker with a new manager, as after a restart: the shared data still lists the
  // interface, whose modules went with the old manager.
  tracker = nullptr;
  manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  tracker = Lumo::makePtr<McastIntfModuleSm>(manager, vekcsd, group, root4, root6, deviceDir,
                                             vlanTable, Qel::activityManager()->clock());
  EXPECT_TRUE(manager->vrf(red)->intf(Lanx::IntfId("Ethernet2"))) << "made again at once";
}

}  // namespace
}  // namespace IntfTest
