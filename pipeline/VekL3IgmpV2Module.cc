#include "pipeline/VekL3IgmpV2Module.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {
vek::pb::IgmpV2VrfArg* vrfArg(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId) {
  auto* arg = new vek::pb::IgmpV2VrfArg;
  arg->set_vrfname(std::string(vrfName.view()));
  arg->set_vrfid(vrfId.value());
  return arg;
}
}  // namespace

IgmpV2::IgmpV2(Lumo::String name, Vek::VekModule::ModuleClass moduleClass,
               std::uint32_t maxInGate, std::uint32_t maxOutGate,
               google::protobuf::Message* initArgs,
               Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair)
    : Vek::Module(std::move(name), moduleClass, maxInGate, maxOutGate, 0, 0, initArgs,
                  std::move(modulePair)) {}

Vrf::VrfIdMap::VrfId IgmpV2::vrf(const L3::VrfName& vrfName) const {
  const Vrf::VrfIdMap::VrfId* vrfId = vrf_.find(vrfName);
  return vrfId ? *vrfId : Vrf::VrfIdMap::VrfId();
}

void IgmpV2::addVrf(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId) {
  VEK_TRACE(info, "vrfName: {}, vrfId: {}", vrfName, vrfId);
  enqueueModuleCmd(*this, "addVrf", vrfArg(vrfName, vrfId));
  vrfIs(vrfName, vrfId);
}

void IgmpV2::delVrf(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId) {
  VEK_TRACE(info, "vrfName: {}, vrfId: {}", vrfName, vrfId);
  enqueueModuleCmd(*this, "delVrf", vrfArg(vrfName, vrfId));
  vrfDel(vrfName);
}

void IgmpV2::setCounterIds(Vek::CounterId pkt, Vek::CounterId unknownProto,
                           Vek::CounterId unknownVrf) {
  auto* arg = new vek::pb::IgmpV2CounterIdArg;
  arg->set_pktcounter(pkt.value());
  arg->set_unknownprotocounter(unknownProto.value());
  arg->set_unknownvrfcounter(unknownVrf.value());
  enqueueModuleCmd(*this, "setCounterIds", arg);
}

}  // namespace VekL3Mcast
