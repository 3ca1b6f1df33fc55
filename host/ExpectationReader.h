#pragma once

#include <yaml-cpp/yaml.h>

#include "host/Expectation.h"
#include "host/ValueReader.h"

namespace VekHost {

// Reads the value of an `expect:` step. Its kind is the one key among route, module, edge,
// dump, commands and trace; the other keys belong to that kind.
class ExpectationReader {
 public:
  explicit ExpectationReader(const ValueReader& values) : values_(values) {}

  Expectation read(const YAML::Node& map) const;

 private:
  RouteExpectation route(const YAML::Node& map) const;
  ModuleExpectation module(const YAML::Node& map) const;
  EdgeExpectation edge(const YAML::Node& map) const;
  DumpExpectation dump(const YAML::Node& map) const;
  CommandsExpectation commands(const YAML::Node& map) const;
  TraceExpectation trace(const YAML::Node& map) const;

  const ValueReader& values_;
};

}  // namespace VekHost
