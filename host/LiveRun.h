#pragma once

#include <string>

#include "host/KernelFeed.h"
#include "host/ScenarioDriver.h"
#include "kernel/KernelReader.h"

namespace VekHost {

// The agent fed from the kernel of a namespace instead of a scenario: the driver's central
// state follows what the reader sees, and the agent runs on the real-time scheduler.
class LiveRun {
 public:
  // The driver must not have been configured yet; `app` names the route application
  // whose tables take the kernel's routes.
  LiveRun(ScenarioDriver& driver, Kernel::KernelReader& reader, const std::string& app,
          int workers = 1);

  // Writes what the kernel holds, makes the agent, starts every VRF in every family the
  // kernel routes, and runs the agent until it has nothing more to do.
  void begin();
  // Waits at most `seconds` for the kernel to say something, writes what changed, and runs
  // what the agent has to do now, timers that fell due included.
  void waitAndApply(double seconds);

  const KernelFeed& feed() const { return feed_; }

  // The longest the agent's timers wait for the kernel to go quiet.
  static constexpr double kTick = 0.01;

 private:
  void apply(const KernelFeed::Update& update);

  ScenarioDriver& driver_;
  Kernel::KernelReader& reader_;
  KernelFeed feed_;
};

}  // namespace VekHost
