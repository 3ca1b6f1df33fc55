#include "agent/MfibWorkerTasks.h"

#include <fmt/format.h>


#include "agent/VekMfaAgent.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {

struct RateLimit {
  const char* unit;
  int limit;
};
constexpr RateLimit noCacheLimit{"packet", 1000};
constexpr RateLimit cleanupLimit{"count", 1};

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

MfibWorkerTasks::MfibWorkerTasks(MfaAgent* agent) : agent_(agent) {
  registrationReplies_.actionIs("regMfibTasks",
                                [this](const auto& any) { createMfibNoCacheTc(any); });
  registrationReplies_.actionIs("regCleanupTask",
                                [this](const auto& any) { createMfibCleanupTc(any); });
  registrationReplies_.actionIs("regMfibTasksForAllWorkers", [this](const auto& any) {
    createMfibNoCacheTcForAllWorkers(any);
  });
  registrationReplies_.actionIs("regCleanupTaskForAllWorkers", [this](const auto& any) {
    createMfibCleanupTcForAllWorkers(any);
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

void MfibWorkerTasks::doAttachWorkerTask(std::uint32_t worker, const std::string& tcBase,
                                  bool cleanup, const std::string& taskName,
                                  std::uint32_t taskId) {
  // The reduced agent has no group of its own, so no class can be made for it.
  if (!agent_->cmdConfigGroup()) {
    VEK_TRACE(warn, "No command group for the traffic class of task {}", taskName);
    return;
  }
  const RateLimit& rate = cleanup ? cleanupLimit : noCacheLimit;
  const Lumo::String tcName = Vek::TcManager::getTcName(tcBase, worker, rate.unit, rate.limit);
  const auto& tcManager = agent_->vekcsd()->tcManager();
  tcManager->createRateLimitTc(agent_->cmdConfigGroup(), tcName, "", static_cast<int>(worker), rate.unit,
                               rate.limit, -1);
  VEK_TRACE(info, " creating tcName {} and attaching to taskName {}", tcName, taskName);
  tcManager->attachTaskToTc(agent_->cmdConfigGroup(), taskName, tcName, taskId, 1);
  agent_->cmdConfigGroup()->enqueueVersionInc(1);
}

void MfibWorkerTasks::createMfibNoCacheTc(const google::protobuf::Any& any) {
  vek::pb::MfibTaskIdArg arg;
  if (!any.UnpackTo(&arg)) return;
  VEK_TRACE(info, " Received a regMfibTasks response task_name {} wid {} fusetid {} noCacheTid {}",
            arg.task_name(), arg.wid(), arg.fusetid(), arg.nocachetid());
  for (std::uint32_t worker = 0; worker < agent_->vekcsd()->workerCount(); ++worker) {
    doAttachWorkerTask(worker, noCacheTcBase(arg.vrf()), false, arg.task_name(), arg.nocachetid());
  }
}

void MfibWorkerTasks::createMfibCleanupTc(const google::protobuf::Any& any) {
  vek::pb::MfibTaskIdArg arg;
  if (!any.UnpackTo(&arg)) return;
  for (std::uint32_t worker = 0; worker < agent_->vekcsd()->workerCount(); ++worker) {
    doAttachWorkerTask(worker, cleanupTcBase(arg.vrf()), true, arg.task_name(), arg.nocachetid());
  }
}

void MfibWorkerTasks::createMfibNoCacheTcForAllWorkers(const google::protobuf::Any& any) {
  vek::pb::MfibTaskIdsArg arg;
  if (!any.UnpackTo(&arg)) return;
  VEK_TRACE(info, "NoCacheTask Resp wid_count: {}", arg.wid_count());
  if (!complete(arg, true)) return;
  for (int i = 0; i < static_cast<int>(arg.wid_count()); ++i) {
    VEK_TRACE(info, " NoCacheTask Resp tid: {}, fusetid: {}, wid: {}, task_name: {}, vrf: {}",
              arg.tid(i), arg.fusetid(i), arg.wid(i), arg.task_name(i), arg.vrf());
    doAttachWorkerTask(arg.wid(i), noCacheTcBase(arg.vrf()), false, arg.task_name(i), arg.tid(i));
  }
}

void MfibWorkerTasks::createMfibCleanupTcForAllWorkers(const google::protobuf::Any& any) {
  vek::pb::MfibTaskIdsArg arg;
  if (!any.UnpackTo(&arg)) return;
  VEK_TRACE(info, "CleanupTask Resp wid_count: {}", arg.wid_count());
  if (!complete(arg, false)) return;
  for (int i = 0; i < static_cast<int>(arg.wid_count()); ++i) {
    VEK_TRACE(info, " Cleanuptask Resp tid: {}, wid: {}, task_name: {}, vrf: {}", arg.tid(i),
              arg.wid(i), arg.task_name(i), arg.vrf());
    doAttachWorkerTask(arg.wid(i), cleanupTcBase(arg.vrf()), true, arg.task_name(i), arg.tid(i));
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

void MfibWorkerTasks::attachMcastAnyRxSetTasks(const Lumo::Ptr<McastAnyRxSet>& set) {
  for (const auto& member : set->mcastAnyRx()) {
    const McastRxType type = member.key;
    const Lumo::Ptr<Vek::Module>& rxModule = member.value->rxModule();
    if (!rxModule) {
      VEK_TRACE(warn, "Rx module missing for McastAnyRx with type {}, no task to attach", type);
      continue;
    }
    attachModuleTask(rxModule, type == McastRxType::mcastHwFwd ? 128 : 512);
  }
}

void MfibWorkerTasks::attachPimRegRxTasks(const Lumo::Ptr<PimRegRx>& port) {
  if (!port->rxModule()) {
    VEK_TRACE(warn, "Rx module missing for PimRegRx, no task to attach");
    return;
  }
  attachModuleTask(port->rxModule(), 512);
}

}  // namespace VekL3Mcast
