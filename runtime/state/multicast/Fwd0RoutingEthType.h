#pragma once

#include <array>
#include <cstdint>

#include "runtime/state/AddressFamily.h"

namespace Routing {

// The ether types whose routed packets the hardware hands to a forwarding device.
enum class Fwd0RoutingEthType : std::uint16_t { ipv4 = 0x0800, ipv6 = 0x86dd };

inline constexpr std::array<Fwd0RoutingEthType, 2> fwd0RoutingEthTypes{Fwd0RoutingEthType::ipv4,
                                                                      Fwd0RoutingEthType::ipv6};

constexpr Lanx::AddressFamily fwd0EthTypeFamily(Fwd0RoutingEthType ethType) noexcept {
  return ethType == Fwd0RoutingEthType::ipv6 ? Lanx::AddressFamily::ipv6
                                             : Lanx::AddressFamily::ipv4;
}

}  // namespace Routing
