#pragma once

#include <string_view>

#include "agent/AgentVxlanOwner.h"
#include "agent/FabricDeviceControl.h"
#include "agent/MfibDirSm.h"
#include "agent/MfibWorkerTasks.h"
#include "agent/VrfIdTracker.h"
#include "agent/VrfLifecycleListeners.h"
#include "agent/VrfNamespaces.h"
#include "agent/VrfPipelineControl.h"
#include "intf/VekL3McastIntfSm.h"
#include "mfib/VekL3MfibModule.h"
#include "mpls/MplsPipelineControl.h"
#include "pipeline/MfaInputs.h"
#include "pipeline/TxDemuxerModuleProgrammer.h"
#include "pipeline/VekL3McastModuleManager.h"
#include "pipeline/VekMcastL3IntfSm.h"
#include "runtime/cordex/EntityManager.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "vxlan/L3VxlanPipeline.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/ByFamily.h"
#include "runtime/state/ByFamilyAttr.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/MfibDir.h"
#include "runtime/state/multicast/MfibVrfDir.h"
#include "runtime/state/vrf/VrfNameToIdCollection.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"
#include "runtime/vek/ManagementSm.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/ModuleStatus.h"
#include "runtime/vek/VekCommonSmData.h"
#include "vxlan/VxlanPipeline.h"
#include "vxlan/VekMVxlanVtepSm.h"

namespace VekL3Mcast {

// The root of the multicast control side. It holds every input of central state, mounts
// what it needs in a fixed order, owns the pipeline and, once all stands, lets the daemon's
// workers run. The work is done by one part per concern, each made here and handed what it
// reads: the VRF ids (VrfIdTracker), the VRFs' namespace state (VrfNamespaces), the VRFs'
// pipelines (VrfPipelineControl), the worker tasks (MfibWorkerTasks) and the devices of the
// default namespace (FabricDeviceControl). What lives beside a
// VRF's pipeline registers as a VRF-lifecycle listener.
//
// With `oru` false the agent is the reduced one: FIB and IGMPv2 modules only, hardware VRF
// ids, worker tasks on every worker, and no daemon-level commands of its own.
class MfaAgent : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId {
    kEntityManager = 1,
    kConfigStatusPair,
    kGlobalCmdConfig,
    kVekcsd,
    kManagementSm,
    kVrfNameToIdColl,
    kMcastModuleManager,
    kVrfIdTracker,
    kVrfNamespaces,
    kMfibWorkerTasks,
    kVrfPipelineControl,
    kFabricDeviceControl,
    kMfibDirSm,
    kMfib6DirSm,
    kMfibVrfDir,
    kMfib6VrfDir,
    kCmdConfigGroup,
    kTxDemuxerL3IntfSm,
    kMcastIntfModuleSm,
    kVxlanVtepVlanStatusSm,
    kInitialized,
    kMvxlanInitialized,
    kMMplsInitialized,
    kMplsPipelineControl,
    kTxDemuxerModuleProgrammer,
    kVxlanPipeline,
  };
  // The name of the agent's own group of daemon-level commands.
  static constexpr std::string_view cmdConfigGroupName = "mfaAgent";
  static constexpr std::string_view intfVlanIdTableName = "intfVlanIdTable";

  MfaAgent(Lumo::Ptr<Cordex::EntityManager> entityManager,
           Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
           Lumo::Ptr<Vek::GrpcGlobalCmdConfig> globalCmdConfig,
           Lumo::Ptr<Vek::VekCommonSmData> vekcsd, Lumo::Ptr<Vek::ManagementSm> managementSm,
           Lumo::Ptr<VrfNameToIdCollection> vrfNameToIdColl, bool oru);
  ~MfaAgent() override;
  std::string_view typeName() const override { return "VekL3Mcast::MfaAgent"; }

  // ---- The hosting agent's operations ----

