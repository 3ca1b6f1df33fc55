#include <fmt/format.h>

#include "agent/VekMfaAgent.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"

// The worker tasks of the FIB modules: the daemon answers a registration with the tasks'
// names and ids, and the agent puts each task under a rate-limiting traffic class.

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

void MfaAgent::handleResp() {
  if (!initialized()) return;
  const Lumo::Ptr<Vek::ModuleStatus>& status = configStatusPair()->status();
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
    const std::string& action = response->action();
    if (action == "regMfibTasks") {
      createMfibNoCacheTc(response->payload());
    } else if (action == "regCleanupTask") {
      createMfibCleanupTc(response->payload());
    } else if (action == "regMfibTasksForAllWorkers") {
      createMfibNoCacheTcForAllWorkers(response->payload());
    } else if (action == "regCleanupTaskForAllWorkers") {
      createMfibCleanupTcForAllWorkers(response->payload());
    }
  }
}

void MfaAgent::doAttachWorkerTask(std::uint32_t worker, const std::string& tcBase,
                                  bool cleanup, const std::string& taskName,
                                  std::uint32_t taskId) {
  // The reduced agent has no group of its own, so no class can be made for it.
  if (!cmdConfigGroup()) {
    VEK_TRACE(warn, "No command group for the traffic class of task {}", taskName);
    return;
  }
  const RateLimit& rate = cleanup ? cleanupLimit : noCacheLimit;
  const Lumo::String tcName = Vek::TcManager::getTcName(tcBase, worker, rate.unit, rate.limit);
  const auto& tcManager = vekcsd()->tcManager();
  tcManager->createRateLimitTc(cmdConfigGroup(), tcName, "", static_cast<int>(worker), rate.unit,
                               rate.limit, -1);
  VEK_TRACE(info, " creating tcName {} and attaching to taskName {}", tcName, taskName);
  tcManager->attachTaskToTc(cmdConfigGroup(), taskName, tcName, taskId, 1);
  cmdConfigGroup()->enqueueVersionInc(1);
}

void MfaAgent::createMfibNoCacheTc(const google::protobuf::Any& any) {
  vek::pb::MfibTaskIdArg arg;
  if (!any.UnpackTo(&arg)) return;
  VEK_TRACE(info, " Received a regMfibTasks response task_name {} wid {} fusetid {} noCacheTid {}",
            arg.task_name(), arg.wid(), arg.fusetid(), arg.nocachetid());
  for (std::uint32_t worker = 0; worker < vekcsd()->workerCount(); ++worker) {
    doAttachWorkerTask(worker, noCacheTcBase(arg.vrf()), false, arg.task_name(), arg.nocachetid());
  }
}

void MfaAgent::createMfibCleanupTc(const google::protobuf::Any& any) {
  vek::pb::MfibTaskIdArg arg;
  if (!any.UnpackTo(&arg)) return;
  for (std::uint32_t worker = 0; worker < vekcsd()->workerCount(); ++worker) {
    doAttachWorkerTask(worker, cleanupTcBase(arg.vrf()), true, arg.task_name(), arg.nocachetid());
  }
}

void MfaAgent::createMfibNoCacheTcForAllWorkers(const google::protobuf::Any& any) {
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

void MfaAgent::createMfibCleanupTcForAllWorkers(const google::protobuf::Any& any) {
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

}  // namespace VekL3Mcast
