#include "host/ExpectationChecker.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "host/CommandKinds.h"
#include "host/DumpLayout.h"
#include "host/JsonMatch.h"

namespace VekHost {

namespace {

std::string nameList(const std::vector<std::string>& names, std::size_t limit = 10) {
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < limit; ++i) text += (i ? ", " : "") + names[i];
  if (names.size() > limit) text += fmt::format(", ... ({} in all)", names.size());
  return text.empty() ? "none" : text;
}

std::string windowSummary(const std::vector<nlohmann::json>& records) {
  return fmt::format("{} commands since the previous expect{}{}", records.size(),
                     records.empty() ? "" : ": ", commandsByKind(records));
}

std::string routeSubject(const RouteExpectation& expectation) {
  return fmt::format("route {} {} {}", expectation.vrfAf.vrf, afName(expectation.vrfAf.af),
                     expectation.key.text());
}

std::string linkText(const DumpLayout::Link& link) {
  return fmt::format("{}:{} -> {}:{}", link.from, link.ogate, link.to, link.igate);
}

}  // namespace

std::optional<std::string> ExpectationChecker::check(const Expectation& expectation) {
  return std::visit(*this, expectation);
}

uint64_t ExpectationChecker::idOf(const std::string& name) const {
  if (!intfId_) throw CannotCheck("interface ids are not available in this build");
  auto id = intfId_(name);
  if (!id) throw CannotCheck("'" + name + "' is not an interface name");
  return *id;
}

std::optional<std::string> ExpectationChecker::operator()(const RouteExpectation& expectation) {
  const std::string moduleName = DumpLayout::fibModuleName(expectation.vrfAf);
  const ScenarioDriver::FibRoute fib = driver_.fibRoute(moduleName, expectation.key);
  const std::optional<nlohmann::json>& route = fib.route;
  const std::string subject = routeSubject(expectation);
  if (expectation.absent) {
    if (!route) return std::nullopt;
    return fmt::format("{}: expected absent, but {} holds it: {}", subject, moduleName,
                       JsonMatch::brief(*route));
  }
  if (!fib.moduleExists) return fmt::format("{}: there is no module {}", subject, moduleName);
  if (!route) {
    return fmt::format("{}: not in {} (it holds {} routes)", subject, moduleName, fib.routeCount);
  }
  if (auto difference = compareRoute(expectation, *route)) {
    return subject + ": " + *difference;
  }
  return std::nullopt;
}

std::optional<std::string> ExpectationChecker::compareRoute(const RouteExpectation& expectation,
                                                            const nlohmann::json& route) const {
  // Ids the expectation names are shown by name; any other by number.
  std::map<uint64_t, std::string> names;
  auto nameOf = [&](uint64_t id) {
    auto it = names.find(id);
    return it != names.end() ? it->second : fmt::format("id {}", id);
  };
  auto setText = [&](const std::set<uint64_t>& ids) {
    std::vector<std::string> list;
    for (uint64_t id : ids) list.push_back(nameOf(id));
    std::sort(list.begin(), list.end());
    return "{" + fmt::format("{}", fmt::join(list, ", ")) + "}";
  };
  std::vector<std::string> differences;
  if (expectation.iif) {
    const uint64_t expected = idOf(*expectation.iif);
    names[expected] = *expectation.iif;
    auto actual = DumpLayout::routeIif(route);
    if (actual != expected) {
      differences.push_back(fmt::format("iif: expected {}, got {}", *expectation.iif,
                                        actual ? nameOf(*actual) : "none"));
    }
  }
  if (expectation.oifs) {
    std::set<uint64_t> expected;
    for (const std::string& name : *expectation.oifs) {
      const uint64_t id = idOf(name);
      names[id] = name;
      expected.insert(id);
    }
    const std::vector<uint64_t> oifs = DumpLayout::routeOifs(route);
    const std::set<uint64_t> actual(oifs.begin(), oifs.end());
    if (actual != expected) {
      differences.push_back(
          fmt::format("oifs: expected {}, got {}", setText(expected), setText(actual)));
    }
  }
  if (expectation.flags) {
    const RouteFlags actual = DumpLayout::routeFlags(route);
    if (actual != *expectation.flags) {
      differences.push_back(fmt::format("flags: expected {}, got {}",
                                        routeFlagsText(*expectation.flags),
                                        routeFlagsText(actual)));
    }
  }
  if (differences.empty()) return std::nullopt;
  return fmt::format("{}", fmt::join(differences, "; "));
}

std::optional<std::string> ExpectationChecker::operator()(const ModuleExpectation& expectation) {
  const nlohmann::json dump = driver_.dump();
  const nlohmann::json* module = DumpLayout::module(dump, expectation.name);
  const std::string subject = "module " + expectation.name;
  if (!expectation.exists) {
    return module ? std::optional(subject + ": expected absent, but it exists") : std::nullopt;
  }
  if (!module) {
    std::vector<std::string> present;
    if (auto modules = dump.find("modules"); modules != dump.end() && modules->is_object()) {
      for (const auto& [name, value] : modules->items()) present.push_back(name);
    }
    return fmt::format("{}: missing (modules: {})", subject, nameList(present));
  }
  if (expectation.moduleClass) {
    auto moduleClass = module->find("class");
    const nlohmann::json expected = *expectation.moduleClass;
    if (moduleClass == module->end() || !JsonMatch::equals(expected, *moduleClass)) {
      return fmt::format("{}: class expected {}, got {}", subject, *expectation.moduleClass,
                         moduleClass == module->end() ? "none" : JsonMatch::brief(*moduleClass));
    }
  }
  return std::nullopt;
}

