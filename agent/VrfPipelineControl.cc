#include "agent/VrfPipelineControl.h"

#include "agent/MfaToggles.h"
#include "agent/VekMfaAgent.h"
#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleCounters.h"

// The start and stop of a VRF's pipeline, and the per-VRF members they make.

namespace VekL3Mcast {

namespace {

using Lanx::AddressFamily;

// The PIM register port as the trace names it.
constexpr Lanx::ByFamily<std::string_view> pimRegRxTraceName{"PimRegRx", "PimRegRx6"};

bool isSupported(AddressFamily af) {
  if (af == AddressFamily::ipv4 || af == AddressFamily::ipv6) return true;
  VEK_TRACE(err, "Unsupported address family {}", af);
  return false;
}

}  // namespace

VrfPipelineControl::VrfPipelineControl(MfaAgent* agent) : agent_(agent) {
  for (AddressFamily af : Lanx::bothFamilies) {
    mcastIntfRoot_[af].is(*this, Lumo::makePtr<Routing::Multicast::MulticastIntfsAppRootSmColl>());
    mcastIntfRootDispatch_.publisherIs(af, mcastIntfRoot(af).get());
  }
}

// ---- Start and stop ----

void VrfPipelineControl::startMfibSm(const L3::VrfName& vrf, AddressFamily af) {
  if (!agent_->initialized()) return;
  if (!isSupported(af)) return;
  VEK_TRACE(info, "startMfibSm vrf: {} af: {}", vrf, af);
  agent_->vrfNamespaces()->createKniSm(vrf);
  const Vrf::VrfIdMap::VrfId id = agent_->vrfIdTracker()->vrfIdForModules(vrf);
  const bool oru = agent_->oru();
  const auto& manager = agent_->mcastModuleManager();
  manager->createIgmpV2Module(af, vrf, id, oru, agent_->vekcsd());

  if (oru && !mcastAnyRxSet(vrf)) {
    VEK_TRACE(info, "Create McastAnyRxSet( {} )", vrf);
    auto set = manager->createMcastAnyRxSet(vrf, id, agent_->cmdConfigGroup());
    mcastAnyRxSetIs(set);
    agent_->mcastIntfModuleSm()->updateIfIndexAll(vrf);
    if (!agent_->txDemuxerEgressConnected()) agent_->connectTxDemuxerModule();
    agent_->mfibWorkerTasks()->attachMcastAnyRxSetTasks(set);
  }

  mcastIntfRoot(af)->vrfSmIs(vrf, af, agent_->inputs().multicastIntfsAppDir[af]);
  agent_->inputs().kernelMfibStatusColl[af]->vrfStatusIs(vrf);

  // The port's task is attached with the port: attaching it again at a repeated start
  // would file the one task under a second worker's class.
  if (oru && !pimRegRxVrf(vrf, af)) {
    VEK_TRACE(info, "Create {}( {} )", pimRegRxTraceName[af], vrf);
    const Lumo::Ptr<PimRegRx> port = manager->createPimRegRx(af, vrf, agent_->cmdConfigGroup());
    pimRegRxVrfIs(vrf, af, port);
    agent_->mfibWorkerTasks()->attachPimRegRxTasks(port);
  }

  const bool firstStart = !mfibModule(vrf, af);
  if (firstStart) doCreateMfibModule(vrf, af, id);
  if (!mfibSm(vrf, af)) doCreateMfibSm(vrf, af);
  if (firstStart) agent_->vrfLifecycleListeners().vrfStarted(vrf, af);
}

void VrfPipelineControl::doCreateMfibModule(const L3::VrfName& vrf, AddressFamily af,
                                            Vrf::VrfIdMap::VrfId id) {
  const Lumo::Ptr<MfibAf> module =
      agent_->mcastModuleManager()->createMfibModule(af, vrf, id, agent_->oru());
  addMfibModuleCounters(module, agent_->vekcsd());
  mfibModuleIs(module);
  doCatchUpProviderSide();
  if (const auto& config = agent_->inputs().bridgingConfig) {
    module->setBridgeMacAddr(config->bridgeMacAddr());
  }
  if (agent_->oru()) {
    module->regMfibTasks(vrf);
    module->regCleanupTask(vrf);
  } else {
    const std::uint32_t workers = agent_->managementSm()->workerCount();
    module->regMfibTasksForAllWorkers(vrf, workers);
    module->regCleanupTaskForAllWorkers(vrf, workers);
  }
  agent_->vrfLifecycleListeners().mfibModuleReady(vrf, af, module);
}

void VrfPipelineControl::doCatchUpProviderSide() {
  if (!agent_->mMplsInitialized()) return;
  if (!toggleOismMplsTunnelEnabled() && !toggleMvpnVekEnabled()) return;
  agent_->vrfIdTracker()->handleVrfIdToName();
  agent_->vrfLifecycleListeners().handleMvpnIntfStatus();
}

void VrfPipelineControl::doCreateMfibSm(const L3::VrfName& vrf, AddressFamily af) {
  const auto sm = mfibSmIs(vrf, af, agent_->oru(), mfibModule(vrf, af),
                           agent_->configStatusPair(), agent_->cmdConfigGroup(),
                           agent_->vekcsd(), Dov::TaskSchedulerRoot::findOrCreateScheduler());
  if (auto adapter = agent_->mfibVrfDir(af)->vrfAdapter(vrf);
      adapter && adapter->mfibVashCount() > 0) {
    sm->mfibVrfAdapterIs(adapter);
  }
  handleKernelMfibConfig(af, vrf);
}

void VrfPipelineControl::stopMfibSm(const L3::VrfName& vrf, AddressFamily af) {
  if (!agent_->initialized()) return;
  if (!isSupported(af)) return;
  VEK_TRACE(info, "stopMfibSm vrf: {} af: {}", vrf, af);
  // What lives beside the pipeline hears of the stop while the FIB module still stands.
  if (mfibModule(vrf, af)) agent_->vrfLifecycleListeners().vrfStopping(vrf, af);
  // The route machine goes first: it must send nothing to a module on its way out.
  const Lumo::Ptr<MfibAf> module = mfibModule(vrf, af);
  mfibSmDel(vrf, af);
  if (module) Vek::freeModuleCounters(module, agent_->vekcsd());
  mfibModuleDel(vrf, af);
  const auto& manager = agent_->mcastModuleManager();
  manager->deleteMfibModule(af, vrf);
  if (agent_->oru()) {
    pimRegRxVrfDel(vrf, af);
    manager->deletePimRegRx(af, vrf);
  }
  manager->deleteIgmpV2Module(af, vrf, agent_->vrfIdTracker()->vrfIdForModules(vrf),
                              agent_->vekcsd());
  const bool familyLeft = mfibSm(vrf, AddressFamily::ipv4) || mfibSm(vrf, AddressFamily::ipv6);
  if (agent_->oru() && !familyLeft) {
    mcastAnyRxSetDel(vrf);
    manager->deleteMcastAnyRxSet(vrf);
  }
  // The default VRF's namespace serves the fabric for the life of the agent.
  if (!familyLeft && !vrf.isDefault()) agent_->vrfNamespaces()->deleteKniSm(vrf);
}

void VrfPipelineControl::vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId /*oldId*/,
                                      Vrf::VrfIdMap::VrfId newId) {
  if (const auto& manager = agent_->mcastModuleManager()) manager->igmpV2VrfIdIs(vrf, newId);
}

