#include "mpls/MplsPipelineControl.h"

#include <vector>

#include "pipeline/McastAnyRxSet.h"
#include "pipeline/McastVrfContainer.h"
#include "pipeline/VekMcastTypes.h"
#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"

namespace VekMMpls {

namespace {

using Lanx::AddressFamily;
using VekMMplsOut::MMplsOut;
using VekMMplsOut::MMplsOutSm;

constexpr AddressFamily families[] = {AddressFamily::ipv4, AddressFamily::ipv6};

std::uint32_t fibGate(AddressFamily af) {
  return af == AddressFamily::ipv4 ? MMplsOut::ipv4FibGate : MMplsOut::ipv6FibGate;
}

// The metadata modules of a VRF's receive paths: they hand MPLS packets from the core to
// the decapsulation module on their reserved gate.
std::vector<Lumo::Ptr<Vek::Module>> metaDataModules(const VekL3Mcast::McastVrfContainer& container) {
  std::vector<Lumo::Ptr<Vek::Module>> modules;
  if (const auto& set = container.mcastAnyRxSet()) {
    for (const auto& member : set->mcastAnyRx()) {
      if (const auto& metaData = member.value->metaDataModule()) modules.push_back(metaData);
    }
  }
  return modules;
}

}  // namespace

MplsPipelineControl::MplsPipelineControl(
    Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const> mvpnIntfStatus,
    Lumo::Ptr<Vrf::VrfIdMap::Status const> vrfIdToNameStatus,
    Lumo::Ptr<VekL3Mcast::McastModuleManager> mcastModuleManager,
    Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair, Lumo::Ptr<Vek::VekCommonSmData> vekcsd)
    : mvpnIntfStatus_(std::move(mvpnIntfStatus)),
      vrfIdToNameStatus_(std::move(vrfIdToNameStatus)),
      mcastModuleManager_(std::move(mcastModuleManager)),
      configStatusPair_(std::move(configStatusPair)),
      vekcsd_(std::move(vekcsd)) {
  QEL_ASSERT(mvpnIntfStatus_ && mcastModuleManager_, "the MPLS pipeline needs its inputs");
  mvpnIntfStatusDispatch_.publisherIs(
      const_cast<Routing::Multicast::MvpnIntfStatus*>(mvpnIntfStatus_.get()));
  mvpnIntfStatusDispatch_.isRegisteredIs(true);
  if (vrfIdToNameStatus_) {
    vrfIdToNameStatusDispatch_.publisherIs(
        const_cast<Vrf::VrfIdMap::Status*>(vrfIdToNameStatus_.get()));
    vrfIdToNameStatusDispatch_.isRegisteredIs(true);
  }
  handleInitialized();
}

void MplsPipelineControl::handleInitialized() { handleMvpnIntfStatus(); }

// ---- Reactors ----

void MplsPipelineControl::handleMvpnIntfStatus() {
  std::vector<Vrf::VrfIdMap::VrfId> ids;
  try {
    for (const auto& entry : mvpnIntfStatus_->intfs()) ids.push_back(entry.key);
  } catch (const Lumo::Exception& error) {
    doCorruptionDetected(error.msg().view());
  }
  for (const auto& entry : mvpnVrf_.members()) ids.push_back(entry.key);
  for (Vrf::VrfIdMap::VrfId id : ids) handleMvpnIntfStatus(id);
}

void MplsPipelineControl::handleMvpnIntfStatus(Vrf::VrfIdMap::VrfId vrfId) {
  const L3::VrfName name = vrfIdToName(vrfId);
  const bool listed = mvpnIntfStatus_->intfHas(vrfId);
  // The VRF the id named when it was last worked goes if the id now names another, or
  // none: by then the id table may have forgotten it.
  const L3::VrfName before = mvpnVrf_.get(vrfId);
  if (!before.empty() && (before != name || !listed)) {
    mvpnVrf_.del(*this, vrfId);
    doDeleteL3MMplsPipeline(before);
  }
  if (listed && !name.empty()) {
    mvpnVrf_.is(*this, vrfId, name);
    doCreateL3MMplsPipeline(name);
  } else if (!name.empty()) {
    doDeleteL3MMplsPipeline(name);
  }
}

void MplsPipelineControl::vrfStarted(const L3::VrfName& vrf, AddressFamily af) {
  VEK_TRACE(debug, "vrf {} af {} started: catching up on MVPN", vrf, af);
  handleMvpnIntfStatus();
}

void MplsPipelineControl::vrfStopping(const L3::VrfName& vrf, AddressFamily af) {
  const Lumo::Ptr<MMplsOutSm> sm = mMplsOutSm(vrf);
  if (!sm) return;
  const Lumo::Ptr<VekL3Mcast::McastVrfContainer> container = mcastModuleManager_->vrf(vrf);
  const bool lastFamily = container->mfibModules().size() <= 1;
  if (lastFamily) {
    // The VRF's receive paths go with it; its part of the pipeline comes back at its next
    // start, while its status entry stands.
    doDeleteL3MMplsPipeline(vrf);
    return;
  }
  sm->module()->disconnectModule(container->mfibModule(af));
}

void MplsPipelineControl::vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                                       Vrf::VrfIdMap::VrfId newId) {
  VEK_TRACE(debug, "vrf {} id {} -> {}", vrf, oldId, newId);
  if (!oldId.isNone()) handleMvpnIntfStatus(oldId);
  if (!newId.isNone()) handleMvpnIntfStatus(newId);
}

// ---- Steps ----

