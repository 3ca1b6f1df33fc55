#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"
#include "host/StateWriter.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/VlanIntfId.h"

namespace VekHost {
namespace {

using Vrf::VrfIdMap::VrfId;

LoadResult load(const std::string& text) {
  return ScenarioLoader(LoaderOptions{}).loadText(text, "m.yaml");
}

TEST(MvpnStateKeysTest, BadProviderInterfacesAreReportedWithTheirLine) {
  struct Bad {
    const char* yaml;
    const char* message;
  } cases[] = {
      {"state:\n  mvpnIntfs: {2: Ethernet3}\n", "'Ethernet3' is not a VLAN interface"},
      {"state:\n  mvpnIntfs: {2: Vlan4095}\n", "'Vlan4095' is not a VLAN interface"},
      {"state:\n  mvpnIntfs: {16777215: Vlan100}\n", "a VRF id must be an integer"},
      {"state:\n  mvpnIntfs: [2]\n", "mvpnIntfs must be a map"},
      {"steps:\n  - delete: {mvpnIntfs: [two]}\n", "a VRF id must be an integer"},
  };
  for (const Bad& bad : cases) {
    LoadResult result = load(bad.yaml);
    ASSERT_FALSE(result.scenario) << bad.yaml;
    const std::string& error = result.errors.front();
    EXPECT_EQ(error.rfind("m.yaml:2: ", 0), 0u) << error;
    EXPECT_NE(error.find(bad.message), std::string::npos) << error;
  }
}

class MvpnStateWriterTest : public ::testing::Test {
 protected:
  ~MvpnStateWriterTest() override {
    QelSharedMem::EntityManager::managersDelAllForTest();
    Qel::Entity::singletonDelAllForTest();
  }

  void apply(const std::string& text) {
    LoadResult loaded = load(text);
    ASSERT_TRUE(loaded.scenario) << loaded.errors.front();
    writer.apply(loaded.scenario->state, StateOp::set);
    for (const Step& step : loaded.scenario->steps) {
      const auto& change = std::get<StateStep>(step.action);
      writer.apply(change.change, change.op);
    }
  }

  CentralStateStore store{"mvpnStateWriterTest"};
  StateWriter writer{store};
};

TEST_F(MvpnStateWriterTest, ProviderInterfacesUpsertAndGoById) {
  apply(R"(state:
  mvpnIntfs: {2: Vlan100, 3: Vlan300, 4: Vlan400}
steps:
  - set: {mvpnIntfs: {2: Vlan200}}
  - delete: {mvpnIntfs: [3]}
  - delete: {mvpnIntfs: {4: Vlan999}}
)");
  const auto& table = store.mvpnIntfs();
  EXPECT_EQ(table.intf(VrfId(2)), Lanx::VlanIntfId::vlanIdToIntfId(std::uint16_t{200}));
  EXPECT_FALSE(table.intfHas(VrfId(3)));
  // A removal goes by the id; the interface written with it is not compared.
  EXPECT_FALSE(table.intfHas(VrfId(4)));
  EXPECT_EQ(table.intfs().size(), 1u);
}

// The agent turns a provider's VRF id back into its name through the id table of the
// software ids, which follows `vrfs`.
TEST_F(MvpnStateWriterTest, SoftwareIdsAreReadableByIdAsWellAsByName) {
  apply(R"(state:
  vrfs: {red: 2, blue: 3}
steps:
  - set: {vrfs: {red: 5}}
  - delete: {vrfs: [blue]}
)");
  const auto& byId = store.vrfIdMap();
  EXPECT_EQ(byId.vrfEntry(VrfId(5)).name, "red");
  EXPECT_TRUE(byId.vrfEntry(VrfId(2)).isEmpty());
  EXPECT_TRUE(byId.vrfEntry(VrfId(3)).isEmpty());
  EXPECT_EQ(store.vrfNameToId().vrfId("red"), VrfId(5));
}

}  // namespace
}  // namespace VekHost
