#include "agent/VekMfaAgent.h"

#include "agent/MfaToggles.h"
#include "pipeline/ResumeAllCmd.h"
#include "proto/bess.pb.h"
#include "runtime/qel/ActivityManagerConfig.h"
#include "runtime/sharedmem/KrazMountInfo.h"
#include "runtime/sharedmem/MountInfo.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/state/mpls/LfibStatus.h"
#include "runtime/trace/Trace.h"

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

// Sets the IPv4 or the IPv6 twin of a pair of attributes.
template <typename Attr4, typename Attr6, typename Value>
void familyAttrIs(Qel::Entity& owner, AddressFamily af, Attr4& attr4, Attr6& attr6, Value value) {
  if (af == AddressFamily::ipv6) {
    attr6.is(owner, std::move(value));
  } else {
    attr4.is(owner, std::move(value));
  }
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

  mcastIntfRoot_.is(*this, Lumo::makePtr<Routing::Multicast::MulticastIntfsAppRootSmColl>());
  mcastIntfRoot6_.is(*this, Lumo::makePtr<Routing::Multicast::MulticastIntfsAppRootSmColl>());
  mcastIntfRootDispatch_.publisherIs(mcastIntfRoot_.get().get());
  mcastIntfRootDispatch_.isRegisteredIs(true);
  mcastIntfRoot6Dispatch_.publisherIs(mcastIntfRoot6_.get().get());
  mcastIntfRoot6Dispatch_.isRegisteredIs(true);

  handleInitialized();

  qel_ConfigStatusPair_ModuleStatusInIs(this->configStatusPair()->status());
  if (vrfNameStatus()) qel_VrfNameStatus_NameToIdMapInIs(vrfNameStatus()->nameToIdMap());
}

MfaAgent::~MfaAgent() {
  hasNotificationActiveIs(false);
  handleDelete();
  qelDoZombieReactors(true);
  moduleStatusErrorReactor_.isRegisteredIs(false);
  moduleStatusResponseReactor_.isRegisteredIs(false);
  vrfNameStatusReactor_.isRegisteredIs(false);
  nameToIdMapReactor_.isRegisteredIs(false);
  hwVrfIdToNameStatusDispatch_.isRegisteredIs(false);
  bridgingConfigDispatch_.isRegisteredIs(false);
  mcastIntfRootDispatch_.isRegisteredIs(false);
  mcastIntfRoot6Dispatch_.isRegisteredIs(false);
  kernelMfibConfigCollDispatch_.isRegisteredIs(false);
  kernelMfibConfigColl6Dispatch_.isRegisteredIs(false);
  mfibVrfDirDispatch_.isRegisteredIs(false);
  mfib6VrfDirDispatch_.isRegisteredIs(false);
  intfStatusManagerRoot_.del(*this);
  mfibDirSm_.del(*this);
  mfib6DirSm_.del(*this);
  for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    while (!mfibSms(af).empty()) mfibSmDel(L3::VrfName(mfibSms(af).begin()->key), af);
  }
  mcastIntfModuleSm_.del(*this);
  HN_NestedSm_MfibVrfAdapter_.smDelAll();
  HN_NestedSm_Mfib6VrfAdapter_.smDelAll();
  HN_NestedSm_AppRootSm_.smDelAll();
  HN_NestedSm_AppRoot6Sm_.smDelAll();
  txDemuxerL3IntfSm_.del(*this);
}

void MfaAgent::handleInitialized() {
  vrfDeviceIntfStatusDirIs(Lumo::String(vrfDeviceIntfStatusDirName));
  allIntfStatusDir_.is(*this, centralEntity<Interface::IntfStatusDir>(
                                  entityManager(), Interface::IntfStatusDir::allPath));
  allIntfStatusLocalDir_.is(*this, centralEntity<Interface::IntfStatusDir>(
                                       entityManager(), Interface::IntfStatusDir::localPath));
  intfStatusManagerRootIs(allIntfStatusDir_.get(), allIntfStatusLocalDir_.get(), true);

  const auto sharedMem = QelSharedMem::EntityManager::getEntityManager(Lanx::sharedMemManagerName);
  if (oru_) {
    doMountLongBranch(sharedMem);
  } else {
    vrfNameStatusIs(centralEntity<Vrf::VrfIdMap::NameToIdMapWrapper>(entityManager(),
                                                                     Vrf::VrfIdMap::NameToIdMapWrapper::path));
    handleVrfNameToId();
    hwVrfIdToNameStatusIs(
        sharedEntity<Vrf::VrfIdMap::Status>(sharedMem, Vrf::VrfIdMap::Status::hardwarePath));
    handleHwVrfIdToName();
  }

  doGetFamilyInputs(AddressFamily::ipv4);
  doGetFamilyInputs(AddressFamily::ipv6);
  // The interface VLAN configuration of the full agent joins here.
  if (!oru_) txDemuxerL3IntfSmIs(vekcsd(), mcastModuleManager());

  createKniSm(L3::VrfName::defaultVrf());
  initialized_.is(*this, true);
  resumeWorkers();
}