void MplsPipelineControl::doCreateL3MMplsPipeline(const L3::VrfName& vrfName) {
  const Lumo::Ptr<VekL3Mcast::McastVrfContainer> container = mcastModuleManager_->vrf(vrfName);
  if (!container || container->mfibModules().empty()) {
    VEK_TRACE(info, "vrf {} is not started: its MPLS pipeline waits for the start", vrfName);
    return;
  }
  if (!mMplsInModuleSm()) {
    VEK_TRACE(info, "Create MMplsIn for vrf {}", vrfName);
    mMplsInModuleSmIs(tunnelAf, configStatusPair_, vekcsd_);
    if (fabricTxAttach_) fabricTxAttach_();
    doConnectTxDemuxerToL3MMpls(tunnelAf);
  }
  doCreateL3MMplsOutModule(vrfName);
}

void MplsPipelineControl::doCreateL3MMplsOutModule(const L3::VrfName& vrfName) {
  const Lumo::Ptr<VekL3Mcast::McastVrfContainer> container = mcastModuleManager_->vrf(vrfName);
  if (!container) return;
  Lumo::Ptr<MMplsOutSm> sm = mMplsOutSm(vrfName);
  if (!sm) {
    VEK_TRACE(info, "Create MMplsOut for vrf {}", vrfName);
    sm = Lumo::makePtr<MMplsOutSm>(vrfName, configStatusPair_, vekcsd_);
    sm->hasNotificationActiveIs(true);
    container->mMplsOutSmIs(sm);
  }
  // Whatever stands is connected, as it may have come after the module.
  const Lumo::Ptr<MMplsOut>& module = sm->module();
  for (const auto& metaData : metaDataModules(*container)) {
    metaData->connectViaReservedGate(module, VekL3Mcast::Constants::reservedL3MMplsGate);
  }
  for (AddressFamily af : families) {
    if (const auto mfib = container->mfibModule(af)) module->connectViaReservedGate(mfib, fibGate(af));
  }
}

void MplsPipelineControl::doDeleteL3MMplsOutModule(const L3::VrfName& vrfName) {
  const Lumo::Ptr<MMplsOutSm> sm = mMplsOutSm(vrfName);
  if (!sm) return;
  VEK_TRACE(info, "Delete MMplsOut for vrf {}", vrfName);
  const Lumo::Ptr<VekL3Mcast::McastVrfContainer> container = mcastModuleManager_->vrf(vrfName);
  const Lumo::Ptr<MMplsOut>& module = sm->module();
  for (const auto& metaData : metaDataModules(*container)) metaData->disconnectModule(module);
  for (AddressFamily af : families) module->disconnectModule(container->mfibModule(af));
  sm->hasNotificationActiveIs(false);
  container->mMplsOutSmDel();
  mcastModuleManager_->maybeDeleteVrfContainer(container);
}

void MplsPipelineControl::doDeleteL3MMplsPipeline(const L3::VrfName& vrfName) {
  doDeleteL3MMplsOutModule(vrfName);
  // The encapsulation module serves every VRF: it goes with the last decapsulation module.
  if (!mMplsInModuleSm() || isL3MMplsOutPipelineActive()) return;
  VEK_TRACE(info, "Delete MMplsIn with the MPLS pipeline of vrf {}", vrfName);
  if (const auto& txDemuxer = mcastModuleManager_->txDemuxerModule()) {
    txDemuxer->disconnectModule(mMplsInModule());
  }
  mMplsInModuleSmDel();
}

void MplsPipelineControl::doConnectTxDemuxerToL3MMpls(AddressFamily af) {
  const auto& txDemuxer = mcastModuleManager_->txDemuxerModule();
  const Lumo::Ptr<MMplsIn> module = mMplsInModule();
  if (!txDemuxer || !module) return;
  VEK_TRACE(info, "Connect TxDemuxer to {}, af: {}", module->name(), af);
  txDemuxer->connectViaReservedGate(module, txDemuxerMplsGate);
}

bool MplsPipelineControl::isL3MMplsOutPipelineActive() const {
  for (const auto& member : mcastModuleManager_->vrfs()) {
    if (member.value->mMplsOutSm()) return true;
  }
  return false;
}

void MplsPipelineControl::handleCleanup() {
  std::vector<L3::VrfName> vrfs;
  for (const auto& member : mcastModuleManager_->vrfs()) {
    if (member.value->mMplsOutSm()) vrfs.push_back(member.key);
  }
  for (const L3::VrfName& vrf : vrfs) doDeleteL3MMplsPipeline(vrf);
  mMplsInModuleSmDel();
  mvpnVrf_.delAll(*this);
}

// ---- Attributes ----

Lumo::Ptr<MMplsOutSm> MplsPipelineControl::mMplsOutSm(const L3::VrfName& vrfName) const {
  const Lumo::Ptr<VekL3Mcast::McastVrfContainer> container = mcastModuleManager_->vrf(vrfName);
  return container ? Lumo::ptrCast<MMplsOutSm>(container->mMplsOutSm()) : nullptr;
}

L3::VrfName MplsPipelineControl::vrfIdToName(Vrf::VrfIdMap::VrfId vrfId) const {
  if (!vrfIdToNameStatus_) return {};
  try {
    const Lumo::String name = vrfIdToNameStatus_->vrfEntry(vrfId).name;
    if (name.size() > L3::VrfName::maxLength()) {
      VEK_TRACE(err, "VRF id {} names no VRF: the name is {} bytes long", vrfId, name.size());
      return {};
    }
    return L3::VrfName(name);
  } catch (const Lumo::Exception& error) {
    doCorruptionDetected(error.msg().view());
    return {};
  }
}

void MplsPipelineControl::doCorruptionDetected(std::string_view message) const {
  VEK_TRACE(err, "MVPN inputs corrupted: {}", message);
}

}  // namespace VekMMpls
