#pragma once

#include <cstddef>
#include <map>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/CommandChannel.h"

namespace Vek {

// The groups of daemon-level commands, by name, and the channel they are carried on.
class GrpcGlobalCmdConfig : public Lumo::Node {
 public:
  explicit GrpcGlobalCmdConfig(Lumo::Ptr<CommandChannel> channel) : channel_(std::move(channel)) {}

  // Registers a group; one of the same name is replaced.
  void cmdConfigGroupIs(const Lumo::Ptr<CmdConfigGroup>& group) {
    groups_[group->name()] = group;
    group->channelIs(channel_);
  }
  void cmdConfigGroupDel(const Lumo::String& name) { groups_.erase(name); }
  Lumo::Ptr<CmdConfigGroup> cmdConfigGroup(const Lumo::String& name) const {
    auto it = groups_.find(name);
    return it == groups_.end() ? nullptr : it->second;
  }
  std::size_t cmdConfigGroups() const noexcept { return groups_.size(); }

  const Lumo::Ptr<CommandChannel>& channel() const noexcept { return channel_; }

 private:
  Lumo::Ptr<CommandChannel> channel_;
  std::map<Lumo::String, Lumo::Ptr<CmdConfigGroup>> groups_;
};

}  // namespace Vek
