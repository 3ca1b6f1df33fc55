#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/vrf/NameToIdMapWrapper.h"
#include "runtime/state/vrf/VrfIdMapStatus.h"
#include "runtime/state/vrf/VrfNameToIdCollection.h"

namespace VekL3Mcast {

class MfaAgent;

// The ids of the VRFs: copies the software id of each VRF name (or, in the reduced agent,
// the hardware id) into the collection it shares with the rest of the forwarding agent, and
// tells the VRF-lifecycle listeners of each change of the id the VRF's modules carry: the
// software id in the full agent, the hardware id in the reduced one. A VRF that loses its
// id keeps its pipeline: only the id leaves the tables.
class VrfIdTracker : public Qel::StateMachine {
 public:
  explicit VrfIdTracker(MfaAgent* agent);
  std::string_view typeName() const override { return "VekL3Mcast::VrfIdTracker"; }

  // Follows the name status the agent mounted; the map under it is followed from
  // followNameToIdMap on, as the agent binds its chained reactors last.
  void vrfNameStatusIs();
  void followNameToIdMap();
  void hwVrfIdToNameStatusIs();
  // Follows the software id table the agent mounted for the provider side.
  void vrfIdToNameStatusIs();

  // Every name of the name status and of the collection, so that names gone are found.
  void handleVrfNameToId();
  void handleVrfNameToId(const Lumo::String& name);
  void handleHwVrfIdToName();
  void handleHwVrfIdToName(const Vrf::VrfIdMap::VrfId& id);
  void handleVrfNameToIdMap();
  // Every id of the software id table; each one is told to the listeners, which decide
  // again what the VRF of that id takes part in.
  void handleVrfIdToName();
  void handleVrfIdToName(const Vrf::VrfIdMap::VrfId& id);

  // The id of a VRF name in the name status now; none if it has none.
  Vrf::VrfIdMap::VrfId curVrfNameToId(const L3::VrfName& vrf) const;
  // The id a VRF's modules are made with: software id in the full agent, hardware id in
  // the reduced one.
  Vrf::VrfIdMap::VrfId vrfIdForModules(const L3::VrfName& vrf) const;

  // Stops following the inputs; the agent's way down.
  void handleCleanup();

 private:
  const Lumo::Ptr<VrfNameToIdCollection>& vrfNameToIdColl() const;
  void doCorruptionDetected(const Lumo::String& msg);
  // Sets (or, with none, drops) a name's hardware id.
  void doHwVrfNameToIdIs(const Lumo::String& name, Vrf::VrfIdMap::VrfId id);
  void qel_VrfNameStatus_NameToIdMapInIs(
      const Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const>& nameToIdMap);

  MfaAgent* agent_;
  // The name map the chained reactor follows; the wrapper may replace it.
  Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const> nameToIdMap_;

  Qel::SmSubscriber<VrfIdTracker> vrfNameStatusReactor_{
      this, &Qel::reactorDispatch<VrfIdTracker, Vrf::VrfIdMap::NameToIdMapWrapper::kNameToIdMap,
                                  &VrfIdTracker::handleVrfNameToIdMap>};
  Qel::SmSubscriber<VrfIdTracker> nameToIdMapReactor_{
      this, &Qel::reactorDispatch<VrfIdTracker, Vrf::VrfIdMap::NameToIdMap::kVrfId,
                                  static_cast<void (VrfIdTracker::*)(const Lumo::String&)>(
                                      &VrfIdTracker::handleVrfNameToId)>};
  Qel::SmSubscriber<VrfIdTracker> hwVrfIdToNameStatusDispatch_{
      this, &Qel::reactorDispatch<VrfIdTracker, Vrf::VrfIdMap::Status::kVrfEntry,
                                  static_cast<void (VrfIdTracker::*)(const Vrf::VrfIdMap::VrfId&)>(
                                      &VrfIdTracker::handleHwVrfIdToName)>};
  Qel::SmSubscriber<VrfIdTracker> vrfIdToNameStatusDispatch_{
      this, &Qel::reactorDispatch<VrfIdTracker, Vrf::VrfIdMap::Status::kVrfEntry,
                                  static_cast<void (VrfIdTracker::*)(const Vrf::VrfIdMap::VrfId&)>(
                                      &VrfIdTracker::handleVrfIdToName)>};
};

}  // namespace VekL3Mcast
