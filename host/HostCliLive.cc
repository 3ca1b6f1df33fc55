// The live verb of mfa-host: the agent fed from the kernel of a network namespace.
#include <fmt/format.h>
#include <signal.h>

#include <chrono>
#include <optional>

#include "host/HostCli.h"
#include "host/LiveRun.h"
#include "host/OutputPaths.h"
#include "kernel/KernelError.h"

namespace VekHost {

namespace {

constexpr int kBadInput = 2;

volatile sig_atomic_t interrupted = 0;

// SIGINT and SIGTERM end the run between two waits, with the outputs written; the handlers
// that were there come back with the end of the run.
class StopSignals {
 public:
  StopSignals() {
    interrupted = 0;
    struct sigaction stop {};
    stop.sa_handler = [](int) { interrupted = 1; };
    sigemptyset(&stop.sa_mask);
    ::sigaction(SIGINT, &stop, &oldInt_);
    ::sigaction(SIGTERM, &stop, &oldTerm_);
  }
  ~StopSignals() {
    ::sigaction(SIGINT, &oldInt_, nullptr);
    ::sigaction(SIGTERM, &oldTerm_, nullptr);
  }
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  struct sigaction oldInt_ {};
  struct sigaction oldTerm_ {};
};

std::string where(const std::string& netns) {
  return netns.empty() ? std::string("this network namespace") : "network namespace " + netns;
}

}  // namespace

int HostCli::live(const LiveOptions& options) {
  if (!services_.isRouteApp || !services_.isRouteApp(options.app)) {
    err_ << fmt::format("mfa-host: '{}' is not a route application\n", options.app);
    return kBadInput;
  }
  if (!haveDriver()) return kBadInput;
  const std::vector<std::string> unusable = OutputPaths::check(options.files, "");
  for (const std::string& problem : unusable) err_ << "mfa-host: " << problem << '\n';
  if (!unusable.empty()) return kBadInput;
  std::optional<Kernel::KernelReader> reader;
  try {
    reader.emplace(options.netns);
  } catch (const Kernel::KernelError& error) {
    err_ << "mfa-host: " << error.what() << '\n';
    return kBadInput;
  }
  std::unique_ptr<ScenarioDriver> driver = services_.driverFactory();
  StopSignals signals;
  try {
    LiveRun run(*driver, *reader, options.app);
    run.begin();
    // --for counts from here: a spawned daemon and the agent's start are not part of it.
    const auto start = std::chrono::steady_clock::now();
    out_ << fmt::format(
        "following {}: routes in the agent's tables {}, waiting for their interfaces or VRF "
        "{}{}\n",
        where(options.netns), run.feed().routesWritten(), run.feed().routesWaiting(),
        options.seconds > 0 ? fmt::format("; stopping after {} s", options.seconds)
                            : std::string("; Ctrl-C stops"));
    out_.flush();
    const auto elapsed = [&start] {
      return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    while (!interrupted && (options.seconds <= 0 || elapsed() < options.seconds)) {
      const LiveRun::Applied applied =
          run.waitAndApply(options.seconds > 0 ? options.seconds - elapsed() : LiveRun::kTick);
      if (applied.empty()) continue;
      // One line per batch of kernel changes: what reached central state and what the FIB
      // modules hold after the agent has worked it.
      std::string fibs;
      for (const auto& [module, count] : run.fibRoutes()) {
        fibs += fmt::format("{}{} {}", fibs.empty() ? "" : ", ", module, count);
      }
      out_ << fmt::format("{:8.3f} s  routes +{} -{}, {} waiting; FIB modules: {}\n", elapsed(),
                          applied.routesSet, applied.routesRemoved, run.feed().routesWaiting(),
                          fibs);
      out_.flush();
    }
    out_ << fmt::format("{}: routes in the agent's tables {}, waiting {}, resyncs {}\n",
                        where(options.netns), run.feed().routesWritten(),
                        run.feed().routesWaiting(), reader->resyncs());
  } catch (const std::exception& error) {
    err_ << "mfa-host: " << error.what() << '\n';
    RunOutputs::write(*driver, options.files);
    return kBadInput;
  }
  std::vector<std::string> problems = RunOutputs::write(*driver, options.files);
  for (const std::string& problem : problems) err_ << "mfa-host: " << problem << '\n';
  out_ << RunOutputs::summary(*driver, options.files, problems);
  return problems.empty() ? 0 : kBadInput;
}

}  // namespace VekHost
