#include "host/JsonMatch.h"

namespace VekHost::JsonMatch {

namespace {

bool integerMatchesDecimalText(const nlohmann::json& expected, const nlohmann::json& actual) {
  if (!expected.is_number_integer() || !actual.is_string()) return false;
  const std::string& text = actual.get_ref<const std::string&>();
  if (expected.is_number_unsigned()) return text == std::to_string(expected.get<uint64_t>());
  return text == std::to_string(expected.get<int64_t>());
}

bool scalarEquals(const nlohmann::json& expected, const nlohmann::json& actual) {
  return expected == actual || integerMatchesDecimalText(expected, actual);
}

// Kuhn's augmenting path: tries to give expected item `e` a partner, moving earlier pairs.
bool augment(std::size_t e, std::size_t actualCount,
             const std::function<bool(std::size_t, std::size_t)>& matches,
             std::vector<bool>& visited, std::vector<std::ptrdiff_t>& partnerOfActual) {
  for (std::size_t a = 0; a < actualCount; ++a) {
    if (visited[a] || !matches(e, a)) continue;
    visited[a] = true;
    if (partnerOfActual[a] < 0 || augment(static_cast<std::size_t>(partnerOfActual[a]), actualCount,
                                          matches, visited, partnerOfActual)) {
      partnerOfActual[a] = static_cast<std::ptrdiff_t>(e);
      return true;
    }
  }
  return false;
}

}  // namespace

bool equals(const nlohmann::json& expected, const nlohmann::json& actual) {
  if (expected.is_object() && actual.is_object()) {
    if (expected.size() != actual.size()) return false;
    for (const auto& [key, value] : expected.items()) {
      auto it = actual.find(key);
      if (it == actual.end() || !equals(value, *it)) return false;
    }
    return true;
  }
  if (expected.is_array() && actual.is_array()) {
    if (expected.size() != actual.size()) return false;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (!equals(expected[i], actual[i])) return false;
    }
    return true;
  }
  return scalarEquals(expected, actual);
}

bool contains(const nlohmann::json& expected, const nlohmann::json& actual, Strings strings) {
  if (expected.is_object()) {
    if (!actual.is_object()) return false;
    for (const auto& [key, value] : expected.items()) {
      auto it = actual.find(key);
      if (it == actual.end() || !contains(value, *it, strings)) return false;
    }
    return true;
  }
  if (expected.is_array()) {
    if (!actual.is_array()) return false;
    auto matches = [&](std::size_t e, std::size_t a) {
      return contains(expected[e], actual[a], strings);
    };
    return unmatched(expected.size(), actual.size(), matches).empty();
  }
  if (expected.is_string() && actual.is_string() && strings == Strings::substring) {
    return actual.get_ref<const std::string&>().find(expected.get_ref<const std::string&>()) !=
           std::string::npos;
  }
  return scalarEquals(expected, actual);
}

std::vector<std::size_t> unmatched(std::size_t expectedCount, std::size_t actualCount,
                                   const std::function<bool(std::size_t, std::size_t)>& matches) {
  std::vector<std::ptrdiff_t> partnerOfActual(actualCount, -1);
  std::vector<std::size_t> alone;
  for (std::size_t e = 0; e < expectedCount; ++e) {
    std::vector<bool> visited(actualCount, false);
    if (!augment(e, actualCount, matches, visited, partnerOfActual)) alone.push_back(e);
  }
  return alone;
}

std::string brief(const nlohmann::json& value, std::size_t limit) {
  std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  if (text.size() > limit) text = text.substr(0, limit) + "...";
  return text;
}

}  // namespace VekHost::JsonMatch
