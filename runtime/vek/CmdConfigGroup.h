#pragma once

#include <cstdint>
#include <deque>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/GrpcCmd.h"

namespace Vek {

// A named stream of daemon-level commands. A command waits in the group until the version
// is raised; from then on it stands in the channel's order. A group that is not yet
// registered with a GrpcGlobalCmdConfig keeps its commands until it is.
class CmdConfigGroup : public Lumo::Node {
 public:
  explicit CmdConfigGroup(Lumo::String name) : name_(std::move(name)) {}

  const Lumo::String& name() const noexcept { return name_; }

  void cmdBatchEnq(const Lumo::Ptr<GrpcCmd>& cmd) { pending_.push_back(cmd); }
  // Tells the channel that the group has new content.
  void enqueueVersionInc(std::uint32_t by);
  std::uint64_t enqueueVersion() const noexcept { return version_; }
  std::size_t pendingCmds() const noexcept { return pending_.size(); }

  // Set when the group is registered.
  void channelIs(Lumo::Ptr<CommandChannel> channel);
  const Lumo::Ptr<CommandChannel>& channel() const noexcept { return channel_; }

 private:
  void flush();

  Lumo::String name_;
  std::deque<Lumo::Ptr<GrpcCmd>> pending_;
  Lumo::Ptr<CommandChannel> channel_;
  std::uint64_t version_ = 0;
};

}  // namespace Vek
