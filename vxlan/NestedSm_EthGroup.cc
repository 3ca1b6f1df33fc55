#include "vxlan/NestedSm_EthGroup.h"

#include "vxlan/NestedSm_GmpVlanStatus.h"
#include "vxlan/VekGmpVlanGroupMembershipSm.h"

namespace VekL3Mcast {

NestedSm_EthGroup::NestedSm_EthGroup(NestedSm_GmpVlanStatus* vlanSm, Lumo::Ptr<EthGroup const> group)
    : Qel::NotifieeConstOf<EthGroup>(this), vlanSm_(vlanSm) {
  notifierIs(std::move(group));
  handleInitialized();
}

void NestedSm_EthGroup::handleInitialized() {
  vlanSm_->owner()->handleEthGroup(vlanSm_->vlan(), addr());
}

void NestedSm_EthGroup::onAttribute(Qel::AttributeId id, const void* key) {
  if (id != EthGroup::kMemberIntf) return;
  vlanSm_->owner()->handleEthGroupMemberIntf(vlanSm_->vlan(), addr(),
                                             *static_cast<const Lanx::IntfId*>(key));
}

}  // namespace VekL3Mcast
