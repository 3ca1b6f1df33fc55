#include <gtest/gtest.h>

#include "host/ScenarioLoader.h"
#include "host/ScenarioRunner.h"
#include "tests/host/FakeDriver.h"

namespace VekHost {
namespace {

// The start of every scenario here: one VRF with one route on its way.
const std::string kHead = R"(state:
  vrfs: {red: 2}
  mroutes:
    - {vrf: red, af: ipv4, app: pim, source: 10.1.1.1, group: 239.1.1.1,
       iif: Ethernet2, oifs: [Ethernet3, Ethernet4], flags: [fastdrop]}
steps:
  - start: {vrf: red, af: ipv4}
  - settle
)";

class ScenarioRunnerTest : public ::testing::Test {
 protected:
  RunResult run(const std::string& steps, IntfIdEncoder encoder = FakeDriver::intfIdEncoder()) {
    ScenarioLoader loader(LoaderOptions{FakeDriver::intfIdEncoder(), {}});
    LoadResult loaded = loader.loadText(kHead + steps, "s.yaml");
    if (!loaded.scenario) {
      ADD_FAILURE() << loaded.errors.front();
      return {};
    }
    return ScenarioRunner(driver, std::move(encoder)).run(*loaded.scenario);
  }
  static std::string message(const RunResult& result) {
    return result.messages.empty() ? "" : result.messages.front();
  }

