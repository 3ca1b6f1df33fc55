#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Dataplane {

// Raw addresses of the command channel in their usual text forms.
class AddressText {
 public:
  // 4 or 16 bytes; anything else has no text.
  static std::optional<std::string> ip(std::string_view raw);
  // Six bytes as "00:1c:73:aa:bb:cc".
  static std::optional<std::string> mac(std::string_view raw);
};

}  // namespace Dataplane
