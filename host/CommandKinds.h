#pragma once

#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace VekHost {

// "connect 2, moduleCmd 10": command-log records counted by kind, kinds in name order.
std::string commandsByKind(const std::vector<nlohmann::json>& records);
// The same text of counts already made.
std::string commandsByKind(const std::map<std::string, std::size_t>& byKind);

}  // namespace VekHost
