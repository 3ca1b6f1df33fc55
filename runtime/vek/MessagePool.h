#pragma once

#include <cstddef>
#include <memory>
#include <typeinfo>
#include <vector>

#include "runtime/lumo/Assert.h"
#include "runtime/vek/MessageRecycler.h"

namespace Vek {

// Messages of one type for a sender of many commands. A message built afresh costs a handful
// of heap blocks (itself, its byte strings, each element of its repeated fields); one that
// comes back from a delivered command is cleared, which keeps those blocks, and is handed out
// again. At most `keep` messages wait here: a burst larger than that frees the rest.
template <typename Message>
class MessagePool final : public MessageRecycler {
 public:
  explicit MessagePool(std::size_t keep) : keep_(keep) { free_.reserve(keep); }

  // A cleared message, owned by the caller until it goes into a command.
  Message* take() {
    if (free_.empty()) return new Message;
    Message* message = free_.back().release();
    free_.pop_back();
    return message;
  }

  void recycle(std::unique_ptr<google::protobuf::Message> message) override {
    QEL_ASSERT(message && typeid(*message) == typeid(Message),
               "a message goes back to the pool of its own type");
    if (free_.size() >= keep_) return;
    message->Clear();
    free_.emplace_back(static_cast<Message*>(message.release()));
  }

  std::size_t waiting() const noexcept { return free_.size(); }

 private:
  std::size_t keep_;
  std::vector<std::unique_ptr<Message>> free_;
};

}  // namespace Vek
