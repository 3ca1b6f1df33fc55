#include <gtest/gtest.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>
#include <utility>

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

// Of either family: nothing else changes for an interface whose namespace goes.
TEST_F(EnablementTest, ANamespaceThatGoesTakesItsInterfaces) {
  device(red, "Ethernet2", "et2", 7);
  device(red, "Ethernet3", "et3", 8);
  mcast(AddressFamily::ipv4, red, "Ethernet2");
  mcast(AddressFamily::ipv6, red, "Ethernet3");
  scheduler->settle();
  ASSERT_TRUE(tracked("Ethernet3"));
  deviceDir->deviceVrfIntfStatusDirDel(red.nsName());
  scheduler->settle();
  EXPECT_FALSE(tracked("Ethernet2"));
  EXPECT_FALSE(tracked("Ethernet3")) << "an IPv6 interface is reviewed as well";
  EXPECT_FALSE(manager->vrfHas(red)) << "the last interface takes the container with it";
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

// The VRF's socket for interface flags: a namespace that cannot be entered is tried again
// at the next interface made, and a device whose interface was made without the socket
// keeps its flags, even once the socket opens.
TEST_F(EnablementTest, AMissingNamespaceIsTriedAgainAtTheNextInterfaceAndOwesNoFlag) {
  int opens = 0;
  bool namespaceThere = false;
  manager->ioctlSocketOpenerIsForTest([&](const Lanx::NamespaceName&) {
    ++opens;
    if (namespaceThere) return ::socket(AF_INET, SOCK_DGRAM, 0);
    errno = ENOENT;
    return -1;
  });
  for (int i = 1; i <= 3; ++i) {
    const std::string intf = "Ethernet" + std::to_string(i);
    device(red, intf.c_str(), ("et" + std::to_string(i)).c_str(), i);
    mcast(AddressFamily::ipv4, red, intf.c_str());
  }
  scheduler->settle();
  ASSERT_TRUE(tracked("Ethernet3"));
  EXPECT_GE(opens, 3) << "each interface made tries again";
  EXPECT_LT(manager->vrf(red)->ioctlFd(), 0);

  // No time passes: the next interface made opens the socket and sets its own flag only.
  namespaceThere = true;
  allMulti.clear();
  device(red, "Ethernet1", "et1", 11);
  EXPECT_GE(manager->vrf(red)->ioctlFd(), 0);
  EXPECT_EQ(allMulti, (decltype(allMulti){{"et1", false}, {"et1", true}}));
}

}  // namespace
}  // namespace IntfTest
