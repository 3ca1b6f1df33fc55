#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"

namespace VekHost {
namespace {

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

}  // namespace
}  // namespace VekHost
