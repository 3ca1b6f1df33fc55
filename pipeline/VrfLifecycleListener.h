#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"

namespace VekL3Mcast {

class MfibAf;

// What the parts built beside a VRF's pipeline (the VXLAN and MPLS pipelines) hear of the
// VRF's life. The agent calls every registered listener in the order of registration; a
// listener never calls back into VRF start or stop from these. The first three are what
// every such part must follow; the others have nothing to do unless a part needs them.
class VrfLifecycleListener {
 public:
  virtual ~VrfLifecycleListener() = default;

  // The VRF's pipeline for the family stands, its FIB module included.
  virtual void vrfStarted(const L3::VrfName& vrf, Lanx::AddressFamily af) = 0;
  // The VRF's pipeline for the family is about to go; its FIB module still exists.
  virtual void vrfStopping(const L3::VrfName& vrf, Lanx::AddressFamily af) = 0;
  // The id the VRF's modules carry changed (either side may be none): the software id in the
  // full agent, the hardware id in the reduced one, which builds nothing beside the pipeline.
  virtual void vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                            Vrf::VrfIdMap::VrfId newId) = 0;

  // A FIB module of the VRF came (module set) or went (null). What connects to a VRF's FIB
  // module connects here, as far as it stands itself.
  virtual void mfibModuleChanged(const L3::VrfName& /*vrf*/, Lanx::AddressFamily /*af*/,
                                 const Lumo::Ptr<MfibAf>& /*module*/) {}
  // A start made the VRF's FIB module, before its bridge MAC address and worker tasks, and
  // the provider side is up: a VRF whose FIB module came late catches up here on its
  // provider interfaces.
  virtual void handleMvpnIntfStatus() {}
  // The new FIB module has its bridge MAC address and worker tasks: it takes the VRF's SBD
  // VLAN here, if the VXLAN interface gives it one.
  virtual void mfibModuleReady(const L3::VrfName& /*vrf*/, Lanx::AddressFamily /*af*/,
                               const Lumo::Ptr<MfibAf>& /*module*/) {}
  // The software VRF id table gives the id another name, or none, or was read anew.
  virtual void vrfIdToNameChanged(Vrf::VrfIdMap::VrfId /*id*/) {}
};

}  // namespace VekL3Mcast
