#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"
#include "host/StateWriter.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/EntityManager.h"

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

}  // namespace
}  // namespace VekHost
