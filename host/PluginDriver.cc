#include "host/PluginDriver.h"

#include <algorithm>
#include <iostream>
#include <cstdlib>
#include <stdexcept>

#include "dataplane/Mfib.h"
#include "host/RunFailure.h"
#include "runtime/dov/NoProgressException.h"
#include "host/SnoopingStateKeys.h"
#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/toggle/ToggleState.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/NamespaceDut.h"

namespace VekHost {

namespace {

constexpr const char* bypassTxDemuxerEnv = "BYPASS_TXDEMUXER";

// Runs in a row in which a task asks to run again and does no work before a settle or an
// advance gives up on it. Far more than any task needs between two units of work.
constexpr std::uint64_t kNoProgressRuns = 1000;

std::uint8_t familyByte(Af af) {
  return static_cast<std::uint8_t>(af == Af::ipv6 ? Lanx::AddressFamily::ipv6
                                                  : Lanx::AddressFamily::ipv4);
}

}  // namespace

PluginDriver::PluginDriver() : library_(PluginLibrary::instance()) { traceMark_ = Trace::mark(); }

PluginDriver::~PluginDriver() {
  // The run's outcome is decided by now; what the agent's last commands meet on their way
  // out is reported, and must not end the process from a destructor.
  try {
    releaseAgent();
  } catch (const std::exception& error) {
    std::cerr << "mfa-host: while the agent went: " << error.what() << '\n';
  }
  Trace::clockIs({});
}

void PluginDriver::configure(const AgentSettings& settings) {
  for (const auto& [name, on] : settings.toggles) Toggle::overrideIs(name, on);
  Vek::namespaceDutIs(settings.namespaceDut);
  if (settings.bypassTxDemuxer) {
    ::setenv(bypassTxDemuxerEnv, "1", 1);
  } else {
    ::unsetenv(bypassTxDemuxerEnv);
  }
  scheduler_ = settings.realTimeQuantum > 0
                   ? Dov::TaskScheduler::makeRealTime(settings.realTimeQuantum)
                   : Dov::TaskScheduler::makeSimulation(static_cast<unsigned>(settings.yieldEvery));
  scheduler_->afterEachRunIs([this] { pump(); });
  scheduler_->noProgressLimitIs(kNoProgressRuns);
  Dov::TaskSchedulerRoot::schedulerIs(scheduler_);
  // A simulated run's time is its clock's, and so is the time of its trace records.
  if (Dov::SimulationPolicy* simulation = scheduler_->simulation()) {
    Trace::clockIs([simulation] { return simulation->time(); });
  }

  const auto workers = static_cast<std::uint16_t>(settings.workers);
  channel_ = Lumo::makePtr<Vek::CommandChannel>();
  attachDataPlane(workers);
  channel_->commandLog().enabledIs(commandLogKept_);
  state_ = std::make_unique<CentralStateStore>(Lanx::sharedMemManagerName);
  writer_ = std::make_unique<StateWriter>(*state_);
  const auto vekcsd = Lumo::makePtr<Vek::VekCommonSmData>(workers);
  agentArgs_ = VekMfaAgentArgs{state_->entityManager(),
                               Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel_),
                               Lumo::makePtr<Vek::GrpcGlobalCmdConfig>(channel_),
                               vekcsd,
                               vekcsd->managementSm(),
                               Lumo::makePtr<VrfNameToIdCollection>(),
                               settings.oru};
}

void PluginDriver::applyState(const StateChange& change, StateOp op) {
  writer_->apply(change, op);
  pump();
}

void PluginDriver::createAgent() {
  makeAgent();
  pump();
}

void PluginDriver::makeAgent() {
  agent_ = library_.mfaAgentFactory(&agentArgs_);
  if (!agent_) {
    collectTrace();
    throw std::runtime_error("the agent refused to start (see the trace)");
  }
}

void PluginDriver::releaseAgent() {
  if (!agent_) return;
  library_.mfaAgentRelease(std::exchange(agent_, nullptr));
  pump();
}

void PluginDriver::call(const VrfAf& vrfAf, StartMfibSmFn entryPoint) {
  if (!entryPoint(agent_, vrfAf.vrf.c_str(), familyByte(vrfAf.af))) {
    throw std::runtime_error("the agent refused the VRF name " + vrfAf.vrf);
  }
  pump();
}

void PluginDriver::start(const VrfAf& vrfAf) {
  call(vrfAf, library_.startMfibSm);
  if (std::find(started_.begin(), started_.end(), vrfAf) == started_.end()) {
    started_.push_back(vrfAf);
  }
}

void PluginDriver::stop(const VrfAf& vrfAf) {
  call(vrfAf, library_.stopMfibSm);
  std::erase(started_, vrfAf);
}

void PluginDriver::settle() {
  runScheduler([this] { scheduler_->settle(); });
}

void PluginDriver::advance(double seconds) {
  runScheduler([this, seconds] { scheduler_->advance(seconds); });
}

