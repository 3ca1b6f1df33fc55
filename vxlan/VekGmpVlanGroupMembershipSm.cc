#include "vxlan/VekGmpVlanGroupMembershipSm.h"

#include <vector>

#include "runtime/lumo/Assert.h"
#include "runtime/qel/ProcessBacklog.h"
#include "runtime/state/IrVxlanIpv4TunnelId.h"
#include "runtime/state/McastTunnelIntfId.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {

using Multicast::Tunnel::McastTunnelIntfId;

// Tunnels of type 1 lead to one VTEP each; type 2 tunnels reach the underlay without one.
bool isVtepTunnel(Lanx::IntfId intfId) {
  const auto type = McastTunnelIntfId::tunnelType(intfId);
  return type == 1 || type == 2;
}

void addVtepOf(Lanx::IntfId intfId, VekMVxlan::VtepList& list) {
  const Lanx::IpGenAddr vtep = Multicast::Tunnel::IrVxlanIpv4TunnelId::vtepIp(intfId);
  if (!vtep.isNone()) list.addrIs(vtep, true);
}

}  // namespace

VekGmpVlanGroupMembershipSm::VekGmpVlanGroupMembershipSm(
    Lanx::AddressFamily af, Lumo::Ptr<Status const> gmpVlanGroupMembershipStatus,
    Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanInModule, Lumo::Ptr<Dov::TaskScheduler> scheduler)
    : Qel::NotifieeConstOf<Status>(this),
      af_(af),
      l2VxlanInModule_(std::move(l2VxlanInModule)),
      scheduler_(std::move(scheduler)) {
  QEL_ASSERT(gmpVlanGroupMembershipStatus && l2VxlanInModule_,
             "Pointer SM args cannot be null unless they are marked Optional");
  notifierIs(std::move(gmpVlanGroupMembershipStatus));
  isRegisteredNotifieeIs(true);
  handleInitialized();
}

VekGmpVlanGroupMembershipSm::~VekGmpVlanGroupMembershipSm() {
  hasNotificationActiveIs(false);
  vlanTask_.del();
  vlanEthGroupTask_.del();
}

void VekGmpVlanGroupMembershipSm::handleInitialized() {
  const char* vlanEthGroupTaskName = nullptr;
  const char* vlanTaskName = nullptr;
  switch (af_) {
    case Lanx::AddressFamily::ipv4:
      allIpMcastInternalMac_ = allIpv4McastInternalMac;
      vlanEthGroupTaskName = "VlanEthGroup4Task";
      vlanTaskName = "GmpVlan4Task";
      break;
    case Lanx::AddressFamily::ipv6:
      allIpMcastInternalMac_ = allIpv6McastInternalMac;
      vlanEthGroupTaskName = "VlanEthGroup6Task";
      vlanTaskName = "GmpVlan6Task";
      break;
    default:
      QEL_ASSERT(false, "Unsupported AF");
  }
  vlanEthGroupTask_.is(scheduler_, taskPriority, Lumo::String(vlanEthGroupTaskName));
  vlanTask_.is(scheduler_, taskPriority, Lumo::String(vlanTaskName));
  for (const auto& member : notifier()->vlanStatuses()) handleGmpVlanStatus(member.key);
  initialized_ = true;
}

void VekGmpVlanGroupMembershipSm::onAttribute(Qel::AttributeId id, const void* key) {
  if (id == Status::kVlanStatus) handleGmpVlanStatus(*static_cast<const Bridging::VlanId*>(key));
}

void VekGmpVlanGroupMembershipSm::handleGmpVlanStatus(Bridging::VlanId vlan) {
  if (auto status = notifier()->vlanStatus(vlan)) {
    HN_NestedSm_GmpVlanStatus_.smIs(status);
    addVlanToBacklog(vlan);
  } else {
    gmpVlanStatusSmDel(vlan);
  }
}