void MfaAgent::doMountLongBranch(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem) {
  VEK_TRACE(info, "Init cmdConfigGroup mfaAgent");
  cmdConfigGroupIs(Lumo::String(cmdConfigGroupName));
  allVrfStatusLocal_.is(*this, centralEntity<Ip::VrfStatusLocalDir>(
                                   entityManager(), Ip::VrfStatusLocalDir::path));
  bridgingConfigIs(centralEntity<Bridging::Config>(entityManager(), Bridging::Config::path));
  intfVlanIdTableIs(intfVlanIdTableName);
  mcastIntfModuleSmIs(mcastModuleManager(), vekcsd(), cmdConfigGroup(), mcastIntfRoot_.get(),
                      mcastIntfRoot6_.get(), vrfDeviceIntfStatusDir(), intfVlanIdTable(),
                      Qel::activityManager()->clock());
  gmpVlanGroupMembershipStatus4_.is(
      *this, centralEntity<Bridging::IgmpSnooping::Status>(
                 entityManager(), Bridging::IgmpSnooping::Status::igmpPath));
  gmpVlanGroupMembershipStatus6_.is(
      *this, centralEntity<Bridging::IgmpSnooping::Status>(
                 entityManager(), Bridging::IgmpSnooping::Status::mldPath));
  vtiStatusDir_.is(*this,
                   centralEntity<Vxlan::VtiStatusDir>(entityManager(), Vxlan::VtiStatusDir::path));
  vrfNameStatusIs(
      centralEntity<Vrf::VrfIdMap::NameToIdMapWrapper>(entityManager(), Vrf::VrfIdMap::NameToIdMapWrapper::path));
  hwCapabilities_.is(*this, centralEntity<Bridging::HwCapabilities>(entityManager(),
                                                                    Bridging::HwCapabilities::path));

  using Routing::Multicast::IpTunnelForwardingStatus;
  const auto group = sharedMem->getMountGroup();
  for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    const std::string path = IpTunnelForwardingStatus::mountPath(af);
    doMountTable(*group, path, IpTunnelForwardingStatus::kTypeName, QelKraz::MountInfo());
    familyAttrIs(*this, af, tunnelFwdingStatus4_, tunnelFwdingStatus6_,
                 sharedEntity<IpTunnelForwardingStatus>(sharedMem, path));
  }
  using Routing::Multicast::IpTunnelDecapConfig;
  tunDecapConfig4_.is(*this, mountedEntity<IpTunnelDecapConfig>(
                                 sharedMem, IpTunnelDecapConfig::mountPath(AddressFamily::ipv4)));
  tunDecapConfig6_.is(*this, mountedEntity<IpTunnelDecapConfig>(
                                 sharedMem, IpTunnelDecapConfig::mountPath(AddressFamily::ipv6)));
  const Lanx::IntfId vxlan1("Vxlan1");
  remoteVniToVlanStaticStatus_.is(
      *this, mountedEntity<Vxlan::RemoteVniToVlanStatus>(
                 sharedMem, Vxlan::RemoteVniToVlanStatus::mountPath("static", vxlan1)));
  remoteVniToVlanIrbStatus_.is(
      *this, mountedEntity<Vxlan::RemoteVniToVlanStatus>(
                 sharedMem, Vxlan::RemoteVniToVlanStatus::mountPath("irb", vxlan1)));
  using Irb::Multicast::McastIrbStatus;
  mcastIrbStatus4_.is(*this, mountedEntity<McastIrbStatus>(
                                 sharedMem, McastIrbStatus::mountPath(AddressFamily::ipv4)));
  mcastIrbStatus6_.is(*this, mountedEntity<McastIrbStatus>(
                                 sharedMem, McastIrbStatus::mountPath(AddressFamily::ipv6)));
  mvxlanInitialized_.is(*this, true);
  using Irb::Multicast::IgmpProxyStatus;
  igmpProxyStatus_.is(*this,
                      mountedEntity<IgmpProxyStatus>(sharedMem, IgmpProxyStatus::igmpPath));
  mldProxyStatus_.is(*this, mountedEntity<IgmpProxyStatus>(
                                sharedMem, IgmpProxyStatus::afMountPath(AddressFamily::ipv6)));

  // The VXLAN pipeline's VLAN groups and SBD VLANs join the ids here when it is built.
  handleVrfNameToId();

  routingHwRouteStatus_.is(*this, centralEntity<Routing::Hardware::RouteStatus>(
                                      entityManager(), Routing::Hardware::RouteStatus::path));
  using Routing::Multicast::Evpn::OismFloodSet;
  oismFloodSet_.is(*this, sharedEntity<OismFloodSet>(sharedMem, OismFloodSet::mountPath()));

  if (toggleOismMplsTunnelEnabled() || toggleMvpnVekEnabled()) doMountLfibs(sharedMem);
}