  // Brings up the pipeline of a VRF and family; a call before the agent is initialized is
  // lost. Starting what stands changes nothing.
  void startMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af) {
    vrfPipelineControl()->startMfibSm(vrf, af);
  }
  void stopMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af) {
    vrfPipelineControl()->stopMfibSm(vrf, af);
  }
  // The FIB module of a VRF and family; null while the agent is not initialized.
  Lumo::Ptr<MfibAf> getMfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af) const;

  // ---- State ----

  bool oru() const noexcept { return oru_; }
  bool initialized() const noexcept { return initialized_.get(); }
  bool mvxlanInitialized() const noexcept { return mvxlanInitialized_.get(); }
  bool mMplsInitialized() const noexcept { return mMplsInitialized_.get(); }
  void initializedIsForTest(bool initialized) { initialized_.is(*this, initialized); }

  // What the hosting agent handed over.
  const Lumo::Ptr<Cordex::EntityManager>& entityManager() const noexcept {
    return entityManager_.get();
  }
  const Lumo::Ptr<Vek::ModuleConfigStatusPair>& configStatusPair() const noexcept {
    return configStatusPair_.get();
  }
  const Lumo::Ptr<Vek::GrpcGlobalCmdConfig>& globalCmdConfig() const noexcept {
    return globalCmdConfig_.get();
  }
  const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd() const noexcept { return vekcsd_.get(); }
  const Lumo::Ptr<Vek::ManagementSm>& managementSm() const noexcept {
    return managementSm_.get();
  }
  const Lumo::Ptr<VrfNameToIdCollection>& vrfNameToIdColl() const noexcept {
    return vrfNameToIdColl_.get();
  }

  // The mounted inputs, for every part that reads them; complete once initialized.
  const MfaInputs& inputs() const noexcept { return inputs_; }
  // The parts of the agent that mount or follow an input write it here.
  MfaInputs& inputsForMount() noexcept { return inputs_; }

  // ---- The concerns ----

  const Lumo::Ptr<VrfIdTracker>& vrfIdTracker() const noexcept { return vrfIdTracker_.get(); }
  const Lumo::Ptr<VrfNamespaces>& vrfNamespaces() const noexcept { return vrfNamespaces_.get(); }
  const Lumo::Ptr<MfibWorkerTasks>& mfibWorkerTasks() const noexcept {
    return mfibWorkerTasks_.get();
  }
  const Lumo::Ptr<VrfPipelineControl>& vrfPipelineControl() const noexcept {
    return vrfPipelineControl_.get();
  }
  const Lumo::Ptr<FabricDeviceControl>& fabricDeviceControl() const noexcept {
    return fabricDeviceControl_.get();
  }
  // The routed half of the VXLAN pipeline; made once the VXLAN inputs are mounted.
  const Lumo::Ptr<VekMVxlan::L3VxlanPipeline>& l3VxlanPipeline() const noexcept {
    return l3VxlanPipeline_;
  }
  // Who hears of each VRF's start, stop and id change; a listener registers once made.
  VrfLifecycleListeners& vrfLifecycleListeners() noexcept { return vrfLifecycleListeners_; }
  void vrfLifecycleListenerIs(VrfLifecycleListener& listener) {
    vrfLifecycleListeners_.listenerIs(listener);
  }
  void vrfLifecycleListenerDel(VrfLifecycleListener& listener) {
    vrfLifecycleListeners_.listenerDel(listener);
  }
  // Where the replies to a registration with the daemon find what to do.
  RegistrationReplyTable& registrationReplies() noexcept {
    return mfibWorkerTasks()->registrationReplies();
  }

  // The multicast VPN pipeline; made once the MVPN inputs are mounted, so only while one
  // of the MVPN toggles is on.
  const Lumo::Ptr<VekMMpls::MplsPipelineControl>& mplsPipelineControl() const noexcept {
    return mplsPipelineControl_.get();
  }
  // The VXLAN pipeline control; made once the VXLAN and proxy inputs are mounted, so only
  // in the full agent.
  const Lumo::Ptr<VekMVxlan::VxlanPipeline>& vxlanPipeline() const noexcept {
    return vxlanPipeline_.get();
  }
  // Keeps the demultiplexer's provider VLAN of each VRF id; made by connectTxDemuxerModule.
  const Lumo::Ptr<VekTxDemuxer::TxDemuxerModuleProgrammer>& txDemuxerModuleProgrammer()
      const noexcept {
    return txDemuxerModuleProgrammer_.get();
  }
  Lumo::Ptr<VekTxDemuxer::TxDemuxerModuleProgrammer> txDemuxerModuleProgrammerIs(
      const Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const>& intfStatus,
      const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& demuxModule) {
    return txDemuxerModuleProgrammer_.is(*this, intfStatus, demuxModule);
  }
  void txDemuxerModuleProgrammerDel() { txDemuxerModuleProgrammer_.del(*this); }
  // Whether the demultiplexer feeds an egress beyond the VRFs' interfaces yet: the fabric
  // or the MPLS encapsulation, each through its reserved gate.
  bool txDemuxerEgressConnected() const;
  // Connects the demultiplexer to what stands of the egresses beyond the VRFs, and makes
  // the programmer of its provider VLANs when an MVPN toggle asks for it.
  void connectTxDemuxerModule();
  // Makes the demultiplexer's programmer when an MVPN toggle asks for it and its input is
  // mounted; whatever first connects the demultiplexer to an egress calls it.
  void doMaybeCreateTxDemuxerProgrammer();

  // ---- Owned objects ----

  const Lumo::Ptr<McastModuleManager>& mcastModuleManager() const noexcept {
    return mcastModuleManager_.get();
  }
  const Lumo::Ptr<Vek::CmdConfigGroup>& cmdConfigGroup() const noexcept {
    return cmdConfigGroup_.get();
  }
  // The agent's group of daemon-level commands: the group of that name that
  // globalCmdConfig has, or a new one registered there.
  void cmdConfigGroupIs(const Lumo::String& name);
  const Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>& mfibVrfDir(
      Lanx::AddressFamily af) const noexcept {
    return mfibVrfDir_[af].get();
  }
  const Lumo::Ptr<MfibDirSm>& mfibDirSm(Lanx::AddressFamily af) const noexcept {
    return mfibDirSm_[af].get();
  }
  // The multicast interface tracker; the full agent only.
  const Lumo::Ptr<McastIntfModuleSm>& mcastIntfModuleSm() const noexcept {
    return mcastIntfModuleSm_.get();
  }
  // Keeps the VTEP VLAN status equal to the flood sets, from the mount of the flood sets on.
  const Lumo::Ptr<VekMVxlan::VxlanVtepVlanStatusSm>& vxlanVtepVlanStatusSm() const noexcept {
    return vxlanVtepVlanStatusSm_.get();
  }
  const Lumo::Ptr<VekMcastL3IntfSm>& txDemuxerL3IntfSm() const noexcept {
    return txDemuxerL3IntfSm_.get();
  }

  // ---- Reactors and steps ----

  void handleInitialized() override;
  // Traces every error record the daemon sent back, once the agent is initialized.
  void handleMfaGrpcError();
  // Lets the daemon's workers run; the full agent only.
  void resumeWorkers();
  void handleDelete();

  // Every mount of the agent goes through here, so that the trace shows them in order.
  template <typename Mounter, typename MountInfo>
  static void doMountTable(Mounter& mounter, std::string_view path, std::string_view typeName,
                           const MountInfo& info) {
    VEK_TRACE(debug, "Mounting {} as {}", path, typeName);
    mounter.doMount(path, typeName, info);
  }

 private:
  // What only the full agent reads: the command group, bridging, VXLAN, snooping and
  // hardware route inputs, then the provider side's if one of its toggles is on.
  void doMountFullAgentInputs(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem);
  // The provider side (MVPN over MPLS): the software id table, the provider interfaces and
  // the label tables; mMplsInitialized is set once they stand.
  void doMountProviderInputs(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem);
  // The VXLAN pipeline control, from the inputs that stand once the proxy tables are
  // mounted; it joins the VRFs' lifecycle.
  void doCreateVxlanPipeline();
  // The routed half of the VXLAN pipeline, once the VXLAN inputs stand.
  void doCreateL3VxlanPipeline();
  // The multicast interfaces, route directory and kernel limits of a family; both agents.
  void doGetFamilyInputs(Lanx::AddressFamily af);
  // Binds the reactors that follow the status queues; binding runs them.
  void qel_ConfigStatusPair_ModuleStatusInIs(const Lumo::Ptr<Vek::ModuleStatus>& status);

  const bool oru_;
  MfaInputs inputs_;
  VrfLifecycleListeners vrfLifecycleListeners_;
  Lumo::Ptr<VekMVxlan::L3VxlanPipeline> l3VxlanPipeline_;

  Qel::ValueAttr<Lumo::Ptr<Cordex::EntityManager>, kEntityManager> entityManager_;
  Qel::ValueAttr<Lumo::Ptr<Vek::ModuleConfigStatusPair>, kConfigStatusPair> configStatusPair_;
  Qel::ValueAttr<Lumo::Ptr<Vek::GrpcGlobalCmdConfig>, kGlobalCmdConfig> globalCmdConfig_;
  Qel::ValueAttr<Lumo::Ptr<Vek::VekCommonSmData>, kVekcsd> vekcsd_;
  Qel::ValueAttr<Lumo::Ptr<Vek::ManagementSm>, kManagementSm> managementSm_;
  Qel::ValueAttr<Lumo::Ptr<VrfNameToIdCollection>, kVrfNameToIdColl> vrfNameToIdColl_;

  Qel::ValueAttr<Lumo::Ptr<McastModuleManager>, kMcastModuleManager> mcastModuleManager_;
  Qel::InstantiatingAttr<VrfPipelineControl, kVrfPipelineControl, "vrfPipelineControl",
                         MfaAgent*>
      vrfPipelineControl_;
  Qel::InstantiatingAttr<VrfIdTracker, kVrfIdTracker, "vrfIdTracker", MfaAgent*> vrfIdTracker_;
  Qel::InstantiatingAttr<VrfNamespaces, kVrfNamespaces, "vrfNamespaces", MfaAgent*>
      vrfNamespaces_;
  Qel::InstantiatingAttr<MfibWorkerTasks, kMfibWorkerTasks, "mfibWorkerTasks", MfaAgent*>
      mfibWorkerTasks_;
  Qel::InstantiatingAttr<FabricDeviceControl, kFabricDeviceControl, "fabricDeviceControl",
                         MfaAgent*>
      fabricDeviceControl_;
  Lanx::ByFamilyAttr<Qel::InstantiatingAttr<MfibDirSm, kMfibDirSm, "mfibDirSm",
                                             Lumo::Ptr<Routing::Multicast::Fib::MfibDir const>,
                                             Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>,
                                             Lumo::Ptr<Cordex::EntityManager>>,
                     kMfib6DirSm>
      mfibDirSm_;
  Lanx::ByFamilyAttr<Qel::InstantiatingAttr<Routing::Multicast::Fib::MfibVrfDir, kMfibVrfDir,
                                             "mfibVrfDir", Lanx::AddressFamily>,
                     kMfib6VrfDir>
      mfibVrfDir_;
  Qel::ValueAttr<Lumo::Ptr<Vek::CmdConfigGroup>, kCmdConfigGroup> cmdConfigGroup_;
  Qel::InstantiatingAttr<VekMcastL3IntfSm, kTxDemuxerL3IntfSm, "txDemuxerL3IntfSm",
                         Lumo::Ptr<Vek::VekCommonSmData>, Lumo::Ptr<McastModuleManager>>
      txDemuxerL3IntfSm_;
  Qel::InstantiatingAttr<McastIntfModuleSm, kMcastIntfModuleSm, "mcastIntfModuleSm",
                         Lumo::Ptr<McastModuleManager>, Lumo::Ptr<Vek::VekCommonSmData>,
                         Lumo::Ptr<Vek::CmdConfigGroup>, Lumo::Ptr<McastIntfModuleSm::Roots const>,
                         Lumo::Ptr<McastIntfModuleSm::Roots const>,
                         Lumo::Ptr<Interface::VrfDeviceIntfStatusDir const>,
                         Lumo::Ptr<IntfVlanId::Table const>, Lumo::Ptr<Qel::Clock const>>
      mcastIntfModuleSm_;
  Qel::InstantiatingAttr<VekMVxlan::VxlanVtepVlanStatusSm, kVxlanVtepVlanStatusSm,
                         "vxlanVtepVlanStatusSm",
                         Lumo::Ptr<Routing::Multicast::Evpn::OismFloodSet const>,
                         Lumo::Ptr<VekMVxlan::VxlanVtepVlanStatus>, Lumo::Ptr<Dov::TaskScheduler>>
      vxlanVtepVlanStatusSm_;

  Qel::InstantiatingAttr<VekMMpls::MplsPipelineControl, kMplsPipelineControl,
                         "mplsPipelineControl",
                         Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const>,
                         Lumo::Ptr<Vrf::VrfIdMap::Status const>, Lumo::Ptr<McastModuleManager>,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>, Lumo::Ptr<Vek::VekCommonSmData>>
      mplsPipelineControl_;
  Qel::InstantiatingAttr<VekTxDemuxer::TxDemuxerModuleProgrammer, kTxDemuxerModuleProgrammer,
                         "txDemuxerModuleProgrammer",
                         Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const>,
                         Lumo::Ptr<VekTxDemuxer::TxDemuxer>>
      txDemuxerModuleProgrammer_;
  AgentVxlanOwner vxlanOwner_{this};
  Qel::InstantiatingAttr<VekMVxlan::VxlanPipeline, kVxlanPipeline, "vxlanPipeline",
                         VekMVxlan::VxlanPipelineOwner*, const MfaInputs*,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>, Lumo::Ptr<Vek::CmdConfigGroup>,
                         Lumo::Ptr<Vek::VekCommonSmData>, Lumo::Ptr<Lanx::PamRxBuf const>>
      vxlanPipeline_;
  Qel::ValueAttr<bool, kInitialized> initialized_;
  Qel::ValueAttr<bool, kMvxlanInitialized> mvxlanInitialized_;
  Qel::ValueAttr<bool, kMMplsInitialized> mMplsInitialized_;

  // Reactors, declared last so that they go before what they watch.
  Qel::SmSubscriber<MfaAgent> moduleStatusErrorReactor_{
      this, &Qel::reactorDispatch<MfaAgent, Vek::ModuleStatus::errorQueueAttrId,
                                  &MfaAgent::handleMfaGrpcError>};
};

}  // namespace VekL3Mcast
