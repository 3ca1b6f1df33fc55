#pragma once

#include <string>

#include "runtime/state/StateEntity.h"
#include "runtime/state/multicast/RoutingPath.h"

namespace Routing::Multicast {

// Decapsulation configuration of the multicast IP tunnels of one family; its members come
// with the VXLAN pipeline that reads them.
class IpTunnelDecapConfig : public Lanx::StateEntity<"Routing::Multicast::IpTunnelDecapConfig"> {
 public:
  static std::string mountPath(Lanx::AddressFamily af) {
    return routingPath(af, "multicast/ipTunnel/decapConfig");
  }
};

}  // namespace Routing::Multicast
