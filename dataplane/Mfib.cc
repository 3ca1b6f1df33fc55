#include "dataplane/Mfib.h"

#include <algorithm>

#include "dataplane/AddressText.h"
#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<Mfib>& Mfib::commands() {
  static const CommandTable<Mfib> table{
      {"addMroute", "vek.pb.MfibRouteArg", &Mfib::addMroute},
      {"deleteMroute", "vek.pb.MfibRouteArg", &Mfib::deleteMroute},
      {"addMulticastIntfs", "vek.pb.MulticastIntfArg", &Mfib::addMulticastIntfs},
      {"deleteMulticastIntfs", "vek.pb.MulticastIntfArg", &Mfib::deleteMulticastIntfs},
      {"setMaxUnresolvedCacheEntries", "vek.pb.SizeArg", &Mfib::setMaxUnresolvedCacheEntries},
      {"setMaxUnresolvedPktBuffers", "vek.pb.SizeArg", &Mfib::setMaxUnresolvedPktBuffers},
      {"setBridgeMacAddr", "vek.pb.EthernetConfigArg", &Mfib::setBridgeMacAddr},
      {"setCounterIds", "vek.pb.MfibCounterIdArg", &Mfib::setCounterIds},
      {"regMfibTasks", "vek.pb.MfibTaskIdArg", &Mfib::registerTask<TaskKind::noCache>},
      {"regCleanupTask", "vek.pb.MfibTaskIdArg", &Mfib::registerTask<TaskKind::cleanup>},
      {"regMfibTasksForAllWorkers", "vek.pb.MfibTaskIdsArg",
       &Mfib::registerTaskPerWorker<TaskKind::noCache>},
      {"regCleanupTaskForAllWorkers", "vek.pb.MfibTaskIdsArg",
       &Mfib::registerTaskPerWorker<TaskKind::cleanup>},
  };
  return table;
}

CommandResult Mfib::addMroute(const vek::pb::MfibRouteArg& arg) {
  auto key = MfibRouteKey::of(arg.source(), arg.group());
  if (!key) return CommandResult::error(EINVAL, "malformed source or group address");
  for (const auto& gate : arg.gates()) {
    if (gate.gate() >= context_.outGates) {
      return CommandResult::error(ERANGE, fmt::format("gate {} out of range", gate.gate()));
    }
  }
  Route& route = routes_.insert(*key, Route{}).first->value;
  route.iif = arg.iif();
  route.gates.clear();
  for (const auto& gate : arg.gates()) route.gates.emplace_back(gate.intfid(), gate.gate());
  route.fastdrop = arg.fastdrop();
  route.iifRegister = arg.iifregister();
  route.oifRegister = arg.oifregister();
  return CommandResult::ok();
}

CommandResult Mfib::deleteMroute(const vek::pb::MfibRouteArg& arg) {
  auto key = MfibRouteKey::of(arg.source(), arg.group());
  if (!key) return CommandResult::error(EINVAL, "malformed source or group address");
  routes_.erase(*key);  // deleting what is not there is no fault
  return CommandResult::ok();
}

CommandResult Mfib::addMulticastIntfs(const vek::pb::MulticastIntfArg& arg) {
  multicastIntfs_.insert(arg.intfids().begin(), arg.intfids().end());
  return CommandResult::ok();
}

CommandResult Mfib::deleteMulticastIntfs(const vek::pb::MulticastIntfArg& arg) {
  for (std::uint64_t intfId : arg.intfids()) multicastIntfs_.erase(intfId);
  return CommandResult::ok();
}

CommandResult Mfib::setMaxUnresolvedCacheEntries(const vek::pb::SizeArg& arg) {
  maxUnresolvedCacheEntries_ = arg.size();
  return CommandResult::ok();
}

CommandResult Mfib::setMaxUnresolvedPktBuffers(const vek::pb::SizeArg& arg) {
  maxUnresolvedPktBuffers_ = arg.size();
  return CommandResult::ok();
}

CommandResult Mfib::setBridgeMacAddr(const vek::pb::EthernetConfigArg& arg) {
  auto text = AddressText::mac(arg.bridgemacaddr());
  if (!text) return CommandResult::error(EINVAL, "a MAC address has six bytes");
  bridgeMacAddr_ = *text;
  return CommandResult::ok();
}