void MfaAgent::doMountLfibs(const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem) {
  vrfIdToNameStatus_.is(*this, mountedEntity<Vrf::VrfIdMap::Status>(
                                   sharedMem, Vrf::VrfIdMap::Status::softwarePath));
  using Routing::Multicast::MvpnIntfStatus;
  mvpnIntfStatus_.is(*this, mountedEntity<MvpnIntfStatus>(sharedMem, MvpnIntfStatus::mountPath(),
                                                           "Routing::Multicast::MvpnIntfStatus"));
  // The MPLS modules read the label tables themselves; the agent only mounts them.
  mountedEntity<Mpls::LfibStatus>(sharedMem, Mpls::LfibStatus::decapPath);
  mountedEntity<Mpls::LfibStatus>(sharedMem, Mpls::LfibStatus::transitPath);
  mMplsInitialized_.is(*this, true);
}

void MfaAgent::doGetFamilyInputs(AddressFamily af) {
  using Routing::Multicast::Fib::MfibDir;
  familyAttrIs(*this, af, multicastIntfsAppDir_, multicast6IntfsAppDir_,
               centralEntity<Routing::Multicast::MulticastIntfsAppDir>(
                   entityManager(), Routing::Multicast::MulticastIntfsAppDir::path(af)));
  familyAttrIs(*this, af, mfibDir_, mfib6Dir_,
               centralEntity<MfibDir>(entityManager(), MfibDir::path(af)));
  const bool v6 = af == AddressFamily::ipv6;
  const auto vrfDir = v6 ? mfib6VrfDirIs() : mfibVrfDirIs();
  auto& vrfDirDispatch = v6 ? mfib6VrfDirDispatch_ : mfibVrfDirDispatch_;
  vrfDirDispatch.publisherIs(vrfDir.get());
  vrfDirDispatch.isRegisteredIs(true);
  if (v6) {
    mfib6DirSmIs(mfib6Dir_.get(), vrfDir, entityManager());
  } else {
    mfibDirSmIs(mfibDir_.get(), vrfDir, entityManager());
  }
  // Tables mounted while the directory machine came up.
  for (const auto& adapter : vrfDir->vrfAdapters()) handleMfibVrfAdapter(af, adapter.key);

  auto configColl = centralEntity<Routing::KernelMfib::ConfigColl>(
      entityManager(), Routing::KernelMfib::ConfigColl::mountPath(af));
  auto& configDispatch = v6 ? kernelMfibConfigColl6Dispatch_ : kernelMfibConfigCollDispatch_;
  configDispatch.publisherIs(const_cast<Routing::KernelMfib::ConfigColl*>(configColl.get()));
  configDispatch.isRegisteredIs(true);
  familyAttrIs(*this, af, kernelMfibConfigColl_, kernelMfibConfigColl6_, std::move(configColl));
  // The agent writes this one: which VRFs it programs.
  familyAttrIs(*this, af, kernelMfibStatusColl_, kernelMfibStatusColl6_,
               Lumo::ptrCast<Routing::KernelMfib::StatusColl>(
                   entityManager()->getEntity(Routing::KernelMfib::StatusColl::path(af))));
}

void MfaAgent::cmdConfigGroupIs(const Lumo::String& name) {
  Lumo::Ptr<Vek::CmdConfigGroup> group = globalCmdConfig()->cmdConfigGroup(name);
  if (!group) {
    group = Lumo::makePtr<Vek::CmdConfigGroup>(name);
    globalCmdConfig()->cmdConfigGroupIs(group);
  }
  cmdConfigGroup_.is(*this, group);
}

void MfaAgent::intfVlanIdTableIs(std::string_view name) {
  intfVlanIdTable_.is(*this, IntfVlanId::Table::tableIs(name));
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
  moduleStatusResponseReactor_.publisherIs(status.get());
  moduleStatusResponseReactor_.isRegisteredIs(true);
  // What arrived while the agent was coming up is taken now.
  handleMfaGrpcError();
  handleResp();
}

void MfaAgent::handleMfaGrpcError() {
  if (!initialized()) return;
  const Lumo::Ptr<Vek::ModuleStatus>& status = configStatusPair()->status();
  while (auto error = status->errorQueueDeq()) {
    VEK_TRACE(err, "Module {} type : {}: {} msg: {}", error->module(), error->type(),
              error->code(), error->msg());
  }
}

void MfaAgent::handleDelete() {
  VEK_TRACE(info, "Cleaning up mfa agent");
  for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    // The stop takes the member out under the loop: work on a copy of the names.
    std::vector<L3::VrfName> vrfs;
    for (const auto& sm : mfibSms(af)) vrfs.push_back(sm.key);
    for (const L3::VrfName& vrf : vrfs) stopMfibSm(vrf, af);
  }
  deleteKniSm(L3::VrfName::defaultVrf());
  appRootSmDelAll();
  appRoot6SmDelAll();
}

}  // namespace VekL3Mcast
