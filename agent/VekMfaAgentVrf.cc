#include <vector>

#include "agent/VekMfaAgent.h"
#include "runtime/lumo/Exception.h"
#include "runtime/sharedmem/MountInfo.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/trace/Trace.h"
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
    if (!appRootSm) return;
    for (const auto& member : appRootSm->multicastIntfs()) {
      VEK_TRACE(info, "add intf to mfibModule: {}", member.key.shortName());
      module->addMulticastIntfs(member.key);
    }
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
  mcastIntfRoot(af)->vrfSmIs(vrf, af, multicastIntfsAppDir(af));
  kernelMfibStatusColl(af)->vrfStatusIs(vrf);
}

void MfaAgent::stopMfibSm(const L3::VrfName& vrf, AddressFamily af) {
  if (!initialized()) return;
  if (!isSupported(af)) return;
  VEK_TRACE(info, "stopMfibSm vrf: {} af: {}", vrf, af);
  if (const Lumo::Ptr<MfibAf> module = mfibModule(vrf, af)) {
    Vek::freeModuleCounters(module, vekcsd());
    mfibModuleDel(vrf, af);
  }
  const bool familyLeft =
      mfibModule(vrf, AddressFamily::ipv4) || mfibModule(vrf, AddressFamily::ipv6);
  if (!familyLeft && !vrf.isDefault()) deleteKniSm(vrf);
}

}  // namespace VekL3Mcast
