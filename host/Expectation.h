#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/DumpPath.h"
#include "host/ScenarioValues.h"

namespace VekHost {

// A route of the FIB module of a VRF and family, as the data plane holds it.
struct RouteExpectation {
  VrfAf vrfAf;
  RouteKey key;
  bool absent = false;
  std::optional<std::string> iif;
  std::optional<std::vector<std::string>> oifs;  // compared as a set
  std::optional<RouteFlags> flags;               // compared exactly
};

struct ModuleExpectation {
  std::string name;
  bool exists = true;
  std::optional<int> moduleClass;
};

// A gate link from one module to another, optionally on given gates.
struct EdgeExpectation {
  std::string from;
  std::string to;
  std::optional<int> ogate;
  std::optional<int> igate;
  bool absent = false;
};

struct DumpExpectation {
  enum class Match { equals, contains, absent };
  std::string pathText;
  DumpPath path;
  Match match = Match::equals;
  nlohmann::json value;  // unused for absent
};

// Partial command-log records matched in the window since the previous expect.
struct CommandsExpectation {
  std::vector<nlohmann::json> records;
  bool strict = false;  // in the listed order
  bool only = false;    // and nothing else in the window
};

struct TraceExpectation {
  std::string text;
  bool absent = false;
};

using Expectation = std::variant<RouteExpectation, ModuleExpectation, EdgeExpectation,
                                 DumpExpectation, CommandsExpectation, TraceExpectation>;

}  // namespace VekHost
