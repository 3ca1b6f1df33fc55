#include "agent/VrfIdTracker.h"

#include <vector>

#include "agent/VekMfaAgent.h"
#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

VrfIdTracker::VrfIdTracker(MfaAgent* agent) : agent_(agent) {}

const Lumo::Ptr<VrfNameToIdCollection>& VrfIdTracker::vrfNameToIdColl() const {
  return agent_->vrfNameToIdColl();
}

void VrfIdTracker::vrfNameStatusIs() {
  const auto& status = agent_->inputs().vrfNameStatus;
  vrfNameStatusReactor_.publisherIs(const_cast<Vrf::VrfIdMap::NameToIdMapWrapper*>(status.get()));
  vrfNameStatusReactor_.isRegisteredIs(true);
}

void VrfIdTracker::followNameToIdMap() {
  if (const auto& status = agent_->inputs().vrfNameStatus) {
    qel_VrfNameStatus_NameToIdMapInIs(status->nameToIdMap());
  }
}

void VrfIdTracker::qel_VrfNameStatus_NameToIdMapInIs(
    const Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const>& nameToIdMap) {
  nameToIdMap_ = nameToIdMap;
  nameToIdMapReactor_.publisherIs(const_cast<Vrf::VrfIdMap::NameToIdMap*>(nameToIdMap.get()));
  nameToIdMapReactor_.isRegisteredIs(true);
}

void VrfIdTracker::handleVrfNameToIdMap() {
  const auto& status = agent_->inputs().vrfNameStatus;
  qel_VrfNameStatus_NameToIdMapInIs(status ? status->nameToIdMap() : nullptr);
  handleVrfNameToId();
}

Vrf::VrfIdMap::VrfId VrfIdTracker::curVrfNameToId(const L3::VrfName& vrf) const {
  const auto& status = agent_->inputs().vrfNameStatus;
  return status ? status->vrfId(vrf.str()) : Vrf::VrfIdMap::VrfId();
}

Vrf::VrfIdMap::VrfId VrfIdTracker::vrfIdForModules(const L3::VrfName& vrf) const {
  return agent_->oru() ? vrfNameToIdColl()->vrfNameToId(vrf.str())
                       : vrfNameToIdColl()->hwVrfNameToId(vrf.str());
}

void VrfIdTracker::handleVrfNameToId() {
  // Names that went are only in the shared collection: walk both.
  std::vector<Lumo::String> names;
  const auto& status = agent_->inputs().vrfNameStatus;
  if (status && status->nameToIdMap()) {
    for (const auto& entry : status->nameToIdMap()->vrfIds()) names.push_back(entry.key);
  }
  for (const auto& entry : vrfNameToIdColl()->vrfNameToIds()) names.push_back(entry.key);
  for (const Lumo::String& name : names) handleVrfNameToId(name);
}

void VrfIdTracker::handleVrfNameToId(const Lumo::String& name) {
  const L3::VrfName vrf(name);
  const Vrf::VrfIdMap::VrfId id = curVrfNameToId(vrf);
  const Vrf::VrfIdMap::VrfId oldId = vrfNameToIdColl()->vrfNameToId(name);
  if (!id.isNone()) {
    vrfNameToIdColl()->vrfNameToIdIs(name, id);
  } else {
    vrfNameToIdColl()->vrfNameToIdDel(name);
  }
  // The reduced agent's modules carry hardware ids: their changes are told from there.
  if (oldId != id && agent_->oru()) agent_->vrfLifecycleListeners().vrfIdChanged(vrf, oldId, id);
}

void VrfIdTracker::hwVrfIdToNameStatusIs() {
  const auto& status = agent_->inputs().hwVrfIdToNameStatus;
  hwVrfIdToNameStatusDispatch_.publisherIs(const_cast<Vrf::VrfIdMap::Status*>(status.get()));
  hwVrfIdToNameStatusDispatch_.isRegisteredIs(true);
}

