#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "dataplane/CommandResult.h"

namespace Dataplane {

// The argument checks that the VXLAN modules share. Each returns the refusal that the
// daemon would send, or nothing when the value is acceptable.
class VxlanArgCheck {
 public:
  static constexpr std::uint32_t maxVni = 0xffffff;

  // A VLAN of 1 to 4094; 0 is refused as much as 4095 and above.
  static std::optional<CommandResult> vlan(std::string_view what, std::uint32_t vlanId);
  // A VNI of the 24-bit header field.
  static std::optional<CommandResult> vni(std::uint32_t vni);
  // 4 or 16 bytes; an empty one is refused too.
  static std::optional<CommandResult> addr(std::string_view what, std::string_view raw);
  // Empty (any) or 4 or 16 bytes.
  static std::optional<CommandResult> addrOrAny(std::string_view what, std::string_view raw);

  // The text of an address that passed addrOrAny: "*" for any.
  static std::string addrTextOrAny(std::string_view raw);
};

}  // namespace Dataplane