CommandResult Mfib::setCounterIds(const vek::pb::MfibCounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

const Mfib::Task& Mfib::task(const std::string& name, bool cleanup, std::uint32_t wid) {
  auto [it, added] = tasks_.try_emplace(name);
  if (added) {
    it->second =
        Task{cleanup, wid, context_.taskIds->next(), cleanup ? 0 : context_.taskIds->next()};
  }
  return it->second;
}

template <Mfib::TaskKind kind>
CommandResult Mfib::registerTask(const vek::pb::MfibTaskIdArg& arg) {
  constexpr bool cleanup = kind == TaskKind::cleanup;
  const std::string name = context_.name + (cleanup ? "_cleanup" : "_noCache");
  const Task& t = task(name, cleanup, arg.wid());
  auto reply = std::make_unique<vek::pb::MfibTaskIdArg>();
  reply->set_vrf(arg.vrf());
  reply->set_task_name(name);
  reply->set_wid(t.wid);
  reply->set_fusetid(t.fusetid);
  reply->set_nocachetid(t.tid);  // a cleanup task's own id goes here too
  return CommandResult::answer(std::move(reply));
}

template <Mfib::TaskKind kind>
CommandResult Mfib::registerTaskPerWorker(const vek::pb::MfibTaskIdsArg& arg) {
  constexpr bool cleanup = kind == TaskKind::cleanup;
  auto reply = std::make_unique<vek::pb::MfibTaskIdsArg>();
  reply->set_vrf(arg.vrf());
  reply->set_wid_count(arg.wid_count());
  for (std::uint32_t wid : arg.wid()) {
    if (wid >= context_.workers) {
      return CommandResult::error(EINVAL, fmt::format("no worker {}", wid));
    }
    const std::string name =
        fmt::format("{}_{}_w{}", context_.name, cleanup ? "cleanup" : "noCache", wid);
    const Task& t = task(name, cleanup, wid);
    reply->add_wid(wid);
    reply->add_tid(t.tid);
    if (!cleanup) reply->add_fusetid(t.fusetid);
    reply->add_task_name(name);
  }
  return CommandResult::answer(std::move(reply));
}

nlohmann::ordered_json Mfib::routeJson(const Route& route) {
  nlohmann::ordered_json gates = nlohmann::ordered_json::array();
  for (const auto& [intfId, gate] : route.gates) {
    gates.push_back({{"intfId", std::to_string(intfId)}, {"gate", gate}});
  }
  return {{"iif", std::to_string(route.iif)},
          {"gates", std::move(gates)},
          {"fastdrop", route.fastdrop},
          {"iifRegister", route.iifRegister},
          {"oifRegister", route.oifRegister}};
}

std::optional<nlohmann::ordered_json> Mfib::routeDump(const std::string& key) const {
  auto parsed = MfibRouteKey::parse(key);
  const Route* route = parsed ? routes_.find(*parsed) : nullptr;
  if (!route) return std::nullopt;
  return routeJson(*route);
}

nlohmann::ordered_json Mfib::dump() const {
  // The routes go in key order, each at the end, as a search for each key of an ordered
  // object would make the dump quadratic.
  std::vector<std::pair<std::string, const Route*>> sorted;
  sorted.reserve(routes_.size());
  for (const auto& entry : routes_) sorted.emplace_back(entry.key.text(), &entry.value);
  std::sort(sorted.begin(), sorted.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  nlohmann::ordered_json routes = nlohmann::ordered_json::object();
  auto& entries = static_cast<nlohmann::ordered_json::object_t::Container&>(
      routes.get_ref<nlohmann::ordered_json::object_t&>());
  entries.reserve(sorted.size());
  for (auto& [text, route] : sorted) entries.emplace_back(std::move(text), routeJson(*route));
  nlohmann::ordered_json intfs = nlohmann::ordered_json::array();
  for (std::uint64_t intfId : multicastIntfs_) intfs.push_back(std::to_string(intfId));
  nlohmann::ordered_json tasks = nlohmann::ordered_json::object();
  for (const auto& [name, t] : tasks_) {
    tasks[name] = {{"kind", t.cleanup ? "cleanup" : "noCache"},
                   {"wid", t.wid},
                   {"tid", t.tid},
                   {"fusetid", t.fusetid}};
  }
  auto optional = [](const auto& value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json();
  };
  return {{"routes", std::move(routes)},
          {"multicastIntfs", std::move(intfs)},
          {"maxUnresolvedCacheEntries", optional(maxUnresolvedCacheEntries_)},
          {"maxUnresolvedPktBuffers", optional(maxUnresolvedPktBuffers_)},
          {"bridgeMacAddr", optional(bridgeMacAddr_)},
          {"counterIds", counterIds_},
          {"tasks", std::move(tasks)}};
}

std::vector<std::string> Mfib::taskNames() const {
  std::vector<std::string> names;
  for (const auto& [name, t] : tasks_) names.push_back(name);
  return names;
}

}  // namespace Dataplane
