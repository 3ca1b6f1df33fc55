#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "dataplane/AnyUnpacker.h"
#include "dataplane/CommandResult.h"
#include "dataplane/DaemonModule.h"
#include "dataplane/DaemonPort.h"
#include "dataplane/ModuleContext.h"
#include "dataplane/TrafficClass.h"
#include "runtime/vek/ChannelBackend.h"
#include "runtime/vek/ChannelErrorType.h"

namespace Dataplane {

// The packet daemon as the command channel sees it: modules with their gates, links,
// counters and tables, ports, traffic classes with their tasks, and whether the workers
// run. It applies each record the way the daemon would and refuses bad ones with an error
// record. It is the in-process backend of the channel.
class Model final : public Vek::ChannelBackend {
 public:
  explicit Model(std::uint16_t workers = 1);

  void deliver(const Vek::ChannelRecord& record) override;
  // A module command as a daemon reads it off its stream, without a record around it; `arg`
  // (null for none) is read only during the call, so the reader may reuse it.
  void deliverModuleCmd(std::string_view module, std::string_view cmd,
                        const google::protobuf::Message* arg, bool wantResponse);

  // The next module or port command `cmd` for `module` fails with this code and message
  // and is not applied. Several may wait; each is used once.
  void failNextForTest(std::string module, std::string cmd, std::int32_t code, std::string msg);
  // The failures still waiting for their command, as module and command, oldest first.
  std::vector<std::pair<std::string, std::string>> failNextWaitingForTest() const;

  // Everything the daemon holds, as JSON.
  nlohmann::ordered_json dump() const;
  // The module graph in the DOT language.
  std::string dot() const;

  std::uint16_t workers() const noexcept { return workers_; }
  bool workersResumed() const noexcept { return workersResumed_; }
  const std::map<std::string, DaemonModule>& modules() const noexcept { return modules_; }
  const DaemonModule* module(std::string_view name) const;
  const std::map<std::string, DaemonPort>& ports() const noexcept { return ports_; }
  const std::map<std::string, TrafficClass>& trafficClasses() const noexcept { return tcs_; }
  // The refused records, oldest first, in the shape of the log's error lines.
  const std::vector<nlohmann::ordered_json>& errors() const noexcept { return errors_; }

 private:
  struct FailRule {
    std::string module;
    std::string cmd;
    std::int32_t code;
    std::string msg;
  };

  CommandResult apply(const Vek::CreateModuleRecord& record);
  CommandResult apply(const Vek::DestroyModuleRecord& record);
  CommandResult apply(const Vek::ConnectRecord& record);
  CommandResult apply(const Vek::DisconnectRecord& record);
  CommandResult applyModuleCmd(std::string_view module, std::string_view cmd,
                               const google::protobuf::Message* arg);
  CommandResult apply(const Vek::AllocateCounterRecord& record);
  CommandResult apply(const Vek::FreeCountersRecord& record);
  CommandResult applyGroup(const Vek::GroupCmdRecord& record);
  CommandResult createPort(const Vek::GroupCmdRecord& record);
  CommandResult destroyPort(const Vek::GroupCmdRecord& record);
  CommandResult configurePort(const Vek::GroupCmdRecord& record);
  CommandResult portCommand(const Vek::GroupCmdRecord& record);
  CommandResult createRateLimitTc(const Vek::GroupCmdRecord& record);
  CommandResult attachTaskToTc(const Vek::GroupCmdRecord& record);

  void deliverGroupCmd(const Vek::GroupCmdRecord& record);
  void refuse(const std::string& module, Vek::ChannelErrorType type, const CommandResult& result);
  // Takes the first waiting failure for this command, if there is one.
  bool failNextMatches(std::string_view module, std::string_view cmd, CommandResult& result);
  DaemonModule* findModule(std::string_view name);
  void dropTasks(const std::vector<std::string>& names);

  std::uint16_t workers_;
  TaskIds taskIds_;
  bool workersResumed_ = false;
  std::map<std::string, DaemonModule> modules_;
  std::map<std::string, DaemonPort> ports_;
  std::map<std::string, TrafficClass> tcs_;
  std::vector<nlohmann::ordered_json> errors_;
  std::deque<FailRule> failNext_;
  AnyUnpacker unpacker_;
};

}  // namespace Dataplane
