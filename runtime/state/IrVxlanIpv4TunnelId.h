#pragma once

#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/McastTunnelIntfId.h"

namespace Multicast::Tunnel {

// The ingress-replication VXLAN tunnels: multicast tunnels of type 1.
class IrVxlanIpv4TunnelId {
 public:
  static constexpr std::uint8_t tunnelType = 1;

  // The far VTEP of a tunnel of type 1; no address for any other id.
  static Lanx::IpGenAddr vtepIp(Lanx::IntfId id) {
    if (McastTunnelIntfId::tunnelType(id) != tunnelType) return {};
    return McastTunnelIntfId::vtep(id);
  }
};

}  // namespace Multicast::Tunnel
