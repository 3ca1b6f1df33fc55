#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace Dataplane {

// Dump helpers of the module tables.

// A map keyed by number as a JSON object, in numeric order of the keys.
template <typename Number, typename Value>
nlohmann::ordered_json numberKeyed(const std::map<Number, Value>& table) {
  nlohmann::ordered_json out = nlohmann::ordered_json::object();
  for (const auto& [key, value] : table) out[std::to_string(key)] = value;
  return out;
}

// Text, or null for none.
inline nlohmann::ordered_json textOrNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

}  // namespace Dataplane
