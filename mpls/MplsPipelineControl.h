#pragma once

#include <functional>
#include <string_view>

#include "mpls/MMplsInSm.h"
#include "mpls/MMplsOutSm.h"
#include "pipeline/VekL3McastModuleManager.h"
#include "pipeline/VrfLifecycleListener.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/MvpnIntfStatus.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/vrf/VrfIdMapStatus.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekMMpls {

// The multicast VPN pipeline. A VRF takes part when the MVPN interface status lists its id,
// the id has a name, and the VRF is started: it then gets its decapsulation module
// "MMplsOut_<vrf>", fed by its receive paths' metadata modules and feeding its FIB
// modules, and the agent gets the one encapsulation module, fed by the demultiplexer and
// feeding the fabric. Each create walks everything that stands and connects what is
// missing, so the graph is the same whatever order the status, the names and the starts
// come in; what goes takes its part down in the reverse order.
//
// The agent makes it once the MVPN inputs are mounted and one of the MVPN toggles is on,
// and registers it as a VRF-lifecycle listener.
class MplsPipelineControl final : public Qel::StateMachine,
                                  public VekL3Mcast::VrfLifecycleListener {
 public:
  enum : Qel::AttributeId { kMMplsInModuleSm = 1, kMvpnVrf };
  // The family of the provider network: the one encapsulation module serves the VRFs of
  // both families.
  static constexpr Lanx::AddressFamily tunnelAf = Lanx::AddressFamily::ipv4;
  // The demultiplexer's reserved output gate toward the encapsulation module.
  static constexpr std::uint32_t txDemuxerMplsGate = 1;
  // The encapsulation module's output gate toward the fabric.
  static constexpr std::uint32_t mMplsInFabricGate = 0;

  MplsPipelineControl(Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const> mvpnIntfStatus,
                      Lumo::Ptr<Vrf::VrfIdMap::Status const> vrfIdToNameStatus,
                      Lumo::Ptr<VekL3Mcast::McastModuleManager> mcastModuleManager,
                      Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                      Lumo::Ptr<Vek::VekCommonSmData> vekcsd);
  std::string_view typeName() const override { return "VekMMpls::MplsPipelineControl"; }

  // What connects the fabric transmit path to every source that stands; run once the
  // encapsulation module is made. Nothing until the agent sets it.
  void fabricTxAttachIs(std::function<void()> attach) { fabricTxAttach_ = std::move(attach); }

  // ---- Reactors and their callers ----

  void handleInitialized() override;
  // Every VRF id of the status, and every one that had a pipeline.
  void handleMvpnIntfStatus();
  void handleMvpnIntfStatus(Vrf::VrfIdMap::VrfId vrfId);
  // An id's name came or went.
  void handleVrfIdToName(Vrf::VrfIdMap::VrfId vrfId) { handleMvpnIntfStatus(vrfId); }

  void vrfStarted(const L3::VrfName& vrf, Lanx::AddressFamily af) override;
  void vrfStopping(const L3::VrfName& vrf, Lanx::AddressFamily af) override;
  void vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                    Vrf::VrfIdMap::VrfId newId) override;

  // ---- Steps ----

  void doCreateL3MMplsPipeline(const L3::VrfName& vrfName);
  void doDeleteL3MMplsPipeline(const L3::VrfName& vrfName);
  void doCreateL3MMplsOutModule(const L3::VrfName& vrfName);
  void doDeleteL3MMplsOutModule(const L3::VrfName& vrfName);
  // The demultiplexer's reserved gate to the encapsulation module, when both stand.
  void doConnectTxDemuxerToL3MMpls(Lanx::AddressFamily af);
  // True while some VRF has its decapsulation module.
  bool isL3MMplsOutPipelineActive() const;
  // Takes every VRF's part down, and the encapsulation module with the last.
  void handleCleanup();

  // ---- Attributes ----

  const Lumo::Ptr<MMplsInSm>& mMplsInModuleSm() const noexcept { return mMplsInModuleSm_.get(); }
  // The encapsulation module, null while none stands.
  Lumo::Ptr<MMplsIn> mMplsInModule() const {
    return mMplsInModuleSm() ? mMplsInModuleSm()->module() : nullptr;
  }
  Lumo::Ptr<MMplsInSm> mMplsInModuleSmIs(Lanx::AddressFamily af,
                                         const Lumo::Ptr<Vek::ModuleConfigStatusPair>& pair,
                                         const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
    return mMplsInModuleSm_.is(*this, af, pair, vekcsd);
  }
  void mMplsInModuleSmDel() { mMplsInModuleSm_.del(*this); }
  // The VRF's decapsulation machine, held by its container.
  Lumo::Ptr<VekMMplsOut::MMplsOutSm> mMplsOutSm(const L3::VrfName& vrfName) const;
  // The VRF each id of the status was last seen to name.
  L3::VrfName mvpnVrf(Vrf::VrfIdMap::VrfId vrfId) const { return mvpnVrf_.get(vrfId); }

 private:
  // The name of an id now; empty for none, and for a name no VRF can have.
  L3::VrfName vrfIdToName(Vrf::VrfIdMap::VrfId vrfId) const;
  void doCorruptionDetected(std::string_view message) const;

  const Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const> mvpnIntfStatus_;
  const Lumo::Ptr<Vrf::VrfIdMap::Status const> vrfIdToNameStatus_;
  const Lumo::Ptr<VekL3Mcast::McastModuleManager> mcastModuleManager_;
  const Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair_;
  const Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  std::function<void()> fabricTxAttach_;
  Qel::InstantiatingAttr<MMplsInSm, kMMplsInModuleSm, "mMplsInModuleSm", Lanx::AddressFamily,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>, Lumo::Ptr<Vek::VekCommonSmData>>
      mMplsInModuleSm_;
  Qel::HashCollectionAttr<Vrf::VrfIdMap::VrfId, L3::VrfName, kMvpnVrf> mvpnVrf_;

  Qel::SmSubscriber<MplsPipelineControl> mvpnIntfStatusDispatch_{
      this, &Qel::reactorDispatch<
                MplsPipelineControl, Routing::Multicast::MvpnIntfStatus::kIntf,
                static_cast<void (MplsPipelineControl::*)(Vrf::VrfIdMap::VrfId)>(
                    &MplsPipelineControl::handleMvpnIntfStatus)>};
  Qel::SmSubscriber<MplsPipelineControl> vrfIdToNameStatusDispatch_{
      this, &Qel::reactorDispatch<MplsPipelineControl, Vrf::VrfIdMap::Status::kVrfEntry,
                                  &MplsPipelineControl::handleVrfIdToName>};
};

}  // namespace VekMMpls
