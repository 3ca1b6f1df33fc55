#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSm.h"

namespace VekL3Mcast {

class McastIntfModuleSm;

// Follows the multicast interfaces of one VRF and family for the interface tracker: every
// interface that comes or goes, and every interface at a (re)scan, is queued for the review
// of the family its status names. Nothing is worked here.
class NestedSm_McastIntfVrfSm : public Qel::StateMachine,
                                public Qel::NotifieeConstOf<Routing::Multicast::MulticastIntfsAppRootSm> {
 public:
  using Root = Routing::Multicast::MulticastIntfsAppRootSm;

  NestedSm_McastIntfVrfSm(McastIntfModuleSm* owner, Lumo::Ptr<Root const> root);
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_McastIntfVrfSm"; }

  void handleInitialized() override { handleMcastVrf(); }
  void onAttribute(Qel::AttributeId id, const void* key) override;
  void reviewMcastIntf(const L3::VrfName& vrfName, Lanx::IntfId intfId);
  // Queues every interface the VRF has now.
  void handleMcastVrf();

 private:
  McastIntfModuleSm* owner_;
};

}  // namespace VekL3Mcast
