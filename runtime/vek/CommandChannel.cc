#include "runtime/vek/CommandChannel.h"

#include <algorithm>

#include "runtime/trace/Trace.h"
#include "runtime/vek/Module.h"

namespace Vek {

CommandChannel::CommandChannel() = default;
CommandChannel::~CommandChannel() = default;

void CommandChannel::backendIs(ChannelBackend* backend) noexcept {
  backend_ = backend;
  if (backend_) backend_->replySinkIs(this);
}

void CommandChannel::recordIs(ChannelRecord record) {
  // Modules made before this record reach the daemon before it: the daemon sees the
  // graph in the order the agent built it (a module made before the resume of the workers
  // stands before they run).
  if (!std::holds_alternative<CreateModuleRecord>(record)) createAllAwaitingModules();
  records_.push_back(std::move(record));
}

void CommandChannel::pump() {
  if (pumping_ || !backend_) return;
  pumping_ = true;
  struct Done {
    bool& flag;
    ~Done() { flag = false; }
  } done{pumping_};
  backend_->collectReplies();
  createAllAwaitingModules();
  // Each record is delivered where it stands: records queued meanwhile go to the back,
  // which leaves the front in place. It leaves the queue even if its delivery throws.
  struct PopFront {
    std::deque<ChannelRecord>& records;
    ~PopFront() { records.pop_front(); }
  };
  while (!records_.empty()) {
    {
      PopFront pop{records_};
      const ChannelRecord& record = records_.front();
      log_.write(record);
      backend_->deliver(record);
    }
    if (records_.empty()) createAllAwaitingModules();
  }
  backend_->flush();
}

void CommandChannel::moduleAwaitingCreationIs(Module* module) { awaiting_.push_back(module); }

void CommandChannel::moduleAwaitingCreationDel(Module* module) {
  awaiting_.erase(std::remove(awaiting_.begin(), awaiting_.end(), module), awaiting_.end());
}

void CommandChannel::createAllAwaitingModules() {
  // Each creation takes its module off the list, and may add others.
  while (!awaiting_.empty()) awaiting_.front()->createInDaemon();
}

void CommandChannel::responseArrived(std::unique_ptr<vek::pb::ModuleResponse> response) {
  if (status_) status_->responseQueueEnq(std::move(response));
}

void CommandChannel::errorArrived(std::unique_ptr<vek::pb::ModuleError> error) {
  log_.writeError(*error);
  if (status_) status_->errorQueueEnq(std::move(error));
}

void CommandChannel::groupReplyArrived(const GroupCmdRecord& record,
                                       bess::pb::CommandResponse& reply) {
  if (reply.has_error() && reply.error().code() != 0) {
    log_.writeGroupError(record.group.view(), record.cmd->requestType(), reply.error().code(),
                         reply.error().errmsg());
  }
  record.cmd->processResponse(&reply);
}

void CommandChannel::farEndLost() {
  if (!farEndUp_) return;
  farEndUp_ = false;
  VEK_TRACE(warn, "Daemon lost; commands wait for it");
}

void CommandChannel::farEndBack(bool emptied) {
  farEndUp_ = true;
  if (emptied) ++farEndRestarts_;
  VEK_TRACE(warn, "Daemon back{}", emptied ? ", restarted empty" : "");
}

}  // namespace Vek
