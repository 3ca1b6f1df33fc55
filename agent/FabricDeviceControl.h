#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"

namespace VekL3Mcast {

class MfaAgent;

// The devices of the default namespace by which traffic leaves the local pipeline: the
// "fabric" device, which the L2 VXLAN pipeline and the fabric transmit follow, and the
// forwarding devices, which their own machine follows while the L2 VXLAN pipeline stands.
// Both live in the default VRF's namespace, so they follow its namespace state.
class FabricDeviceControl : public Qel::StateMachine {
 public:
  static constexpr std::string_view fabricDeviceName = "fabric";

  explicit FabricDeviceControl(MfaAgent* agent);
  std::string_view typeName() const override { return "VekL3Mcast::FabricDeviceControl"; }

  // The default namespace's devices came with its namespace state, or went with it.
  void defaultVrfKniRootIs(const Lumo::Ptr<KernelNetInfo::Root const>& root);
  void defaultVrfKniRootDel();
  // A device of the default namespace changed; only the fabric device counts here.
  void handleKniRootIntf(const Lumo::String& name);
  // The fabric device came up or went down, or its namespace came or went.
  void handleFabricDevice();
  // The forwarding devices' machine stands exactly while the L2 VXLAN pipeline and the
  // default namespace do.
  void handleFwdDevStateSm();

  void handleCleanup() { defaultVrfKniRootDispatch_.isRegisteredIs(false); }

 private:
  MfaAgent* agent_;
  Qel::SmSubscriber<FabricDeviceControl> defaultVrfKniRootDispatch_{
      this, &Qel::reactorDispatch<FabricDeviceControl, KernelNetInfo::Root::kInterfaceByDeviceName,
                                  &FabricDeviceControl::handleKniRootIntf>};
};

}  // namespace VekL3Mcast
