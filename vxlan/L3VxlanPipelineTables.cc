#include "runtime/state/VlanIntfId.h"
#include "vxlan/L3VxlanPipeline.h"

// What the decapsulation module is told of VNIs and SBD VLANs, and which FIB interfaces are
// SBD VLANs.
namespace VekMVxlan {

void L3VxlanPipeline::handleVtiStatus(Lanx::IntfId intf) {
  guarded("VTI", [&] {
    if (auto vti = inputs_.vtiStatusDir->vtiStatus(intf)) {
      vtiStatus_.smIs(vti);
      return;
    }
    vtiStatus_.smDel(intf);
    // The VRFs of a VTI that went lose their SBD VLANs with it, whether they run or not, and
    // the pipeline goes with the last: a VTI that comes back is another entity, which a new
    // pipeline follows.
    std::vector<L3::VrfName> vrfs;
    for (const auto& entry : table_.vrfToSBDVlans()) vrfs.push_back(entry.key);
    for (const auto& vrf : vrfs) handleVrfToSBDVlan(vrf);
  });
}

void L3VxlanPipeline::handleVlanToVniMap(NestedSm_L3VtiStatus& vti, Bridging::VlanId vlan) {
  const Vxlan::VniExtOrNone old = vti.vlanVniIs(vlan);
  if (!l3VxlanOutModule_) return;
  const Vxlan::VniExtOrNone* vni = vti.notifier()->vlanToVniMap(vlan);
  if (vni && !vni->isNone()) {
    if (!old.isNone() && old != *vni) handleRemoteVni(old);
    l3VxlanOutModule_->addVniVlan(*vni, vlan);
    return;
  }
  if (old.isNone()) return;
  l3VxlanOutModule_->deleteVniVlan(old);
  // A remote mapping of the VNI takes the place of the local one.
  if (table_.remoteVniToVlanHas(old)) handleRemoteVni(old);
}

void L3VxlanPipeline::handleVrfToVniMap(NestedSm_L3VtiStatus& vti, const L3::VrfName& vrf) {
  const Vxlan::VniExtOrNone old = vti.vrfVniIs(vrf);
  if (!l3VxlanOutModule_) return;
  const Vxlan::VniExtOrNone* vni = vti.notifier()->vrfToVniMap(vrf);
  const VrfId vrfId = curVrfNameToId(vrf);
  if (vni && !vni->isNone() && !vrfId.isNone()) {
    if (!old.isNone() && old != *vni) l3VxlanOutModule_->deleteVniVrf(old);
    l3VxlanOutModule_->addVniVrf(*vni, vrfId);
    return;
  }
  const Vxlan::VniExtOrNone gone = vni ? *vni : old;
  if (gone.isNone()) return;
  l3VxlanOutModule_->deleteVniVrf(gone);
  if (table_.remoteVniToVlanHas(gone)) handleRemoteVni(gone);
}

void L3VxlanPipeline::doSbdVlanIntfs(const Lumo::Ptr<VekL3Mcast::MfibAf>& mfib) {
  // Every FIB knows every SBD VLAN: a tenant's FIB sends its own into the tunnel, and the
  // default VRF's FIB hands the underlay traffic of any of them to the decapsulation module.
  for (const auto& vti : inputs_.vtiStatusDir->vtiStatuses()) {
    for (const auto& entry : vti.value->vrfToSbdVlanMaps()) {
      if (!entry.value.isNone()) doSbdVlanIntf(*mfib, entry.value.vlanId(), true);
    }
  }
}

void L3VxlanPipeline::doSbdVlanIntf(VekL3Mcast::MfibAf& mfib, Bridging::VlanId sbd,
                                    bool present) {
  const Lanx::IntfId intf = Lanx::VlanIntfId::vlanIdToIntfId(sbd);
  if (mfib.sbdVlanIntfIdHas(intf) == present) return;
  if (present) {
    mfib.sbdVlanIntfIdIs(intf);
  } else {
    mfib.sbdVlanIntfIdDel(intf);
  }
  // Routes already sent with the interface carry the gate it had before.
  if (reviewRoutes_) reviewRoutes_(mfib.vrfName(), mfib.af());
}

void L3VxlanPipeline::handleVrfToSBDVlan(const L3::VrfName& vrf) {
  auto vti = inputs_.vtiStatusDir->vtiStatus(Lanx::IntfId(vtiName));
  const Bridging::VlanIdOrNone* mapped = vti ? vti->vrfToSbdVlanMap(vrf) : nullptr;
  const Bridging::VlanIdOrNone sbd = mapped ? *mapped : Bridging::VlanIdOrNone();
  const Bridging::VlanIdOrNone old = table_.vrfToSBDVlanDel(vrf);
  if (!old.isNone() && old != sbd) {
    for (const auto& mfib : allFibs()) doSbdVlanIntf(*mfib, old.vlanId(), false);
  }
  if (!sbd.isNone()) {
    table_.vrfToSBDVlanIs(vrf, sbd.vlanId());
    for (const auto& mfib : allFibs()) doSbdVlanIntf(*mfib, sbd.vlanId(), true);
    if (!l3VxlanInModule() || !l3VxlanIn6Module()) doCreateL3MVxlanPipeline();
  }
  if (l3VxlanOutModule_) {
    const VrfId newId = curVrfNameToId(vrf);
    const VrfId oldId = lastVrfId(vrf);
    if (!sbd.isNone() && !newId.isNone()) {
      l3VxlanOutModule_->addVrfSBDVlan(newId, sbd);
      if (!oldId.isNone() && oldId != newId) l3VxlanOutModule_->deleteVrfSBDVlan(oldId);
    } else if (!oldId.isNone()) {
      l3VxlanOutModule_->deleteVrfSBDVlan(oldId);
    }
  }
  if (!sbd.isNone()) updateRemoteVnisForSbdVlan(sbd.vlanId());
  if (!old.isNone() && old != sbd) updateRemoteVnisForSbdVlan(old.vlanId());
  const bool anySbd = vti && !vti->vrfToSbdVlanMaps().empty();
  if (!anySbd && exists()) doDeleteL3MVxlanPipeline();
}

void L3VxlanPipeline::handleUdpPort(NestedSm_L3VtiStatus& vti) {
  // Port 0 would have the module take any UDP packet for a tunnel one: it is not sent.
  const std::uint16_t port = vti.notifier()->udpPort();
  if (l3VxlanOutModule_ && port != 0) l3VxlanOutModule_->setUdpPort(port);
}

void L3VxlanPipeline::handleRemoteVni(Vxlan::VniExtOrNone vni) {
  guarded("remote VNI", [&] {
    const Bridging::VlanId vlan = table_.remoteVniIs(
        vni, inputs_.remoteVniToVlanStaticStatus.get(), inputs_.remoteVniToVlanIrbStatus.get());
    if (!l3VxlanOutModule_) return;
    bool localVlan = false;
    bool localVrf = false;
    for (const auto& entry : vtiStatus_.members()) {
      localVlan = localVlan || entry.value->vniToVlanHas(vni);
      localVrf = localVrf || entry.value->vniToVrfHas(vni);
    }
    const auto commands = table_.remoteVniCommands(
        vni, vlan, localVlan, localVrf, [this](const L3::VrfName& vrf) { return curVrfNameToId(vrf); });
    using Action = L3VniTable::Action;
    if (commands.vniVlan == Action::add) l3VxlanOutModule_->addVniVlan(vni, commands.vlan);
    if (commands.vniVlan == Action::del) l3VxlanOutModule_->deleteVniVlan(vni);
    if (commands.vniVrf == Action::add) l3VxlanOutModule_->addVniVrf(vni, commands.vrfId);
    if (commands.vniVrf == Action::del) l3VxlanOutModule_->deleteVniVrf(vni);
  });
}

void L3VxlanPipeline::remoteVniScan(const Vxlan::RemoteVniToVlanStatus* status,
                                    Bridging::VlanId sbd,
                                    std::vector<Vxlan::VniExtOrNone>& vnis) const {
  if (!status) return;
  for (const auto& entry : status->vniToVlans()) {
    if (entry.value == sbd) vnis.push_back(entry.key);
  }
}

void L3VxlanPipeline::updateRemoteVnisForSbdVlan(Bridging::VlanId sbd) {
  VEK_TRACE(debug, "SBD Vlan: {}", sbd);
  std::vector<Vxlan::VniExtOrNone> vnis;
  remoteVniScan(inputs_.remoteVniToVlanIrbStatus.get(), sbd, vnis);
  remoteVniScan(inputs_.remoteVniToVlanStaticStatus.get(), sbd, vnis);
  for (Vxlan::VniExtOrNone vni : vnis) handleRemoteVni(vni);
}

}  // namespace VekMVxlan
