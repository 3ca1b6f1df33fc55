#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenAddr.h"

namespace Multicast::Tunnel {

// Interface ids of multicast tunnels: a tunnel type (1 to 15) and the far VTEP. Payload of
// the id: tunnel type in bits 55..52, bit 51 set for an IPv6 VTEP, then in the low 48 bits the
// IPv4 address or a fixed 48-bit hash of the IPv6 address. An IPv6 VTEP is remembered, process
// wide, when its id is made, so vtep() and the name can give the address back.
class McastTunnelIntfId {
 public:
  static constexpr std::uint8_t maxTunnelType = 15;
  static constexpr int tunnelTypeShift = 52;
  static constexpr std::uint64_t ipv6Bit = std::uint64_t{1} << 51;
  static constexpr std::uint64_t addressMask = (std::uint64_t{1} << 48) - 1;

  // Raises Lumo::Exception for a tunnel type out of range, a VTEP without family, or an IPv6
  // VTEP whose hash is taken by another address.
  static Lanx::IntfId intfId(std::uint8_t tunnelType, const Lanx::IpGenAddr& vtep);

  // The tunnel type of a multicast tunnel id; 0 for any other id.
  static constexpr std::uint8_t tunnelType(Lanx::IntfId id) noexcept {
    if (id.kind() != Lanx::IntfId::Kind::mcastTunnel) return 0;
    return static_cast<std::uint8_t>((id.payload() >> tunnelTypeShift) & maxTunnelType);
  }
  // The VTEP of a multicast tunnel id; no address for any other id, and for an IPv6 VTEP that
  // this process never made an id of.
  static Lanx::IpGenAddr vtep(Lanx::IntfId id);

  // What follows the kind word in an interface name: "1-10.0.0.9", "2-fd00::9", or for an
  // IPv6 VTEP unknown here "2-v6#<48-bit hash in hex>".
  static std::string endpointText(Lanx::IntfId id);
  static std::optional<Lanx::IntfId> fromEndpointText(std::string_view text, std::string& reason);
  // The form scenarios write: "{tunnel: 1, vtep: 10.0.0.9}".
  static std::optional<Lanx::IntfId> fromScenarioForm(std::string_view text, std::string& reason);
};

}  // namespace Multicast::Tunnel
