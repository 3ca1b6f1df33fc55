#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "tests/vxlan/L3VxlanFixture.h"

namespace VxlanTest {
namespace {

class L3MVxlanInSmTest : public L3VxlanFixture {};

TEST_F(L3MVxlanInSmTest, EachFamilyProgramsItsOwnModuleWithTheTunnelValuesAsTheyAre) {
  vti->udpPortIs(4789);
  vti->srcPortIs(49152);
  vti->ttlIs(64);
  vti->srcIpIntfIs(Lanx::IntfId("Loopback1"));
  vti->vtepAddrIs(Lanx::IpGenAddr("10.0.0.1"));
  vti->vtepAddr6Is(Lanx::IpGenAddr("2001:db8::1"));
  auto sm4 = makeSm(Af::ipv4);
  auto sm6 = makeSm(Af::ipv6);
  for (const char* name : {"L3MVxlanIn", "L3MVxlanIn6"}) {
    const Json held = table(name);
    EXPECT_EQ(held["vxlanDestPort"], 4789) << name;
    EXPECT_EQ(held["vxlanSrcPort"], 49152) << name;
    EXPECT_EQ(held["vxlanTtl"], 64) << name;
    EXPECT_EQ(held["vtepIntfId"], std::to_string(Lanx::IntfId("Loopback1").value())) << name;
    EXPECT_EQ(held["vtepAddr"], "10.0.0.1") << name;
    EXPECT_EQ(held["vtepAddr6"], "2001:db8::1") << name;
    EXPECT_EQ(held["counterIds"].size(), 11u) << name;
  }
  channel->pump();
  const Json module = model.dump()["modules"]["L3MVxlanIn6"];
  EXPECT_EQ(module["inGates"], 2);
  EXPECT_EQ(module["outGates"], 8192);
  EXPECT_EQ(module["reservedOut"], 3);

  // Zero is a value like any other here: the module is told that the tunnel has none.
  vti->udpPortIs(0);
  vti->ttlIs(0);
  vti->vtepAddrIs(Lanx::IpGenAddr("0.0.0.0"));
  EXPECT_EQ(table()["vxlanDestPort"], 0);
  EXPECT_EQ(table()["vxlanTtl"], 0);
  EXPECT_EQ(table()["vtepAddr"], "");
  EXPECT_EQ(table("L3MVxlanIn6")["vxlanTtl"], 0);
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(L3MVxlanInSmTest, ARoutedInterfaceSendsWithTheVrfVniUnlessItsVlanHasOneOfItsOwn) {
  mcastIntf("red", "Ethernet1");
  mcastIntf("red", "Vlan10");
  vrfVni("red", 50001);
  auto sm = makeSm();
  EXPECT_EQ(srcIntfs(), (Json{{intfKey("Ethernet1"), 50001}, {intfKey("Vlan10"), 50001}}));

  vlanVni(10, 10010);
  EXPECT_EQ(srcIntfs(), (Json{{intfKey("Ethernet1"), 50001}}));
  vti->vlanToVniMapDel(Bridging::VlanId(10));
  EXPECT_TRUE(srcIntfs().contains(intfKey("Vlan10")));

  appDir->vrf(L3::VrfName("red"))->multicastIntfDel(Lanx::IntfId("Ethernet1"));
  EXPECT_EQ(srcIntfs(), (Json{{intfKey("Vlan10"), 50001}}));
  vrfVni("red", 50002);
  EXPECT_EQ(srcIntfs(), (Json{{intfKey("Vlan10"), 50002}}));
  vti->vrfToVniMapDel(L3::VrfName("red"));
  EXPECT_EQ(srcIntfs(), Json::object());
}

TEST_F(L3MVxlanInSmTest, GroupsOfTheSbdVlanGoOutUnderTheVrfIdOnceThereIsOne) {
  sbd("red", 3001);
  mapping(3001, "239.1.1.1", "239.0.0.1");
  // A mapping of a VLAN that is no VRF's SBD VLAN goes nowhere.
  mapping(3009, "239.9.9.9", "239.0.0.9");
  auto sm = makeSm();
  EXPECT_EQ(groups(), Json::object()) << "no id yet";

  vrfId("red", 2);
  EXPECT_EQ(groups(), (Json{{"2", {{"239.1.1.1", "239.0.0.1"}}}}));
  mapping(3001, "239.1.1.2", "239.0.0.2");
  mappingDel(3001, "239.1.1.1");
  EXPECT_EQ(groups(), (Json{{"2", {{"239.1.1.2", "239.0.0.2"}}}}));

  vrfId("red", 5);
  EXPECT_EQ(groups(), (Json{{"5", {{"239.1.1.2", "239.0.0.2"}}}})) << "the old id keeps nothing";
  vrfIdDel("red");
  EXPECT_EQ(groups(), Json::object());
  EXPECT_EQ(errorCount(), 0u);
}

TEST_F(L3MVxlanInSmTest, AMovedOrLostSbdVlanTakesItsGroupsAlong) {
  vrfId("red", 2);
  sbd("red", 3001);
  mapping(3001, "239.1.1.1", "239.0.0.1");
  mapping(3002, "239.2.2.2", "239.0.0.2");
  auto sm = makeSm();
  EXPECT_EQ(groups(), (Json{{"2", {{"239.1.1.1", "239.0.0.1"}}}}));

  sbd("red", 3002);
  EXPECT_EQ(groups(), (Json{{"2", {{"239.2.2.2", "239.0.0.2"}}}}));
  tunnels->vlanStatusDel(Bridging::VlanId(3002));
  EXPECT_EQ(groups(), Json::object()) << "the SBD VLAN's tunnel status went";
  mapping(3002, "239.2.2.3", "239.0.0.3");
  EXPECT_EQ(groups(), (Json{{"2", {{"239.2.2.3", "239.0.0.3"}}}}));
  sbdDel("red");
  EXPECT_EQ(groups(), Json::object());
  EXPECT_EQ(sm->sbdVlanToVrf(Bridging::VlanId(3002)).str(), "");
}

TEST_F(L3MVxlanInSmTest, RoutesThatShareAGroupShareOneEntry) {
  vrfId("red", 2);
  sbd("red", 3001);
  auto sm = makeSm();
  mapping(3001, "239.1.1.1", "239.0.0.1", "10.1.1.1");
  mapping(3001, "239.1.1.1", "239.0.0.7", "10.1.1.2");
  EXPECT_EQ(groups(), (Json{{"2", {{"239.1.1.1", "239.0.0.7"}}}})) << "the last one wins";
}

TEST_F(L3MVxlanInSmTest, ADroppedMachineFreesItsModule) {
  auto sm = makeSm();
  sm->cleanup();
  EXPECT_FALSE(sm->initialized());
  channel->pump();
  EXPECT_FALSE(model.dump()["modules"].contains("L3MVxlanIn"));
}

// Any order of the VTI's maps, the VRF's id, its interfaces, the tunnel mappings and the
// machine's own start leaves the module as a machine made after all of them leaves it.
TEST(L3MVxlanInSmConvergence, AnyOrderOfEventsEndsInTheSameTable) {
  using Event = std::function<void(L3VxlanWorld&)>;
  std::vector<Event> events = {
      [](L3VxlanWorld& w) { w.sbd("red", 3001); },
      [](L3VxlanWorld& w) { w.vrfId("red", 2); },
      [](L3VxlanWorld& w) { w.vrfId("blue", 3); },
      [](L3VxlanWorld& w) { w.sbd("blue", 3002); },
      [](L3VxlanWorld& w) { w.mapping(3001, "239.1.1.1", "239.0.0.1"); },
      [](L3VxlanWorld& w) { w.mapping(3002, "239.2.2.2", "239.0.0.2"); },
      [](L3VxlanWorld& w) { w.mcastIntf("red", "Ethernet1"); },
      [](L3VxlanWorld& w) { w.mcastIntf("blue", "Vlan20"); },
      [](L3VxlanWorld& w) { w.vrfVni("red", 50001); },
      [](L3VxlanWorld& w) { w.vrfVni("blue", 50002); },
  };
  auto tableOf = [](L3VxlanWorld& w) {
    w.channel->pump();
    return w.model.dump()["modules"]["L3MVxlanIn"]["table"];
  };
  L3VxlanWorld reference;
  for (const Event& event : events) event(reference);
  auto referenceSm = reference.makeSm();
  const Json expected = tableOf(reference);
  ASSERT_EQ(expected["vrfOverlayToUnderlayGroup"].size(), 2u);
  ASSERT_EQ(expected["srcIntfIdToVni"].size(), 2u);

  // The machine's start is one more event.
  std::vector<int> order(events.size() + 1);
  std::iota(order.begin(), order.end(), 0);
  std::mt19937 random(17);
  for (int round = 0; round < 60; ++round) {
    std::shuffle(order.begin(), order.end(), random);
    L3VxlanWorld world;
    Lumo::Ptr<VekMVxlan::L3MVxlanInSm> sm;
    for (int step : order) {
      if (step == static_cast<int>(events.size())) {
        sm = world.makeSm();
      } else {
        events[static_cast<std::size_t>(step)](world);
      }
    }
    EXPECT_EQ(tableOf(world), expected) << "round " << round;
    EXPECT_TRUE(world.model.errors().empty()) << "round " << round;
  }
}

}  // namespace
}  // namespace VxlanTest
