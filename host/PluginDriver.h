#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "dataplane/Model.h"
#include "host/CentralStateStore.h"
#include "host/DaemonLink.h"
#include "host/MarkedLog.h"
#include "host/PluginLibrary.h"
#include "host/ScenarioDriver.h"
#include "host/StateWriter.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/vek/CommandChannel.h"

namespace VekHost {

// Runs a scenario against the real agent, loaded from libVekL3Mcast.so, over the data-plane
// model. It is the hosting agent: it owns simulated time, central state, the channel and
// the shared data, and it carries every command to the model after each step and after
// every task or timer run.
class PluginDriver : public ScenarioDriver {
 public:
  PluginDriver();
  ~PluginDriver() override;

  void configure(const AgentSettings& settings) override;
  void applyState(const StateChange& change, StateOp op) override;
  void createAgent() override;
  void start(const VrfAf& vrfAf) override;
  void stop(const VrfAf& vrfAf) override;
  void settle() override;
  void advance(double seconds) override;
  void restart() override;
  void failNext(const FailNextStep& failure) override;
  void stepBegins(const std::string& step) override;
  void daemon(DaemonStep::Kind kind) override;
  std::vector<std::pair<std::string, std::string>> failuresWaiting() override;

  // A run too large to keep a record of every command turns the log off; expectations of
  // commands then see none.
  void commandLogIs(bool kept);

  nlohmann::json dump() override;
  FibRoute fibRoute(const std::string& module, const RouteKey& key) override;
  Counts counts() override;
  std::string dot() override;
  std::size_t commandCount() override;
  std::vector<nlohmann::json> commandsSince(std::size_t mark) override;
  std::size_t traceCount() override;
  std::vector<TraceLine> traceSince(std::size_t mark) override;

 private:
  void makeAgent();
  void releaseAgent();
  void call(const VrfAf& vrfAf, StartMfibSmFn entryPoint);
  // Runs the scheduler by `run`; a task that stops making progress fails the run.
  void runScheduler(const std::function<void()>& run);
  // Carries what is queued to the model and keeps the trace lines written meanwhile.
  void pump();
  void collectTrace();
  // The data plane of this run: the model in process, or a daemon (PluginDriverDaemon.cc).
  void attachDataPlane(std::uint16_t workers);
  void settleDaemon();

  const PluginLibrary& library_;
  Lumo::Ptr<Dov::TaskScheduler> scheduler_;
  std::unique_ptr<Dataplane::Model> model_;
  std::unique_ptr<DaemonLink> daemon_;
  std::uint64_t daemonRestartsSeen_ = 0;
  Lumo::Ptr<Vek::CommandChannel> channel_;
  std::unique_ptr<CentralStateStore> state_;
  // The shared data handed to every agent made, a restarted one included.
  VekMfaAgentArgs agentArgs_;
  std::unique_ptr<StateWriter> writer_;
  VekL3Mcast::MfaAgent* agent_ = nullptr;
  // What the hosting agent has started, in order; a restart starts it again.
  std::vector<VrfAf> started_;
  bool commandLogKept_ = true;
  std::uint64_t traceMark_ = 0;
  // The trace record of the latest step mark.
  std::uint64_t stepMarkSequence_ = UINT64_MAX;
  MarkedLog<TraceLine> trace_;
};

}  // namespace VekHost
