#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"
#include "tests/host/FakeDriver.h"

namespace VekHost {
namespace {

struct BadInput {
  const char* yaml;
  int line;
  const char* message;
};

// Loads `yaml` and checks that the first error is on `line` and says `message`.
void expectFirstError(const BadInput& bad, const LoaderOptions& options = {}) {
  ScenarioLoader loader(options);
  LoadResult result = loader.loadText(bad.yaml, "t.yaml");
  ASSERT_FALSE(result.scenario) << bad.yaml;
  ASSERT_FALSE(result.errors.empty());
  const std::string prefix = "t.yaml:" + std::to_string(bad.line) + ": ";
  EXPECT_EQ(result.errors.front().rfind(prefix, 0), 0u) << result.errors.front();
  EXPECT_NE(result.errors.front().find(bad.message), std::string::npos)
      << "wanted '" << bad.message << "' in: " << result.errors.front();
}

TEST(ScenarioLoaderTest, MistakesAreReportedWithTheirLine) {
  const BadInput cases[] = {
      // The document and the agent settings.
      {"", 1, "empty"},
      {"steps: [settle\n", 2, "end of sequence"},
      {"agents: {}\n", 1, "unknown key 'agents' in a scenario"},
      {"agent: {oru: yes}\n", 1, "oru must be true or false, not 'yes'"},
      {"agent:\n  workers: 0\n", 2, "workers must be an integer from 1"},
      {"agent:\n  yieldEvery: ten\n", 2, "yieldEvery must be an integer"},
      {"agent:\n  toggles: {MfaWcFwd: true, Bogus: false}\n", 2, "unknown key 'Bogus' in toggles"},
      {"agent:\n  oru: true\n  oru: false\n", 3, "key 'oru' is given twice"},
      {"agent: [oru]\n", 1, "agent must be a map"},
      // Texts that the YAML reader's own words would not explain.
      {"steps:\n  - settle\n\t- restart\n", 3, "a tab in the indentation"},
      {"state:\n  mroutes: [{source: *, group: 239.1.1.1}]\n", 2, "for any source write \"*\""},
      {"steps: "
       "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
       "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
       "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
       "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
       "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
       "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
       "\n",
       2, "nesting deeper than the YAML reader allows"},
      {"steps: []\nstate: {vrfs: {a: 1}}\n# \x01\x02\xfe\n", 3, "byte 0xfe is not UTF-8 text"},
      {"state:\n  vrfs: {r\xc3\xb8"
       "d: 2}\n",
       2, "is not a VRF name (it is ASCII only"},
      // State changes.
      {"state:\n  vrf: {red: 2}\n", 2, "unknown key 'vrf' in a state change"},
      {"state:\n  vrfs: {red: two}\n", 2, "a VRF id must be an integer"},
      {"state:\n  vrfs: {red: 16777215}\n", 2, "a VRF id must be an integer from 0 to 16777214"},
      {"state:\n  vrfs: [red]\n", 2, "vrfs must be a map"},
      {"state:\n  bridgeMac: 00:1c:73:aa:bb\n", 2, "is not a MAC address"},
      {"state:\n  kernel:\n    red: {et2: {ifIndex: -7}}\n", 3,
       "ifIndex must be an integer from 1"},
      {"state:\n  kernel:\n    red: {et2: {up: true}}\n", 3, "missing 'ifIndex'"},
      {"state:\n  kernel:\n    red: {et2: {ifIndex: 7, up: maybe}}\n", 3,
       "up must be true or false"},
      {"state:\n  multicastIntfs: {ipv5: {}}\n", 2, "af must be one of ipv4, ipv6, not 'ipv5'"},
      {"state:\n  multicastIntfs: {ipv4: {red: Ethernet2}}\n", 2, "multicastIntfs must be a list"},
      {"state:\n  kernelMfibConfig: {ipv4: {red: {maxUnresolved: 1}}}\n", 2,
       "unknown key 'maxUnresolved'"},
      {"state:\n  intfVlans: {Ethernet2: 4095}\n", 2, "a VLAN must be an integer from 1 to 4094"},
      {"state:\n  tables: [{vrf: red, af: ipv4}]\n", 2, "missing 'app'"},
      // VXLAN, snooping and MVPN keys.
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
      {"state:\n  snooping:\n    ipv4: {10: {groups: {\"01:00:5e\": []}}}\n", 3,
       "group '01:00:5e' is not a MAC address"},
      {"state:\n  snooping:\n    ipv4: {10: {routerIntfs: [Bogus%1]}}\n", 3,
       "routerIntfs 'Bogus%1' is not an interface name"},
      {"state:\n  snooping:\n    ipv4: {10: {routerIntfs: [{tunnel: 1, vtep: 10.0.0}]}}\n", 3,
       "VTEP '10.0.0' is not a unicast IPv4 or IPv6 address"},
      {"state:\n  snooping:\n    ipv4: {10: {routerIntfs: [{tunnel: 16, vtep: 10.0.0.1}]}}\n", 3,
       "tunnel must be an integer from 1"},
      {"state:\n  snooping:\n    ipv4: {4095: {}}\n", 3, "a VLAN must be an integer"},
      {"state:\n  oismFloodSet: {10: [239.1.1.1]}\n", 2,
       "VTEP '239.1.1.1' is not a unicast IPv4 or IPv6 address"},
      {"state:\n  vxlanVtepVlanStatus: [{vtep: 10.0.0.1}]\n", 2, "missing 'vlan'"},
      {"state:\n  mvpnIntfs: {2: Ethernet3}\n", 2, "'Ethernet3' is not a VLAN interface"},
      {"state:\n  mvpnIntfs: {2: Vlan4095}\n", 2, "'Vlan4095' is not a VLAN interface"},
      {"state:\n  mvpnIntfs: {16777215: Vlan100}\n", 2, "a VRF id must be an integer"},
      {"state:\n  mvpnIntfs: [2]\n", 2, "mvpnIntfs must be a map"},
      {"steps:\n  - delete: {mvpnIntfs: [two]}\n", 2, "a VRF id must be an integer"},
      // Steps.
      {"steps:\n  - settle\n  - begin\n", 3,
       "a step without a value must be one of settle, restart"},
      {"steps:\n  - start: {vrf: red}\n", 2, "missing 'af'"},
      {"steps:\n  - start: {vrf: red, af: ipv4}\n    stop: {vrf: red, af: ipv4}\n", 2,
       "a step is one of start, stop"},
      {"steps:\n  - launch: {vrf: red, af: ipv4}\n", 2, "a step must be one of start"},
      {"steps:\n  - settle: 3\n", 2, "'settle' takes no value"},
      {"steps:\n  - advance: -1\n", 2, "cannot go back in time"},
      {"steps:\n  - advance: soon\n", 2, "advance must be a number"},
      {"steps:\n  - set: {}\n", 2, "names at least one state key"},
      {"steps:\n  - delete: {vrfs: red}\n", 2, "vrfs must be a map"},
      {"steps:\n  - failNext: {module: MfibIpv4red, cmd: addMroute, code: 0}\n", 2,
       "code 0 means success"},
      {"steps:\n  - failNext: {module: MfibIpv4red, code: 5}\n", 2, "missing 'cmd'"},
      {"steps:\n  - stop: {vrf: red, af: ipv4, unknownId: true}\n", 2, "unknown key 'unknownId'"},
      {"steps:\n  - start: {vrf: red, af: ipv4}\n", 2, "start of VRF 'red' before it has an id"},
      {"steps:\n  - settle\n---\nsteps: []\n", 3, "a scenario is one YAML document"},
      {"---\n# one\nsteps: []\n...\n---\n", 5, "a scenario is one YAML document"},
      // Past the first document the reader once read empty documents without end, and an
      // alias can stand for its own node; both took the loader's memory whole.
      {"# a comment\n{steps: [settle]}\n,\n", 3, "a ',' after the end of the document"},
      {"steps:\n  - expect: {dump: modules, equals: &a [*a]}\n", 2, "an alias (*)"},
      {"state:\n  mroutes:\n    - &r {vrf: red, af: ipv4, app: pim, group: 239.1.1.1}\n"
       "    - *r\n",
       4, "an alias (*)"},
      {"steps: {settle: ~}\n", 1, "steps must be a list"},
      // Expectations.
      {"steps:\n  - expect: {}\n", 2, "an expect names one of route, module, edge"},
      {"steps:\n  - expect: {module: A, trace: x}\n", 2, "found both 'module' and 'trace'"},
      {"steps:\n  - expect: {route: {vrf: red, af: ipv4, source: '*', group: 239.1.1.1,"
       " app: pim}}\n",
       2, "unknown key 'app' in route"},
      {"steps:\n  - expect: {route: {vrf: red, af: ipv4, source: '*', group: 239.1.1.1},"
       " absent: true, iif: Ethernet1}\n",
       2, "a route expected absent has no iif"},
      {"steps:\n  - expect: {module: IgmpV2, exists: false, class: 120}\n", 2,
       "expected not to exist has no class"},
      {"steps:\n  - expect: {edge: {from: A}}\n", 2, "missing 'to'"},
      {"steps:\n  - expect: {dump: modules..x, equals: 1}\n", 2, "dump path 'modules..x'"},
      {"steps:\n  - expect: {dump: modules.x, equals: 1, contains: 1}\n", 2,
       "one of equals, contains or absent"},
      {"steps:\n  - expect: {commands: [{cmd: a}], order: sorted}\n", 2,
       "order must be one of any, strict"},
      {"steps:\n  - expect: {commands: [addMroute]}\n", 2, "a command record must be a map"},
      {"steps:\n  - expect: {trace: x, absent: 1}\n", 2, "absent must be true or false"},
  };
  for (const BadInput& bad : cases) expectFirstError(bad);
}

TEST(ScenarioLoaderTest, RouteMistakesAreReportedWithTheirLine) {
  const char* head = "state:\n  mroutes:\n";
  const BadInput cases[] = {
      {"- {vrf: red, app: pim, source: 10.1.1.1, group: 239.1.1.1}\n", 3, "missing 'af'"},
      {"- {vrf: red, af: ipv4, app: pim, group: 239.1.1.1}\n", 3, "missing 'source'"},
      {"- {vrf: red, af: ipv4, app: pim, source: 10.1.1, group: 239.1.1.1}\n", 3,
       "source '10.1.1' is not an ipv4 address"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 10.2.2.2}\n", 3,
       "group 10.2.2.2 is not a multicast address"},
      {"- {vrf: red, af: ipv6, app: pim, source: 10.1.1.1, group: ff0e::1}\n", 3,
       "is not an ipv6 address"},
      {"- {vrf: red, af: ipv4, app: pim, source: 239.9.9.9, group: 239.1.1.1}\n", 3,
       "source 239.9.9.9 is a multicast address"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1, flags: [fast]}\n", 3,
       "a flag must be one of fastdrop, iifRegister, oifRegister, switching"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1, oifs: [Eth 3]}\n", 3,
       "oifs 'Eth 3' is not an interface name"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1, oif: [Ethernet3]}\n", 3,
       "unknown key 'oif' in a route"},
      {"- {vrf: '', af: ipv4, app: pim, source: '*', group: 239.1.1.1}\n", 3,
       "vrf must be a non-empty text"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1, oifs: [{tunnel: 16, "
       "vtep: 10.0.0.9}]}\n",
       3, "tunnel must be an integer from 1 to 15"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1, iif: {tunnel: 1, "
       "vtep: 10.0.0}}\n",
       3, "vtep '10.0.0' is not an IPv4 or IPv6 address"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1, iif: {tunnel: 1}}\n", 3,
       "missing 'vtep'"},
      {"- {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1}\n"
       "    - {vrf: red, af: ipv4, app: igmp, source: '*', group: 239.1.1.1}\n"
       "    - {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1}\n",
       5, "route *,239.1.1.1 of pim in VRF red is given twice in this list (first on line 3)"},
  };
  for (const BadInput& bad : cases) {
    const std::string yaml = std::string(head) + "    " + bad.yaml;
    expectFirstError(BadInput{yaml.c_str(), bad.line, bad.message});
  }
}