// ---- Per-VRF members ----

void VrfPipelineControl::mfibModuleIs(const Lumo::Ptr<MfibAf>& module) {
  const AddressFamily af = module->af();
  if (!isSupported(af)) return;
  mfibModule_[af].is(*this, module->vrfName(), module);
  handleMfibModule(module->vrfName(), af);
}

void VrfPipelineControl::mfibModuleDel(const L3::VrfName& vrf, AddressFamily af) {
  if (!isSupported(af)) return;
  // A repeated stop finds no module: what connected to it has heard once already.
  if (mfibModule(vrf, af)) agent_->vrfLifecycleListeners().mfibModuleChanged(vrf, af, nullptr);
  mfibModule_[af].del(*this, vrf);
  handleMfibModule(vrf, af);
}

Lumo::Ptr<VekL3MfibSm> VrfPipelineControl::mfibSmIs(
    const L3::VrfName& vrf, AddressFamily af, bool oru, const Lumo::Ptr<MfibAf>& module,
    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& pair, const Lumo::Ptr<Vek::CmdConfigGroup>& group,
    const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd, const Lumo::Ptr<Dov::TaskScheduler>& scheduler) {
  if (auto present = mfibSm(vrf, af)) return present;
  auto sm = vekL3MfibSmFactory(vrf, af, oru, module, pair, group, vekcsd, scheduler);
  smMemberAdd(sm.get());
  sm->hasNotificationActiveIs(hasNotificationActive());
  mfibSm_[af].is(*this, vrf, sm);
  return sm;
}

