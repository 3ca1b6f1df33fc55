#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSm.h"

namespace VekMVxlan {

class L3MVxlanInSm;

// Follows the multicast interfaces of one VRF for an L3 encapsulation machine, which
// decides the VNI each of them sends into the tunnel with.
class NestedSm_McastIntfVrfSm
    : public Qel::StateMachine,
      public Qel::NotifieeConstOf<Routing::Multicast::MulticastIntfsAppRootSm> {
 public:
  using Root = Routing::Multicast::MulticastIntfsAppRootSm;

  NestedSm_McastIntfVrfSm(L3MVxlanInSm* owner, Lumo::Ptr<Root const> root);
  std::string_view typeName() const override { return "VekMVxlan::NestedSm_McastIntfVrfSm"; }

  void handleInitialized() override { handleMcastVrf(); }
  void onAttribute(Qel::AttributeId id, const void* key) override;
  // Every interface the VRF has now goes to the owner.
  void handleMcastVrf();
  bool multicastIntfHas(Lanx::IntfId intf) const { return notifier()->multicastIntfHas(intf); }

 private:
  L3MVxlanInSm* owner_;
};

}  // namespace VekMVxlan
