#include "vxlan/NestedSm_VlanForwardStatus.h"

#include <vector>

#include "vxlan/L3MVxlanInSm.h"

namespace VekMVxlan {

NestedSm_VlanForwardStatus::NestedSm_VlanForwardStatus(L3MVxlanInSm* owner,
                                                       Lumo::Ptr<Status const> status)
    : Qel::NotifieeConstOf<Status>(this), owner_(owner) {
  notifierIs(std::move(status));
  handleInitialized();
}

Bridging::VlanId NestedSm_VlanForwardStatus::vlanId() const {
  return notifier() ? notifier()->vlanId() : Bridging::VlanId(1);
}

void NestedSm_VlanForwardStatus::handleInitialized() {
  if (!notifier()) return;
  // The owner's work may change nothing here, but a copy keeps the walk independent of it.
  std::vector<Routing::Multicast::OverlayRoute> routes;
  for (const auto& member : notifier()->mappings()) routes.push_back(member.key);
  for (const auto& route : routes) owner_->handleTunnelMapping(vlanId(), route);
}

void NestedSm_VlanForwardStatus::onAttribute(Qel::AttributeId id, const void* key) {
  if (id != Status::kMapping) return;
  owner_->handleTunnelMapping(vlanId(),
                              *static_cast<const Routing::Multicast::OverlayRoute*>(key));
}

}  // namespace VekMVxlan
