#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"
#include "host/SnoopingStateKeys.h"
#include "host/StateWriter.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/McastTunnelIntfId.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "runtime/state/multicast/OismFloodSet.h"

namespace VekHost {
namespace {

using Lanx::AddressFamily;
using Lanx::IntfId;
using Routing::Multicast::Fib::MfibAppType;
using Vrf::VrfIdMap::VrfId;

// Loads a scenario whose state and set/delete steps are applied in order by the writer.
class StateWriterTest : public ::testing::Test {
 protected:
  ~StateWriterTest() override {
    QelSharedMem::EntityManager::managersDelAllForTest();
    Qel::Entity::singletonDelAllForTest();
  }

  void apply(const std::string& text) {
    LoadResult loaded = ScenarioLoader(LoaderOptions{}).loadText(text, "s.yaml");
    ASSERT_TRUE(loaded.scenario) << loaded.errors.front();
    writer.apply(loaded.scenario->state, StateOp::set);
    for (const Step& step : loaded.scenario->steps) {
      const auto& change = std::get<StateStep>(step.action);
      writer.apply(change.change, change.op);
    }
  }
  const Vash::Multicast::Fib::Route* route(const char* source, const char* group) {
    if (!store.routeTableHas(L3::VrfName("red"), AddressFamily::ipv4, MfibAppType::pim)) {
      return nullptr;
    }
    return store.routeTable(L3::VrfName("red"), AddressFamily::ipv4, MfibAppType::pim)
        .routeFind({Lanx::IpGenPrefix(source), Lanx::IpGenPrefix(group)});
  }