TEST(ScenarioLoaderTest, ANulByteMeansTheFileIsNotTextAndManyMistakesAreCapped) {
  ScenarioLoader loader;
  const std::string binary(
      "steps: []\n\n\x7f"
      "ELF\0\x01",
      17);
  EXPECT_EQ(loader.loadText(binary, "t.bin").errors,
            std::vector<std::string>{"t.bin:3: the file holds a NUL byte: it is not a text file"});
  std::string many = "steps:\n";
  for (int i = 0; i < 25; ++i) many += "  - advance: -1\n";
  const std::vector<std::string> errors = loader.loadText(many, "t.yaml").errors;
  ASSERT_EQ(errors.size(), 21u);
  EXPECT_EQ(errors.back(), "t.yaml: and 5 more");
}

TEST(ScenarioLoaderTest, EveryMistakeOfTheFileIsReportedInLineOrderAndNothingLoads) {
  ScenarioLoader loader;
  LoadResult result = loader.loadText(
      "steps:\n"
      "  - advance: -1\n"
      "  - start: {vrf: red, af: ipv4}\n"
      "  - set: {vrfs: {red: x}, intfVlans: {Ethernet1: 0}}\n"
      "state:\n"
      "  vrfs: {blue: -1}\n",
      "t.yaml");
  EXPECT_FALSE(result.scenario);
  ASSERT_EQ(result.errors.size(), 4u);
  EXPECT_EQ(result.errors[0].rfind("t.yaml:2: ", 0), 0u);
  EXPECT_EQ(result.errors[1].rfind("t.yaml:4: a VRF id", 0), 0u);
  EXPECT_EQ(result.errors[2].rfind("t.yaml:4: a VLAN", 0), 0u);
  EXPECT_EQ(result.errors[3].rfind("t.yaml:6: ", 0), 0u);
}

