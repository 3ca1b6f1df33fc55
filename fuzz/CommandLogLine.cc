#include "fuzz/CommandLogLine.h"

#include <google/protobuf/util/json_util.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "proto/bess.pb.h"
#include "proto/vek.pb.h"
#include "runtime/vek/GrpcRequestType.h"

namespace VekFuzz {

namespace {

namespace ctl = vek::control;
using nlohmann::json;

std::string text(const json& line, const char* key) {
  auto it = line.find(key);
  return it != line.end() && it->is_string() ? it->get<std::string>() : std::string();
}

// Any number as the wire's field takes it: out-of-range values wrap as they would when a
// sender narrows them; fractions and non-numbers are 0.
template <typename Int>
Int number(const json& line, const char* key) {
  auto it = line.find(key);
  if (it == line.end()) return 0;
  if (it->is_number_unsigned()) return static_cast<Int>(it->get<std::uint64_t>());
  if (it->is_number_integer()) return static_cast<Int>(it->get<std::int64_t>());
  return 0;
}

// A message in protobuf's JSON form with its "@type", as the log writes `arg`; null and
// absent leave it unset. False for anything else.
bool readAny(const json& line, const char* key, google::protobuf::Any* any, bool* set) {
  *set = false;
  auto it = line.find(key);
  if (it == line.end() || it->is_null()) return true;
  if (!it->is_object()) return false;
  *set = true;
  return google::protobuf::util::JsonStringToMessage(it->dump(), any).ok();
}

// The gates and the far end of a link; the near end's field is named apart in each request.
template <typename Request>
void link(const json& line, Request* request) {
  request->set_ogate(number<std::uint32_t>(line, "ogate"));
  request->set_m2(text(line, "to"));
  request->set_igate(number<std::uint32_t>(line, "igate"));
}

ctl::DaemonRequest* daemonRequest(ctl::QueuedCommand& command, Vek::GrpcRequestType type) {
  auto* request = command.mutable_daemon_request();
  // The log does not name the group of these; the agent's is the one there is.
  request->set_group("mfaAgent");
  request->set_type(type);
  return request;
}

bool fill(const json& line, const std::string& kind, ctl::QueuedCommand& command) {
  bool set = false;
  if (kind == "createModule") {
    auto* c = command.mutable_create_module();
    c->set_name(text(line, "name"));
    c->set_mclass(number<std::uint32_t>(line, "class"));
    c->set_igates(number<std::uint32_t>(line, "inGates"));
    c->set_ogates(number<std::uint32_t>(line, "outGates"));
    c->set_reserved_igates(number<std::uint32_t>(line, "reservedIn"));
    c->set_reserved_ogates(number<std::uint32_t>(line, "reservedOut"));
    if (!readAny(line, "init", c->mutable_arg(), &set)) return false;
    if (!set) c->clear_arg();
    return true;
  }
  if (kind == "destroyModule") {
    command.mutable_destroy_module()->set_name(text(line, "name"));
    return true;
  }
  if (kind == "connect") {
    auto* c = command.mutable_connect_modules();
    c->set_m1(text(line, "from"));
    link(line, c);
    return true;
  }
  if (kind == "disconnect") {
    auto* c = command.mutable_disconnect_modules();
    c->set_name(text(line, "from"));
    link(line, c);
    return true;
  }
  if (kind == "moduleCmd") {
    auto* c = command.mutable_module_command();
    c->set_name(text(line, "module"));
    c->set_cmd(text(line, "cmd"));
    if (!readAny(line, "arg", c->mutable_arg(), &set)) return false;
    if (!set) c->clear_arg();
    command.set_want_response(true);
    return true;
  }
  if (kind == "createPort") {
    bess::pb::CreatePortRequest port;
    port.set_name(text(line, "name"));
    port.set_driver(text(line, "driver"));
    if (!readAny(line, "arg", port.mutable_arg(), &set)) return false;
    if (!set) port.clear_arg();
    daemonRequest(command, Vek::createPortRequest)->mutable_request()->PackFrom(port);
    return true;
  }
  if (kind == "destroyPort") {
    bess::pb::DestroyPortRequest port;
    port.set_name(text(line, "name"));
    daemonRequest(command, Vek::destroyPortRequest)->mutable_request()->PackFrom(port);
    return true;
  }
  if (kind == "createRateLimitTc") {
    vek::pb::RateLimitTcArg tc;
    tc.set_tcname(text(line, "tc"));
    tc.set_worker(number<std::int32_t>(line, "worker"));
    tc.set_unit(text(line, "unit"));
    tc.set_limit(number<std::int64_t>(line, "limit"));
    tc.set_burst(number<std::int32_t>(line, "burst"));
    daemonRequest(command, Vek::createRateLimitTcRequest)->mutable_request()->PackFrom(tc);
    return true;
  }
  if (kind == "attachTaskToTc") {
    vek::pb::AttachTaskArg task;
    task.set_taskname(text(line, "task"));
    task.set_tcname(text(line, "tc"));
    task.set_id(number<std::uint32_t>(line, "id"));
    task.set_weight(number<std::uint32_t>(line, "weight"));
    daemonRequest(command, Vek::attachTaskToTcRequest)->mutable_request()->PackFrom(task);
    return true;
  }
  if (kind == "groupCmd") {
    auto* c = command.mutable_daemon_request();
    c->set_group(text(line, "group"));
    c->set_type(number<std::uint32_t>(line, "type"));
    if (!readAny(line, "arg", c->mutable_request(), &set)) return false;
    if (!set) c->clear_request();
    return true;
  }
  if (kind == "allocateCounter") {
    auto* c = command.mutable_allocate_counter();
    c->set_module(text(line, "module"));
    c->set_name(text(line, "name"));
    c->set_unit(number<std::uint32_t>(line, "unit"));
    c->set_id(number<std::uint32_t>(line, "id"));
    return true;
  }
  if (kind == "freeCounters") {
    command.mutable_free_counters()->set_module(text(line, "module"));
    return true;
  }
  return false;
}

}  // namespace

std::optional<ctl::QueuedCommand> commandOfLogLine(std::string_view text) {
  const json line = json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!line.is_object()) return std::nullopt;
  ctl::QueuedCommand command;
  command.set_seq(number<std::uint64_t>(line, "seq"));
  auto kind = line.find("kind");
  if (kind == line.end() || !kind->is_string()) return std::nullopt;
  if (!fill(line, kind->get<std::string>(), command)) return std::nullopt;
  return command;
}

}  // namespace VekFuzz
