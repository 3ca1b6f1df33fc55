#pragma once

#include <grpcpp/grpcpp.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "dataplane/Model.h"
#include "proto/dataplane_control.grpc.pb.h"
#include "remote/RecordCodec.h"
#include "remote/ReplyCollector.h"

namespace Remote {

// The data-plane model behind the control service. Every request, from any connection, is
// applied under one lock in the order it is read, so the model sees one stream of records
// as it does in process. Commands of the stream carry sequence numbers: one that was
// applied already (sent again after a broken connection) is answered as done and not
// applied twice.
class DaemonService final : public vek::control::DataplaneControl::Service {
 public:
  explicit DaemonService(std::uint16_t workers);

  grpc::Status Hello(grpc::ServerContext*, const vek::control::HelloRequest* request,
                     vek::control::HelloResponse* reply) override;
  grpc::Status RunCommands(
      grpc::ServerContext* context,
      grpc::ServerReaderWriter<vek::control::ReplyBatch, vek::control::CommandBatch>* stream)
      override;

  grpc::Status CreateModule(grpc::ServerContext*, const vek::control::CreateModuleRequest* request,
                            bess::pb::CommandResponse* reply) override;
  grpc::Status DestroyModule(grpc::ServerContext*,
                             const vek::control::DestroyModuleRequest* request,
                             bess::pb::CommandResponse* reply) override;
  grpc::Status ConnectModules(grpc::ServerContext*,
                              const vek::control::ConnectModulesRequest* request,
                              bess::pb::CommandResponse* reply) override;
  grpc::Status DisconnectModules(grpc::ServerContext*,
                                 const vek::control::DisconnectModulesRequest* request,
                                 bess::pb::CommandResponse* reply) override;
  grpc::Status ModuleCommand(grpc::ServerContext*, const bess::pb::CommandRequest* request,
                             bess::pb::CommandResponse* reply) override;
  grpc::Status ResumeAll(grpc::ServerContext*, const bess::pb::EmptyRequest* request,
                         bess::pb::CommandResponse* reply) override;
  grpc::Status CreatePort(grpc::ServerContext*, const bess::pb::CreatePortRequest* request,
                          bess::pb::CommandResponse* reply) override;
  grpc::Status DestroyPort(grpc::ServerContext*, const bess::pb::DestroyPortRequest* request,
                           bess::pb::CommandResponse* reply) override;
  grpc::Status SetPortConf(grpc::ServerContext*, const bess::pb::SetPortConfRequest* request,
                           bess::pb::CommandResponse* reply) override;
  grpc::Status PortCommand(grpc::ServerContext*, const bess::pb::CommandRequest* request,
                           bess::pb::CommandResponse* reply) override;
  grpc::Status AddTc(grpc::ServerContext*, const vek::pb::RateLimitTcArg* request,
                     bess::pb::CommandResponse* reply) override;
  grpc::Status AttachTask(grpc::ServerContext*, const vek::pb::AttachTaskArg* request,
                          bess::pb::CommandResponse* reply) override;

  grpc::Status GetDump(grpc::ServerContext*, const bess::pb::EmptyRequest*,
                       vek::control::TextResponse* reply) override;
  grpc::Status GetDot(grpc::ServerContext*, const bess::pb::EmptyRequest*,
                      vek::control::TextResponse* reply) override;
  grpc::Status Reset(grpc::ServerContext*, const vek::control::ResetRequest* request,
                     bess::pb::CommandResponse* reply) override;
  grpc::Status FailNext(grpc::ServerContext*, const vek::control::FailNextRequest* request,
                        bess::pb::CommandResponse* reply) override;

 private:
  // Applies one command and adds what the daemon answers to `replies`. The lock is held.
  void applyLocked(const vek::control::QueuedCommand& command, vek::control::ReplyBatch& replies);
  // One request outside the stream, answered as the daemon's own control API answers.
  bess::pb::CommandResponse applyOne(const vek::control::QueuedCommand& command);
  // A request of the daemon's own API that the stream carries in the field `slot`.
  template <typename Request>
  grpc::Status answer(const Request& request, Request* (vek::control::QueuedCommand::*slot)(),
                      bess::pb::CommandResponse* reply);
  // A daemon-level request of the given type.
  grpc::Status answerDaemonRequest(const google::protobuf::Message& request, std::uint32_t type,
                                   bess::pb::CommandResponse* reply);
  void startEmpty(std::uint16_t workers);

  std::mutex lock_;
  std::unique_ptr<Dataplane::Model> model_;
  RecordCodec codec_;
  ReplyCollector collector_;
  std::string instance_;
  std::uint64_t session_ = 0;
  std::uint64_t appliedThrough_ = 0;
};

}  // namespace Remote
