#pragma once

#include <string_view>

#include "mfib/VekL3MfibModule.h"
#include "pipeline/McastL2VxlanRxSet.h"
#include "pipeline/McastL2VxlanTx.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"

namespace VekMVxlan {

// What the VXLAN pipeline asks of the agent that owns it: the agent's state, the FIB
// modules of the VRFs, the kernel's view of the fabric device, and the steps of the agent
// that the pipeline's creation and removal set off. The agent implements it; the pipeline
// never sees the agent's class.
class VxlanPipelineOwner {
 public:
  using MfibModules = Qel::HashMap2018<L3::VrfName, Lumo::Ptr<VekL3Mcast::MfibAf>>;

  virtual ~VxlanPipelineOwner() = default;

  virtual bool initialized() const = 0;
  virtual bool mvxlanInitialized() const = 0;
  virtual Lumo::Ptr<VekL3Mcast::MfibAf> mfibModule(const L3::VrfName& vrf,
                                                   Lanx::AddressFamily af) const = 0;
  virtual const MfibModules& mfibModules(Lanx::AddressFamily af) const = 0;
  // The VRF's software id now; none if it has none.
  virtual Vrf::VrfIdMap::VrfId curVrfNameToId(const L3::VrfName& vrf) const = 0;
  virtual bool kernelDeviceIsUp(std::string_view deviceName) const = 0;
  // The VRF's routes of the family are sent again: the gate of an outgoing interface moved.
  virtual void reviewRoutes(const L3::VrfName& vrf, Lanx::AddressFamily af) = 0;

  // The forwarding devices follow the L2 pipeline: called after it came or went.
  virtual void handleFwdDevStateSm() = 0;
  virtual void doMaybeCreateAndAttachFabricTx() = 0;
  virtual void attachMcastVxlanRxSetTasks(const Lumo::Ptr<VekL3Mcast::McastL2VxlanRxSet>& set) = 0;
  virtual void attachMcastL2VxlanTxTasks(const Lumo::Ptr<VekL3Mcast::McastL2VxlanTx>& tx) = 0;
  // The L2 encapsulation module came (or went, with null): routed traffic from the L3
  // encapsulation modules goes to it while it stands.
  virtual void l2VxlanInModuleChanged(const Lumo::Ptr<Vek::Module>& /*module*/) {}
};

}  // namespace VekMVxlan
