#include "host/ScenarioLoader.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/DaemonSteps.h"
#include "host/ExpectationReader.h"
#include "host/YamlReader.h"

namespace VekHost {

namespace {

const std::vector<std::string_view> kVerbs = {
    "start",   "stop",    "settle",        "set",        "delete",     "advance",
    "failNext", "restart", "daemonRestart", "daemonStop", "daemonStart", "expect"};

std::string located(const std::string& file, int line, const std::string& message) {
  return file + ":" + std::to_string(line) + ": " + message;
}

void requireNull(const YAML::Node& value, std::string_view verb) {
  if (!value.IsNull()) {
    YamlReader::fail(value, "'" + std::string(verb) + "' takes no value");
  }
}

}  // namespace

ScenarioLoader::ScenarioLoader(LoaderOptions options)
    : values_(std::move(options)), state_(values_) {}

const std::vector<std::string_view>& ScenarioLoader::toggleNames() {
  static const std::vector<std::string_view> names = {"MfaWcFwd", "MvpnVek", "OismMplsTunnel",
                                                      "ToloVekTx"};
  return names;
}

LoadResult ScenarioLoader::load(const std::string& file) const {
  std::ifstream in(file);
  if (!in) return LoadResult{std::nullopt, {file + ": cannot read the file"}};
  std::stringstream text;
  text << in.rdbuf();
  return loadText(text.str(), file);
}

LoadResult ScenarioLoader::loadText(std::string_view text, const std::string& file) const {
  Scenario scenario;
  scenario.file = file;
  std::vector<LoadError> errors;
  try {
    readDocument(YAML::Load(std::string(text)), scenario, errors);
  } catch (const YAML::Exception& error) {
    errors.emplace_back(error.mark.line + 1, error.msg);
  } catch (const LoadError& error) {
    errors.push_back(error);
  }
  LoadResult result;
  std::stable_sort(errors.begin(), errors.end(),
                   [](const LoadError& a, const LoadError& b) { return a.line() < b.line(); });
  for (const LoadError& error : errors)
    result.errors.push_back(located(file, error.line(), error.what()));
  if (errors.empty()) result.scenario = std::move(scenario);
  return result;
}

void ScenarioLoader::readDocument(const YAML::Node& root, Scenario& scenario,
                                  std::vector<LoadError>& errors) const {
  if (!root.IsDefined() || root.IsNull()) throw LoadError(1, "the scenario file is empty");
  YamlReader::requireMapWithKeys(root, "a scenario", {"agent", "state", "steps"});
  if (YamlReader::has(root, "agent")) {
    try {
      scenario.agent = agent(root["agent"]);
    } catch (const LoadError& error) {
      errors.push_back(error);
    }
  }
  if (YamlReader::has(root, "state"))
    state_.read(root["state"], StateOp::set, scenario.state, errors);
  if (YamlReader::has(root, "steps")) steps(root["steps"], scenario, errors);
}

AgentSettings ScenarioLoader::agent(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(
      map, "agent", {"oru", "namespaceDut", "workers", "yieldEvery", "toggles", "bypassTxDemuxer"});
  AgentSettings settings;
  for (auto [key, flag] :
       {std::pair{"oru", &settings.oru}, std::pair{"namespaceDut", &settings.namespaceDut},
        std::pair{"bypassTxDemuxer", &settings.bypassTxDemuxer}}) {
    if (YamlReader::has(map, key)) *flag = YamlReader::boolean(map[key], key);
  }
  if (YamlReader::has(map, "workers")) {
    settings.workers = static_cast<int>(YamlReader::integer(map["workers"], "workers", 1, 1024));
  }
  if (YamlReader::has(map, "yieldEvery")) {
    settings.yieldEvery =
        static_cast<int>(YamlReader::integer(map["yieldEvery"], "yieldEvery", 1, 1000000000));
  }
  if (YamlReader::has(map, "toggles")) {
    const YAML::Node toggles = map["toggles"];
    YamlReader::requireMapWithKeys(toggles, "toggles", toggleNames());
    for (auto it = toggles.begin(); it != toggles.end(); ++it) {
      settings.toggles[it->first.Scalar()] = YamlReader::boolean(it->second, it->first.Scalar());
    }
  }
  return settings;
}

void ScenarioLoader::steps(const YAML::Node& list, Scenario& scenario,
                           std::vector<LoadError>& errors) const {
  YamlReader::requireList(list, "steps");
  int index = 0;
  for (const YAML::Node& node : list) {
    ++index;
    const std::size_t errorsBefore = errors.size();
    try {
      StepAction action = step(node, errors);
      if (errors.size() == errorsBefore) {
        scenario.steps.push_back(Step{index, YamlReader::line(node), std::move(action)});
      }
    } catch (const LoadError& error) {
      errors.push_back(error);
    }
  }
}

StepAction ScenarioLoader::step(const YAML::Node& node, std::vector<LoadError>& errors) const {
  if (node.IsScalar()) {
    const std::size_t verb = YamlReader::choice(
        node, "a step without a value",
        {"settle", "restart", "daemonRestart", "daemonStop", "daemonStart"});
    if (verb >= 2) return DaemonSteps::step(node, DaemonSteps::kinds[verb - 2]);
    return verb == 0 ? StepAction{SettleStep{}} : StepAction{RestartStep{}};
  }
  if (!node.IsMap() || node.size() != 1) {
    YamlReader::fail(
        node, "a step is one of " + YamlReader::listed(kVerbs) + ", written as 'verb: value'");
  }
  const auto entry = node.begin();
  const std::string verb = entry->first.Scalar();
  YamlReader::choice(entry->first, "a step", kVerbs);
  return stepWithValue(verb, entry->second, errors);
}

StepAction ScenarioLoader::stepWithValue(std::string_view verb, const YAML::Node& value,
                                         std::vector<LoadError>& errors) const {
  if (verb == "start" || verb == "stop") {
    YamlReader::requireMapWithKeys(value, verb, {"vrf", "af"});
    VrfAf vrfAf = values_.vrfAf(value);
    return verb == "start" ? StepAction{StartStep{vrfAf}} : StepAction{StopStep{vrfAf}};
  }
  if (verb == "settle" || verb == "restart") {
    requireNull(value, verb);
    return verb == "settle" ? StepAction{SettleStep{}} : StepAction{RestartStep{}};
  }
  if (verb == "set" || verb == "delete") {
    if (value.IsMap() && value.size() == 0) {
      YamlReader::fail(value, "'" + std::string(verb) + "' names at least one state key");
    }
    StateStep stateStep{verb == "set" ? StateOp::set : StateOp::remove, {}};
    state_.read(value, stateStep.op, stateStep.change, errors);
    return stateStep;
  }
  if (verb == "advance") {
    const double seconds = YamlReader::number(value, "advance");
    if (seconds < 0) YamlReader::fail(value, "advance cannot go back in time");
    return AdvanceStep{seconds};
  }
  if (verb == "failNext") return failNext(value);
  if (auto kind = DaemonSteps::kindOf(verb)) {
    requireNull(value, verb);
    return DaemonSteps::step(value, *kind);
  }
  return ExpectStep{ExpectationReader(values_).read(value)};
}

FailNextStep ScenarioLoader::failNext(const YAML::Node& map) const {
  YamlReader::requireMapWithKeys(map, "failNext", {"module", "cmd", "code", "msg"});
  FailNextStep failure;
  failure.module = values_.name(YamlReader::required(map, "module"), "module");
  failure.cmd = values_.name(YamlReader::required(map, "cmd"), "cmd");
  failure.code = static_cast<int>(
      YamlReader::integer(YamlReader::required(map, "code"), "code", INT32_MIN, INT32_MAX));
  if (failure.code == 0)
    YamlReader::fail(map["code"], "code 0 means success; a failure needs another");
  if (YamlReader::has(map, "msg")) failure.msg = YamlReader::text(map["msg"], "msg");
  return failure;
}

}  // namespace VekHost
