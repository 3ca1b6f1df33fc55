#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string>

#include "runtime/state/HashMix.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/ToStringFormatter.h"
#include "runtime/state/VlanId.h"

namespace VekMVxlan {

// A remote VTEP and a VLAN in whose flood set it stands: the key of the VTEP VLAN status.
// Ordered by VLAN, then by address, as readers list the table.
struct VtepVlan {
  Lanx::IpGenAddr vtep;
  Bridging::VlanId vlan;

  std::size_t hash() const noexcept { return Lanx::hashCombine(vtep.hashWord(), vlan.value()); }
  std::string toString() const { return vtep.toString() + "/" + vlan.toString(); }

  friend bool operator==(const VtepVlan&, const VtepVlan&) noexcept = default;
  friend std::strong_ordering operator<=>(const VtepVlan& a, const VtepVlan& b) noexcept {
    if (auto byVlan = a.vlan <=> b.vlan; byVlan != 0) return byVlan;
    return a.vtep <=> b.vtep;
  }
};

}  // namespace VekMVxlan

template <>
struct std::hash<VekMVxlan::VtepVlan> : Lanx::MemberHash<VekMVxlan::VtepVlan> {};
template <>
struct fmt::formatter<VekMVxlan::VtepVlan> : Lanx::ToStringFormatter<VekMVxlan::VtepVlan> {};
