#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/multicast/IpTunnelVlanForwardingStatus.h"

namespace VekMVxlan {

class L3MVxlanInSm;

// Follows the tunnel mappings of one VLAN for an L3 encapsulation machine: each overlay
// route that comes, changes or goes, and every route at a (re)scan, goes to the owner.
class NestedSm_VlanForwardStatus
    : public Qel::StateMachine,
      public Qel::NotifieeConstOf<Routing::Multicast::IpTunnelVlanForwardingStatus> {
 public:
  using Status = Routing::Multicast::IpTunnelVlanForwardingStatus;

  NestedSm_VlanForwardStatus(L3MVxlanInSm* owner, Lumo::Ptr<Status const> status);
  std::string_view typeName() const override { return "VekMVxlan::NestedSm_VlanForwardStatus"; }

  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;
  // The VLAN the mappings belong to; 1 while the machine has no status.
  Bridging::VlanId vlanId() const;

 private:
  L3MVxlanInSm* owner_;
};

}  // namespace VekMVxlan
