#pragma once

#include <compare>
#include <cstddef>
#include <ostream>
#include <string>

#include "runtime/state/HashMix.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/ToStringFormatter.h"
#include "runtime/state/VlanId.h"

namespace Routing::Multicast {

// An overlay multicast group as one VLAN carries it: the key under which the encapsulation
// module knows the group's underlay route.
class OverlayVlanGroup {
 public:
  OverlayVlanGroup() noexcept = default;
  OverlayVlanGroup(Bridging::VlanId vlanId, const Lanx::IpGenAddr& group) noexcept
      : vlanId_(vlanId), group_(group) {}

  Bridging::VlanId vlanId() const noexcept { return vlanId_; }
  const Lanx::IpGenAddr& group() const noexcept { return group_; }

  std::string toString() const {
    return std::to_string(vlanId_.value()) + "," + group_.toString();
  }
  std::size_t hash() const noexcept {
    return Lanx::hashMix64(group_.hashWord() ^ (std::uint64_t{vlanId_.value()} << 48));
  }

  friend bool operator==(const OverlayVlanGroup&, const OverlayVlanGroup&) noexcept = default;
  friend std::strong_ordering operator<=>(const OverlayVlanGroup&,
                                          const OverlayVlanGroup&) noexcept = default;
  friend std::ostream& operator<<(std::ostream& os, const OverlayVlanGroup& g) {
    return os << g.toString();
  }

 private:
  Bridging::VlanId vlanId_;
  Lanx::IpGenAddr group_;
};

}  // namespace Routing::Multicast

template <>
struct std::hash<Routing::Multicast::OverlayVlanGroup>
    : Lanx::MemberHash<Routing::Multicast::OverlayVlanGroup> {};
template <>
struct fmt::formatter<Routing::Multicast::OverlayVlanGroup>
    : Lanx::ToStringFormatter<Routing::Multicast::OverlayVlanGroup> {};
