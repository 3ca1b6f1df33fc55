#include "host/HostCli.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <map>
#include <tuple>
#include <utility>

#include "host/AgentAssertion.h"
#include "host/DaemonChoice.h"
#include "host/IsolatedRun.h"
#include "host/OutputPaths.h"
#include "host/ScenarioLoader.h"
#include "host/ScenarioRunner.h"

namespace VekHost {

namespace {

constexpr int kBadInput = 2;
constexpr int kAgentAssertion = 3;
// Seconds a checked scenario may take; the longest of ours takes a few.
constexpr double kDefaultTimeLimit = 60;

#ifdef VEK_VERSION
constexpr const char* kVersion = VEK_VERSION;
#else
constexpr const char* kVersion = "(version unknown)";
#endif

// What reaches the terminal unless asked: the agent's own levels put records at error level
// that are no error of a scenario (a namespace that a scenario does not have), so only the
// worst come through; the trace file keeps everything but the finest.
constexpr Trace::Level kTerminalLevel = Trace::Level::critical;

const std::map<std::string, Trace::Level>& levelNames() {
  static const std::map<std::string, Trace::Level> names = {
      {"trace", Trace::Level::trace}, {"debug", Trace::Level::debug},
      {"info", Trace::Level::info},   {"warn", Trace::Level::warn},
      {"error", Trace::Level::err},   {"critical", Trace::Level::critical},
      {"off", Trace::Level::off}};
  return names;
}

// Names the level in help texts as the option takes it.
std::string levelName(Trace::Level level) {
  for (const auto& [name, value] : levelNames()) {
    if (value == level) return name;
  }
  return "?";
}

constexpr const char* kFooter = R"(Exit status:
  0  every step ran and every expectation held
  1  an expectation failed, or a run could not end as it must (a task that made no
     progress, a failNext that never fired, a check past its time limit)
  2  bad input: a mistake in a file (file:line: what), an output that cannot be written,
     an agent that cannot be loaded
  3  the agent failed one of its assertions

Environment:
  VEK_PLUGIN  the agent library to load (default: the one this build made)

Scenario files and every option: docs/scenario.md)";

}  // namespace

int HostCli::main(int argc, const char* const* argv) {
  CLI::App app{"mfa-host: hosts the multicast agent over a model of the data plane"};
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string("mfa-host ") + kVersion);
  app.footer(kFooter);
  std::string scenario;
  OutputFiles files;
  auto* runVerb = app.add_subcommand("run", "Run a scenario and report what the data plane holds");
  runVerb->add_option("SCENARIO", scenario, "Scenario file, - for standard input")
      ->required()
      ->type_name("FILE");
  for (auto [option, file, what] : {std::tuple{"--log", &files.log, "the command log (JSON Lines)"},
                                    std::tuple{"--dump", &files.dump, "the model dump (JSON)"},
                                    std::tuple{"--dot", &files.dot, "the data plane as DOT"},
                                    std::tuple{"--trace", &files.trace, "the trace records"}}) {
    runVerb->add_option(option, *file, std::string("Write ") + what + " to FILE")
        ->type_name("FILE");
  }
  const auto levelOption = [](CLI::App* verb, const char* name, Trace::Level& level,
                              const std::string& what) {
    verb->add_option(name, level, what + "; default " + levelName(level))
        ->transform(CLI::CheckedTransformer(levelNames()))
        ->type_name("LEVEL");
  };
  levelOption(runVerb, "--trace-level", files.traceLevel,
              "Keep records of LEVEL and worse in the --trace file (the marks of the steps "
              "are always kept)");
  Trace::Level terminalLevel = kTerminalLevel;
  const std::string terminalHelp =
      "Show records of LEVEL and worse on the terminal as they come (trace, debug, info, "
      "warn, error, critical, off)";
  levelOption(runVerb, "--terminal-level", terminalLevel, terminalHelp);
  std::string daemon;
  constexpr const char* daemonHelp =
      "Program a daemon process instead of the in-process model: unix:PATH, tcp:PORT, or "
      "spawn (one of the run's own)";
  runVerb->add_option("--daemon", daemon, daemonHelp)->type_name("ADDRESS");
  std::vector<std::string> scenarios;
  auto* checkVerb = app.add_subcommand("check", "Run each scenario and judge its expect steps");
  checkVerb->add_option("SCENARIO", scenarios, "Scenario files, - for standard input")
      ->required()
      ->type_name("FILE");
  double timeLimit = kDefaultTimeLimit;
  checkVerb
      ->add_option("--time-limit", timeLimit,
                   "Stop a scenario that runs longer than SECONDS and fail it (0: no limit)")
      ->check(CLI::NonNegativeNumber)
      ->type_name("SECONDS")
      ->capture_default_str();
  checkVerb->add_option("--daemon", daemon, daemonHelp)->type_name("ADDRESS");
  levelOption(checkVerb, "--terminal-level", terminalLevel, terminalHelp);
  LiveOptions liveOptions;
  auto* liveVerb = app.add_subcommand(
      "live", "Feed the agent from the kernel of a network namespace and follow it");
  liveVerb->add_option("--netns", liveOptions.netns, "The network namespace (default: this one)")
      ->type_name("NAME");
  liveVerb->add_option("--for", liveOptions.seconds, "Stop after SECONDS (default: at Ctrl-C)")
      ->check(CLI::PositiveNumber)
      ->type_name("SECONDS");
  liveVerb
      ->add_option("--app", liveOptions.app, "The route application whose tables take the routes")
      ->type_name("APP")
      ->capture_default_str();
  for (auto [option, file, what] :
       {std::tuple{"--log", &liveOptions.files.log, "the command log"},
        std::tuple{"--dump", &liveOptions.files.dump, "the model dump"},
        std::tuple{"--dot", &liveOptions.files.dot, "the data plane as DOT"},
        std::tuple{"--trace", &liveOptions.files.trace, "the trace"}}) {
    liveVerb->add_option(option, *file, std::string("Write ") + what + " to FILE at the end")
        ->type_name("FILE");
  }
  liveVerb->add_option("--daemon", daemon, daemonHelp)->type_name("ADDRESS");
  levelOption(liveVerb, "--trace-level", liveOptions.files.traceLevel,
              "Keep records of LEVEL and worse in the --trace file");
  levelOption(liveVerb, "--terminal-level", terminalLevel, terminalHelp);
  std::vector<std::string> names;
  auto* intfVerb = app.add_subcommand("intf-id", "Print the 64-bit id of each interface name");
  intfVerb->add_option("NAME", names, "Interface names")->required()->type_name("NAME");
  // A first word that is neither a verb nor an option is a verb mistyped: say so, not that
  // an argument was not expected.
  const auto isVerb = [&app](const std::string& word) {
    for (const CLI::App* verb :
         std::as_const(app).get_subcommands([](const CLI::App*) { return true; })) {
      if (verb->check_name(word)) return true;
    }
    return false;
  };
  if (argc > 1 && argv[1][0] != '-' && !isVerb(argv[1])) {
    err_ << fmt::format(
        "mfa-host: unknown verb '{}' (the verbs are run, check, live and intf-id; "
        "see mfa-host --help)\n",
        argv[1]);
    return kBadInput;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int status = app.exit(error, out_, err_);
    return status == 0 ? 0 : kBadInput;
  }
  DaemonChoice::is(daemon);
  // The agent's records are kept from the finest level any output asks for, and from
  // debug at least, which the trace expectations read.
  Trace::textLevelIs(terminalLevel);
  Trace::levelIs(std::min(
      {Trace::Level::debug, terminalLevel, files.traceLevel, liveOptions.files.traceLevel}));
  if (runVerb->parsed()) return run(scenario, files);
  if (checkVerb->parsed()) return check(scenarios, timeLimit);
  if (liveVerb->parsed()) return live(liveOptions);
  return intfIds(names);
}

