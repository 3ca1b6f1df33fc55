#pragma once

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/IpTunnelMapping.h"
#include "runtime/state/multicast/OverlayRoute.h"

namespace Routing::Multicast {

// The tunnel mappings of one VLAN: for each overlay route of the VLAN, the underlay route
// that carries it.
class IpTunnelVlanForwardingStatus
    : public Lanx::StateEntity<"Routing::Multicast::IpTunnelVlanForwardingStatus"> {
 public:
  enum : Qel::AttributeId { kMapping = 1 };
  using Mappings = Qel::HashMap2018<OverlayRoute, IpTunnelMapping>;

  explicit IpTunnelVlanForwardingStatus(Bridging::VlanId vlanId) : vlanId_(vlanId) {}

  Bridging::VlanId vlanId() const noexcept { return vlanId_; }
  const IpTunnelMapping* mapping(const OverlayRoute& route) const { return mapping_.find(route); }
  bool mappingHas(const OverlayRoute& route) const { return mapping_.has(route); }
  const Mappings& mappings() const noexcept { return mapping_.members(); }

  void mappingIs(const OverlayRoute& route, IpTunnelMapping mapping) {
    mapping_.is(*this, route, std::move(mapping));
  }
  void mappingDel(const OverlayRoute& route) { mapping_.del(*this, route); }

 private:
  Bridging::VlanId vlanId_;
  Qel::HashCollectionAttr<OverlayRoute, IpTunnelMapping, kMapping> mapping_;
};

}  // namespace Routing::Multicast
