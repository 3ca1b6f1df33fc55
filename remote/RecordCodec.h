#pragma once

#include <google/protobuf/any.pb.h>
#include <google/protobuf/message.h>

#include <memory>
#include <string>

#include "dataplane/AnyUnpacker.h"
#include "proto/dataplane_control.pb.h"
#include "runtime/vek/ChannelRecord.h"

namespace Remote {

// Turns channel records into wire commands and back. The client encodes on the agent
// thread; the daemon decodes into records of its own, so that no counted object is shared
// between the two sides.
class RecordCodec {
 public:
  static void encode(const Vek::ChannelRecord& record, vek::control::QueuedCommand* out);

  // The record a wire command stands for, or a text saying why it stands for none.
  struct Decoded {
    std::unique_ptr<Vek::ChannelRecord> record;
    std::string problem;
  };
  Decoded decode(const vek::control::QueuedCommand& command);
  // The argument of a module command, read into a message the codec keeps for its type
  // (valid until the next argument of that type), or null with `problem` set.
  const google::protobuf::Message* reusedArgument(const google::protobuf::Any& any,
                                                  std::string& problem);


 private:
  Dataplane::AnyUnpacker unpacker_;
};

}  // namespace Remote
