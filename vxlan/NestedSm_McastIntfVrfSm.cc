#include "vxlan/NestedSm_McastIntfVrfSm.h"

#include <vector>

#include "vxlan/L3MVxlanInSm.h"

namespace VekMVxlan {

NestedSm_McastIntfVrfSm::NestedSm_McastIntfVrfSm(L3MVxlanInSm* owner, Lumo::Ptr<Root const> root)
    : Qel::NotifieeConstOf<Root>(this), owner_(owner) {
  notifierIs(std::move(root));
  handleInitialized();
}

void NestedSm_McastIntfVrfSm::onAttribute(Qel::AttributeId id, const void* key) {
  if (id != Root::kMulticastIntf) return;
  owner_->handleMcastIntf(notifier()->vrfName(), *static_cast<const Lanx::IntfId*>(key));
}

void NestedSm_McastIntfVrfSm::handleMcastVrf() {
  std::vector<Lanx::IntfId> intfs;
  for (const auto& member : notifier()->multicastIntfs()) intfs.push_back(member.key);
  for (Lanx::IntfId intf : intfs) owner_->handleMcastIntf(notifier()->vrfName(), intf);
}

}  // namespace VekMVxlan
