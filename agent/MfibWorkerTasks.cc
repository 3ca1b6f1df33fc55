#include "agent/MfibWorkerTasks.h"

#include <fmt/format.h>

#include "agent/VekMfaAgent.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {

std::string noCacheTcBase(const std::string& vrf) { return fmt::format("noCacheRateLimit_{}", vrf); }
std::string cleanupTcBase(const std::string& vrf) { return fmt::format("{}CleanupTask", vrf); }

// A reply for all workers carries one entry per worker in each list it fills.
bool complete(const vek::pb::MfibTaskIdsArg& arg, bool withFuseTids) {
  const int count = static_cast<int>(arg.wid_count());
  const bool ok = arg.wid_size() >= count && arg.tid_size() >= count &&
                  arg.task_name_size() >= count && (!withFuseTids || arg.fusetid_size() >= count);
  if (!ok) VEK_TRACE(err, "Task ids reply for vrf {} lacks entries of its {} workers", arg.vrf(), count);
  return ok;
}

}  // namespace

// The two kinds of worker task of a FIB module and the rate-limiting class each goes under.
struct MfibWorkerTasks::TaskKind {
  const char* name;
  const char* unit;
  int limit;
  std::string (*tcBase)(const std::string& vrf);
  // Whether a reply for all workers also lists the fused task ids.
  bool withFuseTids;
};
const MfibWorkerTasks::TaskKind MfibWorkerTasks::noCacheTask{"NoCacheTask", "packet", 1000,
                                                             noCacheTcBase, true};
const MfibWorkerTasks::TaskKind MfibWorkerTasks::cleanupTask{"CleanupTask", "count", 1,
                                                             cleanupTcBase, false};

MfibWorkerTasks::MfibWorkerTasks(MfaAgent* agent) : agent_(agent) {
  registrationReplies_.actionIs("regMfibTasks",
                                [this](const auto& any) { createMfibTc(any, noCacheTask); });
  registrationReplies_.actionIs("regCleanupTask",
                                [this](const auto& any) { createMfibTc(any, cleanupTask); });
  registrationReplies_.actionIs("regMfibTasksForAllWorkers", [this](const auto& any) {
    createMfibTcForAllWorkers(any, noCacheTask);
  });
  registrationReplies_.actionIs("regCleanupTaskForAllWorkers", [this](const auto& any) {
    createMfibTcForAllWorkers(any, cleanupTask);
  });
}

void MfibWorkerTasks::moduleStatusIs(const Lumo::Ptr<Vek::ModuleStatus>& status) {
  moduleStatusResponseReactor_.publisherIs(status.get());
  moduleStatusResponseReactor_.isRegisteredIs(true);
}

void MfibWorkerTasks::handleResp() {
  if (!agent_->initialized()) return;
  const Lumo::Ptr<Vek::ModuleStatus>& status = agent_->configStatusPair()->status();
  while (auto response = status->responseQueueDeq()) {
    if (response->type() != Vek::ModuleStatus::taskIdsResponseType) {
      VEK_TRACE(info, "Module {} type : {} action: {}", response->module(), response->type(),
                response->action());
      continue;
    }
    if (!response->has_payload()) {
      VEK_TRACE(info, " Null Response ");
      continue;
    }
    registrationReplies_.run(response->action(), response->payload());
  }
}

void MfibWorkerTasks::doAttachWorkerTask(std::uint32_t worker, const TaskKind& kind,
                                         const std::string& vrf, const std::string& taskName,
                                         std::uint32_t taskId) {
  const Lumo::Ptr<Vek::CmdConfigGroup>& group = tcConfigGroup();
  const Lumo::String tcName = Vek::TcManager::getTcName(kind.tcBase(vrf), worker, kind.unit,
                                                        kind.limit);
  const auto& tcManager = agent_->vekcsd()->tcManager();
  tcManager->createRateLimitTc(group, tcName, "", static_cast<int>(worker), kind.unit,
                               kind.limit, -1);
  VEK_TRACE(info, " creating tcName {} and attaching to taskName {}", tcName, taskName);
  tcManager->attachTaskToTc(group, taskName, tcName, taskId, 1);
  group->enqueueVersionInc(1);
}

// The full agent's group carries its classes with the rest of its commands. The reduced
// agent has no group, so that nothing else of it reaches the daemon through one: its
// classes get a group of their own, made at the first reply.
const Lumo::Ptr<Vek::CmdConfigGroup>& MfibWorkerTasks::tcConfigGroup() {
  if (const auto& group = agent_->cmdConfigGroup()) return group;
  if (!tcConfigGroup_) {
    const Lumo::String name(tcConfigGroupName);
    tcConfigGroup_ = agent_->globalCmdConfig()->cmdConfigGroup(name);
    if (!tcConfigGroup_) {
      tcConfigGroup_ = Lumo::makePtr<Vek::CmdConfigGroup>(name);
      agent_->globalCmdConfig()->cmdConfigGroupIs(tcConfigGroup_);
    }
  }
  return tcConfigGroup_;
}

