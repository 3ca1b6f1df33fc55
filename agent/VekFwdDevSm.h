#pragma once

#include <string_view>

#include "agent/FwdDevState.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"
#include "runtime/state/multicast/Fwd0RoutingEthType.h"
#include "runtime/state/multicast/HwRouteStatus.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"
#include "vxlan/VekL2MVxlanInModule.h"

namespace VekL3Mcast {

// Follows the forwarding devices of the default VRF: the hardware route status names the
// device that takes each IP ether type's routed packets, and each named device that the
// default namespace has gets a transmit-only port and its transmit module, fed by the L2
// VXLAN encapsulation module. A mapping that moves to another device moves the port path
// with it. The machine stands only while that encapsulation module does, and its port
// paths go with it.
class FwdDevStateSm : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId { kFwdDevState = 1, kDefaultVrfRouteStatus };

  FwdDevStateSm(Lumo::Ptr<KernelNetInfo::Root const> defaultVrfKniRoot,
                Lumo::Ptr<Routing::Hardware::RouteStatus const> routingHwRouteStatus,
                Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanIn, Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup);
  ~FwdDevStateSm() override;
  std::string_view typeName() const override { return "VekL3Mcast::FwdDevStateSm"; }

  const Lumo::Ptr<FwdDevState>& fwdDevState() const noexcept { return fwdDevState_.get(); }
  const Lumo::Ptr<VekMVxlan::L2MVxlanIn>& l2VxlanIn() const noexcept { return l2VxlanIn_; }
  const Lumo::Ptr<KernelNetInfo::Root const>& defaultVrfKniRoot() const noexcept {
    return defaultVrfKniRoot_;
  }
  const Lumo::Ptr<Routing::Hardware::VrfStatus const>& defaultVrfRouteStatus() const noexcept {
    return defaultVrfRouteStatus_.get();
  }

  void handleInitialized() override;
  // Only the default VRF's status counts.
  void handleRoutingHwVrfStatus(const L3::VrfName& vrf);
  // A device of the default namespace changed; only forwarding devices count.
  void handleKniRootIntf(const Lumo::String& name);
  void handleFwdIntfKernelState(const Lumo::String& name);
  void handleEthTypeMapping(Routing::Fwd0RoutingEthType ethType);
  // Takes every port path down.
  void handleCleanup();

 private:
  void createFwdIntfModule(const Lumo::String& name);
  void deleteFwdIntfModule(const Lumo::String& name);
  // The encapsulation module has one gate towards a forwarding device: the first device
  // that stands takes it.
  void doConnectFwdIntf(const Lumo::Ptr<McastIntf>& intf);
  bool kernelHasDevice(const Lumo::String& name) const;
  void handleEthTypeMappingDispatch(const Routing::Fwd0RoutingEthType& ethType) {
    handleEthTypeMapping(ethType);
  }

  const Lumo::Ptr<KernelNetInfo::Root const> defaultVrfKniRoot_;
  const Lumo::Ptr<Routing::Hardware::RouteStatus const> routingHwRouteStatus_;
  const Lumo::Ptr<VekMVxlan::L2MVxlanIn> l2VxlanIn_;
  const Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  const Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair_;
  const Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup_;
  Qel::InstantiatingAttr<FwdDevState, kFwdDevState, "fwdDevState"> fwdDevState_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Hardware::VrfStatus const>, kDefaultVrfRouteStatus>
      defaultVrfRouteStatus_;

  // Reactors, declared last so that they go before what they watch.
  Qel::SmSubscriber<FwdDevStateSm> kniRootDispatch_{
      this, &Qel::reactorDispatch<FwdDevStateSm, KernelNetInfo::Root::kInterfaceByDeviceName,
                                  &FwdDevStateSm::handleKniRootIntf>};
  Qel::SmSubscriber<FwdDevStateSm> routeStatusDispatch_{
      this, &Qel::reactorDispatch<FwdDevStateSm, Routing::Hardware::RouteStatus::kVrfStatus,
                                  &FwdDevStateSm::handleRoutingHwVrfStatus>};
  Qel::SmSubscriber<FwdDevStateSm> vrfStatusDispatch_{
      this, &Qel::reactorDispatch<FwdDevStateSm, Routing::Hardware::VrfStatus::kFwd0EthTypeEntry,
                                  &FwdDevStateSm::handleEthTypeMappingDispatch>};
};

}  // namespace VekL3Mcast
