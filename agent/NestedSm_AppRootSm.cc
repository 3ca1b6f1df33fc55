#include "agent/NestedSm_AppRootSm.h"

#include <vector>

#include "agent/VrfPipelineControl.h"

namespace VekL3Mcast {

using Routing::Multicast::MulticastIntfsAppRootSm;

NestedSm_AppRootSm::NestedSm_AppRootSm(VrfPipelineControl* owner,
                                       Lumo::Ptr<MulticastIntfsAppRootSm const> appRootSm)
    : Qel::NotifieeConstOf<MulticastIntfsAppRootSm>(this), owner_(owner) {
  notifierIs(std::move(appRootSm));
  handleInitialized();
}

void NestedSm_AppRootSm::handleInitialized() {
  const MulticastIntfsAppRootSm* root = notifier();
  std::vector<Lanx::IntfId> intfs;
  for (const auto& member : root->multicastIntfs()) intfs.push_back(member.key);
  for (Lanx::IntfId intf : intfs) owner_->handleMcastIntf(root->vrfName(), intf, root->af());
}

void NestedSm_AppRootSm::onAttribute(Qel::AttributeId id, const void* key) {
  if (id != MulticastIntfsAppRootSm::kMulticastIntf) return;
  const MulticastIntfsAppRootSm* root = notifier();
  owner_->handleMcastIntf(root->vrfName(), *static_cast<const Lanx::IntfId*>(key), root->af());
}

}  // namespace VekL3Mcast
