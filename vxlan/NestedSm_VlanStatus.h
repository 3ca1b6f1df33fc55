#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/multicast/IpTunnelVlanForwardingStatus.h"

namespace VekMVxlan {

class VxlanPipeline;

// Follows the tunnel mappings of one VLAN of one family for the VXLAN pipeline: each
// overlay route that comes or goes reaches the pipeline's handleTunnelMapping.
template <Lanx::AddressFamily Af>
class NestedSm_VlanStatus
    : public Qel::StateMachine,
      public Qel::NotifieeConstOf<Routing::Multicast::IpTunnelVlanForwardingStatus> {
 public:
  NestedSm_VlanStatus(VxlanPipeline* owner,
                      Lumo::Ptr<Routing::Multicast::IpTunnelVlanForwardingStatus const> status);
  std::string_view typeName() const override { return "VekMVxlan::NestedSm_VlanStatus"; }

  // Every mapping of the VLAN.
  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;

 private:
  VxlanPipeline* owner_;
};

using NestedSm_VlanStatus4 = NestedSm_VlanStatus<Lanx::AddressFamily::ipv4>;
using NestedSm_VlanStatus6 = NestedSm_VlanStatus<Lanx::AddressFamily::ipv6>;

extern template class NestedSm_VlanStatus<Lanx::AddressFamily::ipv4>;
extern template class NestedSm_VlanStatus<Lanx::AddressFamily::ipv6>;

}  // namespace VekMVxlan
