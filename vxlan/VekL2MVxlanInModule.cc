#include "vxlan/VekL2MVxlanInModule.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleClass.h"
#include "vxlan/AddrBytes.h"

namespace VekMVxlan {

namespace {

using VekL3Mcast::enqueueModuleCmd;

vek::pb::VlanVniArg* vlanVniArg(Bridging::VlanId vlanId) {
  auto* arg = new vek::pb::VlanVniArg;
  arg->set_vlanid(vlanId.value());
  return arg;
}

vek::pb::VlanVtepFloodSetArg* floodSetArg(Bridging::VlanId vlanId, const Lanx::IpGenAddr& vtep) {
  auto* arg = new vek::pb::VlanVtepFloodSetArg;
  copyAddrToBuffer(*arg->mutable_vtepaddr(), vtep);
  arg->set_vlanid(vlanId.value());
  return arg;
}

vek::pb::L2MVxlanOverlayVlanGroupArg* overlayGroupArg(
    const Routing::Multicast::OverlayVlanGroup& group) {
  auto* arg = new vek::pb::L2MVxlanOverlayVlanGroupArg;
  copyAddrToBuffer(*arg->mutable_overlaygroup(), group.group());
  arg->set_vlanid(group.vlanId().value());
  return arg;
}

vek::pb::GmpVlanGroupMemberArg* memberArg(Bridging::VlanId vlanId, const Lanx::EthAddr& member) {
  auto* arg = new vek::pb::GmpVlanGroupMemberArg;
  const auto mac = member.rawBytes();
  arg->set_groupmember(reinterpret_cast<const char*>(mac.data()), mac.size());
  arg->set_vlanid(vlanId.value());
  return arg;
}

}  // namespace

L2MVxlanIn::L2MVxlanIn(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                       Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair)
    : Vek::Module(std::move(name), Vek::VekModule::l2MVxlanIn, maxInGate, maxOutGate,
                  reservedInGates, reservedOutGates, nullptr, std::move(modulePair)) {}

void L2MVxlanIn::addVlan(Bridging::VlanId vlanId, Vxlan::VniExtOrNone vni) {
  VEK_TRACE(info, "module: {}, vlanId: {}, vni: {}", name(), vlanId, vni);
  auto* arg = vlanVniArg(vlanId);
  arg->set_vni(vni.value());
  enqueueModuleCmd(*this, "addVlan", arg);
}

void L2MVxlanIn::deleteVlan(Bridging::VlanId vlanId) {
  VEK_TRACE(info, "module: {}, vlanId: {}", name(), vlanId);
  enqueueModuleCmd(*this, "deleteVlan", vlanVniArg(vlanId));
}

void L2MVxlanIn::addVlanToSBDVlan(Bridging::VlanId vlanId, Bridging::VlanId sbdVlanId) {
  VEK_TRACE(info, "module: {}, vlanId: {}, sbdVlanId: {}", name(), vlanId, sbdVlanId);
  auto* arg = new vek::pb::VlanToSBDVlanArg;
  arg->set_vlanid(vlanId.value());
  arg->set_sbdvlanid(sbdVlanId.value());
  enqueueModuleCmd(*this, "addVlanToSBDVlan", arg);
}

void L2MVxlanIn::delVlanToSBDVlan(Bridging::VlanId vlanId) {
  VEK_TRACE(info, "module: {}, vlanId: {}", name(), vlanId);
  auto* arg = new vek::pb::VlanToSBDVlanArg;
  arg->set_vlanid(vlanId.value());
  enqueueModuleCmd(*this, "delVlanToSBDVlan", arg);
}

void L2MVxlanIn::addVlanFloodSetEntry(Bridging::VlanId vlanId, const Lanx::IpGenAddr& vtep) {
  VEK_TRACE(info, "Adding vlan {} vtep {}", vlanId, vtep);
  enqueueModuleCmd(*this, "addVlanFloodSetEntry", floodSetArg(vlanId, vtep));
}

void L2MVxlanIn::deleteVlanFloodSetEntry(Bridging::VlanId vlanId, const Lanx::IpGenAddr& vtep) {
  VEK_TRACE(info, "Deleting vlan {} vtep {}", vlanId, vtep);
  enqueueModuleCmd(*this, "deleteVlanFloodSetEntry", floodSetArg(vlanId, vtep));
}

void L2MVxlanIn::setSrcIpIntf(Lanx::IntfId intfId) {
  VEK_TRACE(info, "module: {}, srcIpIntf: {}", name(), intfId);
  auto* arg = new vek::pb::IntfIdArg;
  arg->set_intfid(intfId.value());
  enqueueModuleCmd(*this, "setSrcIpIntf", arg);
}

void L2MVxlanIn::addOverlayVlanGroup(const Routing::Multicast::OverlayVlanGroup& group,
                                     const Routing::Multicast::UnderlayRoute& route) {
  const Lanx::IpGenAddr& grpUnderlay = route.group();
  QEL_ASSERT(!isAddrZero(grpUnderlay), "!grpUnderlay.isAddrZero()");
  VEK_TRACE(info, "overlayVlanGroup: {}, underlayRoute: {}", group, route);
  auto* arg = overlayGroupArg(group);
  *arg->mutable_underlaysource() = addrBytesUnlessZero(route.source());
  copyAddrToBuffer(*arg->mutable_underlaygroup(), grpUnderlay);
  enqueueModuleCmd(*this, "addOverlayVlanGroup", arg);
}

void L2MVxlanIn::deleteOverlayVlanGroup(const Routing::Multicast::OverlayVlanGroup& group) {
  VEK_TRACE(info, "overlayVlanGroup: {}", group);
  enqueueModuleCmd(*this, "deleteOverlayVlanGroup", overlayGroupArg(group));
}

void L2MVxlanIn::setVtep(std::string_view cmdName, const Lanx::IpGenAddr& vtep) {
  VEK_TRACE(info, "module: {}, {}: {}", name(), cmdName, vtep);
  auto* arg = new vek::pb::IpGenAddrArg;
  *arg->mutable_addr() = addrBytesUnlessZero(vtep);
  enqueueModuleCmd(*this, cmdName, arg);
}

void L2MVxlanIn::setVtepAddr(const Lanx::IpGenAddr& vtep) {
  QEL_ASSERT(vtep.family() != Lanx::AddressFamily::ipv6, "setVtepAddr takes an IPv4 address");
  setVtep("setVtepAddr", vtep);
}

void L2MVxlanIn::setVtepAddr6(const Lanx::IpGenAddr& vtep) {
  QEL_ASSERT(vtep.family() != Lanx::AddressFamily::ipv4, "setVtepAddr6 takes an IPv6 address");
  setVtep("setVtepAddr6", vtep);
}

void L2MVxlanIn::addGmpVlanGroupMember(Bridging::VlanId vlanId, const Lanx::EthAddr& member,
                                       const Lumo::Ptr<VtepList const>& vtepList) {
  auto* arg = memberArg(vlanId, member);
  std::size_t vteps = 0;
  if (vtepList) {
    for (const auto& [vtep, mark] : vtepList->addr()) {
      copyAddrToBuffer(*arg->add_vtepaddr(), vtep);
    }
    vteps = vtepList->addrs();
  }
  VEK_TRACE(info, "module: {}, vlanId: {}, groupMember: {}, Total VTEPs: {}", name(), vlanId,
            member, vteps);
  enqueueModuleCmd(*this, "addGmpVlanGroupMember", arg);
}

void L2MVxlanIn::deleteGmpVlanGroupMember(Bridging::VlanId vlanId, const Lanx::EthAddr& member) {
  VEK_TRACE(info, "module: {}, vlanId: {}, groupMember: {}", name(), vlanId, member);
  enqueueModuleCmd(*this, "deleteGmpVlanGroupMember", memberArg(vlanId, member));
}

void L2MVxlanIn::setLocalBridgeMacAddr(const Lanx::EthAddr& mac) {
  VEK_TRACE(info, "module: {}, bridgeMacAddr: {}", name(), mac);
  auto* arg = new vek::pb::EthernetConfigArg;
  const auto bytes = mac.rawBytes();
  arg->set_bridgemacaddr(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  enqueueModuleCmd(*this, "setLocalBridgeMacAddr", arg);
}

void L2MVxlanIn::setVxlanSwitchPktToMcastTunnelInSw(bool switching) {
  VEK_TRACE(info, "module: {}, switching: {}", name(), switching);
  auto* arg = new vek::pb::VxlanSwitchPktToMcastTunnelInSwArg;
  arg->set_switching(switching);
  enqueueModuleCmd(*this, "setVxlanSwitchPktToMcastTunnelInSw", arg);
}

void L2MVxlanIn::setCounterIds(const CounterIds& ids) {
  enqueueModuleCmd(*this, "setCounterIds", counterIdArg<vek::pb::L2MVxlanInCounterIdArg>(ids));
}

Lumo::Ptr<L2MVxlanIn> l2MVxlanInFactory(Lumo::String name, std::uint32_t maxInGate,
                                        std::uint32_t maxOutGate,
                                        Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair) {
  return Vek::makeModule<L2MVxlanIn>(std::move(name), maxInGate, maxOutGate,
                                     std::move(modulePair));
}

void addL2MVxlanInCounters(const Lumo::Ptr<L2MVxlanIn>& module,
                           const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
  module->setCounterIds(
      allocateModuleCounters(module.get(), vekcsd, L2MVxlanIn::counterNames));
}

}  // namespace VekMVxlan