TEST(ScenarioLoaderTest, AnEncoderDecidesWhatAnInterfaceNameIs) {
  LoaderOptions options;
  options.intfId = [](std::string_view name) -> std::optional<uint64_t> {
    if (name.rfind("Ethernet", 0) == 0) return 1;
    return std::nullopt;
  };
  options.isRouteApp = [](std::string_view app) { return app == "pim" || app == "static"; };
  expectFirstError({"state:\n  intfVlans: {Ethernet2: 10, Vlan3: 20}\n", 2,
                    "an interface 'Vlan3' is not an interface name"},
                   options);
  expectFirstError({"state:\n  tables: [{vrf: red, af: ipv4, app: pimsm}]\n", 2,
                    "'pimsm' is not a route application"},
                   options);
  ScenarioLoader loader(options);
  EXPECT_TRUE(loader.loadText("state:\n  intfVlans: {Ethernet2: 10}\n", "t.yaml").scenario);
}

// The hosting agent starts a VRF only once it has an id: the loader follows the ids step by
// step (software ids for the full agent, hardware ids for the reduced one).
TEST(ScenarioLoaderTest, AStartNeedsTheIdOfItsAgentKindAtThatStepUnlessItSaysOtherwise) {
  ScenarioLoader loader;
  LoadResult result = loader.loadText(
      "agent: {oru: false}\n"
      "state:\n"
      "  vrfs: {red: 2}\n"
      "  hwVrfs: {blue: 12}\n"
      "steps:\n"
      "  - start: {vrf: blue, af: ipv4}\n"
      "  - start: {vrf: red, af: ipv4}\n"
      "  - set: {hwVrfs: {red: 13}}\n"
      "  - start: {vrf: red, af: ipv6}\n"
      "  - delete: {hwVrfs: [blue]}\n"
      "  - start: {vrf: blue, af: ipv6}\n"
      "  - start: {vrf: green, af: ipv4, unknownId: true}\n",
      "t.yaml");
  ASSERT_EQ(result.errors.size(), 2u);
  EXPECT_EQ(result.errors[0],
            "t.yaml:7: start of VRF 'red' before it has an id (those with one: blue); give it one "
            "under 'hwVrfs' first, or write unknownId: true to start it without");
  EXPECT_EQ(result.errors[1].rfind("t.yaml:11: start of VRF 'blue' before it has an id (those "
                                   "with one: red)",
                                   0),
            0u);
  EXPECT_TRUE(result.warnings.empty());
}

