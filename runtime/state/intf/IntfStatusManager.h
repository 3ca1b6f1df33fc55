#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/intf/DeviceIntfStatusDir.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"

namespace Interface {

// Keeps the device directory of one namespace equal to the kernel devices of that
// namespace that stand for an interface: interface id to device name, ifIndex and flags.
// A device without an interface id is left out.
class IntfStatusManager : public Qel::StateMachine {
 public:
  IntfStatusManager(Lumo::Ptr<DeviceIntfStatusDir> deviceDir,
                    Lumo::Ptr<KernelNetInfo::Root const> kniRoot);
  ~IntfStatusManager() override;
  std::string_view typeName() const override { return "Interface::IntfStatusManager"; }

  const Lumo::Ptr<DeviceIntfStatusDir>& deviceDir() const noexcept { return deviceDir_; }
  const Lumo::Ptr<KernelNetInfo::Root const>& kniRoot() const noexcept { return kniRoot_; }

  void handleInitialized() override;
  void handleDevice(const Lumo::String& deviceName);

 private:
  Lumo::Ptr<DeviceIntfStatusDir> deviceDir_;
  Lumo::Ptr<KernelNetInfo::Root const> kniRoot_;
  // The interface each device was entered under, to take it out when the device goes.
  Qel::HashMap2018<Lumo::String, Lanx::IntfId> intfIdByDevice_;
  Qel::SmSubscriber<IntfStatusManager> kniRootReactor_{
      this, &Qel::reactorDispatch<IntfStatusManager, KernelNetInfo::Root::kInterfaceByDeviceName,
                                  &IntfStatusManager::handleDevice>};
};

}  // namespace Interface
