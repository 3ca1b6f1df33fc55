#include "host/RunOutputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>

#include "host/CommandKinds.h"
#include "host/DumpLayout.h"

namespace VekHost {

namespace {

struct Output {
  const char* title;
  const std::string OutputFiles::*file;
  std::function<void(ScenarioDriver&, std::ostream&, const OutputFiles&)> write;
};

const std::vector<Output>& outputs() {
  static const std::vector<Output> table = {
      {"command log", &OutputFiles::log,
       [](ScenarioDriver& driver, std::ostream& out, const OutputFiles&) {
         for (const nlohmann::json& record : driver.commandsSince(0)) out << record.dump() << '\n';
       }},
      {"dump", &OutputFiles::dump,
       [](ScenarioDriver& driver, std::ostream& out, const OutputFiles&) {
         out << driver.dump().dump(2) << '\n';
       }},
      {"dot", &OutputFiles::dot,
       [](ScenarioDriver& driver, std::ostream& out, const OutputFiles&) { out << driver.dot(); }},
      {"trace", &OutputFiles::trace,
       [](ScenarioDriver& driver, std::ostream& out, const OutputFiles& files) {
         for (const ScenarioDriver::TraceLine& line : driver.traceSince(0)) {
           if (line.stepMark || line.level >= files.traceLevel) out << line.text << '\n';
         }
       }},
  };
  return table;
}

std::string cannotWrite(const Output& output, const std::string& name) {
  return fmt::format("cannot write the {} to {}", output.title, name);
}

// Writes one output; the reason it could not, or an empty text.
std::string writeOne(ScenarioDriver& driver, const Output& output, const OutputFiles& files) {
  const std::string& name = files.*output.file;
  errno = 0;
  std::ofstream out(name, std::ios::trunc);
  if (out) output.write(driver, out, files);
  if (out) out.close();
  if (out) return {};
  return errno ? std::strerror(errno) : "the write failed";
}

}  // namespace

std::vector<std::string> RunOutputs::write(ScenarioDriver& driver, const OutputFiles& files) {
  std::vector<std::string> problems;
  for (const Output& output : outputs()) {
    const std::string& name = files.*output.file;
    if (name.empty()) continue;
    const std::string reason = writeOne(driver, output, files);
    if (!reason.empty()) problems.push_back(cannotWrite(output, name) + ": " + reason);
  }
  return problems;
}

std::string RunOutputs::summary(ScenarioDriver& driver, const OutputFiles& files,
                                const std::vector<std::string>& problems) {
  const ScenarioDriver::Counts counts = driver.counts();
  std::string text =
      fmt::format("modules {}, ports {}, links {}, traffic classes {}, errors {}\n", counts.modules,
                  counts.ports, counts.links, counts.trafficClasses, counts.errors);
  // What each FIB module holds: the end of the road of the routes.
  std::string routes;
  std::size_t routeTotal = 0;
  for (const auto& [name, count] : counts.fibRoutes) {
    routeTotal += count;
    routes += fmt::format("{}{} {}", routes.empty() ? "" : ", ", name, count);
  }
  if (!routes.empty()) text += fmt::format("routes {}: {}\n", routeTotal, routes);
  if (counts.workersResumed) {
    text += *counts.workersResumed ? "daemon workers resumed\n" : "daemon workers paused\n";
  }
  text += fmt::format("commands {}{}{}\n", counts.commands, counts.commands ? ": " : "",
                      commandsByKind(counts.commandsByKind));
  for (const Output& output : outputs()) {
    const std::string& name = files.*output.file;
    if (name.empty()) continue;
    const std::string failure = cannotWrite(output, name) + ": ";
    auto failed = std::find_if(problems.begin(), problems.end(), [&](const std::string& problem) {
      return problem.rfind(failure, 0) == 0;
    });
    text += fmt::format(
        "{}: {}{}\n", output.title, name,
        failed == problems.end() ? "" : " (not written: " + failed->substr(failure.size()) + ")");
  }
  return text;
}

}  // namespace VekHost
