#include "dataplane/VxlanArgCheck.h"

#include <fmt/format.h>

#include <cerrno>

#include "dataplane/AddressText.h"

namespace Dataplane {

std::optional<CommandResult> VxlanArgCheck::vlan(std::string_view what, std::uint32_t vlanId) {
  if (vlanId >= 1 && vlanId <= 4094) return std::nullopt;
  return CommandResult::error(EINVAL, fmt::format("{} {} out of range", what, vlanId));
}

std::optional<CommandResult> VxlanArgCheck::vni(std::uint32_t vni) {
  if (vni <= maxVni) return std::nullopt;
  return CommandResult::error(EINVAL, fmt::format("VNI {} is wider than 24 bits", vni));
}

std::optional<CommandResult> VxlanArgCheck::addr(std::string_view what, std::string_view raw) {
  if (raw.size() == 4 || raw.size() == 16) return std::nullopt;
  return CommandResult::error(EINVAL,
                              fmt::format("{} of {} bytes is no address", what, raw.size()));
}

std::optional<CommandResult> VxlanArgCheck::addrOrAny(std::string_view what,
                                                      std::string_view raw) {
  if (raw.empty()) return std::nullopt;
  return addr(what, raw);
}

std::string VxlanArgCheck::addrTextOrAny(std::string_view raw) {
  return raw.empty() ? "*" : AddressText::ip(raw).value_or("?");
}

}  // namespace Dataplane
