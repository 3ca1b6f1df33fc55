#pragma once

#include <memory>

#include "proto/bess.pb.h"
#include "proto/vek.pb.h"
#include "runtime/vek/ChannelRecord.h"

namespace Vek {

// Where a backend puts what its daemon answers, and what it learns of the daemon itself.
// Called only on the agent thread, inside deliver() or at a later collectReplies().
class ChannelReplySink {
 public:
  // A reply to a module command that asked for one.
  virtual void responseArrived(std::unique_ptr<vek::pb::ModuleResponse> response) = 0;
  // A record the daemon refused; it was not applied.
  virtual void errorArrived(std::unique_ptr<vek::pb::ModuleError> error) = 0;
  // The reply to a daemon-level command of a group.
  virtual void groupReplyArrived(const GroupCmdRecord& record,
                                 bess::pb::CommandResponse& reply) = 0;
  // The daemon cannot be reached. Records keep their order and wait in the backend.
  virtual void farEndLost() = 0;
  // The daemon can be reached again. `emptied`: it is not the daemon that held what was
  // sent (it was restarted), so everything must be programmed again; otherwise the backend
  // carries on where the daemon stopped, and nothing is lost or sent twice.
  virtual void farEndBack(bool emptied) = 0;

 protected:
  ~ChannelReplySink() = default;
};

}  // namespace Vek
