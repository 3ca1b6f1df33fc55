#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mpls/MMplsInSm.h"
#include "mpls/MMplsOutSm.h"
#include "runtime/lumo/Exception.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/VrfName.h"
#include "tests/dataplane/ModelFixture.h"

namespace {

using Json = nlohmann::ordered_json;
using Lanx::AddressFamily;
using VekMMpls::MMplsInSm;
using VekMMplsOut::MMplsOutSm;

// The same members whatever their order.
nlohmann::json unordered(const Json& object) { return nlohmann::json::parse(object.dump()); }

class MplsModulesTest : public ::testing::Test, protected DataplaneTest::ModelWorld {
 protected:
  ~MplsModulesTest() override { Qel::Entity::singletonDelAllForTest(); }

  Json dump() {
    channel->pump();
    return model.dump();
  }
  // The kinds of the records carried since the test began, in order.
  std::vector<std::string> recordKinds() {
    channel->pump();
    std::vector<std::string> kinds;
    for (const Json& entry : channel->commandLog().entries()) kinds.push_back(entry["kind"]);
    return kinds;
  }
  // The counter names the daemon was given for a module, in the order of allocation.
  std::vector<std::string> allocatedCounters(const std::string& module) {
    channel->pump();
    std::vector<std::string> names;
    for (const Json& entry : channel->commandLog().entries()) {
      if (entry["kind"] == "allocateCounter" && entry["module"] == module) {
        names.push_back(entry["name"]);
      }
    }
    return names;
  }
};

// The daemon's module and the proxy meet in one entity: the slots the proxy filled are
// what the daemon's table shows, and each slot holds the counter allocated under its name.
TEST_F(MplsModulesTest, EncapsulationModuleSharesItsCounterSlotsWithTheDaemon) {
  auto sm = Lumo::makePtr<MMplsInSm>(AddressFamily::ipv4, pair, vekcsd);
  ASSERT_TRUE(sm->initialized());
  const Json module = dump()["modules"]["MMplsIn"];
  EXPECT_THAT(allocatedCounters("MMplsIn"),
              ::testing::ElementsAre("Mpls_Core_Routed", "No_Src_Intf_Md", "No_Encap_Status",
                                     "No_Encap_Tunnel", "No_Tunnel_Mrib", "No_Tunnel",
                                     "No_Label", "Arp_Failure", "Unsupported_Platform"));
  const Json slots = module["table"]["counterIds"];
  ASSERT_EQ(slots.size(), 9u);
  EXPECT_EQ(unordered(slots), unordered(module["counters"]));
  // Its table travels in the shared entity, never as commands.
  EXPECT_THAT(recordKinds(), ::testing::Not(::testing::Contains("moduleCmd")));
  EXPECT_EQ(model.errors().size(), 0u);
}

TEST_F(MplsModulesTest, TheFamilyNamesTheEncapsulationModule) {
  auto sm4 = Lumo::makePtr<MMplsInSm>(AddressFamily::ipv4, pair, vekcsd);
  auto sm6 = Lumo::makePtr<MMplsInSm>(AddressFamily::ipv6, pair, vekcsd);
  const Json modules = dump()["modules"];
  EXPECT_TRUE(modules.contains("MMplsIn"));
  EXPECT_TRUE(modules.contains("MMplsIn6"));
  EXPECT_NE(modules["MMplsIn"]["table"], modules["MMplsIn6"]["table"]);
}

// A VRF name of the longest kind gives a module name longer than any VRF name.
TEST_F(MplsModulesTest, DecapsulationModuleOfTheLongestVrfName) {
  const std::string longest(100, 'v');
  auto sm = Lumo::makePtr<MMplsOutSm>(L3::VrfName(longest), pair, vekcsd);
  const std::string name = "MMplsOut_" + longest;
  EXPECT_EQ(sm->module()->name().view(), name);
  const Json module = dump()["modules"][name];
  EXPECT_THAT(allocatedCounters(name),
              ::testing::ElementsAre("Incorrect_Bos_Flag", "No_Lfib_Route",
                                     "Incorrect_ViaSet_Type", "No_Via", "Incorrect_Ether_Type",
                                     "Invalid_Ip_Type", "Ipv4_Counter", "Ipv6_Counter"));
  EXPECT_EQ(unordered(module["table"]["counterIds"]), unordered(module["counters"]));
}

// Dropping the owner takes the counters and the module away; the entity stays for a later
// module of the name, with its slots empty, and that module fills them anew.
TEST_F(MplsModulesTest, DroppingTheOwnerFreesTheCountersAndEmptiesTheSlots) {
  auto sm = Lumo::makePtr<MMplsOutSm>(L3::VrfName("red"), pair, vekcsd);
  const Lumo::Ptr<VekModules::DvMMplsOut> entity = sm->module()->module();
  sm = nullptr;
  EXPECT_FALSE(dump()["modules"].contains("MMplsOut_red"));
  EXPECT_THAT(recordKinds(), ::testing::IsSupersetOf({"freeCounters", "destroyModule"}));
  EXPECT_FALSE(entity->counterId("No_Via").isValid());

  auto again = Lumo::makePtr<MMplsOutSm>(L3::VrfName("red"), pair, vekcsd);
  EXPECT_EQ(again->module()->module(), entity);
  EXPECT_EQ(dump()["modules"]["MMplsOut_red"]["table"]["counterIds"].size(), 8u);
}

// Whichever side comes first makes the entity: a proxy made after the daemon's side found
// none takes the daemon's entity, and one of another type under the name is refused.
TEST_F(MplsModulesTest, TheProxyTakesTheEntityItFindsAndRefusesAForeignOne) {
  const auto made = VekModules::ModuleRegistry::entityIs<VekModules::DvMMplsIn>("MMplsIn6");
  auto sm = Lumo::makePtr<MMplsInSm>(AddressFamily::ipv6, pair, vekcsd);
  EXPECT_EQ(sm->module()->module(), made);

  VekModules::ModuleRegistry::entityIs<VekModules::DvMMplsOut>("MMplsIn");
  try {
    Lumo::makePtr<MMplsInSm>(AddressFamily::ipv4, pair, vekcsd);
    FAIL() << "a proxy without its entity made counters";
  } catch (const Lumo::Exception& error) {
    EXPECT_EQ(error.msg(), "Vek Module not present.");
  }
}

}  // namespace
