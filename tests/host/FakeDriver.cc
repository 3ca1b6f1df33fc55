#include "tests/host/FakeDriver.h"

#include <stdexcept>

#include "host/DumpLayout.h"
#include "host/ValueText.h"

namespace VekHost {

namespace {

std::string idText(const std::string& name) {
  return std::to_string(*FakeDriver::intfIdEncoder()(name));
}

}  // namespace

IntfIdEncoder FakeDriver::intfIdEncoder() {
  return [](std::string_view name) -> std::optional<uint64_t> {
    if (!ValueText::isName(name)) return std::nullopt;
    uint64_t hash = 1469598103934665603ull;  // FNV-1a
    for (char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
    return hash;
  };
}

void FakeDriver::applyState(const StateChange& change, StateOp op) {
  // Stands for a value the agent refuses although the file is well formed.
  if (change.vrfs.count("unknown")) throw std::runtime_error("VRF 'unknown' is refused");
  for (const Mroute& route : change.mroutes) {
    RouteId id{route.table.vrfAf.vrf, route.table.vrfAf.af, route.table.app, route.key.text()};
    if (op == StateOp::set) {
      routes_[id] = route;
    } else {
      routes_.erase(id);
    }
  }
}

void FakeDriver::createAgent() {
  trace_.add({Trace::Level::info, "Init cmdConfigGroup mfaAgent"});
  if (!DumpLayout::module(dataPlane_, "TxDemuxer")) {
    command({{"kind", "createModule"}, {"name", "TxDemuxer"}, {"class", 105}});
    dataPlane_["modules"]["TxDemuxer"] = {{"class", 105}, {"out", nlohmann::json::object()}};
  }
}

void FakeDriver::start(const VrfAf& vrfAf) {
  if (!started_.insert({vrfAf.vrf, vrfAf.af}).second) return;
  const std::string name = DumpLayout::fibModuleName(vrfAf);
  trace_.add({Trace::Level::info, "Create Mfib module " + name});
  command({{"kind", "createModule"}, {"name", name}, {"class", 26}});
  command({{"kind", "connect"}, {"from", name}, {"ogate", 4}, {"to", "TxDemuxer"}, {"igate", 0}});
  dataPlane_["modules"][name] = {{"class", 26},
                                 {"out", {{"4", {{"to", "TxDemuxer"}, {"igate", 0}}}}},
                                 {"table", {{"routes", nlohmann::json::object()}}}};
}

void FakeDriver::stop(const VrfAf& vrfAf) {
  if (!started_.erase({vrfAf.vrf, vrfAf.af})) return;
  const std::string name = DumpLayout::fibModuleName(vrfAf);
  command(
      {{"kind", "disconnect"}, {"from", name}, {"ogate", 4}, {"to", "TxDemuxer"}, {"igate", 0}});
  command({{"kind", "destroyModule"}, {"name", name}});
  dataPlane_["modules"].erase(name);
}

void FakeDriver::settle() {
  for (const auto& [vrf, af] : started_) syncRoutes(VrfAf{vrf, af});
}

// The table gets the routes of every application for the VRF and family; the first
// application by name wins a key that several hold.
void FakeDriver::syncRoutes(const VrfAf& vrfAf) {
  const std::string name = DumpLayout::fibModuleName(vrfAf);
  nlohmann::json wanted = nlohmann::json::object();
  for (const auto& [id, route] : routes_) {
    if (route.table.vrfAf != vrfAf || wanted.contains(route.key.text())) continue;
    nlohmann::json entry = {{"iif", route.iif.empty() ? "0" : idText(route.iif)},
                            {"gates", nlohmann::json::array()}};
    int gate = 0;
    for (const std::string& oif : route.oifs) {
      entry["gates"].push_back({{"intfId", idText(oif)}, {"gate", gate++}});
    }
    for (std::string_view flag : kRouteFlagNames)
      entry[std::string(flag)] = routeFlag(route.flags, flag);
    wanted[route.key.text()] = entry;
  }
  const nlohmann::json held = dataPlane_["modules"][name]["table"]["routes"];
  for (const auto& [key, entry] : held.items()) {
    if (!wanted.contains(key)) moduleCmd(name, "deleteMroute", {{"key", key}});
  }
  for (const auto& [key, entry] : wanted.items()) {
    if (!held.contains(key) || held[key] != entry) {
      moduleCmd(name, "addMroute", {{"key", key}, {"route", entry}});
    }
  }
}

void FakeDriver::moduleCmd(const std::string& module, const std::string& cmd,
                           const nlohmann::json& arg) {
  command({{"kind", "moduleCmd"}, {"module", module}, {"cmd", cmd}, {"arg", arg}});
  auto& routes = dataPlane_["modules"][module]["table"]["routes"];
  if (cmd == "addMroute") routes[arg["key"].get<std::string>()] = arg["route"];
  if (cmd == "deleteMroute") routes.erase(arg["key"].get<std::string>());
}

void FakeDriver::restart() {
  trace_.add({Trace::Level::info, "Cleaning up mfa agent"});
  started_.clear();
  createAgent();
}

std::string FakeDriver::dot() {
  std::string text = "digraph dataplane {\n";
  for (const DumpLayout::Link& link : DumpLayout::links(dataPlane_)) {
    text += "  \"" + link.from + "\" -> \"" + link.to + "\";\n";
  }
  return text + "}\n";
}

void FakeDriver::command(nlohmann::json record) {
  record["seq"] = commands_.count() + 1;
  commands_.add(std::move(record));
}

}  // namespace VekHost
