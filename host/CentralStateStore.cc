#include "host/CentralStateStore.h"

#include "runtime/state/bridging/HwCapabilities.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "runtime/state/intf/IntfStatusDir.h"
#include "runtime/state/intf/VrfStatusLocalDir.h"
#include "runtime/state/irb/IgmpProxyStatus.h"
#include "runtime/state/irb/McastIrbStatus.h"
#include "runtime/state/mpls/LfibStatus.h"
#include "runtime/state/multicast/HwRouteStatus.h"
#include "runtime/state/multicast/IpTunnelDecapConfig.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vrf/NameToIdMapWrapper.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"
#include "runtime/state/vxlan/VtiStatusDir.h"

namespace {

using Lanx::AddressFamily;

std::size_t familyIndex(AddressFamily af) { return af == AddressFamily::ipv6 ? 1 : 0; }

// Registers a factory that makes an empty T for every mount of its type.
template <typename T>
void tableFactoryIs(QelSharedMem::EntityManager& sharedMem,
                    std::string_view typeName = T::kTypeName) {
  sharedMem.entityFactoryIs(typeName, [] { return Lumo::makePtr<T>(); });
}

}  // namespace

template <typename T>
Lumo::Ptr<T> CentralStateStore::central(std::string_view path, Lumo::Ptr<T> entity) {
  central_->entityIs(path, entity);
  return entity;
}

CentralStateStore::CentralStateStore(std::string_view sharedMemName)
    : central_(Lumo::makePtr<Cordex::EntityManager>()),
      sharedMem_(QelSharedMem::EntityManager::getEntityManager(sharedMemName)) {
  central(Interface::IntfStatusDir::allPath, Lumo::makePtr<Interface::IntfStatusDir>());
  central(Interface::IntfStatusDir::localPath, Lumo::makePtr<Interface::IntfStatusDir>());
  central(Ip::VrfStatusLocalDir::path, Lumo::makePtr<Ip::VrfStatusLocalDir>());
  bridgingConfig_ = central(Bridging::Config::path, Lumo::makePtr<Bridging::Config>());
  central(Bridging::IgmpSnooping::Status::igmpPath,
          Lumo::makePtr<Bridging::IgmpSnooping::Status>());
  central(Bridging::IgmpSnooping::Status::mldPath,
          Lumo::makePtr<Bridging::IgmpSnooping::Status>());
  central(Vxlan::VtiStatusDir::path, Lumo::makePtr<Vxlan::VtiStatusDir>());
  auto wrapper = central(Vrf::VrfIdMap::NameToIdMapWrapper::path, Lumo::makePtr<Vrf::VrfIdMap::NameToIdMapWrapper>());
  vrfNameToId_ = Lumo::makePtr<Vrf::VrfIdMap::NameToIdMap>();
  wrapper->nameToIdMapIs(vrfNameToId_);
  central(Bridging::HwCapabilities::path, Lumo::makePtr<Bridging::HwCapabilities>());
  central(Routing::Hardware::RouteStatus::path, Lumo::makePtr<Routing::Hardware::RouteStatus>());
  for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    const std::size_t i = familyIndex(af);
    multicastIntfs_[i] = central(Routing::Multicast::MulticastIntfsAppDir::path(af),
                                 Lumo::makePtr<Routing::Multicast::MulticastIntfsAppDir>());
    mfibDir_[i] = central(Routing::Multicast::Fib::MfibDir::path(af),
                          Lumo::makePtr<Routing::Multicast::Fib::MfibDir>());
    kernelMfibConfig_[i] = central(Routing::KernelMfib::ConfigColl::mountPath(af),
                                   Lumo::makePtr<Routing::KernelMfib::ConfigColl>());
    kernelMfibStatus_[i] = central(Routing::KernelMfib::StatusColl::path(af),
                                   Lumo::makePtr<Routing::KernelMfib::StatusColl>());
  }
  intfVlans_ = IntfVlanId::Table::tableIs("intfVlanIdTable");

  // Tables read without a mount stand from the start.
  hwVrfIdMap_ = Lumo::makePtr<Vrf::VrfIdMap::Status>();
  sharedMem_->entityIs(Vrf::VrfIdMap::Status::hardwarePath, hwVrfIdMap_);
  // Mounted tables that the writer fills before or after the mount: a mount keeps a table
  // that stands at its path.
  vrfIdMap_ = Lumo::makePtr<Vrf::VrfIdMap::Status>();
  sharedMem_->entityIs(Vrf::VrfIdMap::Status::softwarePath, vrfIdMap_);
  mvpnIntfs_ = Lumo::makePtr<Routing::Multicast::MvpnIntfStatus>();
  sharedMem_->entityIs(Routing::Multicast::MvpnIntfStatus::mountPath(), mvpnIntfs_);
  sharedMem_->entityIs(Routing::Multicast::Evpn::OismFloodSet::mountPath(),
                       Lumo::makePtr<Routing::Multicast::Evpn::OismFloodSet>());
  registerTableFactories();
}

