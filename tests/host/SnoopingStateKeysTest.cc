#include <gtest/gtest.h>

#include <string>

#include "host/ScenarioLoader.h"
#include "host/SnoopingStateKeys.h"

namespace VekHost {
namespace {

std::string firstError(const std::string& yaml) {
  LoadResult result = ScenarioLoader(LoaderOptions{}).loadText(yaml, "t.yaml");
  return result.errors.empty() ? std::string() : result.errors.front();
}

TEST(SnoopingStateKeysTest, BadGroupsPortsAndVtepsAreRefusedAtTheirLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"state:\n  snooping:\n    ipv4: {10: {groups: {\"01:00:5e\": []}}}\n",
       "t.yaml:3: group '01:00:5e' is not a MAC address"},
      {"state:\n  snooping:\n    ipv4: {10: {routerIntfs: [Bogus%1]}}\n",
       "t.yaml:3: routerIntfs 'Bogus%1' is not an interface name"},
      {"state:\n  snooping:\n    ipv4: {10: {routerIntfs: [{tunnel: 1, vtep: 10.0.0}]}}\n",
       "t.yaml:3: VTEP '10.0.0' is not a unicast IPv4 or IPv6 address"},
      {"state:\n  snooping:\n    ipv4: {10: {routerIntfs: [{tunnel: 16, vtep: 10.0.0.1}]}}\n",
       "t.yaml:3: tunnel must be an integer from 1"},
      {"state:\n  snooping:\n    ipv4: {4095: {}}\n", "t.yaml:3: a VLAN must be an integer"},
      {"state:\n  oismFloodSet: {10: [239.1.1.1]}\n",
       "t.yaml:2: VTEP '239.1.1.1' is not a unicast IPv4 or IPv6 address"},
      {"state:\n  vxlanVtepVlanStatus: [{vtep: 10.0.0.1}]\n", "t.yaml:2: missing 'vlan'"},
  };
  for (const auto& [yaml, error] : cases) {
    EXPECT_EQ(firstError(yaml).rfind(error, 0), 0u) << yaml << " gave: " << firstError(yaml);
  }
}

}  // namespace
}  // namespace VekHost
