#pragma once

#include <cstddef>
#include <functional>

#include "runtime/state/HashMix.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/VrfName.h"

namespace Routing::Multicast::Fib {

// Names one route table of a family: the VRF and the application that writes it.
struct MfibTableKey {
  L3::VrfName vrf;
  MfibAppType app = MfibAppType::none;

  std::size_t hash() const noexcept {
    return Lanx::hashCombine(vrf.hash(), static_cast<std::uint64_t>(app));
  }
  friend bool operator==(const MfibTableKey&, const MfibTableKey&) = default;
};

}  // namespace Routing::Multicast::Fib

template <>
struct std::hash<Routing::Multicast::Fib::MfibTableKey>
    : Lanx::MemberHash<Routing::Multicast::Fib::MfibTableKey> {};
