#pragma once

#include <memory>

#include "proto/bess.pb.h"
#include "proto/vek.pb.h"
#include "runtime/vek/ChannelRecord.h"

namespace Vek {

// Where a backend puts what its daemon answers. A backend may answer inside deliver() or
// later, on the agent thread.
class ChannelReplySink {
 public:
  // A reply to a module command that asked for one.
  virtual void responseArrived(std::unique_ptr<vek::pb::ModuleResponse> response) = 0;
  // A record the daemon refused; it was not applied.
  virtual void errorArrived(std::unique_ptr<vek::pb::ModuleError> error) = 0;
  // The reply to a daemon-level command of a group.
  virtual void groupReplyArrived(const GroupCmdRecord& record,
                                 bess::pb::CommandResponse& reply) = 0;

 protected:
  ~ChannelReplySink() = default;
};

}  // namespace Vek
