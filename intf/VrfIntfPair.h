#pragma once

#include <compare>
#include <cstddef>
#include <string>

#include "runtime/state/HashMix.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/ToStringFormatter.h"
#include "runtime/state/VrfName.h"

namespace VekL3Mcast {

// An interface of a VRF: what the interface tracker queues for review.
struct VrfIntfPair {
  L3::VrfName vrfName;
  Lanx::IntfId intfId;

  std::size_t hash() const noexcept { return Lanx::hashCombine(vrfName.hash(), intfId.hash()); }
  std::string toString() const {
    return std::string(vrfName.view()) + "/" + std::string(intfId.name());
  }
  friend bool operator==(const VrfIntfPair&, const VrfIntfPair&) noexcept = default;
  friend std::strong_ordering operator<=>(const VrfIntfPair&, const VrfIntfPair&) noexcept =
      default;
};

}  // namespace VekL3Mcast

template <>
struct std::hash<VekL3Mcast::VrfIntfPair> : Lanx::MemberHash<VekL3Mcast::VrfIntfPair> {};
template <>
struct fmt::formatter<VekL3Mcast::VrfIntfPair>
    : Lanx::ToStringFormatter<VekL3Mcast::VrfIntfPair> {};
