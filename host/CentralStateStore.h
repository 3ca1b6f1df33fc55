#pragma once

#include <string_view>

#include "runtime/cordex/EntityManager.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/MvpnIntfStatus.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/bridging/Config.h"
#include "runtime/state/intf/IntfVlanIdTable.h"
#include "runtime/state/kernelmfib/ConfigColl.h"
#include "runtime/state/kernelmfib/StatusColl.h"
#include "runtime/state/kni/KernelNetInfoRoot.h"
#include "runtime/state/multicast/MfibDir.h"
#include "runtime/state/multicast/MulticastIntfsAppDir.h"
#include "runtime/state/vrf/NameToIdMap.h"
#include "runtime/state/vrf/VrfIdMapStatus.h"

// The writer's side of the central state that multicast reads: every entity the agent
// fetches at a path stands there from construction (empty), every shared-memory table it
// mounts has a factory, and the handles below write the values. The host and the tests
// stand in for the rest of the system through it.
class CentralStateStore {
 public:
  explicit CentralStateStore(std::string_view sharedMemName);
  CentralStateStore(const CentralStateStore&) = delete;
  CentralStateStore& operator=(const CentralStateStore&) = delete;

  const Lumo::Ptr<Cordex::EntityManager>& entityManager() const noexcept { return central_; }
  const Lumo::Ptr<QelSharedMem::EntityManager>& sharedMem() const noexcept { return sharedMem_; }

  Vrf::VrfIdMap::NameToIdMap& vrfNameToId() const { return *vrfNameToId_; }
  Vrf::VrfIdMap::Status& hwVrfIdMap() const { return *hwVrfIdMap_; }
  // The software ids by id ("vrf/vrfIdMapStatus"), beside vrfNameToId's ids by name.
  Vrf::VrfIdMap::Status& vrfIdMap() const { return *vrfIdMap_; }
  Routing::Multicast::MvpnIntfStatus& mvpnIntfs() const { return *mvpnIntfs_; }
  Bridging::Config& bridgingConfig() const { return *bridgingConfig_; }
  IntfVlanId::Table& intfVlans() const { return *intfVlans_; }
  Routing::Multicast::MulticastIntfsAppDir& multicastIntfs(Lanx::AddressFamily af) const;
  Routing::KernelMfib::ConfigColl& kernelMfibConfig(Lanx::AddressFamily af) const;
  Routing::KernelMfib::StatusColl& kernelMfibStatus(Lanx::AddressFamily af) const;
  Routing::Multicast::Fib::MfibDir& mfibDir(Lanx::AddressFamily af) const;

  // The kernel devices of a namespace: the table at its path, made if there is none.
  KernelNetInfo::Root& kernelDevices(const Lanx::NamespaceName& ns);
  // The route table of a VRF, family and application; made and listed if there is none.
  Vash::Multicast::Fib::Status& routeTable(const L3::VrfName& vrf, Lanx::AddressFamily af,
                                           Routing::Multicast::Fib::MfibAppType app);
  bool routeTableHas(const L3::VrfName& vrf, Lanx::AddressFamily af,
                     Routing::Multicast::Fib::MfibAppType app) const;
  // Unlists the table, then takes it away.
  void routeTableDel(const L3::VrfName& vrf, Lanx::AddressFamily af,
                     Routing::Multicast::Fib::MfibAppType app);

 private:
  template <typename T>
  Lumo::Ptr<T> central(std::string_view path, Lumo::Ptr<T> entity);
  void registerTableFactories();

  Lumo::Ptr<Cordex::EntityManager> central_;
  Lumo::Ptr<QelSharedMem::EntityManager> sharedMem_;
  Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap> vrfNameToId_;
  Lumo::Ptr<Vrf::VrfIdMap::Status> hwVrfIdMap_;
  Lumo::Ptr<Vrf::VrfIdMap::Status> vrfIdMap_;
  Lumo::Ptr<Routing::Multicast::MvpnIntfStatus> mvpnIntfs_;
  Lumo::Ptr<Bridging::Config> bridgingConfig_;
  Lumo::Ptr<IntfVlanId::Table> intfVlans_;
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir> multicastIntfs_[2];
  Lumo::Ptr<Routing::KernelMfib::ConfigColl> kernelMfibConfig_[2];
  Lumo::Ptr<Routing::KernelMfib::StatusColl> kernelMfibStatus_[2];
  Lumo::Ptr<Routing::Multicast::Fib::MfibDir> mfibDir_[2];
};
