#pragma once

#include <string_view>

#include "agent/VekFwdDevSm.h"
#include "pipeline/FabricTx.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"

namespace VekL3Mcast {

class MfaAgent;

// The devices of the default namespace by which traffic leaves the local pipeline: the
// "fabric" device, which the L2 VXLAN pipeline and the fabric transmit follow, and the
// forwarding devices, which their own machine follows while the L2 VXLAN pipeline stands.
// Both live in the default VRF's namespace, so they follow its namespace state.
class FabricDeviceControl : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kFabricTx = 1, kFwdDevStateSm };
  static constexpr std::string_view fabricDeviceName = "fabric";

  explicit FabricDeviceControl(MfaAgent* agent);
  std::string_view typeName() const override { return "VekL3Mcast::FabricDeviceControl"; }

  // The default namespace's devices came with its namespace state, or went with it.
  void defaultVrfKniRootIs(const Lumo::Ptr<KernelNetInfo::Root const>& root);
  void defaultVrfKniRootDel();
  // Whether the default namespace has the device and it is up. No namespace, no device.
  bool kernelDeviceIsUp(std::string_view name) const;
  // A device of the default namespace changed; only the fabric device counts here.
  void handleKniRootIntf(const Lumo::String& name);
  // The fabric device came up or went down, or its namespace came or went. Up, the L2
  // VXLAN pipeline is built if a proxy or tunnel VLAN asks for it, and the fabric transmit
  // stands; down, both go.
  void handleFabricDevice();
  // Makes the fabric transmit path while the fabric is up, and connects every source that
  // stands to it; each source that comes later calls it again.
  void doMaybeCreateAndAttachFabricTx();
  // The forwarding devices' machine stands exactly while the L2 VXLAN pipeline and the
  // default namespace do.
  void handleFwdDevStateSm();

  const Lumo::Ptr<FabricTx>& fabricTx() const noexcept { return fabricTx_.get(); }
  const Lumo::Ptr<FwdDevStateSm>& fwdDevStateSm() const noexcept { return fwdDevStateSm_.get(); }

  void handleCleanup();

 private:
  // Each source of the fabric transmit path with its own reserved output gate.
  template <typename Visit>
  void forEachFabricSource(Visit&& visit) const;
  void doDeleteFabricTx();

  MfaAgent* agent_;
  Qel::ValueAttr<Lumo::Ptr<FabricTx>, kFabricTx> fabricTx_;
  Qel::InstantiatingAttr<FwdDevStateSm, kFwdDevStateSm, "fwdDevStateSm",
                         Lumo::Ptr<KernelNetInfo::Root const>,
                         Lumo::Ptr<Routing::Hardware::RouteStatus const>,
                         Lumo::Ptr<VekMVxlan::L2MVxlanIn>, Lumo::Ptr<Vek::VekCommonSmData>,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>, Lumo::Ptr<Vek::CmdConfigGroup>>
      fwdDevStateSm_;
  Qel::SmSubscriber<FabricDeviceControl> defaultVrfKniRootDispatch_{
      this, &Qel::reactorDispatch<FabricDeviceControl, KernelNetInfo::Root::kInterfaceByDeviceName,
                                  &FabricDeviceControl::handleKniRootIntf>};
};

}  // namespace VekL3Mcast
