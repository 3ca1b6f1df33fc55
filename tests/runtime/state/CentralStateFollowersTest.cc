#include <gtest/gtest.h>

#include "runtime/state/intf/IntfStatusManagerRoot.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSmColl.h"

namespace {

using Interface::DeviceIntfStatus;
using KernelDevice = KernelNetInfo::Interface;
using Lanx::IntfId;

class IntfStatusManagerTest : public ::testing::Test {
 protected:
  IntfStatusManagerTest() { root->hasNotificationActiveIs(true); }

  Lumo::Ptr<Interface::IntfStatusManager> manage() {
    return root->intfStatusManagerIs(Lanx::NamespaceName("ns-red"), devices, kernel);
  }

  Lumo::Ptr<KernelNetInfo::Root> kernel = Lumo::makePtr<KernelNetInfo::Root>();
  Lumo::Ptr<Interface::DeviceIntfStatusDir> devices =
      Lumo::makePtr<Interface::DeviceIntfStatusDir>();
  Lumo::Ptr<Interface::IntfStatusManagerRoot> root =
      Lumo::makePtr<Interface::IntfStatusManagerRoot>(nullptr, nullptr, true);
  const IntfId et2{"Ethernet2"};
  const IntfId et3{"Ethernet3"};
};

// The intf-tracker scenario follows devices that come, move and go through the agent;
// here a device that stands for no interface, and the up flag.
TEST_F(IntfStatusManagerTest, OnlyDevicesThatStandForAnInterfaceAreFollowed) {
  kernel->interfaceByDeviceNameIs("et2", KernelDevice{7, 1, et2});
  kernel->interfaceByDeviceNameIs("lo", KernelDevice{1, 1, IntfId()});
  manage();
  EXPECT_EQ(devices->deviceIntfStatus(et2), (DeviceIntfStatus{"et2", 7, 1}));
  EXPECT_EQ(devices->devices().size(), 1u);
  kernel->interfaceByDeviceNameIs("et2", KernelDevice{9, 0, et2});
  EXPECT_EQ(devices->deviceIntfStatus(et2), (DeviceIntfStatus{"et2", 9, 0}));
}

TEST_F(IntfStatusManagerTest, ADeviceThatChangesItsInterfaceLeavesOnlyItsOwnEntryBehind) {
  kernel->interfaceByDeviceNameIs("a", KernelDevice{7, 1, et2});
  manage();
  // Another device takes et2 over; then the first one moves on to et3.
  kernel->interfaceByDeviceNameIs("b", KernelDevice{8, 1, et2});
  kernel->interfaceByDeviceNameIs("a", KernelDevice{7, 1, et3});
  EXPECT_EQ(devices->deviceIntfStatus(et2).deviceName, "b");
  EXPECT_EQ(devices->deviceIntfStatus(et3).deviceName, "a");
}

TEST_F(IntfStatusManagerTest, AManagerThatGoesTakesItsEntriesAndHearsNothingMore) {
  kernel->interfaceByDeviceNameIs("et2", KernelDevice{7, 1, et2});
  manage();
  root->intfStatusManagerDel(Lanx::NamespaceName("ns-red"));
  EXPECT_TRUE(devices->devices().empty());
  kernel->interfaceByDeviceNameIs("et3", KernelDevice{8, 1, et3});
  EXPECT_TRUE(devices->devices().empty());
}

class MulticastIntfsAppRootSmTest : public ::testing::Test {
 protected:
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSm> follow(const char* vrf) {
    return roots->vrfSmIs(L3::VrfName(vrf), Lanx::AddressFamily::ipv4, dir);
  }

  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir> dir =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppDir>();
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl> roots =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppRootSmColl>();
  const IntfId et2{"Ethernet2"};
  const IntfId et3{"Ethernet3"};
};

TEST_F(MulticastIntfsAppRootSmTest, FollowsAVrfWhoseEntryComesLaterIsReplacedAndGoes) {
  auto red = follow("red");
  EXPECT_TRUE(red->multicastIntfs().empty());
  dir->vrfIs(L3::VrfName("red"))->multicastIntfIs(et2);
  dir->vrfIs(L3::VrfName("blue"))->multicastIntfIs(et3);
  EXPECT_TRUE(red->multicastIntfHas(et2));
  EXPECT_FALSE(red->multicastIntfHas(et3));

  auto replacement = Lumo::makePtr<Routing::Multicast::MulticastIntfs>();
  replacement->multicastIntfIs(et3);
  dir->childIs(Lumo::String("red"), replacement);
  EXPECT_FALSE(red->multicastIntfHas(et2));
  EXPECT_TRUE(red->multicastIntfHas(et3));

  dir->vrfDel(L3::VrfName("red"));
  EXPECT_TRUE(red->multicastIntfs().empty());
}

TEST_F(MulticastIntfsAppRootSmTest, OneFollowerPerVrfAndARemovedOneHearsNothing) {
  dir->vrfIs(L3::VrfName("red"))->multicastIntfIs(et2);
  auto red = follow("red");
  EXPECT_EQ(follow("red"), red);
  EXPECT_TRUE(red->multicastIntfHas(et2));
  roots->vrfSmDel(L3::VrfName("red"));
  EXPECT_EQ(roots->vrfSm(L3::VrfName("red")), nullptr);
  dir->vrfIs(L3::VrfName("red"))->multicastIntfIs(et3);
  EXPECT_FALSE(red->multicastIntfHas(et3));
}

}  // namespace