bool HostCli::haveDriver() {
  if (!services_.driverFactory) {
    err_ << "mfa-host: this build has no agent to run scenarios with\n";
    return false;
  }
  if (!services_.loadAgent) return true;
  try {
    services_.loadAgent();
    return true;
  } catch (const std::exception& error) {
    err_ << "mfa-host: " << error.what() << '\n';
    return false;
  }
}

std::optional<Scenario> HostCli::load(const std::string& file,
                                      std::vector<std::string>* errors) const {
  ScenarioLoader loader(LoaderOptions{services_.intfId, services_.isRouteApp});
  LoadResult loaded = loader.load(file);
  for (const std::string& warning : loaded.warnings) err_ << warning << '\n';
  *errors = std::move(loaded.errors);
  return std::move(loaded.scenario);
}

RunResult HostCli::runScenario(const Scenario& scenario) const {
  std::unique_ptr<ScenarioDriver> driver = services_.driverFactory();
  return ScenarioRunner(*driver, services_.intfId).run(scenario);
}

int HostCli::run(const std::string& file, const OutputFiles& files) {
  if (!haveDriver()) return kBadInput;
  const std::vector<std::string> unusable = OutputPaths::check(files, file);
  for (const std::string& problem : unusable) err_ << "mfa-host: " << problem << '\n';
  if (!unusable.empty()) return kBadInput;
  std::vector<std::string> errors;
  std::optional<Scenario> scenario = load(file, &errors);
  for (const std::string& error : errors) err_ << error << '\n';
  if (!scenario) return kBadInput;
  std::unique_ptr<ScenarioDriver> driver = services_.driverFactory();
  // The run stops at an assertion of the agent: one line on the terminal, and the trace so
  // far where the trace was asked for.
  AgentAssertion assertion([&](const std::string& line) {
    OutputFiles traceOnly;
    traceOnly.trace = files.trace;
    traceOnly.traceLevel = files.traceLevel;
    if (!traceOnly.trace.empty()) RunOutputs::write(*driver, traceOnly);
    err_ << line << '\n';
    err_.flush();
    out_.flush();
    std::_Exit(kAgentAssertion);
  });
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

int HostCli::check(const std::vector<std::string>& files, double timeLimit) {
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
      result = runIsolated(
          file, [&] { return runScenario(*scenario); }, timeLimit);
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
  // One line out per name in, so that the answers stay beside their questions.
  for (const std::string& name : names) {
    if (auto id = services_.intfId(name)) {
      out_ << *id << '\n';
    } else {
      out_ << "error: '" << name << "' is not an interface name\n";
      status = kBadInput;
    }
  }
  return status;
}

}  // namespace VekHost
