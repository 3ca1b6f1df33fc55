#include "vxlan/L3MVxlanInSm.h"

#include <vector>

#include "runtime/state/VlanIntfId.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleCounters.h"
#include "vxlan/AddrBytes.h"
#include "vxlan/ModuleCounterIds.h"
#include "vxlan/ReactorGuard.h"

namespace VekMVxlan {

Lumo::String L3MVxlanInSm::moduleName(Lanx::AddressFamily af) {
  return Lumo::String(af == Lanx::AddressFamily::ipv4 ? "L3MVxlanIn" : "L3MVxlanIn6");
}

L3MVxlanInSm::L3MVxlanInSm(Lanx::AddressFamily af, Lumo::Ptr<NameStatus const> vrfNameStatus,
                           Lumo::Ptr<Vxlan::VtiStatus const> vtiStatus,
                           Lumo::Ptr<TunnelStatus const> tunnelFwdingStatus,
                           Lumo::Ptr<Vrfs const> mcastIntfRoot,
                           Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                           Lumo::Ptr<Vek::VekCommonSmData> vekcsd)
    : af_(af),
      vrfNameStatus_(std::move(vrfNameStatus)),
      vtiStatus_(std::move(vtiStatus)),
      tunnelFwdingStatus_(std::move(tunnelFwdingStatus)),
      mcastIntfRoot_(std::move(mcastIntfRoot)),
      configStatusPair_(std::move(configStatusPair)),
      vekcsd_(std::move(vekcsd)) {
  QEL_ASSERT(vrfNameStatus_ && vtiStatus_ && tunnelFwdingStatus_ && mcastIntfRoot_,
             "L3MVxlanInSm needs all its inputs");
  handleInitialized();
  // Only now are the VRF ids, SBD VLANs and tunnel mappings all known: the group table is
  // filled from here, not from handleInitialized.
  guarded("scan", [&] {
    vrfIdMapIs(vrfNameStatus_->nameToIdMap());
    for (const auto& entry : vtiStatus_->vrfToSbdVlanMaps()) vrfToSBDVlanIs(entry.key, entry.value);
    for (const auto& entry : mcastIntfRoot_->vrfSms()) mcastIntfVrfSmIs(entry.value);
    for (const auto& entry : tunnelFwdingStatus_->vlanStatuses()) vlanForwardStatusIs(entry.value);
  });
  vtiStatusReactor_.publisherIs(const_cast<Vxlan::VtiStatus*>(vtiStatus_.get()));
  vtiStatusReactor_.isRegisteredIs(true);
  vrfNameStatusReactor_.publisherIs(const_cast<NameStatus*>(vrfNameStatus_.get()));
  vrfNameStatusReactor_.isRegisteredIs(true);
  nameToIdMapReactor_.isRegisteredIs(true);
  tunnelFwdingStatusReactor_.publisherIs(const_cast<TunnelStatus*>(tunnelFwdingStatus_.get()));
  tunnelFwdingStatusReactor_.isRegisteredIs(true);
  mcastIntfRootReactor_.publisherIs(const_cast<Vrfs*>(mcastIntfRoot_.get()));
  mcastIntfRootReactor_.isRegisteredIs(true);
}

L3MVxlanInSm::~L3MVxlanInSm() { cleanup(); }

void L3MVxlanInSm::handleInitialized() {
  if (!module()) {
    module_.is(*this, moduleName(af_), moduleInGates, moduleOutGates, configStatusPair_);
    addCounters();
  }
  handleSrcIpIntf();
  handleVtepAddr();
  handleVtepAddr6();
  handleSrcPortRange();
  handleDestPort();
  handleVrfToVniMap();
  handleTtl();
  initialized_.is(*this, true);
}

void L3MVxlanInSm::cleanup() {
  initialized_.is(*this, false);
  if (module()) {
    Vek::freeModuleCounters(module(), vekcsd_);
    module_.del(*this);
  }
}

void L3MVxlanInSm::addCounters() {
  module()->setCounterIds(allocateModuleCounters(module().get(), vekcsd_, L3MVxlanIn::counterNames));
}

// ---- The VTI ----

void L3MVxlanInSm::vtiStatusDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber, short id,
                                     const void* key, const void*) noexcept {
  auto* self = static_cast<Qel::SmSubscriber<L3MVxlanInSm>*>(subscriber);
  if (self->machineIsZombie()) return;
  guarded("VTI status", [&] { self->owner()->handleVtiStatus(id, key); });
}

