#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "dataplane/AnyUnpacker.h"
#include "runtime/vek/ChannelRecord.h"

namespace Dataplane {

// Reads lines of the command log back into the records that crossed the channel, so that
// the log of a run can be handed to a daemon again. Each kind of line is read by protobuf's
// JSON mapping into the message of its kind (proto/command_log.proto): a field the log never
// writes, a value of the wrong type or out of range, or an argument of a type no module
// knows refuses the line. What the log leaves out comes back as the agent sends it, or
// empty: a module command asks for its response; port, traffic-class and task commands name
// no group; a port's queue sizes and a class's parent are unset.
class CommandLogReader {
 public:
  // The record of a line, or why the line stands for none (an error record among them).
  struct Read {
    std::unique_ptr<Vek::ChannelRecord> record;
    std::string problem;
  };
  Read read(std::string_view line);

 private:
  template <typename Line>
  Read readAs(const std::string& text);

  AnyUnpacker unpacker_;
};

}  // namespace Dataplane