TEST(ScenarioLoaderTest, RoutesAndExpectationsOfAVrfNeverGivenAnIdAreWarnedOfOnce) {
  ScenarioLoader loader;
  LoadResult result = loader.loadText(
      "state:\n"
      "  vrfs: {red: 2}\n"
      "  mroutes: [{vrf: rde, af: ipv4, app: pim, source: '*', group: 239.1.1.1}]\n"
      "steps:\n"
      "  - set: {tables: [{vrf: blue, af: ipv4, app: pim}]}\n"
      "  - expect: {route: {vrf: rde, af: ipv4, source: '*', group: 239.1.1.1}, absent: true}\n"
      "  - set: {vrfs: {blue: 3}}\n",
      "t.yaml");
  ASSERT_TRUE(result.scenario);
  EXPECT_EQ(result.warnings,
            std::vector<std::string>{"t.yaml:3: warning: VRF 'rde' is never given an id (under "
                                     "'vrfs'); nothing of it reaches the data plane"});
}

// Route lists are read apart from the rest of the file: what they hold, where a mistake in
// them is, and where they end must come out as if the file were read whole.
TEST(ScenarioLoaderTest, RouteListsReadApartKeepTheirLinesAndTheirEnds) {
  std::string text = "# a comment with \xc3\xb8\nstate:\n  vrfs: {red: 2}\n  mroutes:\n";
  for (int i = 1; i <= 300; ++i) {
    text += "    - {vrf: red, af: ipv4, app: pim, source: '*', group: 239.1." +
            std::to_string(i / 256) + "." + std::to_string(i % 256) + ", oifs: [Ethernet" +
            std::to_string(i) + "]}\n";
  }
  text += "steps:\n  - set:\n      mroutes:\n        - vrf: red\n          af: ipv4\n"
          "          app: static\n          source: '*'\n          group: 239.9.9.9\n"
          "  - settle\n"
          // Under any other key a list named so is plain YAML, read whole.
          "  - expect:\n      dump: outputs\n      contains:\n        mroutes:\n"
          "          - a\n";
  LoadResult result = ScenarioLoader().loadText(text, "t.yaml");
  ASSERT_TRUE(result.scenario) << result.errors.front();
  ASSERT_EQ(result.scenario->state.mroutes.size(), 300u);
  EXPECT_EQ(result.scenario->state.mroutes.back().oifs, std::vector<std::string>{"Ethernet300"});
  EXPECT_EQ(result.scenario->state.mroutes.back().table.line, 304);
  ASSERT_EQ(result.scenario->steps.size(), 3u);
  EXPECT_EQ(std::get<StateStep>(result.scenario->steps[0].action).change.mroutes.at(0).table.app,
            "static");
  const auto& expect = std::get<ExpectStep>(result.scenario->steps[2].action).expectation;
  EXPECT_EQ(std::get<DumpExpectation>(expect).value, nlohmann::json::parse(R"({"mroutes":["a"]})"));
  // Line 260 is in the second slice of 256 entries.
  const std::size_t line260 = text.find("239.1.1.0, oifs: [Ethernet256]");
  text.replace(text.find("239.1.1.0", line260), 9, "10.0.0.1");
  LoadResult bad = ScenarioLoader().loadText(text, "t.yaml");
  ASSERT_FALSE(bad.errors.empty());
  EXPECT_EQ(bad.errors.front().rfind("t.yaml:260: group 10.0.0.1 is not a multicast", 0), 0u)
      << bad.errors.front();
}

