#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/vek/ChannelBackend.h"
#include "runtime/vek/ChannelRecord.h"
#include "runtime/vek/ChannelReplySink.h"
#include "runtime/vek/CommandLog.h"
#include "runtime/vek/ModuleStatus.h"

namespace Vek {

class Module;

// The one ordered stream of records between the logic and a daemon. Module commands,
// daemon-level commands of the groups, module life, gate wiring and counters all queue here
// in the order the logic made them; pump() carries them to the backend and puts what comes
// back on the ModuleStatus queues.
class CommandChannel : public Lumo::Node, private ChannelReplySink {
 public:
  CommandChannel();
  ~CommandChannel() override;

  // Not owned; it must outlive every pump(). The channel is its reply sink.
  void backendIs(ChannelBackend* backend) noexcept;
  ChannelBackend* backend() const noexcept { return backend_; }
  void moduleStatusIs(Lumo::Ptr<ModuleStatus> status) { status_ = std::move(status); }
  const Lumo::Ptr<ModuleStatus>& moduleStatus() const noexcept { return status_; }
  CommandLog& commandLog() noexcept { return log_; }
  const CommandLog& commandLog() const noexcept { return log_; }

  void recordIs(ChannelRecord record);
  std::size_t pendingRecords() const noexcept { return records_.size(); }

  // Takes what the daemon answered since the last pump, creates every module still waiting
  // for it, then delivers every queued record in order, with those that reactors queue
  // meanwhile, and lets the backend send them. Does nothing without a backend, or when
  // called again from inside a delivery.
  void pump();

  // Whether the daemon can be reached, as the backend last said.
  bool farEndUp() const noexcept { return farEndUp_; }
  // How often the daemon came back empty. The hosting agent restarts the agent when this
  // rises, and the new agent programs everything again.
  std::uint64_t farEndRestarts() const noexcept { return farEndRestarts_; }

  // A proxy exists before its daemon module: the module is created at the first record
  // that names it, or at the next pump.
  void moduleAwaitingCreationIs(Module* module);
  void moduleAwaitingCreationDel(Module* module);
  std::size_t modulesAwaitingCreation() const noexcept { return awaiting_.size(); }

 private:
  void createAllAwaitingModules();

  void responseArrived(std::unique_ptr<vek::pb::ModuleResponse> response) override;
  void errorArrived(std::unique_ptr<vek::pb::ModuleError> error) override;
  void groupReplyArrived(const GroupCmdRecord& record, bess::pb::CommandResponse& reply) override;
  void farEndLost() override;
  void farEndBack(bool emptied) override;

  std::deque<ChannelRecord> records_;
  std::vector<Module*> awaiting_;
  ChannelBackend* backend_ = nullptr;
  Lumo::Ptr<ModuleStatus> status_;
  CommandLog log_;
  std::uint64_t farEndRestarts_ = 0;
  bool farEndUp_ = true;
  bool pumping_ = false;
};

}  // namespace Vek
