#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VekHost {

// A path into the model dump: keys joined by dots, as in "modules.IgmpV2.table.vrfs". A key
// that holds a dot (a route key does) is written in brackets and quotes,
// `routes["10.1.1.1,239.1.1.1"]`; an array position is a number, `errors.0` or `errors[0]`.
class DumpPath {
 public:
  DumpPath() = default;

  // The parsed path, or nullopt with the reason in `error`.
  static std::optional<DumpPath> parse(std::string_view text, std::string* error);

  // The value at the path, or nullptr with where the walk stopped in `missing`.
  const nlohmann::json* find(const nlohmann::json& root, std::string* missing) const;

  const std::vector<std::string>& keys() const { return keys_; }

 private:
  std::vector<std::string> keys_;
};

}  // namespace VekHost
