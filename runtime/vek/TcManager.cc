#include "runtime/vek/TcManager.h"

#include <fmt/format.h>

#include "proto/vek.pb.h"

namespace Vek {

Lumo::String TcManager::getTcName(std::string_view name, std::uint32_t worker,
                                  std::string_view unit, int limit) {
  return fmt::format("{}_w{}_{}_{}", name, worker, unit, limit);
}

Lumo::String TcManager::workerClassName(std::uint32_t worker) {
  return fmt::format("worker{}", worker);
}

void TcManager::createRateLimitTc(const Lumo::Ptr<CmdConfigGroup>& group, std::string_view tcName,
                                  std::string_view parent, int worker, std::string_view unit,
                                  std::int64_t limit, int burst) const {
  auto* arg = new vek::pb::RateLimitTcArg;
  arg->set_tcname(std::string(tcName));
  arg->set_parent(std::string(parent));
  arg->set_worker(worker);
  arg->set_unit(std::string(unit));
  arg->set_limit(limit);
  arg->set_burst(burst);
  group->cmdBatchEnq(Lumo::makePtr<GrpcCmd>(arg, createRateLimitTcRequest));
}

void TcManager::attachTaskToTc(const Lumo::Ptr<CmdConfigGroup>& group, std::string_view taskName,
                               std::string_view tcName, std::uint32_t id,
                               std::uint32_t weight) const {
  auto* arg = new vek::pb::AttachTaskArg;
  arg->set_taskname(std::string(taskName));
  arg->set_tcname(std::string(tcName));
  arg->set_id(id);
  arg->set_weight(weight);
  group->cmdBatchEnq(Lumo::makePtr<GrpcCmd>(arg, attachTaskToTcRequest));
}

}  // namespace Vek
