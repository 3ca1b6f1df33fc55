#include "pipeline/VekMcastL3IntfSm.h"

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

VekMcastL3IntfSm::VekMcastL3IntfSm(Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                                   Lumo::Ptr<McastModuleManager> mcastModuleManager)
    : vekcsd_(std::move(vekcsd)), mcastModuleManager_(std::move(mcastModuleManager)) {
  QEL_ASSERT(vekcsd_ && mcastModuleManager_, "VekMcastL3IntfSm needs vekcsd and the manager");
  txDemuxerReactor_.publisherIs(mcastModuleManager_.get());
  txDemuxerReactor_.isRegisteredIs(true);
  l3IntfReactor_.publisherIs(vekcsd_.get());
  l3IntfReactor_.isRegisteredIs(true);
  handleInitialized();
}

void VekMcastL3IntfSm::handleInitialized() { handleTxDemuxer(); }

void VekMcastL3IntfSm::handleTxDemuxer() {
  if (!mcastModuleManager_->txDemuxerModule()) return;
  VEK_TRACE(info, " txDemuxer created");
  for (const auto& entry : vekcsd_->l3Intfs()) handleL3Intf(entry.key);
}

void VekMcastL3IntfSm::handleL3Intf(Lanx::IntfId intfId) {
  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& txDemuxer = mcastModuleManager_->txDemuxerModule();
  if (!txDemuxer) return;
  const Lumo::Ptr<Vek::L3Intf> l3Intf = vekcsd_->l3Intf(intfId);
  const bool hasGate = intfToGate_.has(intfId);
  if (l3Intf && !hasGate) {
    Vek::GateId gate;
    try {
      gate = txDemuxer->getOutGate();
    } catch (const Lumo::Exception& e) {
      VEK_TRACE(err, "intfId: {}: {}", intfId, e.msg());
      return;
    }
    VEK_TRACE(info, "Add intfId: {}, gate: {}", intfId, gate);
    intfToGateIs(intfId, gate);
    l3Intf->connectEgressSourceModule(txDemuxer, egressEtherType, gate);
    txDemuxer->addIntfToOutGate(intfId, Bridging::VlanIdOrNone(), gate);
  } else if (!l3Intf && hasGate) {
    VEK_TRACE(info, "Delete intfId: {}", intfId);
    intfToGateDel(intfId);
    txDemuxer->deleteIntfToOutGate(intfId);
  }
}

}  // namespace VekL3Mcast
