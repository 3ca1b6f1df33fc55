#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string>

#include "runtime/state/EthAddr.h"
#include "runtime/state/HashMix.h"
#include "runtime/state/ToStringFormatter.h"
#include "runtime/state/VlanId.h"

namespace VekL3Mcast {

// One snooped Ethernet group of one VLAN.
struct VekGmpVlanEthGroupKey {
  Bridging::VlanId vlan;
  Lanx::EthAddr ethAddr;

  std::size_t hash() const noexcept { return Lanx::hashCombine(ethAddr.value(), vlan.value()); }
  std::string toString() const { return vlan.toString() + "/" + ethAddr.toString(); }

  friend bool operator==(const VekGmpVlanEthGroupKey&, const VekGmpVlanEthGroupKey&) noexcept =
      default;
  friend std::strong_ordering operator<=>(const VekGmpVlanEthGroupKey&,
                                          const VekGmpVlanEthGroupKey&) noexcept = default;
};

}  // namespace VekL3Mcast

template <>
struct std::hash<VekL3Mcast::VekGmpVlanEthGroupKey>
    : Lanx::MemberHash<VekL3Mcast::VekGmpVlanEthGroupKey> {};
template <>
struct fmt::formatter<VekL3Mcast::VekGmpVlanEthGroupKey>
    : Lanx::ToStringFormatter<VekL3Mcast::VekGmpVlanEthGroupKey> {};
