#pragma once

#include "intf/VrfIntfPair.h"

namespace VekL3Mcast {

// An interface of a VRF as the key of the tracker's ifIndex table
// (McastIntfModuleSm::VrfNameAndIntfId).
struct VrfNameAndIntfIdKey : VrfIntfPair {
  bool isEq(const VrfNameAndIntfIdKey& other) const noexcept { return *this == other; }
};

}  // namespace VekL3Mcast

template <>
struct std::hash<VekL3Mcast::VrfNameAndIntfIdKey>
    : Lanx::MemberHash<VekL3Mcast::VrfNameAndIntfIdKey> {};
