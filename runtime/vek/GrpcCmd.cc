#include "runtime/vek/GrpcCmd.h"

#include "proto/bess.pb.h"
#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"

namespace Vek {

void GrpcCmd::processResponse(google::protobuf::Message* response) {
  auto* reply = dynamic_cast<bess::pb::CommandResponse*>(response);
  QEL_ASSERT(reply, "Invalid grpc reply message returned");
  if (reply->has_error() && reply->error().code() != 0) {
    VEK_TRACE(err, "error: {} errmsg: {}", reply->error().code(), reply->error().errmsg());
  }
}

Lumo::Ptr<GrpcCmd> portGrpcCmdFactory(google::protobuf::Message* message, GrpcRequestType type) {
  return Lumo::makePtr<GrpcCmd>(message, type);
}

}  // namespace Vek
