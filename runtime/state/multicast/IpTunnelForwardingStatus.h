#pragma once

#include <string>

#include "runtime/state/StateEntity.h"
#include "runtime/state/multicast/RoutingPath.h"

namespace Routing::Multicast {

// Forwarding status of the multicast IP tunnels of one family, a value-map table; its
// members come with the VXLAN pipeline that reads them.
class IpTunnelForwardingStatus
    : public Lanx::StateEntity<"Routing::Multicast::IpTunnelForwardingStatus"> {
 public:
  static std::string mountPath(Lanx::AddressFamily af) {
    return routingPath(af, "multicast/ipTunnel/forwardingStatus");
  }
};

}  // namespace Routing::Multicast
