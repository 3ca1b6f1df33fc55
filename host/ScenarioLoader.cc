#include "host/ScenarioLoader.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "host/DaemonSteps.h"
#include "host/ExpectationReader.h"
#include "host/VrfIdCheck.h"
#include "host/YamlReader.h"
#include "host/YamlText.h"

namespace VekHost {

namespace {

const std::vector<std::string_view> kVerbs = {
    "start",   "stop",    "settle",        "set",        "delete",     "advance",
    "failNext", "restart", "daemonRestart", "daemonStop", "daemonStart", "expect"};

std::string located(const std::string& file, int line, const std::string& message) {
  return file + ":" + std::to_string(line) + ": " + message;
}

// Mistakes reported of one file; past them a file is more likely not a scenario at all.
constexpr std::size_t kMostErrors = 20;

// How messages name a scenario read from standard input.
const char* const kStandardInput = "(standard input)";

const char* const kOneDocument =
    "a scenario is one YAML document; a second one begins here (after '---')";

const char* const kNoAliases =
    "an alias (*) is not read in a scenario: write the value out where it is needed (for any "
    "source write \"*\", quoted)";

// Anything after the first document: a second one, or a token that begins none.
LoadError afterDocument(std::string_view text, const YAML::Mark& at) {
  const auto offset = static_cast<std::size_t>(std::max(at.pos, 0));
  if (offset < text.size() && text[offset] == ',') {
    return LoadError(at.line + 1, "a ',' after the end of the document: nothing follows its "
                                  "last value");
  }
  return LoadError(at.line + 1, kOneDocument);
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
  if (file == "-") {
    std::stringstream text;
    text << std::cin.rdbuf();
    return loadText(text.str(), kStandardInput);
  }
  auto refused = [&](const std::string& why) {
    return LoadResult{std::nullopt, {file + ": cannot read the scenario: " + why}, {}};
  };
  struct stat info {};
  if (::stat(file.c_str(), &info) != 0) return refused(std::strerror(errno));
  if (S_ISDIR(info.st_mode)) return refused("it is a folder");
  std::ifstream in(file);
  if (!in) return refused(std::strerror(errno));
  std::stringstream text;
  text << in.rdbuf();
  if (in.bad()) return refused(std::strerror(errno));
  return loadText(text.str(), file);
}

LoadResult ScenarioLoader::loadText(std::string_view text, const std::string& file) const {
  Scenario scenario;
  scenario.file = file;
  std::vector<LoadError> errors;
  std::vector<LoadError> warnings;
  try {
    if (auto notText = YamlText::notText(text)) throw *notText;
    const RouteLists routeLists(text);
    if (const auto& after = routeLists.afterDocument()) throw afterDocument(text, *after);
    if (const auto& alias = routeLists.firstAlias()) throw LoadError(alias->line + 1, kNoAliases);
    // The first document only: the check above says there is no other.
    const YAML::Node document = YAML::Load(routeLists.skeleton());
    struct Reading {
      const StateReader& state;
      ~Reading() { state.routeListsIs(nullptr); }
    } reading{state_};
    state_.routeListsIs(&routeLists);
    readDocument(document, scenario, errors);
    if (errors.empty()) warnings = VrfIdCheck::check(scenario, errors);
  } catch (const YAML::Exception& error) {
    errors.push_back(YamlText::explain(error, text));
  } catch (const LoadError& error) {
    errors.push_back(error);
  }
  LoadResult result;
  for (auto* list : {&errors, &warnings}) {
    std::stable_sort(list->begin(), list->end(),
                     [](const LoadError& a, const LoadError& b) { return a.line() < b.line(); });
  }
  for (std::size_t i = 0; i < errors.size() && i < kMostErrors; ++i) {
    result.errors.push_back(located(file, errors[i].line(), errors[i].what()));
  }
  if (errors.size() > kMostErrors) {
    result.errors.push_back(fmt::format("{}: and {} more", file, errors.size() - kMostErrors));
  }
  for (const LoadError& warning : warnings) {
    result.warnings.push_back(
        located(file, warning.line(), std::string("warning: ") + warning.what()));
  }
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
  if (verb == "start") {
    YamlReader::requireMapWithKeys(value, verb, {"vrf", "af", "unknownId"});
    StartStep start{values_.vrfAf(value)};
    if (YamlReader::has(value, "unknownId")) {
      start.unknownId = YamlReader::boolean(value["unknownId"], "unknownId");
    }
    return start;
  }
  if (verb == "stop") {
    YamlReader::requireMapWithKeys(value, verb, {"vrf", "af"});
    return StopStep{values_.vrfAf(value)};
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
