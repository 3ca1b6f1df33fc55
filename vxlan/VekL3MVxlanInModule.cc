#include "vxlan/VekL3MVxlanInModule.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleClass.h"
#include "vxlan/AddrBytes.h"
#include "vxlan/ModuleCounterIds.h"

namespace VekMVxlan {

using VekL3Mcast::enqueueModuleCmd;

namespace {
vek::pb::UdpPortArg* udpPortArg(std::uint16_t port) {
  auto* arg = new vek::pb::UdpPortArg;
  arg->set_udpport(port);
  return arg;
}
vek::pb::IntfIdArg* intfIdArg(Lanx::IntfId intfId) {
  auto* arg = new vek::pb::IntfIdArg;
  arg->set_intfid(intfId.value());
  return arg;
}
vek::pb::IpGenAddrArg* ipGenAddrArg(const Lanx::IpGenAddr& addr) {
  auto* arg = new vek::pb::IpGenAddrArg;
  arg->set_addr(addrBytesUnlessZero(addr));
  return arg;
}
vek::pb::VrfOverlayToUnderlayGroupArg* groupArg(Vrf::VrfIdMap::VrfId vrfId) {
  auto* arg = new vek::pb::VrfOverlayToUnderlayGroupArg;
  arg->set_vrfid(vrfId.value());
  return arg;
}
}  // namespace

L3MVxlanIn::L3MVxlanIn(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                       Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair)
    : Vek::Module(std::move(name), Vek::VekModule::l3MVxlanIn, maxInGate, maxOutGate,
                  reservedInGates, reservedOutGates, nullptr, std::move(modulePair)) {}

void L3MVxlanIn::setVxlanDestPort(std::uint16_t port) {
  enqueueModuleCmd(*this, "setVxlanDestPort", udpPortArg(port));
}

void L3MVxlanIn::setVxlanSrcPort(std::uint16_t port) {
  enqueueModuleCmd(*this, "setVxlanSrcPort", udpPortArg(port));
}

void L3MVxlanIn::setVxlanTTL(std::uint8_t ttl) {
  auto* arg = new vek::pb::TtlArg;
  arg->set_ttl(ttl);
  enqueueModuleCmd(*this, "setVxlanTTL", arg);
}

void L3MVxlanIn::setVtepIntfId(Lanx::IntfId intfId) {
  enqueueModuleCmd(*this, "setVtepIntfId", intfIdArg(intfId));
}

void L3MVxlanIn::addSrcIntfIdToVni(Lanx::IntfId intfId, Vxlan::VniExtOrNone vni) {
  VEK_TRACE(debug, "{}: srcIntfId: {}, vni: {}", name(), intfId.shortName(), vni);
  auto* arg = new vek::pb::IntfIdVniArg;
  arg->set_srcintfid(intfId.value());
  arg->set_vni(vni.value());
  enqueueModuleCmd(*this, "addSrcIntfIdToVni", arg);
}

void L3MVxlanIn::deleteSrcIntfIdToVni(Lanx::IntfId intfId) {
  VEK_TRACE(debug, "{}: srcIntfId: {}", name(), intfId.shortName());
  enqueueModuleCmd(*this, "deleteSrcIntfIdToVni", intfIdArg(intfId));
}

void L3MVxlanIn::setVtepAddr(const Lanx::IpGenAddr& addr) {
  enqueueModuleCmd(*this, "setVtepAddr", ipGenAddrArg(addr));
}

void L3MVxlanIn::setVtepAddr6(const Lanx::IpGenAddr& addr) {
  enqueueModuleCmd(*this, "setVtepAddr6", ipGenAddrArg(addr));
}

void L3MVxlanIn::addVrfOverlayToUnderlayGroup(Vrf::VrfIdMap::VrfId vrfId,
                                              const Lanx::IpGenAddr& overlayGroup,
                                              const Lanx::IpGenAddr& underlayGroup) {
  QEL_ASSERT(!isAddrZero(underlayGroup), "!underlayGroup.isAddrZero()");
  VEK_TRACE(debug, "{}: vrfId: {}, overlayGroup: {}, underlayGroup: {}", name(), vrfId,
            overlayGroup, underlayGroup);
  auto* arg = groupArg(vrfId);
  copyAddrToBuffer(*arg->mutable_overlaygroup(), overlayGroup);
  copyAddrToBuffer(*arg->mutable_underlaygroup(), underlayGroup);
  enqueueModuleCmd(*this, "addVrfOverlayToUnderlayGroup", arg);
}

void L3MVxlanIn::deleteVrfOverlayToUnderlayGroup(Vrf::VrfIdMap::VrfId vrfId,
                                                 const Lanx::IpGenAddr& overlayGroup) {
  VEK_TRACE(debug, "{}: vrfId: {}, overlayGroup: {}", name(), vrfId, overlayGroup);
  auto* arg = groupArg(vrfId);
  copyAddrToBuffer(*arg->mutable_overlaygroup(), overlayGroup);
  enqueueModuleCmd(*this, "deleteVrfOverlayToUnderlayGroup", arg);
}

void L3MVxlanIn::deleteVrfAllGroups(Vrf::VrfIdMap::VrfId vrfId) {
  VEK_TRACE(debug, "{}: vrfId: {}", name(), vrfId);
  auto* arg = groupArg(vrfId);
  arg->set_allgroups(true);
  enqueueModuleCmd(*this, "deleteVrfOverlayToUnderlayGroup", arg);
}

void L3MVxlanIn::setCounterIds(const CounterIds& ids) {
  enqueueModuleCmd(*this, "setCounterIds", counterIdArg<vek::pb::L3MVxlanInCounterIdArg>(ids));
}

}  // namespace VekMVxlan
