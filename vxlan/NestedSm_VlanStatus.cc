#include "vxlan/NestedSm_VlanStatus.h"

#include "vxlan/VxlanPipeline.h"

namespace VekMVxlan {

using Routing::Multicast::IpTunnelVlanForwardingStatus;
using Routing::Multicast::OverlayRoute;

template <Lanx::AddressFamily Af>
NestedSm_VlanStatus<Af>::NestedSm_VlanStatus(
    VxlanPipeline* owner, Lumo::Ptr<IpTunnelVlanForwardingStatus const> status)
    : Qel::NotifieeConstOf<IpTunnelVlanForwardingStatus>(this), owner_(owner) {
  notifierIs(std::move(status));
  handleInitialized();
}

template <Lanx::AddressFamily Af>
void NestedSm_VlanStatus<Af>::handleInitialized() {
  const IpTunnelVlanForwardingStatus* status = notifier();
  for (const auto& mapping : status->mappings()) {
    owner_->handleTunnelMapping(Af, status->vlanId(), mapping.key);
  }
}

template <Lanx::AddressFamily Af>
void NestedSm_VlanStatus<Af>::onAttribute(Qel::AttributeId id, const void* key) {
  if (id != IpTunnelVlanForwardingStatus::kMapping) return;
  owner_->handleTunnelMapping(Af, notifier()->vlanId(), *static_cast<const OverlayRoute*>(key));
}

template class NestedSm_VlanStatus<Lanx::AddressFamily::ipv4>;
template class NestedSm_VlanStatus<Lanx::AddressFamily::ipv6>;

}  // namespace VekMVxlan
