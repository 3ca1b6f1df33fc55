#include "pipeline/VekTxDemuxerModule.h"

#include "pipeline/ModuleCmd.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleClass.h"

namespace VekTxDemuxer {

using VekL3Mcast::enqueueModuleCmd;

TxDemuxer::TxDemuxer(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
                     Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair)
    : Vek::Module(std::move(name), Vek::VekModule::txDemuxer, maxInGate, maxOutGate,
                  reservedInGate, reservedOutGate, nullptr, std::move(modulePair)) {}

void TxDemuxer::addIntfToOutGate(Lanx::IntfId intfId, Bridging::VlanIdOrNone vlanId,
                                 Vek::GateId oGate) {
  VEK_TRACE(debug, "{}: intfId ( {} ) vlanId ( {} ) oGate ( {} )", name(), intfId, vlanId, oGate);
  auto* arg = new vek::pb::IntfGateArg;
  arg->set_intfid(intfId.value());
  arg->set_ogate(oGate.value());
  arg->set_vlanid(vlanId.value());
  enqueueModuleCmd(*this, "addDstIntfIdToOutGate", arg);
}

void TxDemuxer::deleteIntfToOutGate(Lanx::IntfId intfId) {
  VEK_TRACE(debug, "{}: intfId ( {} )", name(), intfId);
  auto* arg = new vek::pb::IntfGateArg;
  arg->set_intfid(intfId.value());
  enqueueModuleCmd(*this, "deleteDstIntfIdToOutGate", arg);
}

void TxDemuxer::addVrfIdToPmsiVlan(Vrf::VrfIdMap::VrfId vrfId, std::uint16_t vlanId) {
  VEK_TRACE(debug, "{}: vrfId ( {} ) vlanId ( {} )", name(), vrfId, vlanId);
  auto* arg = new vek::pb::VrfVlanArg;
  arg->set_vrfid(vrfId.value());
  arg->set_vlanid(vlanId);
  enqueueModuleCmd(*this, "addVrfIdToPmsiVlan", arg);
}

void TxDemuxer::deleteVrfIdToPmsiVlan(Vrf::VrfIdMap::VrfId vrfId) {
  VEK_TRACE(debug, "{}: vrfId ( {} )", name(), vrfId);
  auto* arg = new vek::pb::VrfIdArg;
  arg->set_vrfid(vrfId.value());
  enqueueModuleCmd(*this, "deleteVrfIdToPmsiVlan", arg);
}

void TxDemuxer::setCounterIds(Vek::CounterId noIntfDstCounter,
                              Vek::CounterId noIntfDstOgateCounter) {
  VEK_TRACE(debug, "{}: noIntfDst {} noIntfDstOgate {}", name(), noIntfDstCounter,
            noIntfDstOgateCounter);
  auto* arg = new vek::pb::TxDemuxerCounterIdArg;
  arg->set_nointfdstcounter(noIntfDstCounter.value());
  arg->set_nointfdstogatecounter(noIntfDstOgateCounter.value());
  enqueueModuleCmd(*this, "setCounterIds", arg);
}

Lumo::Ptr<TxDemuxer> txDemuxerFactory(const Lumo::String& name, std::uint32_t maxInGate,
                                      std::uint32_t maxOutGate,
                                      const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  return Vek::makeModule<TxDemuxer>(name, maxInGate, maxOutGate, modulePair);
}

}  // namespace VekTxDemuxer
