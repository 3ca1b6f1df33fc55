#include "host/ExpectationReader.h"

#include "host/YamlReader.h"

namespace VekHost {

namespace {

const std::vector<std::string_view> kKinds = {"route", "module",   "edge",
                                              "dump",  "commands", "trace"};

bool optionalBoolean(const YAML::Node& map, std::string_view key, bool otherwise) {
  return YamlReader::has(map, key) ? YamlReader::boolean(map[std::string(key)], key) : otherwise;
}

}  // namespace

Expectation ExpectationReader::read(const YAML::Node& map) const {
  YamlReader::requireMap(map, "expect");
  std::string_view kind;
  for (std::string_view candidate : kKinds) {
    if (!YamlReader::has(map, candidate)) continue;
    if (!kind.empty()) {
      YamlReader::fail(map, "an expect checks one thing: found both '" + std::string(kind) +
                                "' and '" + std::string(candidate) + "'");
    }
    kind = candidate;
  }
  if (kind == "route") return route(map);
  if (kind == "module") return module(map);
  if (kind == "edge") return edge(map);
  if (kind == "dump") return dump(map);
  if (kind == "commands") return commands(map);
  if (kind == "trace") return trace(map);
  YamlReader::fail(map, "an expect names one of " + YamlReader::listed(kKinds));
}

RouteExpectation ExpectationReader::route(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(map, "a route expect",
                                 {"route", "absent", "iif", "oifs", "flags"});
  const YAML::Node key = map["route"];
  YamlReader::requireMapWithKeys(key, "route", {"vrf", "af", "source", "group"});
  RouteExpectation expectation;
  expectation.vrfAf = values_.vrfAf(key);
  expectation.key = values_.routeKey(key, expectation.vrfAf.af);
  expectation.absent = optionalBoolean(map, "absent", false);
  if (YamlReader::has(map, "iif")) expectation.iif = values_.intf(map["iif"], "iif");
  if (YamlReader::has(map, "oifs")) expectation.oifs = values_.intfList(map["oifs"], "oifs");
  if (YamlReader::has(map, "flags")) {
    expectation.flags = values_.flags(map["flags"]);
    // The agent takes a route in switching state out of the data plane, and the FIB module
    // has no such flag: an expectation of it could never hold.
    if (expectation.flags->switching) {
      YamlReader::fail(map["flags"],
                       "switching is a flag of the route table only; the data plane never holds it "
                       "(a switching route is expected absent)");
    }
  }
  if (expectation.absent && (expectation.iif || expectation.oifs || expectation.flags)) {
    YamlReader::fail(map, "a route expected absent has no iif, oifs or flags");
  }
  return expectation;
}

ModuleExpectation ExpectationReader::module(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(map, "a module expect", {"module", "exists", "class"});
  ModuleExpectation expectation;
  expectation.name = values_.name(map["module"], "module");
  expectation.exists = optionalBoolean(map, "exists", true);
  if (YamlReader::has(map, "class")) {
    if (!expectation.exists) YamlReader::fail(map, "a module expected not to exist has no class");
    expectation.moduleClass =
        static_cast<int>(YamlReader::integer(map["class"], "class", 0, 65535));
  }
  return expectation;
}

EdgeExpectation ExpectationReader::edge(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(map, "an edge expect", {"edge", "absent"});
  const YAML::Node link = map["edge"];
  YamlReader::requireMapWithKeys(link, "edge", {"from", "to", "ogate", "igate"});
  EdgeExpectation expectation;
  expectation.from = values_.name(YamlReader::required(link, "from"), "from");
  expectation.to = values_.name(YamlReader::required(link, "to"), "to");
  for (auto [key, gate] :
       {std::pair{"ogate", &expectation.ogate}, std::pair{"igate", &expectation.igate}}) {
    if (YamlReader::has(link, key)) {
      *gate = static_cast<int>(YamlReader::integer(link[key], key, 0, 65535));
    }
  }
  expectation.absent = optionalBoolean(map, "absent", false);
  return expectation;
}

DumpExpectation ExpectationReader::dump(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(map, "a dump expect", {"dump", "equals", "contains", "absent"});
  DumpExpectation expectation;
  expectation.pathText = YamlReader::text(map["dump"], "dump");
  std::string error;
  auto path = DumpPath::parse(expectation.pathText, &error);
  if (!path) YamlReader::fail(map["dump"], "dump path '" + expectation.pathText + "': " + error);
  expectation.path = *path;
  const int given = YamlReader::has(map, "equals") + YamlReader::has(map, "contains") +
                    YamlReader::has(map, "absent");
  if (given != 1) YamlReader::fail(map, "a dump expect has one of equals, contains or absent");
  if (YamlReader::has(map, "absent")) {
    if (!YamlReader::boolean(map["absent"], "absent")) {
      YamlReader::fail(map["absent"], "absent of a dump expect can only be true");
    }
    expectation.match = DumpExpectation::Match::absent;
  } else {
    const bool equals = YamlReader::has(map, "equals");
    expectation.match = equals ? DumpExpectation::Match::equals : DumpExpectation::Match::contains;
    expectation.value = YamlReader::toJson(map[equals ? "equals" : "contains"]);
  }
  return expectation;
}

CommandsExpectation ExpectationReader::commands(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(map, "a commands expect", {"commands", "order", "only"});
  const YAML::Node list = map["commands"];
  YamlReader::requireList(list, "commands");
  CommandsExpectation expectation;
  for (const YAML::Node& record : list) {
    YamlReader::requireMap(record, "a command record");
    expectation.records.push_back(YamlReader::toJson(record));
  }
  if (YamlReader::has(map, "order")) {
    expectation.strict = YamlReader::choice(map["order"], "order", {"any", "strict"}) == 1;
  }
  expectation.only = optionalBoolean(map, "only", false);
  return expectation;
}

TraceExpectation ExpectationReader::trace(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(map, "a trace expect", {"trace", "absent"});
  return TraceExpectation{YamlReader::text(map["trace"], "trace"),
                          optionalBoolean(map, "absent", false)};
}

}  // namespace VekHost
