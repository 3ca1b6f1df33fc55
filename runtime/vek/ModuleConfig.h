#pragma once

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/ModuleCmdBase.h"

namespace Vek {

// The logic's side of the module command queue. Commands reach the daemon in queue order,
// interleaved with everything else the channel carries in the order it was queued.
class ModuleConfig : public Lumo::Node {
 public:
  explicit ModuleConfig(Lumo::Ptr<CommandChannel> channel) : channel_(std::move(channel)) {}

  void cmdBatchEnq(const Lumo::Ptr<ModuleCmdBase>& cmd) {
    channel_->recordIs(ModuleCmdRecord{cmd, !ignoreResponse_});
  }
  // Whether the daemon's replies to the commands queued from now on are dropped (the
  // default) or delivered to the ModuleStatus.
  void ignoreResponseIs(bool ignore) noexcept { ignoreResponse_ = ignore; }
  bool ignoreResponse() const noexcept { return ignoreResponse_; }

  const Lumo::Ptr<CommandChannel>& channel() const noexcept { return channel_; }

 private:
  Lumo::Ptr<CommandChannel> channel_;
  bool ignoreResponse_ = true;
};

}  // namespace Vek
