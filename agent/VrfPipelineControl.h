#pragma once

#include "agent/NestedSm_AppRootSm.h"
#include "agent/NestedSm_MfibVrfAdapter.h"
#include "mfib/VekL3MfibModule.h"
#include "mfib/VekL3MfibSm.h"
#include "pipeline/McastAnyRxSet.h"
#include "pipeline/PimRegRx.h"
#include "pipeline/VrfLifecycleListener.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/ByFamily.h"
#include "runtime/state/ByFamilyAttr.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/bridging/Config.h"
#include "runtime/state/kernelmfib/ConfigColl.h"
#include "runtime/state/multicast/MfibVrfDir.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSmColl.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekL3Mcast {

class MfaAgent;

// The pipelines of the VRFs. A VRF forwards once its name has an id, the hosting agent has
// started it (startMfibSm) and its route tables are mounted; the three come in any order and
// each does what it can. Per VRF and family it holds the FIB module, the route machine, the
// PIM register port and the machines that follow the VRF's multicast interfaces and route
// tables; the receive set serves both families. It also owns the VRF's entry in IGMPv2 and
// keeps it on the id the VRF's modules carry, hearing of that id as every other part does.
class VrfPipelineControl : public Qel::StateMachine, public VrfLifecycleListener {
 public:
  enum : Qel::AttributeId {
    kMcastIntfRoot = 1,
    kMcastIntfRoot6,
    kMfibModule,
    kMfib6Module,
    kMfibSm,
    kMfib6Sm,
    kMcastAnyRxSet,
    kPimRegRxVrf,
    kPimRegRx6Vrf,
  };

  explicit VrfPipelineControl(MfaAgent* agent);
  std::string_view typeName() const override { return "VekL3Mcast::VrfPipelineControl"; }

