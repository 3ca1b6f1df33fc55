#pragma once

#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "host/LoadError.h"

namespace VekHost {

// Typed reads of scenario YAML. Each read that finds something wrong throws LoadError with
// the line of the offending node and a message that names the key (`what`).
class YamlReader {
 public:
  static int line(const YAML::Node& node) { return node.Mark().line + 1; }
  [[noreturn]] static void fail(const YAML::Node& at, const std::string& message);

  static void requireMap(const YAML::Node& node, std::string_view what);
  static void requireList(const YAML::Node& node, std::string_view what);
  // A map whose keys are all among `allowed` and none twice.
  static void requireMapWithKeys(const YAML::Node& node, std::string_view what,
                                 const std::vector<std::string_view>& allowed);
  // Fails on a key given twice; for maps whose keys are names chosen by the user.
  static void requireUniqueKeys(const YAML::Node& map);

  // Calls `visit(key, value)` for each entry of a map whose keys are all different.
  static void forEachEntry(
      const YAML::Node& map, std::string_view what,
      const std::function<void(const YAML::Node& key, const YAML::Node& value)>& visit);

  static bool has(const YAML::Node& map, std::string_view key);
  // The value of `key`, which must be present and not null.
  static YAML::Node required(const YAML::Node& map, std::string_view key);

  static std::string text(const YAML::Node& node, std::string_view what);
  static bool boolean(const YAML::Node& node, std::string_view what);
  static int64_t integer(const YAML::Node& node, std::string_view what, int64_t min, int64_t max);
  static double number(const YAML::Node& node, std::string_view what);
  // The position of the node's text among `options`.
  static std::size_t choice(const YAML::Node& node, std::string_view what,
                            const std::vector<std::string_view>& options);
  // "a, b, c", for messages that list what is allowed.
  static std::string listed(const std::vector<std::string_view>& names);

  // A plain (unquoted) YAML value as JSON: null, true, false and numbers get their types,
  // quoted scalars and anything else stay strings; maps and lists nest.
  static nlohmann::json toJson(const YAML::Node& node);
};

}  // namespace VekHost
