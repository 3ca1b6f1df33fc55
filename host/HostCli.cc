#include "host/HostCli.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "host/DaemonChoice.h"
#include "host/IsolatedRun.h"
#include "host/ScenarioLoader.h"
#include "host/ScenarioRunner.h"

namespace VekHost {

namespace {

constexpr int kBadInput = 2;

}  // namespace

int HostCli::main(int argc, const char* const* argv) {
  CLI::App app{"mfa-host: hosts the multicast agent over a model of the data plane"};
  app.require_subcommand(1);
  std::string scenario;
  OutputFiles files;
  auto* runVerb = app.add_subcommand("run", "Run a scenario and report what the data plane holds");
  runVerb->add_option("SCENARIO", scenario, "Scenario file")->required();
  runVerb->add_option("--log", files.log, "Write the command log (JSON Lines) to FILE");
  runVerb->add_option("--dump", files.dump, "Write the model dump (JSON) to FILE");
  runVerb->add_option("--dot", files.dot, "Write the data plane as DOT to FILE");
  runVerb->add_option("--trace", files.trace, "Write the trace records to FILE");
  std::string daemon;
  constexpr const char* daemonHelp =
      "Program a daemon process instead of the in-process model: unix:PATH, tcp:PORT, or "
      "spawn (one of the run's own)";
  runVerb->add_option("--daemon", daemon, daemonHelp);
  std::vector<std::string> scenarios;
  auto* checkVerb = app.add_subcommand("check", "Run each scenario and judge its expect steps");
  checkVerb->add_option("SCENARIO", scenarios, "Scenario files")->required();
  checkVerb->add_option("--daemon", daemon, daemonHelp);
  std::vector<std::string> names;
  auto* intfVerb = app.add_subcommand("intf-id", "Print the 64-bit id of each interface name");
  intfVerb->add_option("NAME", names, "Interface names")->required();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error, out_, err_);
    return status == 0 ? 0 : kBadInput;
  }
  DaemonChoice::is(daemon);
  if (runVerb->parsed()) return run(scenario, files);
  if (checkVerb->parsed()) return check(scenarios);
  return intfIds(names);
}

bool HostCli::haveDriver() {
  if (services_.driverFactory) return true;
  err_ << "mfa-host: this build has no agent to run scenarios with\n";
  return false;
}

std::optional<Scenario> HostCli::load(const std::string& file,
                                      std::vector<std::string>* errors) const {
  ScenarioLoader loader(LoaderOptions{services_.intfId, services_.isRouteApp});
  LoadResult loaded = loader.load(file);
  *errors = std::move(loaded.errors);
  return std::move(loaded.scenario);
}

RunResult HostCli::runScenario(const Scenario& scenario) const {
  std::unique_ptr<ScenarioDriver> driver = services_.driverFactory();
  return ScenarioRunner(*driver, services_.intfId).run(scenario);
}

int HostCli::run(const std::string& file, const OutputFiles& files) {
  if (!haveDriver()) return kBadInput;
  std::vector<std::string> errors;
  std::optional<Scenario> scenario = load(file, &errors);
  for (const std::string& error : errors) err_ << error << '\n';
  if (!scenario) return kBadInput;
  std::unique_ptr<ScenarioDriver> driver = services_.driverFactory();
  RunResult result = ScenarioRunner(*driver, services_.intfId).run(*scenario);
  for (const std::string& message : result.messages) err_ << message << '\n';
  std::vector<std::string> problems = RunOutputs::write(*driver, files);
  for (const std::string& problem : problems) err_ << "mfa-host: " << problem << '\n';
  out_ << fmt::format("{}: {} steps, {} expectations passed\n", file, result.stepsRun,
                      result.expectationsPassed)
       << RunOutputs::summary(*driver, files, problems);
  if (result.status == RunResult::Status::passed && !problems.empty()) return kBadInput;
  return result.exitCode();
}

int HostCli::check(const std::vector<std::string>& files) {
  if (!haveDriver()) return kBadInput;
  int worst = 0;
  for (const std::string& file : files) {
    std::vector<std::string> errors;
    std::optional<Scenario> scenario = load(file, &errors);
    RunResult result;
    if (!scenario) {
      result.status = RunResult::Status::badInput;
      result.messages = errors;
    } else if (services_.isolateChecks) {
      result = runIsolated(file, [&] { return runScenario(*scenario); });
    } else {
      result = runScenario(*scenario);
    }
    if (result.status == RunResult::Status::passed) {
      out_ << fmt::format("PASS {} ({} expectations)\n", file, result.expectationsPassed);
    } else {
      const std::string reason = result.messages.empty() ? file : result.messages.front();
      const std::size_t more = result.messages.size() - (result.messages.empty() ? 0 : 1);
      out_ << "FAIL " << reason << (more ? fmt::format(" (and {} more)", more) : std::string())
           << '\n';
    }
    worst = std::max(worst, result.exitCode());
  }
  return worst;
}

int HostCli::intfIds(const std::vector<std::string>& names) {
  if (!services_.intfId) {
    err_ << "mfa-host: interface ids are not available in this build\n";
    return kBadInput;
  }
  int status = 0;
  for (const std::string& name : names) {
    if (auto id = services_.intfId(name)) {
      out_ << *id << '\n';
    } else {
      err_ << "mfa-host: '" << name << "' is not an interface name\n";
      status = kBadInput;
    }
  }
  return status;
}

}  // namespace VekHost
