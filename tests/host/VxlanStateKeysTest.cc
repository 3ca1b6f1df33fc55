#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"

namespace VekHost {
namespace {

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

}  // namespace
}  // namespace VekHost
