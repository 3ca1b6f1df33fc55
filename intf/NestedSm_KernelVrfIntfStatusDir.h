#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/intf/DeviceIntfStatusDir.h"
#include "runtime/state/intf/DeviceVrfIntfStatusDir.h"

namespace VekL3Mcast {

class McastIntfModuleSm;

// Follows the kernel devices of one VRF's namespace for the interface tracker: a device
// that comes, goes or changes (name, ifIndex, flags) has its interface checked at once.
class NestedSm_KernelVrfIntfStatusDir
    : public Qel::StateMachine,
      public Qel::NotifieeConstOf<Interface::DeviceVrfIntfStatusDir> {
 public:
  NestedSm_KernelVrfIntfStatusDir(McastIntfModuleSm* owner,
                                  Lumo::Ptr<Interface::DeviceVrfIntfStatusDir const> dir);
  std::string_view typeName() const override {
    return "VekL3Mcast::NestedSm_KernelVrfIntfStatusDir";
  }

  // The VRF whose namespace this is.
  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  // The kernel's devices of the namespace; null until the namespace has them.
  Lumo::Ptr<Interface::DeviceIntfStatusDir> kernelIntfs() const {
    return notifier()->kernelIntfStatusDir();
  }

  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;
  void handleDeviceIntfStatusDir(Lanx::IntfId intfId);

 private:
  McastIntfModuleSm* owner_;
  L3::VrfName vrfName_;
};

}  // namespace VekL3Mcast
