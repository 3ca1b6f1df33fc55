#pragma once

#include <yaml-cpp/yaml.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/LoadError.h"
#include "host/LoaderOptions.h"
#include "host/Scenario.h"
#include "host/StateReader.h"
#include "host/ValueReader.h"

namespace VekHost {

struct LoadResult {
  std::optional<Scenario> scenario;  // present only when nothing is wrong
  std::vector<std::string> errors;   // "file:line: message", in file order
  // "file:line: warning: message": most likely mistakes that do not stop the run.
  std::vector<std::string> warnings;
};

// Reads and checks a whole scenario file before any of it is applied, so a run never stops
// half-way on a mistake in the file.
class ScenarioLoader {
 public:
  explicit ScenarioLoader(LoaderOptions options = {});
  ScenarioLoader(const ScenarioLoader&) = delete;  // state_ refers to values_
  ScenarioLoader& operator=(const ScenarioLoader&) = delete;

  LoadResult load(const std::string& file) const;
  // The same, for text already in memory; `file` names it in messages.
  LoadResult loadText(std::string_view text, const std::string& file) const;

  // The known toggles; an agent setting that names another is a mistake.
  static const std::vector<std::string_view>& toggleNames();

 private:
  void readDocument(const YAML::Node& root, Scenario& scenario,
                    std::vector<LoadError>& errors) const;
  AgentSettings agent(const YAML::Node& map) const;
  void steps(const YAML::Node& list, Scenario& scenario, std::vector<LoadError>& errors) const;
  StepAction step(const YAML::Node& node, std::vector<LoadError>& errors) const;
  StepAction stepWithValue(std::string_view verb, const YAML::Node& value,
                           std::vector<LoadError>& errors) const;
  FailNextStep failNext(const YAML::Node& map) const;

  ValueReader values_;
  StateReader state_;
};

}  // namespace VekHost
