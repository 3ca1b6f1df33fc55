#include "host/CommandKinds.h"

#include <fmt/format.h>

#include <map>

namespace VekHost {

std::string commandsByKind(const std::vector<nlohmann::json>& records) {
  std::map<std::string, std::size_t> byKind;
  for (const nlohmann::json& record : records) {
    auto kind = record.find("kind");
    ++byKind[kind != record.end() && kind->is_string() ? kind->get<std::string>() : "?"];
  }
  return commandsByKind(byKind);
}

std::string commandsByKind(const std::map<std::string, std::size_t>& byKind) {
  std::string text;
  for (const auto& [kind, count] : byKind) {
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", kind, count);
  }
  return text;
}

}  // namespace VekHost
