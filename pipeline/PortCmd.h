#pragma once

#include <google/protobuf/message.h>

#include "runtime/lumo/Ptr.h"
#include "runtime/vek/GrpcCmd.h"

namespace VekL3Mcast {

// A command of a port's driver (a bess.pb.CommandRequest naming the port). A failed reply
// is traced by its code and text, as for every daemon-level command, and changes nothing.
class PortCmd : public Vek::GrpcCmd {
 public:
  // Takes the message.
  explicit PortCmd(google::protobuf::Message* message)
      : Vek::GrpcCmd(message, Vek::portCmdRequest) {}
};

inline Lumo::Ptr<PortCmd> portCmdFactory(google::protobuf::Message* message) {
  return Lumo::makePtr<PortCmd>(message);
}

}  // namespace VekL3Mcast