void VrfPipelineControl::mfibSmDel(const L3::VrfName& vrf, AddressFamily af) {
  const Lumo::Ptr<VekL3MfibSm> sm = mfibSm(vrf, af);
  if (!sm) return;
  smMemberDel(sm.get());
  sm->qelDoZombieReactors(true);
  sm->hasNotificationActiveIs(false);
  mfibSm_[af].del(*this, vrf);
}

// ---- Bridge MAC address ----

void VrfPipelineControl::bridgingConfigIs() {
  const auto& config = agent_->inputs().bridgingConfig;
  bridgingConfigDispatch_.publisherIs(const_cast<Bridging::Config*>(config.get()));
  bridgingConfigDispatch_.isRegisteredIs(true);
  handleBridgeMacAddr();
}

void VrfPipelineControl::handleBridgeMacAddr() {
  const auto& config = agent_->inputs().bridgingConfig;
  if (!config) return;
  const Lanx::EthAddr& mac = config->bridgeMacAddr();
  for (AddressFamily af : Lanx::bothFamilies) {
    for (const auto& module : mfibModules(af)) module.value->setBridgeMacAddr(mac);
  }
  if (const auto& vxlan = agent_->vxlanPipeline(); vxlan && vxlan->l2VxlanInModule()) {
    vxlan->l2VxlanInModule()->setLocalBridgeMacAddr(mac);
  }
}

// ---- Multicast interfaces ----

void VrfPipelineControl::handleAppRootSm(AddressFamily af, const L3::VrfName& vrf) {
  if (!isSupported(af)) return;
  auto& nested = HN_NestedSm_AppRootSm_[af];
  if (auto appRootSm = mcastIntfRoot(af)->vrfSm(vrf)) {
    nested.smIs(appRootSm);
  } else {
    nested.smDel(vrf);
  }
}

void VrfPipelineControl::handleMcastIntf(const L3::VrfName& vrf, Lanx::IntfId intf,
                                         AddressFamily af) {
  if (!isSupported(af)) return;
  const Lumo::Ptr<MfibAf> module = mfibModule(vrf, af);
  if (!module) return;
  const auto appRootSm = mcastIntfRoot(af)->vrfSm(vrf);
  if (appRootSm && appRootSm->multicastIntfHas(intf)) {
    VEK_TRACE(info, "Add mcastIntf to mfibModule  {}", intf.shortName());
    module->addMulticastIntfs(intf);
    if (agent_->oru()) agent_->vrfNamespaces()->createKniSm(vrf);
  } else {
    VEK_TRACE(info, "Remove mcastIntf to mfibModule  {}", intf.shortName());
    module->deleteMulticastIntfs(intf);
  }
}

