#pragma once

#include "runtime/state/AddressFamily.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"

namespace VekL3Mcast {

// What the parts built beside a VRF's pipeline (the VXLAN and MPLS pipelines) hear of the
// VRF's life. The agent calls every registered listener in the order of registration; a
// listener never calls back into VRF start or stop from these.
class VrfLifecycleListener {
 public:
  virtual ~VrfLifecycleListener() = default;

  // The VRF's pipeline for the family stands, its FIB module included.
  virtual void vrfStarted(const L3::VrfName& vrf, Lanx::AddressFamily af) = 0;
  // The VRF's pipeline for the family is about to go; its FIB module still exists.
  virtual void vrfStopping(const L3::VrfName& vrf, Lanx::AddressFamily af) = 0;
  // The VRF's software id changed (either side may be none).
  virtual void vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                            Vrf::VrfIdMap::VrfId newId) = 0;
};

}  // namespace VekL3Mcast
