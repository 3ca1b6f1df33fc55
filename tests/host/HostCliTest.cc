#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/HostCli.h"
#include "runtime/lumo/Assert.h"
#include "tests/host/FakeDriver.h"

namespace VekHost {
namespace {

const std::filesystem::path kData = std::filesystem::path(VEK_SOURCE_DIR) / "tests/host/data";

class HostCliTest : public ::testing::Test {
 protected:
  HostCliTest() {
    services.driverFactory = [] { return std::make_unique<FakeDriver>(); };
    services.intfId = FakeDriver::intfIdEncoder();
  }

  int cli(std::vector<std::string> args) {
    args.insert(args.begin(), "mfa-host");
    std::vector<const char*> argv;
    for (const std::string& arg : args) argv.push_back(arg.c_str());
    return HostCli(services, out, err).main(static_cast<int>(argv.size()), argv.data());
  }
  static std::string data(const char* name) { return (kData / name).string(); }
  static std::string read(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }

  HostServices services;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(HostCliTest, RunWritesTheOutputsAndSummarisesTheDataPlane) {
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() / ("mfa-host-test-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const std::string log = (dir / "log.jsonl").string(), dump = (dir / "dump.json").string();
  const std::string dot = (dir / "dp.dot").string(), trace = (dir / "trace.txt").string();

  EXPECT_EQ(cli({"run", data("routes.yaml"), "--log", log, "--dump", dump, "--dot", dot, "--trace",
                 trace}),
            0)
      << err.str();
  EXPECT_NE(out.str().find("8 steps, 4 expectations passed"), std::string::npos) << out.str();
  EXPECT_NE(out.str().find("modules 2, ports 0, links 1, traffic classes 0, errors 0\n"
                           "routes 0: MfibIpv4red 0\n"
                           "commands 5: connect 1, createModule 2, moduleCmd 2\n"),
            std::string::npos)
      << out.str();
  EXPECT_NE(out.str().find("command log: " + log), std::string::npos);

  std::istringstream lines(read(log));
  int records = 0;
  for (std::string line; std::getline(lines, line); ++records) {
    EXPECT_EQ(nlohmann::json::parse(line)["seq"], records + 1);
  }
  EXPECT_EQ(records, 5);
  EXPECT_TRUE(nlohmann::json::parse(read(dump))["modules"].contains("MfibIpv4red"));
  EXPECT_NE(read(dot).find("\"MfibIpv4red\" -> \"TxDemuxer\""), std::string::npos);
  EXPECT_NE(read(trace).find("Create Mfib module MfibIpv4red\n"), std::string::npos);
  std::filesystem::remove_all(dir);
}

TEST_F(HostCliTest, OutputsAreCheckedBeforeTheRunAndAFailedWriteIsReportedWithItsReason) {
  bool made = false;
  services.driverFactory = [&made] {
    made = true;
    return std::make_unique<FakeDriver>();
  };
  const std::string scenario = data("routes.yaml");
  EXPECT_EQ(cli({"run", scenario, "--log", scenario, "--dot", "/tmp", "--trace", "/tmp/../tmp/t",
                 "--dump", "/tmp/t"}),
            2);
  EXPECT_FALSE(made);
  EXPECT_NE(err.str().find("--log " + scenario + ": that is the scenario file"), std::string::npos)
      << err.str();
  EXPECT_NE(err.str().find("--dot /tmp: it is a folder"), std::string::npos);
  EXPECT_NE(err.str().find("--trace /tmp/../tmp/t: --dump writes that file already"),
            std::string::npos);

  err.str("");
  EXPECT_EQ(cli({"run", scenario, "--dump", "/nonexistent-dir/dump.json"}), 2);
  EXPECT_EQ(err.str(),
            "mfa-host: --dump /nonexistent-dir/dump.json: the folder /nonexistent-dir cannot be "
            "used: No such file or directory\n");
  EXPECT_FALSE(made);

  // A write that fails on the way is only known after the run.
  EXPECT_EQ(cli({"run", scenario, "--dump", "/dev/full"}), 2);
  EXPECT_NE(out.str().find("dump: /dev/full (not written: No space left on device)\n"),
            std::string::npos)
      << out.str();
}

TEST_F(HostCliTest, RunReportsEveryMistakeOfABadFileAndRunsNothing) {
  bool made = false;
  services.driverFactory = [&made] {
    made = true;
    return std::make_unique<FakeDriver>();
  };
  EXPECT_EQ(cli({"run", data("bad-group.yaml")}), 2);
  EXPECT_NE(err.str().find("bad-group.yaml:4: group 10.2.2.2 is not a multicast address"),
            std::string::npos)
      << err.str();
  EXPECT_FALSE(made);
  EXPECT_EQ(cli({"run", data("absent.yaml")}), 2);
  EXPECT_NE(err.str().find("absent.yaml: cannot read the scenario: No such file or directory"),
            std::string::npos);
  EXPECT_EQ(cli({"run", kData.string()}), 2);
  EXPECT_NE(err.str().find(kData.string() + ": cannot read the scenario: it is a folder"),
            std::string::npos);
}

TEST_F(HostCliTest, CheckPrintsALinePerScenarioAndExitsWithTheWorstOutcome) {
  for (bool isolate : {false, true}) {
    services.isolateChecks = isolate;
    out.str("");
    EXPECT_EQ(cli({"check", data("routes.yaml")}), 0);
    EXPECT_EQ(out.str(), "PASS " + data("routes.yaml") + " (4 expectations)\n");
    out.str("");
    EXPECT_EQ(cli({"check", data("routes.yaml"), data("wrong-oifs.yaml")}), 1);
    EXPECT_NE(out.str().find("FAIL " + data("wrong-oifs.yaml") + ": step 3 (line 9): expect route"),
              std::string::npos)
        << out.str();
    out.str("");
    EXPECT_EQ(cli({"check", data("bad-group.yaml"), data("wrong-oifs.yaml")}), 2);
    EXPECT_NE(out.str().find("FAIL " + data("bad-group.yaml") + ":4: group"), std::string::npos);
  }
}

TEST_F(HostCliTest, ACheckedScenarioThatKillsItsProcessFailsAlone) {
  services.driverFactory = []() -> std::unique_ptr<ScenarioDriver> { std::_Exit(3); };
  EXPECT_EQ(cli({"check", data("routes.yaml")}), 1);
  EXPECT_EQ(out.str(), "FAIL " + data("routes.yaml") +
                           ": the run ended with exit status 3 before it finished\n");
}

// A stand-in whose start fails the agent's assertion, and whose settle never returns.
class FaultyDriver : public FakeDriver {
 public:
  void start(const VrfAf&) override { QEL_ASSERT(false, "txDemuxer"); }
  void settle() override {
    for (volatile bool forever = true; forever;) {
    }
  }
};

TEST_F(HostCliTest, AnAssertionOfTheAgentIsOneLineWithItsOwnExitStatus) {
  services.driverFactory = [] { return std::make_unique<FaultyDriver>(); };
  EXPECT_EQ(cli({"check", data("routes.yaml")}), 3);
  EXPECT_EQ(out.str().rfind("FAIL " + data("routes.yaml") +
                                ": step 1 (line 11): start: the agent failed its assertion "
                                "\"txDemuxer\" (HostCliTest.cc:",
                            0),
            0u)
      << out.str();
  // The terminal line of `run` is the outcome scenarios' to check; here its exit status.
  EXPECT_EXIT(cli({"run", data("routes.yaml")}), ::testing::ExitedWithCode(3), "");
}

TEST_F(HostCliTest, ACheckedScenarioPastItsTimeLimitIsStoppedAndFails) {
  services.driverFactory = [] { return std::make_unique<FaultyDriver>(); };
  const std::string file = data("settle-only.yaml");
  EXPECT_EQ(cli({"check", "--time-limit", "0.2", file}), 1);
  EXPECT_EQ(out.str(), "FAIL " + file +
                           ": the run took longer than its time limit of 0.2 s and "
                           "was stopped\n");
  EXPECT_EQ(cli({"check", "--time-limit", "-1", file}), 2);
}

TEST_F(HostCliTest, WithoutTheAgentOrItsIdsTheVerbsRefuseClearly) {
  EXPECT_EQ(cli({"intf-id", "Ethernet1", "Vlan 2", "Vlan2"}), 2);
  const auto id = [](const char* name) {
    return std::to_string(*FakeDriver::intfIdEncoder()(name));
  };
  EXPECT_EQ(out.str(),
            id("Ethernet1") + "\nerror: 'Vlan 2' is not an interface name\n" + id("Vlan2") + "\n");

  services = HostServices{};
  err.str("");
  EXPECT_EQ(cli({"intf-id", "Ethernet1"}), 2);
  EXPECT_EQ(err.str(), "mfa-host: interface ids are not available in this build\n");
  EXPECT_EQ(cli({"check", data("routes.yaml")}), 2);
  EXPECT_EQ(cli({"run", data("routes.yaml")}), 2);
  EXPECT_NE(err.str().find("no agent to run scenarios with"), std::string::npos);
  err.str("");
  EXPECT_EQ(cli({"launch", "x.yaml"}), 2);
  EXPECT_EQ(err.str(),
            "mfa-host: unknown verb 'launch' (the verbs are run, check, live and intf-id; "
            "see mfa-host --help)\n");
  out.str("");
  EXPECT_EQ(cli({"--help"}), 0);
  for (const char* told :
       {"Exit status:", "3  the agent failed", "VEK_PLUGIN", "docs/scenario.md"}) {
    EXPECT_NE(out.str().find(told), std::string::npos) << told << " in:\n" << out.str();
  }
  out.str("");
  EXPECT_EQ(cli({"run", "--help"}), 0);
  EXPECT_NE(out.str().find("--dump FILE"), std::string::npos) << out.str();
  EXPECT_EQ(out.str().find("TEXT"), std::string::npos) << out.str();
  out.str("");
  EXPECT_EQ(cli({"--version"}), 0);
  EXPECT_EQ(out.str().rfind("mfa-host ", 0), 0u) << out.str();
}

TEST_F(HostCliTest, LiveRefusesANamespaceItCannotEnterAndAnUnknownApplication) {
  services.isRouteApp = [](std::string_view app) { return app == "pim"; };
  const std::string missing = "vekt-missing-" + std::to_string(::getpid());
  EXPECT_EQ(cli({"live", "--netns", missing, "--for", "1"}), 2);
  EXPECT_NE(err.str().find("network namespace '" + missing + "' does not exist"),
            std::string::npos)
      << err.str();
  err.str("");
  EXPECT_EQ(cli({"live", "--app", "bgp", "--for", "1"}), 2);
  EXPECT_NE(err.str().find("'bgp' is not a route application"), std::string::npos) << err.str();
}

}  // namespace
}  // namespace VekHost
