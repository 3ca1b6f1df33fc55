#pragma once

#include <google/protobuf/any.pb.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "agent/MfibDirSm.h"
#include "agent/NestedSm_AppRootSm.h"
#include "agent/NestedSm_MfibVrfAdapter.h"
#include "intf/VekL3McastIntfSm.h"
#include "mfib/VekL3MfibModule.h"
#include "mfib/VekL3MfibSm.h"
#include "pipeline/McastAnyRxSet.h"
#include "pipeline/PimRegRx.h"
#include "pipeline/VekL3McastModuleManager.h"
#include "pipeline/VekMcastL3IntfSm.h"
#include "runtime/cordex/EntityManager.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/MvpnIntfStatus.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/bridging/Config.h"
#include "runtime/state/bridging/HwCapabilities.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "runtime/state/intf/IntfStatusDir.h"
#include "runtime/state/intf/IntfStatusManagerRoot.h"
#include "runtime/state/intf/IntfVlanIdTable.h"
#include "runtime/state/intf/VrfDeviceIntfStatusDir.h"
#include "runtime/state/intf/VrfStatusLocalDir.h"
#include "runtime/state/irb/IgmpProxyStatus.h"
#include "runtime/state/irb/McastIrbStatus.h"
#include "runtime/state/kernelmfib/ConfigColl.h"
#include "runtime/state/kernelmfib/StatusColl.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"
#include "runtime/state/multicast/HwRouteStatus.h"
#include "runtime/state/multicast/IpTunnelDecapConfig.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/multicast/MfibDir.h"
#include "runtime/state/multicast/MfibVrfDir.h"
#include "runtime/state/multicast/MulticastIntfsAppDir.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSmColl.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vrf/NameToIdMapWrapper.h"
#include "runtime/state/vrf/VrfIdMapStatus.h"
#include "runtime/state/vrf/VrfNameToIdCollection.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"
#include "runtime/state/vxlan/VtiStatusDir.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"
#include "runtime/vek/ManagementSm.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/ModuleStatus.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekL3Mcast {

