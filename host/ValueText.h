#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/ScenarioValues.h"

namespace VekHost {

// Checks of the texts a scenario writes for addresses and names; each returns the
// canonical form, or nullopt for a text that is not one.
class ValueText {
 public:
  // An address of the family, in the form inet_ntop writes ("ff0e::1", not "FF0E:0::1").
  static std::optional<std::string> address(std::string_view text, Af af);
  static bool isMulticast(std::string_view canonicalAddress, Af af);
  // Six hex octets joined by colons, lower case.
  static std::optional<std::string> mac(std::string_view text);
  // Letters first, then letters, digits and "/.:_-"; the form of interface and device names.
  static bool isName(std::string_view text);
  static constexpr std::size_t kMaxVrfNameLength = 100;
};

}  // namespace VekHost