  // Brings up the pipeline of a VRF and family; starting what stands changes nothing.
  void startMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af);
  void stopMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af);

  // ---- The VRF's life, as the agent tells it ----

  // Start and stop are this control's own doing: nothing to follow.
  void vrfStarted(const L3::VrfName&, Lanx::AddressFamily) override {}
  void vrfStopping(const L3::VrfName&, Lanx::AddressFamily) override {}
  // IGMPv2 maps a packet's VRF id back to its VRF: a VRF it serves takes its new id there.
  // One that lost its id keeps the old one, as its other modules do.
  void vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                    Vrf::VrfIdMap::VrfId newId) override;

  // ---- Per-family inputs ----

  const Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl>& mcastIntfRoot(
      Lanx::AddressFamily af) const noexcept {
    return mcastIntfRoot_[af].get();
  }
  // Follows the VRF adapters of a family's route directory, those there now included.
  void mfibVrfDirIs(Lanx::AddressFamily af, const Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>& dir);
  // Follows the kernel limits the agent mounted for a family.
  void kernelMfibConfigCollIs(Lanx::AddressFamily af);

  // ---- Per VRF ----

  Lumo::Ptr<MfibAf> mfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return mfibModule_[af].get(vrf);
  }
  const Qel::HashMap2018<L3::VrfName, Lumo::Ptr<MfibAf>>& mfibModules(
      Lanx::AddressFamily af) const noexcept {
    return mfibModule_[af].members();
  }
  void mfibModuleIs(const Lumo::Ptr<MfibAf>& module);
  void mfibModuleDel(const L3::VrfName& vrf, Lanx::AddressFamily af);
  Lumo::Ptr<VekL3MfibSm> mfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return mfibSm_[af].get(vrf);
  }
  const Qel::HashMap2018<L3::VrfName, Lumo::Ptr<VekL3MfibSm>>& mfibSms(
      Lanx::AddressFamily af) const noexcept {
    return mfibSm_[af].members();
  }
  // The route machine of a VRF and family; it hangs below this control.
  Lumo::Ptr<VekL3MfibSm> mfibSmIs(const L3::VrfName& vrf, Lanx::AddressFamily af, bool oru,
                                  const Lumo::Ptr<MfibAf>& module,
                                  const Lumo::Ptr<Vek::ModuleConfigStatusPair>& pair,
                                  const Lumo::Ptr<Vek::CmdConfigGroup>& group,
                                  const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd,
                                  const Lumo::Ptr<Dov::TaskScheduler>& scheduler);
  void mfibSmDel(const L3::VrfName& vrf, Lanx::AddressFamily af);
  Lumo::Ptr<McastAnyRxSet> mcastAnyRxSet(const L3::VrfName& vrf) const {
    return mcastAnyRxSet_.get(vrf);
  }
  void mcastAnyRxSetIs(const Lumo::Ptr<McastAnyRxSet>& set) {
    mcastAnyRxSet_.is(*this, set->vrfName(), set);
  }
  void mcastAnyRxSetDel(const L3::VrfName& vrf) { mcastAnyRxSet_.del(*this, vrf); }
  Lumo::Ptr<PimRegRx> pimRegRxVrf(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return pimRegRxVrf_[af].get(vrf);
  }
  void pimRegRxVrfIs(const L3::VrfName& vrf, Lanx::AddressFamily af,
                     const Lumo::Ptr<PimRegRx>& port) {
    pimRegRxVrf_[af].is(*this, vrf, port);
  }
  void pimRegRxVrfDel(const L3::VrfName& vrf, Lanx::AddressFamily af) {
    pimRegRxVrf_[af].del(*this, vrf);
  }
  bool mfibVrfAdapterSmHas(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return HN_NestedSm_MfibVrfAdapter_[af].has(vrf);
  }
  bool appRootSmHas(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return HN_NestedSm_AppRootSm_[af].has(vrf);
  }
  void appRootSmDelAll() {
    for (Lanx::AddressFamily af : Lanx::bothFamilies) HN_NestedSm_AppRootSm_[af].smDelAll();
  }

  // ---- Reactors and steps ----

  // Follows the bridge MAC address of the bridging configuration the agent mounted.
  void bridgingConfigIs();
  void handleBridgeMacAddr();
  void handleAppRootSm(Lanx::AddressFamily af, const L3::VrfName& vrf);
  void handleMcastIntf(const L3::VrfName& vrf, Lanx::IntfId intf, Lanx::AddressFamily af);
  void handleMfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af);
  void handleKernelMfibConfig(Lanx::AddressFamily af, const L3::VrfName& vrf);
  void handleMfibVrfAdapter(Lanx::AddressFamily af, const L3::VrfName& vrf);

  // The agent's way down, in its order: stop following the inputs, drop the route
  // machines, then the nested machines.
  void handleCleanup();
  void doDeleteRouteMachines();
  void doDeleteNestedMachines();

 private:
  // Brings up a VRF's FIB module and what it needs, unless it stands.
  void doCreateMfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af,
                          Vrf::VrfIdMap::VrfId id);
  void doCreateMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af);
  // A new FIB module's VRF catches up on the provider side: its ids and its provider
  // interfaces, once the provider side is up and wanted.
  void doCatchUpProviderSide();

  using MfibVrfAdapterSms =
      Qel::NestedSmCollection<VrfPipelineControl, NestedSm_MfibVrfAdapter,
                              &Routing::Multicast::Fib::MfibVrfAdapter::vrfName>;
  using AppRootSms = Qel::NestedSmCollection<VrfPipelineControl, NestedSm_AppRootSm,
                                             &Routing::Multicast::MulticastIntfsAppRootSm::vrfName>;

  MfaAgent* agent_;

  Lanx::ByFamilyAttr<
      Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl>, kMcastIntfRoot>,
      kMcastIntfRoot6>
      mcastIntfRoot_;
  Lanx::ByFamilyAttr<Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<MfibAf>, kMfibModule>,
                     kMfib6Module>
      mfibModule_;
  Lanx::ByFamilyAttr<Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<VekL3MfibSm>, kMfibSm>,
                     kMfib6Sm>
      mfibSm_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<McastAnyRxSet>, kMcastAnyRxSet> mcastAnyRxSet_;
  Lanx::ByFamilyAttr<Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<PimRegRx>, kPimRegRxVrf>,
                     kPimRegRx6Vrf>
      pimRegRxVrf_;
  Lanx::ByFamily<MfibVrfAdapterSms> HN_NestedSm_MfibVrfAdapter_{MfibVrfAdapterSms(this),
                                                                MfibVrfAdapterSms(this)};
  Lanx::ByFamily<AppRootSms> HN_NestedSm_AppRootSm_{AppRootSms(this), AppRootSms(this)};

  // Reactors, declared last so that they go before what they watch.
  Qel::SmSubscriber<VrfPipelineControl> bridgingConfigDispatch_{
      this, &Qel::reactorDispatch<VrfPipelineControl, Bridging::Config::kBridgeMacAddr,
                                  &VrfPipelineControl::handleBridgeMacAddr>};
  Lanx::ByFamilyReactor<VrfPipelineControl,
                        Routing::Multicast::MulticastIntfsAppRootSmColl::kVrfSm,
                        &VrfPipelineControl::handleAppRootSm>
      mcastIntfRootDispatch_{this};
  Lanx::ByFamilyReactor<VrfPipelineControl, Routing::KernelMfib::ConfigColl::kConfig,
                        &VrfPipelineControl::handleKernelMfibConfig>
      kernelMfibConfigCollDispatch_{this};
  Lanx::ByFamilyReactor<VrfPipelineControl, Routing::Multicast::Fib::MfibVrfDir::kVrfAdapter,
                        &VrfPipelineControl::handleMfibVrfAdapter>
      mfibVrfDirDispatch_{this};
};

}  // namespace VekL3Mcast