void PluginDriver::runScheduler(const std::function<void()>& run) {
  try {
    run();
  } catch (const Dov::NoProgressException& error) {
    pump();
    throw RunFailure(error.what());
  }
  pump();
}

void PluginDriver::restart() {
  releaseAgent();
  makeAgent();
  pump();
  for (const VrfAf& vrfAf : started_) call(vrfAf, library_.startMfibSm);
}

void PluginDriver::failNext(const FailNextStep& failure) {
  if (daemon_) return daemon_->failNext(failure);
  model_->failNextForTest(failure.module, failure.cmd, failure.code, failure.msg);
}

std::vector<std::pair<std::string, std::string>> PluginDriver::failuresWaiting() {
  // A daemon process does not say which of its failures wait.
  if (daemon_) return {};
  pump();
  return model_->failNextWaitingForTest();
}

void PluginDriver::commandLogIs(bool kept) {
  commandLogKept_ = kept;
  if (channel_) channel_->commandLog().enabledIs(kept);
}

void PluginDriver::pump() {
  channel_->pump();
  if (daemon_) settleDaemon();
  collectTrace();
}

void PluginDriver::stepBegins(const std::string& step) {
  pump();
  // The command log holds commands and nothing else, so the mark says where in it the
  // step's commands begin.
  stepMarkSequence_ = Trace::mark();
  if (commandLogKept_) {
    VEK_TRACE(info, "--- {} (its commands from seq {})", step, commandCount() + 1);
  } else {
    VEK_TRACE(info, "--- {}", step);
  }
  collectTrace();
}

void PluginDriver::collectTrace() {
  for (const Trace::TraceRecord& record : Trace::recordsSince(traceMark_)) {
    std::string line = record.format();
    while (!line.empty() && line.back() == '\n') line.pop_back();
    trace_.add({record.level, std::move(line), record.sequence == stepMarkSequence_});
    traceMark_ = record.sequence + 1;
  }
}

nlohmann::json PluginDriver::dump() {
  pump();
  // The model keeps its keys in the order it writes them; the checks read any order.
  nlohmann::json dump =
      daemon_ ? daemon_->dump() : nlohmann::json::parse(model_->dump().dump());
  // Tables the agent writes into central state are not the daemon's, but a run shows them.
  dump["outputs"]["vxlanVtepVlanStatus"] = SnoopingStateKeys::vxlanVtepVlanStatusDump();
  return dump;
}

ScenarioDriver::FibRoute PluginDriver::fibRoute(const std::string& module, const RouteKey& key) {
  if (daemon_) return ScenarioDriver::fibRoute(module, key);
  pump();
  FibRoute answer;
  const Dataplane::DaemonModule* fib = model_->module(module);
  if (!fib) return answer;
  answer.moduleExists = true;
  const auto* table = dynamic_cast<const Dataplane::Mfib*>(fib->table.get());
  if (!table) return answer;
  answer.routeCount = table->routeCount();
  if (auto route = table->routeDump(key.text())) {
    answer.route = nlohmann::json::parse(route->dump());
  }
  return answer;
}

ScenarioDriver::Counts PluginDriver::counts() {
  if (daemon_) return ScenarioDriver::counts();
  pump();
  Counts counts;
  counts.modules = model_->modules().size();
  counts.ports = model_->ports().size();
  counts.trafficClasses = model_->trafficClasses().size();
  counts.errors = model_->errors().size();
  counts.workersResumed = model_->workersResumed();
  for (const auto& [name, module] : model_->modules()) {
    counts.links += module.out.size();
    if (const auto* fib = dynamic_cast<const Dataplane::Mfib*>(module.table.get())) {
      counts.fibRoutes.emplace_back(name, fib->routeCount());
    }
  }
  for (const auto& entry : channel_->commandLog().entries()) {
    auto kind = entry.find("kind");
    ++counts.commandsByKind[kind != entry.end() && kind->is_string() ? kind->get<std::string>()
                                                                     : "?"];
    ++counts.commands;
  }
  return counts;
}

std::string PluginDriver::dot() {
  pump();
  if (daemon_) return daemon_->dot();
  return model_->dot();
}

std::size_t PluginDriver::commandCount() {
  pump();
  return channel_->commandLog().entries().size();
}

std::vector<nlohmann::json> PluginDriver::commandsSince(std::size_t mark) {
  pump();
  const auto& entries = channel_->commandLog().entries();
  std::vector<nlohmann::json> records;
  for (std::size_t i = mark; i < entries.size(); ++i) {
    records.push_back(nlohmann::json::parse(entries[i].dump()));
  }
  return records;
}

std::size_t PluginDriver::traceCount() {
  collectTrace();
  return trace_.count();
}

std::vector<ScenarioDriver::TraceLine> PluginDriver::traceSince(std::size_t mark) {
  collectTrace();
  return trace_.since(mark);
}

}  // namespace VekHost