void CentralStateStore::registerTableFactories() {
  QelSharedMem::EntityManager& shm = *sharedMem_;
  tableFactoryIs<Routing::Multicast::IpTunnelForwardingStatus>(shm);
  tableFactoryIs<Routing::Multicast::IpTunnelDecapConfig>(shm);
  tableFactoryIs<Vxlan::RemoteVniToVlanStatus>(shm);
  tableFactoryIs<Irb::Multicast::McastIrbStatus>(shm);
  tableFactoryIs<Irb::Multicast::IgmpProxyStatus>(shm);
  tableFactoryIs<Vrf::VrfIdMap::Status>(shm);
  tableFactoryIs<Routing::Multicast::MvpnIntfStatus>(shm, "Routing::Multicast::MvpnIntfStatus");
  tableFactoryIs<Mpls::LfibStatus>(shm);
  tableFactoryIs<KernelNetInfo::Root>(shm, KernelNetInfo::Root::mountTypeName);
}

Routing::Multicast::MulticastIntfsAppDir& CentralStateStore::multicastIntfs(
    AddressFamily af) const {
  return *multicastIntfs_[familyIndex(af)];
}

Routing::KernelMfib::ConfigColl& CentralStateStore::kernelMfibConfig(AddressFamily af) const {
  return *kernelMfibConfig_[familyIndex(af)];
}

Routing::KernelMfib::StatusColl& CentralStateStore::kernelMfibStatus(AddressFamily af) const {
  return *kernelMfibStatus_[familyIndex(af)];
}

Routing::Multicast::Fib::MfibDir& CentralStateStore::mfibDir(AddressFamily af) const {
  return *mfibDir_[familyIndex(af)];
}

KernelNetInfo::Root& CentralStateStore::kernelDevices(const Lanx::NamespaceName& ns) {
  const std::string path = KernelNetInfo::Root::mountPath(ns);
  if (auto present = Lumo::ptrCast<KernelNetInfo::Root>(sharedMem_->getEntity(path))) {
    return *present;
  }
  auto made = Lumo::makePtr<KernelNetInfo::Root>();
  sharedMem_->entityIs(path, made);
  return *made;
}

Vash::Multicast::Fib::Status& CentralStateStore::routeTable(
    const L3::VrfName& vrf, AddressFamily af, Routing::Multicast::Fib::MfibAppType app) {
  const Routing::Multicast::Fib::MfibTableKey key{vrf, app};
  const std::string path = Routing::Multicast::Fib::MfibDir::tablePath(af, key);
  auto table = Lumo::ptrCast<Vash::Multicast::Fib::Status>(sharedMem_->getEntity(path));
  if (!table) {
    table = Lumo::makePtr<Vash::Multicast::Fib::Status>(app, vrf, af);
    sharedMem_->entityIs(path, table);
  }
  mfibDir(af).tableIs(key);
  return *table;
}

bool CentralStateStore::routeTableHas(const L3::VrfName& vrf, AddressFamily af,
                                      Routing::Multicast::Fib::MfibAppType app) const {
  return mfibDir(af).tableHas({vrf, app});
}

void CentralStateStore::routeTableDel(const L3::VrfName& vrf, AddressFamily af,
                                      Routing::Multicast::Fib::MfibAppType app) {
  const Routing::Multicast::Fib::MfibTableKey key{vrf, app};
  mfibDir(af).tableDel(key);
  sharedMem_->entityDel(Routing::Multicast::Fib::MfibDir::tablePath(af, key));
}
