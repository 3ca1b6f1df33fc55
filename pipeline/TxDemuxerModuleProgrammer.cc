#include "pipeline/TxDemuxerModuleProgrammer.h"

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Exception.h"
#include "runtime/state/VlanIntfId.h"
#include "runtime/trace/Trace.h"

namespace VekTxDemuxer {

TxDemuxerModuleProgrammer::TxDemuxerModuleProgrammer(
    Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const> intfStatus,
    Lumo::Ptr<TxDemuxer> demuxModule)
    : intfStatus_(std::move(intfStatus)), demuxModule_(std::move(demuxModule)) {
  QEL_ASSERT(intfStatus_ && demuxModule_, "the programmer needs the status and the module");
  intfStatusReactor_.publisherIs(const_cast<Routing::Multicast::MvpnIntfStatus*>(intfStatus_.get()));
  intfStatusReactor_.isRegisteredIs(true);
  handleInitialized();
}

void TxDemuxerModuleProgrammer::handleInitialized() { handleIntfStatus(); }

void TxDemuxerModuleProgrammer::handleIntfStatus() {
  try {
    for (const auto& entry : intfStatus_->intfs()) handleIntfStatus(entry.key);
  } catch (const Lumo::Exception& e) {
    doCorruptionDetected(e.msg());
  }
}

void TxDemuxerModuleProgrammer::handleIntfStatus(Vrf::VrfIdMap::VrfId vrfId) {
  const Lanx::IntfId intf = intfStatus_->intf(vrfId);
  if (intf == Lanx::IntfId()) {
    demuxModule_->deleteVrfIdToPmsiVlan(vrfId);
    return;
  }
  if (!Lanx::VlanIntfId::isVlanIntfId(intf)) {
    VEK_TRACE(warn, "provider interface {} of VRF id {} is no VLAN interface, ignoring", intf,
              vrfId);
    demuxModule_->deleteVrfIdToPmsiVlan(vrfId);
    return;
  }
  demuxModule_->addVrfIdToPmsiVlan(vrfId, Lanx::VlanIntfId::vlanId(intf));
}

void TxDemuxerModuleProgrammer::doCorruptionDetected(std::string_view message) const {
  VEK_TRACE(err, "{} corrupted: {}", Routing::Multicast::MvpnIntfStatus::mountPath(), message);
}

}  // namespace VekTxDemuxer
