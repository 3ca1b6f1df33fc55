#include "runtime/vek/CommandLog.h"

#include <algorithm>
#include <ostream>

#include "proto/bess.pb.h"
#include "runtime/vek/ProtoJson.h"

namespace Vek {
namespace {

using Entry = CommandLog::Entry;

Entry kindEntry(std::string_view kind) {
  Entry entry;
  entry["kind"] = kind;
  return entry;
}

Entry linkEntry(std::string_view kind, const GateLink& link) {
  Entry entry = kindEntry(kind);
  entry["from"] = link.from.str();
  entry["ogate"] = link.ogate;
  entry["to"] = link.to.str();
  entry["igate"] = link.igate;
  return entry;
}

// Daemon-level commands of a known request type get a line of their own kind; anything
// else is written as a group command with its message.
Entry groupEntry(const GroupCmdRecord& record) {
  const google::protobuf::Message* message = record.cmd->message();
  switch (record.cmd->requestType()) {
    case createPortRequest:
      if (auto* req = dynamic_cast<const bess::pb::CreatePortRequest*>(message)) {
        Entry entry = kindEntry("createPort");
        entry["name"] = req->name();
        entry["driver"] = req->driver();
        entry["arg"] = req->has_arg() ? ProtoJson::of(req->arg()) : Entry();
        return entry;
      }
      break;
    case destroyPortRequest:
      if (auto* req = dynamic_cast<const bess::pb::DestroyPortRequest*>(message)) {
        Entry entry = kindEntry("destroyPort");
        entry["name"] = req->name();
        return entry;
      }
      break;
    case createRateLimitTcRequest:
      if (auto* arg = dynamic_cast<const vek::pb::RateLimitTcArg*>(message)) {
        Entry entry = kindEntry("createRateLimitTc");
        entry["tc"] = arg->tcname();
        entry["worker"] = arg->worker();
        entry["unit"] = arg->unit();
        entry["limit"] = arg->limit();
        entry["burst"] = arg->burst();
        return entry;
      }
      break;
    case attachTaskToTcRequest:
      if (auto* arg = dynamic_cast<const vek::pb::AttachTaskArg*>(message)) {
        Entry entry = kindEntry("attachTaskToTc");
        entry["task"] = arg->taskname();
        entry["tc"] = arg->tcname();
        entry["id"] = arg->id();
        entry["weight"] = arg->weight();
        return entry;
      }
      break;
    default:
      break;
  }
  Entry entry = kindEntry("groupCmd");
  entry["group"] = record.group.str();
  entry["type"] = static_cast<unsigned>(record.cmd->requestType());
  entry["arg"] = ProtoJson::packedOrNull(message);
  return entry;
}

struct EntryBuilder {
  Entry operator()(const CreateModuleRecord& r) const {
    Entry entry = kindEntry("createModule");
    entry["name"] = r.name.str();
    entry["class"] = r.moduleClass;
    entry["inGates"] = r.inGates;
    entry["outGates"] = r.outGates;
    entry["reservedIn"] = r.reservedIn;
    entry["reservedOut"] = r.reservedOut;
    entry["init"] = ProtoJson::packedOrNull(r.init.get());
    return entry;
  }
  Entry operator()(const DestroyModuleRecord& r) const {
    Entry entry = kindEntry("destroyModule");
    entry["name"] = r.name.str();
    return entry;
  }
  Entry operator()(const ConnectRecord& r) const { return linkEntry("connect", r); }
  Entry operator()(const DisconnectRecord& r) const { return linkEntry("disconnect", r); }
  Entry operator()(const ModuleCmdRecord& r) const {
    Entry entry = kindEntry("moduleCmd");
    entry["module"] = r.cmd->moduleName().str();
    entry["cmd"] = r.cmd->cmdName().str();
    entry["arg"] = ProtoJson::packedOrNull(r.cmd->message());
    return entry;
  }
  Entry operator()(const GroupCmdRecord& r) const { return groupEntry(r); }
  Entry operator()(const AllocateCounterRecord& r) const {
    Entry entry = kindEntry("allocateCounter");
    entry["module"] = r.module.str();
    entry["name"] = r.name.str();
    entry["unit"] = r.unit;
    entry["id"] = r.id.value();
    return entry;
  }
  Entry operator()(const FreeCountersRecord& r) const {
    Entry entry = kindEntry("freeCounters");
    entry["module"] = r.module.str();
    return entry;
  }
};

}  // namespace

Entry CommandLog::entryOf(const ChannelRecord& record) {
  return std::visit(EntryBuilder{}, record);
}

void CommandLog::write(const ChannelRecord& record) {
  ++seq_;
  if (enabled_) append(entryOf(record));
}

void CommandLog::writeError(const vek::pb::ModuleError& error) {
  ++seq_;
  if (!enabled_) return;
  Entry entry = kindEntry("error");
  entry["module"] = error.module();
  entry["type"] = error.type();
  entry["code"] = error.code();
  entry["msg"] = error.msg();
  append(std::move(entry));
}

void CommandLog::writeGroupError(std::string_view group, std::uint32_t type, std::int32_t code,
                                 std::string_view msg) {
  ++seq_;
  if (!enabled_) return;
  Entry entry = kindEntry("error");
  entry["group"] = group;
  entry["type"] = type;
  entry["code"] = code;
  entry["msg"] = msg;
  append(std::move(entry));
}

void CommandLog::append(Entry entry) {
  // "seq" leads every line.
  Entry line = {{"seq", seq_}};
  line.update(entry);
  if (stream_) *stream_ << line.dump() << '\n';
  entries_.push_back(std::move(line));
}

std::vector<Entry> CommandLog::entriesSince(std::uint64_t seq) const {
  auto first = std::partition_point(entries_.begin(), entries_.end(), [seq](const Entry& e) {
    return e["seq"].get<std::uint64_t>() <= seq;
  });
  return {first, entries_.end()};
}

}  // namespace Vek