// The VLAN's groups and internal member go with it; each group is worked out anew and
// finds the VLAN gone.
void VekGmpVlanGroupMembershipSm::gmpVlanStatusSmDel(Bridging::VlanId vlan) {
  const auto sm = HN_NestedSm_GmpVlanStatus_.sm(vlan);
  if (!sm) return;
  for (const auto& group : sm->ethGroups()) deleteEthGroup(vlan, group.key);
  HN_NestedSm_GmpVlanStatus_.smDel(vlan);
  deleteGmpVlan(vlan);
}

void VekGmpVlanGroupMembershipSm::addVlanToBacklog(Bridging::VlanId vlan) {
  vlanBacklog_.is(vlan);
  vlanTask_->scheduleTask();
}

void VekGmpVlanGroupMembershipSm::addVlanEthGroupToBacklog(Bridging::VlanId vlan,
                                                           const Lanx::EthAddr& ethAddr) {
  vlanEthGroupBacklog_.is(VekGmpVlanEthGroupKey{vlan, ethAddr});
  vlanEthGroupTask_->scheduleTask();
}

bool VekGmpVlanGroupMembershipSm::getRouterIntfTunnels(const VlanStatus& status, VtepList& list) {
  return routerIntfTunnels(status, &list);
}

bool VekGmpVlanGroupMembershipSm::routerIntfTunnels(const VlanStatus& status, VtepList* list) {
  bool tunnelExists = false;
  for (const auto& member : status.routerIntfs()) {
    if (!isVtepTunnel(member.key)) continue;
    if (!list) return true;
    addVtepOf(member.key, *list);
    tunnelExists = true;
  }
  return tunnelExists;
}

bool VekGmpVlanGroupMembershipSm::getEthGroupTunnels(const VlanStatus& status,
                                                     const VekGmpVlanEthGroupKey& key,
                                                     VtepList& list) {
  const auto group = status.ethGroup(key.ethAddr);
  if (!group) return false;
  bool tunnelExists = false;
  for (const auto& member : group->memberIntfs()) {
    if (McastTunnelIntfId::tunnelType(member.key) != 1) continue;
    addVtepOf(member.key, list);
    tunnelExists = true;
  }
  return tunnelExists;
}

void VekGmpVlanGroupMembershipSm::addAllMcastInternalGroupMembers(Bridging::VlanId vlan,
                                                                  const VlanStatus& status) {
  auto list = Lumo::makePtr<VtepList>();
  if (getRouterIntfTunnels(status, *list)) {
    l2VxlanInModule_->addGmpVlanGroupMember(vlan, allIpMcastInternalMac_, list);
  }
}

void VekGmpVlanGroupMembershipSm::deleteAllMcastInternalGroupMembers(Bridging::VlanId vlan) {
  l2VxlanInModule_->deleteGmpVlanGroupMember(vlan, allIpMcastInternalMac_);
  VEK_TRACE(debug, "Deleting AF: {}, vlanId: {}", af_, vlan);
}

void VekGmpVlanGroupMembershipSm::processVlanBacklog(Bridging::VlanId vlan) {
  const auto status = notifier()->vlanStatus(vlan);
  if (!status) {
    VEK_TRACE(debug, "Vlan status not available, skipping vlan {}", vlan);
    return;
  }
  addAllMcastInternalGroupMembers(vlan, *status);
  // The machines of the groups follow the input; each group then looks at itself.
  const auto sm = HN_NestedSm_GmpVlanStatus_.sm(vlan);
  if (sm) sm->doSyncEthGroups();
  for (const auto& group : status->ethGroups()) handleEthGroup(vlan, group.key);
}

void VekGmpVlanGroupMembershipSm::handleEthGroup(Bridging::VlanId vlan,
                                                 const Lanx::EthAddr& ethAddr) {
  if (!initialized_) return;
  const auto status = notifier()->vlanStatus(vlan);
  if (!status) return;
  const auto group = status->ethGroup(ethAddr);
  if (!group) return;
  // Router ports are part of every group's list.
  if (routerIntfTunnels(*status, nullptr)) {
    addVlanEthGroupToBacklog(vlan, ethAddr);
    return;
  }
  for (const auto& member : group->memberIntfs()) {
    if (isVtepTunnel(member.key)) handleEthGroupMemberIntf(vlan, ethAddr, member.key);
  }
}

