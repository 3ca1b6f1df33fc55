#include "runtime/vek/CmdConfigGroup.h"

namespace Vek {

void CmdConfigGroup::enqueueVersionInc(std::uint32_t by) {
  version_ += by;
  flush();
}

void CmdConfigGroup::channelIs(Lumo::Ptr<CommandChannel> channel) {
  channel_ = std::move(channel);
  if (version_ > 0) flush();
}

void CmdConfigGroup::flush() {
  if (!channel_) return;
  while (!pending_.empty()) {
    channel_->recordIs(GroupCmdRecord{name_, std::move(pending_.front())});
    pending_.pop_front();
  }
}

}  // namespace Vek