void L3MVxlanInSm::handleVtiStatus(Qel::AttributeId id, const void* key) {
  using Vti = Vxlan::VtiStatus;
  switch (id) {
    case Vti::kVlanToVniMap:
      handleVlanToVniMap(*static_cast<const Bridging::VlanId*>(key));
      break;
    case Vti::kVrfToVniMap:
      handleVrfToVniMap(*static_cast<const L3::VrfName*>(key));
      break;
    case Vti::kVrfToSbdVlanMap:
      handleVrfToSbdVlanMap(*static_cast<const L3::VrfName*>(key));
      break;
    case Vti::kTtl:
      handleTtl();
      break;
    case Vti::kUdpPort:
      handleDestPort();
      break;
    case Vti::kSrcPort:
      handleSrcPortRange();
      break;
    case Vti::kSrcIpIntf:
      handleSrcIpIntf();
      break;
    case Vti::kVtepAddr:
      handleVtepAddr();
      break;
    case Vti::kVtepAddr6:
      handleVtepAddr6();
      break;
    default:
      break;
  }
}

// The tunnel values go out as they are, zero included: the module decides what a zero
// port or TTL means.
void L3MVxlanInSm::handleSrcIpIntf() {
  VEK_TRACE(debug, "{}: srcIpIntf: {}", moduleName(af_), vtiStatus_->srcIpIntf());
  module()->setVtepIntfId(vtiStatus_->srcIpIntf());
}

void L3MVxlanInSm::handleVtepAddr() {
  VEK_TRACE(debug, "{}: vtepAddr: {}", moduleName(af_), vtiStatus_->vtepAddr());
  module()->setVtepAddr(vtiStatus_->vtepAddr());
}

void L3MVxlanInSm::handleVtepAddr6() {
  VEK_TRACE(debug, "{}: vtepAddr6: {}", moduleName(af_), vtiStatus_->vtepAddr6());
  module()->setVtepAddr6(vtiStatus_->vtepAddr6());
}

void L3MVxlanInSm::handleDestPort() {
  VEK_TRACE(debug, "{} -> {}", moduleName(af_), vtiStatus_->udpPort());
  module()->setVxlanDestPort(vtiStatus_->udpPort());
}

void L3MVxlanInSm::handleSrcPortRange() {
  VEK_TRACE(debug, "{} => {}", moduleName(af_), vtiStatus_->srcPort());
  module()->setVxlanSrcPort(vtiStatus_->srcPort());
}

void L3MVxlanInSm::handleTtl() {
  VEK_TRACE(debug, "{} => {}", moduleName(af_), vtiStatus_->ttl());
  module()->setVxlanTTL(vtiStatus_->ttl());
}

// ---- Source interfaces to VNI ----

void L3MVxlanInSm::updateSrcIntfToVni(const L3::VrfName& vrf, Lanx::IntfId intf) {
  const auto root = mcastIntfRoot_->vrfSm(vrf);
  if (!root || !root->multicastIntfHas(intf)) {
    module()->deleteSrcIntfIdToVni(intf);
    return;
  }
  // A VLAN with a VNI of its own is bridged into the tunnel, not routed into the VRF's.
  if (Lanx::VlanIntfId::isVlanIntfId(intf) &&
      vtiStatus_->vlanToVniMap(Bridging::VlanId(Lanx::VlanIntfId::vlanId(intf)))) {
    module()->deleteSrcIntfIdToVni(intf);
    return;
  }
  const Vxlan::VniExtOrNone* vni = vtiStatus_->vrfToVniMap(vrf);
  if (!vni || vni->isNone()) {
    module()->deleteSrcIntfIdToVni(intf);
  } else {
    module()->addSrcIntfIdToVni(intf, *vni);
  }
}

