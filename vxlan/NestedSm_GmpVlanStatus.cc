#include "vxlan/NestedSm_GmpVlanStatus.h"

#include <vector>

#include "vxlan/VekGmpVlanGroupMembershipSm.h"

namespace VekL3Mcast {

NestedSm_GmpVlanStatus::NestedSm_GmpVlanStatus(VekGmpVlanGroupMembershipSm* owner,
                                               Lumo::Ptr<VlanStatus const> status)
    : Qel::NotifieeConstOf<VlanStatus>(this), owner_(owner) {
  notifierIs(std::move(status));
  handleInitialized();
}

void NestedSm_GmpVlanStatus::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == VlanStatus::kRouterIntf) {
    owner_->handleGmpRouterIntf(vlan(), *static_cast<const Lanx::IntfId*>(key));
  } else if (id == VlanStatus::kEthGroup) {
    handleEthGroup(*static_cast<const Lanx::EthAddr*>(key));
  }
}

void NestedSm_GmpVlanStatus::handleEthGroup(const Lanx::EthAddr& addr) {
  if (auto group = notifier()->ethGroup(addr)) {
    HN_NestedSm_EthGroup_.smIs(group);
  } else {
    ethGroupSmDel(addr);
  }
}

void NestedSm_GmpVlanStatus::doSyncEthGroups() {
  const VlanStatus& status = *notifier();
  std::vector<Lanx::EthAddr> gone;
  for (const auto& member : HN_NestedSm_EthGroup_.members()) {
    if (!status.ethGroup(member.key)) gone.push_back(member.key);
  }
  for (const Lanx::EthAddr& addr : gone) ethGroupSmDel(addr);
  for (const auto& member : status.ethGroups()) {
    // A machine that stands is left as it is: its members were reported as they came.
    if (!HN_NestedSm_EthGroup_.has(member.key)) HN_NestedSm_EthGroup_.smIs(member.value);
  }
}

void NestedSm_GmpVlanStatus::ethGroupSmDel(const Lanx::EthAddr& addr) {
  if (!HN_NestedSm_EthGroup_.has(addr)) return;
  HN_NestedSm_EthGroup_.smDel(addr);
  owner_->deleteEthGroup(vlan(), addr);
}

}  // namespace VekL3Mcast
