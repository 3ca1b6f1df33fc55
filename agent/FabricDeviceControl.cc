#include "agent/FabricDeviceControl.h"

#include "agent/VekMfaAgent.h"
#include "runtime/state/kni/KernelInterface.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {

// The kernel's limit on a device name; a longer name names no device.
constexpr std::size_t maxDeviceNameLength = 16;

}  // namespace

FabricDeviceControl::FabricDeviceControl(MfaAgent* agent) : agent_(agent) {}

void FabricDeviceControl::defaultVrfKniRootIs(const Lumo::Ptr<KernelNetInfo::Root const>& root) {
  agent_->inputsForMount().defaultVrfKniRoot = root;
  defaultVrfKniRootDispatch_.publisherIs(const_cast<KernelNetInfo::Root*>(root.get()));
  defaultVrfKniRootDispatch_.isRegisteredIs(true);
  handleFabricDevice();
}

void FabricDeviceControl::defaultVrfKniRootDel() {
  agent_->inputsForMount().defaultVrfKniRoot = nullptr;
  defaultVrfKniRootDispatch_.isRegisteredIs(false);
  defaultVrfKniRootDispatch_.publisherIs(nullptr);
  handleFabricDevice();
}

bool FabricDeviceControl::kernelDeviceIsUp(std::string_view name) const {
  const auto& root = agent_->inputs().defaultVrfKniRoot;
  if (!root) {
    VEK_TRACE(info, "KernelNetInfo root not present for default VRF");
    return false;
  }
  bool up = false;
  if (name.size() <= maxDeviceNameLength) {
    const KernelNetInfo::Interface device = root->interfaceByDeviceName(Lumo::String(name));
    up = device != KernelNetInfo::Interface{} && device.up();
  }
  VEK_TRACE(info, "{}{}", name, up ? " intf on default VRF is up" : " intf on default VRF is not up");
  return up;
}

void FabricDeviceControl::handleKniRootIntf(const Lumo::String& name) {
  if (name == fabricDeviceName) handleFabricDevice();
}

void FabricDeviceControl::handleFabricDevice() {
  // The VTI handlers send nothing before the agent is initialized, so a pipeline built
  // during the mounts would miss its tunnel values: the agent looks again once it is.
  if (!agent_->initialized()) return;
  const auto& vxlan = agent_->vxlanPipeline();
  if (kernelDeviceIsUp(fabricDeviceName)) {
    if (vxlan && !vxlan->l2VxlanInModule() && vxlan->l2PipelineWanted()) {
      vxlan->doCreateL2MVxlanPipeline();
    }
    doMaybeCreateAndAttachFabricTx();
    return;
  }
  if (vxlan && vxlan->l2VxlanInModule()) vxlan->doDeleteL2MVxlanPipeline();
  doDeleteFabricTx();
}

template <typename Visit>
void FabricDeviceControl::forEachFabricSource(Visit&& visit) const {
  if (const auto& txDemuxer = agent_->mcastModuleManager()->txDemuxerModule()) {
    visit(Lumo::Ptr<Vek::Module>(txDemuxer), VekTxDemuxer::TxDemuxer::fabricGate);
  }
  if (const auto& mpls = agent_->mplsPipelineControl()) {
    if (const auto module = mpls->mMplsInModule()) {
      visit(Lumo::Ptr<Vek::Module>(module), VekMMpls::MplsPipelineControl::mMplsInFabricGate);
    }
  }
}

void FabricDeviceControl::doMaybeCreateAndAttachFabricTx() {
  if (!kernelDeviceIsUp(fabricDeviceName)) return;
  if (!fabricTx()) {
    VEK_TRACE(info, "Create FabricTx");
    auto tx = Lumo::makePtr<FabricTx>(agent_->mcastModuleManager()->rxBufSize());
    fabricTx_.is(*this, tx);
    tx->createBessPort(agent_->cmdConfigGroup());
    tx->createTxModule(agent_->configStatusPair());
    agent_->mfibWorkerTasks()->attachFabricTxTasks(tx);
  }
  const Lumo::Ptr<Vek::Module>& txModule = fabricTx()->txModule();
  if (!txModule) return;
  forEachFabricSource([&](const Lumo::Ptr<Vek::Module>& source, std::uint32_t gate) {
    source->connectViaReservedGate(txModule, gate);
  });
  // Whoever connects the demultiplexer to an egress first decides on its programmer.
  agent_->doMaybeCreateTxDemuxerProgrammer();
}

void FabricDeviceControl::doDeleteFabricTx() {
  const Lumo::Ptr<FabricTx> tx = fabricTx();
  if (!tx) return;
  if (const Lumo::Ptr<Vek::Module>& txModule = tx->txModule()) {
    forEachFabricSource([&](const Lumo::Ptr<Vek::Module>& source, std::uint32_t) {
      source->disconnectModule(txModule);
    });
  }
  fabricTx_.is(*this, nullptr);
}

void FabricDeviceControl::handleFwdDevStateSm() {
  const auto& vxlan = agent_->vxlanPipeline();
  const Lumo::Ptr<VekMVxlan::L2MVxlanIn> in = vxlan ? vxlan->l2VxlanInModule() : nullptr;
  const MfaInputs& inputs = agent_->inputs();
  if (in && inputs.defaultVrfKniRoot && inputs.routingHwRouteStatus) {
    // A machine of an earlier pipeline or namespace goes before the new one comes.
    if (const auto& sm = fwdDevStateSm();
        sm && (sm->l2VxlanIn() != in || sm->defaultVrfKniRoot() != inputs.defaultVrfKniRoot)) {
      fwdDevStateSm_.del(*this);
    }
    VEK_TRACE(info, "Creating fwdStateSm");
    fwdDevStateSm_.is(*this, inputs.defaultVrfKniRoot, inputs.routingHwRouteStatus, in,
                      agent_->vekcsd(), agent_->configStatusPair(), agent_->cmdConfigGroup());
    return;
  }
  VEK_TRACE(info, "Deleting fwdStateSm");
  fwdDevStateSm_.del(*this);
}

void FabricDeviceControl::handleCleanup() {
  defaultVrfKniRootDispatch_.isRegisteredIs(false);
  fwdDevStateSm_.del(*this);
}

}  // namespace VekL3Mcast
