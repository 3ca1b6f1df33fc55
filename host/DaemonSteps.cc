#include "host/DaemonSteps.h"

#include <stdexcept>
#include <string>

#include "host/DaemonChoice.h"
#include "host/ScenarioDriver.h"
#include "host/YamlReader.h"

namespace VekHost {

std::string_view DaemonSteps::verb(DaemonStep::Kind kind) {
  switch (kind) {
    case DaemonStep::Kind::restart:
      return "daemonRestart";
    case DaemonStep::Kind::stop:
      return "daemonStop";
    case DaemonStep::Kind::start:
      return "daemonStart";
  }
  return "daemon";
}

std::optional<DaemonStep::Kind> DaemonSteps::kindOf(std::string_view name) {
  for (DaemonStep::Kind kind : kinds) {
    if (verb(kind) == name) return kind;
  }
  return std::nullopt;
}

StepAction DaemonSteps::step(const YAML::Node& node, DaemonStep::Kind kind) {
  if (DaemonChoice::inProcess()) {
    YamlReader::fail(node, "'" + std::string(verb(kind)) +
                               "' needs a daemon process: run with --daemon spawn");
  }
  return DaemonStep{kind};
}

void ScenarioDriver::daemon(DaemonStep::Kind kind) {
  throw std::runtime_error("'" + std::string(DaemonSteps::verb(kind)) +
                           "' needs a daemon process of the run's own");
}

}  // namespace VekHost
