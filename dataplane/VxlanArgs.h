#pragma once

#include <fmt/format.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "dataplane/AddressText.h"
#include "dataplane/CommandResult.h"

namespace Dataplane {

// Checks of the values that the VXLAN modules take, shared by their command handlers. Each
// gives the refusal of a bad value, or nothing for a good one.
class VxlanArgs {
 public:
  static constexpr std::uint32_t maxVni = 0xffffff;
  static constexpr std::uint32_t maxVlanId = 4094;
  static constexpr std::uint32_t noVrfId = 0xffffff;

  static std::optional<CommandResult> vni(std::uint32_t value) {
    if (value <= maxVni) return std::nullopt;
    return CommandResult::error(EINVAL, fmt::format("VNI {} does not fit 24 bits", value));
  }
  static std::optional<CommandResult> vlan(std::uint32_t value) {
    if (value >= 1 && value <= maxVlanId) return std::nullopt;
    return CommandResult::error(EINVAL, fmt::format("VLAN {} out of range", value));
  }
  static std::optional<CommandResult> vrfId(std::uint32_t value) {
    if (value < noVrfId) return std::nullopt;
    return CommandResult::error(EINVAL, fmt::format("VRF id {} is no VRF", value));
  }
  static std::optional<CommandResult> port(std::uint32_t value) {
    if (value <= 0xffff) return std::nullopt;
    return CommandResult::error(EINVAL, fmt::format("UDP port {} out of range", value));
  }
  // An address of the given raw length (4 or 16), or of either when `length` is 0.
  static std::optional<CommandResult> addr(std::string_view what, std::string_view raw,
                                           std::size_t length = 0) {
    const bool fits = length ? raw.size() == length : (raw.size() == 4 || raw.size() == 16);
    if (fits) return std::nullopt;
    return CommandResult::error(EINVAL,
                                fmt::format("{} of {} bytes is no address", what, raw.size()));
  }
  // The text of a raw address that addr() accepted.
  static std::string text(std::string_view raw) { return AddressText::ip(raw).value_or("?"); }
};

}  // namespace Dataplane
