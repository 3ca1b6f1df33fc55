#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "host/IntfIdEncoder.h"
#include "host/ScenarioDriver.h"

namespace VekHost {

using DriverFactory = std::function<std::unique_ptr<ScenarioDriver>()>;

// What the host needs from the build that carries the plug-in. Each is optional: without a
// driver factory `run` and `check` refuse, without an encoder `intf-id` refuses and the
// loader checks interface names by their form only.
struct HostServices {
  DriverFactory driverFactory;  // one new driver per scenario run
  // Loads the agent before anything runs; throws std::exception saying why it cannot.
  std::function<void()> loadAgent;
  IntfIdEncoder intfId;
  std::function<bool(std::string_view app)> isRouteApp;
  // `check` runs each scenario in a child process; the agent keeps process-wide state.
  bool isolateChecks = true;
};

}  // namespace VekHost
