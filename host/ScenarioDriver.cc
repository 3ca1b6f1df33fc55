#include "host/ScenarioDriver.h"

#include "host/DumpLayout.h"

namespace VekHost {

ScenarioDriver::FibRoute ScenarioDriver::fibRoute(const std::string& module, const RouteKey& key) {
  const nlohmann::json whole = dump();
  FibRoute answer;
  const nlohmann::json* fib = DumpLayout::module(whole, module);
  if (!fib) return answer;
  answer.moduleExists = true;
  answer.routeCount = DumpLayout::routeCount(*fib);
  if (const nlohmann::json* route = DumpLayout::route(*fib, key)) answer.route = *route;
  return answer;
}

ScenarioDriver::Counts ScenarioDriver::counts() {
  const nlohmann::json whole = dump();
  Counts counts;
  counts.modules = DumpLayout::count(whole, "modules");
  counts.ports = DumpLayout::count(whole, "ports");
  counts.links = DumpLayout::links(whole).size();
  counts.trafficClasses = DumpLayout::count(whole, "trafficClasses");
  counts.errors = DumpLayout::count(whole, "errors");
  counts.workersResumed = DumpLayout::workersResumed(whole);
  if (whole.contains("modules") && whole["modules"].is_object()) {
    for (const auto& [name, module] : whole["modules"].items()) {
      if (module.contains("table") && module["table"].contains("routes")) {
        counts.fibRoutes.emplace_back(name, DumpLayout::routeCount(module));
      }
    }
  }
  for (const nlohmann::json& record : commandsSince(0)) {
    auto kind = record.find("kind");
    ++counts.commandsByKind[kind != record.end() && kind->is_string() ? kind->get<std::string>()
                                                                      : "?"];
    ++counts.commands;
  }
  return counts;
}

}  // namespace VekHost