void VekGmpVlanGroupMembershipSm::handleEthGroupMemberIntf(Bridging::VlanId vlan,
                                                           const Lanx::EthAddr& ethAddr,
                                                           Lanx::IntfId intfId) {
  if (!initialized_) return;
  VEK_TRACE(debug, "AF: {}, vlanId: {}, groupMember: {}, Intf: {}", af_, vlan, ethAddr, intfId);
  if (McastTunnelIntfId::tunnelType(intfId) != 0) addVlanEthGroupToBacklog(vlan, ethAddr);
}

void VekGmpVlanGroupMembershipSm::handleGmpRouterIntf(Bridging::VlanId vlan, Lanx::IntfId intfId) {
  if (!initialized_) return;
  if (McastTunnelIntfId::tunnelType(intfId) == 0) return;
  const auto status = notifier()->vlanStatus(vlan);
  if (!status) return;
  auto list = Lumo::makePtr<VtepList>();
  const bool tunnelExists = getRouterIntfTunnels(*status, *list);
  VEK_TRACE(debug, "AF: {}, vlanId: {}, Intf: {}, tunnelExists: {}", af_, vlan, intfId,
            tunnelExists);
  if (tunnelExists) {
    l2VxlanInModule_->addGmpVlanGroupMember(vlan, allIpMcastInternalMac_, list);
  } else {
    l2VxlanInModule_->deleteGmpVlanGroupMember(vlan, allIpMcastInternalMac_);
  }
  for (const auto& group : status->ethGroups()) addVlanEthGroupToBacklog(vlan, group.key);
}

void VekGmpVlanGroupMembershipSm::deleteGmpVlan(Bridging::VlanId vlan) {
  if (!initialized_) return;
  deleteAllMcastInternalGroupMembers(vlan);
  VEK_TRACE(debug, "Deleting AF: {}, vlanId: {}", af_, vlan);
}

void VekGmpVlanGroupMembershipSm::deleteEthGroup(Bridging::VlanId vlan,
                                                 const Lanx::EthAddr& ethAddr) {
  if (!initialized_) return;
  addVlanEthGroupToBacklog(vlan, ethAddr);
}

void VekGmpVlanGroupMembershipSm::processVlanEthGroupBacklog(const VekGmpVlanEthGroupKey& key) {
  auto list = Lumo::makePtr<VtepList>();
  const auto status = notifier()->vlanStatus(key.vlan);
  if (!status || !status->ethGroup(key.ethAddr)) {
    VEK_TRACE(debug, "Deleting AF: {}, vlanId: {}, ethGroup: {}", af_, key.vlan, key.ethAddr);
    l2VxlanInModule_->deleteGmpVlanGroupMember(key.vlan, key.ethAddr);
    return;
  }
  const bool routerIntf = getRouterIntfTunnels(*status, *list);
  const bool ethGroup = getEthGroupTunnels(*status, key, *list);
  VEK_TRACE(debug, "AF: {}, vlanId: {}, group: {}, ethGroup: {}, routerIntf: {}", af_, key.vlan,
            key.ethAddr, ethGroup, routerIntf);
  // A group that the status holds is always sent, with an empty list too.
  l2VxlanInModule_->addGmpVlanGroupMember(key.vlan, key.ethAddr, list);
}

void VekGmpVlanGroupMembershipSm::handleVlanTaskRun() {
  QelLumo::DvBacklogTaskRun(*vlanTask_.get(), vlanBacklog_, vlanBookmark_, this,
                            &VekGmpVlanGroupMembershipSm::processVlanBacklog);
}

void VekGmpVlanGroupMembershipSm::handleVlanEthGroupTaskRun() {
  QelLumo::DvBacklogTaskRun(*vlanEthGroupTask_.get(), vlanEthGroupBacklog_,
                            vlanEthGroupBookmark_, this,
                            &VekGmpVlanGroupMembershipSm::processVlanEthGroupBacklog);
}

}  // namespace VekL3Mcast
