#include "runtime/toggle/ToggleState.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "runtime/trace/Trace.h"

namespace {

std::map<std::string, bool, std::less<>>& overrides() {
  static std::map<std::string, bool, std::less<>> values;
  return values;
}

bool toggleFromFile(const char* toggleName, const char* jsonFileName, bool defaultValue) {
  const char* dir = std::getenv("VEK_TOGGLE_DIR");
  if (!dir || !*dir) return defaultValue;
  const std::filesystem::path path = std::filesystem::path(dir) / jsonFileName;
  std::ifstream in(path);
  if (!in) return defaultValue;
  const nlohmann::json toggles = nlohmann::json::parse(in, nullptr, false);
  if (!toggles.is_object()) {
    VEK_TRACE(warn, "Toggle file {} is not a JSON object; {} stays {}", path.string(), toggleName,
              defaultValue);
    return defaultValue;
  }
  const auto value = toggles.find(toggleName);
  if (value == toggles.end()) return defaultValue;
  if (!value->is_boolean()) {
    VEK_TRACE(warn, "Toggle {} in {} is not true or false; it stays {}", toggleName, path.string(),
              defaultValue);
    return defaultValue;
  }
  return value->get<bool>();
}

}  // namespace

bool getToggleState(const char* toggleName, const char* jsonFileName, bool defaultValue) {
  const auto& values = overrides();
  if (auto found = values.find(std::string_view(toggleName)); found != values.end()) {
    return found->second;
  }
  return toggleFromFile(toggleName, jsonFileName, defaultValue);
}

namespace Toggle {

void overrideIs(std::string_view toggleName, bool value) {
  overrides().insert_or_assign(std::string(toggleName), value);
}

void overrideDel(std::string_view toggleName) {
  auto& values = overrides();
  if (auto found = values.find(toggleName); found != values.end()) values.erase(found);
}

void overrideDelAll() { overrides().clear(); }

}  // namespace Toggle
