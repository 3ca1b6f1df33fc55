#pragma once

#include <google/protobuf/message.h>

#include <memory>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/vek/GrpcRequestType.h"

namespace Vek {

// A daemon-level command: one request message of one request type. When the daemon's reply
// arrives the channel hands it to processResponse.
class GrpcCmd : public Lumo::Node {
 public:
  // Takes the message.
  GrpcCmd(google::protobuf::Message* message, GrpcRequestType type)
      : message_(message), type_(type) {}

  const google::protobuf::Message* message() const noexcept { return message_.get(); }
  GrpcRequestType requestType() const noexcept { return type_; }

  // The reply is a bess.pb.CommandResponse. The default traces a failed reply by its code
  // and text and does nothing else.
  virtual void processResponse(google::protobuf::Message* response);

 private:
  std::unique_ptr<google::protobuf::Message> message_;
  GrpcRequestType type_;
};

// A command about a port: its configuration, or a command of the port's driver.
Lumo::Ptr<GrpcCmd> portGrpcCmdFactory(google::protobuf::Message* message, GrpcRequestType type);

}  // namespace Vek
