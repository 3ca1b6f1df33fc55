#include "vxlan/VekL3MVxlanOutModule.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleClass.h"
#include "vxlan/ModuleCounterIds.h"

namespace VekMVxlan {

using VekL3Mcast::enqueueModuleCmd;

namespace {
vek::pb::VrfVlanArg* vrfVlanArg(Vrf::VrfIdMap::VrfId vrfId) {
  auto* arg = new vek::pb::VrfVlanArg;
  arg->set_vrfid(vrfId.value());
  return arg;
}
vek::pb::AfVrfOGateArg* oGateArg(Lanx::AddressFamily af, Vrf::VrfIdMap::VrfId vrfId) {
  auto* arg = new vek::pb::AfVrfOGateArg;
  arg->set_af(static_cast<std::uint32_t>(af));
  arg->set_vrfid(vrfId.value());
  return arg;
}
vek::pb::VlanVniArg* vniVlanArg(Vxlan::VniExtOrNone vni) {
  auto* arg = new vek::pb::VlanVniArg;
  arg->set_vni(vni.value());
  return arg;
}
vek::pb::VniVrfArg* vniVrfArg(Vxlan::VniExtOrNone vni) {
  auto* arg = new vek::pb::VniVrfArg;
  arg->set_vni(vni.value());
  return arg;
}
}  // namespace

L3MVxlanOut::L3MVxlanOut(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair)
    : Vek::Module(std::move(name), Vek::VekModule::l3MVxlanOut, maxInGate, maxOutGate, 0, 0,
                  nullptr, std::move(modulePair)) {}

void L3MVxlanOut::setUdpPort(std::uint16_t port) {
  auto* arg = new vek::pb::UdpPortArg;
  arg->set_udpport(port);
  enqueueModuleCmd(*this, "setUdpPort", arg);
}

void L3MVxlanOut::addVrfSBDVlan(Vrf::VrfIdMap::VrfId vrfId, Bridging::VlanIdOrNone vlan) {
  VEK_TRACE(debug, "vrfId: {}, vlanId: {}", vrfId, vlan);
  auto* arg = vrfVlanArg(vrfId);
  arg->set_vlanid(vlan.value());
  enqueueModuleCmd(*this, "addVrfSBDVlan", arg);
}

void L3MVxlanOut::deleteVrfSBDVlan(Vrf::VrfIdMap::VrfId vrfId) {
  VEK_TRACE(debug, "vrfId: {}", vrfId);
  enqueueModuleCmd(*this, "deleteVrfSBDVlan", vrfVlanArg(vrfId));
}

void L3MVxlanOut::addOGateEntry(Lanx::AddressFamily af, Vrf::VrfIdMap::VrfId vrfId,
                                std::uint32_t oGate) {
  VEK_TRACE(debug, "{}, af: {}, vrfId: {}, oGate: {}", name(), Lanx::addressFamilyName(af), vrfId,
            oGate);
  auto* arg = oGateArg(af, vrfId);
  arg->set_ogate(oGate);
  enqueueModuleCmd(*this, "addOGateEntry", arg);
}

void L3MVxlanOut::deleteOGateEntry(Lanx::AddressFamily af, Vrf::VrfIdMap::VrfId vrfId) {
  VEK_TRACE(debug, "{}, af: {}, vrfId: {}", name(), Lanx::addressFamilyName(af), vrfId);
  enqueueModuleCmd(*this, "deleteOGateEntry", oGateArg(af, vrfId));
}

void L3MVxlanOut::addVniVlan(Vxlan::VniExtOrNone vni, Bridging::VlanId vlan) {
  VEK_TRACE(debug, "vni: {}, vlanId: {}", vni, vlan);
  auto* arg = vniVlanArg(vni);
  arg->set_vlanid(vlan.value());
  enqueueModuleCmd(*this, "addVniVlan", arg);
}

void L3MVxlanOut::deleteVniVlan(Vxlan::VniExtOrNone vni) {
  VEK_TRACE(debug, "vni: {}", vni);
  enqueueModuleCmd(*this, "deleteVniVlan", vniVlanArg(vni));
}

void L3MVxlanOut::addVniVrf(Vxlan::VniExtOrNone vni, Vrf::VrfIdMap::VrfId vrfId) {
  VEK_TRACE(debug, "vni: {}, vrfId: {}", vni, vrfId);
  auto* arg = vniVrfArg(vni);
  arg->set_vrfid(vrfId.value());
  enqueueModuleCmd(*this, "addVniVrf", arg);
}

void L3MVxlanOut::deleteVniVrf(Vxlan::VniExtOrNone vni) {
  VEK_TRACE(debug, "vni: {}", vni);
  enqueueModuleCmd(*this, "deleteVniVrf", vniVrfArg(vni));
}

void L3MVxlanOut::setCounterIds(const CounterIds& ids) {
  enqueueModuleCmd(*this, "setCounterIds", counterIdArg<vek::pb::L3MVxlanOutCounterIdArg>(ids));
}

void addL3MVxlanOutCounters(const Lumo::Ptr<L3MVxlanOut>& module,
                            const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
  module->setCounterIds(allocateModuleCounters(module.get(), vekcsd, L3MVxlanOut::counterNames));
}

}  // namespace VekMVxlan
