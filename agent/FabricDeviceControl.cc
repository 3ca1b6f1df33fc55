#include "agent/FabricDeviceControl.h"

#include "agent/VekMfaAgent.h"

namespace VekL3Mcast {

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

void FabricDeviceControl::handleKniRootIntf(const Lumo::String& name) {
  if (name == fabricDeviceName) handleFabricDevice();
}

void FabricDeviceControl::handleFabricDevice() {
  // Up, the L2 VXLAN pipeline is made as far as its proxy or tunnel VLANs ask for it, and
  // the fabric transmit with it; down, both go. Nothing stands here without that pipeline.
}

void FabricDeviceControl::handleFwdDevStateSm() {
  // The forwarding devices' machine joins here with the L2 VXLAN pipeline; without that
  // pipeline it never stands.
}

}  // namespace VekL3Mcast
