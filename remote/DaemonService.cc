#include "remote/DaemonService.h"

#include <fmt/format.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <vector>

#include <google/protobuf/arena.h>

#include "runtime/vek/ChannelErrorType.h"

namespace Remote {

namespace {

namespace ctl = vek::control;
using bess::pb::CommandResponse;

// Who a command that cannot be read was meant for, and the kind of record it is.
std::pair<std::string, Vek::ChannelErrorType> addresseeOf(const ctl::QueuedCommand& command) {
  switch (command.command_case()) {
    case ctl::QueuedCommand::kCreateModule:
      return {command.create_module().name(), Vek::createModuleError};
    case ctl::QueuedCommand::kDestroyModule:
      return {command.destroy_module().name(), Vek::destroyModuleError};
    case ctl::QueuedCommand::kConnectModules:
      return {command.connect_modules().m1(), Vek::connectError};
    case ctl::QueuedCommand::kDisconnectModules:
      return {command.disconnect_modules().name(), Vek::disconnectError};
    case ctl::QueuedCommand::kModuleCommand:
      return {command.module_command().name(), Vek::moduleCmdError};
    case ctl::QueuedCommand::kAllocateCounter:
      return {command.allocate_counter().module(), Vek::counterError};
    case ctl::QueuedCommand::kFreeCounters:
      return {command.free_counters().module(), Vek::counterError};
    case ctl::QueuedCommand::kDaemonRequest:
    case ctl::QueuedCommand::COMMAND_NOT_SET:
      break;
  }
  return {std::string(), Vek::groupCmdError};
}

// About what a batch of route commands takes in the arena (4096 commands of some 400 bytes).
constexpr std::size_t kBatchArenaBlock = 2 << 20;

std::string newInstanceName() {
  std::random_device seed;
  return fmt::format("{:x}-{:x}", std::chrono::system_clock::now().time_since_epoch().count(),
                     seed());
}

}  // namespace

DaemonService::DaemonService(std::uint16_t workers) { startEmpty(workers); }

void DaemonService::startEmpty(std::uint16_t workers) {
  model_ = std::make_unique<Dataplane::Model>(workers);
  model_->replySinkIs(&collector_);
  instance_ = newInstanceName();
  session_ = 0;
  appliedThrough_ = 0;
}

void DaemonService::applyLocked(const ctl::QueuedCommand& command, ctl::ReplyBatch& replies) {
  collector_.commandIs(command.seq(), &replies);
  std::string problem;
  if (command.has_module_command()) {
    // Most of a stream: applied without a record, its argument read into a kept message.
    const auto& c = command.module_command();
    const google::protobuf::Message* arg =
        c.has_arg() ? codec_.reusedArgument(c.arg(), problem) : nullptr;
    if (problem.empty()) {
      model_->deliverModuleCmd(c.name(), c.cmd(), arg, command.want_response());
      return;
    }
  } else {
    RecordCodec::Decoded decoded = codec_.decode(command);
    if (decoded.record) {
      model_->deliver(*decoded.record);
      return;
    }
    problem = std::move(decoded.problem);
  }
  // A command the daemon cannot read is refused like one it cannot apply.
  auto [module, type] = addresseeOf(command);
  auto* reply = replies.add_replies();
  reply->set_seq(command.seq());
  if (command.has_daemon_request()) {
    reply->mutable_daemon_reply()->mutable_error()->set_code(EINVAL);
    reply->mutable_daemon_reply()->mutable_error()->set_errmsg(problem);
    return;
  }
  auto* error = reply->mutable_error();
  error->set_module(module);
  error->set_type(type);
  error->set_code(EINVAL);
  error->set_msg(problem);
}

grpc::Status DaemonService::Hello(grpc::ServerContext*, const ctl::HelloRequest* request,
                                  ctl::HelloResponse* reply) {
  std::lock_guard guard(lock_);
  if (request->session() != session_) {
    session_ = request->session();
    appliedThrough_ = 0;
  }
  reply->set_instance(instance_);
  reply->set_applied_through(appliedThrough_);
  reply->set_workers(model_->workers());
  return grpc::Status::OK;
}

grpc::Status DaemonService::RunCommands(
    grpc::ServerContext*, grpc::ServerReaderWriter<ctl::ReplyBatch, ctl::CommandBatch>* stream) {
  // Each batch is read into an arena emptied before the next: a batch of thousands of
  // commands otherwise costs an allocation and a free for each command and its parts (a
  // reused message does not help, as clearing a command's kind deletes it). The first block
  // holds a full batch of route commands and stays from batch to batch.
  std::vector<char> firstBlock(kBatchArenaBlock);
  google::protobuf::ArenaOptions options;
  options.initial_block = firstBlock.data();
  options.initial_block_size = firstBlock.size();
  options.max_block_size = kBatchArenaBlock;
  google::protobuf::Arena arena(options);
  ctl::ReplyBatch replies;
  for (;;) {
    arena.Reset();
    auto* read = google::protobuf::Arena::CreateMessage<ctl::CommandBatch>(&arena);
    if (!stream->Read(read)) break;
    const ctl::CommandBatch& batch = *read;
    replies.Clear();
    {
      std::lock_guard guard(lock_);
      if (batch.session() != session_) {
        return grpc::Status(grpc::StatusCode::FAILED_PRECONDITION, "say hello first");
      }
      for (const ctl::QueuedCommand& command : batch.commands()) {
        // A number applied already was sent again after a broken connection. A gap is
        // what the client dropped when it met this daemon as a new one.
        if (command.seq() <= appliedThrough_) continue;
        applyLocked(command, replies);
        appliedThrough_ = command.seq();
      }
      replies.set_applied_through(appliedThrough_);
    }
    if (!stream->Write(replies)) break;
  }
  return grpc::Status::OK;
}

CommandResponse DaemonService::applyOne(const ctl::QueuedCommand& command) {
  ctl::ReplyBatch replies;
  {
    std::lock_guard guard(lock_);
    applyLocked(command, replies);
  }
  CommandResponse response;
  for (ctl::QueuedReply& reply : *replies.mutable_replies()) {
    if (reply.has_daemon_reply()) {
      response.Swap(reply.mutable_daemon_reply());
    } else if (reply.has_error()) {
      response.mutable_error()->set_code(reply.error().code());
      response.mutable_error()->set_errmsg(reply.error().msg());
    } else if (reply.has_response()) {
      response.mutable_data()->Swap(reply.mutable_response()->mutable_payload());
    }
  }
  return response;
}

template <typename Request>
grpc::Status DaemonService::answer(const Request& request,
                                   Request* (ctl::QueuedCommand::*slot)(), CommandResponse* reply) {
  ctl::QueuedCommand command;
  *(command.*slot)() = request;
  *reply = applyOne(command);
  return grpc::Status::OK;
}

grpc::Status DaemonService::answerDaemonRequest(const google::protobuf::Message& request,
                                                std::uint32_t type, CommandResponse* reply) {
  ctl::QueuedCommand command;
  command.mutable_daemon_request()->set_type(type);
  command.mutable_daemon_request()->mutable_request()->PackFrom(request);
  *reply = applyOne(command);
  return grpc::Status::OK;
}

grpc::Status DaemonService::CreateModule(grpc::ServerContext*, const ctl::CreateModuleRequest* request,
                                         CommandResponse* reply) {
  return answer(*request, &ctl::QueuedCommand::mutable_create_module, reply);
}

grpc::Status DaemonService::DestroyModule(grpc::ServerContext*, const ctl::DestroyModuleRequest* request,
                                          CommandResponse* reply) {
  return answer(*request, &ctl::QueuedCommand::mutable_destroy_module, reply);
}

grpc::Status DaemonService::ConnectModules(grpc::ServerContext*, const ctl::ConnectModulesRequest* request,
                                           CommandResponse* reply) {
  return answer(*request, &ctl::QueuedCommand::mutable_connect_modules, reply);
}

grpc::Status DaemonService::DisconnectModules(grpc::ServerContext*, const ctl::DisconnectModulesRequest* request,
                                              CommandResponse* reply) {
  return answer(*request, &ctl::QueuedCommand::mutable_disconnect_modules, reply);
}

grpc::Status DaemonService::ModuleCommand(grpc::ServerContext*,
                                          const bess::pb::CommandRequest* request,
                                          CommandResponse* reply) {
  ctl::QueuedCommand command;
  *command.mutable_module_command() = *request;
  command.set_want_response(true);
  *reply = applyOne(command);
  return grpc::Status::OK;
}

grpc::Status DaemonService::ResumeAll(grpc::ServerContext*, const bess::pb::EmptyRequest* request,
                                      CommandResponse* reply) {
  return answerDaemonRequest(*request, Vek::resumeAllRequest, reply);
}

grpc::Status DaemonService::CreatePort(grpc::ServerContext*,
                                       const bess::pb::CreatePortRequest* request,
                                       CommandResponse* reply) {
  return answerDaemonRequest(*request, Vek::createPortRequest, reply);
}

grpc::Status DaemonService::DestroyPort(grpc::ServerContext*,
                                        const bess::pb::DestroyPortRequest* request,
                                        CommandResponse* reply) {
  return answerDaemonRequest(*request, Vek::destroyPortRequest, reply);
}

grpc::Status DaemonService::SetPortConf(grpc::ServerContext*,
                                        const bess::pb::SetPortConfRequest* request,
                                        CommandResponse* reply) {
  return answerDaemonRequest(*request, Vek::portConfRequest, reply);
}

grpc::Status DaemonService::PortCommand(grpc::ServerContext*,
                                        const bess::pb::CommandRequest* request,
                                        CommandResponse* reply) {
  return answerDaemonRequest(*request, Vek::portCmdRequest, reply);
}

grpc::Status DaemonService::AddTc(grpc::ServerContext*, const vek::pb::RateLimitTcArg* request,
                                  CommandResponse* reply) {
  return answerDaemonRequest(*request, Vek::createRateLimitTcRequest, reply);
}

grpc::Status DaemonService::AttachTask(grpc::ServerContext*, const vek::pb::AttachTaskArg* request,
                                       CommandResponse* reply) {
  return answerDaemonRequest(*request, Vek::attachTaskToTcRequest, reply);
}

grpc::Status DaemonService::GetDump(grpc::ServerContext*, const bess::pb::EmptyRequest*,
                                    ctl::TextResponse* reply) {
  std::lock_guard guard(lock_);
  reply->set_text(model_->dump().dump());
  return grpc::Status::OK;
}

grpc::Status DaemonService::GetDot(grpc::ServerContext*, const bess::pb::EmptyRequest*,
                                   ctl::TextResponse* reply) {
  std::lock_guard guard(lock_);
  reply->set_text(model_->dot());
  return grpc::Status::OK;
}

grpc::Status DaemonService::Reset(grpc::ServerContext*, const ctl::ResetRequest* request,
                                  CommandResponse*) {
  if (request->workers() == 0 || request->workers() > 0xffff) {
    return grpc::Status(grpc::StatusCode::INVALID_ARGUMENT, "workers out of range");
  }
  std::lock_guard guard(lock_);
  startEmpty(static_cast<std::uint16_t>(request->workers()));
  return grpc::Status::OK;
}

grpc::Status DaemonService::FailNext(grpc::ServerContext*, const ctl::FailNextRequest* request,
                                     CommandResponse*) {
  std::lock_guard guard(lock_);
  model_->failNextForTest(request->module(), request->cmd(), request->code(), request->msg());
  return grpc::Status::OK;
}

}  // namespace Remote
