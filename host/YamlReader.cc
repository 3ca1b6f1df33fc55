#include "host/YamlReader.h"

#include <charconv>
#include <cmath>
#include <set>

namespace VekHost {

namespace {

std::string quoted(const YAML::Node& node) {
  if (node.IsScalar()) return "'" + node.Scalar() + "'";
  if (node.IsMap()) return "a map";
  if (node.IsSequence()) return "a list";
  return "nothing";
}

bool parseInteger(std::string_view text, int64_t* value) {
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return ec == std::errc() && end == text.data() + text.size() && !text.empty();
}

bool parseNumber(std::string_view text, double* value) {
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return ec == std::errc() && end == text.data() + text.size() && !text.empty() &&
         std::isfinite(*value);
}

bool isPlain(const YAML::Node& node) { return node.Tag() != "!"; }

}  // namespace

void YamlReader::fail(const YAML::Node& at, const std::string& message) {
  throw LoadError(line(at), message);
}

void YamlReader::requireMap(const YAML::Node& node, std::string_view what) {
  if (!node.IsMap()) fail(node, std::string(what) + " must be a map, not " + quoted(node));
}

void YamlReader::requireList(const YAML::Node& node, std::string_view what) {
  if (!node.IsSequence()) fail(node, std::string(what) + " must be a list, not " + quoted(node));
}

void YamlReader::requireMapWithKeys(const YAML::Node& node, std::string_view what,
                                    const std::vector<std::string_view>& allowed) {
  requireMap(node, what);
  requireUniqueKeys(node);
  for (auto it = node.begin(); it != node.end(); ++it) {
    std::string key = it->first.Scalar();
    bool known = false;
    for (std::string_view name : allowed) known = known || key == name;
    if (!known) {
      fail(it->first, "unknown key '" + key + "' in " + std::string(what) + " (expected " +
                          listed(allowed) + ")");
    }
  }
}

void YamlReader::requireUniqueKeys(const YAML::Node& map) {
  std::set<std::string> seen;
  for (auto it = map.begin(); it != map.end(); ++it) {
    if (!it->first.IsScalar()) fail(it->first, "a key must be a plain name");
    if (!seen.insert(it->first.Scalar()).second) {
      fail(it->first, "key '" + it->first.Scalar() + "' is given twice");
    }
  }
}

void YamlReader::forEachEntry(
    const YAML::Node& map, std::string_view what,
    const std::function<void(const YAML::Node& key, const YAML::Node& value)>& visit) {
  requireMap(map, what);
  requireUniqueKeys(map);
  for (auto it = map.begin(); it != map.end(); ++it) visit(it->first, it->second);
}

bool YamlReader::has(const YAML::Node& map, std::string_view key) {
  return map[std::string(key)].IsDefined();
}

YAML::Node YamlReader::required(const YAML::Node& map, std::string_view key) {
  YAML::Node value = map[std::string(key)];
  if (!value.IsDefined() || value.IsNull()) fail(map, "missing '" + std::string(key) + "'");
  return value;
}

std::string YamlReader::text(const YAML::Node& node, std::string_view what) {
  if (!node.IsScalar() || node.Scalar().empty()) {
    fail(node, std::string(what) + " must be a non-empty text, not " + quoted(node));
  }
  return node.Scalar();
}

bool YamlReader::boolean(const YAML::Node& node, std::string_view what) {
  if (node.IsScalar() && isPlain(node)) {
    if (node.Scalar() == "true") return true;
    if (node.Scalar() == "false") return false;
  }
  fail(node, std::string(what) + " must be true or false, not " + quoted(node));
}

int64_t YamlReader::integer(const YAML::Node& node, std::string_view what, int64_t min,
                            int64_t max) {
  int64_t value = 0;
  if (!node.IsScalar() || !isPlain(node) || !parseInteger(node.Scalar(), &value) || value < min ||
      value > max) {
    fail(node, std::string(what) + " must be an integer from " + std::to_string(min) + " to " +
                   std::to_string(max) + ", not " + quoted(node));
  }
  return value;
}

double YamlReader::number(const YAML::Node& node, std::string_view what) {
  double value = 0;
  if (!node.IsScalar() || !isPlain(node) || !parseNumber(node.Scalar(), &value)) {
    fail(node, std::string(what) + " must be a number, not " + quoted(node));
  }
  return value;
}

std::size_t YamlReader::choice(const YAML::Node& node, std::string_view what,
                               const std::vector<std::string_view>& options) {
  if (node.IsScalar()) {
    for (std::size_t i = 0; i < options.size(); ++i) {
      if (node.Scalar() == options[i]) return i;
    }
  }
  fail(node, std::string(what) + " must be one of " + listed(options) + ", not " + quoted(node));
}

std::string YamlReader::listed(const std::vector<std::string_view>& names) {
  std::string list;
  for (std::string_view name : names) list += (list.empty() ? "" : ", ") + std::string(name);
  return list;
}

nlohmann::json YamlReader::toJson(const YAML::Node& node) {
  if (node.IsMap()) {
    requireUniqueKeys(node);
    nlohmann::json object = nlohmann::json::object();
    for (auto it = node.begin(); it != node.end(); ++it) {
      object[it->first.Scalar()] = toJson(it->second);
    }
    return object;
  }
  if (node.IsSequence()) {
    nlohmann::json array = nlohmann::json::array();
    for (const YAML::Node& element : node) array.push_back(toJson(element));
    return array;
  }
  if (!node.IsScalar()) return nullptr;
  const std::string& text = node.Scalar();
  if (!isPlain(node)) return text;
  if (text == "true" || text == "false") return text == "true";
  if (text == "null" || text == "~") return nullptr;
  int64_t integerValue = 0;
  if (parseInteger(text, &integerValue)) return integerValue;
  uint64_t unsignedValue = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), unsignedValue);
  if (ec == std::errc() && end == text.data() + text.size() && !text.empty()) {
    return unsignedValue;
  }
  double numberValue = 0;
  if (parseNumber(text, &numberValue)) return numberValue;
  return text;
}

}  // namespace VekHost
