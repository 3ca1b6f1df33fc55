#pragma once

#include "runtime/vek/ChannelRecord.h"
#include "runtime/vek/ChannelReplySink.h"

namespace Vek {

// The far end of the command channel: it carries each record to a daemon, in the order
// given, and reports what comes back. The data-plane model is one; a gRPC client of a
// daemon process is another.
class ChannelBackend {
 public:
  virtual ~ChannelBackend() = default;
  virtual void deliver(const ChannelRecord& record, ChannelReplySink& replies) = 0;
};

}  // namespace Vek
