#pragma once

#include <cstdint>

#include "runtime/state/IntfId.h"

namespace Vash::Multicast::Fib {

// One member of a route's interface list: the interface and its role flags.
struct RouteIntf {
  // The incoming interface of the route; tested first, so a member with both flags is the
  // incoming interface only.
  static constexpr std::uint8_t incomingFlag = 0x02;
  static constexpr std::uint8_t outgoingFlag = 0x01;

  Lanx::IntfId intfId;
  std::uint8_t flags = 0;

  bool isIncoming() const noexcept { return (flags & incomingFlag) != 0; }
  bool isOutgoing() const noexcept { return (flags & outgoingFlag) != 0; }
  friend bool operator==(const RouteIntf&, const RouteIntf&) noexcept = default;
};

}  // namespace Vash::Multicast::Fib