  CentralStateStore store{"stateWriterTest"};
  StateWriter writer{store};
};

TEST_F(StateWriterTest, IdsMoveAndGoByName) {
  apply(R"(state:
  vrfs: {red: 2, blue: 3}
  hwVrfs: {red: 12, blue: 13}
steps:
  - set: {hwVrfs: {red: 14}}
  - delete: {vrfs: [blue], hwVrfs: [blue]}
)");
  EXPECT_EQ(store.vrfNameToId().vrfId("red"), VrfId(2));
  EXPECT_FALSE(store.vrfNameToId().vrfIdHas("blue"));
  // A name stands under one hardware id: the old id's entry went with the move.
  EXPECT_EQ(store.hwVrfIdMap().vrfEntry(VrfId(14)).name, "red");
  EXPECT_EQ(store.hwVrfIdMap().vrfEntries().size(), 1u);
}

// The scenario files write devices, interfaces, limits and the MAC through the agent; here
// what they do not reach: a device that is down or stands for no interface, a family left
// unwritten, and the MAC removed.
TEST_F(StateWriterTest, DevicesDefaultsAndRemovalsLandAsWritten) {
  apply(R"(state:
  bridgeMac: "00:1c:73:aa:bb:cc"
  kernel:
    red: {et2: {ifIndex: 7, up: false, intf: Ethernet2}, lo: {ifIndex: 1}}
  multicastIntfs: {ipv6: {red: [Ethernet2]}}
steps:
  - delete: {bridgeMac: ~}
)");
  const auto& devices = store.kernelDevices(L3::VrfName("red").nsName());
  EXPECT_EQ(devices.interfaceByDeviceName("et2"),
            (KernelNetInfo::Interface{7, 0, IntfId("Ethernet2")}));
  EXPECT_EQ(devices.interfaceByDeviceName("lo"), (KernelNetInfo::Interface{1, 1, IntfId()}));
  EXPECT_NE(store.multicastIntfs(AddressFamily::ipv6).vrf(L3::VrfName("red")), nullptr);
  EXPECT_EQ(store.multicastIntfs(AddressFamily::ipv4).vrf(L3::VrfName("red")), nullptr);
  EXPECT_TRUE(store.bridgingConfig().bridgeMacAddr().isZero());
}

TEST_F(StateWriterTest, RoutesCarryTheirRolesAndFlagsAndTheirTableGoesAfterThem) {
  apply(R"(state:
  mroutes:
    - {vrf: red, af: ipv4, app: pim, source: 10.1.1.1, group: 239.1.1.1,
       iif: Ethernet2, oifs: [Ethernet3, Ethernet2], flags: [fastdrop, switching]}
    - {vrf: red, af: ipv4, app: pim, source: "*", group: 239.2.2.2, oifs: [Ethernet3]}
steps:
  - delete: {mroutes: [{vrf: red, af: ipv4, app: pim, source: "*", group: 239.2.2.2}]}
)");
  const auto* sg = route("10.1.1.1", "239.1.1.1");
  ASSERT_NE(sg, nullptr);
  EXPECT_EQ(sg->iif(), IntfId("Ethernet2"));
  EXPECT_TRUE(sg->fastdrop());
  EXPECT_TRUE(sg->switching());
  EXPECT_FALSE(sg->iifRegister());
  using Vash::Multicast::Fib::RouteIntf;
  for (const RouteIntf& member : sg->intfs()) {
    // The incoming interface listed among the outgoing ones keeps its incoming role.
    EXPECT_EQ(member.isIncoming(), member.intfId == IntfId("Ethernet2"));
    EXPECT_TRUE(member.isOutgoing());
  }
  EXPECT_EQ(route("*", "239.2.2.2"), nullptr);

  apply(R"(steps:
  - delete: {tables: [{vrf: red, af: ipv4, app: pim}]}
)");
  EXPECT_FALSE(store.routeTableHas(L3::VrfName("red"), AddressFamily::ipv4, MfibAppType::pim));
  EXPECT_EQ(store.sharedMem()->getEntity("routing/multicast/fib/red/pim"), nullptr);
}

// The snooping status of IPv4, as the writer left it.
const Bridging::IgmpSnooping::Status& snooping(const CentralStateStore& store) {
  return dynamic_cast<const Bridging::IgmpSnooping::Status&>(
      *store.entityManager()->getEntity(Bridging::IgmpSnooping::Status::igmpPath));
}

// A set replaces what it names and keeps the rest; a delete takes what it names.
TEST_F(StateWriterTest, SetsReplaceWhatTheyNameAndDeletesTakeIt) {
  apply(R"(state:
  snooping:
    ipv4: {10: {routerIntfs: [{tunnel: 1, vtep: 10.0.0.9}, Ethernet2],
                groups: {"01:00:5e:01:01:01": [{tunnel: 1, vtep: 10.0.0.7}, Ethernet3],
                         "01:00:5e:02:02:02": [Ethernet4]}}}
steps:
  - set: {snooping: {ipv4: {10: {groups: {"01:00:5e:01:01:01": [Ethernet5]}}}}}
  - delete: {snooping: {ipv4: {10: {groups: ["01:00:5e:02:02:02"]}}}}
)");
  const auto vlan = snooping(store).vlanStatus(Bridging::VlanId(10));
  ASSERT_TRUE(vlan);
  const auto tunnel = Multicast::Tunnel::McastTunnelIntfId::intfId(1, Lanx::IpGenAddr("10.0.0.9"));
  EXPECT_TRUE(vlan->routerIntfHas(tunnel));
  EXPECT_TRUE(vlan->routerIntfHas(Lanx::IntfId::ethernet(2)));
  const auto group = vlan->ethGroup(Lanx::EthAddr("01:00:5e:01:01:01"));
  ASSERT_TRUE(group);
  EXPECT_EQ(group->memberIntfs().size(), 1u);
  EXPECT_TRUE(group->memberIntfHas(Lanx::IntfId::ethernet(5)));
  EXPECT_FALSE(vlan->ethGroup(Lanx::EthAddr("01:00:5e:02:02:02")));

  apply("steps:\n  - delete: {snooping: {ipv4: [10]}}\n");
  EXPECT_FALSE(snooping(store).vlanStatus(Bridging::VlanId(10)));
}

TEST_F(StateWriterTest, FloodSetsAndTheStatusTableReachTheirEntities) {
  apply(R"(state:
  oismFloodSet: {10: [10.0.0.7, 10.0.0.8], 20: ["2001:db8::7"]}
  vxlanVtepVlanStatus: [{vtep: 10.0.0.8, vlan: 20}, {vtep: 10.0.0.7, vlan: 10},
                        {vtep: 10.0.0.9, vlan: 10}]
steps:
  - set: {oismFloodSet: {10: [10.0.0.9]}}
  - delete: {oismFloodSet: [20]}
)");
  const auto& floodSets = dynamic_cast<const Routing::Multicast::Evpn::OismFloodSet&>(
      *store.sharedMem()->getEntity(Routing::Multicast::Evpn::OismFloodSet::mountPath()));
  const auto vlan10 = floodSets.floodSet(Bridging::VlanId(10));
  ASSERT_TRUE(vlan10);
  EXPECT_EQ(vlan10->vteps().size(), 1u);
  EXPECT_TRUE(vlan10->vtepHas(Lanx::IpGenAddr("10.0.0.9")));
  EXPECT_FALSE(floodSets.floodSet(Bridging::VlanId(20)));
  // The dump orders the table by VLAN, then address.
  EXPECT_EQ(SnoopingStateKeys::vxlanVtepVlanStatusDump(),
            nlohmann::json::parse(R"([{"vtep": "10.0.0.7", "vlan": 10},
                                      {"vtep": "10.0.0.9", "vlan": 10},
                                      {"vtep": "10.0.0.8", "vlan": 20}])"));
}

}  // namespace
}  // namespace VekHost
