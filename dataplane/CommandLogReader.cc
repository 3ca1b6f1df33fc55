#include "dataplane/CommandLogReader.h"

#include <fmt/format.h>
#include <google/protobuf/util/json_util.h>

#include <nlohmann/json.hpp>
#include <unordered_map>
#include <utility>

#include "proto/bess.pb.h"
#include "proto/command_log.pb.h"
#include "proto/vek.pb.h"
#include "runtime/vek/GrpcCmd.h"
#include "runtime/vek/GrpcRequestType.h"
#include "runtime/vek/ModuleCmdBase.h"

namespace Dataplane {

namespace {

using google::protobuf::Any;
using google::protobuf::Message;

// Opens the arguments of one line; the first that cannot be opened is the line's problem.
struct Arguments {
  AnyUnpacker& unpacker;
  std::string problem;

  std::unique_ptr<Message> open(bool present, const Any& any) {
    if (!present) return nullptr;
    std::unique_ptr<Message> message = unpacker.unpack(any);
    if (!message && problem.empty()) {
      problem = fmt::format("cannot read an argument of type {}", any.type_url());
    }
    return message;
  }
};

// The log names the group of no port, traffic-class or task command.
Vek::ChannelRecord daemonCommand(std::unique_ptr<Message> request, Vek::GrpcRequestType type) {
  return Vek::GroupCmdRecord{Lumo::String(), Lumo::makePtr<Vek::GrpcCmd>(request.release(), type)};
}

Vek::ChannelRecord recordOf(const vek::log::CreateModule& line, Arguments& arguments) {
  return Vek::CreateModuleRecord{line.name(),
                                 line.class_(),
                                 line.ingates(),
                                 line.outgates(),
                                 line.reservedin(),
                                 line.reservedout(),
                                 arguments.open(line.has_init(), line.init())};
}

Vek::ChannelRecord recordOf(const vek::log::Destroy& line, Arguments&) {
  if (line.kind() == "destroyModule") return Vek::DestroyModuleRecord{line.name()};
  auto port = std::make_unique<bess::pb::DestroyPortRequest>();
  port->set_name(line.name());
  return daemonCommand(std::move(port), Vek::destroyPortRequest);
}

Vek::ChannelRecord recordOf(const vek::log::Link& line, Arguments&) {
  const Vek::GateLink link{line.from(), line.ogate(), line.to(), line.igate()};
  if (line.kind() == "connect") return Vek::ConnectRecord{link};
  return Vek::DisconnectRecord{link};
}

Vek::ChannelRecord recordOf(const vek::log::ModuleCmd& line, Arguments& arguments) {
  std::unique_ptr<Message> arg = arguments.open(line.has_arg(), line.arg());
  return Vek::ModuleCmdRecord{Vek::moduleCmdFactory(line.module(), line.cmd(), arg.release(), true),
                              true};
}

Vek::ChannelRecord recordOf(const vek::log::CreatePort& line, Arguments&) {
  // The port's argument stays packed: the daemon's port opens it.
  auto port = std::make_unique<bess::pb::CreatePortRequest>();
  port->set_name(line.name());
  port->set_driver(line.driver());
  if (line.has_arg()) *port->mutable_arg() = line.arg();
  return daemonCommand(std::move(port), Vek::createPortRequest);
}

Vek::ChannelRecord recordOf(const vek::log::GroupCmd& line, Arguments& arguments) {
  std::unique_ptr<Message> request = arguments.open(line.has_arg(), line.arg());
  return Vek::GroupCmdRecord{
      line.group(), Lumo::makePtr<Vek::GrpcCmd>(request.release(),
                                                static_cast<Vek::GrpcRequestType>(line.type()))};
}

Vek::ChannelRecord recordOf(const vek::log::AllocateCounter& line, Arguments&) {
  return Vek::AllocateCounterRecord{line.module(), line.name(), line.unit(),
                                    Vek::CounterId(line.id())};
}

Vek::ChannelRecord recordOf(const vek::log::FreeCounters& line, Arguments&) {
  return Vek::FreeCountersRecord{line.module()};
}

Vek::ChannelRecord recordOf(const vek::log::CreateRateLimitTc& line, Arguments&) {
  auto tc = std::make_unique<vek::pb::RateLimitTcArg>();
  tc->set_tcname(line.tc());
  tc->set_worker(line.worker());
  tc->set_unit(line.unit());
  tc->set_limit(line.limit());
  tc->set_burst(line.burst());
  return daemonCommand(std::move(tc), Vek::createRateLimitTcRequest);
}

Vek::ChannelRecord recordOf(const vek::log::AttachTaskToTc& line, Arguments&) {
  auto task = std::make_unique<vek::pb::AttachTaskArg>();
  task->set_taskname(line.task());
  task->set_tcname(line.tc());
  task->set_id(line.id());
  task->set_weight(line.weight());
  return daemonCommand(std::move(task), Vek::attachTaskToTcRequest);
}

}  // namespace

template <typename Line>
CommandLogReader::Read CommandLogReader::readAs(const std::string& text) {
  Read read;
  Line line;
  google::protobuf::util::JsonParseOptions strict;
  strict.ignore_unknown_fields = false;
  if (auto status = google::protobuf::util::JsonStringToMessage(text, &line, strict);
      !status.ok()) {
    read.problem = std::string(status.message());
    return read;
  }
  Arguments arguments{unpacker_, {}};
  Vek::ChannelRecord record = recordOf(line, arguments);
  if (!arguments.problem.empty()) {
    read.problem = std::move(arguments.problem);
    return read;
  }
  read.record = std::make_unique<Vek::ChannelRecord>(std::move(record));
  return read;
}

CommandLogReader::Read CommandLogReader::read(std::string_view line) {
  using Reader = Read (CommandLogReader::*)(const std::string&);
  static const std::unordered_map<std::string, Reader> readers{
      {"createModule", &CommandLogReader::readAs<vek::log::CreateModule>},
      {"destroyModule", &CommandLogReader::readAs<vek::log::Destroy>},
      {"connect", &CommandLogReader::readAs<vek::log::Link>},
      {"disconnect", &CommandLogReader::readAs<vek::log::Link>},
      {"moduleCmd", &CommandLogReader::readAs<vek::log::ModuleCmd>},
      {"createPort", &CommandLogReader::readAs<vek::log::CreatePort>},
      {"destroyPort", &CommandLogReader::readAs<vek::log::Destroy>},
      {"groupCmd", &CommandLogReader::readAs<vek::log::GroupCmd>},
      {"allocateCounter", &CommandLogReader::readAs<vek::log::AllocateCounter>},
      {"freeCounters", &CommandLogReader::readAs<vek::log::FreeCounters>},
      {"createRateLimitTc", &CommandLogReader::readAs<vek::log::CreateRateLimitTc>},
      {"attachTaskToTc", &CommandLogReader::readAs<vek::log::AttachTaskToTc>},
  };
  std::string text(line);
  // The kind says which message the line is read into.
  const nlohmann::json json = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!json.is_object()) return {nullptr, "not a JSON object"};
  const auto kind = json.find("kind");
  if (kind == json.end() || !kind->is_string()) return {nullptr, "no kind"};
  const auto reader = readers.find(kind->get<std::string>());
  if (reader == readers.end()) {
    return {nullptr, fmt::format("a line of kind {} is no command", kind->get<std::string>())};
  }
  return (this->*reader->second)(text);
}

}  // namespace Dataplane
