#include "pipeline/PortModules.h"
#include "proto/bess.pb.h"
#include "runtime/lumo/Exception.h"
#include "runtime/state/VlanIntfId.h"
#include "runtime/trace/Trace.h"
#include "vxlan/VxlanPipeline.h"

// The VXLAN pipeline's handlers of the tables that reach its modules: decap routes, SBD
// VLANs, tunnel mappings and the switching capability, and the proxy VLANs with their
// receive filters.

namespace VekMVxlan {

using Lanx::AddressFamily;
using Routing::Multicast::OverlayRoute;
using Routing::Multicast::OverlayVlanGroup;
using Routing::Multicast::UnderlayRoute;

Vxlan::VniExtOrNone VxlanPipeline::vlanToVniMap(Bridging::VlanId vlan) const {
  const Vxlan::VniExtOrNone* vni = vlanToVniMap_.find(vlan);
  return vni ? *vni : Vxlan::VniExtOrNone();
}

void VxlanPipeline::handleDecapRoute(AddressFamily af, const UnderlayRoute& route) {
  const Lumo::Ptr<L2MVxlanOut>& out = l2VxlanOutModule();
  if (!out) return;
  const auto& config = tunDecapConfig(af);
  if (config && config->routeHas(route)) {
    VEK_TRACE(info, "Add af: {}, decap route: {}", af, route);
    out->addDecapRoute(route);
  } else {
    VEK_TRACE(info, "Delete af: {}, decap route: {}", af, route);
    out->deleteDecapRoute(route);
  }
}

void VxlanPipeline::handleVlanToSbdVlan(AddressFamily af, Bridging::VlanId vlan) {
  const Lumo::Ptr<L2MVxlanIn>& in = l2VxlanInModule();
  if (!in) return;
  const auto& status = mcastIrbStatus(af);
  if (const Bridging::VlanId* sbd = status ? status->sbdVlan(vlan) : nullptr) {
    in->addVlanToSBDVlan(vlan, *sbd);
  } else {
    in->delVlanToSBDVlan(vlan);
  }
}

void VxlanPipeline::handleTunnelMapping(AddressFamily af, Bridging::VlanId vlan,
                                        const OverlayRoute& overlayRoute) {
  const OverlayVlanGroup group(vlan, overlayRoute.group());
  const auto& status = tunnelFwdingStatus(af);
  const auto vlanStatus = status ? status->vlanStatus(vlan) : nullptr;
  const Routing::Multicast::IpTunnelMapping* mapping =
      vlanStatus ? vlanStatus->mapping(overlayRoute) : nullptr;
  if (mapping) {
    VEK_TRACE(info, " Add af: {}, vlan: {}, overlayRoute: {}", af, vlan, overlayRoute);
    Lumo::Ptr<VlanToOverlayGroup> groups = vlanToOverlayGroup_.get(vlan);
    if (!groups) {
      groups = Lumo::makePtr<VlanToOverlayGroup>(vlan);
      vlanToOverlayGroup_.is(*this, vlan, groups);
    }
    groups->overlayGroupIs(group.group());
    if (l2VxlanInModule()) l2VxlanInModule()->addOverlayVlanGroup(group, mapping->underlayRoute());
    return;
  }
  VEK_TRACE(info, " Delete af: {}, vlan: {}, overlayRoute: {}", af, vlan, overlayRoute);
  doDeleteOverlayGroup(group);
}

void VxlanPipeline::doDeleteOverlayGroup(const OverlayVlanGroup& group) {
  if (Lumo::Ptr<VlanToOverlayGroup> groups = vlanToOverlayGroup_.get(group.vlanId())) {
    groups->overlayGroupDel(group.group());
    if (groups->overlayGroups() == 0) vlanToOverlayGroup_.del(*this, group.vlanId());
  }
  if (l2VxlanInModule()) l2VxlanInModule()->deleteOverlayVlanGroup(group);
}

// A VLAN's tunnel status that goes takes its mappings along unheard, one by one: the
// overlay groups of the family sent for the VLAN go with it.
void VxlanPipeline::doDeleteVlanOverlayGroups(AddressFamily af, Bridging::VlanId vlan) {
  const Lumo::Ptr<VlanToOverlayGroup> groups = vlanToOverlayGroup_.get(vlan);
  if (!groups) return;
  std::vector<Lanx::IpGenAddr> gone;
  for (const auto& entry : groups->overlayGroupSet()) {
    if (entry.key.family() == af) gone.push_back(entry.key);
  }
  for (const Lanx::IpGenAddr& group : gone) doDeleteOverlayGroup(OverlayVlanGroup(vlan, group));
}

void VxlanPipeline::handleVxlanSwitchPktToMcastTunnelInSw() {
  if (!owner_->initialized() || !l2VxlanInModule()) return;
  const bool switching =
      inputs_.hwCapabilities && inputs_.hwCapabilities->vxlanSwitchPktToMcastTunnelInSw();
  l2VxlanInModule()->setVxlanSwitchPktToMcastTunnelInSw(switching);
}

// ---- Proxy VLANs ----

void VxlanPipeline::igmpProxyStatusDispatch(const Bridging::VlanId& vlan) {
  if (owner_->mvxlanInitialized()) handleIgmpProxyVlan(vlan);
}

void VxlanPipeline::mldProxyStatusDispatch(const Bridging::VlanId& vlan) {
  if (owner_->mvxlanInitialized()) handleMldProxyVlan(vlan);
}

// Each table speaks for itself: a VLAN that leaves one table goes even if the other still
// lists it, until the other table's next event for it.
void VxlanPipeline::handleIgmpProxyVlan(Bridging::VlanId vlan) {
  if (igmpProxyStatus() && igmpProxyStatus()->vlanHas(vlan)) {
    addVlan(vlan);
  } else {
    deleteVlan(vlan);
  }
}

void VxlanPipeline::handleMldProxyVlan(Bridging::VlanId vlan) {
  if (mldProxyStatus() && mldProxyStatus()->vlanHas(vlan)) {
    addVlan(vlan);
  } else {
    deleteVlan(vlan);
  }
}

void VxlanPipeline::addVlan(Bridging::VlanId vlan) {
  VEK_TRACE(info, ", vlan: {}", vlan);
  const auto mfib = defaultMfib(AddressFamily::ipv4);
  const auto mfib6 = defaultMfib(AddressFamily::ipv6);
  const Lanx::IntfId vlanIntf = Lanx::VlanIntfId::vlanIdToIntfId(vlan);
  if (!l2VxlanInModule() && owner_->kernelDeviceIsUp("fabric")) doCreateL2MVxlanPipeline();
  if (const Lumo::Ptr<L2MVxlanOut>& out = l2VxlanOutModule()) {
    if (mfib) {
      VEK_TRACE(info, " defMfibModule: {}", mfib->name());
      doSetVlanGate(*mfib, vlanIntf, mfib->findGateByName(out->name(), false));
    }
    if (mfib6) {
      VEK_TRACE(info, " defMfib6Module: {}", mfib6->name());
      doSetVlanGate(*mfib6, vlanIntf, mfib6->findGateByName(out->name(), false));
    }
  }
  addVlanFilterGrpc(vlan);
}

void VxlanPipeline::deleteVlan(Bridging::VlanId vlan) {
  VEK_TRACE(info, ", vlan: {}", vlan);
  const Lanx::IntfId vlanIntf = Lanx::VlanIntfId::vlanIdToIntfId(vlan);
  if (l2VxlanInModule()) deleteVlanFilterGrpc(vlan);
  for (AddressFamily af : Lanx::bothFamilies) {
    if (const auto mfib = defaultMfib(af)) doSetVlanGate(*mfib, vlanIntf, Vek::GateId());
  }
  const bool noProxy = (!igmpProxyStatus() || igmpProxyStatus()->empty()) &&
                       (!mldProxyStatus() || mldProxyStatus()->empty());
  if (l2VxlanInModule() && noProxy) doDeleteL2MVxlanPipeline();
}

void VxlanPipeline::doSetVlanGate(VekL3Mcast::MfibAf& mfib, Lanx::IntfId vlanIntf,
                                  Vek::GateId gate) {
  if (mfib.intfIdToOutGate(vlanIntf) == gate) return;
  if (gate.isValid()) {
    mfib.intfIdToOutGateIs(vlanIntf, gate);
  } else {
    mfib.intfIdToOutGateDel(vlanIntf);
  }
  // A route names its interfaces' gates only when it is sent: the routes that stand take
  // the VLAN's new gate by being sent again.
  owner_->reviewRoutes(mfib.vrfName(), mfib.af());
}

void VxlanPipeline::sendVlanFilter(std::string_view cmd, const std::vector<std::uint32_t>& vlans) {
  const auto& set = mcastL2VxlanRxSet();
  if (!set) return;
  for (VekL3Mcast::McastRxType type : VekL3Mcast::allMcastRxTypes) {
    const auto rx = set->mcastL2VxlanRx(type);
    if (!rx) continue;
    auto* arg = new bess::pb::PCAPPortVlanArg;
    for (std::uint32_t vlan : vlans) arg->add_vlanids(vlan);
    VekL3Mcast::sendPortCmd(cmdConfigGroup_, rx->portName(), cmd, arg);
  }
}

void VxlanPipeline::addVlanFilterGrpc(Bridging::VlanId vlan) {
  sendVlanFilter("addVlan", {vlan.value()});
}

void VxlanPipeline::deleteVlanFilterGrpc(Bridging::VlanId vlan) {
  sendVlanFilter("removeVlan", {vlan.value()});
}

void VxlanPipeline::addAllVlansFilterGrpc() {
  std::vector<std::uint32_t> vlans;
  for (const auto* table : {igmpProxyStatus().get(), mldProxyStatus().get()}) {
    if (!table) continue;
    for (const auto& vlan : table->vlans()) vlans.push_back(vlan.key.value());
  }
  sendVlanFilter("addVlan", vlans);
}

void VxlanPipeline::updateAllVlanGroups() {
  for (AddressFamily af : Lanx::bothFamilies) {
    const auto& status = tunnelFwdingStatus(af);
    if (!status) continue;
    for (const auto& vlan : status->vlanStatuses()) {
      for (const auto& mapping : vlan.value->mappings()) {
        handleTunnelMapping(af, vlan.key, mapping.key);
      }
    }
  }
  // Adding a VLAN may build the pipeline, whose creation comes back here; the nested run
  // finds the pipeline standing and ends there.
  if (igmpProxyStatus()) {
    for (const auto& vlan : igmpProxyStatus()->vlans()) handleIgmpProxyVlan(vlan.key);
  }
  if (mldProxyStatus()) {
    for (const auto& vlan : mldProxyStatus()->vlans()) handleMldProxyVlan(vlan.key);
  }
  addAllVlansFilterGrpc();
}

}  // namespace VekMVxlan
