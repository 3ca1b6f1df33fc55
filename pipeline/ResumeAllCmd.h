#pragma once

#include <google/protobuf/message.h>

#include "runtime/lumo/Ptr.h"
#include "runtime/vek/GrpcCmd.h"

namespace VekL3Mcast {

// Resumes the daemon's workers. A failed reply is traced by its code and text and changes
// nothing.
class ResumeAllCmd : public Vek::GrpcCmd {
 public:
  // Takes the message.
  explicit ResumeAllCmd(google::protobuf::Message* message)
      : Vek::GrpcCmd(message, Vek::resumeAllRequest) {}
};

inline Lumo::Ptr<ResumeAllCmd> resumeAllCmdFactory(google::protobuf::Message* message) {
  return Lumo::makePtr<ResumeAllCmd>(message);
}

}  // namespace VekL3Mcast