// A reply for one worker names one task, which every worker's class of the VRF takes.
void MfibWorkerTasks::createMfibTc(const google::protobuf::Any& any, const TaskKind& kind) {
  vek::pb::MfibTaskIdArg arg;
  if (!any.UnpackTo(&arg)) return;
  VEK_TRACE(info, " Received a {} response task_name {} wid {} fusetid {} noCacheTid {}",
            kind.name, arg.task_name(), arg.wid(), arg.fusetid(), arg.nocachetid());
  for (std::uint32_t worker = 0; worker < agent_->vekcsd()->workerCount(); ++worker) {
    doAttachWorkerTask(worker, kind, arg.vrf(), arg.task_name(), arg.nocachetid());
  }
}

void MfibWorkerTasks::createMfibTcForAllWorkers(const google::protobuf::Any& any,
                                                const TaskKind& kind) {
  vek::pb::MfibTaskIdsArg arg;
  if (!any.UnpackTo(&arg)) return;
  VEK_TRACE(info, "{} Resp wid_count: {}", kind.name, arg.wid_count());
  if (!complete(arg, kind.withFuseTids)) return;
  for (int i = 0; i < static_cast<int>(arg.wid_count()); ++i) {
    VEK_TRACE(info, " {} Resp tid: {}, wid: {}, task_name: {}, vrf: {}", kind.name, arg.tid(i),
              arg.wid(i), arg.task_name(i), arg.vrf());
    doAttachWorkerTask(arg.wid(i), kind, arg.vrf(), arg.task_name(i), arg.tid(i));
  }
}

// ---- Tasks of the receive and port modules ----

void MfibWorkerTasks::attachModuleTask(const Lumo::Ptr<Vek::Module>& module,
                                       std::uint32_t taskWeight) {
  const std::uint32_t worker = agent_->managementSm()->allocNextWorker(taskWeight, false);
  const Lumo::String tcName = agent_->vekcsd()->widToWeightedClass(worker);
  if (tcName.empty()) return;
  agent_->vekcsd()->tcManager()->attachTaskToTc(agent_->cmdConfigGroup(), module->name(), tcName,
                                                0, taskWeight);
  agent_->cmdConfigGroup()->enqueueVersionInc(1);
}

void MfibWorkerTasks::attachRxTask(const Lumo::Ptr<Vek::Module>& rxModule, McastRxType type,
                                   std::string_view pathKind) {
  if (!rxModule) {
    VEK_TRACE(warn, "Rx module missing for {} with type {}, no task to attach", pathKind, type);
    return;
  }
  // Hardware-forwarded packets are the bulk and cheap; the others go to software.
  attachModuleTask(rxModule, type == McastRxType::mcastHwFwd ? 128 : 512);
}

void MfibWorkerTasks::attachMcastAnyRxSetTasks(const Lumo::Ptr<McastAnyRxSet>& set) {
  for (const auto& member : set->mcastAnyRx()) {
    attachRxTask(member.value->rxModule(), member.key, "McastAnyRx");
  }
}

void MfibWorkerTasks::attachMcastVxlanRxSetTasks(const Lumo::Ptr<McastL2VxlanRxSet>& set) {
  for (McastRxType type : allMcastRxTypes) {
    if (const auto rx = set->mcastL2VxlanRx(type)) attachRxTask(rx->rxModule(), type, "McastVxlanRx");
  }
}

void MfibWorkerTasks::attachPimRegRxTasks(const Lumo::Ptr<PimRegRx>& port) {
  attachTxOrRxTask(port->rxModule(), "Rx module missing for PimRegRx, no task to attach");
}

void MfibWorkerTasks::attachMcastL2VxlanTxTasks(const Lumo::Ptr<McastL2VxlanTx>& tx) {
  attachTxOrRxTask(tx->txModule(), "Tx module missing for McastL2VxlanTx, no task to attach");
}

void MfibWorkerTasks::attachFabricTxTasks(const Lumo::Ptr<FabricTx>& tx) {
  attachTxOrRxTask(tx->txModule(), "Tx module missing for FabricTx, no task to attach");
}

void MfibWorkerTasks::attachTxOrRxTask(const Lumo::Ptr<Vek::Module>& module,
                                       std::string_view missing) {
  if (!module) {
    VEK_TRACE(warn, "{}", missing);
    return;
  }
  attachModuleTask(module, 512);
}

}  // namespace VekL3Mcast
