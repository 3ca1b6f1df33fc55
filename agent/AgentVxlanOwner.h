#pragma once

#include <string_view>

#include "vxlan/VxlanPipelineOwner.h"

namespace VekL3Mcast {

class MfaAgent;

// The agent as its VXLAN pipeline sees it: each question goes to the part of the agent that
// owns the answer (the flags to the agent, the FIB modules to the VRFs' pipelines, the ids
// to the id tracker, the fabric to the default namespace's devices, the tasks to the worker
// tasks).
class AgentVxlanOwner final : public VekMVxlan::VxlanPipelineOwner {
 public:
  explicit AgentVxlanOwner(MfaAgent* agent) : agent_(agent) {}

  bool initialized() const override;
  bool mvxlanInitialized() const override;
  Lumo::Ptr<MfibAf> mfibModule(const L3::VrfName& vrf, Lanx::AddressFamily af) const override;
  const MfibModules& mfibModules(Lanx::AddressFamily af) const override;
  Vrf::VrfIdMap::VrfId curVrfNameToId(const L3::VrfName& vrf) const override;
  bool kernelDeviceIsUp(std::string_view deviceName) const override;
  void reviewRoutes(const L3::VrfName& vrf, Lanx::AddressFamily af) override;
  void handleFwdDevStateSm() override;
  void doMaybeCreateAndAttachFabricTx() override;
  void attachMcastVxlanRxSetTasks(const Lumo::Ptr<McastL2VxlanRxSet>& set) override;
  void attachMcastL2VxlanTxTasks(const Lumo::Ptr<McastL2VxlanTx>& tx) override;
  void l2VxlanInModuleChanged(const Lumo::Ptr<Vek::Module>& module) override;

 private:
  MfaAgent* agent_;
};

}  // namespace VekL3Mcast
