#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "mpls/MplsPipelineControl.h"
#include "pipeline/McastVrfContainer.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/VlanIntfId.h"
#include "runtime/vek/NamespaceDut.h"
#include "tests/dataplane/ModelFixture.h"

namespace {

using Json = nlohmann::ordered_json;
using Lanx::AddressFamily;
using VrfId = Vrf::VrfIdMap::VrfId;
using VekMMpls::MplsPipelineControl;

const L3::VrfName red("red");
const L3::VrfName blue("blue");
const Lanx::IntfId vlan100 = Lanx::VlanIntfId::vlanIdToIntfId(std::uint16_t{100});

// A daemon, the pipeline manager, the two inputs the MPLS side reads, and the control.
struct World : DataplaneTest::ModelWorld {
  World() {
    Vek::namespaceDutIs(true);
    control->hasNotificationActiveIs(true);
  }

  Lumo::Ptr<VekL3Mcast::McastModuleManager> manager =
      VekL3Mcast::mcastModuleManagerFactory(pair);
  Lumo::Ptr<Routing::Multicast::MvpnIntfStatus> status =
      Lumo::makePtr<Routing::Multicast::MvpnIntfStatus>();
  Lumo::Ptr<Vrf::VrfIdMap::Status> names = Lumo::makePtr<Vrf::VrfIdMap::Status>();
  Lumo::Ptr<MplsPipelineControl> control =
      Lumo::makePtr<MplsPipelineControl>(status, names, manager, pair, vekcsd);
  int fabricAttaches = 0;

  World& withFabricHook() {
    control->fabricTxAttachIs([this] { ++fabricAttaches; });
    return *this;
  }
  // What the agent's start of a VRF family does for the pipeline, then the news of it.
  void start(const L3::VrfName& vrf, VrfId id, AddressFamily af) {
    if (!manager->vrf(vrf) || !manager->vrf(vrf)->mcastAnyRxSet()) {
      manager->createMcastAnyRxSet(vrf, id, group);
    }
    manager->createMfibModule(af, vrf, id, true);
    control->vrfStarted(vrf, af);
  }
  void stop(const L3::VrfName& vrf, AddressFamily af) {
    control->vrfStopping(vrf, af);
    manager->deleteMfibModule(af, vrf);
    if (manager->vrf(vrf) && manager->vrf(vrf)->mfibModules().empty()) {
      manager->deleteMcastAnyRxSet(vrf);
    }
  }
  void name(VrfId id, const char* vrf) { names->vrfEntryIs(id, {vrf}); }
  Json dump() {
    channel->pump();
    return model.dump();
  }
  // "from>gate>to" for each link of the dump that touches an MPLS module.
  std::vector<std::string> mplsLinks() {
    std::vector<std::string> links;
    const Json modules = dump()["modules"];
    for (const auto& [from, module] : modules.items()) {
      for (const auto& [gate, to] : module["out"].items()) {
        const std::string target = to["to"];
        if (from.starts_with("MMpls") || target.starts_with("MMpls")) {
          links.push_back(from + ">" + gate + ">" + target);
        }
      }
    }
    std::sort(links.begin(), links.end());
    return links;
  }
  bool hasModule(const std::string& module) { return dump()["modules"].contains(module); }
};

class MplsPipelineTest : public ::testing::Test {
 protected:
  ~MplsPipelineTest() override { Qel::Entity::singletonDelAllForTest(); }
};

// The encapsulation module stays while another VRF uses MPLS and goes with the last; each
// input that goes (the entry, the name, the start) takes its VRF's part down.
TEST_F(MplsPipelineTest, EachInputThatGoesTakesItsVrfDownAndTheLastTakesTheEncapsulation) {
  World w;
  w.withFabricHook();
  w.start(red, VrfId(2), AddressFamily::ipv4);
  w.start(blue, VrfId(3), AddressFamily::ipv4);
  // A name no VRF can have builds nothing and raises nothing; the real one comes next.
  w.status->intfIs(VrfId(2), vlan100);
  w.name(VrfId(2), std::string(101, 'r').c_str());
  EXPECT_FALSE(w.hasModule("MMplsIn"));
  for (auto [id, vrf] : {std::pair{2, "red"}, std::pair{3, "blue"}}) {
    w.name(VrfId(id), vrf);
    w.status->intfIs(VrfId(id), vlan100);
  }
  EXPECT_EQ(w.fabricAttaches, 1);
  ASSERT_TRUE(w.hasModule("MMplsOut_red") && w.hasModule("MMplsOut_blue"));

  w.status->intfDel(VrfId(2));
  EXPECT_FALSE(w.hasModule("MMplsOut_red"));
  EXPECT_TRUE(w.hasModule("MMplsIn"));
  // The entry comes back; then the name goes: the id table no longer says which VRF the id
  // was, and the VRF it built for still goes.
  w.status->intfIs(VrfId(2), vlan100);
  EXPECT_TRUE(w.hasModule("MMplsOut_red"));
  w.names->vrfEntryDel(VrfId(2));
  EXPECT_FALSE(w.hasModule("MMplsOut_red"));

  w.stop(blue, AddressFamily::ipv4);
  EXPECT_FALSE(w.hasModule("MMplsOut_blue"));
  EXPECT_FALSE(w.hasModule("MMplsIn"));
  EXPECT_FALSE(w.manager->vrfHas(blue));
  EXPECT_TRUE(w.dump()["errors"].empty());
  // The entry and name still stand: the next start brings blue's part back.
  w.start(blue, VrfId(3), AddressFamily::ipv4);
  EXPECT_TRUE(w.hasModule("MMplsOut_blue"));
  EXPECT_EQ(w.fabricAttaches, 2);
}

// The stop of one family unlinks its FIB and keeps the module for the other; an id that
// moves to another VRF moves the pipeline with it.
TEST_F(MplsPipelineTest, OneFamilyStopsAndAnIdMovesToAnotherVrf) {
  World w;
  w.status->intfIs(VrfId(2), vlan100);
  w.name(VrfId(2), "red");
  w.start(red, VrfId(2), AddressFamily::ipv4);
  w.start(red, VrfId(2), AddressFamily::ipv6);
  w.stop(red, AddressFamily::ipv6);
  const std::vector<std::string> links = w.mplsLinks();
  EXPECT_EQ(std::count(links.begin(), links.end(), "MMplsOut_red>1>MfibIpv6red"), 0);
  EXPECT_TRUE(w.hasModule("MMplsOut_red"));

  w.start(blue, VrfId(3), AddressFamily::ipv4);
  w.name(VrfId(2), "blue");
  EXPECT_FALSE(w.hasModule("MMplsOut_red"));
  EXPECT_TRUE(w.hasModule("MMplsOut_blue"));
  EXPECT_EQ(w.control->mvpnVrf(VrfId(2)), blue);
  EXPECT_TRUE(w.dump()["errors"].empty());
}

}  // namespace
