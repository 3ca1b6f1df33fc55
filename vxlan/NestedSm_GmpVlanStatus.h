#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/bridging/IgmpSnoopingVlanStatus.h"
#include "vxlan/NestedSm_EthGroup.h"

namespace VekL3Mcast {

class VekGmpVlanGroupMembershipSm;

// The reactor of one VLAN's snooping state: router ports go to the owner as they change,
// and each group gets a machine of its own that reports its members.
class NestedSm_GmpVlanStatus
    : public Qel::StateMachine,
      public Qel::NotifieeConstOf<Bridging::IgmpSnooping::VlanStatus> {
 public:
  using VlanStatus = Bridging::IgmpSnooping::VlanStatus;
  using EthGroup = Bridging::IgmpSnooping::EthGroup;

  NestedSm_GmpVlanStatus(VekGmpVlanGroupMembershipSm* owner, Lumo::Ptr<VlanStatus const> status);
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_GmpVlanStatus"; }

  VekGmpVlanGroupMembershipSm* owner() const noexcept { return owner_; }
  Bridging::VlanId vlan() const noexcept { return notifier()->vlanId(); }

  Lumo::Ptr<NestedSm_EthGroup> ethGroup(const Lanx::EthAddr& addr) const {
    return HN_NestedSm_EthGroup_.sm(addr);
  }
  const auto& ethGroups() const noexcept { return HN_NestedSm_EthGroup_.members(); }

  void handleInitialized() override { doSyncEthGroups(); }
  void onAttribute(Qel::AttributeId id, const void* key) override;

  // Brings the group machines in line with the groups of the input: one for each group,
  // none for a group that went (the owner hears of it).
  void doSyncEthGroups();
  void handleEthGroup(const Lanx::EthAddr& addr);

 private:
  void ethGroupSmDel(const Lanx::EthAddr& addr);

  VekGmpVlanGroupMembershipSm* owner_;
  Qel::NestedSmCollection<NestedSm_GmpVlanStatus, NestedSm_EthGroup, &EthGroup::addr>
      HN_NestedSm_EthGroup_{this};
};

}  // namespace VekL3Mcast
