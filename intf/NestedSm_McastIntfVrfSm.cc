#include "intf/NestedSm_McastIntfVrfSm.h"

#include "intf/VekL3McastIntfSm.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

NestedSm_McastIntfVrfSm::NestedSm_McastIntfVrfSm(McastIntfModuleSm* owner,
                                                 Lumo::Ptr<Root const> root)
    : Qel::NotifieeConstOf<Root>(this), owner_(owner) {
  notifierIs(std::move(root));
  handleInitialized();
}

void NestedSm_McastIntfVrfSm::onAttribute(Qel::AttributeId id, const void* key) {
  if (id != Root::kMulticastIntf) return;
  reviewMcastIntf(notifier()->vrfName(), *static_cast<const Lanx::IntfId*>(key));
}

void NestedSm_McastIntfVrfSm::handleMcastVrf() {
  const Root* root = notifier();
  for (const auto& member : root->multicastIntfs()) {
    VEK_TRACE(debug, "Scheduling: {}", member.key);
    owner_->changedVrfIntfIs(root->af(), VrfIntfPair{root->vrfName(), member.key});
  }
  owner_->doUpdateNextReview();
}

void NestedSm_McastIntfVrfSm::reviewMcastIntf(const L3::VrfName& vrfName, Lanx::IntfId intfId) {
  owner_->changedVrfIntfIs(notifier()->af(), VrfIntfPair{vrfName, intfId});
  owner_->doUpdateNextReview();
}

}  // namespace VekL3Mcast
