// mfa-host at scale: one VRF, N routes of one table, each with an incoming and two outgoing
// interfaces, written in the scenario file as a block list (the form a generated file
// takes); the whole run is load, start, settle, one route expectation and the summary, as
// `mfa-host run` does it without output files.
//
//   host_scale [N ...] [--expect-at N]      default: 10000 100000, --expect-at 1000000
//
// Figures per N:
//   load: the CPU time to read and check the file, and the peak memory it takes per route
//     (the growth of a child process's peak resident set while it loads, over one that
//     does not);
//   run: the CPU time of the whole run, and its ratio to the first N's run scaled by size
//     (1.0 is linear);
//   expect: the CPU time of one route expectation, the mean of 1000 on different routes.
// At --expect-at, the run keeps no command log and traces at info level, as a run of that
// size cannot keep a record of every route; only the expectation's cost is printed.
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "host/ExpectationChecker.h"
#include "host/LoaderOptions.h"
#include "host/PluginDriver.h"
#include "host/RunOutputs.h"
#include "host/ScenarioLoader.h"
#include "host/ScenarioRunner.h"
#include "runtime/trace/Trace.h"

namespace {

using namespace VekHost;

double cpuSeconds() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

std::string group(std::uint32_t i) {
  return "239." + std::to_string((i >> 16) & 0xff) + "." + std::to_string((i >> 8) & 0xff) + "." +
         std::to_string(i & 0xff);
}

std::string scenarioText(std::uint32_t routes) {
  std::string text =
      "state:\n"
      "  vrfs: {default: 1, red: 2}\n"
      "  multicastIntfs: {ipv4: {red: [Ethernet1, Ethernet2, Ethernet3]}}\n"
      "  mroutes:\n";
  text.reserve(routes * 120);
  for (std::uint32_t i = 0; i < routes; ++i) {
    text += "    - {vrf: red, af: ipv4, app: pim, source: 10.1.1.1, group: " + group(i) +
            ", iif: Ethernet1, oifs: [Ethernet2, Ethernet3]}\n";
  }
  text += "steps:\n  - start: {vrf: red, af: ipv4}\n  - settle\n";
  text += "  - expect: {route: {vrf: red, af: ipv4, source: 10.1.1.1, group: " + group(routes / 2) +
          "}, iif: Ethernet1, oifs: [Ethernet2, Ethernet3]}\n";
  return text;
}

// The peak resident set of a child that runs `work`, in bytes.
long childPeak(const std::function<void()>& work) {
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    work();
    ::_exit(0);
  }
  int status = 0;
  rusage usage{};
  ::wait4(child, &status, 0, &usage);
  return usage.ru_maxrss * 1024L;
}

struct Run {
  double load = 0;
  double run = 0;
  double bytesPerRoute = 0;
};

Run measure(std::uint32_t routes) {
  const std::string text = scenarioText(routes);
  const ScenarioLoader loader(runtimeLoaderOptions());
  Run figures;
  const long idle = childPeak([] {});
  const long loading = childPeak([&] {
    LoadResult loaded = loader.loadText(text, "scale.yaml");
    if (!loaded.scenario) ::_exit(1);
  });
  figures.bytesPerRoute = static_cast<double>(loading - idle) / routes;

  const double start = cpuSeconds();
  LoadResult loaded = loader.loadText(text, "scale.yaml");
  figures.load = cpuSeconds() - start;
  if (!loaded.scenario) {
    std::fprintf(stderr, "%s\n", loaded.errors.front().c_str());
    std::exit(1);
  }
  PluginDriver driver;
  const RunResult result = ScenarioRunner(driver, runtimeLoaderOptions().intfId).run(*loaded.scenario);
  const std::string summary = RunOutputs::summary(driver, OutputFiles{}, {});
  figures.run = cpuSeconds() - start;
  if (result.status != RunResult::Status::passed) {
    std::fprintf(stderr, "%s\n", result.messages.front().c_str());
    std::exit(1);
  }
  return figures;
}

double expectationCost(std::uint32_t routes) {
  Trace::levelIs(Trace::Level::info);
  const std::string text = scenarioText(routes);
  LoadResult loaded = ScenarioLoader(runtimeLoaderOptions()).loadText(text, "scale.yaml");
  PluginDriver driver;
  driver.commandLogIs(false);
  ScenarioRunner(driver, runtimeLoaderOptions().intfId).run(*loaded.scenario);
  const IntfIdEncoder encoder = runtimeLoaderOptions().intfId;
  constexpr int kChecks = 1000;
  double spent = 0;
  for (int i = 0; i < kChecks; ++i) {
    RouteExpectation expectation;
    expectation.vrfAf = VrfAf{"red", Af::ipv4};
    expectation.key =
        RouteKey{"10.1.1.1", group(static_cast<std::uint32_t>(i) * (routes / kChecks))};
    expectation.oifs = std::vector<std::string>{"Ethernet2", "Ethernet3"};
    ExpectationChecker checker(driver, encoder, {});
    const double start = cpuSeconds();
    const auto difference = checker.check(expectation);
    spent += cpuSeconds() - start;
    if (difference) {
      std::fprintf(stderr, "%s\n", difference->c_str());
      std::exit(1);
    }
  }
  return spent / kChecks;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::uint32_t> sizes;
  std::uint32_t expectAt = 1000000;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--expect-at") == 0 && i + 1 < argc) {
      expectAt = static_cast<std::uint32_t>(std::atol(argv[++i]));
    } else {
      sizes.push_back(static_cast<std::uint32_t>(std::atol(argv[i])));
    }
  }
  if (sizes.empty()) sizes = {10000, 100000};
  // As mfa-host has it: the agent's error-level records of absent namespaces stay off the
  // terminal.
  Trace::textLevelIs(Trace::Level::critical);
  std::printf("%10s %10s %12s %10s %12s\n", "routes", "load s", "load B/route", "run s",
              "run/linear");
  double firstPerRoute = 0;
  for (std::uint32_t routes : sizes) {
    const Run figures = measure(routes);
    const double perRoute = figures.run / routes;
    if (firstPerRoute == 0) firstPerRoute = perRoute;
    std::printf("%10u %10.3f %12.0f %10.3f %12.2f\n", routes, figures.load, figures.bytesPerRoute,
                figures.run, perRoute / firstPerRoute);
    std::fflush(stdout);
  }
  if (expectAt > 0) {
    std::printf("route expectation at %u routes: %.1f us\n", expectAt,
                expectationCost(expectAt) * 1e6);
  }
  return 0;
}
