#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSm.h"

namespace VekL3Mcast {

class VrfPipelineControl;

// Follows the multicast interfaces of one VRF and family for the agent: each interface
// that comes or goes reaches VrfPipelineControl::handleMcastIntf.
class NestedSm_AppRootSm : public Qel::StateMachine,
                           public Qel::NotifieeConstOf<Routing::Multicast::MulticastIntfsAppRootSm> {
 public:
  NestedSm_AppRootSm(VrfPipelineControl* owner,
                     Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSm const> appRootSm);
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_AppRootSm"; }

  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;

 private:
  VrfPipelineControl* owner_;
};

}  // namespace VekL3Mcast