void VrfPipelineControl::handleMfibModule(const L3::VrfName& vrf, AddressFamily af) {
  const auto appRootSm = mcastIntfRoot(af)->vrfSm(vrf);
  if (const Lumo::Ptr<MfibAf> module = mfibModule(vrf, af)) {
    if (appRootSm) {
      for (const auto& member : appRootSm->multicastIntfs()) {
        VEK_TRACE(info, "add intf to mfibModule: {}", member.key.shortName());
        module->addMulticastIntfs(member.key);
      }
    }
    agent_->vrfLifecycleListeners().mfibModuleChanged(vrf, af, module);
    return;
  }
  VEK_TRACE(info, "Cleaning up interface modules for vrf: {}", vrf);
  if (appRootSm) appRootSm->multicastIntfDelAll();
  agent_->inputs().kernelMfibStatusColl[af]->vrfStatusDel(vrf);
  mcastIntfRoot(af)->vrfSmDel(vrf);
}

// ---- Route tables and kernel limits ----

void VrfPipelineControl::mfibVrfDirIs(AddressFamily af,
                                      const Lumo::Ptr<Routing::Multicast::Fib::MfibVrfDir>& dir) {
  mfibVrfDirDispatch_.publisherIs(af, dir.get());
}

void VrfPipelineControl::handleMfibVrfAdapter(AddressFamily af, const L3::VrfName& vrf) {
  auto& nested = HN_NestedSm_MfibVrfAdapter_[af];
  if (auto adapter = agent_->mfibVrfDir(af)->vrfAdapter(vrf)) {
    nested.smIs(adapter);
    return;
  }
  nested.smDel(vrf);
  if (auto sm = mfibSm(vrf, af)) {
    VEK_TRACE(info, "Removing Mfib Sm vash dir for vrf {}", vrf);
    sm->mfibVrfAdapterDel();
  }
}

void VrfPipelineControl::kernelMfibConfigCollIs(AddressFamily af) {
  kernelMfibConfigCollDispatch_.publisherIs(af, agent_->inputs().kernelMfibConfigColl[af].get());
}

void VrfPipelineControl::handleKernelMfibConfig(AddressFamily af, const L3::VrfName& vrf) {
  const Lumo::Ptr<VekL3MfibSm> sm = mfibSm(vrf, af);
  if (!sm) {
    VEK_TRACE(info, "No mfib SM, nothing to do");
    return;
  }
  if (auto config = agent_->inputs().kernelMfibConfigColl[af]->config(vrf)) {
    VEK_TRACE(info, "Adding kernel mfib config to mfib SM");
    if (sm->kernelMfibConfig() && sm->kernelMfibConfig() != config) sm->kernelMfibConfigDel();
    sm->kernelMfibConfigIs(config);
  } else {
    VEK_TRACE(info, "Deleting kernel mfib config from mfib SM if present");
    sm->kernelMfibConfigDel();
  }
}

// ---- The way down ----

void VrfPipelineControl::handleCleanup() {
  bridgingConfigDispatch_.isRegisteredIs(false);
  mcastIntfRootDispatch_.isRegisteredIs(false);
  kernelMfibConfigCollDispatch_.isRegisteredIs(false);
  mfibVrfDirDispatch_.isRegisteredIs(false);
}

void VrfPipelineControl::doDeleteRouteMachines() {
  for (AddressFamily af : Lanx::bothFamilies) {
    while (!mfibSms(af).empty()) mfibSmDel(L3::VrfName(mfibSms(af).begin()->key), af);
  }
}

void VrfPipelineControl::doDeleteNestedMachines() {
  for (AddressFamily af : Lanx::bothFamilies) HN_NestedSm_MfibVrfAdapter_[af].smDelAll();
  appRootSmDelAll();
}

}  // namespace VekL3Mcast
