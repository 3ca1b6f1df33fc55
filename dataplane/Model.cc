#include "dataplane/Model.h"

#include <fmt/format.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cerrno>

#include "dataplane/DotWriter.h"
#include "dataplane/TableFactory.h"
#include "proto/bess.pb.h"
#include "proto/vek.pb.h"
#include "runtime/vek/ModuleStatus.h"
#include "runtime/vek/ProtoJson.h"
#include "runtime/vek/TcManager.h"

namespace Dataplane {
namespace {

using Json = nlohmann::ordered_json;

CommandResult unknownModule(std::string_view name) {
  return CommandResult::error(ENOENT, fmt::format("unknown module {}", name));
}

CommandResult unknownPort(std::string_view name) {
  return CommandResult::error(ENOENT, fmt::format("unknown port {}", name));
}

template <typename T>
const T* messageAs(const Vek::GroupCmdRecord& record) {
  return dynamic_cast<const T*>(record.cmd->message());
}

CommandResult wrongRequest(const Vek::GroupCmdRecord& record) {
  const auto* message = record.cmd->message();
  return CommandResult::error(
      EINVAL, fmt::format("request type {} cannot take {}",
                          static_cast<unsigned>(record.cmd->requestType()),
                          message ? message->GetTypeName() : std::string("nothing")));
}

}  // namespace

Model::Model(std::uint16_t workers) : workers_(workers) {
  for (std::uint16_t worker = 0; worker < workers; ++worker) {
    TrafficClass tc;
    tc.weighted = true;
    tc.worker = worker;
    tcs_[Vek::TcManager::workerClassName(worker).str()] = std::move(tc);
  }
}

const DaemonModule* Model::module(std::string_view name) const {
  auto it = modules_.find(std::string(name));
  return it == modules_.end() ? nullptr : &it->second;
}

DaemonModule* Model::findModule(std::string_view name) {
  auto it = modules_.find(std::string(name));
  return it == modules_.end() ? nullptr : &it->second;
}

void Model::failNextForTest(std::string module, std::string cmd, std::int32_t code,
                            std::string msg) {
  failNext_.push_back(FailRule{std::move(module), std::move(cmd), code, std::move(msg)});
}

std::vector<std::pair<std::string, std::string>> Model::failNextWaitingForTest() const {
  std::vector<std::pair<std::string, std::string>> waiting;
  for (const FailRule& rule : failNext_) waiting.emplace_back(rule.module, rule.cmd);
  return waiting;
}

bool Model::failNextMatches(std::string_view module, std::string_view cmd, CommandResult& result) {
  auto it = std::find_if(failNext_.begin(), failNext_.end(), [&](const FailRule& rule) {
    return rule.module == module && rule.cmd == cmd;
  });
  if (it == failNext_.end()) return false;
  result = CommandResult::error(it->code, it->msg);
  failNext_.erase(it);
  return true;
}

void Model::deliver(const Vek::ChannelRecord& record) {
  struct Visitor {
    Model& model;

    void report(const std::string& module, Vek::ChannelErrorType type, CommandResult result) {
      if (result.failed()) model.refuse(module, type, result);
    }
    void operator()(const Vek::CreateModuleRecord& r) {
      report(r.name.str(), Vek::createModuleError, model.apply(r));
    }
    void operator()(const Vek::DestroyModuleRecord& r) {
      report(r.name.str(), Vek::destroyModuleError, model.apply(r));
    }
    void operator()(const Vek::ConnectRecord& r) {
      report(r.from.str(), Vek::connectError, model.apply(r));
    }
    void operator()(const Vek::DisconnectRecord& r) {
      report(r.from.str(), Vek::disconnectError, model.apply(r));
    }
    void operator()(const Vek::ModuleCmdRecord& r) {
      model.deliverModuleCmd(r.cmd->moduleName().view(), r.cmd->cmdName().view(),
                             r.cmd->message(), r.wantResponse);
    }
    void operator()(const Vek::GroupCmdRecord& r) { model.deliverGroupCmd(r); }
    void operator()(const Vek::AllocateCounterRecord& r) {
      report(r.module.str(), Vek::counterError, model.apply(r));
    }
    void operator()(const Vek::FreeCountersRecord& r) {
      report(r.module.str(), Vek::counterError, model.apply(r));
    }
  };
  std::visit(Visitor{*this}, record);
}

void Model::deliverModuleCmd(std::string_view module, std::string_view cmd,
                             const google::protobuf::Message* arg, bool wantResponse) {
  CommandResult result = applyModuleCmd(module, cmd, arg);
  if (result.failed()) {
    refuse(std::string(module), Vek::moduleCmdError, result);
    return;
  }
  if (!result.reply || !wantResponse) return;
  auto response = std::make_unique<vek::pb::ModuleResponse>();
  response->set_module(std::string(module));
  response->set_type(Vek::ModuleStatus::taskIdsResponseType);
  response->set_action(std::string(cmd));
  response->mutable_payload()->PackFrom(*result.reply);
  replies().responseArrived(std::move(response));
}

void Model::refuse(const std::string& module, Vek::ChannelErrorType type,
                   const CommandResult& result) {
  auto error = std::make_unique<vek::pb::ModuleError>();
  error->set_module(module);
  error->set_type(type);
  error->set_code(result.code);
  error->set_msg(result.msg);
  errors_.push_back(
      Json{{"module", module}, {"type", type}, {"code", result.code}, {"msg", result.msg}});
  replies().errorArrived(std::move(error));
}

// ---- Modules and links ----

CommandResult Model::apply(const Vek::CreateModuleRecord& r) {
  if (modules_.contains(r.name.str())) {
    return CommandResult::error(EEXIST, fmt::format("module {} exists", r.name));
  }
  if (r.reservedIn > r.inGates || r.reservedOut > r.outGates) {
    return CommandResult::error(EINVAL, "more reserved gates than gates");
  }
  auto table = TableFactory::moduleTable(
      r.moduleClass, ModuleContext{r.name.str(), r.outGates, workers_, &taskIds_});
  if (!table) {
    return CommandResult::error(EINVAL, fmt::format("unknown module class {}", r.moduleClass));
  }
  DaemonModule& m = modules_[r.name.str()];
  m.moduleClass = r.moduleClass;
  m.inGates = r.inGates;
  m.outGates = r.outGates;
  m.reservedIn = r.reservedIn;
  m.reservedOut = r.reservedOut;
  m.init = r.init;
  m.table = std::move(table);
  return CommandResult::ok();
}

namespace {

// Takes one feeder's link off an input gate; the gate's other feeders keep theirs.
void dropInLink(DaemonModule& to, std::uint32_t igate, const std::string& from,
                std::uint32_t ogate) {
  auto [first, last] = to.in.equal_range(igate);
  for (auto link = first; link != last; ++link) {
    if (link->second.module == from && link->second.gate == ogate) {
      to.in.erase(link);
      return;
    }
  }
}

}  // namespace

CommandResult Model::apply(const Vek::DestroyModuleRecord& r) {
  auto it = modules_.find(r.name.str());
  if (it == modules_.end()) return unknownModule(r.name);
  // Its links go with it.
  for (const auto& [ogate, to] : it->second.out) {
    if (to.module != it->first) dropInLink(modules_[to.module], to.gate, it->first, ogate);
  }
  for (const auto& [igate, from] : it->second.in) {
    if (from.module != it->first) modules_[from.module].out.erase(from.gate);
  }
  std::vector<std::string> tasks = it->second.table->taskNames();
  tasks.push_back(it->first);
  dropTasks(tasks);
  modules_.erase(it);
  return CommandResult::ok();
}

CommandResult Model::apply(const Vek::ConnectRecord& r) {
  DaemonModule* from = findModule(r.from);
  if (!from) return unknownModule(r.from);
  DaemonModule* to = findModule(r.to);
  if (!to) return unknownModule(r.to);
  if (r.ogate >= from->outGates) {
    return CommandResult::error(ERANGE, fmt::format("{} has no output gate {}", r.from, r.ogate));
  }
  if (r.igate >= to->inGates) {
    return CommandResult::error(ERANGE, fmt::format("{} has no input gate {}", r.to, r.igate));
  }
  if (from->out.contains(r.ogate)) {
    return CommandResult::error(EBUSY,
                                fmt::format("output gate {} of {} is linked", r.ogate, r.from));
  }
  if (r.igate >= to->reservedIn && to->in.contains(r.igate)) {
    return CommandResult::error(EBUSY, fmt::format("input gate {} of {} is linked", r.igate, r.to));
  }
  from->out[r.ogate] = GateEnd{r.to.str(), r.igate};
  to->in.emplace(r.igate, GateEnd{r.from.str(), r.ogate});
  return CommandResult::ok();
}

CommandResult Model::apply(const Vek::DisconnectRecord& r) {
  DaemonModule* from = findModule(r.from);
  if (!from) return unknownModule(r.from);
  auto link = from->out.find(r.ogate);
  if (link == from->out.end() || link->second.module != r.to.view() ||
      link->second.gate != r.igate) {
    return CommandResult::error(
        ENOENT, fmt::format("no link {}:{} -> {}:{}", r.from, r.ogate, r.to, r.igate));
  }
  from->out.erase(link);
  if (DaemonModule* to = findModule(r.to)) dropInLink(*to, r.igate, r.from.str(), r.ogate);
  return CommandResult::ok();
}

CommandResult Model::applyModuleCmd(std::string_view module, std::string_view cmd,
                                    const google::protobuf::Message* arg) {
  DaemonModule* m = findModule(module);
  if (!m) return unknownModule(module);
  CommandResult failure;
  if (failNextMatches(module, cmd, failure)) return failure;
  return m->table->apply(cmd, arg);
}

CommandResult Model::apply(const Vek::AllocateCounterRecord& r) {
  DaemonModule* m = findModule(r.module);
  if (!m) return unknownModule(r.module);
  for (const auto& [name, other] : modules_) {
    for (const auto& [counter, id] : other.counters) {
      if (id == r.id.value()) {
        return CommandResult::error(
            EBUSY, fmt::format("counter {} is {} of {}", r.id.value(), counter, name));
      }
    }
  }
  m->counters[r.name.str()] = r.id.value();
  return CommandResult::ok();
}

CommandResult Model::apply(const Vek::FreeCountersRecord& r) {
  DaemonModule* m = findModule(r.module);
  if (!m) return unknownModule(r.module);
  m->counters.clear();
  return CommandResult::ok();
}

// ---- Daemon-level commands ----

void Model::deliverGroupCmd(const Vek::GroupCmdRecord& record) {
  CommandResult result = applyGroup(record);
  bess::pb::CommandResponse response;
  if (result.failed()) {
    response.mutable_error()->set_code(result.code);
    response.mutable_error()->set_errmsg(result.msg);
    errors_.push_back(Json{{"group", record.group.str()},
                           {"type", static_cast<unsigned>(record.cmd->requestType())},
                           {"code", result.code},
                           {"msg", result.msg}});
  }
  replies().groupReplyArrived(record, response);
}

CommandResult Model::applyGroup(const Vek::GroupCmdRecord& record) {
  switch (record.cmd->requestType()) {
    case Vek::resumeAllRequest:
      workersResumed_ = true;
      return CommandResult::ok();
    case Vek::createPortRequest:
      return createPort(record);
    case Vek::destroyPortRequest:
      return destroyPort(record);
    case Vek::portConfRequest:
      return configurePort(record);
    case Vek::portCmdRequest:
      return portCommand(record);
    case Vek::createRateLimitTcRequest:
      return createRateLimitTc(record);
    case Vek::attachTaskToTcRequest:
      return attachTaskToTc(record);
  }
  return CommandResult::error(
      EINVAL,
      fmt::format("unknown request type {}", static_cast<unsigned>(record.cmd->requestType())));
}

CommandResult Model::createPort(const Vek::GroupCmdRecord& record) {
  const auto* request = messageAs<bess::pb::CreatePortRequest>(record);
  if (!request) return wrongRequest(record);
  if (ports_.contains(request->name())) {
    return CommandResult::error(EEXIST, fmt::format("port {} exists", request->name()));
  }
  auto table = TableFactory::portTable(request->driver());
  if (!table) {
    return CommandResult::error(EINVAL, fmt::format("unknown port driver {}", request->driver()));
  }
  DaemonPort& port = ports_[request->name()];
  port.driver = request->driver();
  port.arg = request->arg();
  port.table = std::move(table);
  return CommandResult::ok();
}

CommandResult Model::destroyPort(const Vek::GroupCmdRecord& record) {
  const auto* request = messageAs<bess::pb::DestroyPortRequest>(record);
  if (!request) return wrongRequest(record);
  if (ports_.erase(request->name()) == 0) return unknownPort(request->name());
  return CommandResult::ok();
}

CommandResult Model::configurePort(const Vek::GroupCmdRecord& record) {
  const auto* request = messageAs<bess::pb::SetPortConfRequest>(record);
  if (!request) return wrongRequest(record);
  auto it = ports_.find(request->name());
  if (it == ports_.end()) return unknownPort(request->name());
  it->second.adminUp = request->conf().adminup();
  return CommandResult::ok();
}

CommandResult Model::portCommand(const Vek::GroupCmdRecord& record) {
  const auto* request = messageAs<bess::pb::CommandRequest>(record);
  if (!request) return wrongRequest(record);
  auto it = ports_.find(request->name());
  if (it == ports_.end()) return unknownPort(request->name());
  CommandResult failure;
  if (failNextMatches(request->name(), request->cmd(), failure)) return failure;
  auto arg = request->has_arg() ? unpacker_.unpack(request->arg()) : nullptr;
  return it->second.table->apply(request->cmd(), arg.get());
}

CommandResult Model::createRateLimitTc(const Vek::GroupCmdRecord& record) {
  const auto* arg = messageAs<vek::pb::RateLimitTcArg>(record);
  if (!arg) return wrongRequest(record);
  if (arg->worker() < 0 || arg->worker() >= workers_) {
    return CommandResult::error(EINVAL, fmt::format("no worker {}", arg->worker()));
  }
  if (!arg->parent().empty() && !tcs_.contains(arg->parent())) {
    return CommandResult::error(ENOENT, fmt::format("unknown traffic class {}", arg->parent()));
  }
  TrafficClass tc;
  tc.worker = arg->worker();
  tc.unit = arg->unit();
  tc.limit = arg->limit();
  tc.burst = arg->burst();
  auto [it, added] = tcs_.try_emplace(arg->tcname(), tc);
  if (!added && !it->second.sameLimits(tc)) {
    return CommandResult::error(
        EEXIST, fmt::format("traffic class {} exists with other limits", arg->tcname()));
  }
  return CommandResult::ok();  // the same class again is no fault
}

CommandResult Model::attachTaskToTc(const Vek::GroupCmdRecord& record) {
  const auto* arg = messageAs<vek::pb::AttachTaskArg>(record);
  if (!arg) return wrongRequest(record);
  auto it = tcs_.find(arg->tcname());
  if (it == tcs_.end()) {
    return CommandResult::error(ENOENT, fmt::format("unknown traffic class {}", arg->tcname()));
  }
  auto& tasks = it->second.tasks;
  if (std::find(tasks.begin(), tasks.end(), arg->taskname()) == tasks.end()) {
    tasks.push_back(arg->taskname());
  }
  return CommandResult::ok();
}

void Model::dropTasks(const std::vector<std::string>& names) {
  for (auto& [name, tc] : tcs_) {
    std::erase_if(tc.tasks, [&names](const std::string& task) {
      return std::find(names.begin(), names.end(), task) != names.end();
    });
  }
}

// ---- Outputs ----

nlohmann::ordered_json Model::dump() const {
  Json modules = Json::object();
  for (const auto& [name, m] : modules_) {
    Json out = Json::object();
    for (const auto& [gate, to] : m.out) {
      out[std::to_string(gate)] = {{"to", to.module}, {"igate", to.gate}};
    }
    modules[name] = {{"class", m.moduleClass},
                     {"inGates", m.inGates},
                     {"outGates", m.outGates},
                     {"reservedIn", m.reservedIn},
                     {"reservedOut", m.reservedOut},
                     {"init", Vek::ProtoJson::packedOrNull(m.init.get())},
                     {"out", std::move(out)},
                     {"counters", m.counters.empty() ? Json::object() : Json(m.counters)},
                     {"table", m.table->dump()}};
  }
  Json ports = Json::object();
  for (const auto& [name, port] : ports_) {
    Json state = port.table->dump();
    if (port.adminUp) state["adminUp"] = *port.adminUp;
    ports[name] = {{"driver", port.driver},
                   {"arg", port.arg.type_url().empty() ? Json() : Vek::ProtoJson::of(port.arg)},
                   {"state", std::move(state)}};
  }
  Json tcs = Json::object();
  for (const auto& [name, tc] : tcs_) {
    // A class holds its tasks as a set: the order they were attached in is not its state.
    std::vector<std::string> tasks(tc.tasks.begin(), tc.tasks.end());
    std::sort(tasks.begin(), tasks.end());
    if (tc.weighted) {
      tcs[name] = {{"worker", tc.worker}, {"policy", "weighted"}, {"tasks", tasks}};
    } else {
      tcs[name] = {{"worker", tc.worker},
                   {"unit", tc.unit},
                   {"limit", tc.limit},
                   {"burst", tc.burst},
                   {"tasks", std::move(tasks)}};
    }
  }
  return {{"workersResumed", workersResumed_},
          {"modules", std::move(modules)},
          {"ports", std::move(ports)},
          {"trafficClasses", std::move(tcs)},
          {"errors", errors_.empty() ? Json::array() : Json(errors_)}};
}

std::string Model::dot() const { return DotWriter(*this).write(); }

}  // namespace Dataplane