void L3MVxlanInSm::handleMcastIntf(const L3::VrfName& vrf, Lanx::IntfId intf) {
  guarded("multicast interface", [&] { updateSrcIntfToVni(vrf, intf); });
}

void L3MVxlanInSm::handleVrfToVniMap(const L3::VrfName& vrf) {
  if (auto sm = mcastIntfVrfSm_.sm(vrf)) sm->handleMcastVrf();
}

void L3MVxlanInSm::handleVrfToVniMap() {
  std::vector<L3::VrfName> vrfs;
  for (const auto& entry : vtiStatus_->vrfToVniMaps()) vrfs.push_back(entry.key);
  for (const auto& vrf : vrfs) handleVrfToVniMap(vrf);
}

void L3MVxlanInSm::handleVlanToVniMap(Bridging::VlanId vlan) {
  const Lanx::IntfId intf = Lanx::VlanIntfId::vlanIdToIntfId(vlan);
  for (const auto& entry : mcastIntfVrfSm_.members()) {
    if (entry.value->multicastIntfHas(intf)) {
      updateSrcIntfToVni(entry.key, intf);
      return;
    }
  }
}

// ---- Overlay groups by VRF id ----

Bridging::VlanIdOrNone L3MVxlanInSm::vtiSbdVlan(const L3::VrfName& vrf) const {
  const Bridging::VlanIdOrNone* sbd = vtiStatus_->vrfToSbdVlanMap(vrf);
  return sbd ? *sbd : Bridging::VlanIdOrNone();
}

Lanx::IpGenAddr L3MVxlanInSm::underlayGroup(Bridging::VlanId sbd,
                                            const Routing::Multicast::OverlayRoute& route) const {
  const auto status = tunnelFwdingStatus_->vlanStatus(sbd);
  const Routing::Multicast::IpTunnelMapping* mapping = status ? status->mapping(route) : nullptr;
  if (!mapping) return Lanx::IpGenAddr();
  // A mapping without an underlay group sends nowhere; the module is not told of it.
  if (isAddrZero(mapping->underlayRoute().group())) {
    VEK_TRACE(warn, "{}: mapping of {} in VLAN {} has no underlay group", moduleName(af_), route,
              sbd);
    return Lanx::IpGenAddr();
  }
  return mapping->underlayRoute().group();
}

void L3MVxlanInSm::updateVrfOverlayToUnderlayGroup(const L3::VrfName& vrf, VrfId vrfId,
                                                   const Routing::Multicast::OverlayRoute& route) {
  if (vrfId.isNone()) return;
  const Bridging::VlanIdOrNone sbd = vtiSbdVlan(vrf);
  if (sbd.isNone()) {
    module()->deleteVrfAllGroups(vrfId);
    return;
  }
  // Only the group reaches the module: routes that differ in their source share an entry,
  // and the last one worked wins.
  const Lanx::IpGenAddr underlay = underlayGroup(sbd.vlanId(), route);
  if (!underlay.isNone()) {
    module()->addVrfOverlayToUnderlayGroup(vrfId, route.group(), underlay);
  } else {
    module()->deleteVrfOverlayToUnderlayGroup(vrfId, route.group());
  }
}

