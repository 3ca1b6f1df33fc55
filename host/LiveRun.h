#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "host/KernelFeed.h"
#include "host/ScenarioDriver.h"
#include "kernel/KernelReader.h"

namespace VekHost {

// The agent fed from the kernel of a namespace instead of a scenario: the driver's central
// state follows what the reader sees, and the agent runs on the real-time scheduler.
// Whatever the agent does to the kernel (the multicast flags of its devices) belongs to the
// namespace followed, so the thread stands in it while it runs the agent. The data plane
// stays where the thread stood before: the constructor configures the driver, spawning a
// daemon or starting the link thread to one, before the thread ever moves.
class LiveRun {
 public:
  // The driver must not have been configured yet; `app` names the route application
  // whose tables take the kernel's routes.
  LiveRun(ScenarioDriver& driver, Kernel::KernelReader& reader, const std::string& app,
          int workers = 1);

  // Writes what the kernel holds, makes the agent, starts every VRF in every family the
  // kernel routes, and runs the agent until it has nothing more to do.
  void begin();
  // What one wait brought: routes written (added or changed) and taken out.
  struct Applied {
    std::size_t routesSet = 0;
    std::size_t routesRemoved = 0;
    bool empty() const { return routesSet == 0 && routesRemoved == 0; }
  };
  // Waits at most `seconds` for the kernel to say something, writes what changed, and runs
  // what the agent has to do now, timers that fell due included.
  Applied waitAndApply(double seconds);

  const KernelFeed& feed() const { return feed_; }
  // The FIB module of every VRF and family started, with the routes the data plane holds.
  std::vector<std::pair<std::string, std::size_t>> fibRoutes();

  // The longest the agent's timers wait for the kernel to go quiet.
  static constexpr double kTick = 0.01;

 private:
  Applied apply(const KernelFeed::Update& update);

  ScenarioDriver& driver_;
  Kernel::KernelReader& reader_;
  KernelFeed feed_;
  std::vector<VrfAf> started_;
};

}  // namespace VekHost