  FakeDriver driver;
};

// An expectation of any kind that does not hold fails the run where it stands, naming the
// step and saying what was found.
TEST_F(ScenarioRunnerTest, FailuresOfEachKindStopTheRunAndSayWhatWasFound) {
  const auto id = [](const char* name) {
    return std::to_string(*FakeDriver::intfIdEncoder()(name));
  };
  const std::pair<std::string, std::string> cases[] = {
      {"  - expect: {route: {vrf: red, af: ipv4, source: 10.1.1.1, group: 239.1.1.1},\n"
       "             iif: Ethernet1, oifs: [Ethernet3], flags: []}",
       "s.yaml: step 3 (line 9): expect route red ipv4 10.1.1.1,239.1.1.1: iif: expected "
       "Ethernet1, got id " +
           id("Ethernet2") + "; oifs: expected {Ethernet3}, got {Ethernet3, id " + id("Ethernet4") +
           "}; flags: expected [], got [fastdrop]"},
      {"  - expect: {route: {vrf: red, af: ipv4, source: 10.1.1.1, group: 239.1.1.1}, absent: "
       "true}",
       "expected absent, but MfibIpv4red holds it"},
      {"  - expect: {route: {vrf: blue, af: ipv4, source: 10.1.1.1, group: 239.1.1.1}}",
       "there is no module MfibIpv4blue"},
      {"  - expect: {route: {vrf: red, af: ipv4, source: 10.9.9.9, group: 239.1.1.1}}",
       "not in MfibIpv4red (it holds 1 routes)"},
      {"  - expect: {module: IgmpV2}", "module IgmpV2: missing (modules: MfibIpv4red, TxDemuxer)"},
      {"  - expect: {module: MfibIpv4red, class: 27}", "class expected 27, got 26"},
      {"  - expect: {edge: {from: MfibIpv4red, to: TxDemuxer, igate: 1}}",
       "missing (links of MfibIpv4red: MfibIpv4red:4 -> TxDemuxer:0)"},
      {"  - expect: {dump: modules.MfibIpv4red.class, equals: 27}", "expected equal to 27, got 26"},
      {"  - expect: {dump: modules.Igmp.class, contains: 1}", "no key 'Igmp' in 'modules'"},
      {"  - expect: {commands: [{cmd: deleteMroute}]}",
       "1 of 1 without a match, the first {\"cmd\":\"deleteMroute\"} (4 commands since the "
       "previous expect: connect 1, createModule 2, moduleCmd 1)"},
      {"  - expect: {trace: \"Kernel device missing\"}", "not in the 2 trace records"},
  };
  for (const auto& [step, wanted] : cases) {
    driver = FakeDriver();
    RunResult result = run(step + "\n  - settle\n");
    EXPECT_EQ(result.exitCode(), 1) << step;
    EXPECT_EQ(result.stepsRun, 2) << "the run stops at the failed expect: " << step;
    EXPECT_NE(message(result).find(wanted), std::string::npos)
        << "wanted '" << wanted << "' in: " << message(result);
  }
}

TEST_F(ScenarioRunnerTest, ConsecutiveExpectsShareTheWindowAndTheNextStepStartsANewOne) {
  RunResult result = run(R"(
  - expect: {commands: [{cmd: addMroute}]}
  - expect: {trace: "Create Mfib module"}
  - expect: {commands: [{cmd: addMroute}], only: false}
  - delete: {mroutes: [{vrf: red, af: ipv4, app: pim, source: 10.1.1.1, group: 239.1.1.1}]}
  - settle
  - expect: {commands: [{module: MfibIpv4red, cmd: deleteMroute}], only: true}
  - expect: {trace: "Create Mfib module", absent: true}
  - expect: {route: {vrf: red, af: ipv4, source: 10.1.1.1, group: 239.1.1.1}, absent: true}
  - expect: {dump: modules.IgmpV2, absent: true}
  - advance: 1
  - expect: {commands: [], only: true}
  - expect: {commands: [{cmd: deleteMroute}]}
)");
  EXPECT_EQ(result.status, RunResult::Status::failed);
  EXPECT_EQ(result.expectationsPassed, 8);
  EXPECT_NE(message(result).find("step 14 (line 21)"), std::string::npos) << message(result);
}

TEST_F(ScenarioRunnerTest, StrictOrderWantsTheRecordsInTheirOrderAndOnlyWantsNothingElse) {
  const std::string grow = R"(
  - set: {mroutes: [{vrf: red, af: ipv4, app: pim, source: 10.2.2.2, group: 239.2.2.2, iif: Ethernet2}]}
  - stop: {vrf: red, af: ipv4}
)";
  EXPECT_EQ(
      run(grow + "  - expect: {commands: [{kind: destroyModule}, {kind: disconnect}]}\n").status,
      RunResult::Status::passed);
  driver = FakeDriver();
  RunResult strict =
      run(grow +
          "  - expect: {commands: [{kind: destroyModule}, {kind: disconnect}], order: strict}\n");
  EXPECT_EQ(strict.status, RunResult::Status::failed);
  EXPECT_NE(
      message(strict).find("in order, 1 of 2 matched; no match for {\"kind\":\"disconnect\"}"),
      std::string::npos)
      << message(strict);
  driver = FakeDriver();
  RunResult only = run(grow + "  - expect: {commands: [{kind: disconnect}], only: true}\n");
  EXPECT_NE(message(only).find("1 expected and nothing else, but there are 6 commands"),
            std::string::npos)
      << message(only);
}

TEST_F(ScenarioRunnerTest, WhatCannotBeAppliedOrJudgedIsBadInput) {
  RunResult refused = run("  - set: {vrfs: {unknown: 3}}\n  - settle\n");
  EXPECT_EQ(refused.exitCode(), 2);
  EXPECT_EQ(message(refused),
            "s.yaml: step 3 (line 9): set could not be applied: VRF 'unknown' is refused");

  driver = FakeDriver();
  RunResult noIds =
      run("  - expect: {route: {vrf: red, af: ipv4, source: 10.1.1.1, group: 239.1.1.1}, iif: "
          "Ethernet2}\n",
          IntfIdEncoder());
  EXPECT_EQ(noIds.exitCode(), 2);
  EXPECT_NE(message(noIds).find("interface ids are not available in this build"),
            std::string::npos);
}

}  // namespace
}  // namespace VekHost