TEST(ScenarioLoaderTest, ATunnelStandsForItsNameWhereverAnInterfaceIsRead) {
  LoadResult result =
      ScenarioLoader(LoaderOptions{FakeDriver::intfIdEncoder(), {}})
          .loadText(
              "state:\n"
              "  vrfs: {red: 2}\n"
              "  multicastIntfs: {ipv4: {red: [{tunnel: 1, vtep: 10.0.0.9}]}}\n"
              "  kernel: {red: {vx: {ifIndex: 4, intf: {tunnel: 2, vtep: '2001:DB8::1'}}}}\n"
              "  mroutes: [{vrf: red, af: ipv4, app: pim, source: '*', group: 239.1.1.1,\n"
              "             iif: {tunnel: 1, vtep: 10.0.0.7}, oifs: [Ethernet1, {tunnel: 1, "
              "vtep: 10.0.0.9}]}]\n"
              "steps:\n"
              "  - expect: {route: {vrf: red, af: ipv4, source: '*', group: 239.1.1.1},\n"
              "             oifs: [McastTunnel1-10.0.0.9, Ethernet1]}\n",
              "t.yaml");
  ASSERT_TRUE(result.scenario) << result.errors.front();
  const StateChange& state = result.scenario->state;
  EXPECT_EQ(state.multicastIntfs.at(Af::ipv4).at("red"),
            std::vector<std::string>{"McastTunnel1-10.0.0.9"});
  EXPECT_EQ(state.kernel.at("red").at("vx").intf, "McastTunnel2-2001:db8::1");
  EXPECT_EQ(state.mroutes.at(0).iif, "McastTunnel1-10.0.0.7");
  EXPECT_EQ(state.mroutes.at(0).oifs,
            (std::vector<std::string>{"Ethernet1", "McastTunnel1-10.0.0.9"}));
}

