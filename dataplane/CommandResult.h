#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Dataplane {

// What a daemon module answers to one command: success, possibly with a reply message, or
// an error code (errno values, as the daemon uses them) with a message.
struct CommandResult {
  std::int32_t code = 0;
  std::string msg;
  std::unique_ptr<google::protobuf::Message> reply;

  bool failed() const noexcept { return code != 0; }

  static CommandResult ok() { return {}; }
  static CommandResult error(std::int32_t code, std::string msg) {
    return {code, std::move(msg), nullptr};
  }
  static CommandResult answer(std::unique_ptr<google::protobuf::Message> reply) {
    return {0, {}, std::move(reply)};
  }
};

}  // namespace Dataplane
