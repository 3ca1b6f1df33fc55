#pragma once

#include <yaml-cpp/yaml.h>

#include <optional>
#include <string_view>

#include "host/LoadError.h"

namespace VekHost {

// What the YAML reader cannot say well about a file: that it is not text at all, and what
// its own terse messages mean in a scenario.
class YamlText {
 public:
  // A NUL byte or a byte sequence that is not UTF-8: the file is not a text file, and the
  // reader's answer to it would name something else.
  static std::optional<LoadError> notText(std::string_view text);
  // The reader's error as the user's mistake: a tab in the indentation, a lone `*`, nesting
  // past the reader's depth.
  static LoadError explain(const YAML::Exception& error, std::string_view text);
};

}  // namespace VekHost
