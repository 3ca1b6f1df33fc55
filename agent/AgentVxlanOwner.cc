#include "agent/AgentVxlanOwner.h"

#include "agent/VekMfaAgent.h"

namespace VekL3Mcast {

bool AgentVxlanOwner::initialized() const { return agent_->initialized(); }

bool AgentVxlanOwner::mvxlanInitialized() const { return agent_->mvxlanInitialized(); }

Lumo::Ptr<MfibAf> AgentVxlanOwner::mfibModule(const L3::VrfName& vrf,
                                              Lanx::AddressFamily af) const {
  return agent_->vrfPipelineControl()->mfibModule(vrf, af);
}

const AgentVxlanOwner::MfibModules& AgentVxlanOwner::mfibModules(Lanx::AddressFamily af) const {
  return agent_->vrfPipelineControl()->mfibModules(af);
}

Vrf::VrfIdMap::VrfId AgentVxlanOwner::curVrfNameToId(const L3::VrfName& vrf) const {
  return agent_->vrfIdTracker()->curVrfNameToId(vrf);
}

bool AgentVxlanOwner::kernelDeviceIsUp(std::string_view deviceName) const {
  return agent_->fabricDeviceControl()->kernelDeviceIsUp(deviceName);
}

void AgentVxlanOwner::reviewRoutes(const L3::VrfName& vrf, Lanx::AddressFamily af) {
  if (const auto& sm = agent_->vrfPipelineControl()->mfibSm(vrf, af)) sm->doReviewAllRoutes();
}

void AgentVxlanOwner::handleFwdDevStateSm() { agent_->fabricDeviceControl()->handleFwdDevStateSm(); }

void AgentVxlanOwner::doMaybeCreateAndAttachFabricTx() {
  agent_->fabricDeviceControl()->doMaybeCreateAndAttachFabricTx();
}

void AgentVxlanOwner::attachMcastVxlanRxSetTasks(const Lumo::Ptr<McastL2VxlanRxSet>& set) {
  agent_->mfibWorkerTasks()->attachMcastVxlanRxSetTasks(set);
}

void AgentVxlanOwner::attachMcastL2VxlanTxTasks(const Lumo::Ptr<McastL2VxlanTx>& tx) {
  agent_->mfibWorkerTasks()->attachMcastL2VxlanTxTasks(tx);
}

void AgentVxlanOwner::l2VxlanInModuleChanged(const Lumo::Ptr<Vek::Module>& module) {
  if (const auto& routed = agent_->l3VxlanPipeline()) routed->l2VxlanInModuleIs(module);
}

}  // namespace VekL3Mcast