void L3MVxlanInSm::updateVrfAllGroups(const L3::VrfName& vrf, VrfId vrfId) {
  if (vrfId.isNone()) return;
  const Bridging::VlanIdOrNone sbd = vtiSbdVlan(vrf);
  const auto status = sbd.isNone() ? nullptr : tunnelFwdingStatus_->vlanStatus(sbd.vlanId());
  if (!status) {
    module()->deleteVrfAllGroups(vrfId);
    return;
  }
  std::vector<Routing::Multicast::OverlayRoute> routes;
  for (const auto& member : status->mappings()) routes.push_back(member.key);
  for (const auto& route : routes) updateVrfOverlayToUnderlayGroup(vrf, vrfId, route);
}

void L3MVxlanInSm::handleTunnelMapping(Bridging::VlanId vlan,
                                       const Routing::Multicast::OverlayRoute& route) {
  guarded("tunnel mapping", [&] {
    const L3::VrfName vrf = sbdVlanToVrf(vlan);
    updateVrfOverlayToUnderlayGroup(vrf, lastVrfId(vrf), route);
  });
}

void L3MVxlanInSm::handleVlanStatus(Bridging::VlanId vlan) {
  guarded("tunnel VLAN status", [&] {
    if (auto status = tunnelFwdingStatus_->vlanStatus(vlan)) {
      vlanForwardStatusIs(status);
    } else {
      vlanForwardStatusDel(vlan);
    }
  });
}

void L3MVxlanInSm::vlanForwardStatusIs(
    Lumo::Ptr<Routing::Multicast::IpTunnelVlanForwardingStatus const> status) {
  vlanForwardStatus_.smIs(std::move(status));
}

void L3MVxlanInSm::vlanForwardStatusDel(Bridging::VlanId vlan) {
  if (!vlanForwardStatus_.has(vlan)) return;
  vlanForwardStatus_.smDel(vlan);
  // The VLAN's mappings went with it: the VRF it serves keeps none.
  const L3::VrfName vrf = sbdVlanToVrf(vlan);
  updateVrfAllGroups(vrf, lastVrfId(vrf));
}

// ---- VRF ids ----

Vrf::VrfIdMap::VrfId L3MVxlanInSm::vrfNameToId(const Lumo::String& name) const {
  const VrfId* id = vrfNameToId_.find(name);
  return id ? *id : VrfId();
}

void L3MVxlanInSm::vrfNameToIdIs(const Lumo::String& name, VrfId id) {
  const VrfId old = vrfNameToId(name);
  if (old == id) return;
  vrfNameToId_.is(*this, name, id);
  handleVrfId(name, id, old);
}

void L3MVxlanInSm::vrfNameToIdDel(const Lumo::String& name) {
  const VrfId old = vrfNameToId(name);
  if (old.isNone()) return;
  vrfNameToId_.del(*this, name);
  handleVrfId(name, VrfId(), old);
}

void L3MVxlanInSm::handleVrfId(const Lumo::String& name, VrfId id, VrfId oldId) {
  VEK_TRACE(debug, "{}: vrf: {}, vrfId: {}, oldVrfId: {}", moduleName(af_), name, id, oldId);
  if (!oldId.isNone()) module()->deleteVrfAllGroups(oldId);
  if (!id.isNone()) updateVrfAllGroups(L3::VrfName(name), id);
}

void L3MVxlanInSm::vrfIdMapIs(Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const> map) {
  nameToIdMap_ = std::move(map);
  nameToIdMapReactor_.publisherIs(const_cast<Vrf::VrfIdMap::NameToIdMap*>(nameToIdMap_.get()));
  std::vector<Lumo::String> names;
  for (const auto& entry : vrfNameToId_.members()) names.push_back(entry.key);
  if (nameToIdMap_) {
    for (const auto& entry : nameToIdMap_->vrfIds()) names.push_back(entry.key);
  }
  for (const auto& name : names) handleVrfName(name);
}

void L3MVxlanInSm::handleNameToIdMap() {
  guarded("VRF name map", [&] { vrfIdMapIs(vrfNameStatus_->nameToIdMap()); });
}

