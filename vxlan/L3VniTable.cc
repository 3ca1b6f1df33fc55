#include "vxlan/L3VniTable.h"

namespace VekMVxlan {

Bridging::VlanIdOrNone L3VniTable::vrfToSBDVlan(const L3::VrfName& vrf) const {
  const Bridging::VlanId* sbd = vrfToSBDVlan_.find(vrf);
  return sbd ? Bridging::VlanIdOrNone(*sbd) : Bridging::VlanIdOrNone();
}

std::optional<L3::VrfName> L3VniTable::sbdVlanToVrf(Bridging::VlanId sbd) const {
  const L3::VrfName* vrf = sbdVlanToVrf_.find(sbd);
  return vrf ? std::optional<L3::VrfName>(*vrf) : std::nullopt;
}

void L3VniTable::vrfToSBDVlanIs(const L3::VrfName& vrf, Bridging::VlanId sbd) {
  vrfToSBDVlanDel(vrf);
  vrfToSBDVlan_.set(vrf, sbd);
  sbdVlanToVrf_.set(sbd, vrf);
}

Bridging::VlanIdOrNone L3VniTable::vrfToSBDVlanDel(const L3::VrfName& vrf) {
  const Bridging::VlanId* present = vrfToSBDVlan_.find(vrf);
  if (!present) return Bridging::VlanIdOrNone();
  const Bridging::VlanId old = *present;
  vrfToSBDVlan_.erase(vrf);
  // Another VRF may have taken the VLAN since: its entry stays.
  if (const L3::VrfName* owner = sbdVlanToVrf_.find(old); owner && *owner == vrf) {
    sbdVlanToVrf_.erase(old);
  }
  return old;
}

Bridging::VlanId L3VniTable::remoteVniIs(Vxlan::VniExtOrNone vni,
                                         const Vxlan::RemoteVniToVlanStatus* statik,
                                         const Vxlan::RemoteVniToVlanStatus* irb) {
  const Bridging::VlanId* hit = statik ? statik->vniToVlan(vni) : nullptr;
  if (!hit && irb) hit = irb->vniToVlan(vni);
  if (hit) {
    remoteVniToVlan_.set(vni, *hit);
    return *hit;
  }
  const Bridging::VlanId* old = remoteVniToVlan_.find(vni);
  const Bridging::VlanId vlan = old ? *old : Bridging::VlanId(1);
  remoteVniToVlan_.erase(vni);
  return vlan;
}

L3VniTable::RemoteVniCommands L3VniTable::remoteVniCommands(
    Vxlan::VniExtOrNone vni, Bridging::VlanId vlan, bool localVlan, bool localVrf,
    const VrfIdOf& curVrfNameToId) const {
  RemoteVniCommands commands;
  const bool remote = remoteVniToVlan_.has(vni);
  commands.vlan = vlan;
  if (!localVlan) commands.vniVlan = remote ? Action::add : Action::del;
  if (!localVrf) {
    commands.vniVrf = Action::del;
    const std::optional<L3::VrfName> vrf = sbdVlanToVrf(vlan);
    const Vrf::VrfIdMap::VrfId vrfId = vrf ? curVrfNameToId(*vrf) : Vrf::VrfIdMap::VrfId();
    if (remote && !vrfId.isNone()) {
      commands.vniVrf = Action::add;
      commands.vrfId = vrfId;
    }
  }
  return commands;
}

}  // namespace VekMVxlan
