#include "agent/VekMfaAgent.h"

#include "agent/MfaToggles.h"
#include "pipeline/ResumeAllCmd.h"
#include "proto/bess.pb.h"
#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/qel/ActivityManagerConfig.h"
#include "runtime/sharedmem/KrazMountInfo.h"
#include "runtime/sharedmem/MountInfo.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/state/mpls/LfibStatus.h"
#include "runtime/trace/Trace.h"
#include "vxlan/VekMVxlanTepStep.h"

namespace VekL3Mcast {

namespace {

using Lanx::AddressFamily;

// A central-state entity of the type the agent expects; null if the path holds none.
template <typename T>
Lumo::Ptr<T const> centralEntity(const Lumo::Ptr<Cordex::EntityManager>& entityManager,
                                 std::string_view path) {
  return Lumo::ptrCast<T const>(entityManager->getEntity(path));
}

template <typename T>
Lumo::Ptr<T const> sharedEntity(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem,
                                std::string_view path) {
  return Lumo::ptrCast<T const>(sharedMem->getEntity(path));
}

// Mounts a shared-memory table for reading, waiting for its writer, and gives its entity.
template <typename T>
Lumo::Ptr<T const> mountedEntity(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem,
                                 std::string_view path,
                                 std::string_view typeName = T::kTypeName) {
  MfaAgent::doMountTable(*sharedMem, path, typeName, QelVash::MountInfo());
  return sharedEntity<T>(sharedMem, path);
}

}  // namespace

MfaAgent::MfaAgent(Lumo::Ptr<Cordex::EntityManager> entityManager,
                   Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
                   Lumo::Ptr<Vek::GrpcGlobalCmdConfig> globalCmdConfig,
                   Lumo::Ptr<Vek::VekCommonSmData> vekcsd, Lumo::Ptr<Vek::ManagementSm> managementSm,
                   Lumo::Ptr<VrfNameToIdCollection> vrfNameToIdColl, bool oru)
    : oru_(oru) {
  entityManager_.is(*this, std::move(entityManager));
  configStatusPair_.is(*this, std::move(configStatusPair));
  globalCmdConfig_.is(*this, std::move(globalCmdConfig));
  vekcsd_.is(*this, std::move(vekcsd));
  managementSm_.is(*this, std::move(managementSm));
  vrfNameToIdColl_.is(*this, std::move(vrfNameToIdColl));
  mcastModuleManager_.is(*this, mcastModuleManagerFactory(this->configStatusPair()));

  // Records that are waiting stay queued: the agent is not initialized yet.
  if (this->configStatusPair()->status()) handleMfaGrpcError();

  // The pipelines' control makes the two interface roots.
  vrfPipelineControl_.is(*this, this);
  // First to hear of a VRF's new id: IGMPv2 takes it before the parts built beside the pipeline.
  vrfLifecycleListenerIs(*vrfPipelineControl());
  vrfIdTracker_.is(*this, this);
  vrfNamespaces_.is(*this, this);
  mfibWorkerTasks_.is(*this, this);
  fabricDeviceControl_.is(*this, this);

  handleInitialized();

  qel_ConfigStatusPair_ModuleStatusInIs(this->configStatusPair()->status());
  vrfIdTracker()->followNameToIdMap();
}

MfaAgent::~MfaAgent() {
  hasNotificationActiveIs(false);
  handleDelete();
  if (l3VxlanPipeline_) {
    vrfLifecycleListenerDel(*l3VxlanPipeline_);
    l3VxlanPipeline_->hasNotificationActiveIs(false);
    l3VxlanPipeline_ = nullptr;
  }
  qelDoZombieReactors(true);
  moduleStatusErrorReactor_.isRegisteredIs(false);
  mfibWorkerTasks()->handleCleanup();
  vrfIdTracker()->handleCleanup();
  vrfLifecycleListenerDel(*vrfPipelineControl());
  vrfPipelineControl()->handleCleanup();
  vrfNamespaces()->intfStatusManagerRootDel();
  txDemuxerModuleProgrammer_.del(*this);
  fabricDeviceControl()->handleCleanup();
  if (const auto& vxlan = vxlanPipeline()) {
    vrfLifecycleListenerDel(*vxlan);
    vxlanPipeline_.del(*this);
  }
  if (const auto& control = mplsPipelineControl()) {
    vrfLifecycleListenerDel(*control);
    mplsPipelineControl_.del(*this);
  }
  for (AddressFamily af : Lanx::bothFamilies) mfibDirSm_[af].del(*this);
  vrfPipelineControl()->doDeleteRouteMachines();
  mcastIntfModuleSm_.del(*this);
  vrfPipelineControl()->doDeleteNestedMachines();
  txDemuxerL3IntfSm_.del(*this);
  vxlanVtepVlanStatusSm_.del(*this);
}

void MfaAgent::handleInitialized() {
  VrfNamespaces& namespaces = *vrfNamespaces();
  namespaces.vrfDeviceIntfStatusDirIs(Lumo::String(VrfNamespaces::vrfDeviceIntfStatusDirName));
  inputs_.allIntfStatusDir =
      centralEntity<Interface::IntfStatusDir>(entityManager(), Interface::IntfStatusDir::allPath);
  inputs_.allIntfStatusLocalDir =
      centralEntity<Interface::IntfStatusDir>(entityManager(), Interface::IntfStatusDir::localPath);
  namespaces.intfStatusManagerRootIs(inputs_.allIntfStatusDir, inputs_.allIntfStatusLocalDir,
                                     true);

  const auto sharedMem = QelSharedMem::EntityManager::getEntityManager(Lanx::sharedMemManagerName);
  if (oru_) {
    doMountFullAgentInputs(sharedMem);
  } else {
    inputs_.vrfNameStatus = centralEntity<Vrf::VrfIdMap::NameToIdMapWrapper>(
        entityManager(), Vrf::VrfIdMap::NameToIdMapWrapper::path);
    vrfIdTracker()->vrfNameStatusIs();
    vrfIdTracker()->handleVrfNameToId();
    inputs_.hwVrfIdToNameStatus =
        sharedEntity<Vrf::VrfIdMap::Status>(sharedMem, Vrf::VrfIdMap::Status::hardwarePath);
    vrfIdTracker()->hwVrfIdToNameStatusIs();
    vrfIdTracker()->handleHwVrfIdToName();
  }

  doGetFamilyInputs(AddressFamily::ipv4);
  doGetFamilyInputs(AddressFamily::ipv6);
  // The interface VLAN configuration of the full agent joins here.
  if (!oru_) txDemuxerL3IntfSm_.is(*this, vekcsd(), mcastModuleManager());

  namespaces.createKniSm(L3::VrfName::defaultVrf());
  initialized_.is(*this, true);
  // The fabric's pipeline waited for this; it stands before the workers run.
  if (oru_) fabricDeviceControl()->handleFabricDevice();
  resumeWorkers();
}

void MfaAgent::doMountFullAgentInputs(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem) {
  VEK_TRACE(info, "Init cmdConfigGroup mfaAgent");
  cmdConfigGroupIs(Lumo::String(cmdConfigGroupName));
  inputs_.allVrfStatusLocal =
      centralEntity<Ip::VrfStatusLocalDir>(entityManager(), Ip::VrfStatusLocalDir::path);
  inputs_.bridgingConfig = centralEntity<Bridging::Config>(entityManager(), Bridging::Config::path);
  vrfPipelineControl()->bridgingConfigIs();
  inputs_.intfVlanIdTable = IntfVlanId::Table::tableIs(intfVlanIdTableName);
  const VrfPipelineControl& pipelines = *vrfPipelineControl();
  mcastIntfModuleSm_.is(*this, mcastModuleManager(), vekcsd(), cmdConfigGroup(),
                        pipelines.mcastIntfRoot(AddressFamily::ipv4),
                        pipelines.mcastIntfRoot(AddressFamily::ipv6),
                        vrfNamespaces()->vrfDeviceIntfStatusDir(), inputs_.intfVlanIdTable,
                        Qel::activityManager()->clock());
  using Bridging::IgmpSnooping::Status;
  inputs_.gmpVlanGroupMembershipStatus.ipv4 = centralEntity<Status>(entityManager(), Status::igmpPath);
  inputs_.gmpVlanGroupMembershipStatus.ipv6 = centralEntity<Status>(entityManager(), Status::mldPath);
  inputs_.vtiStatusDir = centralEntity<Vxlan::VtiStatusDir>(entityManager(), Vxlan::VtiStatusDir::path);
  inputs_.vrfNameStatus = centralEntity<Vrf::VrfIdMap::NameToIdMapWrapper>(
      entityManager(), Vrf::VrfIdMap::NameToIdMapWrapper::path);
  vrfIdTracker()->vrfNameStatusIs();
  inputs_.hwCapabilities =
      centralEntity<Bridging::HwCapabilities>(entityManager(), Bridging::HwCapabilities::path);

  using Routing::Multicast::IpTunnelForwardingStatus;
  const auto group = sharedMem->getMountGroup();
  for (AddressFamily af : Lanx::bothFamilies) {
    const std::string path = IpTunnelForwardingStatus::mountPath(af);
    doMountTable(*group, path, IpTunnelForwardingStatus::kTypeName, QelKraz::MountInfo());
    inputs_.tunnelFwdingStatus[af] = sharedEntity<IpTunnelForwardingStatus>(sharedMem, path);
  }
  using Routing::Multicast::IpTunnelDecapConfig;
  for (AddressFamily af : Lanx::bothFamilies) {
    inputs_.tunDecapConfig[af] =
        mountedEntity<IpTunnelDecapConfig>(sharedMem, IpTunnelDecapConfig::mountPath(af));
  }
  const Lanx::IntfId vxlan1("Vxlan1");
  inputs_.remoteVniToVlanStaticStatus = mountedEntity<Vxlan::RemoteVniToVlanStatus>(
      sharedMem, Vxlan::RemoteVniToVlanStatus::mountPath("static", vxlan1));
  inputs_.remoteVniToVlanIrbStatus = mountedEntity<Vxlan::RemoteVniToVlanStatus>(
      sharedMem, Vxlan::RemoteVniToVlanStatus::mountPath("irb", vxlan1));
  using Irb::Multicast::McastIrbStatus;
  for (AddressFamily af : Lanx::bothFamilies) {
    inputs_.mcastIrbStatus[af] =
        mountedEntity<McastIrbStatus>(sharedMem, McastIrbStatus::mountPath(af));
  }
  mvxlanInitialized_.is(*this, true);
  using Irb::Multicast::IgmpProxyStatus;
  inputs_.igmpProxyStatus = mountedEntity<IgmpProxyStatus>(sharedMem, IgmpProxyStatus::igmpPath);
  inputs_.mldProxyStatus = mountedEntity<IgmpProxyStatus>(
      sharedMem, IgmpProxyStatus::afMountPath(AddressFamily::ipv6));

  doCreateVxlanPipeline();

  // The VXLAN pipeline's VLAN groups and SBD VLANs join the ids here.
  VekMVxlan::VxlanPipeline& vxlan = *vxlanPipeline();
  vxlan.updateAllVlanGroups();
  vrfIdTracker()->handleVrfNameToId();
  for (const auto& vti : inputs_.vtiStatusDir->vtiStatuses()) {
    const auto sm = vxlan.vtiStatusSm(vti.key);
    for (const auto& entry : vti.value->vrfToSbdVlanMaps()) sm->handleVrfToSBDVlan(entry.key);
  }
  vxlan.handleVxlanSwitchPktToMcastTunnelInSw();
  doCreateL3VxlanPipeline();

  inputs_.routingHwRouteStatus = centralEntity<Routing::Hardware::RouteStatus>(
      entityManager(), Routing::Hardware::RouteStatus::path);
  using Routing::Multicast::Evpn::OismFloodSet;
  inputs_.oismFloodSet = sharedEntity<OismFloodSet>(sharedMem, OismFloodSet::mountPath());
  // The status table outlives agents: this one reconciles what an earlier one left.
  vxlanVtepVlanStatusSm_.is(*this, inputs_.oismFloodSet,
                            VekMVxlan::MVxlanTepStep().vxlanVtepVlanStatus(),
                            Dov::TaskSchedulerRoot::findOrCreateScheduler());

  if (toggleOismMplsTunnelEnabled() || toggleMvpnVekEnabled()) doMountProviderInputs(sharedMem);
}

void MfaAgent::doMountProviderInputs(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem) {
  inputs_.vrfIdToNameStatus =
      mountedEntity<Vrf::VrfIdMap::Status>(sharedMem, Vrf::VrfIdMap::Status::softwarePath);
  vrfIdTracker()->vrfIdToNameStatusIs();
  using Routing::Multicast::MvpnIntfStatus;
  inputs_.mvpnIntfStatus = mountedEntity<MvpnIntfStatus>(sharedMem, MvpnIntfStatus::mountPath(),
                                                         "Routing::Multicast::MvpnIntfStatus");
  // The MPLS modules read the label tables themselves; the agent only mounts them.
  mountedEntity<Mpls::LfibStatus>(sharedMem, Mpls::LfibStatus::decapPath);
  mountedEntity<Mpls::LfibStatus>(sharedMem, Mpls::LfibStatus::transitPath);
  mMplsInitialized_.is(*this, true);
  // The MVPN pipeline follows its inputs from here; the reduced agent mounts none of them.
  const auto& control = mplsPipelineControl_.is(*this, inputs_.mvpnIntfStatus,
                                                inputs_.vrfIdToNameStatus, mcastModuleManager(),
                                                configStatusPair(), vekcsd());
  vrfLifecycleListenerIs(*control);
  control->fabricTxAttachIs([this] { fabricDeviceControl()->doMaybeCreateAndAttachFabricTx(); });
}

void MfaAgent::doCreateVxlanPipeline() {
  const auto& vxlan = vxlanPipeline_.isWith(
      *this,
      [](VekMVxlan::VxlanPipelineOwner* owner, const MfaInputs* inputs, const auto&... rest) {
        return Lumo::makePtr<VekMVxlan::VxlanPipeline>(owner, *inputs, rest...);
      },
      &vxlanOwner_, &inputs_, configStatusPair(), cmdConfigGroup(), vekcsd(),
      Lumo::Ptr<Lanx::PamRxBuf const>(mcastModuleManager()->rxBufSize()));
  vrfLifecycleListenerIs(*vxlan);
}

void MfaAgent::doCreateL3VxlanPipeline() {
  const VrfPipelineControl& vrfs = *vrfPipelineControl();
  VekMVxlan::L3VxlanPipeline::Inputs l3Inputs{
      inputs_.vrfNameStatus,
      inputs_.vtiStatusDir,
      inputs_.tunnelFwdingStatus[AddressFamily::ipv4],
      inputs_.tunnelFwdingStatus[AddressFamily::ipv6],
      vrfs.mcastIntfRoot(AddressFamily::ipv4),
      vrfs.mcastIntfRoot(AddressFamily::ipv6),
      inputs_.remoteVniToVlanStaticStatus,
      inputs_.remoteVniToVlanIrbStatus,
      configStatusPair(),
      vekcsd()};
  l3VxlanPipeline_ = Lumo::makePtr<VekMVxlan::L3VxlanPipeline>(
      std::move(l3Inputs), [this](AddressFamily af) {
        std::vector<Lumo::Ptr<MfibAf>> fibs;
        for (const auto& entry : vrfPipelineControl()->mfibModules(af)) fibs.push_back(entry.value);
        return fibs;
      },
      [this](const L3::VrfName& vrf, AddressFamily af) { vxlanOwner_.reviewRoutes(vrf, af); });
  l3VxlanPipeline_->hasNotificationActiveIs(true);
  vrfLifecycleListenerIs(*l3VxlanPipeline_);
  // The fabric may have brought the L2 encapsulation module up before the routed half came.
  if (const auto& l2In = vxlanPipeline()->l2VxlanInModule()) l3VxlanPipeline_->l2VxlanInModuleIs(l2In);
}

void MfaAgent::doGetFamilyInputs(AddressFamily af) {
  using Routing::Multicast::Fib::MfibDir;
  inputs_.multicastIntfsAppDir[af] = centralEntity<Routing::Multicast::MulticastIntfsAppDir>(
      entityManager(), Routing::Multicast::MulticastIntfsAppDir::path(af));
  inputs_.mfibDir[af] = centralEntity<MfibDir>(entityManager(), MfibDir::path(af));
  const auto vrfDir = mfibVrfDir_[af].is(*this, af);
  vrfPipelineControl()->mfibVrfDirIs(af, vrfDir);
  mfibDirSm_[af].is(*this, inputs_.mfibDir[af], vrfDir, entityManager());
  // Tables mounted while the directory machine came up.
  for (const auto& adapter : vrfDir->vrfAdapters()) {
    vrfPipelineControl()->handleMfibVrfAdapter(af, adapter.key);
  }

  inputs_.kernelMfibConfigColl[af] = centralEntity<Routing::KernelMfib::ConfigColl>(
      entityManager(), Routing::KernelMfib::ConfigColl::mountPath(af));
  vrfPipelineControl()->kernelMfibConfigCollIs(af);
  // The agent writes this one: which VRFs it programs.
  inputs_.kernelMfibStatusColl[af] = Lumo::ptrCast<Routing::KernelMfib::StatusColl>(
      entityManager()->getEntity(Routing::KernelMfib::StatusColl::path(af)));
}

void MfaAgent::cmdConfigGroupIs(const Lumo::String& name) {
  Lumo::Ptr<Vek::CmdConfigGroup> group = globalCmdConfig()->cmdConfigGroup(name);
  if (!group) {
    group = Lumo::makePtr<Vek::CmdConfigGroup>(name);
    globalCmdConfig()->cmdConfigGroupIs(group);
  }
  cmdConfigGroup_.is(*this, group);
}

void MfaAgent::resumeWorkers() {
  if (!oru_) return;
  VEK_TRACE(info, "Resuming Bessd workers");
  cmdConfigGroup()->cmdBatchEnq(resumeAllCmdFactory(new bess::pb::EmptyRequest));
  cmdConfigGroup()->enqueueVersionInc(1);
}

void MfaAgent::qel_ConfigStatusPair_ModuleStatusInIs(const Lumo::Ptr<Vek::ModuleStatus>& status) {
  if (!status) return;
  moduleStatusErrorReactor_.publisherIs(status.get());
  moduleStatusErrorReactor_.isRegisteredIs(true);
  mfibWorkerTasks()->moduleStatusIs(status);
  // What arrived while the agent was coming up is taken now.
  handleMfaGrpcError();
  mfibWorkerTasks()->handleResp();
}

void MfaAgent::handleMfaGrpcError() {
  if (!initialized()) return;
  const Lumo::Ptr<Vek::ModuleStatus>& status = configStatusPair()->status();
  while (auto error = status->errorQueueDeq()) {
    VEK_TRACE(err, "Module {} type : {}: {} msg: {}", error->module(), error->type(),
              error->code(), error->msg());
  }
}

Lumo::Ptr<MfibAf> MfaAgent::getMfibModule(const L3::VrfName& vrf, AddressFamily af) const {
  if (!initialized()) return nullptr;
  return vrfPipelineControl()->mfibModule(vrf, af);
}

void MfaAgent::handleDelete() {
  VEK_TRACE(info, "Cleaning up mfa agent");
  VrfPipelineControl& pipelines = *vrfPipelineControl();
  for (AddressFamily af : Lanx::bothFamilies) {
    // The stop takes the member out under the loop: work on a copy of the names.
    std::vector<L3::VrfName> vrfs;
    for (const auto& sm : pipelines.mfibSms(af)) vrfs.push_back(sm.key);
    for (const L3::VrfName& vrf : vrfs) pipelines.stopMfibSm(vrf, af);
  }
  vrfNamespaces()->deleteKniSm(L3::VrfName::defaultVrf());
  pipelines.appRootSmDelAll();
  if (const auto& vxlan = vxlanPipeline(); vxlan && vxlan->l2VxlanInModule()) {
    vxlan->doDeleteL2MVxlanPipeline();
  }
  if (const auto& control = mplsPipelineControl()) control->handleCleanup();
}

bool MfaAgent::txDemuxerEgressConnected() const {
  const auto& txDemuxer = mcastModuleManager()->txDemuxerModule();
  if (!txDemuxer) return false;
  for (std::uint32_t gate = 0; gate < VekTxDemuxer::TxDemuxer::reservedOutGate; ++gate) {
    if (txDemuxer->outGateInUse(gate)) return true;
  }
  return false;
}

void MfaAgent::connectTxDemuxerModule() {
  if (!mcastModuleManager()->txDemuxerModule()) return;
  doMaybeCreateTxDemuxerProgrammer();
  fabricDeviceControl()->doMaybeCreateAndAttachFabricTx();
  if (const auto& control = mplsPipelineControl()) {
    control->doConnectTxDemuxerToL3MMpls(VekMMpls::MplsPipelineControl::tunnelAf);
  }
}

void MfaAgent::doMaybeCreateTxDemuxerProgrammer() {
  const auto& txDemuxer = mcastModuleManager()->txDemuxerModule();
  if (!txDemuxer || txDemuxerModuleProgrammer()) return;
  if ((toggleOismMplsTunnelEnabled() || toggleMvpnVekEnabled()) && inputs_.mvpnIntfStatus) {
    VEK_TRACE(info, "Creating TxDemuxer module programmer");
    txDemuxerModuleProgrammerIs(inputs_.mvpnIntfStatus, txDemuxer);
  }
}

}  // namespace VekL3Mcast
