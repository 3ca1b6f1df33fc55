#include "remote/RecordCodec.h"

#include <fmt/format.h>

#include "runtime/vek/GrpcCmd.h"
#include "runtime/vek/ModuleCmdBase.h"

namespace Remote {

namespace {

using google::protobuf::Any;
using google::protobuf::Message;
namespace ctl = vek::control;

void packInto(const Message* message, Any* any) {
  if (message) any->PackFrom(*message);
}

}  // namespace

void RecordCodec::encode(const Vek::ChannelRecord& record, ctl::QueuedCommand* out) {
  struct Visitor {
    ctl::QueuedCommand* out;

    void operator()(const Vek::CreateModuleRecord& r) {
      auto* c = out->mutable_create_module();
      c->set_name(r.name.str());
      c->set_mclass(r.moduleClass);
      packInto(r.init.get(), c->mutable_arg());
      if (!r.init) c->clear_arg();
      c->set_igates(r.inGates);
      c->set_ogates(r.outGates);
      c->set_reserved_igates(r.reservedIn);
      c->set_reserved_ogates(r.reservedOut);
    }
    void operator()(const Vek::DestroyModuleRecord& r) {
      out->mutable_destroy_module()->set_name(r.name.str());
    }
    void operator()(const Vek::ConnectRecord& r) {
      auto* c = out->mutable_connect_modules();
      c->set_m1(r.from.str());
      c->set_ogate(r.ogate);
      c->set_m2(r.to.str());
      c->set_igate(r.igate);
    }
    void operator()(const Vek::DisconnectRecord& r) {
      auto* c = out->mutable_disconnect_modules();
      c->set_name(r.from.str());
      c->set_ogate(r.ogate);
      c->set_m2(r.to.str());
      c->set_igate(r.igate);
    }
    void operator()(const Vek::ModuleCmdRecord& r) {
      auto* c = out->mutable_module_command();
      c->set_name(r.cmd->moduleName().str());
      c->set_cmd(r.cmd->cmdName().str());
      packInto(r.cmd->message(), c->mutable_arg());
      out->set_want_response(r.wantResponse);
    }
    void operator()(const Vek::GroupCmdRecord& r) {
      auto* c = out->mutable_daemon_request();
      c->set_group(r.group.str());
      c->set_type(r.cmd->requestType());
      packInto(r.cmd->message(), c->mutable_request());
    }
    void operator()(const Vek::AllocateCounterRecord& r) {
      auto* c = out->mutable_allocate_counter();
      c->set_module(r.module.str());
      c->set_name(r.name.str());
      c->set_unit(r.unit);
      c->set_id(r.id.value());
    }
    void operator()(const Vek::FreeCountersRecord& r) {
      out->mutable_free_counters()->set_module(r.module.str());
    }
  };
  std::visit(Visitor{out}, record);
}

namespace {

std::string unreadable(const Any& any) {
  return fmt::format("cannot read an argument of type {}", any.type_url());
}

}  // namespace

const Message* RecordCodec::reusedArgument(const Any& any, std::string& problem) {
  const Message* message = unpacker_.unpackReused(any);
  if (!message) problem = unreadable(any);
  return message;
}

RecordCodec::Decoded RecordCodec::decode(const ctl::QueuedCommand& command) {
  Decoded decoded;
  // An argument that is set must be understood; one that is unset stays null.
  auto argument = [&](bool present, const Any& any) -> std::unique_ptr<Message> {
    if (!present) return nullptr;
    std::unique_ptr<Message> message = unpacker_.unpack(any);
    if (!message) decoded.problem = unreadable(any);
    return message;
  };
  auto make = [&](auto record) {
    if (decoded.problem.empty()) decoded.record = std::make_unique<Vek::ChannelRecord>(std::move(record));
  };
  switch (command.command_case()) {
    case ctl::QueuedCommand::kCreateModule: {
      const auto& c = command.create_module();
      Vek::CreateModuleRecord r{c.name(), c.mclass(), c.igates(), c.ogates(),
                                c.reserved_igates(), c.reserved_ogates(), nullptr};
      r.init = argument(c.has_arg(), c.arg());
      make(std::move(r));
      break;
    }
    case ctl::QueuedCommand::kDestroyModule:
      make(Vek::DestroyModuleRecord{command.destroy_module().name()});
      break;
    case ctl::QueuedCommand::kConnectModules: {
      const auto& c = command.connect_modules();
      make(Vek::ConnectRecord{{c.m1(), c.ogate(), c.m2(), c.igate()}});
      break;
    }
    case ctl::QueuedCommand::kDisconnectModules: {
      const auto& c = command.disconnect_modules();
      make(Vek::DisconnectRecord{{c.name(), c.ogate(), c.m2(), c.igate()}});
      break;
    }
    case ctl::QueuedCommand::kModuleCommand: {
      const auto& c = command.module_command();
      std::unique_ptr<Message> arg = argument(c.has_arg(), c.arg());
      make(Vek::ModuleCmdRecord{
          Vek::moduleCmdFactory(c.name(), c.cmd(), arg.release(), true), command.want_response()});
      break;
    }
    case ctl::QueuedCommand::kDaemonRequest: {
      const auto& c = command.daemon_request();
      std::unique_ptr<Message> request = argument(c.has_request(), c.request());
      make(Vek::GroupCmdRecord{
          c.group(), Lumo::makePtr<Vek::GrpcCmd>(
                         request.release(), static_cast<Vek::GrpcRequestType>(c.type()))});
      break;
    }
    case ctl::QueuedCommand::kAllocateCounter: {
      const auto& c = command.allocate_counter();
      make(Vek::AllocateCounterRecord{c.module(), c.name(), c.unit(), Vek::CounterId(c.id())});
      break;
    }
    case ctl::QueuedCommand::kFreeCounters:
      make(Vek::FreeCountersRecord{command.free_counters().module()});
      break;
    case ctl::QueuedCommand::COMMAND_NOT_SET:
      decoded.problem = "a command with no content";
      break;
  }
  return decoded;
}

}  // namespace Remote
