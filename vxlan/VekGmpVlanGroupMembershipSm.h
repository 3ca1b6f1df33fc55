#pragma once

#include <cstddef>
#include <string_view>

#include "runtime/dov/TaskAttribute.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/BacklogAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/Optional.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "vxlan/NestedSm_GmpVlanStatus.h"
#include "vxlan/VekGmpVlanEthGroupKey.h"
#include "vxlan/VekL2MVxlanInModule.h"
#include "vxlan/VtepList.h"

namespace VekL3Mcast {

// Turns the snooping state of one address family into the VTEP member lists of the L2
// encapsulation module. Each group of a VLAN gets the VTEPs of its tunnel members and of
// the VLAN's tunnel router ports; the router ports alone go under the family's internal
// group key. Reactors only record a VLAN or a group in a backlog; two tasks work the
// backlogs, so a group that changes many times before its turn costs one command with
// its final list.
class VekGmpVlanGroupMembershipSm : public Qel::StateMachine,
                                    public Qel::NotifieeConstOf<Bridging::IgmpSnooping::Status> {
 public:
  using Status = Bridging::IgmpSnooping::Status;
  using VlanStatus = Bridging::IgmpSnooping::VlanStatus;
  using VtepList = VekMVxlan::VtepList;

  // The group keys the router ports of a VLAN are programmed under.
  static constexpr Lanx::EthAddr allIpv4McastInternalMac{};
  static constexpr Lanx::EthAddr allIpv6McastInternalMac{{0xff, 0xff, 0xff, 0xff, 0xff, 0xff}};
  static constexpr Dov::TaskPriority taskPriority = 3;

  VekGmpVlanGroupMembershipSm(Lanx::AddressFamily af,
                              Lumo::Ptr<Status const> gmpVlanGroupMembershipStatus,
                              Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanInModule,
                              Lumo::Ptr<Dov::TaskScheduler> scheduler);
  ~VekGmpVlanGroupMembershipSm() override;
  std::string_view typeName() const override {
    return "VekL3Mcast::VekGmpVlanGroupMembershipSm";
  }

  Lanx::AddressFamily af() const noexcept { return af_; }
  const Status* gmpVlanGroupMembershipStatus() const noexcept { return notifier(); }
  const Lumo::Ptr<VekMVxlan::L2MVxlanIn>& l2VxlanInModule() const noexcept {
    return l2VxlanInModule_;
  }
  const Lanx::EthAddr& allIpMcastInternalMac() const noexcept { return allIpMcastInternalMac_; }
  bool initialized() const noexcept { return initialized_; }

  // One machine per VLAN of the input, with one per group inside.
  Lumo::Ptr<NestedSm_GmpVlanStatus> gmpVlanStatus(Bridging::VlanId vlan) const {
    return HN_NestedSm_GmpVlanStatus_.sm(vlan);
  }
  std::size_t gmpVlanStatusCount() const noexcept { return HN_NestedSm_GmpVlanStatus_.size(); }

  std::size_t vlanBacklogCount() const noexcept { return vlanBacklog_.size(); }
  std::size_t vlanEthGroupBacklogCount() const noexcept { return vlanEthGroupBacklog_.size(); }
  Dov::Task* vlanTask() const noexcept { return vlanTask_.get(); }
  Dov::Task* vlanEthGroupTask() const noexcept { return vlanEthGroupTask_.get(); }

  void onAttribute(Qel::AttributeId id, const void* key) override;
  void handleInitialized() override;

  // A VLAN of the input came or went.
  void handleGmpVlanStatus(Bridging::VlanId vlan);
  void handleEthGroupMemberIntf(Bridging::VlanId vlan, const Lanx::EthAddr& ethAddr,
                                Lanx::IntfId intfId);
  void handleGmpRouterIntf(Bridging::VlanId vlan, Lanx::IntfId intfId);
  // A group came, or a VLAN is walked: records the group if anything of it goes to the
  // module, that is if it has a tunnel member or the VLAN a tunnel router port.
  void handleEthGroup(Bridging::VlanId vlan, const Lanx::EthAddr& ethAddr);
  void deleteGmpVlan(Bridging::VlanId vlan);
  void deleteEthGroup(Bridging::VlanId vlan, const Lanx::EthAddr& ethAddr);

  void addVlanToBacklog(Bridging::VlanId vlan);
  void addVlanEthGroupToBacklog(Bridging::VlanId vlan, const Lanx::EthAddr& ethAddr);
  void processVlanBacklog(Bridging::VlanId vlan);
  void processVlanEthGroupBacklog(const VekGmpVlanEthGroupKey& key);
  void handleVlanTaskRun();
  void handleVlanEthGroupTaskRun();

 private:
  // Adds the VTEPs of the VLAN's tunnel router ports to `list`; true if it has any tunnel
  // router port, even one that adds no address.
  static bool getRouterIntfTunnels(const VlanStatus& status, VtepList& list);
  // The same; without a list it only tells whether there is a tunnel router port.
  static bool routerIntfTunnels(const VlanStatus& status, VtepList* list);
  // Adds the VTEPs of the group's tunnel members; false if there is no such group.
  static bool getEthGroupTunnels(const VlanStatus& status, const VekGmpVlanEthGroupKey& key,
                                 VtepList& list);
  void addAllMcastInternalGroupMembers(Bridging::VlanId vlan, const VlanStatus& status);
  void deleteAllMcastInternalGroupMembers(Bridging::VlanId vlan);
  void gmpVlanStatusSmDel(Bridging::VlanId vlan);

  const Lanx::AddressFamily af_;
  const Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanInModule_;
  const Lumo::Ptr<Dov::TaskScheduler> scheduler_;
  Lanx::EthAddr allIpMcastInternalMac_;
  Qel::NestedSmCollection<VekGmpVlanGroupMembershipSm, NestedSm_GmpVlanStatus,
                          &VlanStatus::vlanId>
      HN_NestedSm_GmpVlanStatus_{this};
  Qel::BacklogAttr<Bridging::VlanId, "vlanBacklog"> vlanBacklog_;
  Qel::Optional<Bridging::VlanId> vlanBookmark_;
  Qel::BacklogAttr<VekGmpVlanEthGroupKey, "vlanEthGroupBacklog"> vlanEthGroupBacklog_;
  Qel::Optional<VekGmpVlanEthGroupKey> vlanEthGroupBookmark_;
  Dov::TaskAttribute<VekGmpVlanGroupMembershipSm,
                     &VekGmpVlanGroupMembershipSm::handleVlanTaskRun>
      vlanTask_{this};
  Dov::TaskAttribute<VekGmpVlanGroupMembershipSm,
                     &VekGmpVlanGroupMembershipSm::handleVlanEthGroupTaskRun>
      vlanEthGroupTask_{this};
  bool initialized_ = false;
};

}  // namespace VekL3Mcast
