#include "runtime/state/intf/IntfStatusManager.h"

#include <vector>

namespace Interface {

IntfStatusManager::IntfStatusManager(Lumo::Ptr<DeviceIntfStatusDir> deviceDir,
                                     Lumo::Ptr<KernelNetInfo::Root const> kniRoot)
    : deviceDir_(std::move(deviceDir)), kniRoot_(std::move(kniRoot)) {
  kniRootReactor_.publisherIs(const_cast<KernelNetInfo::Root*>(kniRoot_.get()));
  kniRootReactor_.isRegisteredIs(true);
  handleInitialized();
}

IntfStatusManager::~IntfStatusManager() {
  // What this manager entered leaves with it.
  for (const auto& entry : intfIdByDevice_) deviceDir_->deviceIntfStatusDel(entry.value);
}

void IntfStatusManager::handleInitialized() {
  std::vector<Lumo::String> names;
  for (const auto& device : kniRoot_->interfaces()) names.push_back(device.key);
  for (const auto& entry : intfIdByDevice_) {
    if (!kniRoot_->interfaces().has(entry.key)) names.push_back(entry.key);
  }
  for (const Lumo::String& name : names) handleDevice(name);
}

void IntfStatusManager::handleDevice(const Lumo::String& deviceName) {
  const KernelNetInfo::Interface device = kniRoot_->interfaceByDeviceName(deviceName);
  if (const Lanx::IntfId* old = intfIdByDevice_.find(deviceName)) {
    if (*old != device.intfId) {
      // Only this device's entry goes; another device may have taken the interface since.
      if (deviceDir_->deviceIntfStatus(*old).deviceName == deviceName) {
        deviceDir_->deviceIntfStatusDel(*old);
      }
      intfIdByDevice_.erase(Lumo::String(deviceName));
    }
  }
  if (device.intfId.isEmpty()) return;
  intfIdByDevice_.set(deviceName, device.intfId);
  deviceDir_->deviceIntfStatusIs(device.intfId,
                                 DeviceIntfStatus{deviceName, device.ifIndex, device.flags});
}

}  // namespace Interface