void VrfIdTracker::handleHwVrfIdToName() {
  const auto& status = agent_->inputs().hwVrfIdToNameStatus;
  if (!status) return;
  std::vector<Vrf::VrfIdMap::VrfId> ids;
  for (const auto& entry : status->vrfEntries()) ids.push_back(entry.key);
  for (Vrf::VrfIdMap::VrfId id : ids) handleHwVrfIdToName(id);
  // Names whose id no longer names them.
  std::vector<Lumo::String> gone;
  for (const auto& entry : vrfNameToIdColl()->hwVrfNameToIds()) {
    if (status->vrfEntry(entry.value).name != entry.key) gone.push_back(entry.key);
  }
  for (const Lumo::String& name : gone) doHwVrfNameToIdIs(name, Vrf::VrfIdMap::VrfId());
}

void VrfIdTracker::handleHwVrfIdToName(const Vrf::VrfIdMap::VrfId& id) {
  try {
    const Vrf::VrfIdMap::VrfEntry entry = agent_->inputs().hwVrfIdToNameStatus->vrfEntry(id);
    const bool usable = !entry.isEmpty() && entry.name.size() <= L3::VrfName::maxLength();
    // Other names under this id are stale: the table has one name per id.
    std::vector<Lumo::String> stale;
    for (const auto& member : vrfNameToIdColl()->hwVrfNameToIds()) {
      if (member.value == id && !(usable && member.key == entry.name)) stale.push_back(member.key);
    }
    for (const Lumo::String& name : stale) doHwVrfNameToIdIs(name, Vrf::VrfIdMap::VrfId());
    if (usable) doHwVrfNameToIdIs(entry.name, id);
  } catch (const Lumo::Exception& error) {
    doCorruptionDetected(error.msg());
  }
}

void VrfIdTracker::doHwVrfNameToIdIs(const Lumo::String& name, Vrf::VrfIdMap::VrfId id) {
  const Vrf::VrfIdMap::VrfId oldId = vrfNameToIdColl()->hwVrfNameToId(name);
  if (id.isNone()) {
    vrfNameToIdColl()->hwVrfNameToIdDel(name);
  } else {
    vrfNameToIdColl()->hwVrfNameToIdIs(name, id);
  }
  // Only the reduced agent makes its modules with hardware ids.
  if (oldId != id && !agent_->oru()) {
    agent_->vrfLifecycleListeners().vrfIdChanged(L3::VrfName(name), oldId, id);
  }
}

void VrfIdTracker::vrfIdToNameStatusIs() {
  const auto& status = agent_->inputs().vrfIdToNameStatus;
  vrfIdToNameStatusDispatch_.publisherIs(const_cast<Vrf::VrfIdMap::Status*>(status.get()));
  vrfIdToNameStatusDispatch_.isRegisteredIs(true);
}

void VrfIdTracker::handleVrfIdToName() {
  const auto& status = agent_->inputs().vrfIdToNameStatus;
  if (!status) return;
  std::vector<Vrf::VrfIdMap::VrfId> ids;
  for (const auto& entry : status->vrfEntries()) ids.push_back(entry.key);
  for (Vrf::VrfIdMap::VrfId id : ids) handleVrfIdToName(id);
}

void VrfIdTracker::handleVrfIdToName(const Vrf::VrfIdMap::VrfId& id) {
  agent_->vrfLifecycleListeners().vrfIdToNameChanged(id);
}

void VrfIdTracker::doCorruptionDetected(const Lumo::String& msg) {
  VEK_TRACE(err, "Corrupt hardware VRF id table: {}", msg);
}

void VrfIdTracker::handleCleanup() {
  vrfNameStatusReactor_.isRegisteredIs(false);
  nameToIdMapReactor_.isRegisteredIs(false);
  hwVrfIdToNameStatusDispatch_.isRegisteredIs(false);
  vrfIdToNameStatusDispatch_.isRegisteredIs(false);
}

}  // namespace VekL3Mcast
