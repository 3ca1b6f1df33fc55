#include "host/RunOutputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <functional>

#include "host/CommandKinds.h"
#include "host/DumpLayout.h"

namespace VekHost {

namespace {

struct Output {
  const char* title;
  const std::string OutputFiles::*file;
  std::function<void(ScenarioDriver&, std::ostream&)> write;
};

const std::vector<Output>& outputs() {
  static const std::vector<Output> table = {
      {"command log", &OutputFiles::log,
       [](ScenarioDriver& driver, std::ostream& out) {
         for (const nlohmann::json& record : driver.commandsSince(0)) out << record.dump() << '\n';
       }},
      {"dump", &OutputFiles::dump,
       [](ScenarioDriver& driver, std::ostream& out) { out << driver.dump().dump(2) << '\n'; }},
      {"dot", &OutputFiles::dot,
       [](ScenarioDriver& driver, std::ostream& out) { out << driver.dot(); }},
      {"trace", &OutputFiles::trace,
       [](ScenarioDriver& driver, std::ostream& out) {
         for (const std::string& record : driver.traceSince(0)) out << record << '\n';
       }},
  };
  return table;
}

std::string cannotWrite(const Output& output, const std::string& name) {
  return fmt::format("cannot write the {} to {}", output.title, name);
}

}  // namespace

std::vector<std::string> RunOutputs::write(ScenarioDriver& driver, const OutputFiles& files) {
  std::vector<std::string> problems;
  for (const Output& output : outputs()) {
    const std::string& name = files.*output.file;
    if (name.empty()) continue;
    std::ofstream out(name, std::ios::trunc);
    if (out) output.write(driver, out);
    if (!out) problems.push_back(cannotWrite(output, name));
  }
  return problems;
}

std::string RunOutputs::summary(ScenarioDriver& driver, const OutputFiles& files,
                                const std::vector<std::string>& problems) {
  const nlohmann::json dump = driver.dump();
  std::string text =
      fmt::format("modules {}, ports {}, links {}, traffic classes {}, errors {}\n",
                  DumpLayout::count(dump, "modules"), DumpLayout::count(dump, "ports"),
                  DumpLayout::links(dump).size(), DumpLayout::count(dump, "trafficClasses"),
                  DumpLayout::count(dump, "errors"));
  // What each FIB module holds: the end of the road of the routes.
  std::string routes;
  std::size_t routeTotal = 0;
  if (dump.contains("modules") && dump["modules"].is_object()) {
    for (const auto& [name, module] : dump["modules"].items()) {
      if (!module.contains("table") || !module["table"].contains("routes")) continue;
      const std::size_t count = DumpLayout::routeCount(module);
      routeTotal += count;
      routes += fmt::format("{}{} {}", routes.empty() ? "" : ", ", name, count);
    }
  }
  if (!routes.empty()) text += fmt::format("routes {}: {}\n", routeTotal, routes);
  if (auto resumed = DumpLayout::workersResumed(dump)) {
    text += *resumed ? "daemon workers resumed\n" : "daemon workers paused\n";
  }
  const std::vector<nlohmann::json> commands = driver.commandsSince(0);
  text += fmt::format("commands {}{}{}\n", commands.size(), commands.empty() ? "" : ": ",
                      commandsByKind(commands));
  for (const Output& output : outputs()) {
    const std::string& name = files.*output.file;
    if (name.empty()) continue;
    const bool failed =
        std::find(problems.begin(), problems.end(), cannotWrite(output, name)) != problems.end();
    text += fmt::format("{}: {}{}\n", output.title, name, failed ? " (not written)" : "");
  }
  return text;
}

}  // namespace VekHost