// The root of the multicast control side. It holds every input of central state, mounts
// what it needs, owns the pipeline and, once all stands, lets the daemon's workers run.
// Per VRF it brings a pipeline up when the hosting agent asks (startMfibSm) and takes it
// down again (stopMfibSm).
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
    kIntfStatusManagerRoot,
    kIntfVlanIdTable,
    kVrfDeviceIntfStatusDir,
    kMcastIntfRoot,
    kMcastIntfRoot6,
    kMfibDirSm,
    kMfib6DirSm,
    kMfibVrfDir,
    kMfib6VrfDir,
    kCmdConfigGroup,
    kMfibModule,
    kMfib6Module,
    kMfibSm,
    kMfib6Sm,
    kMcastAnyRxSet,
    kPimRegRxVrf,
    kPimRegRx6Vrf,
    kTxDemuxerL3IntfSm,
    kAllIntfStatusDir,
    kAllIntfStatusLocalDir,
    kAllVrfStatusLocal,
    kBridgingConfig,
    kHwCapabilities,
    kVrfNameStatus,
    kHwVrfIdToNameStatus,
    kVrfIdToNameStatus,
    kMvpnIntfStatus,
    kKernelMfibConfigColl,
    kKernelMfibConfigColl6,
    kKernelMfibStatusColl,
    kKernelMfibStatusColl6,
    kMulticastIntfsAppDir,
    kMulticast6IntfsAppDir,
    kMfibDir,
    kMfib6Dir,
    kDefaultVrfKniRoot,
    kRoutingHwRouteStatus,
    kOismFloodSet,
    kTunnelFwdingStatus4,
    kTunnelFwdingStatus6,
    kTunDecapConfig4,
    kTunDecapConfig6,
    kRemoteVniToVlanStaticStatus,
    kRemoteVniToVlanIrbStatus,
    kMcastIrbStatus4,
    kMcastIrbStatus6,
    kIgmpProxyStatus,
    kMldProxyStatus,
    kVtiStatusDir,
    kGmpVlanGroupMembershipStatus4,
    kGmpVlanGroupMembershipStatus6,
    kInitialized,
    kMvxlanInitialized,
    kMMplsInitialized,
    kMcastIntfModuleSm,
  };
  // The name of the agent's own group of daemon-level commands.
  static constexpr std::string_view cmdConfigGroupName = "mfaAgent";
  static constexpr std::string_view vrfDeviceIntfStatusDirName = "vdisd";
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
  void startMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af);
  void stopMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af);
  // The FIB module of a VRF and family; null while the agent is not initialized.
  Lumo::Ptr<MfibAf> getMfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af) const;

  // ---- State ----

  bool oru() const noexcept { return oru_; }
  bool initialized() const noexcept { return initialized_.get(); }
  bool mvxlanInitialized() const noexcept { return mvxlanInitialized_.get(); }
  bool mMplsInitialized() const noexcept { return mMplsInitialized_.get(); }
  void initializedIsForTest(bool initialized) { initialized_.is(*this, initialized); }

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

  // Owned objects.
  const Lumo::Ptr<McastModuleManager>& mcastModuleManager() const noexcept {
    return mcastModuleManager_.get();
  }
  const Lumo::Ptr<Interface::IntfStatusManagerRoot>& intfStatusManagerRoot() const noexcept {
    return intfStatusManagerRoot_.get();
  }
  Lumo::Ptr<Interface::IntfStatusManagerRoot> intfStatusManagerRootIs(
      const Lumo::Ptr<Interface::IntfStatusDir const>& all,
      const Lumo::Ptr<Interface::IntfStatusDir const>& local, bool filterByNetNs) {
    return intfStatusManagerRoot_.is(*this, all, local, filterByNetNs);
  }
  const Lumo::Ptr<IntfVlanId::Table const>& intfVlanIdTable() const noexcept {
    return intfVlanIdTable_.get();
  }
  // Opens the interface VLAN table of that name.
  void intfVlanIdTableIs(std::string_view name);
  const Lumo::Ptr<Interface::VrfDeviceIntfStatusDir>& vrfDeviceIntfStatusDir() const noexcept {
    return vrfDeviceIntfStatusDir_.get();
  }
  Lumo::Ptr<Interface::VrfDeviceIntfStatusDir> vrfDeviceIntfStatusDirIs(const Lumo::String& name) {
    return vrfDeviceIntfStatusDir_.is(*this, name);
  }
  const Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl>& mcastIntfRoot(
      Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? mcastIntfRoot6_.get() : mcastIntfRoot_.get();
  }
  const Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>& mfibVrfDir(
      Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? mfib6VrfDir_.get() : mfibVrfDir_.get();
  }
  Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir> mfibVrfDirIs() {
    return mfibVrfDir_.is(*this, Lanx::AddressFamily::ipv4);
  }
  Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir> mfib6VrfDirIs() {
    return mfib6VrfDir_.is(*this, Lanx::AddressFamily::ipv6);
  }
  const Lumo::Ptr<MfibDirSm>& mfibDirSm(Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? mfib6DirSm_.get() : mfibDirSm_.get();
  }
  Lumo::Ptr<MfibDirSm> mfibDirSmIs(
      const Lumo::Ptr<Routing::Multicast::Fib::MfibDir const>& dir,
      const Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>& vrfDir,
      const Lumo::Ptr<Cordex::EntityManager>& entityManager) {
    return mfibDirSm_.is(*this, dir, vrfDir, entityManager);
  }
  Lumo::Ptr<MfibDirSm> mfib6DirSmIs(
      const Lumo::Ptr<Routing::Multicast::Fib::MfibDir const>& dir,
      const Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>& vrfDir,
      const Lumo::Ptr<Cordex::EntityManager>& entityManager) {
    return mfib6DirSm_.is(*this, dir, vrfDir, entityManager);
  }
  const Lumo::Ptr<Vek::CmdConfigGroup>& cmdConfigGroup() const noexcept {
    return cmdConfigGroup_.get();
  }
  // The agent's group of daemon-level commands: the group of that name that
  // globalCmdConfig has, or a new one registered there.
  void cmdConfigGroupIs(const Lumo::String& name);

  // Per VRF.
  Lumo::Ptr<MfibAf> mfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return af == Lanx::AddressFamily::ipv6 ? mfib6Module_.get(vrf) : mfibModule_.get(vrf);
  }
  const Qel::HashMap2018<L3::VrfName, Lumo::Ptr<MfibAf>>& mfibModules(
      Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? mfib6Module_.members() : mfibModule_.members();
  }
  void mfibModuleIs(const Lumo::Ptr<MfibAf>& module);
  void mfibModuleDel(const L3::VrfName& vrf, Lanx::AddressFamily af);
  Lumo::Ptr<VekL3MfibSm> mfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return af == Lanx::AddressFamily::ipv6 ? mfib6Sm_.get(vrf) : mfibSm_.get(vrf);
  }
  const Qel::HashMap2018<L3::VrfName, Lumo::Ptr<VekL3MfibSm>>& mfibSms(
      Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? mfib6Sm_.members() : mfibSm_.members();
  }
  // The route machine of a VRF and family; it hangs below the agent.
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
    return af == Lanx::AddressFamily::ipv6 ? pimRegRx6Vrf_.get(vrf) : pimRegRxVrf_.get(vrf);
  }
  void pimRegRxVrfIs(const L3::VrfName& vrf, Lanx::AddressFamily af,
                     const Lumo::Ptr<PimRegRx>& port);
  void pimRegRxVrfDel(const L3::VrfName& vrf, Lanx::AddressFamily af);
  // The multicast interface tracker; the full agent only.
  const Lumo::Ptr<McastIntfModuleSm>& mcastIntfModuleSm() const noexcept {
    return mcastIntfModuleSm_.get();
  }
  Lumo::Ptr<McastIntfModuleSm> mcastIntfModuleSmIs(
      const Lumo::Ptr<McastModuleManager>& manager, const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd,
      const Lumo::Ptr<Vek::CmdConfigGroup>& group, const Lumo::Ptr<McastIntfModuleSm::Roots const>& root,
      const Lumo::Ptr<McastIntfModuleSm::Roots const>& root6,
      const Lumo::Ptr<Interface::VrfDeviceIntfStatusDir const>& deviceDir,
      const Lumo::Ptr<IntfVlanId::Table const>& vlanTable, const Lumo::Ptr<Qel::Clock const>& clock) {
    return mcastIntfModuleSm_.is(*this, manager, vekcsd, group, root, root6, deviceDir, vlanTable,
                                 clock);
  }
  const Lumo::Ptr<VekMcastL3IntfSm>& txDemuxerL3IntfSm() const noexcept {
    return txDemuxerL3IntfSm_.get();
  }
  Lumo::Ptr<VekMcastL3IntfSm> txDemuxerL3IntfSmIs(const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd,
                                                  const Lumo::Ptr<McastModuleManager>& manager) {
    return txDemuxerL3IntfSm_.is(*this, vekcsd, manager);
  }
  bool mfibVrfAdapterSmHas(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return af == Lanx::AddressFamily::ipv6 ? HN_NestedSm_Mfib6VrfAdapter_.has(vrf)
                                           : HN_NestedSm_MfibVrfAdapter_.has(vrf);
  }
  bool appRootSmHas(const L3::VrfName& vrf, Lanx::AddressFamily af) const {
    return af == Lanx::AddressFamily::ipv6 ? HN_NestedSm_AppRoot6Sm_.has(vrf)
                                           : HN_NestedSm_AppRootSm_.has(vrf);
  }
  void appRootSmDelAll() { HN_NestedSm_AppRootSm_.smDelAll(); }
  void appRoot6SmDelAll() { HN_NestedSm_AppRoot6Sm_.smDelAll(); }

  // Central inputs.
  const Lumo::Ptr<Bridging::Config const>& bridgingConfig() const noexcept {
    return bridgingConfig_.get();
  }
  void bridgingConfigIs(Lumo::Ptr<Bridging::Config const> config);
  const Lumo::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper const>& vrfNameStatus() const noexcept {
    return vrfNameStatus_.get();
  }
  void vrfNameStatusIs(Lumo::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper const> status);
  const Lumo::Ptr<Vrf::VrfIdMap::Status const>& hwVrfIdToNameStatus() const noexcept {
    return hwVrfIdToNameStatus_.get();
  }
  void hwVrfIdToNameStatusIs(Lumo::Ptr<Vrf::VrfIdMap::Status const> status);
  const Lumo::Ptr<Vrf::VrfIdMap::Status const>& vrfIdToNameStatus() const noexcept {
    return vrfIdToNameStatus_.get();
  }
  const Lumo::Ptr<Routing::KernelMfib::ConfigColl const>& kernelMfibConfigColl(
      Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? kernelMfibConfigColl6_.get()
                                           : kernelMfibConfigColl_.get();
  }
  const Lumo::Ptr<Routing::KernelMfib::StatusColl>& kernelMfibStatusColl(
      Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? kernelMfibStatusColl6_.get()
                                           : kernelMfibStatusColl_.get();
  }
  const Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir const>& multicastIntfsAppDir(
      Lanx::AddressFamily af) const noexcept {
    return af == Lanx::AddressFamily::ipv6 ? multicast6IntfsAppDir_.get()
                                           : multicastIntfsAppDir_.get();
  }
  const Lumo::Ptr<KernelNetInfo::Root const>& defaultVrfKniRoot() const noexcept {
    return defaultVrfKniRoot_.get();
  }

  // ---- Reactors and steps ----

  void handleInitialized() override;
  // Traces every error record the daemon sent back, once the agent is initialized.
  void handleMfaGrpcError();
  void handleResp();
  void handleVrfNameToIdMap();
  void handleVrfNameToId();
  void handleVrfNameToId(const Lumo::String& name);
  void handleHwVrfIdToName();
  void handleHwVrfIdToName(const Vrf::VrfIdMap::VrfId& id);
  void handleBridgeMacAddr();
  void handleAppRootSm(Lanx::AddressFamily af, const L3::VrfName& vrf);
  void handleMcastIntf(const L3::VrfName& vrf, Lanx::IntfId intf, Lanx::AddressFamily af);
  void handleMfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af);
  void handleKernelMfibConfig(const L3::VrfName& vrf, Lanx::AddressFamily af);
  void handleMfibVrfAdapter(Lanx::AddressFamily af, const L3::VrfName& vrf);
  // Puts a module's task under the weighted class of the worker that is next in line.
  void attachModuleTask(const Lumo::Ptr<Vek::Module>& module, std::uint32_t taskWeight);
  void attachMcastAnyRxSetTasks(const Lumo::Ptr<McastAnyRxSet>& set);
  void attachPimRegRxTasks(const Lumo::Ptr<PimRegRx>& port);
  // The classes of a VRF's tasks stay in the daemon after its stop, and a new start makes
  // the same names again; there is nothing to remove.
  void removeMfibCleanupTc(const std::string& tcName) { (void)tcName; }
  void createKniSm(const L3::VrfName& vrf);
  void deleteKniSm(const L3::VrfName& vrf);
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
  void doMountLongBranch(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem);
  void doMountLfibs(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem);
  void doGetFamilyInputs(Lanx::AddressFamily af);
  // The id of a VRF name in vrfNameStatus now; none if it has none.
  Vrf::VrfIdMap::VrfId curVrfNameToId(const L3::VrfName& vrf) const;
  // The id a VRF's modules are made with: software id in the full agent, hardware id in
  // the reduced one.
  Vrf::VrfIdMap::VrfId vrfIdForModules(const L3::VrfName& vrf) const;
  void doCorruptionDetected(const Lumo::String& msg);
  // Responses to the registration of the FIB modules' worker tasks.
  void createMfibNoCacheTc(const google::protobuf::Any& any);
  void createMfibCleanupTc(const google::protobuf::Any& any);
  void createMfibNoCacheTcForAllWorkers(const google::protobuf::Any& any);
  void createMfibCleanupTcForAllWorkers(const google::protobuf::Any& any);
  // Puts a worker task under its rate-limiting class of that worker.
  void doAttachWorkerTask(std::uint32_t worker, const std::string& tcBase, bool cleanup,
                          const std::string& taskName, std::uint32_t taskId);
  void handleAppRootSm4(const L3::VrfName& vrf) { handleAppRootSm(Lanx::AddressFamily::ipv4, vrf); }
  void handleAppRootSm6(const L3::VrfName& vrf) { handleAppRootSm(Lanx::AddressFamily::ipv6, vrf); }
  void handleVrfNameToIdKey(const Lumo::String& name) { handleVrfNameToId(name); }
  void handleHwVrfIdToNameKey(const Vrf::VrfIdMap::VrfId& id) { handleHwVrfIdToName(id); }
  void handleKernelMfibConfig4(const L3::VrfName& vrf) {
    handleKernelMfibConfig(vrf, Lanx::AddressFamily::ipv4);
  }
  void handleKernelMfibConfig6(const L3::VrfName& vrf) {
    handleKernelMfibConfig(vrf, Lanx::AddressFamily::ipv6);
  }
  void handleMfibVrfAdapter4(const L3::VrfName& vrf) {
    handleMfibVrfAdapter(Lanx::AddressFamily::ipv4, vrf);
  }
  void handleMfibVrfAdapter6(const L3::VrfName& vrf) {
    handleMfibVrfAdapter(Lanx::AddressFamily::ipv6, vrf);
  }
  // Brings up a VRF's FIB module and what it needs, unless it stands.
  void doCreateMfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af,
                          Vrf::VrfIdMap::VrfId id);
  void doCreateMfibSm(const L3::VrfName& vrf, Lanx::AddressFamily af);
  // Binds the reactors that follow the status queues and the name map; binding runs them.
  void qel_ConfigStatusPair_ModuleStatusInIs(const Lumo::Ptr<Vek::ModuleStatus>& status);
  void qel_VrfNameStatus_NameToIdMapInIs(
      const Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const>& nameToIdMap);

  const bool oru_;

  Qel::ValueAttr<Lumo::Ptr<Cordex::EntityManager>, kEntityManager> entityManager_;
  Qel::ValueAttr<Lumo::Ptr<Vek::ModuleConfigStatusPair>, kConfigStatusPair> configStatusPair_;
  Qel::ValueAttr<Lumo::Ptr<Vek::GrpcGlobalCmdConfig>, kGlobalCmdConfig> globalCmdConfig_;
  Qel::ValueAttr<Lumo::Ptr<Vek::VekCommonSmData>, kVekcsd> vekcsd_;
  Qel::ValueAttr<Lumo::Ptr<Vek::ManagementSm>, kManagementSm> managementSm_;
  Qel::ValueAttr<Lumo::Ptr<VrfNameToIdCollection>, kVrfNameToIdColl> vrfNameToIdColl_;

  Qel::ValueAttr<Lumo::Ptr<McastModuleManager>, kMcastModuleManager> mcastModuleManager_;
  Qel::InstantiatingAttr<Interface::IntfStatusManagerRoot, kIntfStatusManagerRoot,
                         "intfStatusManagerRoot", Lumo::Ptr<Interface::IntfStatusDir const>,
                         Lumo::Ptr<Interface::IntfStatusDir const>, bool>
      intfStatusManagerRoot_;
  Qel::ValueAttr<Lumo::Ptr<IntfVlanId::Table const>, kIntfVlanIdTable> intfVlanIdTable_;
  Qel::InstantiatingAttr<Interface::VrfDeviceIntfStatusDir, kVrfDeviceIntfStatusDir,
                         "vrfDeviceIntfStatusDir", Lumo::String>
      vrfDeviceIntfStatusDir_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl>, kMcastIntfRoot>
      mcastIntfRoot_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl>, kMcastIntfRoot6>
      mcastIntfRoot6_;
  Qel::InstantiatingAttr<MfibDirSm, kMfibDirSm, "mfibDirSm",
                         Lumo::Ptr<Routing::Multicast::Fib::MfibDir const>,
                         Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>,
                         Lumo::Ptr<Cordex::EntityManager>>
      mfibDirSm_;
  Qel::InstantiatingAttr<MfibDirSm, kMfib6DirSm, "mfib6DirSm",
                         Lumo::Ptr<Routing::Multicast::Fib::MfibDir const>,
                         Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>,
                         Lumo::Ptr<Cordex::EntityManager>>
      mfib6DirSm_;
  Qel::InstantiatingAttr<Routing::Multicast::Fib::MfibVrfDir, kMfibVrfDir, "mfibVrfDir",
                         Lanx::AddressFamily>
      mfibVrfDir_;
  Qel::InstantiatingAttr<Routing::Multicast::Fib::MfibVrfDir, kMfib6VrfDir, "mfib6VrfDir",
                         Lanx::AddressFamily>
      mfib6VrfDir_;
  Qel::ValueAttr<Lumo::Ptr<Vek::CmdConfigGroup>, kCmdConfigGroup> cmdConfigGroup_;

  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<MfibAf>, kMfibModule> mfibModule_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<MfibAf>, kMfib6Module> mfib6Module_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<VekL3MfibSm>, kMfibSm> mfibSm_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<VekL3MfibSm>, kMfib6Sm> mfib6Sm_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<McastAnyRxSet>, kMcastAnyRxSet> mcastAnyRxSet_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<PimRegRx>, kPimRegRxVrf> pimRegRxVrf_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<PimRegRx>, kPimRegRx6Vrf> pimRegRx6Vrf_;
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
  Qel::NestedSmCollection<MfaAgent, NestedSm_MfibVrfAdapter,
                          &Routing::Multicast::Fib::MfibVrfAdapter::vrfName>
      HN_NestedSm_MfibVrfAdapter_{this};
  Qel::NestedSmCollection<MfaAgent, NestedSm_MfibVrfAdapter,
                          &Routing::Multicast::Fib::MfibVrfAdapter::vrfName>
      HN_NestedSm_Mfib6VrfAdapter_{this};
  Qel::NestedSmCollection<MfaAgent, NestedSm_AppRootSm,
                          &Routing::Multicast::MulticastIntfsAppRootSm::vrfName>
      HN_NestedSm_AppRootSm_{this};
  Qel::NestedSmCollection<MfaAgent, NestedSm_AppRootSm,
                          &Routing::Multicast::MulticastIntfsAppRootSm::vrfName>
      HN_NestedSm_AppRoot6Sm_{this};

  Qel::ValueAttr<Lumo::Ptr<Interface::IntfStatusDir const>, kAllIntfStatusDir> allIntfStatusDir_;
  Qel::ValueAttr<Lumo::Ptr<Interface::IntfStatusDir const>, kAllIntfStatusLocalDir>
      allIntfStatusLocalDir_;
  Qel::ValueAttr<Lumo::Ptr<Ip::VrfStatusLocalDir const>, kAllVrfStatusLocal> allVrfStatusLocal_;
  Qel::ValueAttr<Lumo::Ptr<Bridging::Config const>, kBridgingConfig> bridgingConfig_;
  Qel::ValueAttr<Lumo::Ptr<Bridging::HwCapabilities const>, kHwCapabilities> hwCapabilities_;
  Qel::ValueAttr<Lumo::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper const>, kVrfNameStatus>
      vrfNameStatus_;
  Qel::ValueAttr<Lumo::Ptr<Vrf::VrfIdMap::Status const>, kHwVrfIdToNameStatus>
      hwVrfIdToNameStatus_;
  Qel::ValueAttr<Lumo::Ptr<Vrf::VrfIdMap::Status const>, kVrfIdToNameStatus> vrfIdToNameStatus_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::MvpnIntfStatus const>, kMvpnIntfStatus>
      mvpnIntfStatus_;
  Qel::ValueAttr<Lumo::Ptr<Routing::KernelMfib::ConfigColl const>, kKernelMfibConfigColl>
      kernelMfibConfigColl_;
  Qel::ValueAttr<Lumo::Ptr<Routing::KernelMfib::ConfigColl const>, kKernelMfibConfigColl6>
      kernelMfibConfigColl6_;
  Qel::ValueAttr<Lumo::Ptr<Routing::KernelMfib::StatusColl>, kKernelMfibStatusColl>
      kernelMfibStatusColl_;
  Qel::ValueAttr<Lumo::Ptr<Routing::KernelMfib::StatusColl>, kKernelMfibStatusColl6>
      kernelMfibStatusColl6_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir const>,
                 kMulticastIntfsAppDir>
      multicastIntfsAppDir_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir const>,
                 kMulticast6IntfsAppDir>
      multicast6IntfsAppDir_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::Fib::MfibDir const>, kMfibDir> mfibDir_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::Fib::MfibDir const>, kMfib6Dir> mfib6Dir_;
  Qel::ValueAttr<Lumo::Ptr<KernelNetInfo::Root const>, kDefaultVrfKniRoot> defaultVrfKniRoot_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Hardware::RouteStatus const>, kRoutingHwRouteStatus>
      routingHwRouteStatus_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::Evpn::OismFloodSet const>, kOismFloodSet>
      oismFloodSet_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus const>,
                 kTunnelFwdingStatus4>
      tunnelFwdingStatus4_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus const>,
                 kTunnelFwdingStatus6>
      tunnelFwdingStatus6_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::IpTunnelDecapConfig const>, kTunDecapConfig4>
      tunDecapConfig4_;
  Qel::ValueAttr<Lumo::Ptr<Routing::Multicast::IpTunnelDecapConfig const>, kTunDecapConfig6>
      tunDecapConfig6_;
  Qel::ValueAttr<Lumo::Ptr<Vxlan::RemoteVniToVlanStatus const>, kRemoteVniToVlanStaticStatus>
      remoteVniToVlanStaticStatus_;
  Qel::ValueAttr<Lumo::Ptr<Vxlan::RemoteVniToVlanStatus const>, kRemoteVniToVlanIrbStatus>
      remoteVniToVlanIrbStatus_;
  Qel::ValueAttr<Lumo::Ptr<Irb::Multicast::McastIrbStatus const>, kMcastIrbStatus4>
      mcastIrbStatus4_;
  Qel::ValueAttr<Lumo::Ptr<Irb::Multicast::McastIrbStatus const>, kMcastIrbStatus6>
      mcastIrbStatus6_;
  Qel::ValueAttr<Lumo::Ptr<Irb::Multicast::IgmpProxyStatus const>, kIgmpProxyStatus>
      igmpProxyStatus_;
  Qel::ValueAttr<Lumo::Ptr<Irb::Multicast::IgmpProxyStatus const>, kMldProxyStatus>
      mldProxyStatus_;
  Qel::ValueAttr<Lumo::Ptr<Vxlan::VtiStatusDir const>, kVtiStatusDir> vtiStatusDir_;
  Qel::ValueAttr<Lumo::Ptr<Bridging::IgmpSnooping::Status const>, kGmpVlanGroupMembershipStatus4>
      gmpVlanGroupMembershipStatus4_;
  Qel::ValueAttr<Lumo::Ptr<Bridging::IgmpSnooping::Status const>, kGmpVlanGroupMembershipStatus6>
      gmpVlanGroupMembershipStatus6_;

  // The name map the chained reactor follows; the wrapper may replace it.
  Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const> nameToIdMap_;

  Qel::ValueAttr<bool, kInitialized> initialized_;
  Qel::ValueAttr<bool, kMvxlanInitialized> mvxlanInitialized_;
  Qel::ValueAttr<bool, kMMplsInitialized> mMplsInitialized_;

  // Reactors, declared last so that they go before what they watch.
  Qel::SmSubscriber<MfaAgent> moduleStatusErrorReactor_{
      this, &Qel::reactorDispatch<MfaAgent, Vek::ModuleStatus::errorQueueAttrId,
                                  &MfaAgent::handleMfaGrpcError>};
  Qel::SmSubscriber<MfaAgent> moduleStatusResponseReactor_{
      this, &Qel::reactorDispatch<MfaAgent, Vek::ModuleStatus::responseQueueAttrId,
                                  &MfaAgent::handleResp>};
  Qel::SmSubscriber<MfaAgent> vrfNameStatusReactor_{
      this, &Qel::reactorDispatch<MfaAgent, Vrf::VrfIdMap::NameToIdMapWrapper::kNameToIdMap,
                                  &MfaAgent::handleVrfNameToIdMap>};
  Qel::SmSubscriber<MfaAgent> nameToIdMapReactor_{
      this, &Qel::reactorDispatch<MfaAgent, Vrf::VrfIdMap::NameToIdMap::kVrfId,
                                  &MfaAgent::handleVrfNameToIdKey>};
  Qel::SmSubscriber<MfaAgent> hwVrfIdToNameStatusDispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Vrf::VrfIdMap::Status::kVrfEntry,
                                  &MfaAgent::handleHwVrfIdToNameKey>};
  Qel::SmSubscriber<MfaAgent> bridgingConfigDispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Bridging::Config::kBridgeMacAddr,
                                  &MfaAgent::handleBridgeMacAddr>};
  Qel::SmSubscriber<MfaAgent> mcastIntfRootDispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Routing::Multicast::MulticastIntfsAppRootSmColl::kVrfSm,
                                  &MfaAgent::handleAppRootSm4>};
  Qel::SmSubscriber<MfaAgent> kernelMfibConfigCollDispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Routing::KernelMfib::ConfigColl::kConfig,
                                  &MfaAgent::handleKernelMfibConfig4>};
  Qel::SmSubscriber<MfaAgent> kernelMfibConfigColl6Dispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Routing::KernelMfib::ConfigColl::kConfig,
                                  &MfaAgent::handleKernelMfibConfig6>};
  Qel::SmSubscriber<MfaAgent> mfibVrfDirDispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Routing::Multicast::Fib::MfibVrfDir::kVrfAdapter,
                                  &MfaAgent::handleMfibVrfAdapter4>};
  Qel::SmSubscriber<MfaAgent> mfib6VrfDirDispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Routing::Multicast::Fib::MfibVrfDir::kVrfAdapter,
                                  &MfaAgent::handleMfibVrfAdapter6>};
  Qel::SmSubscriber<MfaAgent> mcastIntfRoot6Dispatch_{
      this, &Qel::reactorDispatch<MfaAgent, Routing::Multicast::MulticastIntfsAppRootSmColl::kVrfSm,
                                  &MfaAgent::handleAppRootSm6>};
};

}  // namespace VekL3Mcast
