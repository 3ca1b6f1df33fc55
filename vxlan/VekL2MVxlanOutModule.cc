#include "vxlan/VekL2MVxlanOutModule.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleClass.h"
#include "vxlan/AddrBytes.h"

namespace VekMVxlan {

using VekL3Mcast::enqueueModuleCmd;

L2MVxlanOut::L2MVxlanOut(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair)
    : Vek::Module(std::move(name), Vek::VekModule::l2MVxlanOut, maxInGate, maxOutGate, 0, 0,
                  nullptr, std::move(modulePair)) {}

void L2MVxlanOut::addVni(Vxlan::VniExtOrNone vni, Bridging::VlanId vlanId) {
  VEK_TRACE(info, "module: {}, vni: {}, vlanId: {}", name(), vni, vlanId);
  auto* arg = new vek::pb::VlanVniArg;
  arg->set_vlanid(vlanId.value());
  arg->set_vni(vni.value());
  enqueueModuleCmd(*this, "addVni", arg);
}

void L2MVxlanOut::deleteVni(Vxlan::VniExtOrNone vni) {
  VEK_TRACE(info, "module: {}, vni: {}", name(), vni);
  auto* arg = new vek::pb::VlanVniArg;
  arg->set_vni(vni.value());
  enqueueModuleCmd(*this, "deleteVni", arg);
}

void L2MVxlanOut::sendDecapRoute(std::string_view cmdName,
                                 const Routing::Multicast::UnderlayRoute& route) {
  VEK_TRACE(info, "module: {}, {}: {}", name(), cmdName, route);
  auto* arg = new vek::pb::L2MVxlanDecapRouteArg;
  *arg->mutable_underlaysource() = addrBytesUnlessZero(route.source());
  *arg->mutable_underlaygroup() = addrBytesUnlessZero(route.group());
  enqueueModuleCmd(*this, cmdName, arg);
}

void L2MVxlanOut::addDecapRoute(const Routing::Multicast::UnderlayRoute& route) {
  sendDecapRoute("addDecapRoute", route);
}

void L2MVxlanOut::deleteDecapRoute(const Routing::Multicast::UnderlayRoute& route) {
  sendDecapRoute("deleteDecapRoute", route);
}

void L2MVxlanOut::setCounterIds(const CounterIds& ids) {
  enqueueModuleCmd(*this, "setCounterIds", counterIdArg<vek::pb::L2MVxlanOutCounterIdArg>(ids));
}

Lumo::Ptr<L2MVxlanOut> l2MVxlanOutFactory(Lumo::String name, std::uint32_t maxInGate,
                                          std::uint32_t maxOutGate,
                                          Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair) {
  return Vek::makeModule<L2MVxlanOut>(std::move(name), maxInGate, maxOutGate,
                                      std::move(modulePair));
}

void addL2MVxlanOutCounters(const Lumo::Ptr<L2MVxlanOut>& module,
                            const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
  module->setCounterIds(
      allocateModuleCounters(module.get(), vekcsd, L2MVxlanOut::counterNames));
}

}  // namespace VekMVxlan
