// live_latency [ROUTES] [SAMPLES]: mfa-host live against a kernel whose multicast routes a
// static routing daemon (smcroute) writes, in a network namespace of its own. Prints
// (1) the start with ROUTES routes in the kernel (default 10000): the dump, the state
// written and the agent's start, and the time until the FIB module holds them all; and
// (2) over SAMPLES routes (default 50) added one at a time with the daemon's control
// command, the time from the command's start to the route in the FIB module's table, and
// beside it the time the command itself takes (a process run in the namespace that asks the
// daemon and returns when it has answered). Needs root and smcroute.
#include <chrono>
#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "host/LiveRun.h"
#include "host/PluginDriver.h"
#include "kernel/KernelReader.h"
#include "tests/kernel/netns/NetnsLab.h"

namespace {

using Clock = std::chrono::steady_clock;

double ms(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

std::string group(int i) {
  return "239." + std::to_string(10 + i / 65536) + "." + std::to_string(i / 256 % 256) + "." +
         std::to_string(i % 256);
}

void printSpread(const char* what, std::vector<double> values) {
  std::sort(values.begin(), values.end());
  std::printf("%-44s median %7.2f ms  p90 %7.2f ms  max %7.2f ms\n", what,
              values[values.size() / 2], values[values.size() * 9 / 10], values.back());
}

}  // namespace

int main(int argc, char** argv) {
  const int routes = argc > 1 ? std::atoi(argv[1]) : 10000;
  const int samples = argc > 2 ? std::atoi(argv[2]) : 50;
  if (auto why = KernelLab::NetnsLab::whyNot()) {
    std::cerr << "live_latency: " << *why << '\n';
    return 2;
  }
  KernelLab::NetnsLab lab;
  std::vector<std::string> adds;
  for (int i = 0; i < routes; ++i) adds.push_back("add et1 10.1.0.5 " + group(i) + " et3 et4");
  lab.ctlBatch(adds);

  VekHost::PluginDriver driver;
  driver.commandLogIs(false);
  const VekHost::RouteKey last{"10.1.0.5", group(routes - 1)};
  const auto start = Clock::now();
  Kernel::KernelReader reader(lab.name());
  const auto dumped = Clock::now();
  VekHost::LiveRun live(driver, reader, "pim");
  live.begin();
  const auto begun = Clock::now();
  while (driver.fibRoute("MfibIpv4default", last).routeCount < static_cast<std::size_t>(routes)) {
    live.waitAndApply(VekHost::LiveRun::kTick);
  }
  const auto loaded = Clock::now();
  std::printf("start with %d kernel routes: dump %.1f ms, state and agent start %.1f ms, "
              "all in the FIB module %.1f ms (%zu in the kernel's tables)\n",
              routes, ms(dumped - start), ms(begun - dumped), ms(loaded - start),
              live.feed().routesWritten());

  std::vector<double> toTable;
  std::vector<double> commandAlone;
  for (int i = 0; i < samples; ++i) {
    const VekHost::RouteKey key{"10.1.0.6", group(i)};
    const auto sent = Clock::now();
    Clock::time_point returned;
    std::thread command([&lab, &key, &returned] {
      lab.ctl("add et1 10.1.0.6 " + key.group + " et3");
      returned = Clock::now();
    });
    while (!driver.fibRoute("MfibIpv4default", key).route) {
      live.waitAndApply(VekHost::LiveRun::kTick);
    }
    const auto held = Clock::now();
    command.join();
    toTable.push_back(ms(held - sent));
    commandAlone.push_back(ms(returned - sent));
  }
  printSpread("daemon's command started -> FIB module table", toTable);
  printSpread("the command alone (start to exit)", commandAlone);
  return 0;
}
