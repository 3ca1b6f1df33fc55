#pragma once

#include <string>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/IpTunnelVlanForwardingStatus.h"
#include "runtime/state/multicast/RoutingPath.h"

namespace Routing::Multicast {

// Forwarding status of the multicast IP tunnels of one family: the tunnel mappings of each
// VLAN that has any.
class IpTunnelForwardingStatus
    : public Lanx::StateEntity<"Routing::Multicast::IpTunnelForwardingStatus"> {
 public:
  enum : Qel::AttributeId { kVlanStatus = 1 };
  using VlanStatuses =
      Qel::HashMap2018<Bridging::VlanId, Lumo::Ptr<IpTunnelVlanForwardingStatus>>;

  static std::string mountPath(Lanx::AddressFamily af) {
    return routingPath(af, "multicast/ipTunnel/forwardingStatus");
  }

  Lumo::Ptr<IpTunnelVlanForwardingStatus const> vlanStatus(Bridging::VlanId vlan) const {
    return vlanStatus_.get(vlan);
  }
  const VlanStatuses& vlanStatuses() const noexcept { return vlanStatus_.members(); }

  // Finds or makes the status of a VLAN.
  Lumo::Ptr<IpTunnelVlanForwardingStatus> vlanStatusIs(Bridging::VlanId vlan) {
    if (auto present = vlanStatus_.get(vlan)) return present;
    auto made = Lumo::makePtr<IpTunnelVlanForwardingStatus>(vlan);
    vlanStatus_.is(*this, vlan, made);
    return made;
  }
  void vlanStatusDel(Bridging::VlanId vlan) { vlanStatus_.del(*this, vlan); }

 private:
  Qel::HashCollectionAttr<Bridging::VlanId, Lumo::Ptr<IpTunnelVlanForwardingStatus>, kVlanStatus>
      vlanStatus_;
};

}  // namespace Routing::Multicast
