#pragma once

#include <yaml-cpp/yaml.h>

#include <array>
#include <optional>
#include <string_view>

#include "host/Step.h"

namespace VekHost {

// The steps that kill and start the daemon process: "daemonRestart", "daemonStop",
// "daemonStart". A scenario may use them only in a run with a daemon process.
class DaemonSteps {
 public:
  static constexpr std::array<DaemonStep::Kind, 3> kinds{
      DaemonStep::Kind::restart, DaemonStep::Kind::stop, DaemonStep::Kind::start};

  static std::string_view verb(DaemonStep::Kind kind);
  static std::optional<DaemonStep::Kind> kindOf(std::string_view verb);
  // The step, or a load error at `node` when this run has no daemon process.
  static StepAction step(const YAML::Node& node, DaemonStep::Kind kind);
};

}  // namespace VekHost
