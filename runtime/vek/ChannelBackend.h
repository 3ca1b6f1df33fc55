#pragma once

#include "runtime/lumo/Assert.h"
#include "runtime/vek/ChannelRecord.h"
#include "runtime/vek/ChannelReplySink.h"

namespace Vek {

// The far end of the command channel: it carries each record to a daemon, in the order
// given, and reports what comes back. The data-plane model is one; a client of a daemon
// process is another.
//
// Threads: every call here is made on the agent thread, and the sink is called only on the
// agent thread. A backend whose daemon answers on threads of its own keeps those answers as
// plain messages until collectReplies(); a record, which holds counted pointers, never leaves
// the agent thread.
class ChannelBackend {
 public:
  virtual ~ChannelBackend() = default;

  // Given once, before the first delivery; it outlives the backend's use of it.
  void replySinkIs(ChannelReplySink* sink) noexcept { sink_ = sink; }

  // Carries one record. The answer may come inside the call or at a later collectReplies().
  virtual void deliver(const ChannelRecord& record) = 0;
  // The end of a pump: a backend that batches sends what it holds now.
  virtual void flush() {}
  // The start of a pump: hands every answer that has arrived since to the sink.
  virtual void collectReplies() {}

 protected:
  ChannelReplySink& replies() const {
    QEL_ASSERT(sink_, "channel backend used before its reply sink was given");
    return *sink_;
  }

 private:
  ChannelReplySink* sink_ = nullptr;
};

}  // namespace Vek
