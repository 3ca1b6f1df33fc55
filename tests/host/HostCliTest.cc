#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/HostCli.h"
#include "tests/host/FakeDriver.h"

namespace VekHost {
namespace {

const std::filesystem::path kData = std::filesystem::path(__FILE__).parent_path() / "data";

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

TEST_F(HostCliTest, AnOutputThatCannotBeWrittenIsNamedSoInTheSummary) {
  const std::string nowhere = "/nonexistent-dir/dump.json";
  EXPECT_EQ(cli({"run", data("routes.yaml"), "--dump", nowhere}), 2);
  EXPECT_NE(err.str().find("cannot write the dump to " + nowhere), std::string::npos);
  EXPECT_NE(out.str().find("dump: " + nowhere + " (not written)\n"), std::string::npos)
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
  EXPECT_NE(err.str().find("absent.yaml: cannot read the file"), std::string::npos);
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

TEST_F(HostCliTest, WithoutTheAgentOrItsIdsTheVerbsRefuseClearly) {
  EXPECT_EQ(cli({"intf-id", "Ethernet1", "Vlan 2", "Vlan2"}), 2);
  const auto id = [](const char* name) {
    return std::to_string(*FakeDriver::intfIdEncoder()(name));
  };
  EXPECT_EQ(out.str(), id("Ethernet1") + "\n" + id("Vlan2") + "\n");
  EXPECT_NE(err.str().find("'Vlan 2' is not an interface name"), std::string::npos);

  services = HostServices{};
  err.str("");
  EXPECT_EQ(cli({"intf-id", "Ethernet1"}), 2);
  EXPECT_EQ(err.str(), "mfa-host: interface ids are not available in this build\n");
  EXPECT_EQ(cli({"check", data("routes.yaml")}), 2);
  EXPECT_EQ(cli({"run", data("routes.yaml")}), 2);
  EXPECT_NE(err.str().find("no agent to run scenarios with"), std::string::npos);
  EXPECT_EQ(cli({"launch"}), 2);
  EXPECT_EQ(cli({"--help"}), 0);
}

}  // namespace
}  // namespace VekHost
