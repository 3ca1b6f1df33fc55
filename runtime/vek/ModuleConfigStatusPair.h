#pragma once

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/ModuleConfig.h"
#include "runtime/vek/ModuleStatus.h"

namespace Vek {

// The two queues of one command channel: commands out, replies and errors back.
class ModuleConfigStatusPair : public Lumo::Node {
 public:
  explicit ModuleConfigStatusPair(const Lumo::Ptr<CommandChannel>& channel)
      : config_(Lumo::makePtr<ModuleConfig>(channel)), status_(Lumo::makePtr<ModuleStatus>()) {
    channel->moduleStatusIs(status_);
  }

  const Lumo::Ptr<ModuleConfig>& config() const noexcept { return config_; }
  const Lumo::Ptr<ModuleStatus>& status() const noexcept { return status_; }
  const Lumo::Ptr<CommandChannel>& channel() const noexcept { return config_->channel(); }

 private:
  Lumo::Ptr<ModuleConfig> config_;
  Lumo::Ptr<ModuleStatus> status_;
};

}  // namespace Vek