void L3MVxlanInSm::handleVrfName(const Lumo::String& name) {
  guarded("VRF name", [&] {
    const VrfId id = nameToIdMap_ ? nameToIdMap_->vrfId(name) : VrfId();
    if (!id.isNone()) {
      vrfNameToIdIs(name, id);
    } else {
      vrfNameToIdDel(name);
    }
  });
}

// ---- SBD VLANs ----

Bridging::VlanIdOrNone L3MVxlanInSm::vrfToSBDVlan(const L3::VrfName& vrf) const {
  const Bridging::VlanIdOrNone* sbd = vrfToSBDVlan_.find(vrf);
  return sbd ? *sbd : Bridging::VlanIdOrNone();
}

L3::VrfName L3MVxlanInSm::sbdVlanToVrf(Bridging::VlanId sbd) const {
  const L3::VrfName* vrf = sbdVlanToVrf_.find(sbd);
  return vrf ? *vrf : L3::VrfName();
}

void L3MVxlanInSm::handleVrfToSbdVlanMap(const L3::VrfName& vrf) {
  if (const Bridging::VlanIdOrNone* sbd = vtiStatus_->vrfToSbdVlanMap(vrf)) {
    vrfToSBDVlanIs(vrf, *sbd);
  } else {
    vrfToSBDVlanDel(vrf);
  }
}

void L3MVxlanInSm::vrfToSBDVlanIs(const L3::VrfName& vrf, Bridging::VlanIdOrNone sbd) {
  const Bridging::VlanIdOrNone old = vrfToSBDVlan(vrf);
  if (vrfToSBDVlan_.has(vrf) && old == sbd) return;
  vrfToSBDVlan_.is(*this, vrf, sbd);
  handleVrfToSBDVlan(vrf, sbd, old);
}

void L3MVxlanInSm::vrfToSBDVlanDel(const L3::VrfName& vrf) {
  if (!vrfToSBDVlan_.has(vrf)) return;
  const Bridging::VlanIdOrNone old = vrfToSBDVlan(vrf);
  vrfToSBDVlan_.del(*this, vrf);
  handleVrfToSBDVlan(vrf, Bridging::VlanIdOrNone(), old);
}

void L3MVxlanInSm::handleVrfToSBDVlan(const L3::VrfName& vrf, Bridging::VlanIdOrNone sbd,
                                      Bridging::VlanIdOrNone oldSbd) {
  VEK_TRACE(debug, "{}: vrf: {}, sbdVlan: {}, oldSbdVlan: {}", moduleName(af_), vrf, sbd, oldSbd);
  if (!oldSbd.isNone() && sbdVlanToVrf(oldSbd.vlanId()) == vrf) {
    sbdVlanToVrf_.del(*this, oldSbd.vlanId());
  }
  if (!sbd.isNone()) sbdVlanToVrf_.is(*this, sbd.vlanId(), vrf);
  const VrfId vrfId = lastVrfId(vrf);
  // Groups of the old SBD VLAN that the new one lacks would stay behind: the table is
  // keyed by VRF id alone, so the VRF starts afresh.
  if (!oldSbd.isNone() && !sbd.isNone() && !vrfId.isNone()) module()->deleteVrfAllGroups(vrfId);
  updateVrfAllGroups(vrf, vrfId);
}

// ---- VRFs' multicast interfaces ----

void L3MVxlanInSm::handleMcastIntfRoot(const L3::VrfName& vrf) {
  guarded("multicast interface root", [&] {
    if (auto root = mcastIntfRoot_->vrfSm(vrf)) {
      mcastIntfVrfSmIs(root);
    } else {
      mcastIntfVrfSmDel(vrf);
    }
  });
}

void L3MVxlanInSm::mcastIntfVrfSmIs(
    Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSm const> root) {
  mcastIntfVrfSm_.smIs(std::move(root));
}

void L3MVxlanInSm::mcastIntfVrfSmDel(const L3::VrfName& vrf) { mcastIntfVrfSm_.smDel(vrf); }

}  // namespace VekMVxlan