// The scenario files take most keys end to end through the agent; this is what they do not
// reach: agent settings the host alone reads, the text forms that are normalised, removal
// of a value by ~, and the step lines and a dump path with a quoted key.
TEST(ScenarioLoaderTest, WhatTheScenarioFilesDoNotReachLoadsIntoTypedValues) {
  const char* text = R"(
agent:
  namespaceDut: false
  yieldEvery: 100
  toggles: {MfaWcFwd: false, ToloVekTx: true}
state:
  bridgeMac: "00:1C:73:AA:BB:CC"
  kernel: {red: {et2: {ifIndex: 7, intf: Ethernet2}}}
  mroutes:
    - {vrf: red, af: ipv6, app: static, source: "*", group: "FF0E:0::1"}
steps:
  - settle
  - delete: {vrfs: [red], bridgeMac: ~}
  - expect: {dump: 'modules.MfibIpv4red.table.routes["10.1.1.1,239.1.1.1"]', contains: {iif: "7"}}
)";
  LoadResult result =
      ScenarioLoader(LoaderOptions{FakeDriver::intfIdEncoder(), {}}).loadText(text, "full.yaml");
  ASSERT_TRUE(result.scenario) << result.errors.front();
  const Scenario& scenario = *result.scenario;
  EXPECT_FALSE(scenario.agent.namespaceDut);
  EXPECT_EQ(scenario.agent.yieldEvery, 100);
  EXPECT_EQ(scenario.agent.toggles,
            (std::map<std::string, bool>{{"MfaWcFwd", false}, {"ToloVekTx", true}}));
  EXPECT_EQ(scenario.state.bridgeMac, "00:1c:73:aa:bb:cc");
  EXPECT_TRUE(scenario.state.kernel.at("red").at("et2").up);
  EXPECT_EQ(scenario.state.mroutes.at(0).key, (RouteKey{"*", "ff0e::1"}));

  ASSERT_EQ(scenario.steps.size(), 3u);
  EXPECT_EQ(scenario.steps[1].line, 13);  // the text starts with an empty line
  const auto& removal = std::get<StateStep>(scenario.steps[1].action);
  EXPECT_EQ(removal.op, StateOp::remove);
  EXPECT_EQ(removal.change.vrfs.count("red"), 1u);
  EXPECT_EQ(removal.change.bridgeMac, "");
  const auto& expect =
      std::get<DumpExpectation>(std::get<ExpectStep>(scenario.steps[2].action).expectation);
  EXPECT_EQ(expect.path.keys(), (std::vector<std::string>{"modules", "MfibIpv4red", "table",
                                                          "routes", "10.1.1.1,239.1.1.1"}));
  EXPECT_EQ(expect.value, (nlohmann::json{{"iif", "7"}}));
}

}  // namespace
}  // namespace VekHost
