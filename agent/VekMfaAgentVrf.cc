#include <vector>

#include "agent/VekMfaAgent.h"
#include "runtime/lumo/Exception.h"
#include "runtime/sharedmem/MountInfo.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/trace/Trace.h"
#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/vek/ModuleCounters.h"

// The VRF side of the agent: ids, namespace state, and the start and stop of a VRF's
// pipeline.

namespace VekL3Mcast {

namespace {

using Lanx::AddressFamily;

bool isSupported(AddressFamily af) {
  if (af == AddressFamily::ipv4 || af == AddressFamily::ipv6) return true;
  VEK_TRACE(err, "Unsupported address family {}", af);
  return false;
}

}  // namespace

// ---- Ids ----

void MfaAgent::vrfNameStatusIs(Lumo::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper const> status) {
  vrfNameStatusReactor_.publisherIs(const_cast<Vrf::VrfIdMap::NameToIdMapWrapper*>(status.get()));
  vrfNameStatusReactor_.isRegisteredIs(true);
  vrfNameStatus_.is(*this, std::move(status));
}

void MfaAgent::qel_VrfNameStatus_NameToIdMapInIs(
    const Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const>& nameToIdMap) {
  nameToIdMap_ = nameToIdMap;
  nameToIdMapReactor_.publisherIs(const_cast<Vrf::VrfIdMap::NameToIdMap*>(nameToIdMap.get()));
  nameToIdMapReactor_.isRegisteredIs(true);
}

void MfaAgent::handleVrfNameToIdMap() {
  qel_VrfNameStatus_NameToIdMapInIs(vrfNameStatus() ? vrfNameStatus()->nameToIdMap() : nullptr);
  handleVrfNameToId();
}

Vrf::VrfIdMap::VrfId MfaAgent::curVrfNameToId(const L3::VrfName& vrf) const {
  return vrfNameStatus() ? vrfNameStatus()->vrfId(vrf.str()) : Vrf::VrfIdMap::VrfId();
}

Vrf::VrfIdMap::VrfId MfaAgent::vrfIdForModules(const L3::VrfName& vrf) const {
  return oru_ ? vrfNameToIdColl()->vrfNameToId(vrf.str())
              : vrfNameToIdColl()->hwVrfNameToId(vrf.str());
}

void MfaAgent::handleVrfNameToId() {
  // Names that went are only in the shared collection: walk both.
  std::vector<Lumo::String> names;
  if (vrfNameStatus() && vrfNameStatus()->nameToIdMap()) {
    for (const auto& entry : vrfNameStatus()->nameToIdMap()->vrfIds()) names.push_back(entry.key);
  }
  for (const auto& entry : vrfNameToIdColl()->vrfNameToIds()) names.push_back(entry.key);
  for (const Lumo::String& name : names) handleVrfNameToId(name);
}

void MfaAgent::handleVrfNameToId(const Lumo::String& name) {
  const L3::VrfName vrf(name);
  const Vrf::VrfIdMap::VrfId id = curVrfNameToId(vrf);
  // A VRF that loses its id keeps its pipeline: only the id leaves the tables.
  if (!id.isNone()) {
    vrfNameToIdColl()->vrfNameToIdIs(name, id);
  } else {
    vrfNameToIdColl()->vrfNameToIdDel(name);
  }
}

void MfaAgent::hwVrfIdToNameStatusIs(Lumo::Ptr<Vrf::VrfIdMap::Status const> status) {
  hwVrfIdToNameStatusDispatch_.publisherIs(const_cast<Vrf::VrfIdMap::Status*>(status.get()));
  hwVrfIdToNameStatusDispatch_.isRegisteredIs(true);
  hwVrfIdToNameStatus_.is(*this, std::move(status));
}

void MfaAgent::handleHwVrfIdToName() {
  if (!hwVrfIdToNameStatus()) return;
  std::vector<Vrf::VrfIdMap::VrfId> ids;
  for (const auto& entry : hwVrfIdToNameStatus()->vrfEntries()) ids.push_back(entry.key);
  for (Vrf::VrfIdMap::VrfId id : ids) handleHwVrfIdToName(id);
  // Names whose id no longer names them.
  std::vector<Lumo::String> gone;
  for (const auto& entry : vrfNameToIdColl()->hwVrfNameToIds()) {
    if (hwVrfIdToNameStatus()->vrfEntry(entry.value).name != entry.key) gone.push_back(entry.key);
  }
  for (const Lumo::String& name : gone) vrfNameToIdColl()->hwVrfNameToIdDel(name);
}

void MfaAgent::handleHwVrfIdToName(const Vrf::VrfIdMap::VrfId& id) {
  try {
    const Vrf::VrfIdMap::VrfEntry entry = hwVrfIdToNameStatus()->vrfEntry(id);
    const bool usable = !entry.isEmpty() && entry.name.size() <= L3::VrfName::maxLength();
    // Other names under this id are stale: the table has one name per id.
    std::vector<Lumo::String> stale;
    for (const auto& member : vrfNameToIdColl()->hwVrfNameToIds()) {
      if (member.value == id && !(usable && member.key == entry.name)) stale.push_back(member.key);
    }
    for (const Lumo::String& name : stale) vrfNameToIdColl()->hwVrfNameToIdDel(name);
    if (usable) vrfNameToIdColl()->hwVrfNameToIdIs(entry.name, id);
  } catch (const Lumo::Exception& error) {
    doCorruptionDetected(error.msg());
  }
}

void MfaAgent::doCorruptionDetected(const Lumo::String& msg) {
  VEK_TRACE(err, "Corrupt hardware VRF id table: {}", msg);
}

// ---- Bridge MAC address ----

void MfaAgent::bridgingConfigIs(Lumo::Ptr<Bridging::Config const> config) {
  bridgingConfigDispatch_.publisherIs(const_cast<Bridging::Config*>(config.get()));
  bridgingConfigDispatch_.isRegisteredIs(true);
  bridgingConfig_.is(*this, std::move(config));
  handleBridgeMacAddr();
}

void MfaAgent::handleBridgeMacAddr() {
  if (!bridgingConfig()) return;
  const Lanx::EthAddr& mac = bridgingConfig()->bridgeMacAddr();
  for (AddressFamily af : {AddressFamily::ipv4, AddressFamily::ipv6}) {
    for (const auto& module : mfibModules(af)) module.value->setBridgeMacAddr(mac);
  }
}

// ---- Multicast interfaces ----

void MfaAgent::handleAppRootSm(AddressFamily af, const L3::VrfName& vrf) {
  if (!isSupported(af)) return;
  auto& nested = af == AddressFamily::ipv6 ? HN_NestedSm_AppRoot6Sm_ : HN_NestedSm_AppRootSm_;
  if (auto appRootSm = mcastIntfRoot(af)->vrfSm(vrf)) {
    nested.smIs(appRootSm);
  } else {
    nested.smDel(vrf);
  }
}

void MfaAgent::handleMcastIntf(const L3::VrfName& vrf, Lanx::IntfId intf, AddressFamily af) {
  if (!isSupported(af)) return;
  const Lumo::Ptr<MfibAf> module = mfibModule(vrf, af);
  if (!module) return;
  const auto appRootSm = mcastIntfRoot(af)->vrfSm(vrf);
  if (appRootSm && appRootSm->multicastIntfHas(intf)) {
    VEK_TRACE(info, "Add mcastIntf to mfibModule  {}", intf.shortName());
    module->addMulticastIntfs(intf);
    if (oru_) createKniSm(vrf);
  } else {
    VEK_TRACE(info, "Remove mcastIntf to mfibModule  {}", intf.shortName());
    module->deleteMulticastIntfs(intf);
  }
}

void MfaAgent::mfibModuleIs(const Lumo::Ptr<MfibAf>& module) {
  const AddressFamily af = module->af();
  if (!isSupported(af)) return;
  if (af == AddressFamily::ipv6) {
    mfib6Module_.is(*this, module->vrfName(), module);
  } else {
    mfibModule_.is(*this, module->vrfName(), module);
  }
  handleMfibModule(module->vrfName(), af);
}

void MfaAgent::mfibModuleDel(const L3::VrfName& vrf, AddressFamily af) {
  if (!isSupported(af)) return;
  if (af == AddressFamily::ipv6) {
    mfib6Module_.del(*this, vrf);
  } else {
    mfibModule_.del(*this, vrf);
  }
  handleMfibModule(vrf, af);
}

void MfaAgent::handleMfibModule(const L3::VrfName& vrf, AddressFamily af) {
  const auto appRootSm = mcastIntfRoot(af)->vrfSm(vrf);
  if (const Lumo::Ptr<MfibAf> module = mfibModule(vrf, af)) {
    if (appRootSm) {
      for (const auto& member : appRootSm->multicastIntfs()) {
        VEK_TRACE(info, "add intf to mfibModule: {}", member.key.shortName());
        module->addMulticastIntfs(member.key);
      }
    }
    // The VXLAN pipeline connects the module here once it is built: for the default VRF
    // to the L2 encapsulation and decapsulation and the VLAN modules, for every VRF to the
    // L3 VXLAN modules, as far as they stand.
    return;
  }
  VEK_TRACE(info, "Cleaning up interface modules for vrf: {}", vrf);
  if (appRootSm) appRootSm->multicastIntfDelAll();
  kernelMfibStatusColl(af)->vrfStatusDel(vrf);
  mcastIntfRoot(af)->vrfSmDel(vrf);
}

// ---- Namespace state ----

void MfaAgent::createKniSm(const L3::VrfName& vrf) {
  const Lanx::NamespaceName ns = vrf.nsName();
  if (vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirHas(ns)) return;
  const auto sharedMem = QelSharedMem::EntityManager::getEntityManager(Lanx::sharedMemManagerName);
  const std::string path = KernelNetInfo::Root::mountPath(ns);
  doMountTable(*sharedMem, path, KernelNetInfo::Root::mountTypeName, QelVash::MountInfo());
  auto deviceDir = vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirIs(ns)->deviceIntfStatusDirIs(
      Lumo::String(Interface::DeviceVrfIntfStatusDir::kernelIntfs));
  auto root = Lumo::ptrCast<KernelNetInfo::Root const>(sharedMem->getEntity(path));
  intfStatusManagerRoot()->intfStatusManagerIs(ns, deviceDir, root);
  // The fabric device and the forwarding device state follow the default namespace here
  // once they are built.
  if (oru_ && vrf.isDefault()) defaultVrfKniRoot_.is(*this, root);
}

void MfaAgent::deleteKniSm(const L3::VrfName& vrf) {
  const Lanx::NamespaceName ns = vrf.nsName();
  if (!vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirHas(ns)) return;
  VEK_TRACE(info, "Handle vrf {} has ns: {}", vrf, ns);
  vrfDeviceIntfStatusDir()->deviceVrfIntfStatusDirDel(ns);
  intfStatusManagerRoot()->intfStatusManagerDel(ns);
  if (oru_ && vrf.isDefault()) defaultVrfKniRoot_.del(*this);
  QelVash::Mount::doUnmount(KernelNetInfo::Root::mountPath(ns));
}

// ---- Start and stop ----

Lumo::Ptr<MfibAf> MfaAgent::getMfibModule(const L3::VrfName& vrf, AddressFamily af) const {
  if (!initialized()) return nullptr;
  return mfibModule(vrf, af);
}

void MfaAgent::startMfibSm(const L3::VrfName& vrf, AddressFamily af) {
  if (!initialized()) return;
  if (!isSupported(af)) return;
  VEK_TRACE(info, "startMfibSm vrf: {} af: {}", vrf, af);
  createKniSm(vrf);
  const Vrf::VrfIdMap::VrfId id = vrfIdForModules(vrf);
  mcastModuleManager()->createIgmpV2Module(af, vrf, id, oru_, vekcsd());

  if (oru_ && !mcastAnyRxSet(vrf)) {
    VEK_TRACE(info, "Create McastAnyRxSet( {} )", vrf);
    auto set = mcastModuleManager()->createMcastAnyRxSet(vrf, id, cmdConfigGroup());
    mcastAnyRxSetIs(set);
    mcastIntfModuleSm()->updateIfIndexAll(vrf);
    // While neither the L2 nor the L3 egress has connected the demultiplexer, the VXLAN
    // egress connects it here, once that pipeline is built.
    attachMcastAnyRxSetTasks(set);
  }

  mcastIntfRoot(af)->vrfSmIs(vrf, af, multicastIntfsAppDir(af));
  kernelMfibStatusColl(af)->vrfStatusIs(vrf);

  // The port's task is attached with the port: attaching it again at a repeated start
  // would file the one task under a second worker's class.
  if (oru_ && !pimRegRxVrf(vrf, af)) {
    VEK_TRACE(info, "{}{} )", af == AddressFamily::ipv6 ? "Create PimRegRx6( " : "Create PimRegRx( ",
              vrf);
    const Lumo::Ptr<PimRegRx> port = mcastModuleManager()->createPimRegRx(af, vrf, cmdConfigGroup());
    pimRegRxVrfIs(vrf, af, port);
    attachPimRegRxTasks(port);
  }

  if (!mfibModule(vrf, af)) doCreateMfibModule(vrf, af, id);
  if (!mfibSm(vrf, af)) doCreateMfibSm(vrf, af);
}

void MfaAgent::doCreateMfibModule(const L3::VrfName& vrf, AddressFamily af,
                                  Vrf::VrfIdMap::VrfId id) {
  const Lumo::Ptr<MfibAf> module = mcastModuleManager()->createMfibModule(af, vrf, id, oru_);
  addMfibModuleCounters(module, vekcsd());
  mfibModuleIs(module);
  // The MPLS side catches up on the VRF's ids and provider interfaces here once it is
  // built (handleVrfIdToName, handleMvpnIntfStatus, when MPLS is initialized and a toggle
  // of it is on).
  if (bridgingConfig()) module->setBridgeMacAddr(bridgingConfig()->bridgeMacAddr());
  if (oru_) {
    module->regMfibTasks(vrf);
    module->regCleanupTask(vrf);
  } else {
    const std::uint32_t workers = managementSm()->workerCount();
    module->regMfibTasksForAllWorkers(vrf, workers);
    module->regCleanupTaskForAllWorkers(vrf, workers);
  }
  // The SBD VLAN of the VRF reaches the module here once the VXLAN interface state is
  // followed.
}

void MfaAgent::doCreateMfibSm(const L3::VrfName& vrf, AddressFamily af) {
  const auto sm = mfibSmIs(vrf, af, oru_, mfibModule(vrf, af), configStatusPair(),
                           cmdConfigGroup(), vekcsd(), Dov::TaskSchedulerRoot::findOrCreateScheduler());
  if (auto adapter = mfibVrfDir(af)->vrfAdapter(vrf); adapter && adapter->mfibVashCount() > 0) {
    sm->mfibVrfAdapterIs(adapter);
  }
  handleKernelMfibConfig(vrf, af);
}

void MfaAgent::stopMfibSm(const L3::VrfName& vrf, AddressFamily af) {
  if (!initialized()) return;
  if (!isSupported(af)) return;
  VEK_TRACE(info, "stopMfibSm vrf: {} af: {}", vrf, af);
  // The route machine goes first: it must send nothing to a module on its way out.
  const Lumo::Ptr<MfibAf> module = mfibModule(vrf, af);
  mfibSmDel(vrf, af);
  if (module) Vek::freeModuleCounters(module, vekcsd());
  mfibModuleDel(vrf, af);
  mcastModuleManager()->deleteMfibModule(af, vrf);
  if (oru_) {
    pimRegRxVrfDel(vrf, af);
    mcastModuleManager()->deletePimRegRx(af, vrf);
  }
  mcastModuleManager()->deleteIgmpV2Module(af, vrf, vrfIdForModules(vrf), vekcsd());
  const bool familyLeft = mfibSm(vrf, AddressFamily::ipv4) || mfibSm(vrf, AddressFamily::ipv6);
  if (oru_ && !familyLeft) {
    mcastAnyRxSetDel(vrf);
    mcastModuleManager()->deleteMcastAnyRxSet(vrf);
  }
  // The default VRF's namespace serves the fabric for the life of the agent.
  if (!familyLeft && !vrf.isDefault()) deleteKniSm(vrf);
}

// ---- Per-VRF members ----

Lumo::Ptr<VekL3MfibSm> MfaAgent::mfibSmIs(const L3::VrfName& vrf, AddressFamily af, bool oru,
                                          const Lumo::Ptr<MfibAf>& module,
                                          const Lumo::Ptr<Vek::ModuleConfigStatusPair>& pair,
                                          const Lumo::Ptr<Vek::CmdConfigGroup>& group,
                                          const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd,
                                          const Lumo::Ptr<Dov::TaskScheduler>& scheduler) {
  if (auto present = mfibSm(vrf, af)) return present;
  auto sm = vekL3MfibSmFactory(vrf, af, oru, module, pair, group, vekcsd, scheduler);
  smMemberAdd(sm.get());
  sm->hasNotificationActiveIs(hasNotificationActive());
  if (af == AddressFamily::ipv6) {
    mfib6Sm_.is(*this, vrf, sm);
  } else {
    mfibSm_.is(*this, vrf, sm);
  }
  return sm;
}

void MfaAgent::mfibSmDel(const L3::VrfName& vrf, AddressFamily af) {
  const Lumo::Ptr<VekL3MfibSm> sm = mfibSm(vrf, af);
  if (!sm) return;
  smMemberDel(sm.get());
  sm->qelDoZombieReactors(true);
  sm->hasNotificationActiveIs(false);
  if (af == AddressFamily::ipv6) {
    mfib6Sm_.del(*this, vrf);
  } else {
    mfibSm_.del(*this, vrf);
  }
}

void MfaAgent::pimRegRxVrfIs(const L3::VrfName& vrf, AddressFamily af,
                             const Lumo::Ptr<PimRegRx>& port) {
  if (af == AddressFamily::ipv6) {
    pimRegRx6Vrf_.is(*this, vrf, port);
  } else {
    pimRegRxVrf_.is(*this, vrf, port);
  }
}

void MfaAgent::pimRegRxVrfDel(const L3::VrfName& vrf, AddressFamily af) {
  if (af == AddressFamily::ipv6) {
    pimRegRx6Vrf_.del(*this, vrf);
  } else {
    pimRegRxVrf_.del(*this, vrf);
  }
}

// ---- Route tables and kernel limits ----

void MfaAgent::handleMfibVrfAdapter(AddressFamily af, const L3::VrfName& vrf) {
  auto& nested = af == AddressFamily::ipv6 ? HN_NestedSm_Mfib6VrfAdapter_
                                           : HN_NestedSm_MfibVrfAdapter_;
  if (auto adapter = mfibVrfDir(af)->vrfAdapter(vrf)) {
    nested.smIs(adapter);
    return;
  }
  nested.smDel(vrf);
  if (auto sm = mfibSm(vrf, af)) {
    VEK_TRACE(info, "Removing Mfib Sm vash dir for vrf {}", vrf);
    sm->mfibVrfAdapterDel();
  }
}

void MfaAgent::handleKernelMfibConfig(const L3::VrfName& vrf, AddressFamily af) {
  const Lumo::Ptr<VekL3MfibSm> sm = mfibSm(vrf, af);
  if (!sm) {
    VEK_TRACE(info, "No mfib SM, nothing to do");
    return;
  }
  if (auto config = kernelMfibConfigColl(af)->config(vrf)) {
    VEK_TRACE(info, "Adding kernel mfib config to mfib SM");
    if (sm->kernelMfibConfig() && sm->kernelMfibConfig() != config) sm->kernelMfibConfigDel();
    sm->kernelMfibConfigIs(config);
  } else {
    VEK_TRACE(info, "Deleting kernel mfib config from mfib SM if present");
    sm->kernelMfibConfigDel();
  }
}

// ---- Worker tasks of modules ----

void MfaAgent::attachModuleTask(const Lumo::Ptr<Vek::Module>& module, std::uint32_t taskWeight) {
  const std::uint32_t worker = managementSm()->allocNextWorker(taskWeight, false);
  const Lumo::String tcName = vekcsd()->widToWeightedClass(worker);
  if (tcName.empty()) return;
  vekcsd()->tcManager()->attachTaskToTc(cmdConfigGroup(), module->name(), tcName, 0, taskWeight);
  cmdConfigGroup()->enqueueVersionInc(1);
}

void MfaAgent::attachMcastAnyRxSetTasks(const Lumo::Ptr<McastAnyRxSet>& set) {
  for (const auto& member : set->mcastAnyRx()) {
    const McastRxType type = member.key;
    const Lumo::Ptr<Vek::Module>& rxModule = member.value->rxModule();
    if (!rxModule) {
      VEK_TRACE(warn, "Rx module missing for McastAnyRx with type {}, no task to attach", type);
      continue;
    }
    attachModuleTask(rxModule, type == McastRxType::mcastHwFwd ? 128 : 512);
  }
}

void MfaAgent::attachPimRegRxTasks(const Lumo::Ptr<PimRegRx>& port) {
  if (!port->rxModule()) {
    VEK_TRACE(warn, "Rx module missing for PimRegRx, no task to attach");
    return;
  }
  attachModuleTask(port->rxModule(), 512);
}

}  // namespace VekL3Mcast