std::optional<std::string> ExpectationChecker::operator()(const EdgeExpectation& expectation) {
  std::vector<std::string> fromLinks;
  std::optional<DumpLayout::Link> found;
  for (const DumpLayout::Link& link : DumpLayout::links(driver_.dump())) {
    if (link.from != expectation.from) continue;
    fromLinks.push_back(linkText(link));
    const bool matches = link.to == expectation.to &&
                         (!expectation.ogate || *expectation.ogate == link.ogate) &&
                         (!expectation.igate || *expectation.igate == link.igate);
    if (matches && !found) found = link;
  }
  const std::string subject =
      fmt::format("edge {}{} -> {}{}", expectation.from,
                  expectation.ogate ? fmt::format(":{}", *expectation.ogate) : "", expectation.to,
                  expectation.igate ? fmt::format(":{}", *expectation.igate) : "");
  if (expectation.absent) {
    if (!found) return std::nullopt;
    return fmt::format("{}: expected absent, but {} exists", subject, linkText(*found));
  }
  if (found) return std::nullopt;
  return fmt::format("{}: missing (links of {}: {})", subject, expectation.from,
                     nameList(fromLinks));
}

std::optional<std::string> ExpectationChecker::operator()(const DumpExpectation& expectation) {
  const nlohmann::json dump = driver_.dump();
  std::string missing;
  const nlohmann::json* value = expectation.path.find(dump, &missing);
  const std::string subject = "dump " + expectation.pathText;
  if (expectation.match == DumpExpectation::Match::absent) {
    if (!value) return std::nullopt;
    return fmt::format("{}: expected absent, but it holds {}", subject, JsonMatch::brief(*value));
  }
  if (!value) return fmt::format("{}: {}", subject, missing);
  const bool equals = expectation.match == DumpExpectation::Match::equals;
  const bool holds =
      equals ? JsonMatch::equals(expectation.value, *value)
             : JsonMatch::contains(expectation.value, *value, JsonMatch::Strings::substring);
  if (holds) return std::nullopt;
  return fmt::format("{}: expected {} {}, got {}", subject, equals ? "equal to" : "to contain",
                     JsonMatch::brief(expectation.value), JsonMatch::brief(*value));
}

std::optional<std::string> ExpectationChecker::operator()(const CommandsExpectation& expectation) {
  const std::vector<nlohmann::json> window = driver_.commandsSince(window_.commandMark);
  const auto& expected = expectation.records;
  auto matches = [&](std::size_t e, std::size_t a) {
    return JsonMatch::contains(expected[e], window[a], JsonMatch::Strings::exact);
  };
  if (expectation.strict) {
    // The earliest match of each record in turn finds an ordered match whenever one exists.
    std::size_t next = 0;
    for (std::size_t a = 0; a < window.size() && next < expected.size(); ++a) {
      if (matches(next, a)) ++next;
    }
    if (next < expected.size()) {
      return fmt::format("commands: in order, {} of {} matched; no match for {} after them ({})",
                         next, expected.size(), JsonMatch::brief(expected[next]),
                         windowSummary(window));
    }
  } else {
    const std::vector<std::size_t> alone =
        JsonMatch::unmatched(expected.size(), window.size(), matches);
    if (!alone.empty()) {
      return fmt::format("commands: {} of {} without a match, the first {} ({})", alone.size(),
                         expected.size(), JsonMatch::brief(expected[alone.front()]),
                         windowSummary(window));
    }
  }
  if (expectation.only && window.size() != expected.size()) {
    return fmt::format("commands: {} expected and nothing else, but there are {}", expected.size(),
                       windowSummary(window));
  }
  return std::nullopt;
}

std::optional<std::string> ExpectationChecker::operator()(const TraceExpectation& expectation) {
  // The host's marks of steps are not what the agent traced.
  std::vector<std::string> records;
  for (ScenarioDriver::TraceLine& line : driver_.traceSince(window_.traceMark)) {
    if (!line.stepMark) records.push_back(std::move(line.text));
  }
  auto found = std::find_if(records.begin(), records.end(), [&](const std::string& record) {
    return record.find(expectation.text) != std::string::npos;
  });
  const std::string subject = fmt::format("trace \"{}\"", expectation.text);
  if (expectation.absent) {
    if (found == records.end()) return std::nullopt;
    return fmt::format("{}: expected absent, but a record holds it: {}", subject, *found);
  }
  if (found != records.end()) return std::nullopt;
  return fmt::format("{}: not in the {} trace records since the previous expect", subject,
                     records.size());
}

}  // namespace VekHost
