#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/OismVlanFloodSet.h"

namespace VekL3Mcast {

class VekOismFloodSetSm;

// The reactor of one VLAN's flood set: every VTEP that comes or goes is recorded in the
// owner's backlog, and the whole set when the VLAN comes or goes.
class NestedSm_FloodSet : public Qel::StateMachine,
                          public Qel::NotifieeConstOf<Routing::Multicast::Evpn::OismVlanFloodSet> {
 public:
  using OismVlanFloodSet = Routing::Multicast::Evpn::OismVlanFloodSet;

  NestedSm_FloodSet(VekOismFloodSetSm* owner, Lumo::Ptr<OismVlanFloodSet const> floodSet);
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_FloodSet"; }

  Bridging::VlanId vlan() const noexcept { return notifier()->vlanId(); }

  void handleInitialized() override { handleAllVlanVtep(); }
  void onAttribute(Qel::AttributeId id, const void* key) override;

  void handleAllVlanVtep();
  void handleVtep(const Lanx::IpGenAddr& vtep);

 private:
  VekOismFloodSetSm* owner_;
};

}  // namespace VekL3Mcast
