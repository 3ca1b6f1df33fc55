#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"
#include "host/StateWriter.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/bridging/HwCapabilities.h"
#include "runtime/state/irb/IgmpProxyStatus.h"
#include "runtime/state/irb/McastIrbStatus.h"
#include "runtime/state/multicast/HwRouteStatus.h"
#include "runtime/state/multicast/IpTunnelDecapConfig.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"
#include "runtime/state/vxlan/VtiStatusDir.h"

namespace VekHost {
namespace {

using Bridging::VlanId;
using Lanx::AddressFamily;
using Lanx::IpGenAddr;

// A mistake in a VXLAN key is refused at its line, before anything is applied.
TEST(VxlanStateKeysTest, MistakesAreRefusedAtTheirLine) {
  struct Bad {
    const char* yaml;
    int line;
    const char* message;
  };
  const Bad cases[] = {
      {"state:\n  proxyVlans: {igmp: [10, 0]}\n", 2, "a VLAN must be an integer from 1 to 4094"},
      {"state:\n  mcastIrb: {ipv4: {4095: 3001}}\n", 2, "a VLAN must be an integer from 1"},
      {"state:\n  vtis:\n    Vxlan1: {vlanToVni: {10: 16777216}}\n", 3,
       "a VNI must be an integer from 0 to 16777215"},
      {"state:\n  vtis:\n    Vxlan1: {vtep: \"2001:db8::1\"}\n", 3, "is not an ipv4 address"},
      {"state:\n  vtis:\n    Vxlan1: {vtep6: 10.0.0.1}\n", 3, "is not an ipv6 address"},
      {"state:\n  vtis:\n    Vxlan1: {vni: 5}\n", 3, "unknown key 'vni' in a VTI"},
      {"state:\n  tunnelMappings:\n    ipv4: {10: [{overlay: {source: \"*\", group: 10.1.1.1},\n"
       "        underlay: {source: 10.0.0.1, group: 239.0.0.1}}]}\n",
       3, "group 10.1.1.1 is not a multicast address"},
      {"state:\n  tunnelMappings:\n    ipv4: {10: [{overlay: {source: \"*\", group: 239.1.1.1},\n"
       "        underlay: {source: 10.0.0.1, group: 0.0.0.0}}]}\n",
       4, "group 0.0.0.0 is not a multicast address"},
      {"state:\n  remoteVnis: {local: {10030: 30}}\n", 2, "a remote VNI table must be one of"},
      {"state:\n  fwdDevices: {ipv5: fwd0}\n", 2, "af must be one of ipv4, ipv6"},
      {"state:\n  hwCapabilities: {switching: true}\n", 2, "unknown key 'switching'"},
      {"state:\n  decapRoutes: {ipv6: [{source: \"*\", group: 239.0.0.1}]}\n", 2,
       "is not an ipv6 address"},
  };
  for (const Bad& bad : cases) {
    LoadResult result = ScenarioLoader(LoaderOptions{}).loadText(bad.yaml, "t.yaml");
    ASSERT_FALSE(result.scenario) << bad.yaml;
    const std::string prefix = "t.yaml:" + std::to_string(bad.line) + ": ";
    EXPECT_EQ(result.errors.front().rfind(prefix, 0), 0u) << result.errors.front();
    EXPECT_NE(result.errors.front().find(bad.message), std::string::npos)
        << "wanted '" << bad.message << "' in: " << result.errors.front();
  }
}

class VxlanStateWriterTest : public ::testing::Test {
 protected:
  ~VxlanStateWriterTest() override {
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
  template <class T>
  const T& central(std::string_view path) {
    return *Lumo::ptrCast<T>(store.entityManager()->getEntity(path));
  }
  template <class T>
  Lumo::Ptr<T> shared(std::string_view path) {
    return Lumo::ptrCast<T>(store.sharedMem()->getEntity(path));
  }
  Lumo::Ptr<Vxlan::VtiStatus const> vxlan1() {
    return central<Vxlan::VtiStatusDir>(Vxlan::VtiStatusDir::path)
        .vtiStatus(Lanx::IntfId("Vxlan1"));
  }

  CentralStateStore store{"vxlanStateWriterTest"};
  StateWriter writer{store};
};

TEST_F(VxlanStateWriterTest, AVtiTakesEveryFieldAndLosesWhatADeleteNames) {
  apply(R"(state:
  vtis:
    Vxlan1: {srcIpIntf: Loopback1, udpPort: 4789, srcPort: 49152, ttl: 64,
             vtep: 10.0.0.1, vtep6: "2001:db8::1",
             vlanToVni: {10: 10010, 20: 10020}, vrfToVni: {red: 50001}, vrfToSbdVlan: {red: 3001}}
steps:
  - set: {vtis: {Vxlan1: {vlanToVni: {30: 10030}}}}
  - delete: {vtis: {Vxlan1: {vlanToVni: [20], vtep6: ~}}}
)");
  const auto vti = vxlan1();
  ASSERT_TRUE(vti);
  EXPECT_EQ(vti->srcIpIntf(), Lanx::IntfId("Loopback1"));
  EXPECT_EQ(vti->udpPort(), 4789);
  EXPECT_EQ(vti->srcPort(), 49152);
  EXPECT_EQ(vti->ttl(), 64);
  EXPECT_EQ(vti->vtepAddr(), IpGenAddr("10.0.0.1"));
  EXPECT_TRUE(vti->vtepAddr6().isNone());
  EXPECT_EQ(vti->vlanToVniMaps().size(), 2u);
  EXPECT_EQ(*vti->vlanToVniMap(VlanId(30)), Vxlan::VniExtOrNone(10030));
  EXPECT_FALSE(vti->vlanToVniMap(VlanId(20)));
  EXPECT_EQ(*vti->vrfToVniMap(L3::VrfName("red")), Vxlan::VniExtOrNone(50001));
  EXPECT_EQ(vti->vrfToSbdVlanMap(L3::VrfName("red"))->value(), 3001);

  apply("steps:\n  - delete: {vtis: [Vxlan1]}\n");
  EXPECT_FALSE(vxlan1());
}

TEST_F(VxlanStateWriterTest, TablesOfTheVxlanAndProxyInputsAreWrittenWhereTheAgentMountsThem) {
  apply(R"(state:
  fwdDevices: {ipv4: fwd0, ipv6: fwd1}
  hwCapabilities: {vxlanSwitchPktToMcastTunnelInSw: true}
  remoteVnis: {static: {10030: 30}, irb: {10040: 40}}
  decapRoutes: {ipv4: [{source: 10.0.0.9, group: 239.0.0.1}, {source: "*", group: 239.0.0.2}]}
  tunnelMappings:
    ipv4: {10: [{overlay: {source: "*", group: 239.1.1.1},
                 underlay: {source: 10.0.0.1, group: 239.0.0.1}},
                {overlay: {source: 10.9.9.9, group: 239.1.1.2},
                 underlay: {source: "*", group: 239.0.0.2}}]}
  mcastIrb: {ipv4: {10: 3001}}
  proxyVlans: {igmp: [10, 20], mld: [20]}
steps:
  - delete: {fwdDevices: [ipv6], decapRoutes: {ipv4: [{source: "*", group: 239.0.0.2}]},
             tunnelMappings: {ipv4: {10: [{overlay: {source: "*", group: 239.1.1.1}}]}},
             proxyVlans: {igmp: [20]}, remoteVnis: {irb: [10040]}}
)");
  const auto fwd = central<Routing::Hardware::RouteStatus>(Routing::Hardware::RouteStatus::path)
                       .vrfStatus(L3::VrfName::defaultVrf());
  ASSERT_TRUE(fwd);
  EXPECT_EQ(*fwd->fwd0EthTypeEntry(Routing::Fwd0RoutingEthType::ipv4), Lumo::String("fwd0"));
  EXPECT_FALSE(fwd->fwd0EthTypeEntry(Routing::Fwd0RoutingEthType::ipv6));
  EXPECT_TRUE(central<Bridging::HwCapabilities>(Bridging::HwCapabilities::path)
                  .vxlanSwitchPktToMcastTunnelInSw());

  const Lanx::IntfId vxlan1("Vxlan1");
  EXPECT_EQ(*shared<Vxlan::RemoteVniToVlanStatus>(
                 Vxlan::RemoteVniToVlanStatus::mountPath("static", vxlan1))
                 ->vniToVlan(Vxlan::VniExtOrNone(10030)),
            VlanId(30));
  EXPECT_FALSE(shared<Vxlan::RemoteVniToVlanStatus>(
                   Vxlan::RemoteVniToVlanStatus::mountPath("irb", vxlan1))
                   ->vniToVlan(Vxlan::VniExtOrNone(10040)));

  const auto decap = shared<Routing::Multicast::IpTunnelDecapConfig>(
      Routing::Multicast::IpTunnelDecapConfig::mountPath(AddressFamily::ipv4));
  ASSERT_EQ(decap->routes().size(), 1u);
  EXPECT_TRUE(decap->routeHas({IpGenAddr("10.0.0.9"), IpGenAddr("239.0.0.1")}));

  const auto tunnels = shared<Routing::Multicast::IpTunnelForwardingStatus>(
      Routing::Multicast::IpTunnelForwardingStatus::mountPath(AddressFamily::ipv4));
  const auto vlan10 = tunnels->vlanStatus(VlanId(10));
  ASSERT_TRUE(vlan10);
  ASSERT_EQ(vlan10->mappings().size(), 1u);
  const auto* left = vlan10->mapping({IpGenAddr("10.9.9.9"), IpGenAddr("239.1.1.2")});
  ASSERT_TRUE(left);
  EXPECT_TRUE(left->underlayRoute().source().isNone()) << "\"*\" is any source";

  EXPECT_EQ(*shared<Irb::Multicast::McastIrbStatus>(
                 Irb::Multicast::McastIrbStatus::mountPath(AddressFamily::ipv4))
                 ->sbdVlan(VlanId(10)),
            VlanId(3001));
  const auto igmp = shared<Irb::Multicast::IgmpProxyStatus>(
      Irb::Multicast::IgmpProxyStatus::igmpPath);
  EXPECT_TRUE(igmp->vlanHas(VlanId(10)));
  EXPECT_FALSE(igmp->vlanHas(VlanId(20)));
  EXPECT_TRUE(shared<Irb::Multicast::IgmpProxyStatus>(
                  Irb::Multicast::IgmpProxyStatus::afMountPath(AddressFamily::ipv6))
                  ->vlanHas(VlanId(20)));
}

// The routing agent lists a VLAN only while it has mappings: the last one takes it away,
// which is what the pipeline's creation looks at.
TEST_F(VxlanStateWriterTest, ATunnelVlanGoesWithItsLastMapping) {
  apply(R"(state:
  tunnelMappings:
    ipv6: {10: [{overlay: {source: "*", group: "ff0e::1"},
                 underlay: {source: "*", group: "ff0e::100"}}]}
steps:
  - delete: {tunnelMappings: {ipv6: {10: [{overlay: {source: "*", group: "ff0e::1"}}]}}}
)");
  const auto tunnels = shared<Routing::Multicast::IpTunnelForwardingStatus>(
      Routing::Multicast::IpTunnelForwardingStatus::mountPath(AddressFamily::ipv6));
  EXPECT_TRUE(tunnels->vlanStatuses().empty());
}

}  // namespace
}  // namespace VekHost
